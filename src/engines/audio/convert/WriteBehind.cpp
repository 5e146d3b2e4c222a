#include "engines/audio/convert/WriteBehind.h"

#include "engines/audio/unsetsamples.h"

#include <algorithm>

namespace zib {

namespace {

template <typename Sample>
std::span<const Sample> spanOf(const QList<Sample>& samples)
{
    return {samples.constData(), static_cast<size_t>(samples.size())};
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
}

// After a failure blocks are still taken, so that nobody waits for room.
void WriteBehind::take(const AudioBlock& block)
{
    if (m_failed)
        return;
    if (const auto* narrow = block.narrow())
        takeNarrow(spanOf(*narrow));
    else
        takeWide(spanOf(*block.wide()));
}

void WriteBehind::takeNarrow(std::span<const qint16> samples)
{
    if (converts() || m_input.channels > m_channels)
        takeWide(spanOf(widened(samples)));
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

void WriteBehind::emitWide(std::span<const float> samples)
{
    emitNarrow(spanOf(m_ditherer.round(samples)));
}

void WriteBehind::emitNarrow(std::span<const qint16> samples)
{
    QList<qint16> doubled;
    if (m_output.channels > m_channels) {
        doubled = unsetSamples<qint16>(static_cast<qsizetype>(samples.size()) * 2);
        qint16* out = doubled.data();
        for (size_t i = 0; i < samples.size(); ++i)
            out[2 * i] = out[2 * i + 1] = samples[i];
        samples = spanOf(doubled);
    }
    if (!m_writer->append(samples))
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
