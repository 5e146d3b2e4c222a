#include "engines/play/SampleQueue.h"

#include <algorithm>
#include <utility>

namespace zib {

namespace {

// Portions that may still wait inside the device when it asks for the next one: SDL's own and the server's.
constexpr int kPortionsInDevice = 3;

} // namespace

SampleQueue::SampleQueue(int rateHz, int channels, std::function<void()> wake)
    : m_rateHz(rateHz), m_channels(channels), m_wake(std::move(wake))
{
}

void SampleQueue::append(QList<qint16> block)
{
    {
        const std::lock_guard lock(m_mutex);
        m_blocks.push_back(std::move(block));
        m_ending = false;
    }
    m_changed.notify_all();
}

void SampleQueue::clear()
{
    const std::lock_guard lock(m_mutex);
    m_blocks.clear();
    m_used = 0;
    m_usedBlocks = 0;
    m_ending = false;
    m_handed = 0;
    m_lastPortion = 0;
}

void SampleQueue::end()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
        m_silentFills = 0;
    }
    m_changed.notify_all();
}

void SampleQueue::shut()
{
    {
        const std::lock_guard lock(m_mutex);
        m_shut = true;
    }
    m_changed.notify_all();
}

int SampleQueue::takeUsedBlocks()
{
    const std::lock_guard lock(m_mutex);
    m_told = false;
    return std::exchange(m_usedBlocks, 0);
}

bool SampleQueue::isEmpty() const
{
    const std::lock_guard lock(m_mutex);
    return m_blocks.empty();
}

bool SampleQueue::isHeard() const
{
    const std::lock_guard lock(m_mutex);
    return m_ending && m_blocks.empty() && m_silentFills >= kPortionsInDevice;
}

qint64 SampleQueue::handedFrames() const
{
    const std::lock_guard lock(m_mutex);
    return m_handed / m_channels;
}

qint64 SampleQueue::consumedFrames() const
{
    const std::lock_guard lock(m_mutex);
    const std::chrono::duration<double> since = Clock::now() - m_lastFill;
    const qint64 portion = m_lastPortion / m_channels;
    const qint64 sounded = m_filling ? 0 : std::min(portion, static_cast<qint64>(since.count() * m_rateHz));
    return m_handed / m_channels - portion + sounded;
}

void SampleQueue::fill(std::span<qint16> out)
{
    bool tell = false;
    {
        std::unique_lock lock(m_mutex);
        m_filling = true;
        m_lastPortion = 0;
        std::size_t filled = 0;
        while (filled < out.size()) {
            if (m_blocks.empty() && !m_ending && !m_shut && std::exchange(tell, false)) {
                lock.unlock(); // the owner must hear of used blocks before anyone waits for new ones
                m_wake();
                lock.lock();
            }
            m_changed.wait(lock, [this] { return !m_blocks.empty() || m_ending || m_shut; });
            if (m_blocks.empty() || m_shut)
                break;
            filled += takeSamples(out.subspan(filled));
            tell = tellsOwner() || tell;
        }
        std::fill(out.begin() + static_cast<std::ptrdiff_t>(filled), out.end(), qint16{0});
        if (filled == 0 && m_ending)
            ++m_silentFills;
        tell = tellsOwner() || tell;
        m_filling = false;
        m_lastFill = Clock::now();
    }
    if (tell)
        m_wake();
}

/// Moves samples of the first block into @p out; the mutex is held.  @returns how many.
std::size_t SampleQueue::takeSamples(std::span<qint16> out)
{
    const QList<qint16>& block = m_blocks.front();
    const qsizetype count = std::min<qsizetype>(block.size() - m_used, static_cast<qsizetype>(out.size()));
    std::copy_n(block.constBegin() + m_used, count, out.begin());
    m_used += count;
    m_handed += count;
    m_lastPortion += count;
    if (m_used == block.size()) {
        m_blocks.pop_front();
        m_used = 0;
        ++m_usedBlocks;
    }
    return static_cast<std::size_t>(count);
}

/// Whether the owner is to be told now; the mutex is held.
bool SampleQueue::tellsOwner()
{
    if (m_shut)
        return false;
    const bool news = m_usedBlocks > 0 || (m_ending && m_silentFills == kPortionsInDevice);
    return news && !std::exchange(m_told, true);
}

} // namespace zib
