#include "fakes/FakeAudioInformation.h"

namespace zib {

bool FakeAudioInformation::isAudioFile(const QString& path)
{
    m_shelf.calls << "isAudioFile " + path;
    return m_shelf.sounds.contains(path);
}

bool FakeAudioInformation::open(const QString& path)
{
    m_shelf.calls << "information " + path;
    m_sound.reset();
    if (m_shelf.sounds.contains(path))
        m_sound = m_shelf.sounds.value(path);
    return m_sound.has_value();
}

QString FakeAudioInformation::title() const
{
    const QString main = tagTitle(TagKind::Main);
    return main.isEmpty() ? tagTitle(TagKind::Old) : main;
}

QString FakeAudioInformation::tagTitle(TagKind kind) const
{
    if (!m_sound)
        return {};
    return (kind == TagKind::Main ? m_sound->title : m_sound->oldTitle).trimmed();
}

QString FakeAudioInformation::artist() const
{
    if (!m_sound)
        return {};
    const QString main = m_sound->artist.trimmed();
    return main.isEmpty() ? m_sound->oldArtist.trimmed() : main;
}

qint32 FakeAudioInformation::durationMs() const
{
    if (!m_sound)
        return 0;
    return m_sound->durationMs.value_or(static_cast<qint32>(m_sound->length() * 1000 / m_sound->rateHz));
}

int FakeAudioInformation::sampleRate() const
{
    return m_sound ? m_sound->rateHz : 0;
}

int FakeAudioInformation::channels() const
{
    return m_sound ? m_sound->channels : 0;
}

int FakeAudioInformation::bitsPerSample() const
{
    return m_sound ? m_sound->bits : 0;
}

bool FakeAudioInformation::isPcm() const
{
    return m_sound && m_sound->isPcm;
}

} // namespace zib
