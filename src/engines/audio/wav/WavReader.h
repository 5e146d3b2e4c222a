#pragma once

#include "engines/audio/SampleSource.h"
#include "engines/audio/wav/WavHeader.h"

#include <memory>
#include <span>
#include <vector>

namespace zib {

/// Samples that stand in a WAV file as they are: integers, floats, A-law and mu-law.
///
/// More than two channels are mixed down to two by the coefficients of ITU-R BS.775 (centre and surrounds at
/// -3 dB, no low-frequency channel), scaled so that nothing can clip.
class WavReader final : public SampleSource
{
public:
    /// Without a sample size in @p header it fails at once.
    WavReader(std::shared_ptr<const SourceFile> file, const WavHeader& header);
    ~WavReader() override;

    int rateHz() const override { return m_header.rateHz; }
    int channels() const override { return m_header.channels == 1 ? 1 : 2; }
    qint64 length() const override { return m_header.frames(); }
    AudioBlock read(qint64 frames) override;
    void seek(qint64 frame) override { m_next = frame; }
    bool failed() const override { return m_failed; }

private:
    std::span<const uchar> fetch(qint64 frames);
    QList<float> mixedDown(std::span<const float> samples) const;

    std::shared_ptr<const SourceFile> m_file;
    WavHeader m_header;
    std::vector<float> m_left; // share of each channel in the left output
    std::vector<float> m_right;
    std::vector<uchar> m_raw;
    qint64 m_next = 0;
    bool m_failed;
};

} // namespace zib
