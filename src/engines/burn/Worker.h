#pragma once

#include <QCoreApplication>
#include <QEventLoop>
#include <QObject>
#include <QPointer>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace zib {

/// A way back to an object's thread that stays safe when the object is gone: what is posted then is dropped.
/// Any thread.
class Mailbox
{
public:
    explicit Mailbox(QObject* owner);
    ~Mailbox();
    Q_DISABLE_COPY_MOVE(Mailbox)

    void post(std::function<void()> message);
    /// The owner leaves; called on its thread.
    void close();

private:
    struct Gate;
    std::shared_ptr<Gate> m_gate;
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
        QObject sleeper;
        const auto waker = std::make_shared<Mailbox>(&sleeper);
        const QPointer<QObject> guard(owner);
        post([=] {
            *answer = question();
            done->store(true);
            waker->post([] {});
        });
        while (guard && !done->load())
            QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents |
                                            QEventLoop::WaitForMoreEvents);
        waker->close();
        if (!guard || !done->load())
            return std::nullopt;
        return std::move(*answer);
    }

private:
    struct Queue;
    std::shared_ptr<Queue> m_queue;
};

} // namespace zib
