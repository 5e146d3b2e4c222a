#pragma once

#include <cstdint>

namespace zib::drive {

/// Sense key, additional sense code and qualifier, as SPC and MMC define them. Key 0 with code 0 means "no
/// error".
struct Sense
{
    std::uint8_t key = 0;
    std::uint8_t asc = 0;
    std::uint8_t ascq = 0;

    [[nodiscard]] constexpr bool good() const { return key == 0 && asc == 0 && ascq == 0; }
    friend constexpr bool operator==(const Sense&, const Sense&) = default;
};

inline constexpr Sense kGood{};
inline constexpr Sense kLongWriteInProgress{0x2, 0x04, 0x08};
inline constexpr Sense kNoMedium{0x2, 0x3A, 0x00};
inline constexpr Sense kNoMediumTrayOpen{0x2, 0x3A, 0x02};
inline constexpr Sense kUnreadable{0x3, 0x11, 0x05};
inline constexpr Sense kParameterListLength{0x5, 0x1A, 0x00};
inline constexpr Sense kUnknownCommand{0x5, 0x20, 0x00};
inline constexpr Sense kAddressOutOfRange{0x5, 0x21, 0x00};
inline constexpr Sense kInvalidWriteAddress{0x5, 0x21, 0x02};
inline constexpr Sense kInvalidField{0x5, 0x24, 0x00};
inline constexpr Sense kInvalidParameter{0x5, 0x26, 0x00};
inline constexpr Sense kSequenceError{0x5, 0x2C, 0x00};
inline constexpr Sense kCannotWriteMedium{0x5, 0x30, 0x05};
inline constexpr Sense kMediumRemovalPrevented{0x5, 0x53, 0x02};
inline constexpr Sense kEndOfUserArea{0x5, 0x63, 0x00};
inline constexpr Sense kIllegalModeForTrack{0x5, 0x64, 0x00};
inline constexpr Sense kNothingToClose{0x5, 0x72, 0x04};
inline constexpr Sense kIncompleteTrack{0x5, 0x72, 0x03};
inline constexpr Sense kMediumChanged{0x6, 0x28, 0x00};
inline constexpr Sense kReset{0x6, 0x29, 0x00};

} // namespace zib::drive
