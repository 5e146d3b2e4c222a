#include "fakes/FakeCDRipperX.h"

#include "common/CdTime.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMetaObject>

namespace zib {

namespace {
constexpr int kStepsOfTrack = 4; // started, half, whole, finished
} // namespace

bool FakeCDRipperX::selectDevice(int device)
{
    note(QString("selectDevice %1").arg(device));
    m_failed = running || device < 0 || device >= deviceCount() || !readers[device].usable;
    if (!m_failed)
        selected = device;
    else if (!running)
        selected = -1;
    return !m_failed;
}

int FakeCDRipperX::status() const
{
    note("status");
    return m_failed ? kHeldByAnother : kReady;
}

QString FakeCDRipperX::discText()
{
    note("discText");
    return "fake disc";
}

qint32 FakeCDRipperX::trackStart(int track)
{
    note(QString("trackStart %1").arg(track));
    qint32 start = 0;
    for (int before = 1; before < track; ++before)
        start += at(before).frames;
    return start;
}

QString FakeCDRipperX::timeText(qint32 length) const
{
    return CdTime::fromFrames(length).toMsf();
}

int FakeCDRipperX::driveState()
{
    if (state >= 0)
        return state;
    if (running)
        return kPlaying;
    return discPresent() ? kDiscLoaded : kNoDisc;
}

void FakeCDRipperX::clearQueue()
{
    note("clearQueue");
    queue.clear();
    queuedTracks.clear();
}

bool FakeCDRipperX::addTrack(int track, const QString& path, const std::optional<NameBearer>& seen)
{
    note(QString("addTrack %1 %2").arg(track).arg(path));
    if (!at(track).audio || refusedTracks.contains(track) || !QDir::isAbsolutePath(path))
        return false;
    queue << path;
    queuedTracks << track;
    mayReplace << seen;
    return true;
}

bool FakeCDRipperX::start()
{
    note("start");
    if (onCall)
        onCall();
    if (!starts || running || queue.isEmpty())
        return false;
    running = true;
    if (plays)
        QMetaObject::invokeMethod(
            this, [this] { playNext(0); }, Qt::QueuedConnection);
    return true;
}

void FakeCDRipperX::abort()
{
    note("abort");
    running = false;
}

/// One event of a whole extraction, and the next one from the event loop.
void FakeCDRipperX::playNext(int step)
{
    if (!running)
        return;
    const int index = (step - 1) / kStepsOfTrack;
    const qint32 length = step == 0 ? 0 : trackLength(queuedTracks.value(index));
    const qint32 from = step == 0 ? 0 : trackStart(queuedTracks.value(index));
    if (step == 0) {
        emit ExtractionStarted();
    } else if (index >= queue.size()) {
        running = false;
        emit ExtractionFinished();
        return;
    } else if (step % kStepsOfTrack == 1) {
        emit TrackStarted(queue[index], from, from + length, queuedTracks[index]);
    } else if (step % kStepsOfTrack == 0) {
        QDir().mkpath(QFileInfo(queue[index]).path());
        QFile file(queue[index]);
        if (file.open(QIODevice::WriteOnly))
            file.write(QByteArray(44 + length * kBytesPerFrame, '\0'));
        emit TrackFinished();
    } else {
        emit ExtractionProgress(kPositionProgress,
                                step % kStepsOfTrack == 2 ? from + length / 2 : from + length);
    }
    QMetaObject::invokeMethod(
        this, [this, step] { playNext(step + 1); }, Qt::QueuedConnection);
}

} // namespace zib
