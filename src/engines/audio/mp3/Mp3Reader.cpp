#include "engines/audio/mp3/Mp3Reader.h"

#include <algorithm>
#include <cstring>

namespace zib {

namespace {

SampleKind kindFor(const Mp3Layout& layout, SampleKind wanted)
{
    const auto differs = [&](const Mp3Run& run) { return run.head.rateHz != layout.rateHz; };
    const bool mixed = std::any_of(layout.runs.cbegin(), layout.runs.cend(), differs);
    return mixed ? SampleKind::Wide : wanted;
}

} // namespace

Mp3Reader::Mp3Reader(const std::shared_ptr<const SourceFile>& file, Mp3Layout layout, SampleKind kind)
    : m_layout(std::move(layout)), m_kind(kindFor(m_layout, kind)),
      m_decoder(file, m_layout.channels, m_kind), m_losses(m_layout)
{
    rewind();
    skipTo(m_layout.skip);
}

Mp3Reader::~Mp3Reader() = default;

AudioBlock Mp3Reader::read(qint64 frames)
{
    const qint64 wanted = std::min(frames, m_layout.length - m_position);
    m_ready.remove(0, m_readyAt);
    m_readyAt = 0;
    while (readyFrames() < wanted && refill()) {
    }
    const qint64 got = std::clamp<qint64>(wanted, 0, readyFrames());
    m_failed = m_failed || got < wanted;
    m_position += got;
    return taken(got);
}

void Mp3Reader::seek(qint64 frame)
{
    const qint64 raw = frame + m_layout.skip; // counted from the first decoded sample
    const Mp3Run& first = m_layout.runs.first();
    const qint64 target = raw / first.head.samples() - Mp3Decoder::settlingFrames(first);
    rewind();
    m_failed = false;
    m_position = frame;
    qint64 begin = 0;
    if (target > 0 && raw < first.samples()) {
        const auto after =
            std::upper_bound(m_layout.entries.cbegin(), m_layout.entries.cend(), target,
                             [](qint64 wanted, const Mp3Entry& entry) { return wanted < entry.frame; });
        const Mp3Entry& entry = *std::prev(after);
        m_decoder.start(first, entry);
        m_frame = entry.frame;
        begin = entry.frame * first.head.samples();
    }
    m_failed = !skipTo(raw - begin);
}

void Mp3Reader::rewind()
{
    m_ready.clear();
    m_readyAt = 0;
    m_converter.reset();
    beginRun(0);
}

// Decodes and forgets @p frames sample frames.
bool Mp3Reader::skipTo(qint64 frames)
{
    while (frames > 0) {
        if (readyFrames() == 0 && !refill())
            return false;
        const qint64 dropped = std::min(frames, readyFrames());
        m_readyAt += dropped * m_decoder.frameBytes();
        frames -= dropped;
    }
    return true;
}

void Mp3Reader::beginRun(qsizetype run)
{
    m_run = run;
    const Mp3Run& next = m_layout.runs[run];
    m_frame = next.firstFrame;
    m_decoder.start(next);
    if (next.head.rateHz != m_layout.rateHz && !m_converter)
        m_converter = std::make_unique<RateConverter>(next.head.rateHz, m_layout.rateHz, m_layout.channels);
}

// Gains at least one sample.  @returns false at the end.
bool Mp3Reader::refill()
{
    if (readyFrames() == 0) {
        m_ready.resize(0); // keeps its memory
        m_readyAt = 0;
    }
    const qsizetype before = m_ready.size();
    while (m_ready.size() == before) {
        const auto samples = m_decoder.next();
        if (!samples.empty() && m_decoder.isSilent())
            m_losses.add(m_frame);
        ++m_frame;
        if (!samples.empty())
            takeFrame(samples);
        else if (!endOfRun())
            break;
    }
    return m_ready.size() > before;
}

// @returns whether another run follows.
bool Mp3Reader::endOfRun()
{
    const bool isLast = m_run + 1 >= m_layout.runs.size();
    const int rate = m_layout.runs[m_run].head.rateHz;
    if (m_converter && (isLast || m_layout.runs[m_run + 1].head.rateHz != rate)) {
        const QList<float> rest = m_converter->finish();
        m_ready.append(reinterpret_cast<const char*>(rest.constData()),
                       rest.size() * qsizetype{sizeof(float)});
        m_converter.reset();
    }
    if (!isLast)
        beginRun(m_run + 1);
    return !isLast;
}

void Mp3Reader::takeFrame(std::span<const uchar> samples)
{
    if (!m_converter) {
        m_ready.append(reinterpret_cast<const char*>(samples.data()), static_cast<qsizetype>(samples.size()));
        return;
    }
    const auto* floats = reinterpret_cast<const float*>(samples.data());
    const QList<float> converted = m_converter->convert({floats, samples.size() / sizeof(float)});
    m_ready.append(reinterpret_cast<const char*>(converted.constData()),
                   converted.size() * qsizetype{sizeof(float)});
}

AudioBlock Mp3Reader::taken(qint64 frames)
{
    if (frames == 0)
        return {};
    const char* from = m_ready.constData() + m_readyAt;
    const qsizetype samples = frames * m_layout.channels;
    m_readyAt += frames * m_decoder.frameBytes();
    const auto copied = [&](auto list) {
        std::memcpy(list.data(), from, static_cast<size_t>(frames * m_decoder.frameBytes()));
        return AudioBlock(std::move(list));
    };
    if (m_kind == SampleKind::Narrow)
        return copied(QList<qint16>(samples));
    return copied(QList<float>(samples));
}

} // namespace zib
