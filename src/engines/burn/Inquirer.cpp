#include "engines/burn/Inquirer.h"

#include "engines/burn/WriteEvents.h"

#include <QTimer>

#include <utility>

namespace zib {

Inquirer::Inquirer(QObject* owner) : m_owner(owner)
{
    replaceWorker();
}

Inquirer::~Inquirer()
{
    abandon();
}

void Inquirer::replaceWorker()
{
    m_worker = std::make_unique<Worker>(std::chrono::milliseconds(0));
}

std::optional<Medium> Inquirer::inspect(const std::shared_ptr<Recorder>& asked,
                                        const std::function<void(const QString&)>& waiting)
{
    constexpr int kTellingMs = 50;
    const auto words = std::make_shared<WriteEvents>();
    const auto given = std::make_shared<std::atomic<bool>>(false);
    QTimer telling;
    QObject::connect(&telling, &QTimer::timeout, m_owner, [words, waiting] {
        while (const auto event = words->take())
            waiting(event->name);
    });
    telling.start(kTellingMs);
    auto answer = ask<Medium>([asked, words, given] {
        const auto tell = [words](const QString& what) {
            words->push({.kind = WriteEvent::Kind::Waiting, .name = what});
        };
        const auto found = asked->inspect({tell, given.get()});
        return found ? *found : Medium{.status = DVDWriterPro::kBlankDisc};
    });
    given->store(true); // a question that was given up need not go on
    return answer;
}

void Inquirer::abandon()
{
    if (m_abandoned)
        m_abandoned->store(true);
}

void Inquirer::post(std::function<void()> task)
{
    m_worker->post(std::move(task));
}

} // namespace zib
