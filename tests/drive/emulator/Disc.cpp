#include "Disc.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <span>

namespace zib::drive {
namespace {

constexpr std::uint32_t kStateVersion = 1;
// MMC: the lead-out of the first session lasts 90 seconds, that of a later one 30; a lead-in lasts 60.
constexpr std::int32_t kFirstSessionGap = 6750 + 4500;
constexpr std::int32_t kLaterSessionGap = 2250 + 4500;
constexpr std::int32_t kRunOutFrames = 2;

off_t imageOffset(std::int32_t lba)
{
    return static_cast<off_t>(lba + kPregapFrames) * static_cast<off_t>(kFrameBytes);
}

} // namespace

Disc::~Disc()
{
    if (m_image >= 0) {
        ::close(m_image);
    }
}

bool Disc::open(const std::string& stem, DiscKind kind, std::int32_t frames)
{
    m_image = ::open((stem + ".bin").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    return m_image >= 0 && m_state.map(stem + ".state", [&](DiscState& fresh) {
        fresh.version = kStateVersion;
        fresh.kind = kind;
        fresh.lastLeadOut = lastLeadOutFor(frames);
        fresh.writtenEnd = -kPregapFrames;
    });
}

DiscStatus Disc::status() const
{
    if (m_state->finalized) {
        return DiscStatus::Complete;
    }
    return m_state->trackCount == 0 ? DiscStatus::Blank : DiscStatus::Incomplete;
}

bool Disc::readable(std::int32_t lba) const
{
    return m_state->trackCount > 0 && lba >= -kPregapFrames && lba < m_state->writtenEnd;
}

const Track* Disc::trackAt(std::int32_t lba) const
{
    const Track* found = nullptr;
    for (const Track& track : std::span{m_state->tracks.data(), m_state->trackCount}) {
        if (found == nullptr || track.pregap <= lba) {
            found = &track;
        }
    }
    return found;
}

const Track* Disc::lastTrack() const
{
    return m_state->trackCount == 0 ? nullptr : &m_state->tracks[m_state->trackCount - 1];
}

Track* Disc::openTrack()
{
    Track* last = m_state->trackCount == 0 ? nullptr : &m_state->tracks[m_state->trackCount - 1];
    return last != nullptr && !last->complete ? last : nullptr;
}

std::uint8_t Disc::openSession() const
{
    const auto& sessions = m_state->sessions;
    const auto complete = std::ranges::count_if(std::span{sessions.data(), m_state->sessionCount},
                                                [](const Session& session) { return session.complete; });
    return static_cast<std::uint8_t>(complete + 1);
}

std::int32_t Disc::nextTrackStart() const
{
    const Track* last = lastTrack();
    if (last == nullptr) {
        return 0;
    }
    if (last->session < openSession()) {
        const std::int32_t gap = last->session == 1 ? kFirstSessionGap : kLaterSessionGap;
        return m_state->sessions[m_state->sessionCount - 1].leadOut + gap + kPregapFrames;
    }
    return last->end + kRunOutFrames + kPregapFrames;
}

Track& Disc::addTrack(const Track& track)
{
    m_state->tracks.at(m_state->trackCount) = track;
    return m_state->tracks.at(m_state->trackCount++);
}

Session& Disc::addSession(std::int32_t leadOut, bool complete)
{
    const std::uint32_t count = m_state->sessionCount++;
    const int before = count == 0 ? 0 : m_state->sessions.at(count - 1).lastTrack;
    const std::span tracks{m_state->tracks.data(), m_state->trackCount};
    const auto first =
        std::ranges::find_if(tracks, [&](const Track& track) { return track.number > before; });
    Session& session = m_state->sessions.at(count);
    session = {first->number, tracks.back().number, complete, leadOut};
    return session;
}

void Disc::blank()
{
    DiscState& state = *m_state;
    state.finalized = false;
    state.trackCount = 0;
    state.sessionCount = 0;
    state.cdTextBytes = 0;
    state.mcn = {};
    state.writtenEnd = -kPregapFrames;
    [[maybe_unused]] const int cut = ::ftruncate(m_image, 0);
}

bool Disc::writeFrames(std::int32_t lba, ByteView frames)
{
    const auto written = ::pwrite(m_image, frames.data(), frames.size(), imageOffset(lba));
    const auto end = lba + static_cast<std::int32_t>(frames.size() / kFrameBytes);
    m_state->writtenEnd = std::max(m_state->writtenEnd, end);
    return written == static_cast<ssize_t>(frames.size());
}

Bytes Disc::readBytes(std::int32_t lba, std::int64_t offset, std::size_t bytes) const
{
    Bytes data(bytes);
    const off_t from = imageOffset(lba) + offset;
    const off_t skipped = std::clamp<off_t>(-from, 0, static_cast<off_t>(bytes));
    [[maybe_unused]] const auto got =
        ::pread(m_image, data.data() + skipped, bytes - static_cast<std::size_t>(skipped), from + skipped);
    return data;
}

} // namespace zib::drive
