#include "engines/burn/compare/LongWait.h"

#include <utility>

namespace zib {

LongWait::LongWait(std::function<void()> say, std::chrono::milliseconds after)
    : m_say(std::move(say)), m_after(after), m_thread([this] { watch(); })
{
}

LongWait::~LongWait()
{
    {
        const std::lock_guard lock(m_mutex);
        m_over = true;
    }
    m_ended.notify_all();
    m_thread.join();
}

void LongWait::begin()
{
    const std::lock_guard lock(m_mutex);
    m_since = Clock::now();
    m_waiting = true;
}

void LongWait::end()
{
    const std::lock_guard lock(m_mutex);
    m_waiting = false;
}

void LongWait::watch()
{
    constexpr std::chrono::milliseconds kStep{100};
    std::unique_lock lock(m_mutex);
    while (!m_over) {
        m_ended.wait_for(lock, kStep);
        if (!m_waiting || Clock::now() - m_since < m_after)
            continue;
        m_waiting = false;
        m_say();
    }
}

} // namespace zib
