#pragma once

#include <QObject>

#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace zib {

/// Questions to files and folders, which may stand in a place that is slow or hangs for ever. They are
/// answered one after the other on a thread, so no window waits for them: an answer that is there within a
/// moment is taken at once, a later one from the event loop. Who cannot go on without asks a Worker.
///
/// Everything but the questions themselves belongs to the thread that made the object. A question owns what
/// it uses (shared pointers, copies), is let go of on the thread, and need not end: what hangs is left
/// behind.
class Errands
{
public:
    /// How long a caller waits for an answer before it goes on without. Short enough for three in a row.
    static constexpr std::chrono::milliseconds kPatience{25};

    Errands();
    /// Forgets everything and waits for nothing.
    ~Errands();
    Q_DISABLE_COPY_MOVE(Errands)

    /// Asks @p question and hands its answer to @p then: before this returns, or later. Answers come in the
    /// order of the questions.
    template <typename Answer>
    void ask(std::function<Answer()> question, std::function<void(const Answer&)> then)
    {
        post(std::make_shared<Question<Answer>>(std::move(question), std::move(then)));
    }
    /// Does @p task after everything asked so far; nobody waits for it.
    void tell(std::function<void()> task);
    /// Nobody wants the answers to what was asked so far; what has not begun is not asked any more.
    void forget();
    /// The same, and a question that is still being answered is left behind on its thread; a new thread takes
    /// the next ones.  @returns whether that was so: what the question uses must then be left to it.
    bool abandon();
    bool isWaiting() const { return !m_pending.empty(); }

    /// For tests: another patience for all errands of the program.
    static void setPatience(std::chrono::milliseconds patience);

private:
    struct Job
    {
        virtual ~Job() = default;
        virtual void answer() = 0;  ///< On the thread.
        virtual void release() = 0; ///< On the thread: lets go of what the question owns.
        virtual void deliver() = 0; ///< On the owner's thread.

        std::atomic<bool> unwanted = false;
        std::atomic<bool> ended = false;
    };

    template <typename Answer>
    struct Question final : Job
    {
        Question(std::function<Answer()> asked, std::function<void(const Answer&)> next)
            : question(std::move(asked)), then(std::move(next))
        {
        }
        void answer() override { given = question(); }
        void release() override { question = nullptr; }
        void deliver() override { then(*given); }

        std::function<Answer()> question;
        std::function<void(const Answer&)> then;
        std::optional<Answer> given;
    };

    struct Task;
    struct Line;

    void begin();
    void leave();
    void post(const std::shared_ptr<Job>& job);
    void deliver();

    std::shared_ptr<Line> m_line; // shared with its thread
    std::deque<std::shared_ptr<Job>> m_pending;
    std::unique_ptr<QObject> m_home;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};

} // namespace zib
