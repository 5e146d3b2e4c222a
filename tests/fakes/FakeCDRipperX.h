#pragma once

#include "components/CDRipperX.h"

#include <QList>
#include <QStringList>

#include <functional>

namespace zib {

/// A track as a test imagines it.
struct FakeDiscTrack
{
    qint32 frames = 300;
    bool audio = true;
    bool copy = true;
};

/// A drive as a test imagines it, with its disc; no tracks mean no disc.
struct FakeReader
{
    QString path = "/dev/sr0";
    QString maker = "MAKER";
    QString model = "MODEL";
    bool usable = true;
    int maxSpeed = 48;
    QList<FakeDiscTrack> tracks{};
};

/// A ripper that reads nothing and remembers every call. Its events are the test's own to emit, unless it is
/// told to play a whole extraction, which leaves files.
class FakeCDRipperX final : public CDRipperX
{
    Q_OBJECT
public:
    using CDRipperX::CDRipperX;

    int deviceCount() override { return static_cast<int>(readers.size()); }
    QString deviceText1(int device) const override { return identity(device).path; }
    QString deviceText2(int device) const override { return identity(device).maker; }
    QString deviceText3(int device) const override { return identity(device).model; }
    bool selectDevice(int device) override;
    int status() const override;
    int maxReadSpeed() override { return reader().maxSpeed; }
    void setReadSpeed(int factor) override { note(QString("setReadSpeed %1").arg(factor)); }
    bool discPresent() override { return trackCount() > 0; }
    int trackCount() override { return static_cast<int>(reader().tracks.size()); }
    QString discText() override;
    qint32 trackStart(int track) override;
    qint32 trackLength(int track) override { return at(track).frames; }
    bool isAudioTrack(int track) override { return at(track).audio; }
    bool copyPermitted(int track) override { return at(track).copy; }
    QString timeText(qint32 length) const override;
    int driveState() override;
    void clearQueue() override;
    bool addTrack(int track, const QString& path, const std::optional<NameBearer>& seen = {}) override;
    bool start() override;
    void abort() override;
    QStringList unreadTracks() const override { return unread; }

    QList<FakeReader> readers{FakeReader{}};
    int state = -1;               ///< What driveState tells; negative: whether there is a disc.
    QList<int> refusedTracks;     ///< What addTrack refuses; data tracks are refused anyway.
    bool starts = true;           ///< What start answers.
    bool plays = false;           ///< start() plays a whole extraction, event by event, from the event loop.
    QStringList unread;           ///< What unreadTracks tells.
    std::function<void()> onCall; ///< Runs inside start.

    mutable QStringList calls; ///< "selectDevice 0", "addTrack 1 path", "start" ... in order.
    QStringList queue;         ///< Paths, in order.
    QList<int> queuedTracks;
    QList<std::optional<NameBearer>> mayReplace; ///< Of the queued tracks.
    int selected = -1;
    bool running = false;

private:
    FakeReader identity(int device) const { return readers.value(device, FakeReader{{}, {}, {}}); }
    FakeReader reader() const { return readers.value(selected, FakeReader{.maxSpeed = 0}); }
    FakeDiscTrack at(int track) { return reader().tracks.value(track - 1, FakeDiscTrack{0, false, false}); }
    void note(const QString& call) const { calls << call; }
    void playNext(int step);

    bool m_failed = false;
};

} // namespace zib
