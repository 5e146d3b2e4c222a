#include "platform/QuitSignals.h"

#include <array>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace zib {

namespace {

constexpr std::array kSignals{SIGTERM, SIGINT, SIGHUP};
/// Where the handler writes and the event loop reads.
std::array<int, 2> g_pipe{-1, -1};

void note(int)
{
    const char any = 0;
    [[maybe_unused]] const ssize_t written = ::write(g_pipe[1], &any, 1);
}

} // namespace

QuitSignals::QuitSignals()
{
    if (::pipe2(g_pipe.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    m_notifier = std::make_unique<QSocketNotifier>(g_pipe[0], QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &QuitSignals::take);
    for (const int number : kSignals)
        std::signal(number, note);
}

QuitSignals::~QuitSignals()
{
    for (const int number : kSignals)
        std::signal(number, SIG_DFL);
    m_notifier.reset();
    for (int& end : g_pipe) {
        ::close(end);
        end = -1;
    }
}

void QuitSignals::take()
{
    std::array<char, 16> any{};
    while (::read(g_pipe[0], any.data(), any.size()) > 0) {
    }
    emit raised();
}

} // namespace zib
