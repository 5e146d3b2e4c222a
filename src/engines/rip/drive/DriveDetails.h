#pragma once

#include "engines/rip/Disc.h"
#include "engines/rip/drive/DriveQuestion.h"

#include <atomic>
#include <optional>

namespace zib {

/// What a drive tells of its disc beside sound and table of contents, by commands that not every drive knows:
/// each is bounded in time, and a drive that refuses one is not asked again. One thread at a time.
class DriveDetails
{
public:
    /// @param drive outlives this.
    explicit DriveDetails(_CdIo* drive) : m_drive(drive) {}

    /// The names in the disc's CD-TEXT, as READ TOC/PMA/ATIP gives it in format 5 (MMC-5, 6.26).
    DiscNames names(const QList<TocTrack>& tracks);
    /// The gap of the track @p next at the end of @p track, by the disc's Q sub-channel; 0 where it is not
    /// found.  @param stopped ends the search when set by another thread.
    qint32 gapBetween(const TocTrack& track, const TocTrack& next, const std::atomic<bool>& stopped);

private:
    QByteArray textPacks();
    bool readText(QByteArray& reply);
    std::optional<bool> isGapOf(int track, qint32 frame);

    _CdIo* const m_drive;
    std::optional<QByteArray> m_packs; ///< Once they were asked for.
    bool m_refusesQ = false;
    qint32 m_missed = 0; ///< Frames by which the drive misses the sub-channel of the one that is asked for.
};

} // namespace zib
