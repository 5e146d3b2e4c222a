#pragma once

#include <QList>

#include <memory>
#include <span>
#include <vector>

struct soxr;

namespace zib {

/// Converts one sound from one sample rate to another, block by block; a second channel on another core.
///
/// The output begins with the input's first sample and holds exactly the input's length at the new rate,
/// rounded.
class RateConverter
{
public:
    /// @param channels 1 or 2.
    RateConverter(int fromHz, int toHz, int channels);
    ~RateConverter();
    RateConverter(const RateConverter&) = delete;
    RateConverter& operator=(const RateConverter&) = delete;

    /// Takes the next interleaved samples.  @returns what can be told already, which may be nothing.
    QList<float> convert(std::span<const float> samples);
    /// Ends the sound.  @returns the rest.
    QList<float> finish();
    /// Whether the library refused; the output is then silence.
    bool failed() const;

private:
    /// One channel on its way through the library.
    struct Channel
    {
        struct Deleter
        {
            void operator()(soxr* handle) const;
        };

        void process(std::span<const float> samples, size_t first, size_t stride, size_t room);

        std::unique_ptr<soxr, Deleter> converter;
        std::vector<float> in;
        std::vector<float> out;
        size_t given = 0; // samples of out that count
        bool failed = false;
    };

    QList<float> process(std::span<const float> samples);
    QList<float> joined(size_t frames) const;

    int m_fromHz;
    int m_toHz;
    std::vector<Channel> m_channels;
    qint64 m_taken = 0; // sample frames
    qint64 m_given = 0;
};

} // namespace zib
