#include "Commands.h"
#include "Operations.h"

#include <algorithm>

namespace zib::drive {
namespace {

constexpr std::int32_t kShortestTrack = 300;
constexpr std::int32_t kRunOutFrames = 2;
constexpr std::int32_t kLeadInStart = -11635;
constexpr std::size_t kUserBytes = 2048;
constexpr std::size_t kPackInSubChannel = 24; // 18 bytes, six bits in each byte of the sub-channel

// ---- CD-TEXT
// -------------------------------------------------------------------------------------------------

std::array<std::uint8_t, kCdTextPackBytes> packAt(ByteView symbols)
{
    std::array<std::uint8_t, kCdTextPackBytes> pack{};
    for (std::size_t bit = 0; bit < kCdTextPackBytes * 8; ++bit) {
        const bool set = (symbols[bit / 6] >> (5 - bit % 6) & 1) != 0;
        pack.at(bit / 8) = static_cast<std::uint8_t>(pack.at(bit / 8) << 1U | (set ? 1U : 0U));
    }
    return pack;
}

bool knows(const DiscState& disc, const std::array<std::uint8_t, kCdTextPackBytes>& pack)
{
    for (std::size_t at = 0; at < disc.cdTextBytes; at += pack.size()) {
        if (std::equal(pack.begin(), pack.end(), disc.cdText.begin() + at)) {
            return true;
        }
    }
    return false;
}

// The lead-in repeats the packs over and over; each is kept once.
void keepCdText(DiscState& disc, ByteView blocks)
{
    for (std::size_t at = 0; at + kPackInSubChannel <= blocks.size(); at += kPackInSubChannel) {
        const auto pack = packAt(blocks.subspan(at, kPackInSubChannel));
        const bool room = disc.cdTextBytes + pack.size() <= disc.cdText.size();
        if (pack[0] >= 0x80 && room && !knows(disc, pack)) {
            std::ranges::copy(pack, disc.cdText.begin() + disc.cdTextBytes);
            disc.cdTextBytes += static_cast<std::uint32_t>(pack.size());
        }
    }
}

// ---- frames
// --------------------------------------------------------------------------------------------------

Bytes dataFrame(std::int32_t lba, ByteView user)
{
    const Msf msf = toMsf(lba);
    const auto decimal = [](std::uint8_t value) {
        return static_cast<std::uint8_t>(value / 10 << 4 | value % 10);
    };
    Bytes frame(kFrameBytes);
    std::fill(frame.begin() + 1, frame.begin() + 11, static_cast<std::uint8_t>(0xFF));
    frame[12] = decimal(msf.minute);
    frame[13] = decimal(msf.second);
    frame[14] = decimal(msf.frame);
    frame[15] = 1;
    std::ranges::copy(user, frame.begin() + 16);
    return frame;
}

bool store(Disc& disc, std::int32_t lba, ByteView data, std::size_t blockBytes)
{
    if (blockBytes == kFrameBytes) {
        return disc.writeFrames(lba, data);
    }
    bool stored = true;
    for (std::size_t at = 0; at + blockBytes <= data.size(); at += blockBytes, ++lba) {
        const ByteView block = data.subspan(at, blockBytes);
        stored = disc.writeFrames(lba, blockBytes >= kFrameBytes
                                           ? Bytes{block.begin(), block.begin() + kFrameBytes}
                                           : dataFrame(lba, block.first(kUserBytes))) &&
                 stored;
    }
    return stored;
}

constexpr Sense kWriteError{0x3, 0x0C, 0x00};

// ---- session at once
// -----------------------------------------------------------------------------------------

void layTracks(Station& station)
{
    Disc& disc = *station.disc;
    const std::uint8_t session = disc.openSession();
    for (Track track : station.cue.tracks) {
        track.session = session;
        disc.addTrack(track);
    }
    disc.state().mcn = station.cue.mcn;
    disc.addSession(station.cue.leadOut, false);
}

void completeSession(Station& station)
{
    station.state.sessionRunning = false;
    station.state.cueBytes = 0;
    if (station.state.simulated) {
        return;
    }
    DiscState& disc = station.disc->state();
    for (Track& track : disc.tracks) {
        track.complete = true;
    }
    disc.sessions.at(disc.sessionCount - 1).complete = true;
    disc.writtenEnd = std::max(disc.writtenEnd, station.cue.leadOut);
    disc.finalized = !station.multiSession();
}

Answer writeLeadIn(Station& station, const CommandRange& range, ByteView data)
{
    DriveState& state = station.state;
    const std::size_t blockBytes = station.cue.blockBytes(range.first);
    const bool inOrder = state.nextLeadIn == 0 || range.first == state.nextLeadIn;
    if (blockBytes != kSubChannelBytes || !inOrder || range.first < kLeadInStart - 1000) {
        return kInvalidWriteAddress;
    }
    if (data.size() != blockBytes * static_cast<std::size_t>(range.count)) {
        return kParameterListLength;
    }
    state.nextLeadIn = range.first + range.count;
    if (!state.simulated) {
        keepCdText(station.disc->state(), data);
    }
    return kGood;
}

bool oneForm(const CueSheet& cue, const CommandRange& range)
{
    return cue.blockBytes(range.first) == cue.blockBytes(range.first + range.count - 1);
}

Answer writeSession(Station& station, const CommandRange& range, ByteView data)
{
    DriveState& state = station.state;
    if (!state.sessionRunning) {
        return kSequenceError;
    }
    if (range.first < station.cue.first) {
        return writeLeadIn(station, range, data);
    }
    if (range.first != state.nextBlock || range.first + range.count > station.cue.leadOut) {
        return kInvalidWriteAddress;
    }
    const std::size_t blockBytes = station.cue.blockBytes(range.first);
    if (!oneForm(station.cue, range) || data.size() != blockBytes * static_cast<std::size_t>(range.count)) {
        return kParameterListLength;
    }
    if (!state.simulated) {
        if (range.first == station.cue.nextSent(station.cue.first)) {
            layTracks(station);
        }
        if (!store(*station.disc, range.first, data, blockBytes)) {
            return kWriteError;
        }
    }
    state.nextBlock = station.cue.nextSent(range.first + range.count);
    if (state.nextBlock >= station.cue.leadOut) {
        completeSession(station);
    }
    return kGood;
}

// ---- track at once
// -------------------------------------------------------------------------------------------

std::size_t trackBlockBytes(const Station& station)
{
    return (station.state.writeParameters[4] & 0xFU) == 8 ? kUserBytes : kFrameBytes;
}

void copyRecordingCode(const Station& station, Track& track)
{
    const auto& page = station.state.writeParameters;
    if ((page[32] & 0x80U) != 0) {
        std::copy_n(page.begin() + 33, track.isrc.size(), track.isrc.begin());
    }
    auto& mcn = station.disc->state().mcn;
    if ((page[16] & 0x80U) != 0) {
        std::copy_n(page.begin() + 17, mcn.size(), mcn.begin());
    }
}

Track& beginTrack(Station& station, std::int32_t start)
{
    Disc& disc = *station.disc;
    Track track;
    track.number = static_cast<std::uint8_t>(disc.lastTrack() == nullptr ? 1 : disc.lastTrack()->number + 1);
    track.session = disc.openSession();
    track.control = station.state.writeParameters[3] & 0xFU;
    track.start = start;
    track.pregap = start - kPregapFrames;
    track.end = start;
    copyRecordingCode(station, track);
    return disc.addTrack(track);
}

Answer simulateTrack(Station& station, const CommandRange& range)
{
    DriveState& state = station.state;
    const bool fresh = state.simulatedTracks == 0 && !state.simulatedOpen;
    const std::int32_t next = fresh ? station.disc->nextTrackStart() : state.simulatedNext;
    if (range.first != next) {
        return kInvalidWriteAddress;
    }
    if (range.first + range.count > station.disc->state().lastLeadOut) {
        return kEndOfUserArea;
    }
    state.simulatedOpen = true;
    state.simulatedNext = range.first + range.count;
    return kGood;
}

Answer writeTrack(Station& station, const CommandRange& range, ByteView data)
{
    const std::size_t blockBytes = trackBlockBytes(station);
    if (data.size() != blockBytes * static_cast<std::size_t>(range.count)) {
        return kParameterListLength;
    }
    if (station.testWrite()) {
        return simulateTrack(station, range);
    }
    Disc& disc = *station.disc;
    Track* track = disc.openTrack();
    if (range.first != (track != nullptr ? track->end : disc.nextTrackStart())) {
        return kInvalidWriteAddress;
    }
    if (range.first + range.count > disc.state().lastLeadOut || disc.state().trackCount >= kMaxTracks) {
        return kEndOfUserArea;
    }
    if (track == nullptr) {
        track = &beginTrack(station, range.first);
    }
    if (!store(disc, range.first, data, blockBytes)) {
        return kWriteError;
    }
    track->end = range.first + range.count;
    return kGood;
}

// ---- closing
// -------------------------------------------------------------------------------------------------

Answer busyFor(Station& station, int milliseconds, bool immediate)
{
    Answer answer;
    if (immediate) {
        station.state.busyUntilMs = monotonicMs() + milliseconds;
    } else {
        answer.takesMs = milliseconds;
    }
    return answer;
}

Sense closeSimulated(DriveState& state, bool session)
{
    if (session) {
        state.simulatedTracks = 0;
        state.simulatedOpen = false;
    } else if (state.simulatedOpen) {
        state.simulatedOpen = false;
        ++state.simulatedTracks;
        state.simulatedNext += kRunOutFrames + kPregapFrames;
    }
    return kGood;
}

Sense closeTrack(Disc& disc)
{
    Track* track = disc.openTrack();
    if (track == nullptr) {
        return kGood;
    }
    if (track->session <= disc.state().sessionCount) {
        return kGood; // part of a session at once, which ends with its last frame only
    }
    track->end = std::max(track->end, track->start + kShortestTrack);
    track->complete = true;
    disc.state().writtenEnd = std::max(disc.state().writtenEnd, track->end + kRunOutFrames);
    return kGood;
}

Sense endTrack(Station& station)
{
    return station.testWrite() ? closeSimulated(station.state, false) : closeTrack(*station.disc);
}

// A session at once that ended early has its lead-in already; only the lead-out is added.
Sense closeInterrupted(Disc& disc)
{
    for (Track& track : disc.state().tracks) {
        track.complete = true;
    }
    disc.state().sessions.at(disc.state().sessionCount - 1).complete = true;
    disc.state().finalized = true;
    return kGood;
}

Sense closeSession(Station& station)
{
    Disc& disc = *station.disc;
    DiscState& state = disc.state();
    if (state.trackCount == 0) {
        return kNothingToClose;
    }
    if (state.sessionCount > 0 && !state.sessions.at(state.sessionCount - 1).complete) {
        return closeInterrupted(disc);
    }
    if (disc.openTrack() != nullptr) {
        return kIncompleteTrack;
    }
    if (disc.lastTrack()->session == disc.openSession()) {
        disc.addSession(disc.lastTrack()->end + kRunOutFrames, true);
    }
    state.finalized = state.finalized || !station.multiSession();
    return kGood;
}

} // namespace

Answer sendCueSheet(Station& station, const Request& request)
{
    DriveState& state = station.state;
    state.sessionRunning = false;
    if (station.writeType() != kSessionAtOnce || !station.config.sao) {
        return kSequenceError;
    }
    if (!station.writable() || station.disc->openTrack() != nullptr) {
        return kCannotWriteMedium;
    }
    CueSheet sheet;
    const auto size = std::min<std::size_t>(bigEndian(request.cdb, 6, 3), request.dataOut.size());
    const Sense sense = readCueSheet(request.dataOut.first(size), *station.disc, sheet);
    if (!sense.good()) {
        return sense;
    }
    std::copy_n(request.dataOut.begin(), size, state.cue.begin());
    state.cueBytes = static_cast<std::uint32_t>(size);
    ++state.cueSerial;
    state.sessionRunning = true;
    if (station.disc->state().sessionCount == 0) {
        station.disc->state().cdTextBytes = 0; // a lead-in that was broken off is written anew
    }
    state.simulated = station.testWrite();
    state.nextBlock = sheet.nextSent(sheet.first);
    state.nextLeadIn = 0;
    station.cue = sheet;
    return kGood;
}

Answer sendOpc(Station& station, const Request&)
{
    return station.writable() ? kGood : kCannotWriteMedium;
}

Answer write(Station& station, const Request& request)
{
    const CommandRange range = rangeOf(request.cdb);
    if (range.count <= 0) {
        return kGood;
    }
    const bool session = station.writeType() == kSessionAtOnce;
    if (!station.writable()) {
        return kCannotWriteMedium;
    }
    return session ? writeSession(station, range, request.dataOut)
                   : writeTrack(station, range, request.dataOut);
}

Answer synchronizeCache(Station& station, const Request& request)
{
    const bool sessionAtOnce = station.writeType() == kSessionAtOnce;
    const bool justCompleted = sessionAtOnce && !station.state.sessionRunning;
    if (!sessionAtOnce) {
        endTrack(station); // with track at once, emptying the buffer ends the track
    }
    return busyFor(station, justCompleted ? station.config.closingMs : 0, (request.cdb[1] & 2U) != 0);
}

Answer closeTrackSession(Station& station, const Request& request)
{
    const std::uint8_t function = request.cdb[2] & 7U;
    if (function != 1 && function != 2) {
        return kInvalidField;
    }
    station.state.sessionRunning = false;
    const Sense sense = function == 1         ? endTrack(station)
                        : station.testWrite() ? closeSimulated(station.state, true)
                                              : closeSession(station);
    if (!sense.good()) {
        return sense;
    }
    return busyFor(station, station.config.closingMs, (request.cdb[1] & 1U) != 0);
}

Answer blankDisc(Station& station, const Request& request)
{
    if (station.disc->state().kind != DiscKind::CdRw || !station.config.writesCdRw) {
        return kCannotWriteMedium;
    }
    if ((request.cdb[1] & 7U) > 1) {
        return kInvalidField; // whole discs only: fully or by forgetting their table of contents
    }
    station.state.sessionRunning = false;
    if (!station.testWrite()) {
        station.disc->blank();
    }
    return busyFor(station, station.config.blankingMs, (request.cdb[1] & 0x10U) != 0);
}

} // namespace zib::drive
