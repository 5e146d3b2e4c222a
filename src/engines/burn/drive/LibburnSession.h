#pragma once

#include "engines/burn/mmc/SenseTable.h"

#include <QString>

#include <functional>
#include <mutex>
#include <optional>

namespace zib {

/// The right to call libburn, which keeps state for the whole process: one holder at a time. The library is
/// started by the first one and told to queue its messages, print none and leave signals alone.
class LibburnSession
{
public:
    /// Waits for the right.
    LibburnSession();
    /// Waits for it as long as @p goOn says so, which is asked some times a second.
    explicit LibburnSession(const std::function<bool()>& goOn);
    ~LibburnSession();
    Q_DISABLE_COPY_MOVE(LibburnSession)

    explicit operator bool() const { return m_lock.owns_lock(); }
    /// Lets the library close all it holds, and starts it anew. Only while no drive is in its hands.
    void restart();

private:
    std::unique_lock<std::timed_mutex> m_lock;
};

/// What libburn said about failures since the last clear.
class LibburnMessages
{
public:
    /// Takes everything the library has queued. Cheap; called often, since the queue is never bounded.
    void collect();
    void clear();
    /// The sense data of the first real failure; checks that drives answer "not ready" to while they work are
    /// none.
    std::optional<Sense> sense() const { return m_sense; }
    /// What the first failure befell; Other when there was none.
    enum class Step
    {
        Other,
        Layout, ///< The cue sheet.
        Place,  ///< The question where a track that is written by itself is to begin.
        Write,
        Flush, ///< What the drive still held.
        Close  ///< Of the session, which is a command of its own where tracks are written by themselves.
    };
    Step step() const { return m_step; }
    /// The last track before the first failure that was written by itself, or was to be; from 1, 0 when there
    /// was none.
    int track() const { return m_track; }
    /// The address of the write that failed, with Step::Write.
    int address() const { return m_address; }
    /// What the library itself said first about a failure that the drive did not tell of; may be empty.
    QString reason() const { return m_reason; }
    /// Whether anything failed at all.
    bool failed() const { return m_sense || m_transportFailed || m_connectionLost || m_step == Step::Place; }
    /// Whether a command was lost on its way, by whatever fault of the connection.
    bool transportFailed() const { return m_transportFailed; }
    /// Whether the drive has gone away.
    bool connectionLost() const { return m_connectionLost; }

private:
    void take(const QString& message);
    void takeStep(const QString& message);
    void takeNote(const QString& message);

    std::optional<Sense> m_sense;
    std::optional<Sense> m_placeRefusal; ///< Of the last such question.
    Step m_step = Step::Other;
    int m_track = 0;
    int m_address = 0;
    QString m_reason;
    bool m_transportFailed = false;
    bool m_connectionLost = false;
};

} // namespace zib
