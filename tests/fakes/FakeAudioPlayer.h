#pragma once

#include "components/AudioPlayer.h"

#include <QList>
#include <QStringList>

namespace zib {

/// A sound device whose clock the test turns: nothing plays until play() says how much.
class FakeAudioPlayer final : public AudioPlayer
{
    Q_OBJECT
public:
    ~FakeAudioPlayer() override;

    void setFormat(int rateHz, int channels) override;
    qint32 bufferSize(qint32 milliseconds) const override;
    int open() override;
    int status() const override { return m_status; }
    void writeBlock(const AudioBlock& block) override;
    void setExpecting(bool on) override;
    qint64 position() const override { return m_position; }
    void reset() override;
    void close() override;

    /// Consumes up to @p frames sample frames, telling BufferDone for every block used up, then the position;
    /// when nothing is left after that, PlaybackFinished.
    void play(qint64 frames);
    /// The device vanishes.
    void lose();

    bool isOpen() const { return m_open; }
    qsizetype queuedBlocks() const { return m_queue.size(); }

    int nextOpen = 0;        ///< What the following calls of open answer.
    QStringList calls;       ///< "format 44100 2", "open", "write 88200", "reset", "close", in order.
    QList<qint16> heard;     ///< Every sample consumed, over all openings.
    bool keepHeard = true;   ///< Off for long runs that watch the blocks themselves.
    qint64 heardSamples = 0; ///< Samples consumed, over all openings.

private:
    qint64 consumeFrom(qint64 frames);
    void endWhenDry();

    int m_rateHz = 0;
    int m_channels = 0;
    int m_status = 0;
    bool m_open = false;
    bool m_expecting = false;
    bool m_dry = false; // play() found nothing more
    QList<QList<qint16>> m_queue;
    qsizetype m_used = 0; // samples of the first block that were consumed
    qint64 m_position = 0;
};

} // namespace zib
