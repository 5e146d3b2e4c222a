#pragma once

#include <QList>

#include <utility>
#include <variant>

namespace zib {

/// A run of interleaved samples on its way from a reader to a writer or a player.
///
/// It carries 16-bit samples when the source has no more to give, otherwise floating samples (full
/// scale 1.0), so that a change of rate or width rounds only once, in the writer.
class AudioBlock
{
public:
    AudioBlock() = default;
    explicit AudioBlock(QList<qint16> samples) : m_samples(std::move(samples)) {}
    explicit AudioBlock(QList<float> samples) : m_samples(std::move(samples)) {}

    /// Samples of all channels together.
    qsizetype sampleCount() const
    {
        return std::visit([](const auto& samples) { return samples.size(); }, m_samples);
    }
    bool isEmpty() const { return sampleCount() == 0; }
    /// The 16-bit samples, or nullptr when the block carries floating ones.
    const QList<qint16>* narrow() const { return std::get_if<QList<qint16>>(&m_samples); }
    /// The floating samples, or nullptr when the block carries 16-bit ones.
    const QList<float>* wide() const { return std::get_if<QList<float>>(&m_samples); }

private:
    std::variant<QList<qint16>, QList<float>> m_samples;
};

} // namespace zib
