#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <atomic>
#include <thread>

namespace zib {

/// Plays a user who moves the mouse over the window in front all the time, and measures how long the program
/// took at most to notice: user input only, so a window that serves its timers but holds input back counts as
/// frozen. Beside it a thread that only sleeps tells how long the machine itself kept everybody waiting.
class Pulse final : public QObject
{
    Q_OBJECT
public:
    explicit Pulse(QObject* parent = nullptr);
    ~Pulse() override;

    /// Longest time without an answer, in milliseconds, since the last reset.
    [[nodiscard]] qint64 longestFreezeMs() const { return m_longest; }
    /// Longest oversleeping of the thread in the same time.
    [[nodiscard]] qint64 longestStarvationMs() const { return m_starvation; }
    void reset();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void beat();
    void oversleep();

    QTimer m_timer;
    QElapsedTimer m_sinceAnswer;
    qint64 m_longest = 0;
    int m_side = 0;
    std::atomic<qint64> m_starvation{0};
    std::atomic<bool> m_ends{false};
    std::thread m_sleeper;
};

} // namespace zib
