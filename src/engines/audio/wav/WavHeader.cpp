#include "engines/audio/wav/WavHeader.h"

#include <QtEndian>

#include <algorithm>

namespace zib {

namespace {

constexpr quint16 kTagPcm = 1;
constexpr quint16 kTagFloat = 3;
constexpr quint16 kTagALaw = 6;
constexpr quint16 kTagMuLaw = 7;
constexpr quint16 kTagMpeg3 = 0x55;
constexpr quint16 kTagExtensible = 0xFFFE;
constexpr quint32 kUnknownSize = 0xFFFFFFFF;
constexpr int kMostChunks = 10'000; // of a file made to keep us busy
constexpr qint64 kMostInfoBytes = 256 * 1024;

quint16 word(const QByteArray& bytes, qsizetype at)
{
    return qFromLittleEndian<quint16>(bytes.constData() + at);
}

quint32 doubleWord(const QByteArray& bytes, qsizetype at)
{
    return qFromLittleEndian<quint32>(bytes.constData() + at);
}

// Whether a size of data was counted: programs that write into a pipe cannot know it and put a large number
// there, mostly a little below or at 2 or 4 GiB.
bool isMeant(qint64 told)
{
    constexpr qint64 kSpare = 0x1000;
    constexpr qint64 kHalf = 0x80000000;
    constexpr qint64 kMost = qint64{1} << 46;
    const auto isJustBelow = [told](qint64 limit) { return told >= limit - kSpare && told <= limit; };
    return !isJustBelow(kHalf) && !isJustBelow(2 * kHalf) && told < kMost;
}

struct Chunk
{
    QByteArray name;
    qint64 offset = 0; // of its content
    quint32 told = 0;  // size as the file tells it
    qint64 bytes = 0;  // size within the file
};

// Reads one file; made for one call of parseWav.
class Parser
{
public:
    explicit Parser(const SourceFile& file) : m_file(file) {}

    std::optional<WavHeader> run();

private:
    std::optional<Chunk> chunkAt(qint64 offset) const;
    bool leadsToTheEnd(qint64 offset) const;
    void take(const Chunk& chunk);
    void takeFormat(const QByteArray& format);
    void takeData(const Chunk& chunk);
    void takeInfo(const QByteArray& list);
    bool isUsable() const;
    bool settle();

