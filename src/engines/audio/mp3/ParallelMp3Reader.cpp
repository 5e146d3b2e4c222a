#include "engines/audio/mp3/ParallelMp3Reader.h"

#include "engines/audio/mp3/Mp3Reader.h"
#include "engines/audio/unsetsamples.h"

#include <algorithm>
#include <cstring>

namespace zib {

namespace {

constexpr qint64 kMemoryBytes = 12 * 1024 * 1024; // of all segments together
constexpr qint64 kFewestFrames = 300;             // of a segment that is worth its lead

size_t segmentsInMemory(int workers)
{
    return static_cast<size_t>(workers) + 1;
}

qint64 segmentFrames(const Mp3Layout& layout, SampleKind kind, int workers)
{
    const qint64 frameBytes =
        qint64{layout.runs.first().head.samples()} * layout.channels * (kind == SampleKind::Narrow ? 2 : 4);
    return kMemoryBytes / static_cast<qint64>(segmentsInMemory(workers)) / frameBytes;
}

template <typename Sample>
AudioBlock part(const QList<Sample>& samples, qsizetype from, qsizetype count)
{
    return AudioBlock(samples.mid(from, count));
}

// Decodes the next frames, of which the first is @p frame, into one block; it is shorter when the file gives
// no more.
template <typename Sample>
AudioBlock decodeBlock(Mp3Decoder& decoder, qint64 frame, qint64 frames, qint64 samplesPerFrame,
                       Mp3LossCount& losses)
{
    QList<Sample> samples = unsetSamples<Sample>(frames * samplesPerFrame);
    Sample* to = samples.data();
    for (qint64 i = 0; i < frames; ++i, to += samplesPerFrame) {
        const auto decoded = decoder.next();
        if (decoded.empty()) {
            samples.resize(i * samplesPerFrame);
            break;
        }
        if (decoder.isSilent())
            losses.add(frame + i);
        std::memcpy(to, decoded.data(), decoded.size());
    }
    return AudioBlock(std::move(samples));
}

} // namespace

// A segment begins where a decoder set down at an entry has settled.
std::vector<ParallelMp3Reader::Segment> ParallelMp3Reader::plan(const Mp3Layout& layout, SampleKind kind,
                                                                int workers)
{
    const qint64 wanted = segmentFrames(layout, kind, workers);
    const qint64 lead = Mp3Decoder::settlingFrames(layout.runs.first());
    std::vector<Segment> segments{{layout.entries.first(), 0, layout.frames()}};
    for (const Mp3Entry& entry : layout.entries) {
        Segment& last = segments.back();
        const qint64 begin = entry.frame + lead;
        if (begin - last.first < wanted || layout.frames() - begin < kFewestFrames)
            continue;
        last.frames = begin - last.first;
        segments.push_back({entry, begin, layout.frames() - begin});
    }
    return segments;
}

bool ParallelMp3Reader::suits(const Mp3Layout& layout, SampleKind kind, int workers)
{
    return layout.isRegular && workers > 1 && plan(layout, kind, workers).size() > 1;
}

ParallelMp3Reader::ParallelMp3Reader(std::shared_ptr<const SourceFile> file, Mp3Layout layout,
                                     SampleKind kind, int workers)
    : m_file(std::move(file)), m_layout(std::move(layout)), m_kind(kind), m_workers(workers),
      m_segments(plan(m_layout, kind, workers)), m_losses(m_layout)
{
}

ParallelMp3Reader::~ParallelMp3Reader()
{
    stop();
}

AudioBlock ParallelMp3Reader::read(qint64 frames)
{
    if (m_alone)
        return m_alone->read(frames);
    if (m_threads.empty())
        begin(std::max<qint64>(frames, 1));
    for (AudioBlock block = nextBlock(); !block.isEmpty(); block = nextBlock())
        if (AudioBlock kept = trimmed(std::move(block)); !kept.isEmpty())
            return kept;
    return {};
}

void ParallelMp3Reader::seek(qint64 frame)
{
    stop();
    if (!m_alone)
        m_alone = std::make_unique<Mp3Reader>(m_file, m_layout, m_kind);
    m_alone->seek(frame);
}

bool ParallelMp3Reader::failed() const
{
    return m_alone ? m_alone->failed() : m_failed.load();
}

AudioLoss ParallelMp3Reader::loss() const
{
    return m_alone ? m_alone->loss() : m_losses.loss();
}

void ParallelMp3Reader::begin(qint64 blockFrames)
{
    for (int i = 0; i < m_workers; ++i)
        m_threads.emplace_back([this, blockFrames] { work(blockFrames); });
}

void ParallelMp3Reader::stop()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isStopped = true;
    }
    m_changed.notify_all();
    for (std::thread& thread : m_threads)
        thread.join();
    m_threads.clear();
    m_segments.clear();
}

