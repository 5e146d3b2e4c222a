#pragma once

#include "components/CDRipperX.h"
#include "engines/rip/devices/DeviceShelf.h"
#include "engines/rip/devices/DiscWatch.h"
#include "engines/rip/RipRun.h"

#include <QTimer>

#include <memory>
#include <optional>

namespace zib {

struct RipEvent;

/// The ripper: drives through libcdio and its paranoia, disc images by plain reads. Everything that touches a
/// drive or an image runs on a thread of its own; the calls here answer from what is known.
class CdioRipper final : public CDRipperX
{
    Q_OBJECT
public:
    CdioRipper(const QString& imagesFolder, MakeAudioFile makeSound, QObject* parent = nullptr);
    ~CdioRipper() override;

    int deviceCount() override;
    QString deviceText1(int device) const override;
    QString deviceText2(int device) const override;
    QString deviceText3(int device) const override;
    QString deviceHint(int device) const override;
    bool selectDevice(int device) override;
    int status() const override;
    int maxReadSpeed() override;
    void setReadSpeed(int factor) override;

    bool discPresent() override;
    int trackCount() override;
    QString discText() override;
    qint32 trackStart(int track) override;
    qint32 trackLength(int track) override;
    bool isAudioTrack(int track) override;
    bool copyPermitted(int track) override;
    QString timeText(qint32 length) const override;
    int driveState() override;

    void clearQueue() override;
    bool addTrack(int track, const QString& path, const std::optional<NameBearer>& seen = {}) override;
    bool start() override;
    void abort() override;
    QStringList unreadTracks() const override;

private:
    bool refuse(int status);
    void watch(const RipDevice& device);
    DiscKnowledge known() const;
    TocTrack toc(int track) const;
    QString noteOf(const ListedDevice& listed) const;
    bool canTake(const RipTask& task);
    QStringList deviceTexts() const;
    void tellDevices();
    void deliverEvents();
    void deliver(const RipEvent& event);

    MakeAudioFile m_makeSound;
    DeviceShelf m_shelf;
    QList<ListedDevice> m_devices;
    QStringList m_told; ///< What the list of devices said last.
    QTimer m_news;      ///< For what devices tell late.
    int m_status = kReady;
    int m_speed = 0;
    QList<RipTask> m_queue;
    bool m_targetHangs = false; ///< A folder for files did not answer in time.
    QStringList m_unread;
    QTimer m_deliveries;
    std::shared_ptr<RipRun> m_run;     ///< The extraction under way.
    std::shared_ptr<RipRun> m_aborted; ///< The one that was ended last, and may still hang in its drive.
    std::unique_ptr<DiscWatch> m_watch;
};

} // namespace zib
