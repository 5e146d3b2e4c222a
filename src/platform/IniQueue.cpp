#include "platform/IniQueue.h"

namespace zib {

namespace {

/// A disk that answers within this time counts as one that answers at once; nobody feels the wait.
constexpr std::chrono::milliseconds kAtOnce{60};
/// Longer than any busy disk takes; a dead one shall not keep the program for ever.
constexpr std::chrono::minutes kPatience{2};

} // namespace

IniQueue::IniQueue(IniFile& disk) : m_disk(disk)
{
    m_board->desk = &m_desk;
}

IniQueue::~IniQueue()
{
    finish();
    const std::lock_guard lock(m_board->mutex);
    m_board->desk = nullptr;
}

QByteArray IniQueue::GetPrivateProfileStringA(const QByteArray& section, const QByteArray& key,
                                              const QByteArray& fallback, int size, const QString& file)
{
    return readAll({{section, key, fallback, size}}, file).first();
}

QList<QByteArray> IniQueue::readAll(const QList<IniQuery>& queries, const QString& file)
{
    QList<QList<IniChange>> onTheirWay;
    for (const auto& job : jobs())
        if (job->file == file && stateOf(*job) != State::Failed)
            onTheirWay << job->changes;
    return m_disk.readWith(onTheirWay, queries, file);
}

bool IniQueue::WritePrivateProfileStringA(const QByteArray& section, const std::optional<QByteArray>& key,
                                          const std::optional<QByteArray>& value, const QString& file)
{
    return writeAll({{section, key, value}}, file);
}

bool IniQueue::writeAll(const QList<IniChange>& changes, const QString& file)
{
    for (const auto& job : jobs())
        waitFor(*job, kPatience);
    return m_disk.writeAll(changes, file);
}

void IniQueue::writeLater(const QList<IniChange>& changes, const QString& file,
                          const std::function<void(bool)>& done)
{
    const auto job = std::make_shared<Job>(Job{changes, file, done});
    {
        const std::lock_guard lock(m_jobsMutex);
        m_jobs.push_back(job);
    }
    m_thread.post([this, job, board = m_board, disk = m_disk]() mutable {
        const bool written = disk.writeAll(job->changes, job->file);
        const std::lock_guard lock(board->mutex);
        job->state = written ? State::Written : State::Failed;
        board->changed.notify_all();
        if (board->desk)
            QMetaObject::invokeMethod(
                board->desk, [this] { tellFinished(); }, Qt::QueuedConnection);
    });
    if (waitFor(*job, kAtOnce))
        tellFinished();
}

/// @returns what is on its way just now.
IniQueue::Jobs IniQueue::jobs() const
{
    const std::lock_guard lock(m_jobsMutex);
    return m_jobs;
}

IniQueue::State IniQueue::stateOf(const Job& job) const
{
    const std::lock_guard lock(m_board->mutex);
    return job.state;
}

bool IniQueue::waitFor(const Job& job, std::chrono::milliseconds patience) const
{
    std::unique_lock lock(m_board->mutex);
    return m_board->changed.wait_for(lock, patience, [&job] { return job.state != State::Waiting; });
}

/// Those who wait may write again, or close a window: each job leaves the queue before it is told.
void IniQueue::tellFinished()
{
    while (!m_jobs.empty() && stateOf(*m_jobs.front()) != State::Waiting) {
        const auto job = m_jobs.front();
        {
            const std::lock_guard lock(m_jobsMutex);
            m_jobs.pop_front();
        }
        if (job->done)
            job->done(job->state == State::Written);
    }
}

void IniQueue::finish()
{
    while (!m_jobs.empty() && waitFor(*m_jobs.front(), kPatience))
        tellFinished();
}

} // namespace zib
