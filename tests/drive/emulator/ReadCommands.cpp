#include "Commands.h"
#include "Operations.h"
#include "SubChannel.h"

#include <algorithm>

namespace zib::drive {
namespace {

constexpr std::size_t kHeaderBytes = 16; // sync pattern and header of a data frame
constexpr std::size_t kUserBytes = 2048;

/// Which parts of a frame READ CD is to hand over.
struct Parts
{
    std::uint8_t main = 0;       ///< byte 9 of the command
    std::uint8_t subChannel = 0; ///< byte 10 of the command
};

Answer failureAt(Sense sense, std::int32_t lba)
{
    Answer answer{sense};
    answer.address = lba;
    return answer;
}

void appendMain(Bytes& reply, const Disc& disc, std::int32_t lba, bool data, std::uint8_t flags)
{
    if (!data) {
        if ((flags & 0xF8U) != 0) {
            const Bytes frame = disc.readBytes(lba, 0, kFrameBytes);
            reply.insert(reply.end(), frame.begin(), frame.end());
        }
        return;
    }
    const Bytes frame = disc.readBytes(lba, 0, kFrameBytes);
    const auto copy = [&](std::size_t from, std::size_t size) {
        const auto begin = frame.begin() + static_cast<std::ptrdiff_t>(from);
        reply.insert(reply.end(), begin, begin + static_cast<std::ptrdiff_t>(size));
    };
    if ((flags & 0x80U) != 0) {
        copy(0, 12);
    }
    if ((flags & 0x20U) != 0) {
        copy(12, 4);
    }
    if ((flags & 0x10U) != 0) {
        copy(kHeaderBytes, kUserBytes);
    }
    if ((flags & 0x08U) != 0) {
        copy(kHeaderBytes + kUserBytes, kFrameBytes - kHeaderBytes - kUserBytes);
    }
}

void appendSubChannel(Bytes& reply, const Disc& disc, std::int32_t lba, std::uint8_t selection)
{
    if (selection == 1 || selection == 4) {
        const Bytes raw = rawSubChannelOf(disc, lba);
        reply.insert(reply.end(), raw.begin(), raw.end());
    } else if (selection == 2) {
        const auto q = qOf(disc, lba);
        reply.insert(reply.end(), q.begin(), q.end());
        reply.insert(reply.end(), 4, static_cast<std::uint8_t>(0));
    }
}

bool typeFits(std::uint8_t expected, bool data)
{
    return expected == 0 || (expected == 1) != data;
}

Answer readFrames(const Station& station, const CommandRange& range, std::uint8_t expected, Parts parts)
{
    const Disc& disc = *station.disc;
    const std::uint8_t errorFlags = parts.main >> 1U & 3U;
    if (parts.subChannel == 3 || parts.subChannel > 4 || (errorFlags != 0 && !station.config.c2Pointers)) {
        return kInvalidField;
    }
    Bytes reply;
    reply.reserve(static_cast<std::size_t>(range.count) * kFrameBytes);
    for (std::int32_t lba = range.first; lba < range.first + range.count; ++lba) {
        const auto& state = disc.state();
        if (state.sessionCount == 0 || lba < -kPregapFrames ||
            lba >= state.sessions.at(state.sessionCount - 1).leadOut) {
            return failureAt(kAddressOutOfRange, lba);
        }
        if (!disc.readable(lba)) {
            return failureAt(kUnreadable, lba);
        }
        const bool data = disc.trackAt(lba)->isData();
        if (!typeFits(expected, data)) {
            return failureAt(kIllegalModeForTrack, lba);
        }
        appendMain(reply, disc, lba, data, parts.main);
        reply.insert(reply.end(),
                     errorFlags == 0   ? 0U
                     : errorFlags == 1 ? 294U
                                       : 296U,
                     static_cast<std::uint8_t>(0));
        appendSubChannel(reply, disc, lba, parts.subChannel);
    }
    return reply;
}

} // namespace

Answer readCd(Station& station, const Request& request)
{
    return readFrames(station, rangeOf(request.cdb), request.cdb[1] >> 2U & 7U,
                      {request.cdb[9], static_cast<std::uint8_t>(request.cdb[10] & 7U)});
}

Answer readCdMsf(Station& station, const Request& request)
{
    return readCd(station, request);
}

Answer readBlocks(Station& station, const Request& request)
{
    return readFrames(station, rangeOf(request.cdb), 2, {0x10, 0});
}

Answer readSubChannel(Station& station, const Request& request)
{
    Bytes reply{0, 0x15, 0, 0}; // no audio operation to tell of
    if ((request.cdb[2] & 0x40U) == 0) {
        return reply;
    }
    const auto& disc = station.disc->state();
    const std::uint8_t format = request.cdb[3];
    reply.push_back(format);
    reply.resize(format == 1 ? 16 : 24);
    if (format == 2 && disc.mcn[0] != 0) {
        reply[8] = 0x80;
        std::copy(disc.mcn.begin(), disc.mcn.end(), reply.begin() + 9);
    } else if (format == 3) {
        const std::uint8_t number = request.cdb[6];
        const auto track = std::find_if(disc.tracks.begin(), disc.tracks.begin() + disc.trackCount,
                                        [&](const Track& candidate) { return candidate.number == number; });
        reply[6] = number;
        if (track != disc.tracks.begin() + disc.trackCount && track->isrc[0] != 0) {
            reply[8] = 0x80;
            std::copy(track->isrc.begin(), track->isrc.end(), reply.begin() + 9);
        }
    }
    putBigEndian(reply, 2, 2, static_cast<std::uint32_t>(reply.size() - 4));
    return reply;
}

} // namespace zib::drive
