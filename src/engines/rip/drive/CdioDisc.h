#pragma once

#include "engines/rip/Disc.h"
#include "engines/rip/drive/DriveDetails.h"

#include <atomic>
#include <memory>

namespace zib {

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

/// The disc in a drive. One thread at a time.
class CdioDisc final : public Disc
{
public:
    /// @returns NoPermission or NotFound.
    static Outcome<std::shared_ptr<CdioDisc>> openDrive(const QString& device);

    DriveIdentity identity() const;
    /// Asks without waking or locking the drive.  @param newDisc set when the drive reports another disc.
    DiscPresence presence(bool* newDisc = nullptr) const;
    /// Asks whether the disc can be read at once, which may make the drive start it.
    DiscPresence readiness() const;
    /// Fastest reading as a factor of playing speed; 0 when the drive does not say.
    int maxReadSpeed() const;
    /// @param factor times playing speed; 0 is the drive's own choice.
    void setReadSpeed(int factor) const;
    /// The lead-out between two sessions belongs to no track.
    QList<TocTrack> tracks() const override;
    DiscNames names() const override;
    qint32 gapBehind(const TocTrack& track, const std::atomic<bool>& stopped) const override;
    std::unique_ptr<FrameReader> makeReader(const std::atomic<bool>& stopped,
                                            Progress progress) const override;

    /// Reads frames of sound once, without a second try.
    /// @returns NoMedium, WrongMedium (another disc), DeviceGone, Busy (not ready yet), Unsupported (the
    /// drive refuses to read sound), or UnreadableFile.
    Outcome<> read(char* data, qint32 first, qint32 count) const;

    _CdIo* handle() const { return m_disc.get(); }

private:
    CdioDisc(std::shared_ptr<_CdIo> disc, QString path);
    const QList<TocTrack>& known() const;
    Failure whyFailed(int error) const;
    qint32 sessionCut(const TocTrack& track, const TocTrack& next, qint32 lastSession) const;

    std::shared_ptr<_CdIo> m_disc;
    QString m_path;
    mutable DriveDetails m_details;
    mutable QList<TocTrack> m_tracks; ///< Once they were needed here.
};

} // namespace zib
