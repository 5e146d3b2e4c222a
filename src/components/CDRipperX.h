#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

/// Extracts audio tracks of a disc, or of a disc image, into WAV files of 44100 Hz, 16 bits, 2 channels.
///
/// Order of calls: selectDevice, questions about the disc, clearQueue, addTrack, start; then
/// ExtractionStarted, for each queued track TrackStarted, progress and TrackFinished, and at the end one
/// ExtractionFinished. Everything is called from the owner's thread and signals arrive on it. Positions are
/// frames of 1/75 second.
class CDRipperX : public QObject
{
    Q_OBJECT
public:
    // What driveState tells.
    static constexpr int kPlaying = 0;
    static constexpr int kPaused = 1;
    static constexpr int kNoDisc = 2;
    static constexpr int kDiscLoaded = 4;
    /// The kind of ExtractionProgress that tells the position within the current track.
    static constexpr int kPositionProgress = 7;

    using QObject::QObject;
    ~CDRipperX() override;

    /// Drives first, then the disc images of the program folder.
    virtual int deviceCount() = 0;
    /// Identity texts: the path, the maker (or "Image"), the model (or the image's name).
    virtual QString deviceText1(int device) const = 0;
    virtual QString deviceText2(int device) const = 0;
    virtual QString deviceText3(int device) const = 0;
    virtual bool selectDevice(int device) = 0;
    /// Why the last call failed, as a number; 0 when it did not.
    virtual int status() const = 0;
    /// Fastest reading speed as a factor of playing speed; 0 when the drive does not say.
    virtual int maxReadSpeed() = 0;
    /// @param factor times playing speed; 0 is the drive's own choice.
    virtual void setReadSpeed(int factor) = 0;

    virtual bool discPresent() = 0;
    virtual int trackCount() = 0;
    virtual QString discText() = 0;
    // Tracks count from 1 to trackCount() in disc order, whatever number the disc gives its first one.
    virtual qint32 trackStart(int track) = 0;
    virtual qint32 trackLength(int track) = 0;
    virtual bool isAudioTrack(int track) = 0;
    virtual bool copyPermitted(int track) = 0;
    /// A length as "mm:ss:ff".
    virtual QString timeText(qint32 length) const = 0;
    /// kPlaying, kPaused, kNoDisc, kDiscLoaded or another number; never wakes or locks the drive.
    virtual int driveState() = 0;

    virtual void clearQueue() = 0;
    /// @returns false when the track cannot be extracted.
    virtual bool addTrack(int track, const QString& path) = 0;
    /// @returns true when the extraction has begun.
    virtual bool start() = 0;
    /// Ends a running extraction within two seconds; the unfinished file is removed.
    virtual void abort() = 0;
    /// After the end: one line for each track that could not be read whole, with its place; empty when all is
    /// well.
    virtual QStringList unreadTracks() const = 0;

signals:
    void ExtractionStarted();
    void TrackStarted(const QString& file, qint32 start, qint32 end, qint32 track);
    /// At most about 20 times a second for each kind.
    void ExtractionProgress(int kind, qint32 position);
    void TrackFinished();
    void ExtractionFinished();
};
