#pragma once

#include <QList>

#include <memory>
#include <span>
#include <vector>

namespace zib {

/// Converts one sound from one sample rate to another, block by block; blocks of some size on threads of its
/// own, one for each channel.
///
/// The output begins with the input's first sample and holds exactly the input's length at the new rate,
/// rounded; it does not depend on the blocks.
class RateConverter
{
public:
    /// @param channels 1 or 2.
    RateConverter(int fromHz, int toHz, int channels);
    ~RateConverter();
    RateConverter(const RateConverter&) = delete;
    RateConverter& operator=(const RateConverter&) = delete;

    /// Takes the next interleaved samples.  @returns what is ready, which may be nothing yet.
    QList<float> convert(std::span<const float> samples);
    /// Ends the sound.  @returns the rest.
    QList<float> finish();
    /// Whether the library refused; the output is then silence. To be asked after finish().
    bool failed() const;

private:
    class Channel;

    void give(std::span<const float> samples);
    QList<float> taken();
    QList<float> joined() const;

    int m_fromHz;
    int m_toHz;
    std::vector<std::unique_ptr<Channel>> m_channels;
    int m_waiting = 0;  // blocks given to the channels and not yet taken
    qint64 m_taken = 0; // sample frames
    qint64 m_given = 0;
};

} // namespace zib
