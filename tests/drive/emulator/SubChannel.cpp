#include "SubChannel.h"

#include <algorithm>
#include <cstdlib>

namespace zib::drive {
namespace {

std::uint8_t decimal(std::uint8_t value)
{
    return static_cast<std::uint8_t>(value / 10 << 4 | value % 10);
}

// The check sum of the Q channel: CCITT polynomial, inverted, high byte first.
void sign(std::array<std::uint8_t, kQBytes>& q)
{
    std::uint16_t crc = 0;
    for (std::size_t i = 0; i < 10; ++i) {
        crc = static_cast<std::uint16_t>(crc ^ q.at(i) << 8);
        for (int bit = 0; bit < 8; ++bit) {
            crc = static_cast<std::uint16_t>((crc & 0x8000) != 0 ? crc << 1 ^ 0x1021 : crc << 1);
        }
    }
    crc = static_cast<std::uint16_t>(~crc);
    q[10] = static_cast<std::uint8_t>(crc >> 8);
    q[11] = static_cast<std::uint8_t>(crc & 0xFF);
}

} // namespace

std::array<std::uint8_t, kQBytes> qOf(const Disc& disc, std::int32_t lba)
{
    std::array<std::uint8_t, kQBytes> q{};
    const Track* track = disc.trackAt(lba);
    if (track == nullptr) {
        return q;
    }
    const bool pause = lba < track->start;
    const Msf relative = toMsf((pause ? track->start - lba - 1 : lba - track->start) - kPregapFrames);
    const Msf absolute = toMsf(lba);
    q = {static_cast<std::uint8_t>(track->control << 4 | 1), decimal(track->number),
         static_cast<std::uint8_t>(pause ? 0 : 1), decimal(relative.minute), decimal(relative.second),
         decimal(relative.frame), 0, decimal(absolute.minute), decimal(absolute.second), decimal(absolute.frame)};
    sign(q);
    return q;
}

Bytes rawSubChannelOf(const Disc& disc, std::int32_t lba)
{
    const auto q = qOf(disc, lba);
    const bool pause = q[2] == 0;
    Bytes raw(96);
    for (std::size_t i = 0; i < raw.size(); ++i) {
        const bool bit = (q.at(i / 8) >> (7 - i % 8) & 1) != 0;
        raw[i] = static_cast<std::uint8_t>((pause ? 0x80 : 0) | (bit ? 0x40 : 0));
    }
    return raw;
}

} // namespace zib::drive
