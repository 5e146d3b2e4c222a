#pragma once

#include "components/AudioFile.h"
#include "engines/audio/convert/WriteBehind.h"

#include <memory>

namespace zib {

struct AudioContent;
class ReadAhead;

/// Reads MP3 and WAV files through decoders of its own threads, and writes 16-bit PCM WAV files.
///
/// MP3 at 44.1 kHz comes as the decoder's own 16-bit samples; finer or other sources as floats, unless 16-bit
/// blocks are asked for.
class AudioFileEngine final : public AudioFile
{
public:
    AudioFileEngine();
    ~AudioFileEngine() override;

    int open(const QString& path) override;
    int create(const QString& path) override;
    int status() const override;
    void setOutputFormat(int rateHz, int channels, int bits) override;
    void setRateAndChannels(int rateHz, int channels) override { setOutputFormat(rateHz, channels, 16); }
    void setInputFormat(int rateHz, int channels) override;
    int formatRate() const override;
    int formatChannels() const override;
    qint64 length() const override;
    int samplesPerUnit() const override { return formatChannels(); }
    void setSixteenBitBlocks(bool on) override { m_isSixteenBit = on; }
    AudioBlock readBlock(qint32 samples) override;
    qint64 seek(qint64 frame) override;
    AudioLoss loss() const override;
    void writeBlock(const AudioBlock& block) override;
    void close() override;
    void discard() override;

private:
    enum Status
    {
        Well = 0,
        CannotOpen = -1,
        CannotCreate = -2,
        CannotRead = -3,
        CannotWrite = -4,
        BadFormat = -5
    };

    void forget();
    bool reading() const { return m_content != nullptr; }
    ReadAhead& reader();
    AudioBlock sixteenBit(AudioBlock block);

    std::unique_ptr<AudioContent> m_content;
    std::unique_ptr<ReadAhead> m_reader;   // made when the first block is asked for
    std::unique_ptr<WavWriter> m_file;     // created, no block yet
    std::unique_ptr<WriteBehind> m_writer; // made when the first block comes
    std::unique_ptr<Ditherer> m_ditherer;
    SoundFormat m_input;
    SoundFormat m_output;
    int m_outputBits = 16;
    bool m_isSixteenBit = false;
    int m_status = Well;
};

} // namespace zib
