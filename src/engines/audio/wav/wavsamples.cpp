#include "engines/audio/wav/wavsamples.h"

#include "engines/audio/convert/Ditherer.h"
#include "engines/audio/unsetsamples.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#ifdef __SSE2__
#include <immintrin.h>
#endif

namespace zib {

namespace {

static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "samples are copied as they stand in the file");

// ITU-T G.711, scaled to 16 bits.
constexpr qint16 fromALaw(unsigned code)
{
    code ^= 0x55;
    const int segment = static_cast<int>(code >> 4 & 7);
    int value = static_cast<int>(code & 0x0F) << 4 | 8;
    if (segment > 0)
        value = (value + 0x100) << (segment - 1);
    return static_cast<qint16>((code & 0x80) != 0 ? value : -value);
}

constexpr qint16 fromMuLaw(unsigned code)
{
    code = ~code;
    const int value = ((static_cast<int>(code & 0x0F) << 3) + 0x84) << (code >> 4 & 7);
    return static_cast<qint16>((code & 0x80) != 0 ? 0x84 - value : value - 0x84);
}

template <typename Law>
constexpr std::array<qint16, 256> table(Law law)
{
    std::array<qint16, 256> values{};
    for (unsigned code = 0; code < values.size(); ++code)
        values[code] = law(code);
    return values;
}

constexpr auto kALaw = table(fromALaw);
constexpr auto kMuLaw = table(fromMuLaw);
constexpr auto kUnsigned8 =
    table([](unsigned code) { return static_cast<qint16>((static_cast<int>(code) - 128) * 256); });

QList<qint16> looked(std::span<const uchar> raw, const std::array<qint16, 256>& values)
{
    QList<qint16> samples = unsetSamples<qint16>(static_cast<qsizetype>(raw.size()));
    std::transform(raw.begin(), raw.end(), samples.data(), [&](uchar code) { return values[code]; });
    return samples;
}

#ifdef __SSE2__
// Four at a time, as long as sixteen bytes can be read for the twelve that count.
[[gnu::target("ssse3")]] size_t widen24ByFours(const uchar* in, float* out, size_t count)
{
    const __m128i places = _mm_setr_epi8(-1, 0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11);
    const __m128 scale = _mm_set1_ps(1.0F / 2147483648.0F);
    size_t i = 0;
    for (; i + 6 <= count; i += 4) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + 3 * i));
        const __m128 values = _mm_cvtepi32_ps(_mm_shuffle_epi8(bytes, places));
        _mm_storeu_ps(out + i, _mm_mul_ps(values, scale));
    }
    return i;
}
#endif

void widen24(const uchar* in, float* out, size_t count)
{
    size_t i = 0;
#ifdef __SSE2__
    if (__builtin_cpu_supports("ssse3") != 0)
        i = widen24ByFours(in, out, count);
#endif
    for (in += 3 * i; i < count; ++i, in += 3) {
        const auto bits = static_cast<quint32>(in[0]) << 8 | static_cast<quint32>(in[1]) << 16 |
                          static_cast<quint32>(in[2]) << 24;
        out[i] = static_cast<float>(static_cast<qint32>(bits)) * (1.0F / 2147483648.0F);
    }
}

void widen32(const uchar* in, float* out, size_t count)
{
    for (size_t i = 0; i < count; ++i)
        out[i] = static_cast<float>(qFromUnaligned<qint32>(in + 4 * i)) * (1.0F / 2147483648.0F);
}

// Infinities and the like would spoil everything behind them in a filter.
float sane(double value)
{
    constexpr double kLoudest = 64.0;
    return std::isfinite(value) ? static_cast<float>(std::clamp(value, -kLoudest, kLoudest)) : 0.0F;
}

template <typename Number>
void widenFloats(const uchar* in, float* out, size_t count)
{
    for (size_t i = 0; i < count; ++i)
        out[i] = sane(static_cast<double>(qFromUnaligned<Number>(in + sizeof(Number) * i)));
}

} // namespace

QList<qint16> narrowSamples(const WavHeader& header, std::span<const uchar> raw)
{
    switch (header.coding) {
    case WavHeader::Coding::ALaw:
        return looked(raw, kALaw);
    case WavHeader::Coding::MuLaw:
        return looked(raw, kMuLaw);
    default:
        break;
    }
    if (header.bytesPerSample == 1)
        return looked(raw, kUnsigned8);
    QList<qint16> samples = unsetSamples<qint16>(static_cast<qsizetype>(raw.size() / 2));
    std::memcpy(samples.data(), raw.data(), raw.size() / 2 * 2);
    return samples;
}

QList<float> wideSamples(const WavHeader& header, std::span<const uchar> raw)
{
    const bool isFloat = header.coding == WavHeader::Coding::Float;
    if (!isFloat && header.bytesPerSample <= 2) {
        const QList<qint16> narrow = narrowSamples(header, raw);
        return widened({narrow.constData(), static_cast<size_t>(narrow.size())});
    }
    const size_t count = raw.size() / static_cast<size_t>(header.bytesPerSample);
    QList<float> samples = unsetSamples<float>(static_cast<qsizetype>(count));
    if (isFloat && header.bytesPerSample == 8)
        widenFloats<double>(raw.data(), samples.data(), count);
    else if (isFloat)
        widenFloats<float>(raw.data(), samples.data(), count);
    else if (header.bytesPerSample == 3)
        widen24(raw.data(), samples.data(), count);
    else
        widen32(raw.data(), samples.data(), count);
    return samples;
}

} // namespace zib
