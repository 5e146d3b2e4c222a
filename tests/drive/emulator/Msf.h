#pragma once

#include <cstdint>

namespace zib::drive {

inline constexpr std::int32_t kFramesPerSecond = 75;
inline constexpr std::int32_t kPregapFrames = 150;
inline constexpr std::size_t kFrameBytes = 2352;

/// An absolute time of the disc; address 0 is 00:02:00.
struct Msf
{
    std::uint8_t minute = 0;
    std::uint8_t second = 0;
    std::uint8_t frame = 0;
};

/// The lead-in lies before address -150 and is counted down from 100 minutes, as in the ATIP.
[[nodiscard]] constexpr Msf toMsf(std::int32_t lba)
{
    const std::int32_t frames = lba >= -kPregapFrames ? lba + kPregapFrames : lba + 450150;
    return {static_cast<std::uint8_t>(frames / kFramesPerSecond / 60),
            static_cast<std::uint8_t>(frames / kFramesPerSecond % 60),
            static_cast<std::uint8_t>(frames % kFramesPerSecond)};
}

/// The inverse of toMsf() for the program area (minutes below 90 or above it alike).
[[nodiscard]] constexpr std::int32_t toLba(Msf msf)
{
    return (msf.minute * 60 + msf.second) * kFramesPerSecond + msf.frame - kPregapFrames;
}

} // namespace zib::drive
