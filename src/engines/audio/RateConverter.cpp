#include "engines/audio/RateConverter.h"

#include <soxr.h>

#include <algorithm>
#include <future>

namespace zib {

namespace {

constexpr size_t kFewFrames = 2048; // not worth another thread

std::unique_ptr<soxr, void (*)(soxr*)> made(int fromHz, int toHz)
{
    const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
    const soxr_runtime_spec_t runtime = soxr_runtime_spec(1);
    soxr_error_t error = nullptr;
    return {soxr_create(fromHz, toHz, 1, &error, &io, &quality, &runtime), &soxr_delete};
}

// Strides known to the compiler make loops of vectors.
void takeApart(const float* from, size_t stride, std::span<float> to)
{
    if (stride == 1)
        std::copy_n(from, to.size(), to.data());
    else
        for (size_t i = 0; i < to.size(); ++i)
            to[i] = from[2 * i];
}

void putTogether(std::span<const float> from, size_t stride, float* to)
{
    if (stride == 1)
        std::copy_n(from.data(), from.size(), to);
    else
        for (size_t i = 0; i < from.size(); ++i)
            to[2 * i] = from[i];
}

} // namespace

void RateConverter::Channel::Deleter::operator()(soxr* handle) const
{
    soxr_delete(handle);
}

RateConverter::RateConverter(int fromHz, int toHz, int channels)
    : m_fromHz(fromHz), m_toHz(toHz), m_channels(static_cast<size_t>(channels))
{
    for (Channel& channel : m_channels) {
        channel.converter.reset(made(fromHz, toHz).release());
        channel.failed = !channel.converter;
    }
}

RateConverter::~RateConverter() = default;

QList<float> RateConverter::convert(std::span<const float> samples)
{
    m_taken += static_cast<qint64>(samples.size() / m_channels.size());
    return process(samples);
}

QList<float> RateConverter::finish()
{
    const qint64 whole = (m_taken * m_toHz + m_fromHz / 2) / m_fromHz;
    QList<float> rest;
    while (m_given < whole) {
        const QList<float> more = process({});
        if (more.isEmpty())
            break;
        rest += more;
    }
    // silence where the library gives less, a cut where it gives more
    const qint64 surplus = (m_given - whole) * static_cast<qint64>(m_channels.size());
    rest.resize(std::max<qint64>(0, rest.size() - surplus));
    m_given = whole;
    return rest;
}

bool RateConverter::failed() const
{
    return std::any_of(m_channels.begin(), m_channels.end(),
                       [](const Channel& channel) { return channel.failed; });
}

// Without samples the library gives what it still holds.
QList<float> RateConverter::process(std::span<const float> samples)
{
    const size_t stride = m_channels.size();
    const size_t frames = samples.size() / stride;
    const size_t room = frames * static_cast<size_t>(m_toHz) / static_cast<size_t>(m_fromHz) + 4096;
    const auto run = [&](size_t channel) { m_channels[channel].process(samples, channel, stride, room); };
    std::future<void> other;
    if (stride > 1 && frames > kFewFrames)
        other = std::async(run, 1);
    else if (stride > 1)
        run(1);
    run(0);
    if (other.valid())
        other.get();
    const size_t given = m_channels.front().given;
    m_given += static_cast<qint64>(given);
    return joined(given);
}

void RateConverter::Channel::process(std::span<const float> samples, size_t first, size_t stride, size_t room)
{
    const size_t frames = samples.size() / stride;
    out.resize(std::max(out.size(), room));
    in.resize(frames);
    if (frames > 0)
        takeApart(&samples[first], stride, in);
    size_t used = 0;
    given = 0;
    if (failed)
        return;
    failed = soxr_process(converter.get(), frames > 0 ? in.data() : nullptr, frames, &used, out.data(), room,
                          &given) != nullptr ||
             used != frames;
    if (failed)
        given = 0;
}

QList<float> RateConverter::joined(size_t frames) const
{
    if (frames == 0)
        return {};
    const size_t stride = m_channels.size();
    QList<float> samples(static_cast<qsizetype>(frames * stride));
    for (size_t channel = 0; channel < stride; ++channel) {
        const size_t there = std::min(frames, m_channels[channel].given);
        putTogether({m_channels[channel].out.data(), there}, stride, samples.data() + channel);
    }
    return samples;
}

} // namespace zib
