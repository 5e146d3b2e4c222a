#pragma once

#include <QCoreApplication>
#include <QEventLoop>
#include <QObject>
#include <QPointer>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace zib {

/// Wakes the event loop of the thread that made it. Rung after it was closed, it does nothing.
class Bell
{
public:
    Bell();
    ~Bell();
    Q_DISABLE_COPY_MOVE(Bell)

    /// Any thread.
    void ring();
    /// On the thread that made it, before it goes.
    void close();

private:
    std::mutex m_mutex;
    std::unique_ptr<QObject> m_sleeper;
};

/// One thread that does one thing after the other. What hangs in it beyond all bounds is left behind rather
/// than waited for, so tasks own everything they touch (shared pointers, copies).
class Worker
{
public:
    Worker();
    /// Drops what has not begun and waits at most kPatience for what has.
    ~Worker();
    Q_DISABLE_COPY_MOVE(Worker)

    /// How long the destructor waits for a task that is running.
    static constexpr std::chrono::seconds kPatience{15};

    void post(std::function<void()> task);

    /// Runs @p question on the thread and returns its answer. Meanwhile the caller's events go on, without
    /// the user's input. Nothing when @p owner was destroyed by one of them.
    template <typename Answer>
    std::optional<Answer> ask(QObject* owner, std::function<Answer()> question)
    {
        const auto answer = std::make_shared<std::optional<Answer>>();
        const auto done = std::make_shared<std::atomic<bool>>(false);
        const auto bell = std::make_shared<Bell>();
        const QPointer<QObject> guard(owner);
        post([=] {
            *answer = question();
            done->store(true);
            bell->ring();
        });
        while (guard && !done->load())
            QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents |
                                            QEventLoop::WaitForMoreEvents);
        bell->close();
        if (!guard || !done->load())
            return std::nullopt;
        return std::move(*answer);
    }

private:
    struct Queue;
    std::shared_ptr<Queue> m_queue;
};

} // namespace zib
