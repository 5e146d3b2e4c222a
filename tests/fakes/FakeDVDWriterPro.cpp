#include "fakes/FakeDVDWriterPro.h"

#include <QFileInfo>
#include <QMetaObject>

#include <utility>

namespace zib {

namespace {
constexpr qint32 kTrackBytes = 705600; // 300 sectors of 2352 bytes
constexpr int kStepsOfTrack = 4;       // reading, half, whole, closing
} // namespace

bool FakeDVDWriterPro::initializeDrives(bool exclusive)
{
    note(QString("initializeDrives %1").arg(exclusive));
    if (onInitialize)
        onInitialize();
    return initializes;
}

bool FakeDVDWriterPro::selectDrive(int drive)
{
    note(QString("selectDrive %1").arg(drive));
    if (drive < 0 || drive >= driveCount())
        return false;
    selected = drive;
    return true;
}

int FakeDVDWriterPro::discStatus()
{
    note("discStatus");
    if (onDiscStatus)
        onDiscStatus();
    return selected < 0 ? kNoDisc : at(selected).status;
}

bool FakeDVDWriterPro::discHoldsData()
{
    note("discHoldsData");
    return at(selected).holdsData;
}

int FakeDVDWriterPro::maxWriteSpeed()
{
    const auto speeds = at(selected).speeds;
    return speeds.isEmpty() ? 0 : speeds.first().value;
}

QList<WriteSpeed> FakeDVDWriterPro::writeSpeeds()
{
    note("writeSpeeds");
    return at(selected).speeds;
}

void FakeDVDWriterPro::setWriteSpeed(int value)
{
    note(QString("setWriteSpeed %1").arg(value));
}

void FakeDVDWriterPro::setCacheLocally(bool on)
{
    note(QString("setCacheLocally %1").arg(on));
}

void FakeDVDWriterPro::setCacheFolder(const QString& folder)
{
    note("setCacheFolder " + folder);
}

void FakeDVDWriterPro::setWriteMode(int mode)
{
    note(QString("setWriteMode %1").arg(mode));
}

void FakeDVDWriterPro::setTestWrite(bool on)
{
    note(QString("setTestWrite %1").arg(on));
    testing = on;
}

void FakeDVDWriterPro::setCloseSession(bool on)
{
    note(QString("setCloseSession %1").arg(on));
}

void FakeDVDWriterPro::setCloseDisc(bool on)
{
    note(QString("setCloseDisc %1").arg(on));
}

void FakeDVDWriterPro::setBufferProtection(bool on)
{
    note(QString("setBufferProtection %1").arg(on));
}

void FakeDVDWriterPro::setVerify(bool on)
{
    note(QString("setVerify %1").arg(on));
}

bool FakeDVDWriterPro::addAudioTrack(const QString& path)
{
    note("addAudioTrack " + path);
    if (refused.contains(path) || !QFileInfo(path).isFile())
        return false;
    tracks << path;
    return true;
}

bool FakeDVDWriterPro::start()
{
    note("start");
    if (!starts || running || selected < 0 || trackCount() == 0)
        return false;
    running = true;
    if (plays)
        QMetaObject::invokeMethod(
            this, [this] { playNext(0); }, Qt::QueuedConnection);
    return true;
}

void FakeDVDWriterPro::cancel()
{
    note("cancel");
    if (running && obeysCancel)
        QMetaObject::invokeMethod(
            this, [this] { end(&FakeDVDWriterPro::WriteCancelled); }, Qt::QueuedConnection);
}

void FakeDVDWriterPro::finish(bool eject)
{
    note(QString("finish %1").arg(eject));
}

/// One event of a whole write, and the next one from the event loop.
void FakeDVDWriterPro::playNext(int step)
{
    if (!running)
        return;
    const int track = (step - 1) / kStepsOfTrack + 1;
    if (step == 0)
        emit PreparingToWrite();
    else if (track > trackCount())
        return playEnd();
    else if (step % kStepsOfTrack == 1)
        emit ReadingTrack(QFileInfo(tracks.value(track - 1)).fileName(), 300, track);
    else if (step % kStepsOfTrack == 0)
        emit ClosingTrack(track);
    else
        emit WritingProgress(track, step % kStepsOfTrack == 2 ? kTrackBytes / 2 : kTrackBytes, kTrackBytes);
    QMetaObject::invokeMethod(
        this, [this, step] { playNext(step + 1); }, Qt::QueuedConnection);
}

void FakeDVDWriterPro::playEnd()
{
    emit ClosingDisc();
    end(&FakeDVDWriterPro::WriteCompleted);
}

void FakeDVDWriterPro::end(void (FakeDVDWriterPro::*signal)())
{
    if (!std::exchange(running, false))
        return;
    (this->*signal)();
}

} // namespace zib
