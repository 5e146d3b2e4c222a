#include "engines/burn/drive/LibraryThread.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QThread>

#include <array>
#include <atomic>

#include <pthread.h>

namespace zib {

namespace {

constexpr size_t kNameBytes = 16; ///< Of a thread on Linux, with the ending zero.
const QString kTasks = QStringLiteral("/proc/self/task");

QByteArray nameOf(const QString& task)
{
    QFile file(task + QStringLiteral("/comm"));
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
}

/// The thread named so that was started first, by its folder. It may have started others.
QString taskNamed(const QByteArray& name)
{
    qlonglong first = 0;
    const QStringList all = QDir(kTasks).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& number : all)
        if (nameOf(kTasks + u'/' + number) == name && (first == 0 || number.toLongLong() < first))
            first = number.toLongLong();
    return first == 0 ? QString() : kTasks + u'/' + QString::number(first);
}

} // namespace

void LibraryThread::start(const std::function<void()>& begin)
{
    static std::atomic<unsigned> count = 0;
    m_name = "burn-" + QByteArray::number(++count);
    std::array<char, kNameBytes> own{};
    ::pthread_getname_np(::pthread_self(), own.data(), own.size());
    ::pthread_setname_np(::pthread_self(), m_name.constData());
    begin();
    ::pthread_setname_np(::pthread_self(), own.data());
    m_task = taskNamed(m_name);
}

bool LibraryThread::isRunning() const
{
    return !m_task.isEmpty() && nameOf(m_task) == m_name;
}

bool LibraryThread::endsWithin(int patienceMs) const
{
    constexpr unsigned long kPollMs = 10;
    const QDeadlineTimer deadline(patienceMs);
    while (isRunning() && !deadline.hasExpired())
        QThread::msleep(kPollMs);
    return !isRunning();
}

} // namespace zib
