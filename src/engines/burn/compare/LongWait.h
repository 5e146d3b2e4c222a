#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace zib {

/// Says that a call takes long, from a thread of its own: whoever calls is stuck in it.
class LongWait
{
public:
    /// @param say is called once for each call that takes longer than @p after, and never behind its end.
    LongWait(std::function<void()> say, std::chrono::milliseconds after);
    ~LongWait();
    LongWait(const LongWait&) = delete;
    LongWait& operator=(const LongWait&) = delete;

    /// Around a call. One thread at a time.
    void begin();
    void end();

private:
    using Clock = std::chrono::steady_clock;
    void watch();

    const std::function<void()> m_say;
    const std::chrono::milliseconds m_after;
    std::mutex m_mutex;
    std::condition_variable m_ended;
    Clock::time_point m_since{};
    bool m_waiting = false; ///< A call is under way that nobody was told of.
    bool m_over = false;
    std::thread m_thread;
};

} // namespace zib
