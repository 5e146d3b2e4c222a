#include "engines/audio/mp3/Mp3FrameWalk.h"

#include "engines/audio/mp3/Mp3LossNotes.h"
#include "engines/audio/mp3/Mp3Tags.h"

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
    std::optional<Mp3Header> headerAt(FileWindow& window, qint64 offset) const;
    bool isTrusted(qint64 offset, const Mp3Header& head, int freeBytes, int wanted, bool atStart);
    int freeFrameBytes(qint64 offset, const Mp3Header& head);
    std::optional<Found> accept(qint64 offset, int wanted, bool atStart);
    std::optional<Found> find(qint64 from, qint64 until, int wanted);
    void takeInfoFrame(Found& first);
    void follow(const Found& start);
    void note(const Mp3Header& head, Mp3Entry entry, int bytes, bool isFirst);
    qint64 behindTags(qint64 offset, qint64 until);
    void noteGap(qint64 until);
    void finish();

    FileWindow m_window; // follows the frames
    FileWindow m_near;   // looks ahead of them
    std::shared_ptr<const SourceFile> m_file;
    qint64 m_begin;
    qint64 m_end;
    Mp3Layout m_layout;
    std::optional<Mp3InfoFrame> m_info;
    qint64 m_infoOffset = 0;
    qint64 m_stopped = 0;   // where the last run ended
    int m_reservoir = 0;    // bytes of earlier frames that the next one may refer to
    bool m_isIntact = true; // every frame found what it refers to
    bool m_isBegun = false; // some frame did: what the ones before lacked was cut off on purpose
    Mp3LossNotes m_losses;
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
        noteGap(found ? found->offset : m_end);
    }
    if (m_layout.runs.isEmpty())
        return std::nullopt;
    finish();
    return std::move(m_layout);
}

void Walk::skipLeadingTags()
{
    for (const uchar* tag = m_window.at(m_begin, 10); tag != nullptr; tag = m_window.at(m_begin, 10)) {
        const qint64 bytes = id3v2Bytes(tag);
        if (bytes == 0)
            return;
        m_begin += bytes < m_end - m_begin ? bytes : 10; // a tag that swallows the file lies about its size
    }
}

void Walk::dropTrailingTags()
{
    while (const qint64 bytes = trailingTagBytes(*m_file, m_begin, m_end))
        m_end -= bytes;
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
    m_infoOffset = first.offset;
    first.offset += bytes;
    if (const auto next = headerAt(m_window, first.offset))
        first.head = *next; // a mono information frame before stereo sound is seen in the wild
}

// Takes frames for as long as they follow each other in one format.
void Walk::follow(const Found& start)
{
    Mp3Run run{start.offset, 0, m_layout.frames(), 0, start.head, start.freeBytes};
    const bool isFirst = m_layout.runs.isEmpty();
    m_reservoir = 0;
    qint64 at = start.offset;
    while (const uchar* bytes = m_window.at(at, kSmallestFrame)) {
        const auto head = Mp3Header::parse(bytes);
        if (!head || !head->continues(start.head))
            break;
        const int size = head->frameBytes(start.freeBytes);
        if (size < kSmallestFrame || at + size > m_end)
            break;
        note(*head, {run.firstFrame + run.frames, at}, size, isFirst);
        at += size;
        ++run.frames;
    }
    run.bytes = at - start.offset;
    m_stopped = std::max(at, start.offset + 1);
    if (run.frames > 0)
        m_layout.runs << run;
}

// Remembers frames to start from, whether every frame finds the earlier bytes that it refers to, and those
// that will be silent.
void Walk::note(const Mp3Header& head, Mp3Entry entry, int bytes, bool isFirst)
{
    if (isFirst && entry.frame % kEntryDistance == 0)
        m_layout.entries << entry;
    const uchar* frame = m_window.at(entry.offset, std::min(bytes, kMostSideInfoEnd));
    const bool isMissing = frame == nullptr || mainDataBegin(head, frame) > m_reservoir;
    m_isIntact = m_isIntact && !isMissing;
    m_isBegun = m_isBegun || !isMissing;
    if (frame == nullptr || (isMissing && m_isBegun) || !isPlausible(head, frame, bytes))
        m_losses.noteSilence(entry.frame);
    const int own = bytes - head.sideInfoOffset() - head.sideInfoBytes();
    m_reservoir = std::min(mostMainDataBegin(head), m_reservoir + own);
}

// Tags stand between the parts of files that were put together, and are no sound.
qint64 Walk::behindTags(qint64 offset, qint64 until)
{
    while (const uchar* tag = m_near.at(offset, kTagHead)) {
        const qint64 bytes = leadingTagBytes(tag);
        if (bytes == 0 || bytes > until - offset)
            break;
        offset += bytes;
    }
    return offset;
}

// Between two runs stands what was frames once: as many as fill the place at the size of those before. At
// the end only a frame that begins is known to be one.
void Walk::noteGap(qint64 until)
{
    if (m_layout.runs.isEmpty())
        return;
    const qint64 from = behindTags(m_stopped, until);
    const Mp3Run& before = m_layout.runs.last();
    const auto next = headerAt(m_window, from);
    if (until < m_end)
        m_losses.noteGap(m_layout.frames(),
                         ((until - from) * before.frames + before.bytes / 2) / before.bytes);
    else if (next && next->continues(before.head))
        m_losses.noteCutFrame(m_layout.frames());
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
    m_layout.losses = m_losses.settled(m_info, m_layout.frames(), m_end - m_infoOffset);
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