void ParallelMp3Reader::work(qint64 blockFrames)
{
    Mp3Decoder decoder(m_file, m_layout.channels, m_kind);
    while (Segment* segment = take())
        decode(decoder, *segment, blockFrames);
}

// Waits until the segments in memory leave room for another one.
ParallelMp3Reader::Segment* ParallelMp3Reader::take()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] {
        return m_isStopped || m_taken >= m_segments.size() ||
               m_taken < m_current + segmentsInMemory(m_workers);
    });
    if (m_isStopped || m_taken >= m_segments.size())
        return nullptr;
    return &m_segments[m_taken++];
}

// Cuts a segment into blocks of one length, as near to the wanted one as may be.
void ParallelMp3Reader::decode(Mp3Decoder& decoder, Segment& segment, qint64 blockFrames)
{
    const Mp3Run& run = m_layout.runs.first();
    const qint64 perFrame = qint64{run.head.samples()} * m_layout.channels;
    const qint64 most = std::max<qint64>(1, blockFrames / run.head.samples());
    const qint64 blocks = (segment.frames + most - 1) / most;
    const qint64 perBlock = (segment.frames + blocks - 1) / blocks;
    decoder.start(run, segment.entry);
    for (qint64 frame = segment.entry.frame; frame < segment.first && !m_isStopped; ++frame)
        decoder.next();
    for (qint64 done = 0; done < segment.frames && !m_isStopped; done += perBlock) {
        const qint64 count = std::min(perBlock, segment.frames - done);
        const qint64 frame = segment.first + done;
        AudioBlock block = m_kind == SampleKind::Narrow
                               ? decodeBlock<qint16>(decoder, frame, count, perFrame, m_losses)
                               : decodeBlock<float>(decoder, frame, count, perFrame, m_losses);
        const bool isShort = block.sampleCount() < count * perFrame;
        const std::lock_guard lock(m_mutex);
        m_failed = m_failed || isShort;
        segment.isDone = done + count >= segment.frames || isShort;
        segment.blocks.push_back(std::move(block));
        m_changed.notify_all();
        if (isShort)
            return;
    }
}

// The next block in the order of the stream; empty at its end and after a failure.
AudioBlock ParallelMp3Reader::nextBlock()
{
    std::unique_lock lock(m_mutex);
    while (m_current < m_segments.size()) {
        Segment& segment = m_segments[m_current];
        m_changed.wait(lock, [&] { return segment.isDone || !segment.blocks.empty(); });
        if (!segment.blocks.empty()) {
            AudioBlock block = std::move(segment.blocks.front());
            segment.blocks.pop_front();
            return block;
        }
        if (m_failed)
            break;
        ++m_current;
        m_changed.notify_all();
    }
    return {};
}

// Without the encoder's delay at the start and its padding at the end.
AudioBlock ParallelMp3Reader::trimmed(AudioBlock block)
{
    const qint64 frames = block.sampleCount() / m_layout.channels;
    const qint64 from = std::clamp<qint64>(m_layout.skip - m_raw, 0, frames);
    const qint64 until = std::clamp<qint64>(m_layout.skip + m_layout.length - m_raw, from, frames);
    m_raw += frames;
    if (from == 0 && until == frames)
        return block;
    const qsizetype at = from * m_layout.channels;
    const qsizetype count = (until - from) * m_layout.channels;
    return block.narrow() != nullptr ? part(*block.narrow(), at, count) : part(*block.wide(), at, count);
}

} // namespace zib
