#include "engines/audio/mp3/Mp3Header.h"

#include <QtEndian>

#include <array>
#include <cstring>

namespace zib {

namespace {

constexpr std::array<int, 15> kFullKbps{0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320};
constexpr std::array<int, 15> kLowKbps{0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160};
constexpr std::array<int, 3> kFullRates{44100, 48000, 32000};

// Numbers of any width out of a row of bytes, highest bit first.
class Bits
{
public:
    explicit Bits(const uchar* bytes) : m_bytes(bytes) {}

    int take(int count)
    {
        int value = 0;
        for (; count > 0; --count, ++m_at)
            value = value << 1 | (m_bytes[m_at / 8] >> (7 - m_at % 8) & 1);
        return value;
    }
    void skip(int count) { m_at += count; }

private:
    const uchar* m_bytes;
    int m_at = 0;
};

// One granule of one channel.  @returns the bits of its sound data, or -1 when there is no such granule.
int granuleBits(Bits& side, bool lowRate)
{
    constexpr int kMostBigValues = 288; // pairs of the 576 lines
    const int dataBits = side.take(12);
    const int bigValues = side.take(9);
    side.skip(8 + (lowRate ? 9 : 4));
    const bool isSwitched = side.take(1) != 0;
    const int blockType = side.take(2);
    side.skip(20 + (lowRate ? 2 : 3));
    return bigValues > kMostBigValues || (isSwitched && blockType == 0) ? -1 : dataBits;
}

// The tag that many encoders write 120 bytes into the Xing frame: name, then among others delay and padding.
void readEncoderTag(Mp3InfoFrame& info, std::span<const uchar> tag)
{
    constexpr size_t kDelayAt = 21;
    if (tag.size() < kDelayAt + 3)
        return;
    info.delay = tag[kDelayAt] << 4 | tag[kDelayAt + 1] >> 4;
    info.padding = (tag[kDelayAt + 1] & 0x0F) << 8 | tag[kDelayAt + 2];
}

Mp3InfoFrame readXing(std::span<const uchar> tag)
{
    Mp3InfoFrame info;
    if (tag.size() < 8)
        return info;
    const auto flags = qFromBigEndian<quint32>(tag.data() + 4);
    size_t at = 8;
    if ((flags & 1) != 0 && tag.size() >= at + 4)
        info.frames = qFromBigEndian<quint32>(tag.data() + at);
    at += (flags & 1) != 0 ? 4 : 0;
    if ((flags & 2) != 0 && tag.size() >= at + 4)
        info.bytes = qFromBigEndian<quint32>(tag.data() + at);
    at += (flags & 2) != 0 ? 4 : 0;
    at += (flags & 4) != 0 ? 100 : 0; // table of contents
    at += (flags & 8) != 0 ? 4 : 0;   // quality
    if (at < tag.size() && tag[at] != 0)
        readEncoderTag(info, tag.subspan(at));
    return info;
}

} // namespace

std::optional<Mp3Header> Mp3Header::parse(const uchar* bytes)
{
    const int version = bytes[1] >> 3 & 3; // 3 is MPEG 1, 2 MPEG 2, 0 MPEG 2.5
    const int layer = bytes[1] >> 1 & 3;   // 1 is layer III
    const unsigned bitrate = bytes[2] >> 4;
    const unsigned rate = bytes[2] >> 2 & 3;
    if (bytes[0] != 0xFF || (bytes[1] & 0xE0) != 0xE0 || version == 1 || layer != 1 || bitrate == 15 ||
        rate == 3)
        return std::nullopt;
    Mp3Header header;
    header.lowRate = version != 3;
    header.isProtected = (bytes[1] & 1) == 0;
    header.padding = (bytes[2] & 2) != 0;
    header.mono = bytes[3] >> 6 == 3;
    header.rateHz = kFullRates[rate] >> (version == 3 ? 0 : version == 2 ? 1 : 2);
    header.bitrateKbps = header.lowRate ? kLowKbps[bitrate] : kFullKbps[bitrate];
    return header;
}

int Mp3Header::frameBytes(int freeBytes) const
{
    const int unpadded = bitrateKbps == 0 ? freeBytes : (lowRate ? 72'000 : 144'000) * bitrateKbps / rateHz;
    return unpadded + (padding ? 1 : 0);
}

int Mp3Header::sideInfoBytes() const
{
    if (lowRate)
        return mono ? 9 : 17;
    return mono ? 17 : 32;
}

bool Mp3Header::continues(const Mp3Header& other) const
{
    return lowRate == other.lowRate && rateHz == other.rateHz && mono == other.mono &&
           (bitrateKbps == 0) == (other.bitrateKbps == 0);
}

int mainDataBegin(const Mp3Header& header, const uchar* frame)
{
    const uchar* side = frame + header.sideInfoOffset();
    return header.lowRate ? side[0] : side[0] << 1 | side[1] >> 7;
}

int mostMainDataBegin(const Mp3Header& header)
{
    return header.lowRate ? 255 : 511;
}

bool isPlausible(const Mp3Header& header, const uchar* frame, int frameBytes)
{
    const int own = frameBytes - header.sideInfoOffset() - header.sideInfoBytes();
    if (own < 0)
        return false;
    Bits side(frame + header.sideInfoOffset());
    const int begin = side.take(header.lowRate ? 8 : 9);
    if (header.lowRate)
        side.skip(header.mono ? 1 : 2);
    else
        side.skip(header.mono ? 5 + 4 : 3 + 8);
    int bits = 0;
    for (int granule = 0; granule < (header.lowRate ? 1 : 2) * header.channels(); ++granule) {
        const int more = granuleBits(side, header.lowRate);
        if (more < 0)
            return false;
        bits += more;
    }
    return bits <= 8 * (begin + own);
}

std::optional<Mp3InfoFrame> Mp3InfoFrame::parse(const Mp3Header& header, std::span<const uchar> frame)
{
    const auto after = static_cast<size_t>(header.sideInfoBytes()) + 4;
    for (const size_t at : {after, after + 2}) { // the second one behind a check sum
        if (frame.size() < at + 8)
            continue;
        const auto tag = frame.subspan(at);
        if (std::memcmp(tag.data(), "Xing", 4) == 0 || std::memcmp(tag.data(), "Info", 4) == 0)
            return readXing(tag);
    }
    constexpr size_t kVbriAt = 36;
    if (frame.size() >= kVbriAt + 18 && std::memcmp(frame.data() + kVbriAt, "VBRI", 4) == 0) {
        Mp3InfoFrame info;
        info.bytes = qFromBigEndian<quint32>(frame.data() + kVbriAt + 10);
        info.frames = qFromBigEndian<quint32>(frame.data() + kVbriAt + 14);
        return info;
    }
    return std::nullopt;
}

} // namespace zib
