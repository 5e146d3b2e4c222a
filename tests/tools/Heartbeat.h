#pragma once

#include <QElapsedTimer>
#include <QTimer>

/// Beats in the event loop; what holds it up is the freeze that a user would see.
class Heartbeat
{
public:
    Heartbeat()
    {
        QObject::connect(&m_beat, &QTimer::timeout, &m_beat,
                         [this] { m_longest = qMax(m_longest, m_since.restart()); });
        m_since.start();
        m_beat.start(5);
    }
    qint64 longestMs() const { return qMax(m_longest, m_since.elapsed()); }

private:
    QTimer m_beat;
    QElapsedTimer m_since;
    qint64 m_longest = 0;
};
