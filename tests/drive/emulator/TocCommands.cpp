#include "Commands.h"

#include <algorithm>
#include <span>

namespace zib::drive {
namespace {

constexpr std::uint8_t kAdrPosition = 0x10;
constexpr std::int32_t kLeadInStart = -11635;

std::span<const Track> tracksOf(const Disc& disc)
{
    return {disc.state().tracks.data(), disc.state().trackCount};
}

std::span<const Session> sessionsOf(const Disc& disc)
{
    return {disc.state().sessions.data(), disc.state().sessionCount};
}

void appendMsf(Bytes& bytes, std::int32_t lba)
{
    const Msf msf = toMsf(lba);
    bytes.insert(bytes.end(), {msf.minute, msf.second, msf.frame});
}

void appendAddress(Bytes& bytes, std::int32_t lba, bool msf)
{
    if (msf) {
        bytes.push_back(0);
        appendMsf(bytes, lba);
    } else {
        appendBigEndian(bytes, 4, static_cast<std::uint32_t>(lba));
    }
}

Bytes withLength(Bytes reply)
{
    putBigEndian(reply, 0, 2, static_cast<std::uint32_t>(reply.size() - 2));
    return reply;
}

Answer plainToc(const Disc& disc, bool msf, std::uint8_t from)
{
    const auto sessions = sessionsOf(disc);
    if (sessions.empty() || (from > sessions.back().lastTrack && from != 0xAA)) {
        return kInvalidField;
    }
    Bytes reply{0, 0, sessions.front().firstTrack, sessions.back().lastTrack};
    for (const Track& track : tracksOf(disc)) {
        if (track.number < from || track.number > sessions.back().lastTrack) {
            continue;
        }
        reply.insert(reply.end(),
                     {0, static_cast<std::uint8_t>(kAdrPosition | track.control), track.number, 0});
        appendAddress(reply, track.start, msf);
    }
    const std::uint8_t control = tracksOf(disc)[0].control;
    reply.insert(reply.end(), {0, static_cast<std::uint8_t>(kAdrPosition | control), 0xAA, 0});
    appendAddress(reply, sessions.back().leadOut, msf);
    return withLength(reply);
}

Answer sessionInformation(const Disc& disc, bool msf)
{
    const auto sessions = sessionsOf(disc);
    if (sessions.empty()) {
        return kInvalidField;
    }
    const auto first = std::ranges::find(tracksOf(disc), sessions.back().firstTrack, &Track::number);
    Bytes reply{0, 0, 1, static_cast<std::uint8_t>(sessions.size())};
    reply.insert(reply.end(),
                 {0, static_cast<std::uint8_t>(kAdrPosition | first->control), first->number, 0});
    appendAddress(reply, first->start, msf);
    return withLength(reply);
}

void appendPoint(Bytes& reply, std::uint8_t session, std::uint8_t control, std::uint8_t point, Msf position)
{
    reply.insert(reply.end(), {session, static_cast<std::uint8_t>(kAdrPosition | control), 0, point, 0, 0, 0,
                               0, position.minute, position.second, position.frame});
}

void appendSession(Bytes& reply, const Disc& disc, std::uint8_t number)
{
    const Session& session = sessionsOf(disc)[number - 1U];
    const auto tracks = tracksOf(disc);
    const auto first = std::ranges::find(tracks, session.firstTrack, &Track::number);
    appendPoint(reply, number, first->control, 0xA0, {session.firstTrack, 0, 0});
    appendPoint(reply, number, first->control, 0xA1, {session.lastTrack, 0, 0});
    appendPoint(reply, number, first->control, 0xA2, toMsf(session.leadOut));
    for (const Track& track : tracks) {
        if (track.number >= session.firstTrack && track.number <= session.lastTrack) {
            appendPoint(reply, number, track.control, track.number, toMsf(track.start));
        }
    }
}

// A further session may follow: point B0 tells where its program area would begin and where the disc ends.
void appendNextSession(Bytes& reply, const Disc& disc, std::uint8_t number)
{
    const Msf next = toMsf(disc.nextTrackStart() - kPregapFrames);
    const Msf last = toMsf(disc.state().lastLeadOut);
    reply.insert(reply.end(), {number, 0x50, 0, 0xB0, next.minute, next.second, next.frame, 1, last.minute,
                               last.second, last.frame});
}

Answer fullToc(const Disc& disc, std::uint8_t from)
{
    const auto sessions = sessionsOf(disc);
    if (sessions.empty() || from > sessions.size()) {
        return kInvalidField;
    }
    Bytes reply{0, 0, 1, static_cast<std::uint8_t>(sessions.size())};
    for (std::uint8_t number = std::max<std::uint8_t>(from, 1); number <= sessions.size(); ++number) {
        appendSession(reply, disc, number);
        const bool last = number == sessions.size();
        if (last && !disc.state().finalized && sessions[number - 1U].complete) {
            appendNextSession(reply, disc, number);
        }
    }
    return withLength(reply);
}

Answer programMemory(const Disc& disc)
{
    Bytes reply{0, 0, 0, 0};
    for (const Track& track : tracksOf(disc)) {
        const Msf end = toMsf(track.end);
        const Msf start = toMsf(track.start);
        reply.insert(reply.end(),
                     {0, static_cast<std::uint8_t>(kAdrPosition | track.control), 0, track.number, end.minute,
                      end.second, end.frame, 0, start.minute, start.second, start.frame});
    }
    return withLength(reply);
}

Answer timeInPregroove(const Disc& disc)
{
    if (disc.state().kind == DiscKind::Pressed) {
        return kInvalidField; // a pressed disc has no groove to carry a time
    }
    const bool rewritable = disc.state().kind == DiscKind::CdRw;
    Bytes reply{0, 0, 0, 0, 0xC2, 0, static_cast<std::uint8_t>(rewritable ? 0xC0 : 0x80), 0};
    appendMsf(reply, kLeadInStart);
    reply.push_back(0);
    appendMsf(reply, disc.state().lastLeadOut);
    reply.resize(28);
    return withLength(reply);
}

Answer cdText(const Station& station)
{
    if (!station.config.cdText) {
        return kInvalidField;
    }
    const DiscState& disc = station.disc->state();
    Bytes reply{0, 0, 0, 0};
    reply.insert(reply.end(), disc.cdText.begin(), disc.cdText.begin() + disc.cdTextBytes);
    return withLength(reply);
}

} // namespace

Answer readToc(Station& station, const Request& request)
{
    const Disc& disc = *station.disc;
    const bool msf = (request.cdb[1] & 2U) != 0;
    const std::uint8_t given = request.cdb[2] & 0xFU;
    const std::uint8_t format = given != 0 ? given : request.cdb[9] >> 6U; // the older place of the field
    switch (format) {
    case 0:
        return plainToc(disc, msf, request.cdb[6]);
    case 1:
        return sessionInformation(disc, msf);
    case 2:
        return fullToc(disc, request.cdb[6]);
    case 3:
        return programMemory(disc);
    case 4:
        return timeInPregroove(disc);
    case 5:
        return cdText(station);
    default:
        return kInvalidField;
    }
}

} // namespace zib::drive
