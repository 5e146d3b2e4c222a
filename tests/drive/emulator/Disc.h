#pragma once

#include "Bytes.h"
#include "Config.h"
#include "Msf.h"
#include "SharedFile.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace zib::drive {

inline constexpr std::uint8_t kControlPreEmphasis = 0x1;
inline constexpr std::uint8_t kControlCopyPermitted = 0x2;
inline constexpr std::uint8_t kControlData = 0x4;

/// One track of the disc. All addresses are frames; the end is the first frame after the track.
struct Track
{
    std::uint8_t number = 0;
    std::uint8_t session = 0;
    std::uint8_t control = 0; ///< the control field of the Q sub-channel
    bool complete = false;    ///< false while it is being written
    std::int32_t pregap = 0;  ///< address of index 0
    std::int32_t start = 0;   ///< address of index 1
    std::int32_t end = 0;
    std::array<char, 12> isrc{};

    [[nodiscard]] bool isData() const { return (control & kControlData) != 0; }
};

/// One session whose lead-in has been written.
struct Session
{
    std::uint8_t firstTrack = 0;
    std::uint8_t lastTrack = 0;
    bool complete = false; ///< the lead-out has been written too
    std::int32_t leadOut = 0;
};

inline constexpr std::size_t kMaxTracks = 99;
inline constexpr std::size_t kMaxSessions = 20;
inline constexpr std::size_t kCdTextPackBytes = 18;
inline constexpr std::size_t kMaxCdTextBytes = 8 * 256 * kCdTextPackBytes;

/// Everything the disc remembers beside its frames; kept in a mapped file.
struct DiscState
{
    std::uint32_t version = 0;
    DiscKind kind = DiscKind::CdR;
    bool finalized = false;       ///< nothing may be added
    std::int32_t lastLeadOut = 0; ///< latest address at which the lead-out may begin
    std::uint32_t trackCount = 0;
    std::uint32_t sessionCount = 0;
    std::int32_t writtenEnd = 0; ///< frames from here on have never been written
    std::array<Track, kMaxTracks> tracks{};
    std::array<Session, kMaxSessions> sessions{};
    std::array<char, 13> mcn{};
    std::uint32_t cdTextBytes = 0;
    std::array<std::uint8_t, kMaxCdTextBytes> cdText{};
};

/// What READ DISC INFORMATION calls the disc status.
enum class DiscStatus : std::uint8_t
{
    Blank = 0,
    Incomplete = 1,
    Complete = 2
};

/// A compact disc kept in two files: STEM.bin holds the frames, 2352 bytes each, from address -150 on;
/// STEM.state holds the tracks. Not safe for threads: the drive calls under its lock.
class Disc
{
public:
    Disc() = default;
    Disc(const Disc&) = delete;
    Disc& operator=(const Disc&) = delete;
    ~Disc();

    /// Opens the disc at @p stem or makes a blank one of @p kind that plays for @p frames.
    /// @returns false when the files cannot be made.
    bool open(const std::string& stem, DiscKind kind, std::int32_t frames);

    [[nodiscard]] const DiscState& state() const { return *m_state; }
    [[nodiscard]] DiscState& state() { return *m_state; }
    [[nodiscard]] DiscStatus status() const;
    [[nodiscard]] bool readable(std::int32_t lba) const;
    [[nodiscard]] const Track* trackAt(std::int32_t lba) const;
    [[nodiscard]] const Track* lastTrack() const;
    /// The track that is still being written, if any.
    [[nodiscard]] Track* openTrack();
    /// The session that new tracks belong to, counted from 1.
    [[nodiscard]] std::uint8_t openSession() const;
    /// The address at which the next track's index 1 may begin.
    [[nodiscard]] std::int32_t nextTrackStart() const;

    /// Appends a track; the caller has checked that there is room for it.
    Track& addTrack(const Track& track);
    /// Appends a session over all tracks not yet in one.
    Session& addSession(std::int32_t leadOut, bool complete);
    /// Forgets everything written. Keeps kind and capacity.
    void blank();

    /// Stores whole frames of 2352 bytes.
    /// @returns false when the image cannot take them (full file system).
    bool writeFrames(std::int32_t lba, ByteView frames);
    /// Reads @p bytes bytes that begin @p offset bytes into frame @p lba; what was never written reads as
    /// zero.
    [[nodiscard]] Bytes readBytes(std::int32_t lba, std::int64_t offset, std::size_t bytes) const;

private:
    SharedFile<DiscState> m_state;
    int m_image = -1;
};

/// The latest address of the lead-out on a blank disc that plays for @p frames.
[[nodiscard]] constexpr std::int32_t lastLeadOutFor(std::int32_t frames)
{
    return frames - kPregapFrames - 1;
}

} // namespace zib::drive
