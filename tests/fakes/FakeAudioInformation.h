#pragma once

#include "components/AudioInformation.h"
#include "fakes/FakeAudioShelf.h"

namespace zib {

/// Tells of the sounds on a shelf; the shelf must outlive it.
class FakeAudioInformation final : public AudioInformation
{
public:
    explicit FakeAudioInformation(FakeAudioShelf& shelf) : m_shelf(shelf) {}

    bool isAudioFile(const QString& path) override;
    bool open(const QString& path) override;
    QString title() const override;
    QString tagTitle(TagKind kind) const override;
    QString artist() const override;
    qint32 durationMs() const override;
    int sampleRate() const override;
    int channels() const override;
    int bitsPerSample() const override;
    bool isPcm() const override;
    AudioLoss loss() const override { return m_sound ? m_sound->loss : AudioLoss{}; }

private:
    FakeAudioShelf& m_shelf;
    std::optional<FakeSound> m_sound;
};

} // namespace zib