    const SourceFile& m_file;
    WavHeader m_header;
    quint16 m_tag = 0;
    quint16 m_blockBytes = 0;
    qint64 m_longData = -1; // the 64-bit size of the data
    bool m_hasFormat = false;
    bool m_hasData = false;
};

std::optional<WavHeader> Parser::run()
{
    qint64 at = 12;
    for (int count = 0; count < kMostChunks; ++count) {
        const auto chunk = chunkAt(at);
        if (!chunk)
            break;
        take(*chunk);
        const bool isData = m_hasData && m_header.dataOffset == chunk->offset;
        const qint64 bytes = isData ? m_header.dataBytes : qint64{chunk->told};
        at = chunk->offset + bytes + (bytes & 1);
        if (!chunkAt(at) && !isData && chunkAt(at - 1))
            --at; // some writers forget the padding byte
    }
    if (!settle())
        return std::nullopt;
    return m_header;
}

std::optional<Chunk> Parser::chunkAt(qint64 offset) const
{
    if (offset < 12 || offset + 8 > m_file.size())
        return std::nullopt;
    const QByteArray head = m_file.bytes(offset, 8);
    if (head.size() < 8)
        return std::nullopt;
    const QByteArray name = head.first(4);
    const auto isPrintable = [](char letter) { return letter >= ' ' && letter <= '~'; };
    if (!std::all_of(name.cbegin(), name.cend(), isPrintable))
        return std::nullopt;
    const quint32 told = doubleWord(head, 4);
    return Chunk{name, offset + 8, told, std::min<qint64>(told, m_file.size() - offset - 8)};
}

// Whether chunks follow each other from here exactly to the end of the file.
bool Parser::leadsToTheEnd(qint64 offset) const
{
    for (int count = 0; count < 64; ++count) {
        if (offset == m_file.size() || offset == m_file.size() + 1)
            return true;
        const auto chunk = chunkAt(offset);
        if (!chunk || chunk->bytes < qint64{chunk->told})
            return false;
        offset = chunk->offset + chunk->bytes + (chunk->bytes & 1);
    }
    return false;
}

void Parser::take(const Chunk& chunk)
{
    if (chunk.name == "fmt " && !m_hasFormat) {
        takeFormat(m_file.bytes(chunk.offset, std::min<qint64>(chunk.bytes, 40)));
    } else if (chunk.name == "ds64" && chunk.bytes >= 16) {
        m_longData = qFromLittleEndian<qint64>(m_file.bytes(chunk.offset + 8, 8).constData());
    } else if (chunk.name == "data" && !m_hasData) {
        takeData(chunk);
    } else if (chunk.name == "LIST" && chunk.bytes >= 4 && chunk.bytes <= kMostInfoBytes) {
        takeInfo(m_file.bytes(chunk.offset, chunk.bytes));
    } else if (chunk.name.toLower() == "id3 ") {
        m_header.id3Offset = chunk.offset;
        m_header.id3Bytes = chunk.bytes;
    }
}

void Parser::takeFormat(const QByteArray& format)
{
    if (format.size() < 14)
        return;
    m_hasFormat = true;
    m_tag = word(format, 0);
    m_header.channels = word(format, 2);
    m_header.rateHz = static_cast<int>(std::min<quint32>(doubleWord(format, 4), 0x7FFFFFFF));
    m_blockBytes = word(format, 12);
    m_header.bits = format.size() >= 16 ? word(format, 14) : 0;
    if (m_tag != kTagExtensible || format.size() < 26)
        return;
    m_header.speakers = doubleWord(format, 20);
    m_tag = word(format, 24); // the first two bytes of the sub-format's identifier are the plain tag
}

// The told size may be nothing (a header never finished), too much, or all ones (a stream, or RF64).
void Parser::takeData(const Chunk& chunk)
{
    m_hasData = true;
    const qint64 there = m_file.size() - chunk.offset;
    qint64 bytes = chunk.told;
    if (chunk.told == kUnknownSize)
        bytes = m_longData > 0 ? m_longData : there;
    else if (chunk.told == 0 && !leadsToTheEnd(chunk.offset))
        bytes = there;
    m_header.dataOffset = chunk.offset;
    m_header.dataBytes = std::clamp<qint64>(bytes, 0, there);
    m_header.missingBytes = isMeant(bytes) ? std::max<qint64>(0, bytes - there) : 0;
}

void Parser::takeInfo(const QByteArray& list)
{
    if (!list.startsWith("INFO"))
        return;
    for (qsizetype at = 4; at + 8 <= list.size();) {
        const QByteArray name = list.mid(at, 4);
        const qint64 bytes = doubleWord(list, at + 4);
        QByteArray text = list.mid(at + 8, std::min<qint64>(bytes, list.size() - at - 8));
        if (const qsizetype zero = text.indexOf('\0'); zero >= 0)
            text.truncate(zero);
        if (name == "INAM")
            m_header.title = text;
        else if (name == "IART")
            m_header.artist = text;
        const qint64 next = at + 8 + bytes + (bytes & 1);
        if (next > list.size())
            break;
        at = next;
    }
}

bool Parser::isUsable() const
{
    constexpr int kMostChannels = 256;
    constexpr int kMostRate = 4'000'000;
    return m_hasFormat && m_hasData && m_header.channels >= 1 && m_header.channels <= kMostChannels &&
           m_header.rateHz >= 1 && m_header.rateHz <= kMostRate;
}

// Decides how samples stand, from the tag and the two sizes that ought to agree.  @returns whether it is
// usable.
bool Parser::settle()
{
    if (!isUsable())
        return false;
    const int fromBits = (m_header.bits + 7) / 8;
    const bool divides = m_blockBytes > 0 && m_blockBytes % m_header.channels == 0;
    const int container = divides ? m_blockBytes / m_header.channels : 0;
    const int bytes = container >= fromBits && container <= 8 ? container : fromBits;
    const auto is = [&](WavHeader::Coding coding, int smallest, int largest) {
        m_header.coding = bytes >= smallest && bytes <= largest ? coding : WavHeader::Coding::Other;
        m_header.bytesPerSample = m_header.coding == coding ? bytes : 0;
    };
    switch (m_tag) {
    case kTagPcm:
        is(WavHeader::Coding::Integer, 1, 4);
        break;
    case kTagFloat:
        is(WavHeader::Coding::Float, bytes == 8 ? 8 : 4, bytes == 8 ? 8 : 4);
        break;
    case kTagALaw:
        is(WavHeader::Coding::ALaw, 1, 1);
        break;
    case kTagMuLaw:
        is(WavHeader::Coding::MuLaw, 1, 1);
        break;
    case kTagMpeg3:
        m_header.coding = WavHeader::Coding::Mpeg3;
        break;
    default:
        m_header.coding = WavHeader::Coding::Other;
        break;
    }
    return true;
}

// Whether the file begins like a WAVE file at all.
bool looksLikeWav(const SourceFile& file)
{
    const QByteArray head = file.bytes(0, 12);
    return head.size() == 12 && head.last(4) == "WAVE" &&
           (head.startsWith("RIFF") || head.startsWith("RF64") || head.startsWith("BW64"));
}

} // namespace

std::optional<WavHeader> parseWav(const SourceFile& file)
{
    if (!looksLikeWav(file))
        return std::nullopt;
    return Parser(file).run();
}

} // namespace zib
