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

std::array<std::uint8_t, kQBytes> positionOf(const Track& track, std::int32_t lba)
{
    const bool pause = lba < track.start;
    const Msf relative = toMsf((pause ? track.start - lba - 1 : lba - track.start) - kPregapFrames);
    const Msf absolute = toMsf(lba);
    return {static_cast<std::uint8_t>(track.control << 4 | 1),
            decimal(track.number),
            static_cast<std::uint8_t>(pause ? 0 : 1),
            decimal(relative.minute),
            decimal(relative.second),
            decimal(relative.frame),
            0,
            decimal(absolute.minute),
            decimal(absolute.second),
            decimal(absolute.frame)};
}

void putBits(std::array<std::uint8_t, kQBytes>& q, std::size_t at, unsigned value, std::size_t bits)
{
    for (std::size_t i = 0; i < bits; ++i) {
        const bool set = (value >> (bits - 1 - i) & 1U) != 0;
        q.at((at + i) / 8) =
            static_cast<std::uint8_t>(q.at((at + i) / 8) | (set ? 0x80U >> (at + i) % 8 : 0U));
    }
}

// The Red Book's six-bit letters: digits as they are, capitals from 17 on.
unsigned sixBits(char letter)
{
    return static_cast<unsigned>(letter >= 'A' ? letter - 'A' + 17 : letter - '0') & 0x3FU;
}

// One frame in a hundred carries the catalogue number in place of the position, and one the recording code.
bool carriesCode(const Disc& disc, const Track& track, std::int32_t lba, std::array<std::uint8_t, kQBytes>& q)
{
    const auto& mcn = disc.state().mcn;
    const bool catalogue = lba % 100 == 50 && mcn[0] != 0;
    const bool recording = lba % 100 == 75 && track.isrc[0] != 0 && lba >= track.start;
    if (!catalogue && !recording) {
        return false;
    }
    q[0] = static_cast<std::uint8_t>(track.control << 4 | (catalogue ? 2 : 3));
    for (std::size_t i = 0; catalogue && i < mcn.size(); ++i) {
        putBits(q, 8 + 4 * i, static_cast<unsigned>(mcn.at(i) - '0'), 4);
    }
    for (std::size_t i = 0; recording && i < track.isrc.size(); ++i) {
        const char letter = track.isrc.at(i);
        putBits(q, i < 5 ? 8 + 6 * i : 40 + 4 * (i - 5),
                i < 5 ? sixBits(letter) : static_cast<unsigned>(letter - '0'), i < 5 ? 6 : 4);
    }
    q[9] = decimal(toMsf(lba).frame);
    return true;
}

} // namespace

std::array<std::uint8_t, kQBytes> qOf(const Disc& disc, std::int32_t lba)
{
    std::array<std::uint8_t, kQBytes> q{};
    const Track* track = disc.trackAt(lba);
    if (track == nullptr) {
        return q;
    }
    if (!carriesCode(disc, *track, lba, q)) {
        q = positionOf(*track, lba);
    }
    sign(q);
    return q;
}

Bytes rawSubChannelOf(const Disc& disc, std::int32_t lba)
{
    const auto q = qOf(disc, lba);
    const Track* track = disc.trackAt(lba);
    const bool pause = track != nullptr && lba < track->start;
    Bytes raw(96);
    for (std::size_t i = 0; i < raw.size(); ++i) {
        const bool bit = (q.at(i / 8) >> (7 - i % 8) & 1) != 0;
        raw[i] = static_cast<std::uint8_t>((pause ? 0x80 : 0) | (bit ? 0x40 : 0));
    }
    return raw;
}

} // namespace zib::drive
