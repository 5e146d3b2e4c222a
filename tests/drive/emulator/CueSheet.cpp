#include "CueSheet.h"

#include <algorithm>

namespace zib::drive {
namespace {

constexpr std::uint8_t kLeadOutTrack = 0xAA;
constexpr std::int32_t kShortestTrack = 300; // the Red Book's four seconds

struct Entry
{
    std::uint8_t control;
    std::uint8_t adr;
    std::uint8_t track;
    std::uint8_t index;
    std::uint8_t dataForm;
    std::int32_t lba;
    ByteView raw;
};

Entry entryAt(ByteView list, std::size_t at)
{
    const ByteView raw = list.subspan(at, kCueEntryBytes);
    return {static_cast<std::uint8_t>(raw[0] >> 4U),
            static_cast<std::uint8_t>(raw[0] & 0xFU),
            raw[1],
            raw[2],
            raw[3],
            toLba({raw[5], raw[6], raw[7]}),
            raw};
}

/// Reads the entries one by one; every step may refuse the sheet.
class Builder
{
public:
    Builder(CueSheet& sheet, int firstTrackNumber) : m_sheet(sheet), m_least(firstTrackNumber) {}

    bool take(const Entry& entry)
    {
        switch (entry.adr) {
        case 1:
            return takePosition(entry);
        case 2:
            return takeCatalogNumber(entry);
        case 3:
            return takeRecordingCode(entry);
        default:
            return false;
        }
    }

    [[nodiscard]] bool finished() const { return m_leadInSeen && m_leadOutSeen && !m_sheet.tracks.empty(); }

private:
    bool takePosition(const Entry& entry)
    {
        if (m_leadOutSeen) {
            return false;
        }
        if (!m_leadInSeen) {
            m_leadInSeen = entry.track == 0 && entry.index == 0;
            m_sheet.leadInForm = entry.dataForm;
            return m_leadInSeen;
        }
        if (!m_sheet.areas.empty() && entry.lba < m_sheet.areas.back().first) {
            return false;
        }
        m_sheet.areas.push_back({entry.lba, entry.dataForm});
        return entry.track == kLeadOutTrack ? takeLeadOut(entry) : takeIndex(entry);
    }

    bool takeLeadOut(const Entry& entry)
    {
        m_leadOutSeen = entry.index == 1 && m_indexOneSeen;
        m_sheet.leadOut = entry.lba;
        endTrack(entry.lba);
        for (Track& track : m_sheet.tracks) {
            track.isrc = m_codes.at(track.number);
        }
        return m_leadOutSeen;
    }

    bool takeIndex(const Entry& entry)
    {
        if (m_sheet.tracks.empty() || entry.track != m_sheet.tracks.back().number) {
            return beginTrack(entry);
        }
        Track& track = m_sheet.tracks.back();
        if (entry.index == 1 && !m_indexOneSeen) {
            track.start = entry.lba;
            m_indexOneSeen = true;
        } else if (entry.index <= 1 || !m_indexOneSeen) {
            return false;
        }
        return track.control == entry.control;
    }

    bool beginTrack(const Entry& entry)
    {
        const int wanted = m_sheet.tracks.empty() ? entry.track : m_sheet.tracks.back().number + 1;
        const bool firstInPlace = !m_sheet.tracks.empty() || (entry.index == 0 && entry.track >= m_least);
        if (entry.track != wanted || entry.track > kMaxTracks || entry.index > 1 || !firstInPlace) {
            return false;
        }
        endTrack(entry.lba);
        Track track;
        track.number = entry.track;
        track.control = entry.control;
        track.pregap = entry.lba;
        track.start = entry.lba;
        m_indexOneSeen = entry.index == 1;
        m_sheet.tracks.push_back(track);
        return true;
    }

    void endTrack(std::int32_t lba)
    {
        if (!m_sheet.tracks.empty()) {
            m_sheet.tracks.back().end = lba;
        }
    }

