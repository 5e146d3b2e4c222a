#include "Commands.h"

#include <algorithm>

namespace zib::drive {
namespace {

constexpr std::uint32_t kBufferBytes = 2048 * 1024;
constexpr std::int32_t kLeadInStart = -11635; // 97:26:65, as on most blank discs

void putMsf(Bytes& bytes, std::size_t at, std::int32_t lba)
{
    const Msf msf = toMsf(lba);
    bytes.at(at) = 0;
    bytes.at(at + 1) = msf.minute;
    bytes.at(at + 2) = msf.second;
    bytes.at(at + 3) = msf.frame;
}

std::uint8_t lastSessionState(const Disc& disc)
{
    switch (disc.status()) {
    case DiscStatus::Complete:
        return 3;
    case DiscStatus::Blank:
        return 0;
    default:
        return disc.lastTrack()->session == disc.openSession() ? 1 : 0;
    }
}

std::uint8_t sessionsOn(const Disc& disc)
{
    const auto open = disc.openSession();
    return static_cast<std::uint8_t>(disc.status() == DiscStatus::Complete ? open - 1 : open);
}

std::uint8_t firstTrackOfLastSession(const Disc& disc)
{
    const std::uint8_t session = sessionsOn(disc);
    for (std::uint32_t i = 0; i < disc.state().trackCount; ++i) {
        if (disc.state().tracks.at(i).session == session) {
            return disc.state().tracks.at(i).number;
        }
    }
    return static_cast<std::uint8_t>(disc.lastTrack() == nullptr ? 1 : disc.lastTrack()->number + 1);
}

std::uint8_t lastTrackOfLastSession(const Disc& disc)
{
    return disc.lastTrack() == nullptr ? 1
                                       : std::max(disc.lastTrack()->number, firstTrackOfLastSession(disc));
}

/// What READ TRACK INFORMATION tells of one track, finished or not.
struct TrackReport
{
    std::uint8_t number = 1;
    std::uint8_t session = 1;
    std::uint8_t control = 0;
    bool blank = false;
    bool nextValid = false;
    std::int32_t start = 0;
    std::int32_t next = 0;
    std::int32_t free = 0;
    std::int32_t size = 0;
};

TrackReport reportOf(const Station& station, const Track& track)
{
    TrackReport report{track.number,           track.session, track.control, false, false, track.start, 0, 0,
                       track.end - track.start};
    const bool interrupted = track.session <= station.disc->state().sessionCount && !track.complete;
    if (!track.complete && !interrupted) {
        report.nextValid = station.writable();
        report.next = track.end;
        report.free = std::max(0, station.disc->state().lastLeadOut - track.end);
        report.size = report.free + track.end - track.start;
    }
    return report;
}

TrackReport nextTrack(const Station& station)
{
    const Disc& disc = *station.disc;
    TrackReport report;
    report.number = static_cast<std::uint8_t>(disc.lastTrack() == nullptr ? 1 : disc.lastTrack()->number + 1);
    report.session = disc.openSession();
    report.blank = true;
    report.nextValid = station.writable();
    report.start = disc.nextTrackStart();
    report.next = report.start;
    if (station.testWrite() && (station.state.simulatedTracks > 0 || station.state.simulatedOpen)) {
        report.number = static_cast<std::uint8_t>(report.number + station.state.simulatedTracks);
        report.next = station.state.simulatedNext;
        report.start = report.next;
    }
    report.free = std::max(0, disc.state().lastLeadOut - report.next);
    report.size = report.free;
    return report;
}

std::optional<TrackReport> findTrack(const Station& station, std::uint8_t kind, std::uint32_t wanted)
{
    Disc& disc = *station.disc;
    const bool addable = disc.status() != DiscStatus::Complete && disc.openTrack() == nullptr;
    const auto next = disc.lastTrack() == nullptr ? 1U : disc.lastTrack()->number + 1U;
    for (std::uint32_t i = 0; i < disc.state().trackCount; ++i) {
        const Track& track = disc.state().tracks.at(i);
        const auto lba = static_cast<std::int32_t>(wanted);
        const bool found = (kind == 0 && lba >= track.pregap && lba < track.end) ||
                           (kind == 1 && track.number == wanted) || (kind == 2 && track.session == wanted);
        const bool invisible = kind == 1 && wanted == 0xFF && !track.complete;
        if (found || invisible) {
            return reportOf(station, track);
        }
    }
    const bool asked =
        (kind == 1 && (wanted == 0xFF || wanted == next)) ||
        (kind == 0 && static_cast<std::int32_t>(wanted) >= disc.nextTrackStart() - kPregapFrames) ||
        (kind == 2 && wanted == disc.openSession());
    return addable && asked ? std::optional(nextTrack(station)) : std::nullopt;
}

} // namespace

Answer readDiscInformation(Station& station, const Request&)
{
    const Disc& disc = *station.disc;
    const bool complete = disc.status() == DiscStatus::Complete;
    Bytes reply(34);
    putBigEndian(reply, 0, 2, 32);
    reply[2] = static_cast<std::uint8_t>((disc.state().kind == DiscKind::CdRw ? 0x10 : 0) |
                                         lastSessionState(disc) << 2 | static_cast<int>(disc.status()));
    reply[3] = disc.state().trackCount == 0 ? 1 : disc.state().tracks[0].number;
    reply[4] = sessionsOn(disc);
    reply[5] = firstTrackOfLastSession(disc);
    reply[6] = lastTrackOfLastSession(disc);
    reply[7] = 0x20;
    reply[8] = disc.state().sessionCount == 0 ? 0xFF : 0x00;
    if (complete) {
        std::fill(reply.begin() + 16, reply.begin() + 24, static_cast<std::uint8_t>(0xFF));
    } else {
        putMsf(reply, 16, disc.openSession() == 1 ? kLeadInStart : disc.nextTrackStart() - 4650);
        putMsf(reply, 20, disc.state().lastLeadOut);
    }
    return reply;
}

Answer readTrackInformation(Station& station, const Request& request)
{
    const auto report = findTrack(station, request.cdb[1] & 3U, bigEndian(request.cdb, 2, 4));
    if (!report) {
        return kInvalidField;
    }
    Bytes reply(36);
    putBigEndian(reply, 0, 2, 34);
    reply[2] = report->number;
    reply[3] = report->session;
    reply[5] = static_cast<std::uint8_t>(report->blank ? 0x04 : report->control);
    reply[6] =
        static_cast<std::uint8_t>((report->blank ? 0x40U : 0U) |
                                  (!report->blank && (report->control & kControlData) != 0 ? 1U : 0x0FU));
    reply[7] = report->nextValid ? 1 : 0;
    putBigEndian(reply, 8, 4, static_cast<std::uint32_t>(report->start));
    putBigEndian(reply, 12, 4, static_cast<std::uint32_t>(report->next));
    putBigEndian(reply, 16, 4, static_cast<std::uint32_t>(report->free));
    putBigEndian(reply, 24, 4, static_cast<std::uint32_t>(report->size));
    return reply;
}

Answer readCapacity(Station& station, const Request&)
{
    const DiscState& disc = station.disc->state();
    const std::int32_t leadOut = disc.sessionCount == 0 ? 1 : disc.sessions.at(disc.sessionCount - 1).leadOut;
    Bytes reply;
    appendBigEndian(reply, 4, static_cast<std::uint32_t>(leadOut - 1));
    appendBigEndian(reply, 4, 2048);
    return reply;
}

Answer readFormatCapacities(Station& station, const Request&)
{
    const bool blank = station.disc->status() == DiscStatus::Blank;
    Bytes reply{0, 0, 0, 8};
    appendBigEndian(reply, 4, static_cast<std::uint32_t>(station.disc->state().lastLeadOut));
    appendBigEndian(reply, 4, (blank ? 0x01000000U : 0x02000000U) | 2048U);
    return reply;
}

Answer readBufferCapacity(Station&, const Request&)
{
    Bytes reply(12);
    putBigEndian(reply, 0, 2, 10);
    putBigEndian(reply, 4, 4, kBufferBytes);
    putBigEndian(reply, 8, 4, kBufferBytes);
    return reply;
}

} // namespace zib::drive
