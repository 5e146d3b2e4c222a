#include "engines/audio/convert/Ditherer.h"

#include "engines/audio/unsetsamples.h"

#include <algorithm>
#include <bit>
#include <cstring>

#ifdef __SSE2__
#include <immintrin.h>
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

/// Eight lanes at a time, in as many vectors as the processor needs for them.
using Words = quint32 __attribute__((vector_size(32)));
using Numbers = qint32 __attribute__((vector_size(32)));
using Floats = float __attribute__((vector_size(32)));
constexpr size_t kLanes = sizeof(Words) / sizeof(quint32);

// One step of eight xorshift generators; each number gives two uniform halves, whose sum is triangular.
[[gnu::always_inline]] inline void step(Words& state, float* noise)
{
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    const Words halves = (state & 0xFFFFU) + (state >> 16) - 0xFFFFU;
    Numbers sum;
    std::memcpy(&sum, &halves, sizeof sum);
    const Floats scaled = __builtin_convertvector(sum, Floats) * (1.0F / 65536.0F);
    std::memcpy(noise, &scaled, sizeof scaled);
}

[[gnu::always_inline]] inline void fillWithNoise(quint32* states, float* noise, size_t count)
{
    Words first;
    Words second;
    std::memcpy(&first, states, sizeof first);
    std::memcpy(&second, states + kLanes, sizeof second);
    for (size_t i = 0; i < count; i += 2 * kLanes) {
        step(first, noise + i);
        step(second, noise + i + kLanes);
    }
    std::memcpy(states, &first, sizeof first);
    std::memcpy(states + kLanes, &second, sizeof second);
}

#ifdef __SSE2__ // every width rounds and clips with the very same result as the loop for one sample
[[gnu::target("avx2")]] void makeNoiseWidely(quint32* states, float* noise, size_t count)
{
    fillWithNoise(states, noise, count);
}

[[gnu::target("avx2")]] size_t roundWidely(const float* in, const float* noise, qint16* out, size_t count)
{
    const __m256 scale = _mm256_set1_ps(32768.0F);
    size_t i = 0;
    for (; i + 16 <= count; i += 16) {
        const __m256 low = _mm256_mul_ps(_mm256_loadu_ps(in + i), scale);
        const __m256 high = _mm256_mul_ps(_mm256_loadu_ps(in + i + 8), scale);
        const __m256i pairs =
            _mm256_packs_epi32(_mm256_cvtps_epi32(_mm256_add_ps(low, _mm256_loadu_ps(noise + i))),
                               _mm256_cvtps_epi32(_mm256_add_ps(high, _mm256_loadu_ps(noise + i + 8))));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), _mm256_permute4x64_epi64(pairs, 0xD8));
    }
    return i;
}

size_t roundNarrowly(const float* in, const float* noise, qint16* out, size_t count)
{
    const __m128 scale = _mm_set1_ps(32768.0F);
    const auto four = [&](size_t at) {
        return _mm_cvtps_epi32(
            _mm_add_ps(_mm_mul_ps(_mm_loadu_ps(in + at), scale), _mm_loadu_ps(noise + at)));
    };
    size_t i = 0;
    for (; i + 8 <= count; i += 8)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_packs_epi32(four(i), four(i + 4)));
    return i;
}

bool hasWideVectors()
{
    static const bool has = __builtin_cpu_supports("avx2") != 0;
    return has;
}
#endif

void makeNoise(quint32* states, float* noise, size_t count)
{
#ifdef __SSE2__
    if (hasWideVectors())
        return makeNoiseWidely(states, noise, count);
#endif
    fillWithNoise(states, noise, count);
}

// Scales, adds the noise and rounds.
void roundNoisy(const float* in, const float* noise, qint16* out, size_t count)
{
    size_t i = 0;
#ifdef __SSE2__
    i = hasWideVectors() ? roundWidely(in, noise, out, count) : roundNarrowly(in, noise, out, count);
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

QList<qint16> Ditherer::round(std::span<const float> samples)
{
    QList<qint16> narrow = unsetSamples<qint16>(static_cast<qsizetype>(samples.size()));
    qint16* out = narrow.data();
    while (!samples.empty()) {
        if (m_next == kNoise) {
            makeNoise(m_state.data(), m_noise.data(), kNoise);
            m_next = 0;
        }
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
    QList<float> wide = unsetSamples<float>(static_cast<qsizetype>(samples.size()));
    float* out = wide.data();
    for (size_t i = 0; i < samples.size(); ++i)
        out[i] = static_cast<float>(samples[i]) * (1.0F / 32768.0F);
    return wide;
}

} // namespace zib
