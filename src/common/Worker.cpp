#include "common/Worker.h"

#include <QEvent>

#include <condition_variable>
#include <deque>
#include <thread>
#include <utility>

namespace zib {

Bell::Bell() : m_sleeper(std::make_unique<QObject>()) {}

Bell::~Bell() = default;

void Bell::ring()
{
    const std::lock_guard lock(m_mutex);
    if (m_sleeper)
        QCoreApplication::postEvent(m_sleeper.get(), new QEvent(QEvent::User));
}

void Bell::close()
{
    const std::lock_guard lock(m_mutex);
    m_sleeper.reset();
}

struct Worker::Queue
{
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> tasks;
    bool closing = false;
    bool ended = false;

    void run();
};

void Worker::Queue::run()
{
    std::unique_lock lock(mutex);
    while (!closing) {
        if (tasks.empty()) {
            changed.wait(lock);
            continue;
        }
        std::function<void()> task = std::move(tasks.front());
        tasks.pop_front();
        lock.unlock();
        task();
        task = nullptr;
        lock.lock();
    }
    ended = true;
    changed.notify_all();
}

Worker::Worker(std::chrono::milliseconds patience) : m_queue(std::make_shared<Queue>()), m_patience(patience)
{
    std::thread([queue = m_queue] { queue->run(); }).detach();
}

Worker::~Worker()
{
    std::deque<std::function<void()>> dropped; // destroyed without the lock
    std::unique_lock lock(m_queue->mutex);
    m_queue->closing = true;
    dropped.swap(m_queue->tasks);
    m_queue->changed.notify_all();
    m_queue->changed.wait_for(lock, m_patience, [this] { return m_queue->ended; });
}

void Worker::post(std::function<void()> task)
{
    const std::lock_guard lock(m_queue->mutex);
    m_queue->tasks.push_back(std::move(task));
    m_queue->changed.notify_all();
}

} // namespace zib
