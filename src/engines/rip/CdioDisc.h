#pragma once

#include "common/Outcome.h"

#include <QList>
#include <QString>

#include <memory>

struct _CdIo;

namespace zib {

/// A track as the table of contents tells it.
struct TocTrack
{
    int number = 0;   ///< The disc's own number.
    qint32 start = 0; ///< First frame.
    qint32 frames = 0;
    bool audio = false;
    bool copyPermitted = false;
    bool preemphasis = false;

    bool operator==(const TocTrack&) const = default;
};

/// How a drive is sold.
struct DriveIdentity
{
    QString maker{};
    QString model{};
};

/// What a drive says of its disc.
enum class DiscPresence
{
    Absent,
    NotReady, ///< It is there, or may be, but the drive is not done with it.
    Ready,
    Gone ///< The drive itself is not there.
};

/// A disc to be read, in a drive or as an image. One thread at a time.
class CdioDisc
{
public:
    /// @returns NoPermission or NotFound.
    static Outcome<std::shared_ptr<CdioDisc>> openDrive(const QString& device);
    /// @param sheet a CUE sheet.  @returns UnreadableFile when it, or its binary file, is not sound.
    static Outcome<std::shared_ptr<CdioDisc>> openImage(const QString& sheet);

    DriveIdentity identity() const;
    /// Asks without waking or locking the drive.  @param newDisc set when the drive reports another disc.
    DiscPresence presence(bool* newDisc = nullptr) const;
    /// Asks whether the disc can be read at once, which may make the drive start it.
    DiscPresence readiness() const;
    /// Fastest reading as a factor of playing speed; 0 when the drive does not say.
    int maxReadSpeed() const;
    /// @param factor times playing speed; 0 is the drive's own choice.
    void setReadSpeed(int factor) const;
    /// The tracks in disc order; the lead-out between two sessions belongs to none. Empty when there is none.
    QList<TocTrack> tracks() const;

    /// Reads frames of sound once, without a second try.
    /// @returns NoMedium, WrongMedium (another disc), DeviceGone, Busy (not ready yet), or UnreadableFile.
    Outcome<> read(char* data, qint32 first, qint32 count) const;

    _CdIo* handle() const { return m_disc.get(); }

private:
    CdioDisc(std::shared_ptr<_CdIo> disc, QString path, QString binary);
    Failure whyFailed(int error) const;
    qint32 sessionCut(const TocTrack& track, const TocTrack& next, qint32 lastSession) const;

    std::shared_ptr<_CdIo> m_disc;
    QString m_path;
    QString m_binary; ///< The image's binary file; empty for a drive.
};

} // namespace zib
