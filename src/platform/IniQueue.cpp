#include "platform/IniQueue.h"

#include <algorithm>

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
    for (const auto& job : jobsOf(file))
        if (stateOf(*job) != State::Failed)
            onTheirWay << job->changes;
    return m_disk.readWith(onTheirWay, queries, file);
}

bool IniQueue::WritePrivateProfileStringA(const QByteArray& section, const std::optional<QByteArray>& key,
                                          const std::optional<QByteArray>& value, const QString& file)
{
    return writeAll({{section, key, value}}, file);
}

/// The caller's thread may be left behind here for longer than the queue lives: it uses copies only.
bool IniQueue::writeAll(const QList<IniChange>& changes, const QString& file)
{
    const auto board = m_board;
    IniFile disk = m_disk;
    const auto job = std::make_shared<Job>(Job{changes, file, {}});
    const Jobs before = enter(job);
    const bool free = std::all_of(before.begin(), before.end(),
                                  [&](const auto& earlier) { return board->waitFor(*earlier, kPatience); });
    const bool written = free && disk.writeAll(changes, file);
    const std::lock_guard lock(board->mutex);
    job->state = written ? State::Written : State::Failed;
    std::erase(board->direct, job);
    board->changed.notify_all();
    return written;
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
    if (m_board->waitFor(*job, kAtOnce))
        tellFinished();
}

/// @returns what is on its way just now, and what others write after it.
IniQueue::Jobs IniQueue::jobs() const
{
    const std::scoped_lock lock(m_jobsMutex, m_board->mutex);
    Jobs all = m_jobs;
    all.insert(all.end(), m_board->direct.begin(), m_board->direct.end());
    return all;
}

IniQueue::Jobs IniQueue::jobsOf(const QString& file) const
{
    Jobs found = jobs();
    std::erase_if(found, [&file](const auto& job) { return job->file != file; });
    return found;
}

/// Takes a place behind all others.  @returns those of the same file that it has to wait for.
IniQueue::Jobs IniQueue::enter(const std::shared_ptr<Job>& job)
{
    const std::lock_guard lock(m_entry);
    const Jobs before = jobsOf(job->file);
    const std::lock_guard board(m_board->mutex);
    m_board->direct.push_back(job);
    return before;
}

IniQueue::State IniQueue::stateOf(const Job& job) const
{
    const std::lock_guard lock(m_board->mutex);
    return job.state;
}

bool IniQueue::Board::waitFor(const Job& job, std::chrono::milliseconds patience)
{
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, patience, [&job] { return job.state != State::Waiting; });
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
    m_gaveUp = m_gaveUp || !finishUntil(QDeadlineTimer(kPatience));
}

/// @returns whether all that was on its way has arrived or failed.
bool IniQueue::finishUntil(const QDeadlineTimer& deadline)
{
    const auto waitFor = [&](const Job& job) {
        return m_board->waitFor(job, std::chrono::milliseconds(deadline.remainingTime()));
    };
    for (; !m_jobs.empty(); tellFinished())
        if (!waitFor(*m_jobs.front()))
            return false;
    const Jobs left = jobs();
    return std::all_of(left.begin(), left.end(), [&](const auto& job) { return waitFor(*job); });
}

} // namespace zib
