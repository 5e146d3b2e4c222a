#pragma once

#include <QString>

#include <compare>

namespace zib {

// Sizes of compact-disc digital audio (IEC 60908).
inline constexpr int kFramesPerSecond = 75;
inline constexpr int kBytesPerFrame = 2352;
inline constexpr int kSamplesPerFrame = 588; ///< Sample pairs, left and right.
inline constexpr int kCdSampleRate = 44100;
inline constexpr int kCdChannels = 2;
inline constexpr int kCdBits = 16;
inline constexpr int kPregapFrames = 150;        ///< Two seconds before every track.
inline constexpr int kShortestTrackFrames = 300; ///< Four seconds, the shortest track a disc may hold.
inline constexpr int kMostTracks = 99;

/// A length or position on a disc, counted in whole frames of 1/75 second.
class CdTime
{
public:
    constexpr CdTime() = default;
    static constexpr CdTime fromFrames(qint64 frames) { return CdTime(frames); }
    /// The frames that @p samples sample pairs at 44100 Hz fill, a part-frame counted as a whole one.
    static constexpr CdTime holdingSamples(qint64 samples)
    {
        return CdTime((samples + kSamplesPerFrame - 1) / kSamplesPerFrame);
    }

    constexpr qint64 frames() const { return m_frames; }
    constexpr qint64 bytes() const { return m_frames * kBytesPerFrame; }
    /// Minutes, seconds and frames as "mm:ss:ff", frames 00 to 74.
    QString toMsf() const;

    constexpr CdTime operator+(CdTime other) const { return CdTime(m_frames + other.m_frames); }
    constexpr CdTime operator-(CdTime other) const { return CdTime(m_frames - other.m_frames); }
    constexpr auto operator<=>(const CdTime&) const = default; // NOLINT(modernize-use-nullptr): no pointer

private:
    explicit constexpr CdTime(qint64 frames) : m_frames(frames) {}

    qint64 m_frames = 0;
};

} // namespace zib
