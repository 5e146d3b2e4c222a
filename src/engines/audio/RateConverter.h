#pragma once

#include <QList>

#include <memory>
#include <span>

struct soxr;

namespace zib {

/// Converts one sound from one sample rate to another, block by block.
///
/// The output begins with the input's first sample and holds exactly the input's length at the new rate,
/// rounded.
class RateConverter
{
public:
    RateConverter(int fromHz, int toHz, int channels);
    ~RateConverter();
    RateConverter(const RateConverter&) = delete;
    RateConverter& operator=(const RateConverter&) = delete;

    /// Takes the next interleaved samples.  @returns what can be told already, which may be nothing.
    QList<float> convert(std::span<const float> samples);
    /// Ends the sound.  @returns the rest.
    QList<float> finish();
    /// Whether the library refused; the output is then silence.
    bool failed() const { return m_failed; }

private:
    struct Deleter
    {
        void operator()(soxr* converter) const;
    };
    QList<float> process(const float* samples, size_t frames);

    int m_fromHz;
    int m_toHz;
    int m_channels;
    qint64 m_taken = 0; // sample frames
    qint64 m_given = 0;
    bool m_failed = false;
    std::unique_ptr<soxr, Deleter> m_converter;
};

} // namespace zib
