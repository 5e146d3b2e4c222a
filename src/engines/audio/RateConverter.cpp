#include "engines/audio/RateConverter.h"

#include <soxr.h>

#include <algorithm>

namespace zib {

void RateConverter::Deleter::operator()(soxr* converter) const
{
    soxr_delete(converter);
}

RateConverter::RateConverter(int fromHz, int toHz, int channels)
    : m_fromHz(fromHz), m_toHz(toHz), m_channels(channels)
{
    const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
    const soxr_runtime_spec_t runtime = soxr_runtime_spec(1);
    soxr_error_t error = nullptr;
    m_converter.reset(
        soxr_create(fromHz, toHz, static_cast<unsigned>(channels), &error, &io, &quality, &runtime));
    m_failed = error != nullptr || !m_converter;
}

RateConverter::~RateConverter() = default;

QList<float> RateConverter::convert(std::span<const float> samples)
{
    const size_t frames = samples.size() / static_cast<size_t>(m_channels);
    m_taken += static_cast<qint64>(frames);
    return process(samples.data(), frames);
}

QList<float> RateConverter::finish()
{
    const qint64 whole = (m_taken * m_toHz + m_fromHz / 2) / m_fromHz;
    QList<float> rest;
    while (m_given < whole) {
        const QList<float> more = process(nullptr, 0);
        if (more.isEmpty())
            break;
        rest += more;
    }
    const qint64 surplus = m_given - whole; // silence where the library gives less, a cut where it gives more
    rest.resize(std::max<qint64>(0, rest.size() - surplus * m_channels), 0.0F);
    m_given = whole;
    return rest;
}

// Without samples the library gives what it still holds.
QList<float> RateConverter::process(const float* samples, size_t frames)
{
    constexpr size_t kRoom = 4096;
    const auto from = static_cast<size_t>(m_fromHz);
    const size_t room = frames * static_cast<size_t>(m_toHz) / from + kRoom;
    QList<float> out(static_cast<qsizetype>(room) * m_channels);
    size_t used = 0;
    size_t given = 0;
    if (!m_failed)
        m_failed =
            soxr_process(m_converter.get(), samples, frames, &used, out.data(), room, &given) != nullptr ||
            used != frames;
    if (m_failed)
        given = 0;
    m_given += static_cast<qint64>(given);
    out.resize(static_cast<qsizetype>(given) * m_channels);
    return out;
}

} // namespace zib
