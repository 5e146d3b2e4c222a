#pragma once

#include "common/CdTime.h"
#include "common/DiscNames.h"
#include "common/Outcome.h"
#include "components/DVDWriterPro.h"
#include "engines/burn/tracks/TrackSource.h"

#include <QList>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace zib {

/// What is to be written, and how.
struct BurnJob
{
    QList<BurnTrack>
        tracks;        ///< 1 to 99, in disc order, each with a pregap of kPregapFrames; read by TrackSource.
    int speed = 0;     ///< kB/s of 1000 bytes; 0 is the drive's own choice.
    int writeMode = 0; ///< 0 is session-at-once, with track-at-once where the drive cannot.
    bool simulate = false;
    bool bufferProtection = false;
    bool closeSession = true;
    bool closeDisc = true;
    bool verify = false; ///< Compare the disc with the files once it is closed; an image is always compared.
    DiscNames names{};   ///< Of the disc and of each track; none where there are none.
    const std::atomic<bool>* cancelled = nullptr; ///< Set by another thread to end the job; may be missing.

    bool isCancelled() const { return cancelled && cancelled->load(); }
    /// Frames of all tracks and their pregaps.
    CdTime totalLength() const;
};

/// What a recorder tells while it works, on the thread that runs write(), as often as it likes.
/// Tracks count from 1. For each track: readingTrack, any number of progress, the last one at full size.
class BurnObserver
{
public:
    virtual ~BurnObserver() = default;
    virtual void readingTrack(int track) = 0;
    /// @param doneBytes bytes of the track on the disc so far.  @param sizeBytes its length on the disc in
    /// bytes.
    virtual void progress(int track, qint64 doneBytes, qint64 sizeBytes) = 0;
    virtual void closingTrack(int track) = 0;
    virtual void closingDisc() = 0;
    /// The disc is looked at again after it was closed, or after a test.
    virtual void readingBack() {}
    /// A track is compared with its file, after all was read back. The last one of a track at its full
    /// length.
    virtual void comparing(int track, qint64 doneFrames, qint64 frames)
    {
        Q_UNUSED(track)
        Q_UNUSED(doneFrames)
        Q_UNUSED(frames)
    }
    /// What the recorder is being waited for, in words for the user; empty when it goes on. Any thread.
    virtual void waiting(const QString&) {}
    /// What the user should know beside the end: the state of a disc that was begun, or where an image lies.
    virtual void remark(const QString&) {}
};

/// Error codes of failures that come without sense data. Never DVDWriterPro::kDriveError.
namespace BurnErrorCode {
inline constexpr qint32 kSourceFile = 1;   ///< A track's file cannot be read, or is not what it was.
inline constexpr qint32 kStorage = 2;      ///< No room, or no right to write, for local copies or an image.
inline constexpr qint32 kDeviceGone = 4;   ///< The recorder went away.
inline constexpr qint32 kNoPermission = 5; ///< The account may not use the recorder.
inline constexpr qint32 kBusy = 6;         ///< Another program holds the recorder.
inline constexpr qint32 kWrongDisc = 7;    ///< The disc in the recorder cannot take these tracks.
inline constexpr qint32 kVerify = 8;       ///< Read back, the disc does not show what was written.
inline constexpr qint32 kStalled = 9;      ///< The recorder stopped answering.
inline constexpr qint32 kUnsupported = 10; ///< The recorder cannot do what was asked.
} // namespace BurnErrorCode

/// Why a write ended before its end.
struct BurnError
{
    bool cancelled = false;
    qint32 error = 0;      ///< DVDWriterPro::kDriveError, or a BurnErrorCode.
    qint32 sense = 0;      ///< 1000 to 1055 with kDriveError.
    QString description{}; ///< A sentence that says what happened, or what to do.
    QString senseData{};   ///< "[K ASC ASCQ]" in hexadecimal, as the drive reported it.

    /// The end that the user asked for.
    static BurnError byUser();
    /// A drive's own error. The description is left empty: the sense code has its sentence.
    static BurnError withSense(qint32 sense, const QString& senseData);
    /// A failure with its code and a sentence that names its detail and says what to do.
    static BurnError from(const Failure& failure);

    bool operator==(const BurnError&) const = default;
};

/// What is in a recorder.
struct Medium
{
    int status = DVDWriterPro::kNoDisc; ///< One of DVDWriterPro's disc states.
    bool holdsData = false;
    CdTime capacity{};          ///< Frames that may be written, pregaps included; 0 is unknown, and no limit.
    QList<WriteSpeed> speeds{}; ///< Fastest first, each once; empty when there is no choice.
    /// Why the drive could not tell, in its own words; the rest then means nothing.
    std::optional<BurnError> trouble{};
};

/// What an inspection may say while it lasts, and whether somebody still waits for it.
struct InspectionTalk
{
    std::function<void(const QString& what)> waiting{}; ///< As BurnObserver::waiting. May be missing.
    const std::atomic<bool>* cancelled = nullptr;       ///< May be missing.

    bool isCancelled() const { return cancelled && cancelled->load(); }
    void say(const QString& what) const
    {
        if (waiting)
            waiting(what);
    }
};

/// One place that can take a disc: a drive, or the recorder of disc images. Calls block; the writer makes
/// them on a worker thread, never two at a time for one recorder. The identity and ability calls answer at
/// once, from any thread, with what was found when the recorder was made.
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

    /// Looks at the disc. Bounded in time; the drive is left unlocked and free. No disc is an answer, not a
    /// failure; a failure says why the drive could not be asked.
    virtual Outcome<Medium> inspect(const InspectionTalk& talk) = 0;
    /// Writes, closes and reads back. Returns nothing on success. Every phase is bounded in time, and the
    /// recorder is left unlocked and free however it ends. The track count, the files and the capacity were
    /// checked before; what changes since then is an error here.
    virtual std::optional<BurnError> write(const BurnJob& job, BurnObserver& observer) = 0;
    /// Hands the disc out, where there is one.
    virtual void eject() {}
};

/// What a search for recorders brought.
struct FoundRecorders
{
    std::vector<std::shared_ptr<Recorder>> recorders{};
    bool allUsable =
        true;          ///< false when a recorder exists that may not be opened or that another program holds.
    QString trouble{}; ///< Which ones, why, and what to do; a line each.
};

/// Finds recorders. Runs on the worker thread and may take its time.
using FindRecorders = std::function<FoundRecorders()>;

} // namespace zib
