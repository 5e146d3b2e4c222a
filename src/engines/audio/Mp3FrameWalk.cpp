#include "engines/audio/Mp3FrameWalk.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace zib {

namespace {

constexpr qint64 kLeadingJunk = 1024 * 1024; // how far the first frame may hide behind something unknown
constexpr int kHeadersToTrust = 3;           // further headers that must follow the first one
constexpr int kHeadersToResync = 1;          // the same after a gap inside a stream already known
constexpr int kSmallestFrame = 24;
constexpr int kLargestFreeFrame = 3456;
constexpr int kDecoderDelay = 529;    // samples by which the standard's decoder is late
constexpr qint64 kEntryDistance = 64; // frames; a multiple of eight

struct Found
{
    qint64 offset;
    Mp3Header head;
    int freeBytes;
};

// Sample frames of all runs at the rate of the first; neighbours of one rate are converted as one.
qint64 totalSamples(const Mp3Layout& layout)
{
    qint64 total = 0;
    qint64 group = 0;
    for (qsizetype i = 0; i < layout.runs.size(); ++i) {
        const Mp3Run& run = layout.runs[i];
        group += run.samples();
        if (i + 1 < layout.runs.size() && layout.runs[i + 1].head.rateHz == run.head.rateHz)
            continue;
        total += samplesAtRate(group, run.head.rateHz, layout.rateHz);
        group = 0;
    }
    return total;
}

// Walks one stream; made for one call of walkMp3.
class Walk
{
public:
    Walk(const std::shared_ptr<const SourceFile>& file, qint64 begin, qint64 end)
        : m_window(file, end, 64 * 1024), m_near(file, end, 16 * 1024), m_file(file), m_begin(begin),
          m_end(end)
    {
    }

    std::optional<Mp3Layout> run();

private:
    void skipLeadingTags();
    void dropTrailingTags();
    qint64 trailingTagBytes() const;
    std::optional<Mp3Header> headerAt(FileWindow& window, qint64 offset) const;
    bool isTrusted(qint64 offset, const Mp3Header& head, int freeBytes, int wanted, bool atStart);
    int freeFrameBytes(qint64 offset, const Mp3Header& head);
    std::optional<Found> accept(qint64 offset, int wanted, bool atStart);
    std::optional<Found> find(qint64 from, qint64 until, int wanted);
    void takeInfoFrame(Found& first);
    void follow(const Found& start);
    void note(const Mp3Header& head, const uchar* frame, Mp3Entry entry, int bytes);
    void finish();

