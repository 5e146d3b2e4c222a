#pragma once

#include "engines/audio/convert/RateConverter.h"
#include "engines/audio/mp3/Mp3Decoder.h"
#include "engines/audio/mp3/Mp3LossCount.h"
#include "engines/audio/SampleSource.h"

#include <memory>
#include <span>

namespace zib {

/// An MP3 stream from front to back on one thread, whatever its frames are like.
///
/// Parts of other rates than the first one are converted to it, mono parts of a stereo stream doubled.
class Mp3Reader final : public SampleSource
{
public:
    /// @param kind of the blocks; a stream that changes its rate gives floating ones anyway.
    Mp3Reader(const std::shared_ptr<const SourceFile>& file, Mp3Layout layout, SampleKind kind);
    ~Mp3Reader() override;

    int rateHz() const override { return m_layout.rateHz; }
    int channels() const override { return m_layout.channels; }
    qint64 length() const override { return m_layout.length; }
    AudioBlock read(qint64 frames) override;
    void seek(qint64 frame) override;
    bool failed() const override { return m_failed; }
    AudioLoss loss() const override { return m_losses.loss(); }

private:
    void rewind();
    bool skipTo(qint64 frames);
    bool refill();
    void beginRun(qsizetype run);
    bool endOfRun();
    void takeFrame(std::span<const uchar> samples);
    AudioBlock taken(qint64 frames);
    qint64 readyFrames() const { return (m_ready.size() - m_readyAt) / m_decoder.frameBytes(); }

    const Mp3Layout m_layout;
    SampleKind m_kind;
    Mp3Decoder m_decoder;
    std::unique_ptr<RateConverter> m_converter; // while a part of another rate is decoded
    qsizetype m_run = 0;
    QByteArray m_ready;      // decoded bytes not yet delivered
    qsizetype m_readyAt = 0; // of which so many are used up
    qint64 m_position = 0;   // sample frames delivered
    qint64 m_frame = 0;      // of the file: the next to be decoded
    bool m_failed = false;
    Mp3LossCount m_losses;
};

} // namespace zib
