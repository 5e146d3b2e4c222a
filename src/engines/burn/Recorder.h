#pragma once

#include "common/CdTime.h"
#include "common/Outcome.h"
#include "components/DVDWriterPro.h"

#include <QList>
#include <QString>

#include <atomic>

namespace zib {

/// One track as a recorder takes it: where its samples stand in a file, in CD format.
struct BurnTrack
{
    QString path;          ///< The WAV file, or its local copy.
    QString name;          ///< What the user knows it by: the original's path.
    qint64 dataOffset = 0; ///< First byte of the samples.
    qint64 dataBytes = 0;  ///< Bytes of samples, without padding.
    CdTime length;         ///< Frames on the disc, padding included; at least kShortestTrackFrames.
};

/// What is to be written, and how.
struct BurnJob
{
    QList<BurnTrack> tracks; ///< 1 to 99, in disc order, each with a pregap of kPregapFrames.
    int speed = 0;           ///< kB/s of 1000 bytes; 0 is the drive's own choice.
    bool simulate = false;
    bool bufferProtection = false;
    bool closeSession = true;
    bool closeDisc = true;
    const std::atomic<bool>* cancelled = nullptr; ///< Set by another thread to end the job.

    /// Frames of all tracks and their pregaps.
    CdTime totalLength() const;
};

/// What a recorder tells while it works, on its own thread, as often as it likes.
class BurnObserver
{
public:
    virtual ~BurnObserver() = default;
    virtual void readingTrack(int track) = 0;
    virtual void progress(int track, qint64 doneBytes, qint64 sizeBytes) = 0;
    virtual void closingTrack(int track) = 0;
    virtual void closingDisc() = 0;
};

/// Why a write ended before its end.
struct BurnError
{
    bool cancelled = false;
    qint32 error = 0;    ///< DVDWriterPro::kDriveError, or another code for failures without sense data.
    qint32 sense = 0;    ///< 1000 to 1055 with kDriveError.
    QString description; ///< A sentence that says what happened, or what to do.
    QString senseData;   ///< "[K ASC ASCQ]" in hexadecimal, as the drive reported it.
};

/// What is in a recorder.
struct Medium
{
    int status = DVDWriterPro::kNoDisc; ///< One of DVDWriterPro's disc states.
    bool holdsData = false;
    CdTime capacity;          ///< Frames that may be written, pregaps included.
    QList<WriteSpeed> speeds; ///< Fastest first, each once.
};

/// One place that can take a disc: a drive, or the recorder of disc images. Calls block; the writer makes
/// them on a worker thread, never two at a time for one recorder.
class Recorder
{
public:
    virtual ~Recorder() = default;
    virtual QString path() const = 0;
    virtual QString maker() const = 0;
    virtual QString model() const = 0;
    virtual bool canWriteCdR() const = 0;
    virtual bool canWriteCdRw() const = 0;
    virtual bool canWriteAudio() const = 0;
    virtual bool hasBufferProtection() const = 0;

    /// Looks at the disc. Bounded in time; the drive is left unlocked and free.
    virtual Outcome<Medium> inspect() = 0;
    /// Writes, closes and reads back. Returns nothing on success. Every phase is bounded in time, and the
    /// recorder is left unlocked and free however it ends.
    virtual std::optional<BurnError> write(const BurnJob& job, BurnObserver& observer) = 0;
    /// Hands the disc out, where there is one.
    virtual void eject() {}
};

} // namespace zib
