#pragma once

#include <QtGlobal>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

namespace zib {

/// Hands values from one thread to another; the giver waits while it is full.
template <typename T>
class BoundedQueue
{
public:
    explicit BoundedQueue(size_t capacity) : m_capacity(capacity) {}

    /// Appends @p value, waiting for room.  @returns false, and drops it, once the queue is closed.
    bool push(T value)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_closed || m_values.size() < m_capacity; });
        if (m_closed)
            return false;
        m_values.push_back(std::move(value));
        m_changed.notify_all();
        return true;
    }

    /// Takes the oldest value into @p value, waiting for one.  @returns false once the queue is closed and
    /// empty.
    bool pop(T& value)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_closed || !m_values.empty(); });
        if (m_values.empty())
            return false;
        value = std::move(m_values.front());
        m_values.pop_front();
        m_changed.notify_all();
        return true;
    }

    /// Takes no more values; those inside can still be taken.
    void close()
    {
        const std::lock_guard lock(m_mutex);
        m_closed = true;
        m_changed.notify_all();
    }

    /// Takes no more values and forgets those inside.
    void abandon()
    {
        const std::lock_guard lock(m_mutex);
        m_closed = true;
        m_values.clear();
        m_changed.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<T> m_values;
    size_t m_capacity;
    bool m_closed = false;
};

} // namespace zib
