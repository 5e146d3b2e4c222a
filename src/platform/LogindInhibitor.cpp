#include "platform/LogindInhibitor.h"

#include "common/Texts.h"

#include <dbus/dbus.h>

#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include <unistd.h>

namespace zib {

namespace {

struct Unref
{
    void operator()(DBusMessage* message) const { dbus_message_unref(message); }
    void operator()(DBusConnection* bus) const
    {
        dbus_connection_close(bus);
        dbus_connection_unref(bus);
    }
};
using Message = std::unique_ptr<DBusMessage, Unref>;
using Bus = std::unique_ptr<DBusConnection, Unref>;

/// A connection of our own: what the toolkit has on the bus is not touched.
Bus systemBus()
{
    dbus_threads_init_default();
    dbus_connection_set_change_sigpipe(FALSE);
    Bus bus(dbus_bus_get_private(DBUS_BUS_SYSTEM, nullptr));
    if (bus)
        dbus_connection_set_exit_on_disconnect(bus.get(), FALSE);
    return bus;
}

Message inhibitCall(const QByteArray& why)
{
    Message call(dbus_message_new_method_call("org.freedesktop.login1", "/org/freedesktop/login1",
                                              "org.freedesktop.login1.Manager", "Inhibit"));
    const QByteArray who = kApplicationTitle.toUtf8();
    const char* const what = "sleep:shutdown";
    const char* const name = who.constData();
    const char* const reason = why.constData();
    const char* const mode = "block";
    if (call &&
        !dbus_message_append_args(call.get(), DBUS_TYPE_STRING, &what, DBUS_TYPE_STRING, &name,
                                  DBUS_TYPE_STRING, &reason, DBUS_TYPE_STRING, &mode, DBUS_TYPE_INVALID))
        call.reset();
    return call;
}

/// @returns the descriptor that is the lock while it is open, or -1 where there is none to be had.
int inhibited(const QByteArray& why)
{
    const Bus bus = systemBus();
    const Message call = inhibitCall(why);
    if (!bus || !call)
        return -1;
    const Message answer(
        dbus_connection_send_with_reply_and_block(bus.get(), call.get(), DBUS_TIMEOUT_USE_DEFAULT, nullptr));
    int lock = -1;
    if (answer)
        dbus_message_get_args(answer.get(), nullptr, DBUS_TYPE_UNIX_FD, &lock, DBUS_TYPE_INVALID);
    return lock;
}

} // namespace

/// A lock that may have been let go of before it was granted.
class LogindInhibitor::Lock
{
public:
    void take(int lock)
    {
        const std::lock_guard guard(m_mutex);
        m_lock = lock;
        if (m_over)
            close();
    }
    void end()
    {
        const std::lock_guard guard(m_mutex);
        m_over = true;
        close();
    }

private:
    void close()
    {
        if (m_lock >= 0)
            ::close(std::exchange(m_lock, -1));
    }

    std::mutex m_mutex;
    int m_lock = -1;
    bool m_over = false;
};

std::shared_ptr<void> LogindInhibitor::hold(const QString& why)
{
    std::weak_ptr<Lock>& held = m_held[why];
    if (auto already = held.lock())
        return already;
    const auto lock = std::make_shared<Lock>();
    try {
        std::thread([lock, reason = why.toUtf8()] { lock->take(inhibited(reason)); }).detach();
    } catch (const std::system_error&) {
        return nullptr; // a system without a thread to spare has other troubles
    }
    // The thread keeps the lock itself; what the caller keeps ends it.
    const std::shared_ptr<Lock> hold(lock.get(), [lock](Lock* ended) { ended->end(); });
    held = hold;
    return hold;
}

} // namespace zib
