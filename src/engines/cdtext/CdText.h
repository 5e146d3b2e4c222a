#pragma once

#include "common/DiscNames.h"

#include <QByteArray>
#include <QList>

#include <optional>

namespace zib {

/// Bytes of one CD-TEXT pack: four of header, twelve of text, two of CRC (IEC 61866, MMC-3 annex J).
inline constexpr int kCdTextPackBytes = 18;
/// Packs of text that one block holds: 255, less the three that describe the block.
inline constexpr int kMostTextPacks = 252;
/// Letters of one text that every reader takes; some reject a whole disc for a longer one.
inline constexpr int kLongestCdText = 160;

/// The texts of a disc as CD-TEXT holds them: ISO 8859-1, entry 0 for the disc, entry n for track n. A list
/// is empty where the disc has no text of its kind, and else holds one, maybe empty, for every track.
struct CdTextTable
{
    QList<QByteArray> titles;
    QList<QByteArray> performers;

    bool isEmpty() const { return titles.isEmpty() && performers.isEmpty(); }
    bool operator==(const CdTextTable&) const = default;
};

/// The texts for a disc of these names. Where they do not fit into one block of packs, the longest are
/// shortened first, all to one length; none is dropped. Empty when no track has a name.
CdTextTable cdTextOf(const DiscNames& names);

/// Packs of text that a table fills. A text equal to the one of the track before takes the two bytes of the
/// repetition mark.
int textPackCount(const CdTextTable& table);

/// The names that packs carry, as a drive gives them; those of the first block that has any. Packs whose CRC
/// is wrong are left out, with the texts that they cut in two.
/// @param packs whole packs of 18 bytes; a rest is ignored.
/// @param firstTrack number of the disc's first track, 1 to 99.  @param trackCount tracks of the disc.
/// @returns nothing when there is no text for any track or the disc.
std::optional<DiscNames> namesInPacks(const QByteArray& packs, int firstTrack, int trackCount);

/// CRC of a pack's first 16 bytes: CCITT polynomial 1021, inverted (IEC 61866).
quint16 cdTextCrc(const char* pack);

} // namespace zib
