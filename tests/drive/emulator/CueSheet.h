#pragma once

#include "Bytes.h"
#include "Disc.h"
#include "Sense.h"

#include <array>
#include <cstdint>
#include <vector>

namespace zib::drive {

inline constexpr std::size_t kCueEntryBytes = 8;
inline constexpr std::size_t kMaxCueBytes = 256 * kCueEntryBytes;
inline constexpr std::size_t kSubChannelBytes = 96;

/// A SEND CUE SHEET parameter list, read and checked.
struct CueSheet
{
    /// A stretch of the session written in one data form, up to the next area.
    struct Area
    {
        std::int32_t first = 0;
        std::uint8_t dataForm = 0;
    };

    std::vector<Track> tracks;
    std::vector<Area> areas; ///< program area and lead-out, ascending
    std::uint8_t leadInForm = 0;
    std::int32_t first = 0; ///< address of the first frame after the lead-in
    std::int32_t leadOut = 0;
    std::array<char, 13> mcn{};

    /// How many bytes the host sends for the frame at @p lba; 0 where the drive makes the frame itself.
    [[nodiscard]] std::size_t blockBytes(std::int32_t lba) const;
    /// The first address from @p lba on for which the host sends bytes, at most the lead-out.
    [[nodiscard]] std::int32_t nextSent(std::int32_t lba) const;
};

/// How many bytes of main and sub-channel data a block of @p dataForm has (MMC, SEND CUE SHEET).
[[nodiscard]] std::size_t bytesOfForm(std::uint8_t dataForm);

/// Reads @p list, which is to go on @p disc, into @p sheet.
/// @returns the sense data with which a drive refuses the sheet, or kGood.
[[nodiscard]] Sense readCueSheet(ByteView list, const Disc& disc, CueSheet& sheet);

} // namespace zib::drive
