#pragma once

#include "common/Worker.h"
#include "engines/burn/Recorder.h"

#include <QObject>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace zib {

/// Puts questions to drives on a thread of its own while the owner's events go on. A question that is given
/// up is left to itself with its thread; the next one gets another. The owner's thread only.
class Inquirer
{
public:
    /// @param owner holds this; when it is destroyed, what is being asked is given up.
    explicit Inquirer(QObject* owner);
    ~Inquirer();
    Q_DISABLE_COPY_MOVE(Inquirer)

    /// @returns nothing when the question was abandoned, or the owner destroyed: then this is gone, too.
    template <typename Answer>
    std::optional<Answer> ask(std::function<Answer()> question)
    {
        const QPointer<QObject> owner(m_owner);
        const auto abandoned = std::make_shared<std::atomic<bool>>(false);
        m_abandoned = abandoned;
        std::optional<Answer> answer = m_worker->askOpenly<Answer>(
            m_owner, std::move(question), [abandoned] { return !abandoned->load(); });
        if (!owner)
            return std::nullopt;
        m_abandoned.reset();
        if (!answer)
            replaceWorker();
        return answer;
    }
    /// Looks at the disc in @p asked; one that cannot be asked looks blank and without speeds.
    /// @param waiting is told what the drive says meanwhile.
    /// @returns as ask().
    std::optional<Medium> inspect(const std::shared_ptr<Recorder>& asked,
                                  const std::function<void(const QString& what)>& waiting);
    /// Gives up the question under way, if there is one.
    void abandon();
    /// Has something done behind the questions that nobody waits for.
    void post(std::function<void()> task);

private:
    void replaceWorker();

    QObject* m_owner;
    /// Set when a question is given up; it belongs to that question alone.
    std::shared_ptr<std::atomic<bool>> m_abandoned;
    std::unique_ptr<Worker> m_worker;
};

} // namespace zib
