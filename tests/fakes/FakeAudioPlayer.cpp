#include "fakes/FakeAudioPlayer.h"

#include <algorithm>

namespace zib {

FakeAudioPlayer::~FakeAudioPlayer() = default;

void FakeAudioPlayer::setFormat(int rateHz, int channels)
{
    calls << QString("format %1 %2").arg(rateHz).arg(channels);
    m_rateHz = rateHz;
    m_channels = channels;
}

qint32 FakeAudioPlayer::bufferSize(qint32 milliseconds) const
{
    return static_cast<qint32>(qint64{m_rateHz} * milliseconds / 1000) * m_channels;
}

int FakeAudioPlayer::open()
{
    calls << "open";
    m_queue.clear();
    m_used = 0;
    m_position = 0;
    m_status = m_rateHz > 0 && m_channels > 0 ? nextOpen : -1;
    m_open = m_status >= 0;
    m_expecting = m_dry = false;
    return m_status;
}

void FakeAudioPlayer::writeBlock(const AudioBlock& block)
{
    calls << QString("write %1").arg(block.sampleCount());
    if (!m_open || !block.narrow() || block.isEmpty())
        return;
    m_queue << *block.narrow();
    m_dry = false;
}

void FakeAudioPlayer::setExpecting(bool on)
{
    m_expecting = on;
    if (!on && m_dry)
        QMetaObject::invokeMethod(this, &FakeAudioPlayer::endWhenDry, Qt::QueuedConnection);
}

void FakeAudioPlayer::reset()
{
    calls << "reset";
    if (!m_open)
        return;
    m_queue.clear();
    m_used = 0;
    m_position = 0;
}

void FakeAudioPlayer::close()
{
    calls << "close";
    m_open = false;
    m_queue.clear();
    m_used = 0;
}

/// Takes frames out of the first block. @returns how many it gave.
qint64 FakeAudioPlayer::consumeFrom(qint64 frames)
{
    const QList<qint16>& block = m_queue.first();
    const qint64 samples = std::min<qint64>(frames * m_channels, block.size() - m_used);
    if (keepHeard)
        heard << block.mid(m_used, samples);
    heardSamples += samples;
    m_used += samples;
    m_position += samples / m_channels;
    return samples / m_channels;
}

void FakeAudioPlayer::play(qint64 frames)
{
    while (m_open && frames > 0 && !m_queue.isEmpty()) {
        frames -= consumeFrom(frames);
        if (m_used < m_queue.first().size())
            break;
        m_queue.removeFirst();
        m_used = 0;
        emit BufferDone();
    }
    if (!m_open)
        return;
    emit PositionChanged(m_position);
    m_dry = m_queue.isEmpty();
    endWhenDry();
}

void FakeAudioPlayer::endWhenDry()
{
    if (!m_open || !m_dry || m_expecting)
        return;
    m_open = false;
    emit PlaybackFinished();
}

void FakeAudioPlayer::lose()
{
    m_status = -1;
    m_open = false;
    m_queue.clear();
    emit PlaybackFinished();
}

} // namespace zib
