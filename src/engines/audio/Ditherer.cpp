#include "engines/audio/Ditherer.h"

#include <algorithm>
#include <bit>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace zib {

namespace {

// Adding 1.5 x 2^23 leaves a small float's nearest integer in its low bits: a rounding that compilers
// vectorise.
constexpr float kMagic = 12582912.0F;
constexpr qint32 kMagicBits = std::bit_cast<qint32>(kMagic);

inline qint16 rounded(float steps)
{
    const float clipped = std::min(std::max(steps, -32768.0F), 32767.0F);
    return static_cast<qint16>(std::bit_cast<qint32>(clipped + kMagic) - kMagicBits);
}

// Scales, adds the noise and rounds.
void roundNoisy(const float* in, const float* noise, qint16* out, size_t count)
{
    size_t i = 0;
#ifdef __SSE2__ // rounds and clips eight at a time with the very same result
    const __m128 scale = _mm_set1_ps(32768.0F);
    const auto four = [&](size_t at) {
        return _mm_cvtps_epi32(
            _mm_add_ps(_mm_mul_ps(_mm_loadu_ps(in + at), scale), _mm_loadu_ps(noise + at)));
    };
    for (; i + 8 <= count; i += 8)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_packs_epi32(four(i), four(i + 4)));
#endif
    for (; i < count; ++i)
        out[i] = rounded(in[i] * 32768.0F + noise[i]);
}

} // namespace

Ditherer::Ditherer()
{
    quint32 seed = 0x9E3779B9U; // any odd constant spreads the lanes
    for (quint32& state : m_state)
        state = seed = seed * 1664525U + 1013904223U;
}

// Sixteen xorshift generators side by side; each number gives two uniform halves, whose sum is triangular.
void Ditherer::makeNoise()
{
    for (size_t at = 0; at < kNoise; at += kLanes) {
        for (size_t lane = 0; lane < kLanes; ++lane) {
            quint32 x = m_state[lane];
            x ^= x << 13;
            x ^= x >> 17;
            x ^= x << 5;
            m_state[lane] = x;
            const auto sum = static_cast<qint32>(x & 0xFFFFU) + static_cast<qint32>(x >> 16) - 0xFFFF;
            m_noise[at + lane] = static_cast<float>(sum) * (1.0F / 65536.0F);
        }
    }
    m_next = 0;
}

QList<qint16> Ditherer::round(std::span<const float> samples)
{
    QList<qint16> narrow(static_cast<qsizetype>(samples.size()));
    qint16* out = narrow.data();
    while (!samples.empty()) {
        if (m_next == kNoise)
            makeNoise();
        const size_t count = std::min(kNoise - m_next, samples.size());
        roundNoisy(samples.data(), m_noise.data() + m_next, out, count);
        m_next += count;
        out += count;
        samples = samples.subspan(count);
    }
    return narrow;
}

QList<float> widened(std::span<const qint16> samples)
{
    QList<float> wide(static_cast<qsizetype>(samples.size()));
    float* out = wide.data();
    for (size_t i = 0; i < samples.size(); ++i)
        out[i] = static_cast<float>(samples[i]) * (1.0F / 32768.0F);
    return wide;
}

} // namespace zib
