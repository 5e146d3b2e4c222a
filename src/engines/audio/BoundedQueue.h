#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

namespace zib {

/// Hands values from one thread to one other; the giver waits while it is full, and is woken when half of
/// them are taken: threads that wake each other for every value spend their time on that.
template <typename T>
class BoundedQueue
{
public:
    explicit BoundedQueue(size_t capacity) : m_capacity(capacity) {}

    /// Appends @p value, waiting for room.  @returns false, and drops it, once the queue is closed.
    bool push(T value)
    {
        std::unique_lock lock(m_mutex);
        if (m_values.size() >= m_capacity)
            m_drained.wait(lock, [this] { return m_closed || m_values.size() <= m_capacity / 2; });
        if (m_closed)
            return false;
        m_values.push_back(std::move(value));
        m_filled.notify_one();
        return true;
    }

    /// Takes the oldest value into @p value, waiting for one.  @returns false once the queue is closed and
    /// empty.
    bool pop(T& value)
    {
        std::unique_lock lock(m_mutex);
        m_filled.wait(lock, [this] { return m_closed || !m_values.empty(); });
        if (m_values.empty())
            return false;
        value = std::move(m_values.front());
        m_values.pop_front();
        if (m_values.size() <= m_capacity / 2)
            m_drained.notify_one();
        return true;
    }

    /// Takes no more values; those inside can still be taken.
    void close()
    {
        const std::lock_guard lock(m_mutex);
        end();
    }

    /// Takes no more values and forgets those inside.
    void abandon()
    {
        const std::lock_guard lock(m_mutex);
        m_values.clear();
        end();
    }

private:
    void end()
    {
        m_closed = true;
        m_filled.notify_all();
        m_drained.notify_all();
    }

    std::mutex m_mutex;
    std::condition_variable m_filled;
    std::condition_variable m_drained;
    std::deque<T> m_values;
    size_t m_capacity;
    bool m_closed = false;
};

} // namespace zib
