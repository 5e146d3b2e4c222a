#include "fakes/FakeAudioFile.h"

#include <QFile>

#include <algorithm>

namespace zib {

int FakeAudioFile::open(const QString& path)
{
    m_shelf.note("open " + path);
    forget();
    if (!m_shelf.sounds.contains(path))
        return m_status = -1;
    m_path = path;
    m_sound = m_shelf.sounds.value(path);
    return m_status;
}

int FakeAudioFile::create(const QString& path)
{
    m_shelf.note("create " + path);
    forget();
    if (m_shelf.refusedTargets.contains(path))
        return m_status = -2;
    m_path = path;
    m_target = m_output;
    return m_status;
}

void FakeAudioFile::setOutputFormat(int rateHz, int channels, int bits)
{
    m_shelf.note(QString("output %1 %2 %3").arg(rateHz).arg(channels).arg(bits));
    m_output.rateHz = rateHz;
    m_output.channels = channels;
    m_output.bits = bits;
}

void FakeAudioFile::setInputFormat(int rateHz, int channels)
{
    m_shelf.note(QString("input %1 %2").arg(rateHz).arg(channels));
}

void FakeAudioFile::setSixteenBitBlocks(bool on)
{
    m_shelf.note(QString("sixteen %1").arg(on ? "on" : "off"));
}

AudioBlock FakeAudioFile::readBlock(qint32 samples)
{
    if (m_shelf.onRead)
        m_shelf.onRead();
    if (!m_sound || m_status < 0)
        return {};
    if (m_sound->failAtSample && m_next >= *m_sound->failAtSample) {
        m_status = -3;
        return {};
    }
    const qint64 whole = samples - samples % m_sound->channels;
    const qint64 count = std::clamp<qint64>(whole, 0, m_sound->samples.size() - m_next);
    AudioBlock block(m_sound->samples.mid(m_next, count));
    m_next += count;
    return block;
}

qint64 FakeAudioFile::seek(qint64 frame)
{
    m_shelf.note(QString("seek %1").arg(frame));
    if (!m_sound)
        return 0;
    const qint64 reached = std::clamp<qint64>(frame, 0, m_sound->length());
    m_next = reached * m_sound->channels;
    return reached;
}

void FakeAudioFile::writeBlock(const AudioBlock& block)
{
    if (!m_target || m_status < 0)
        return;
    if (m_shelf.blocksUntilDiskFull && (*m_shelf.blocksUntilDiskFull)-- <= 0) {
        m_status = -4;
        return;
    }
    if (const auto* narrow = block.narrow())
        m_target->samples << *narrow;
    else
        for (const float sample : *block.wide())
            m_target->samples << static_cast<qint16>(std::clamp(sample * 32768.0F, -32768.0F, 32767.0F));
}

void FakeAudioFile::close()
{
    if (m_path.isEmpty())
        return;
    m_shelf.note("close " + m_path);
    if (m_target && m_status == 0) {
        m_shelf.written.insert(m_path, *m_target);
        QFile file(m_path);
        if (file.open(QIODevice::WriteOnly))
            file.write(reinterpret_cast<const char*>(m_target->samples.constData()),
                       m_target->samples.size() * qsizetype{sizeof(qint16)});
    }
    const int status = m_status;
    forget();
    m_status = status;
}

void FakeAudioFile::discard()
{
    if (!m_target)
        return;
    m_shelf.note("discard " + m_path);
    m_shelf.discarded << m_path;
    forget();
}

void FakeAudioFile::forget()
{
    m_sound.reset();
    m_target.reset();
    m_path.clear();
    m_next = 0;
    m_status = 0;
}

} // namespace zib
