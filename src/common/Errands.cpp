#include "common/Errands.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace zib {

namespace {

std::atomic<std::chrono::milliseconds::rep> patienceMs{Errands::kPatience.count()};

} // namespace

/// The thread's side: what is to be done, in order.
struct Errands::Line
{
    std::mutex mutex;
    std::condition_variable changed;  // for the thread
    std::condition_variable answered; // for the owner
    std::deque<std::shared_ptr<Job>> jobs;
    std::function<void()> ring; // empty once nobody listens
    bool isBusy = false;
    bool closing = false;

    void push(const std::shared_ptr<Job>& job);
    void work();
    static void answer(Job& job);
};

struct Errands::Task final : Job
{
    explicit Task(std::function<void()> asked) : task(std::move(asked)) {}
    void answer() override { task(); }
    void release() override { task = nullptr; }
    void deliver() override {}

    std::function<void()> task;
};

void Errands::Line::push(const std::shared_ptr<Job>& job)
{
    const std::lock_guard lock(mutex);
    jobs.push_back(job);
    changed.notify_all();
}

/// Ends when the owner has left and nothing is to be done; what nobody wants any more is let go of here, too.
void Errands::Line::work()
{
    std::unique_lock lock(mutex);
    for (;;) {
        changed.wait(lock, [this] { return closing || !jobs.empty(); });
        if (jobs.empty())
            return;
        std::shared_ptr<Job> job = std::move(jobs.front());
        jobs.pop_front();
        isBusy = true;
        lock.unlock();
        answer(*job);
        lock.lock();
        isBusy = false;
        job->ended = true;
        job.reset();
        answered.notify_all();
        if (ring)
            ring();
    }
}

void Errands::Line::answer(Job& job)
{
    if (!job.unwanted)
        job.answer();
    job.release();
}

Errands::Errands() : m_home(std::make_unique<QObject>())
{
    begin();
}

Errands::~Errands()
{
    forget();
    leave();
}

void Errands::begin()
{
    m_line = std::make_shared<Line>();
    m_line->ring = [this] {
        QMetaObject::invokeMethod(
            m_home.get(), [this] { deliver(); }, Qt::QueuedConnection);
    };
    std::thread([line = m_line] { line->work(); }).detach();
}

void Errands::leave()
{
    const std::lock_guard lock(m_line->mutex);
    m_line->ring = nullptr;
    m_line->closing = true;
    m_line->changed.notify_all();
}

void Errands::tell(std::function<void()> task)
{
    m_line->push(std::make_shared<Task>(std::move(task)));
}

void Errands::post(const std::shared_ptr<Job>& job)
{
    const bool alone = m_pending.empty();
    m_pending.push_back(job);
    m_line->push(job);
    if (alone) {
        std::unique_lock lock(m_line->mutex);
        m_line->answered.wait_for(lock, std::chrono::milliseconds(patienceMs),
                                  [&job] { return job->ended.load(); });
    }
    deliver();
}

/// A receiver may ask again, forget, or destroy this object.
void Errands::deliver()
{
    const std::weak_ptr<int> alive = m_alive;
    while (!alive.expired() && !m_pending.empty() && m_pending.front()->ended) {
        const std::shared_ptr<Job> job = std::move(m_pending.front());
        m_pending.pop_front();
        job->deliver();
    }
}

void Errands::forget()
{
    for (const auto& job : m_pending)
        job->unwanted = true;
    m_pending.clear();
}

bool Errands::abandon()
{
    forget();
    {
        std::unique_lock lock(m_line->mutex);
        if (m_line->answered.wait_for(lock, std::chrono::milliseconds(patienceMs),
                                      [this] { return !m_line->isBusy && m_line->jobs.empty(); }))
            return false;
    }
    leave();
    begin();
    return true;
}

void Errands::setPatience(std::chrono::milliseconds patience)
{
    patienceMs = patience.count();
}

} // namespace zib
