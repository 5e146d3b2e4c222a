#pragma once

#include <QList>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <span>

namespace zib {

/// The blocks on their way from the owner's thread to the device's.
///
/// An empty queue holds the device back instead of giving it silence: nothing is ever heard between two
/// samples of a file that does not stand there, and a late block costs a pause, not a hole. Silence begins
/// with end().
class SampleQueue
{
public:
    /// @param wake tells the owner, on the device's thread, that there is news to collect; at most once until
    /// the next takeUsedBlocks().
    SampleQueue(int rateHz, int channels, std::function<void()> wake);

    // Owner's thread.
    void append(QList<qint16> block);
    /// Drops everything; counting starts at 0 again.
    void clear();
    /// No block will follow: play what is left, then silence.
    void end();
    /// Silence from here on, whatever is queued; the device is about to close.
    void shut();
    /// Blocks used up since the last call.
    int takeUsedBlocks();
    bool isEmpty() const;
    /// Whether the last sample has left the device too, after end().
    bool isHeard() const;
    /// Sample frames handed to the device since the last clear().
    qint64 handedFrames() const;
    /// Sample frames the device has consumed since the last clear(): of the portion it was handed last, as
    /// much as has had the time to sound.
    qint64 consumedFrames() const;

    // Device's thread.
    /// Fills a whole portion; waits while there is nothing to fill it with.
    void fill(std::span<qint16> out);

private:
    using Clock = std::chrono::steady_clock;

    std::size_t takeSamples(std::span<qint16> out);
    bool tellsOwner();

    const int m_rateHz;
    const int m_channels;
    const std::function<void()> m_wake;

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<QList<qint16>> m_blocks;
    qsizetype m_used = 0; // samples of the first block that were handed on
    int m_usedBlocks = 0;
    int m_silentFills = 0;
    bool m_ending = false;
    bool m_shut = false;
    bool m_told = false;
    bool m_filling = false;
    qint64 m_handed = 0;      // samples since clear()
    qint64 m_lastPortion = 0; // samples of the last fill, since clear()
    Clock::time_point m_lastFill{};
};

} // namespace zib
