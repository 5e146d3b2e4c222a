#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QObject>
#include <QPointer>
#include <QTimer>

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

/// One thread that does one thing after the other, for engines and for windows that take no input meanwhile.
/// What hangs in it is left behind in the end, so tasks own everything they touch (shared pointers, copies).
class Worker
{
public:
    /// How long the destructor waits for a task that is running, if nobody says otherwise.
    static constexpr std::chrono::seconds kPatience{15};

    explicit Worker(std::chrono::milliseconds patience = kPatience);
    /// Drops what has not begun and waits at most its patience for what has.
    ~Worker();
    Q_DISABLE_COPY_MOVE(Worker)

    void post(std::function<void()> task);

    /// Runs @p question on the thread and returns its answer. Meanwhile the caller's events go on, without
    /// the user's input. Nothing when @p owner was destroyed by one of them, or when @p patience is over.
    template <typename Answer>
    std::optional<Answer> ask(QObject* owner, std::function<Answer()> question,
                              std::chrono::milliseconds patience = std::chrono::milliseconds::max())
    {
        return askWhile<Answer>(owner, std::move(question), patience, QEventLoop::ExcludeUserInputEvents,
                                [] { return true; });
    }

    /// The same with the user's input, until one of the events makes @p goOn false: then nothing is returned,
    /// and the question is left to itself.
    template <typename Answer>
    std::optional<Answer> askOpenly(QObject* owner, std::function<Answer()> question,
                                    const std::function<bool()>& goOn)
    {
        return askWhile<Answer>(owner, std::move(question), std::chrono::milliseconds::max(),
                                QEventLoop::AllEvents, goOn);
    }

private:
    template <typename Answer>
    std::optional<Answer> askWhile(QObject* owner, std::function<Answer()> question,
                                   std::chrono::milliseconds patience, QEventLoop::ProcessEventsFlags events,
                                   const std::function<bool()>& goOn)
    {
        const QDeadlineTimer deadline(patience);
        const auto answer = std::make_shared<std::optional<Answer>>();
        const auto done = std::make_shared<std::atomic<bool>>(false);
        const auto bell = std::make_shared<Bell>();
        const QPointer<QObject> guard(owner);
        post([=] {
            *answer = question();
            done->store(true);
            bell->ring();
        });
        if (!deadline.isForever())
            QTimer::singleShot(patience, owner, [bell] { bell->ring(); });
        while (guard && !done->load() && !deadline.hasExpired() && goOn())
            QCoreApplication::processEvents(events | QEventLoop::WaitForMoreEvents);
        bell->close();
        if (!guard || !done->load())
            return std::nullopt;
        return std::move(*answer);
    }

    struct Queue;
    std::shared_ptr<Queue> m_queue;
    std::chrono::milliseconds m_patience;
};

} // namespace zib
