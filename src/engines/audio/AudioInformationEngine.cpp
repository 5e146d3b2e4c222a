#include "engines/audio/AudioInformationEngine.h"

#include "engines/audio/sources.h"

#include <algorithm>
#include <limits>

namespace zib {

AudioInformationEngine::AudioInformationEngine() = default;
AudioInformationEngine::~AudioInformationEngine() = default;

bool AudioInformationEngine::isAudioFile(const QString& path)
{
    return look(SourceFile::open(path)).has_value();
}

bool AudioInformationEngine::open(const QString& path)
{
    const auto file = SourceFile::open(path);
    const auto facts = look(file);
    m_facts = facts.value_or(Facts{});
    m_main = m_old = {};
    m_bytes.reset();
    if (!facts)
        return false;
    m_bytes = file->size();
    if (m_facts.wav) {
        m_main = readWavTag(*file, *m_facts.wav);
    } else {
        m_main = readId3v2(*file);
        m_old = readId3v1(*file);
    }
    return true;
}

QString AudioInformationEngine::title() const
{
    return m_main.title.isEmpty() ? m_old.title : m_main.title;
}

QString AudioInformationEngine::tagTitle(TagKind kind) const
{
    return kind == TagKind::Main ? m_main.title : m_old.title;
}

QString AudioInformationEngine::artist() const
{
    return m_main.artist.isEmpty() ? m_old.artist : m_main.artist;
}

std::optional<AudioInformationEngine::Facts>
AudioInformationEngine::look(const std::shared_ptr<const SourceFile>& file)
{
    if (!file)
        return std::nullopt;
    if (m_seen && m_seen->stamp == file->stamp())
        return m_seen->facts;
    m_seen = Seen{file->stamp(), std::nullopt};
    if (const auto content = recognise(file)) {
        Facts facts;
        const qint64 milliseconds = content->length() * 1000 / content->rateHz();
        facts.durationMs =
            static_cast<qint32>(std::min<qint64>(milliseconds, std::numeric_limits<qint32>::max()));
        facts.rateHz = content->rateHz();
        facts.channels = content->channels();
        facts.bits = content->mp3 ? 16 : content->wav->bits;
        facts.isPcm = !content->mp3 && content->wav->coding == WavHeader::Coding::Integer &&
                      content->wav->bytesPerSample == (content->wav->bits + 7) / 8;
        facts.loss = content->loss();
        facts.wav = content->wav;
        m_seen->facts = facts;
    }
    return m_seen->facts;
}

} // namespace zib
