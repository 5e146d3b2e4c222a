#pragma once

#include "components/AudioInformation.h"
#include "engines/audio/SourceFile.h"
#include "engines/audio/TagReader.h"

#include <memory>
#include <optional>

namespace zib {

/// Answers from frame headers, chunks and tags; keeps no file open between calls.
class AudioInformationEngine final : public AudioInformation
{
public:
    AudioInformationEngine();
    ~AudioInformationEngine() override;

    bool isAudioFile(const QString& path) override;
    bool open(const QString& path) override;
    QString title() const override;
    QString tagTitle(TagKind kind) const override;
    QString artist() const override;
    qint32 durationMs() const override { return m_facts.durationMs; }
    std::optional<qint64> fileBytes() const override { return m_bytes; }
    int sampleRate() const override { return m_facts.rateHz; }
    int channels() const override { return m_facts.channels; }
    int bitsPerSample() const override { return m_facts.bits; }
    bool isPcm() const override { return m_facts.isPcm; }
    AudioLoss loss() const override { return m_facts.loss; }

private:
    struct Facts
    {
        qint32 durationMs = 0;
        int rateHz = 0;
        int channels = 0;
        int bits = 0;
        bool isPcm = false;
        AudioLoss loss;
        std::optional<WavHeader> wav;
    };
    /// The file looked at last, for the question that usually follows.
    struct Seen
    {
        SourceFile::Stamp stamp;
        std::optional<Facts> facts;
    };

    std::optional<Facts> look(const std::shared_ptr<const SourceFile>& file);

    Facts m_facts;
    std::optional<qint64> m_bytes;
    Tag m_main;
    Tag m_old;
    std::optional<Seen> m_seen;
};

} // namespace zib
