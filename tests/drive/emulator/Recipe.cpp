#include "Recipe.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace zib::drive {
namespace {

constexpr std::int32_t kShortestTrack = 300;
constexpr std::int32_t kRunOutFrames = 2;

/// Samples that sound like a soft rumble and never repeat, the same on every run. Ripping programs find out
/// the byte order of a drive by listening, so the content must be smooth: white noise sounds alike both ways.
Bytes rumble(std::uint32_t seed, std::int32_t frames)
{
    Bytes bytes(static_cast<std::size_t>(frames) * kFrameBytes);
    std::uint32_t state = seed * 2654435761U + 1;
    std::array<std::int32_t, 2> level{};
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        state = state * 1664525U + 1013904223U;
        auto& value = level.at(i / 2 % 2);
        value += static_cast<std::int32_t>(state >> 20U) - 2048 - value / 32;
        const auto sample = static_cast<std::uint16_t>(std::clamp(value, -32768, 32767));
        bytes[i] = static_cast<std::uint8_t>(sample & 0xFFU);
        bytes[i + 1] = static_cast<std::uint8_t>(sample >> 8U);
    }
    return bytes;
}

Bytes fileContent(const std::string& path)
{
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, std::istreambuf_iterator<char>{}};
}

/// Carries out the lines of a recipe one by one.
class Cook
{
public:
    Cook(Disc& disc, std::string folder) : m_disc(disc), m_folder(std::move(folder)) {}

    bool carryOut(const std::string& line)
    {
        std::istringstream words{line};
        std::string what;
        if (!(words >> what) || what.front() == '#') {
            return true;
        }
        if (what == "audio" || what == "data") {
            return addTrack(what == "data", words);
        }
        if (what == "session" || what == "close") {
            return closeSession(what == "close");
        }
        if (what == "mcn") {
            return readCode(words, m_disc.state().mcn);
        }
        return what == "cdtext" && addCdText(words);
    }

private:
    template <std::size_t Size>
    static bool readCode(std::istringstream& words, std::array<char, Size>& code)
    {
        std::string text;
        words >> text;
        std::copy_n(text.begin(), std::min(Size, text.size()), code.begin());
        return text.size() == Size;
    }

    bool readOption(const std::string& word, Track& track)
    {
        if (word == "preemphasis") {
            track.control |= kControlPreEmphasis;
        } else if (word == "copy") {
            track.control |= kControlCopyPermitted;
        } else if (word.starts_with("isrc=")) {
            std::istringstream code{word.substr(5)};
            return readCode(code, track.isrc);
        } else if (word.starts_with("number=")) {
            track.number = static_cast<std::uint8_t>(std::atoi(word.c_str() + 7));
        } else if (word.starts_with("pregap=")) {
            m_pregap = std::atoi(word.c_str() + 7);
        } else {
            return false;
        }
        return true;
    }

    bool addTrack(bool data, std::istringstream& words)
    {
        std::string content;
        Track track;
        const Track* last = m_disc.lastTrack();
        const bool newSession = last == nullptr || last->session < m_disc.openSession();
        track.number = static_cast<std::uint8_t>(last == nullptr ? 1 : last->number + 1);
        track.control = data ? kControlData : 0;
        track.session = m_disc.openSession();
        m_pregap = 0;
        words >> content;
        for (std::string word; words >> word;) {
            if (!readOption(word, track)) {
                return false;
            }
        }
        track.pregap = newSession ? m_disc.nextTrackStart() - kPregapFrames : last->end;
        track.start = newSession ? m_disc.nextTrackStart() : track.pregap + m_pregap;
        return fill(track, content);
    }

    // The content is a number of frames of rumble, or a file of raw samples that is padded to whole frames.
    bool fill(Track& track, const std::string& content)
    {
        std::int32_t frames = 0;
        const char* const end = content.data() + content.size();
        const bool counted = std::from_chars(content.data(), end, frames).ptr == end;
        Bytes bytes = counted ? rumble(track.number, frames) : fileContent(m_folder + "/" + content);
        const std::size_t whole = (bytes.size() + kFrameBytes - 1) / kFrameBytes;
        bytes.resize(std::max<std::size_t>(whole, kShortestTrack) * kFrameBytes);
        track.end = track.start + static_cast<std::int32_t>(bytes.size() / kFrameBytes);
        track.complete = true;
        if (content.empty() || track.end > m_disc.state().lastLeadOut ||
            m_disc.state().trackCount >= kMaxTracks) {
            return false;
        }
        m_disc.addTrack(track);
        return m_disc.writeFrames(track.start, bytes);
    }

    bool closeSession(bool finalize)
    {
        DiscState& state = m_disc.state();
        const Track* last = m_disc.lastTrack();
        if (last == nullptr || last->session != m_disc.openSession()) {
            return false;
        }
        m_disc.addSession(last->end, true);
        state.writtenEnd = std::max(state.writtenEnd, last->end + kRunOutFrames);
        state.finalized = finalize;
        return true;
    }

    // A file of 18-byte packs, as in the lead-in.
    bool addCdText(std::istringstream& words)
    {
        std::string name;
        words >> name;
        const Bytes packs = fileContent(m_folder + "/" + name);
        DiscState& state = m_disc.state();
        const bool fits = !packs.empty() && packs.size() <= state.cdText.size();
        if (fits) {
            std::ranges::copy(packs, state.cdText.begin());
            state.cdTextBytes = static_cast<std::uint32_t>(packs.size());
        }
        return fits;
    }

    Disc& m_disc;
    std::string m_folder;
    std::int32_t m_pregap = 0;
};

} // namespace

bool openWithRecipe(Disc& disc, const DriveConfig& config)
{
    const bool existed = std::filesystem::exists(config.disc + ".state");
    if (!disc.open(config.disc, config.discKind, config.discFrames)) {
        return false;
    }
    if (existed || config.recipe.empty()) {
        return true;
    }
    std::ifstream file{config.recipe};
    Cook cook{disc, std::filesystem::path{config.recipe}.parent_path().string()};
    for (std::string line; std::getline(file, line);) {
        if (!cook.carryOut(line)) {
            std::fprintf(stderr, "emulated drive: recipe not understood: %s\n", line.c_str());
            return false;
        }
    }
    return true;
}

} // namespace zib::drive
