#pragma once

#include <QList>

#include <array>
#include <span>

namespace zib {

/// Rounds floating samples to 16 bits with triangular dither of two steps' width.
///
/// The noise starts from a fixed seed and does not depend on how the samples are cut into blocks, so the same
/// sound always gives the same bytes.
class Ditherer
{
public:
    Ditherer();

    /// Rounds the next samples of a sound; full scale is 1.0, what lies beyond is clipped.
    QList<qint16> round(std::span<const float> samples);

private:
    static constexpr size_t kGenerators = 16; // side by side
    static constexpr size_t kNoise = 4096;

    std::array<quint32, kGenerators> m_state;
    std::array<float, kNoise> m_noise;
    size_t m_next = kNoise;
};

/// Widens 16-bit samples; full scale becomes 1.0.
QList<float> widened(std::span<const qint16> samples);

} // namespace zib
