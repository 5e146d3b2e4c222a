#include "app/Aside.h"

#include "common/Worker.h"

#include <atomic>
#include <memory>
#include <utility>

namespace zib {

namespace {

constexpr std::chrono::milliseconds kTurn{40};
constexpr std::chrono::milliseconds kPatience{20}; ///< With work that is no longer waited for.

} // namespace

bool runAside(std::function<void()> work, const std::function<bool()>& turn)
{
    const auto bell = std::make_shared<Bell>();
    const auto ended = std::make_shared<std::atomic<bool>>(false);
    bool due = false;
    QTimer beat;
    beat.callOnTimeout([&due] { due = true; });
    beat.start(kTurn);
    Worker worker(kPatience);
    worker.post([=, work = std::move(work)] {
        work();
        ended->store(true);
        bell->ring();
    });
    bool wanted = true;
    while (wanted && !ended->load()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        if (std::exchange(due, false))
            wanted = turn();
    }
    bell->close();
    return ended->load();
}

} // namespace zib
