#include "engines/play/SdlPlayer.h"

#include "engines/play/SampleQueue.h"
#include "engines/play/SdlDevice.h"
#include "engines/play/makers.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace zib {

namespace {

using namespace std::chrono_literals;

constexpr auto kTick = 100ms;
constexpr auto kLongestStall = 5s; // a server that takes nothing for so long has gone
constexpr int kMostChannels = 8;
constexpr int kNoDevice = -1;
constexpr int kDeviceLost = -2;

} // namespace

SdlPlayer::SdlPlayer()
{
    m_ticks.setInterval(kTick);
    connect(&m_ticks, &QTimer::timeout, this, &SdlPlayer::lookAround);
}

SdlPlayer::~SdlPlayer()
{
    close();
}

void SdlPlayer::setFormat(int rateHz, int channels)
{
    m_rateHz = rateHz;
    m_channels = channels;
}

qint32 SdlPlayer::bufferSize(qint32 milliseconds) const
{
    const qint64 samples = qint64{m_rateHz} * milliseconds / 1000 * m_channels;
    return static_cast<qint32>(std::clamp<qint64>(samples, 0, std::numeric_limits<qint32>::max()));
}

int SdlPlayer::open()
{
    close();
    m_status = kNoDevice;
    if (m_rateHz <= 0 || m_channels <= 0 || m_channels > kMostChannels)
        return m_status;
    m_queue = std::make_shared<SampleQueue>(m_rateHz, m_channels, [this] {
        QMetaObject::invokeMethod(this, &SdlPlayer::collect, Qt::QueuedConnection);
    });
    m_device = SdlDevice::open(m_rateHz, m_channels, m_queue);
    if (!m_device)
        return m_status;
    m_ending = m_expecting = false;
    m_lastMove = std::chrono::steady_clock::now();
    m_lastHanded = 0;
    m_ticks.start();
    QMetaObject::invokeMethod(this, &SdlPlayer::collect, Qt::QueuedConnection);
    return m_status = 0;
}

void SdlPlayer::writeBlock(const AudioBlock& block)
{
    if (!m_device || !block.narrow() || block.isEmpty())
        return;
    m_ending = false;
    m_queue->append(*block.narrow());
}

void SdlPlayer::setExpecting(bool on)
{
    if (std::exchange(m_expecting, on) && !on)
        QMetaObject::invokeMethod(this, &SdlPlayer::collect, Qt::QueuedConnection);
}

qint64 SdlPlayer::position() const
{
    if (!m_queue)
        return 0;
    return m_device ? m_queue->consumedFrames() : m_queue->handedFrames();
}

void SdlPlayer::reset()
{
    if (!m_device)
        return;
    m_queue->clear();
    m_ending = false;
    QMetaObject::invokeMethod(this, &SdlPlayer::collect, Qt::QueuedConnection);
}

void SdlPlayer::close()
{
    m_ticks.stop();
    if (!m_device)
        return;
    m_queue->shut();
    m_device.reset();
}

/// Tells the owner what the device's thread has done. Any receiver may reset, close or open the player, which
/// leaves nothing to tell.
void SdlPlayer::collect()
{
    const std::shared_ptr<SampleQueue> queue = m_queue;
    if (!m_device)
        return;
    for (int used = queue->takeUsedBlocks(); used > 0; --used) {
        emit BufferDone();
        if (!m_device || m_queue != queue)
            return;
    }
    endWhenDry();
    if (m_ending && queue->isHeard())
        finish(0);
}

/// Nothing queued although the owner has answered everything: no more will come.
void SdlPlayer::endWhenDry()
{
    if (m_ending || m_expecting || !m_queue->isEmpty())
        return;
    m_ending = true;
    m_queue->end();
}

void SdlPlayer::lookAround()
{
    if (m_device->isLost() || hasStalled()) {
        finish(kDeviceLost);
        return;
    }
    if (m_lastHanded > 0)
        emit PositionChanged(position());
}

bool SdlPlayer::hasStalled()
{
    const auto now = std::chrono::steady_clock::now();
    const qint64 handed = m_queue->handedFrames();
    if (handed != m_lastHanded || m_queue->isEmpty())
        m_lastMove = now;
    m_lastHanded = handed;
    return now - m_lastMove > kLongestStall;
}

/// The one way to PlaybackFinished; the device is given back first, since the receiver may open it again.
void SdlPlayer::finish(int status)
{
    close();
    m_status = status;
    emit PlaybackFinished();
}

std::unique_ptr<AudioPlayer> makeAudioPlayer()
{
    return std::make_unique<SdlPlayer>();
}

} // namespace zib
