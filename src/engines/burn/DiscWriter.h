#pragma once

#include "components/DVDWriterPro.h"
#include "engines/burn/Inquirer.h"
#include "engines/burn/Recorder.h"

#include <QElapsedTimer>
#include <QTimer>

#include <memory>
#include <vector>

namespace zib {

struct WriteEvent;
struct WriteRun;

/// The disc writer: it checks, caches, writes and reports, on whatever recorder is selected. Recorders block;
/// they run on a worker thread, and calls that wait for them let the owner's events go on. Nothing here waits
/// for a drive without being able to give it up.
class DiscWriter final : public DVDWriterPro
{
    Q_OBJECT
public:
    /// @param find finds the drives; may be empty.  @param image the recorder that is always listed last.
    DiscWriter(FindRecorders find, std::shared_ptr<Recorder> image, QObject* parent = nullptr);
    ~DiscWriter() override;

    bool initializeDrives(bool exclusive) override;
    int driveCount() const override;
    bool canWriteCdR(int drive) const override;
    bool canWriteCdRw(int drive) const override;
    bool canWriteAudio(int drive) const override;
    QString driveText1(int drive) const override;
    QString driveText2(int drive) const override;
    QString driveText3(int drive) const override;
    bool selectDrive(int drive) override;
    bool supportsBufferProtection() const override;

    int discStatus() override;
    bool discHoldsData() override;
    int maxWriteSpeed() override;
    QList<WriteSpeed> writeSpeeds() override;
    void setWriteSpeed(int value) override;

    void setCacheLocally(bool on) override;
    void setCacheFolder(const QString& folder) override;
    void setWriteMode(int mode) override;
    void setTestWrite(bool on) override;
    bool testWrite() const override;
    void setCloseSession(bool on) override;
    void setCloseDisc(bool on) override;
    void setBufferProtection(bool on) override;
    void setVerify(bool on) override;

    bool addAudioTrack(const QString& path) override;
    void nameTrack(int track, const TrackNames& names) override;
    void nameDisc(const QString& title) override;
    int trackCount() const override;
    bool start() override;
    void cancel() override;
    void abandon() override;
    void finish(bool eject) override;

private:
    enum class Look
    {
        Afresh,
        RecentWillDo
    };

    const Recorder* recorder(int drive) const;
    /// What is in the selected drive. A drive that cannot be asked looks blank and without speeds: the write
    /// that follows then tells why.
    Medium medium(Look look);
    void deliverEvents();
    void deliver(const WriteEvent& event);
    void end(const WriteEvent& event);

    FindRecorders m_find;
    std::shared_ptr<Recorder> m_image;
    std::vector<std::shared_ptr<Recorder>> m_recorders;
    std::shared_ptr<Recorder> m_selected;
    Medium m_medium;
    QElapsedTimer m_mediumAge;
    BurnJob m_job;
    QString m_discTitle;
    QList<TrackNames> m_trackNames;
    bool m_cache = false;
    QString m_cacheFolder;
    QTimer m_deliveries;
    std::shared_ptr<WriteRun> m_run; ///< The write under way.
    Inquirer m_inquirer;
};

} // namespace zib
