#pragma once

#include <QtGlobal>

#include <optional>
#include <span>

namespace zib {

/// What the four bytes before an MPEG layer III frame say (ISO/IEC 11172-3 and 13818-3, and the 2.5
/// extension).
struct Mp3Header
{
    bool lowRate = false;     ///< MPEG 2 or 2.5: half the samples in a frame.
    bool isProtected = false; ///< A 16-bit check sum follows the header.
    bool padding = false;     ///< The frame is one byte longer.
    bool mono = false;
    int rateHz = 0;
    int bitrateKbps = 0; ///< 0 is free format: the distance of two headers tells the size.

    /// Reads the header that begins at @p bytes (four of them).  @returns nothing when it is no layer III
    /// header.
    static std::optional<Mp3Header> parse(const uchar* bytes);

    int channels() const { return mono ? 1 : 2; }
    /// Sample frames that one frame decodes to.
    int samples() const { return lowRate ? 576 : 1152; }
    /// Bytes of the frame with its header; @p freeBytes is the unpadded size in a free-format stream.
    int frameBytes(int freeBytes) const;
    /// Bytes between the start of the frame and its side information.
    int sideInfoOffset() const { return isProtected ? 6 : 4; }
    int sideInfoBytes() const;
    /// Whether both can stand in one stream without the decoder's output changing its format.
    bool continues(const Mp3Header& other) const;
};

/// Bytes by which a frame's sound data begins before the frame itself: its use of the bit reservoir.
int mainDataBegin(const Mp3Header& header, const uchar* frame);
/// The most that this can be.
int mostMainDataBegin(const Mp3Header& header);

/// Bytes of a frame that hold everything but its sound data, at most.
inline constexpr int kMostSideInfoEnd = 38;
/// Whether what a frame tells of its sound data can be true: the data fits between where it begins and the
/// end of the frame, and no value stands for something that does not exist.
/// @param frame its first bytes, up to the end of the side information.
bool isPlausible(const Mp3Header& header, const uchar* frame, int frameBytes);

/// What an information frame (Xing, Info or VBRI) tells of the stream behind it.
struct Mp3InfoFrame
{
    qint64 frames = -1; ///< Frames of sound, or -1 when it does not say.
    qint64 bytes = -1;  ///< Bytes of the stream from this frame on, or -1.
    int delay = -1;     ///< Samples that the encoder put before the sound, or -1.
    int padding = -1;   ///< Samples that it put behind, or -1.

    /// Looks for one in a whole frame.
    static std::optional<Mp3InfoFrame> parse(const Mp3Header& header, std::span<const uchar> frame);
};

} // namespace zib
