#pragma once

#include "common/NameBearer.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <optional>

/// Extracts audio tracks of a disc, or of a disc image, into WAV files of 44100 Hz, 16 bits, 2 channels.
///
/// Order of calls: selectDevice, questions about the disc, clearQueue, addTrack, start; then
/// ExtractionStarted, for each queued track TrackStarted, progress and TrackFinished, and at the end one
/// ExtractionFinished; nothing more after abort. Everything is called from the owner's thread and signals
/// arrive on it. Positions are frames of 1/75 second, counted from the disc's start. No call waits long for a
/// drive: what a slow one has not told yet is missing at first, and driveState tells kNoDisc until it is
/// there. Destroying a busy ripper ends the extraction as abort does.
class CDRipperX : public QObject
{
    Q_OBJECT
public:
    // What driveState tells.
    static constexpr int kPlaying = 0;
    static constexpr int kPaused = 1;
    static constexpr int kNoDisc = 2;
    static constexpr int kDiscLoaded = 4;
    // Kinds of ExtractionProgress: the work of reading and checking, and the position within the track.
    static constexpr int kReadingProgress = 0;
    static constexpr int kVerifyingProgress = 1;
    static constexpr int kRepairingProgress = 2;
    static constexpr int kSkippingProgress = 6; ///< A place that no reading agrees on.
    static constexpr int kPositionProgress =
        7; ///< The only kind that never falls and ends at the track's end.
    static constexpr int kReadErrorProgress = 12;
    // What status tells.
    static constexpr int kReady = 0;
    static constexpr int kNoSuchDevice = 1;
    static constexpr int kNoPermission = 2;
    static constexpr int kHeldByAnother = 3; ///< Another program has the drive for itself.
    static constexpr int kExtracting = 4;    ///< Not while an extraction runs.
    static constexpr int kNothingToDo = 5;   ///< Nothing is selected, or nothing is queued.

    using QObject::QObject;
    ~CDRipperX() override;

    /// Looks for devices: drives first, then the disc images of the program folder. What answers late is told
    /// by DevicesChanged.
    virtual int deviceCount() = 0;
    /// Identity texts: the path, the maker and the model; of an image its name, "Disc" and "image". The last
    /// one tells in parentheses why the device cannot be used, for as long as that is so.
    virtual QString deviceText1(int device) const = 0;
    virtual QString deviceText2(int device) const = 0;
    virtual QString deviceText3(int device) const = 0;
    /// The path of the device, and why it cannot be used where that is known: more than the list has room
    /// for.
    virtual QString deviceHint(int device) const { return deviceText1(device); }
    /// @returns false when the drive cannot be used; status then says why, and driveState tells when it can
    /// be.
    virtual bool selectDevice(int device) = 0;
    /// Why the last selectDevice, addTrack or start failed; kReady when it did not.
    virtual int status() const = 0;
    /// Fastest reading speed as a factor of playing speed; 0 when the drive does not say.
    virtual int maxReadSpeed() = 0;
    /// @param factor times playing speed; 0 is the drive's own choice.
    virtual void setReadSpeed(int factor) = 0;

    virtual bool discPresent() = 0;
    virtual int trackCount() = 0;
    /// Tracks and playing time of the disc in words.
    virtual QString discText() = 0;
    // Tracks count from 1 to trackCount() in disc order, whatever number the disc gives its first one.
    virtual qint32 trackStart(int track) = 0;
    virtual qint32 trackLength(int track) = 0;
    virtual bool isAudioTrack(int track) = 0;
    virtual bool copyPermitted(int track) = 0;
    /// A length as "mm:ss:ff".
    virtual QString timeText(qint32 length) const = 0;
    /// kPlaying, kPaused, kNoDisc, kDiscLoaded or another number, as last known: kPlaying while an extraction
    /// runs. Asks the drive behind the caller's back, and never wakes or locks it.
    virtual int driveState() = 0;

    virtual void clearQueue() = 0;
    /// @param path absolute; a missing folder is made, a file of that name is replaced once the track is
    /// whole.  @param seen who bore the name when the user was asked: another one is never replaced. Without
    /// it, whoever bears the name when the track is begun.
    /// @returns false when the track holds no sound or the file could not be made.
    virtual bool addTrack(int track, const QString& path,
                          const std::optional<zib::NameBearer>& seen = {}) = 0;
    /// @returns true when the extraction has begun.
    virtual bool start() = 0;
    /// Ends a running extraction without further events. Within two seconds the unfinished file is gone.
    virtual void abort() = 0;
    /// After the end: one line for each track that brought no file, with the place in the track as
    /// minute:second:frame and the reason; empty when all is well.
    virtual QStringList unreadTracks() const = 0;

signals:
    /// The texts of devices are others now, or there are more of them: each keeps its number.
    void DevicesChanged(int count);
    void ExtractionStarted();
    /// @param file the path of the file to be.  @param end the frame behind the track's last one.
    void TrackStarted(const QString& file, qint32 start, qint32 end, qint32 track);
    /// At most about 20 times a second for each kind.
    void ExtractionProgress(int kind, qint32 position);
    /// Whether the track brought a file or not.
    void TrackFinished();
    void ExtractionFinished();
};
