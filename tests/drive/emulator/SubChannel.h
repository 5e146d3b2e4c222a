#pragma once

#include "Bytes.h"
#include "Disc.h"

#include <array>

namespace zib::drive {

inline constexpr std::size_t kQBytes = 12;

/// The Q sub-channel of the frame at @p lba, with its check sum, as the disc's tracks imply it.
[[nodiscard]] std::array<std::uint8_t, kQBytes> qOf(const Disc& disc, std::int32_t lba);

/// The 96 bytes of sub-channels P to W of the frame, one bit of each channel in every byte. R to W are empty.
[[nodiscard]] Bytes rawSubChannelOf(const Disc& disc, std::int32_t lba);

} // namespace zib::drive
