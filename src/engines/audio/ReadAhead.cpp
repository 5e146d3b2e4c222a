#include "engines/audio/ReadAhead.h"

#include <algorithm>

namespace zib {

namespace {

constexpr qint64 kMostFrames = 96'000; // of one block
constexpr qint64 kLeastFrames = 16'384;
constexpr size_t kDecodedAhead = 6;

template <typename Sample>
void append(QList<Sample>& to, const QList<Sample>& from, qsizetype at, qsizetype count)
{
    if (to.isEmpty() && at == 0 && count == from.size()) {
        to = from; // shares the samples
        return;
    }
    const qsizetype before = to.size();
    to.resize(before + count);
    std::copy_n(from.constBegin() + at, count, to.begin() + before);
}

} // namespace

ReadAhead::ReadAhead(std::unique_ptr<SampleSource> source) : m_source(std::move(source)) {}

ReadAhead::~ReadAhead()
{
    stop();
}

AudioBlock ReadAhead::read(qint64 frames)
{
    const qsizetype wanted = std::max<qint64>(0, frames) * m_source->channels();
    if (wanted > 0 && !m_blocks && !m_isOver)
        begin(frames);
    QList<qint16> narrow;
    QList<float> wide;
    for (qsizetype got = 0; got < wanted && goOn();) {
        const qsizetype count = std::min(wanted - got, waiting());
        if (const auto* samples = m_block.narrow())
            append(narrow, *samples, m_used, count);
        else
            append(wide, *m_block.wide(), m_used, count);
        m_used += count;
        got += count;
        if (got * 4 >= wanted * 3 && waiting() == 0)
            break; // nearly as long as asked for: not worth a copy to be filled up
    }
    return wide.isEmpty() ? AudioBlock(std::move(narrow)) : AudioBlock(std::move(wide));
}

// The next block when the last one is used up.  @returns whether samples wait.
bool ReadAhead::goOn()
{
    if (waiting() > 0)
        return true;
    m_isOver = m_isOver || !m_blocks->pop(m_block);
    if (!m_isOver)
        m_used = 0;
    return !m_isOver;
}

void ReadAhead::seek(qint64 frame)
{
    stop();
    m_isOver = false;
    m_source->seek(frame);
}

void ReadAhead::begin(qint64 frames)
{
    m_blocks = std::make_unique<BoundedQueue<AudioBlock>>(kDecodedAhead);
    m_thread = std::thread([this, count = std::clamp(frames, kLeastFrames, kMostFrames)] { work(count); });
}

void ReadAhead::stop()
{
    if (m_blocks)
        m_blocks->abandon();
    if (m_thread.joinable())
        m_thread.join();
    m_blocks.reset();
    m_block = {};
    m_used = 0;
}

void ReadAhead::work(qint64 frames)
{
    for (AudioBlock block = m_source->read(frames); !block.isEmpty(); block = m_source->read(frames))
        if (!m_blocks->push(std::move(block)))
            return;
    m_blocks->close();
}

} // namespace zib
