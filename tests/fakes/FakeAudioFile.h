#pragma once

#include "components/AudioFile.h"
#include "fakes/FakeAudioShelf.h"

namespace zib {

/// Reads sounds from a shelf and writes sounds onto it; the shelf must outlive it.
///
/// A finished target also appears as a real file (its samples, without a header) when its folder exists,
/// since windows look for files by name. Nothing is converted: what is written is kept with the output
/// format.
class FakeAudioFile final : public AudioFile
{
public:
    explicit FakeAudioFile(FakeAudioShelf& shelf) : m_shelf(shelf) {}

    int open(const QString& path) override;
    int create(const QString& path) override;
    int status() const override { return m_status; }
    void setOutputFormat(int rateHz, int channels, int bits) override;
    void setRateAndChannels(int rateHz, int channels) override { setOutputFormat(rateHz, channels, 16); }
    void setInputFormat(int rateHz, int channels) override;
    int formatRate() const override { return m_sound ? m_sound->rateHz : 0; }
    int formatChannels() const override { return m_sound ? m_sound->channels : 0; }
    qint64 length() const override { return m_sound ? m_sound->length() : 0; }
    int samplesPerUnit() const override { return formatChannels(); }
    void setSixteenBitBlocks(bool on) override;
    AudioBlock readBlock(qint32 samples) override;
    qint64 seek(qint64 frame) override;
    AudioLoss loss() const override { return m_sound ? m_sound->loss : AudioLoss{}; }
    void writeBlock(const AudioBlock& block) override;
    void close() override;
    void discard() override;

private:
    void forget();

    FakeAudioShelf& m_shelf;
    std::optional<FakeSound> m_sound;  // what is being read
    std::optional<FakeSound> m_target; // what is being written
    QString m_path;
    FakeSound m_output;
    qint64 m_next = 0;
    int m_status = 0;
};

} // namespace zib