    FileWindow m_window; // follows the frames
    FileWindow m_near;   // looks ahead of them
    std::shared_ptr<const SourceFile> m_file;
    qint64 m_begin;
    qint64 m_end;
    Mp3Layout m_layout;
    std::optional<Mp3InfoFrame> m_info;
    qint64 m_stopped = 0;   // where the last run ended
    int m_reservoir = 0;    // bytes of earlier frames that the next one may refer to
    bool m_isIntact = true; // every frame found what it refers to
};

std::optional<Mp3Layout> Walk::run()
{
    skipLeadingTags();
    dropTrailingTags();
    auto found = find(m_begin, std::min(m_end, m_begin + kLeadingJunk), kHeadersToTrust);
    if (!found)
        return std::nullopt;
    takeInfoFrame(*found);
    while (found) {
        follow(*found);
        if (m_stopped >= m_end)
            break;
        found = find(m_stopped, m_end, kHeadersToResync);
    }
    if (m_layout.runs.isEmpty())
        return std::nullopt;
    finish();
    return std::move(m_layout);
}

void Walk::skipLeadingTags()
{
    for (const uchar* tag = m_window.at(m_begin, 10); tag != nullptr; tag = m_window.at(m_begin, 10)) {
        if (std::memcmp(tag, "ID3", 3) != 0 || ((tag[6] | tag[7] | tag[8] | tag[9]) & 0x80) != 0)
            return;
        const qint64 content = tag[6] << 21 | tag[7] << 14 | tag[8] << 7 | tag[9];
        const qint64 bytes = 10 + content + ((tag[5] & 0x10) != 0 ? 10 : 0);
        m_begin += bytes < m_end - m_begin ? bytes : 10; // a tag that swallows the file lies about its size
    }
}

void Walk::dropTrailingTags()
{
    for (qint64 bytes = trailingTagBytes(); bytes > 0; bytes = trailingTagBytes())
        m_end -= bytes;
}

qint64 Walk::trailingTagBytes() const
{
    const QByteArray tail =
        m_file->bytes(std::max(m_begin, m_end - 160), std::min<qint64>(160, m_end - m_begin));
    const auto within = [this](qint64 bytes) { return bytes > 0 && bytes <= m_end - m_begin ? bytes : 0; };
    if (tail.size() >= 128 && tail.last(128).startsWith("TAG"))
        return 128;
    if (tail.size() >= 32 && tail.last(32).startsWith("APETAGEX")) {
        const auto* footer = tail.constData() + tail.size() - 32;
        const bool hasHeader = (qFromLittleEndian<quint32>(footer + 20) & 0x80000000U) != 0;
        return within(qFromLittleEndian<quint32>(footer + 12) + (hasHeader ? 32 : 0));
    }
    if (tail.size() >= 15 && tail.endsWith("LYRICS200"))
        return within(tail.last(15).first(6).toLongLong() + 15);
    if (tail.size() >= 10 && tail.last(10).startsWith("3DI")) {
        const auto* size = reinterpret_cast<const uchar*>(tail.constData()) + tail.size() - 4;
        return within((size[0] << 21 | size[1] << 14 | size[2] << 7 | size[3]) + 20);
    }
    return 0;
}

std::optional<Mp3Header> Walk::headerAt(FileWindow& window, qint64 offset) const
{
    const uchar* bytes = offset + 4 <= m_end ? window.at(offset, 4) : nullptr;
    return bytes == nullptr ? std::nullopt : Mp3Header::parse(bytes);
}

// Whether enough matching headers follow, or the stream ends just where a frame does.
bool Walk::isTrusted(qint64 offset, const Mp3Header& head, int freeBytes, int wanted, bool atStart)
{
    qint64 next = offset + head.frameBytes(freeBytes);
    if (next > m_end)
        return false;
    if (next + 4 > m_end)
        return atStart;
    for (int seen = 0; seen < wanted; ++seen) {
        const auto header = headerAt(m_near, next);
        if (!header || !header->continues(head))
            return seen > 0 && next + 4 > m_end;
        next += header->frameBytes(freeBytes);
        if (next >= m_end)
            return true;
    }
    return true;
}

// In free format every frame has one size, which only the next header betrays.
int Walk::freeFrameBytes(qint64 offset, const Mp3Header& head)
{
    const int pad = head.padding ? 1 : 0;
    for (int bytes = kSmallestFrame; bytes <= kLargestFreeFrame; ++bytes) {
        const auto next = headerAt(m_near, offset + bytes + pad);
        if (!next || !next->continues(head))
            continue;
        const qint64 third = offset + 2LL * bytes + pad + (next->padding ? 1 : 0);
        const auto after = headerAt(m_near, third);
        if (third >= m_end - 4 || (after && after->continues(head)))
            return bytes;
    }
    return 0;
}

std::optional<Found> Walk::accept(qint64 offset, int wanted, bool atStart)
{
    const auto head = headerAt(m_window, offset);
    if (!head)
        return std::nullopt;
    const int freeBytes = head->bitrateKbps == 0 ? freeFrameBytes(offset, *head) : 0;
    if (head->bitrateKbps == 0 && freeBytes == 0)
        return std::nullopt;
    if (!isTrusted(offset, *head, freeBytes, wanted, atStart))
        return std::nullopt;
    return Found{offset, *head, freeBytes};
}

std::optional<Found> Walk::find(qint64 from, qint64 until, int wanted)
{
    for (qint64 at = from; at < until;) {
        const auto bytes = m_window.rest(at);
        if (bytes.empty())
            return std::nullopt;
        const auto* sync = static_cast<const uchar*>(std::memchr(bytes.data(), 0xFF, bytes.size()));
        if (sync == nullptr) {
            at += static_cast<qint64>(bytes.size());
            continue;
        }
        at += sync - bytes.data();
        if (at >= until)
            break;
        if (auto found = accept(at, wanted, at == m_begin))
            return found;
        ++at;
    }
    return std::nullopt;
}

// The first frame may hold information instead of sound.
void Walk::takeInfoFrame(Found& first)
{
    const int bytes = first.head.frameBytes(first.freeBytes);
    const uchar* frame = m_window.at(first.offset, bytes);
    if (frame == nullptr)
        return;
    m_info = Mp3InfoFrame::parse(first.head, {frame, static_cast<size_t>(bytes)});
    if (!m_info)
        return;
    first.offset += bytes;
    if (const auto next = headerAt(m_window, first.offset))
        first.head = *next; // a mono information frame before stereo sound is seen in the wild
}

// Takes frames for as long as they follow each other in one format.
void Walk::follow(const Found& start)
{
    Mp3Run run{start.offset, 0, m_layout.frames(), 0, start.head, start.freeBytes};
    const bool isFirst = m_layout.runs.isEmpty();
    qint64 at = start.offset;
    while (const uchar* bytes = m_window.at(at, kSmallestFrame)) {
        const auto head = Mp3Header::parse(bytes);
        if (!head || !head->continues(start.head))
            break;
        const int size = head->frameBytes(start.freeBytes);
        if (size < kSmallestFrame || at + size > m_end)
            break;
        if (isFirst)
            note(*head, bytes, {run.frames, at}, size);
        at += size;
        ++run.frames;
    }
    run.bytes = at - start.offset;
    m_stopped = std::max(at, start.offset + 1);
    if (run.frames > 0)
        m_layout.runs << run;
}

// Remembers frames to start from, and whether every frame finds the earlier bytes that it refers to.
void Walk::note(const Mp3Header& head, const uchar* frame, Mp3Entry entry, int bytes)
{
    const int begin = mainDataBegin(head, frame);
    m_isIntact = m_isIntact && begin <= m_reservoir;
    const int own = bytes - head.sideInfoOffset() - head.sideInfoBytes();
    m_reservoir = std::min(mostMainDataBegin(head), m_reservoir + own);
    if (entry.frame % kEntryDistance == 0)
        m_layout.entries << entry;
}

void Walk::finish()
{
    const Mp3Run& first = m_layout.runs.first();
    m_layout.rateHz = first.head.rateHz;
    const auto isStereo = [](const Mp3Run& run) { return !run.head.mono; };
    m_layout.channels = std::any_of(m_layout.runs.cbegin(), m_layout.runs.cend(), isStereo) ? 2 : 1;
    m_layout.isRegular = m_layout.runs.size() == 1 && first.freeBytes == 0 && m_isIntact;
    qint64 total = totalSamples(m_layout);
    if (m_info && m_info->delay >= 0) {
        const qint64 frames = m_info->frames >= 0 ? m_info->frames : m_layout.frames();
        const qint64 told = frames * first.head.samples() - m_info->padding + kDecoderDelay;
        if (frames >= m_layout.frames()) // fewer than there are: the count is wrong, and nothing is cut off
            total = std::min(total, told);
        m_layout.skip = std::min<qint64>(total, m_info->delay + kDecoderDelay);
    }
    m_layout.length = total - m_layout.skip;
}

} // namespace

qint64 samplesAtRate(qint64 samples, int fromHz, int rateHz)
{
    return fromHz == rateHz ? samples : (samples * rateHz + fromHz / 2) / fromHz;
}

std::optional<Mp3Layout> walkMp3(const std::shared_ptr<const SourceFile>& file, qint64 begin, qint64 end)
{
    return Walk(file, begin, end).run();
}

} // namespace zib
