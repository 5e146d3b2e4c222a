#include "fakes/Heartbeat.h"

#include <QFile>

namespace {

/// How long this thread was ready to run and did not: the second number of the scheduler's account, in
/// nanoseconds. Nothing where the system keeps none.
qint64 starvedMs()
{
    QFile account("/proc/thread-self/schedstat");
    return account.open(QIODevice::ReadOnly) ? account.readAll().split(' ').value(1).toLongLong() / 1'000'000
                                             : 0;
}

} // namespace

Heartbeat::Heartbeat() : m_starvedMs(starvedMs())
{
    m_beat.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_beat, &QTimer::timeout, &m_beat, [this] { note(); });
    m_since.start();
    m_beat.start(5);
}

qint64 Heartbeat::longestMs()
{
    note();
    return m_longestMs;
}

void Heartbeat::note()
{
    const qint64 starved = starvedMs();
    m_longestMs = qMax(m_longestMs, m_since.restart() - (starved - m_starvedMs));
    m_starvedMs = starved;
}
