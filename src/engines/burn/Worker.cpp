#include "engines/burn/Worker.h"

#include <QMetaObject>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace zib {

struct Mailbox::Gate
{
    std::mutex mutex;
    QObject* owner = nullptr;
};

Mailbox::Mailbox(QObject* owner) : m_gate(std::make_shared<Gate>())
{
    m_gate->owner = owner;
}

Mailbox::~Mailbox() = default;

void Mailbox::post(std::function<void()> message)
{
    const std::lock_guard lock(m_gate->mutex);
    if (m_gate->owner)
        QMetaObject::invokeMethod(m_gate->owner, std::move(message), Qt::QueuedConnection);
}

void Mailbox::close()
{
    const std::lock_guard lock(m_gate->mutex);
    m_gate->owner = nullptr;
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

Worker::Worker() : m_queue(std::make_shared<Queue>())
{
    std::thread([queue = m_queue] { queue->run(); }).detach();
}

Worker::~Worker()
{
    std::unique_lock lock(m_queue->mutex);
    m_queue->closing = true;
    m_queue->tasks.clear();
    m_queue->changed.notify_all();
    m_queue->changed.wait_for(lock, kPatience, [this] { return m_queue->ended; });
}

void Worker::post(std::function<void()> task)
{
    const std::lock_guard lock(m_queue->mutex);
    m_queue->tasks.push_back(std::move(task));
    m_queue->changed.notify_all();
}

} // namespace zib