    // A catalogue number comes in two entries: seven digits, then six. Each entry carries them from its third
    // byte on.
    bool takeCatalogNumber(const Entry& entry)
    {
        const std::size_t at = m_catalogEntries++ == 0 ? 0 : 7;
        std::copy_n(entry.raw.begin() + 1, at == 0 ? 7 : 6,
                    m_sheet.mcn.begin() + static_cast<std::ptrdiff_t>(at));
        return m_catalogEntries <= 2;
    }

    // A recording code comes in two entries of six letters, before or after the track's first position.
    bool takeRecordingCode(const Entry& entry)
    {
        if (entry.track == 0 || entry.track > kMaxTracks || m_codeEntries.at(entry.track) > 1) {
            return false;
        }
        const auto at = m_codeEntries.at(entry.track)++ == 0 ? 0 : 6;
        std::copy_n(entry.raw.begin() + 2, 6, m_codes.at(entry.track).begin() + at);
        return true;
    }

    CueSheet& m_sheet;
    int m_least;
    bool m_leadInSeen = false;
    bool m_leadOutSeen = false;
    bool m_indexOneSeen = false;
    int m_catalogEntries = 0;
    std::array<int, kMaxTracks + 1> m_codeEntries{};
    std::array<std::array<char, 12>, kMaxTracks + 1> m_codes{};
};

// A pause belongs to the track it precedes, but its time counts for the track before it.
bool tracksLongEnough(const CueSheet& sheet)
{
    std::int32_t next = sheet.leadOut;
    for (auto track = sheet.tracks.rbegin(); track != sheet.tracks.rend(); ++track) {
        if (next - track->start < kShortestTrack) {
            return false;
        }
        next = track->start;
    }
    return true;
}

bool fitsOn(const CueSheet& sheet, const Disc& disc)
{
    return sheet.first == disc.nextTrackStart() - kPregapFrames &&
           sheet.leadOut <= disc.state().lastLeadOut &&
           sheet.tracks.front().start >= sheet.first + kPregapFrames;
}

} // namespace

std::size_t bytesOfForm(std::uint8_t dataForm)
{
    std::size_t main = 0;
    switch (dataForm & 0x3FU) {
    case 0x00:
    case 0x11:
    case 0x13:
        main = kFrameBytes;
        break;
    case 0x10:
    case 0x12:
        main = 2048;
        break;
    default:
        break;
    }
    return main + ((dataForm & 0xC0U) != 0 ? kSubChannelBytes : 0);
}

std::size_t CueSheet::blockBytes(std::int32_t lba) const
{
    if (lba < first) {
        return bytesOfForm(leadInForm);
    }
    std::uint8_t form = 0;
    for (const Area& area : areas) {
        form = area.first <= lba ? area.dataForm : form;
    }
    return bytesOfForm(form);
}

std::int32_t CueSheet::nextSent(std::int32_t lba) const
{
    while (lba < leadOut && blockBytes(lba) == 0) {
        const auto next = std::ranges::find_if(areas, [&](const Area& area) { return area.first > lba; });
        lba = next == areas.end() ? leadOut : next->first;
    }
    return lba;
}

Sense readCueSheet(ByteView list, const Disc& disc, CueSheet& sheet)
{
    if (list.empty() || list.size() % kCueEntryBytes != 0 || list.size() > kMaxCueBytes) {
        return kParameterListLength;
    }
    const Track* last = disc.lastTrack();
    Builder builder{sheet, last == nullptr ? 1 : last->number + 1};
    for (std::size_t at = 0; at < list.size(); at += kCueEntryBytes) {
        if (!builder.take(entryAt(list, at))) {
            return kInvalidParameter;
        }
    }
    if (!builder.finished()) {
        return kInvalidParameter;
    }
    sheet.first = sheet.areas.front().first;
    return fitsOn(sheet, disc) && tracksLongEnough(sheet) ? kGood : kInvalidParameter;
}

} // namespace zib::drive
