#pragma once

#include <QElapsedTimer>
#include <QTimer>

/// Beats in the event loop of the thread that makes it; what holds it up is the freeze that a user would see.
/// The time in which a busy machine gave the thread no processor does not count: it is none of the program's.
class Heartbeat
{
public:
    Heartbeat();
    /// The longest time between two beats so far, and since the last one.
    qint64 longestMs();

private:
    void note();

    QTimer m_beat;
    QElapsedTimer m_since;
    qint64 m_starvedMs = 0;
    qint64 m_longestMs = 0;
};
