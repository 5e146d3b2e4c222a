#pragma once

#include <QList>

#include <utility>

namespace zib {

/// A run of interleaved samples on its way from a reader to a writer or a player.
///
/// It carries 16-bit samples when the source has no more to give, otherwise floating samples (full
/// scale 1.0), so that a change of rate or width rounds only once, in the writer.
class AudioBlock
{
public:
    AudioBlock() = default;
    explicit AudioBlock(QList<qint16> samples) : m_narrow(std::move(samples)) {}
    explicit AudioBlock(QList<float> samples) : m_wide(std::move(samples)), m_isWide(true) {}

    /// Samples of all channels together.
    qsizetype sampleCount() const { return m_isWide ? m_wide.size() : m_narrow.size(); }
    bool isEmpty() const { return sampleCount() == 0; }
    /// The 16-bit samples, or nullptr when the block carries floating ones.
    const QList<qint16>* narrow() const { return m_isWide ? nullptr : &m_narrow; }
    /// The floating samples, or nullptr when the block carries 16-bit ones.
    const QList<float>* wide() const { return m_isWide ? &m_wide : nullptr; }

private:
    QList<qint16> m_narrow;
    QList<float> m_wide;
    bool m_isWide = false;
};

} // namespace zib
