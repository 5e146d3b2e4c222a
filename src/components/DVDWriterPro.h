#pragma once

#include "common/DiscNames.h"

#include <QList>
#include <QObject>
#include <QString>

namespace zib {

/// One write speed that drive and disc allow.
struct WriteSpeed
{
    double factor = 0; ///< Times 176.4 kB/s, the speed of sound.
    int value = 0;     ///< What setWriteSpeed takes: kB/s of 1000 bytes.

    bool operator==(const WriteSpeed&) const = default;
};

} // namespace zib

/// Writes an audio disc in one session.
///
/// Order of calls: initializeDrives, selectDrive, the settings, addAudioTrack for each track, start; then
/// events until exactly one of WriteCompleted, WriteCancelled and WriteError; then start again or destroy.
/// Everything is called from the thread that owns the object, and signals arrive on it. Calls that wait for a
/// drive let the owner's events go on meanwhile, the user's input included, so that a handler may call
/// abandon(); no other call is made then. Destroying a busy writer cancels and does not wait: the drive is
/// freed behind it.
class DVDWriterPro : public QObject
{
    Q_OBJECT
public:
    // What discStatus tells.
    static constexpr int kNoDisc = 254;
    static constexpr int kBlankDisc = 255;
    static constexpr int kAppendableDisc = 253;
    static constexpr int kUnusableDisc = 0;
    /// The error code of a drive error that comes with sense information.
    static constexpr int kDriveError = 3;

    using QObject::QObject;
    ~DVDWriterPro() override;

    /// Finds the recorders. The last one writes disc images.
    /// @returns false when a recorder exists that may not be opened or that another program holds.
    virtual bool initializeDrives(bool exclusive) = 0;
    virtual int driveCount() const = 0;
    virtual bool canWriteCdR(int drive) const = 0;
    virtual bool canWriteCdRw(int drive) const = 0;
    /// Whether the drive can write audio tracks in one of the modes used here.
    virtual bool canWriteAudio(int drive) const = 0;
    /// Identity texts of a drive: its path, its maker and its model.
    virtual QString driveText1(int drive) const = 0;
    virtual QString driveText2(int drive) const = 0;
    virtual QString driveText3(int drive) const = 0;
    virtual bool selectDrive(int drive) = 0;
    virtual bool supportsBufferProtection() const = 0;

    /// kNoDisc, kBlankDisc, kAppendableDisc or another value for a disc that cannot be used; asks the drive.
    virtual int discStatus() = 0;
    /// Whether the disc in the drive already holds data, rewritable discs included; asks the drive.
    virtual bool discHoldsData() = 0;
    /// The fastest speed's value, 0 when unknown.
    virtual int maxWriteSpeed() = 0;
    /// The speeds of drive and disc, fastest first, each once.
    virtual QList<zib::WriteSpeed> writeSpeeds() = 0;
    /// @param value a WriteSpeed's value; 0 is the drive's own choice.
    virtual void setWriteSpeed(int value) = 0;

    virtual void setCacheLocally(bool on) = 0;
    /// Folder for local copies of the tracks; they are removed after the write, whatever its end.
    virtual void setCacheFolder(const QString& folder) = 0;
    /// 0 is session-at-once, with track-at-once where the drive cannot.
    virtual void setWriteMode(int mode) = 0;
    virtual void setTestWrite(bool on) = 0;
    virtual bool testWrite() const = 0;
    virtual void setCloseSession(bool on) = 0;
    virtual void setCloseDisc(bool on) = 0;
    virtual void setBufferProtection(bool on) = 0;
    /// Whether the disc is compared with the files, to the sample, once it is closed. An image always is; a
    /// test write never.
    virtual void setVerify(bool on) = 0;

    /// Adds a track from a WAV file of 44100 Hz, 16 bits, 2 channels.  @returns false when the file is no
    /// such file.
    virtual bool addAudioTrack(const QString& path) = 0;
    /// What an added track is called, for CD-TEXT or the sheet of an image. A recorder that cannot write
    /// names leaves them out.  @param track from 1 to trackCount().
    virtual void nameTrack(int track, const zib::TrackNames& names) = 0;
    /// What the disc is called. Its artist is the one that all tracks share.
    virtual void nameDisc(const QString& title) = 0;
    virtual int trackCount() const = 0;
    /// Begins writing and returns at once.  @returns false when it could not begin; then no event follows.
    virtual bool start() = 0;
    /// Asks a running write to end; WriteCancelled follows, or the end that came first.
    virtual void cancel() = 0;
    /// Ends a call that is waiting for a drive: it returns at once and as if nothing were known. Does nothing
    /// when none waits.
    virtual void abandon() {}
    /// Closes the work after a real write.  @param eject whether the disc is handed out.
    virtual void finish(bool eject) = 0;

signals:
    void PreparingToWrite();
    /// @param percent 0 to 100, never falling within one start().
    void CachingProgress(qint16 percent);
    /// @param number sectors of the track.  @param track from 1.
    void ReadingTrack(const QString& fileName, qint32 number, qint32 track);
    /// At most about 20 times a second.  @param done bytes of the track written so far; ends at @p size.
    void WritingProgress(qint32 track, qint32 done, qint32 size);
    void ClosingTrack(qint32 track);
    void ClosingDisc();
    /// The track is compared with its file; begins when the disc has been closed and read back. At most about
    /// 20 times a second; ends at @p size.  @param done frames of the track.
    void ComparingTrack(qint32 track, qint32 done, qint32 size);
    /// What goes on where none of the events above says it: a phase of its own, or why a drive is being
    /// waited for, with the drive's own reason.
    void Waiting(const QString& what);
    /// What the user should know: before the end, the state of a disc that was begun or where an image lies;
    /// while drives are looked for, which of them may not be used.
    void Remark(const QString& text);
    /// Only after the disc was closed and read back to show the tracks written; or a simulation went through.
    void WriteCompleted();
    void WriteCancelled();
    /// @param error kDriveError with a sense code 1000 to 1055 and the sense data "[K ASC ASCQ]"; any other
    /// code with a description that says what to do.
    void WriteError(qint32 error, qint32 sense, const QString& description, const QString& senseData);
    /// Remarks of the engine that nobody has to act on.
    void Information(const QString& text, qint32 a, qint32 b, qint32 c);
};
