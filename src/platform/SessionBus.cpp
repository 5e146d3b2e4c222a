#include "platform/SessionBus.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QDeadlineTimer>
#include <QStandardPaths>
#include <QThread>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <optional>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace zib {

namespace {

constexpr const char* kVariable = "DBUS_SESSION_BUS_ADDRESS";
constexpr const char* kNowhere = "unix:path=/dev/null"; // Nobody listens there, which is told at once.
constexpr char kQuestion[] =
    "\0AUTH\r\n"; // Which ways are there to prove who one is? (D-Bus, authentication)
constexpr unsigned kPauseMs = 20;

/// A socket of this system, as the addresses of message buses name it.
struct Place
{
    sockaddr_un name{};
    socklen_t size = 0;
};

/// The desktop's addresses, in the order in which they are tried.
QByteArrayList addresses()
{
    const QByteArray told = qgetenv(kVariable);
    if (told.isEmpty())
        return {"unix:path=" + qgetenv("XDG_RUNTIME_DIR") + "/bus"};
    return told.split(';');
}

/// @returns nothing for an address of another kind.
std::optional<Place> placeOf(const QByteArray& address)
{
    for (const QByteArray& part : address.sliced(address.indexOf(':') + 1).split(',')) {
        const bool isAbstract = part.startsWith("abstract=");
        if (!address.startsWith("unix:") || !(isAbstract || part.startsWith("path=")))
            continue;
        const QByteArray path = QByteArray::fromPercentEncoding(part.sliced(part.indexOf('=') + 1));
        Place place;
        char* const name = place.name.sun_path + (isAbstract ? 1 : 0);
        if (path.isEmpty() || name + path.size() >= place.name.sun_path + sizeof place.name.sun_path)
            return std::nullopt;
        place.name.sun_family = AF_UNIX;
        std::memcpy(name, path.constData(), static_cast<size_t>(path.size()));
        place.size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + (isAbstract ? 1 : 0)) +
                     static_cast<socklen_t>(path.size());
        return place;
    }
    return std::nullopt;
}

enum class BusState
{
    Missing, ///< Or it cannot be reached from here.
    Answering,
    Mute
};

/// @returns 0, or the number of the error. A bus that takes nobody in any more is tried again until @p
/// latest.
int connectTo(int socket, const Place& place, const QDeadlineTimer& latest)
{
    while (::connect(socket, reinterpret_cast<const sockaddr*>(&place.name), place.size) != 0) {
        if ((errno != EAGAIN && errno != EINTR) || latest.hasExpired())
            return errno;
        QThread::msleep(kPauseMs);
    }
    return 0;
}

/// Whether the bus library could start a bus where there is none, as it would try.
bool canBeStarted()
{
    return !QStandardPaths::findExecutable(QStringLiteral("dbus-launch")).isEmpty();
}

/// One that hangs up has answered.
bool answers(int socket, const QDeadlineTimer& latest)
{
    if (::send(socket, kQuestion, sizeof kQuestion - 1, MSG_NOSIGNAL) < 0)
        return true;
    pollfd line{.fd = socket, .events = POLLIN, .revents = 0};
    int ready = 0;
    do
        ready = ::poll(&line, 1, static_cast<int>(latest.remainingTime()));
    while (ready < 0 && errno == EINTR);
    return ready != 0;
}

BusState look(const Place& place, std::chrono::milliseconds patience)
{
    const QDeadlineTimer latest(patience);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (socket < 0)
        return BusState::Missing;
    const int error = connectTo(socket, place, latest);
    BusState bus = error == EAGAIN ? BusState::Mute : BusState::Missing;
    if (error == 0)
        bus = answers(socket, latest) ? BusState::Answering : BusState::Mute;
    ::close(socket);
    return bus;
}

} // namespace

void leaveMuteSessionBus(std::chrono::milliseconds patience)
{
    for (const QByteArray& address : addresses()) {
        const auto place = placeOf(address);
        const BusState bus = place ? look(*place, patience) : BusState::Answering;
        if (bus == BusState::Mute)
            qputenv(kVariable, kNowhere);
        if (bus != BusState::Missing)
            return;
    }
    if (qEnvironmentVariableIsEmpty(kVariable) && !canBeStarted())
        qputenv(kVariable, kNowhere);
}

} // namespace zib
