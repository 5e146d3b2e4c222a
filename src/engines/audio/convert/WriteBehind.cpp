#include "engines/audio/convert/WriteBehind.h"

#include "engines/audio/unsetsamples.h"

#include <algorithm>
#include <utility>

namespace zib {

namespace {

template <typename Sample>
std::span<const Sample> spanOf(const QList<Sample>& samples)
{
    return {samples.constData(), static_cast<size_t>(samples.size())};
}

/// The same in both ears.
QList<qint16> doubled(const QList<qint16>& samples)
{
    QList<qint16> both = unsetSamples<qint16>(samples.size() * 2);
    qint16* out = both.data();
    for (qsizetype i = 0; i < samples.size(); ++i)
        out[2 * i] = out[2 * i + 1] = samples[i];
    return both;
}

} // namespace

WriteBehind::WriteBehind(std::unique_ptr<WavWriter> writer, SoundFormat input, SoundFormat output)
    : m_writer(std::move(writer)), m_input(input), m_output(output),
      m_channels(std::min(input.channels, output.channels)), m_thread([this] { work(); })
{
}

WriteBehind::~WriteBehind()
{
    m_blocks.abandon();
    if (m_thread.joinable())
        m_thread.join();
}

void WriteBehind::write(const AudioBlock& block)
{
    if (!block.isEmpty())
        m_blocks.push(block);
}

bool WriteBehind::finish()
{
    m_blocks.close();
    m_thread.join();
    if (m_failed)
        m_writer->abandon();
    return !m_failed && m_writer->finish();
}

void WriteBehind::work()
{
    if (converts())
        m_converter = std::make_unique<RateConverter>(m_input.rateHz, m_output.rateHz, m_channels);
    for (AudioBlock block; m_blocks.pop(block);)
        take(block);
    if (m_converter && !m_failed)
        emitWide(spanOf(m_converter->finish()));
    if (m_converter && m_converter->failed())
        m_failed = true;
    m_rounded.close();
    if (m_writing.joinable())
        m_writing.join();
}

// After a failure blocks are still taken, so that nobody waits for room.
void WriteBehind::take(const AudioBlock& block)
{
    if (m_failed)
        return;
    if (const auto* narrow = block.narrow())
        takeNarrow(*narrow);
    else
        takeWide(spanOf(*block.wide()));
}

void WriteBehind::takeNarrow(const QList<qint16>& samples)
{
    if (converts() || m_input.channels > m_channels)
        takeWide(spanOf(widened(spanOf(samples))));
    else
        emitNarrow(samples);
}

void WriteBehind::takeWide(std::span<const float> samples)
{
    QList<float> mixed;
    if (m_input.channels > m_channels)
        samples = spanOf(mixed = mono(samples));
    if (m_converter)
        emitWide(spanOf(m_converter->convert(samples)));
    else
        emitWide(samples);
}

// Rounding and writing take about as long as each other, so what is rounded is written beside it.
void WriteBehind::emitWide(std::span<const float> samples)
{
    if (!m_writing.joinable())
        m_writing = std::thread([this] {
            for (QList<qint16> rounded; m_rounded.pop(rounded);)
                append(rounded);
        });
    emitNarrow(m_ditherer.round(samples));
}

void WriteBehind::emitNarrow(QList<qint16> samples)
{
    if (m_output.channels > m_channels)
        samples = doubled(samples);
    if (m_writing.joinable())
        m_rounded.push(std::move(samples));
    else
        append(samples);
}

void WriteBehind::append(const QList<qint16>& samples)
{
    if (!m_failed && !m_writer->append(spanOf(samples)))
        m_failed = true;
}

QList<float> WriteBehind::mono(std::span<const float> samples) const
{
    QList<float> mixed = unsetSamples<float>(static_cast<qsizetype>(samples.size() / 2));
    float* out = mixed.data();
    for (qsizetype i = 0; i < mixed.size(); ++i, samples = samples.subspan(2))
        out[i] = 0.5F * (samples[0] + samples[1]);
    return mixed;
}

} // namespace zib
