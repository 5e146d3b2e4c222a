#pragma once

#include "common/Platform.h"

#include <map>
#include <memory>

namespace zib {

/// Keeps the system awake by the session manager's inhibitor locks (org.freedesktop.login1.Manager.Inhibit of
/// systemd-logind or elogind, on the system bus). Each lock is asked for on a thread of its own, so no window
/// waits for a bus that is slow, and one that hangs is left behind.
class LogindInhibitor final : public Inhibitor
{
public:
    std::shared_ptr<void> hold(const QString& why) override;

private:
    class Lock;

    std::map<QString, std::weak_ptr<Lock>> m_held;
};

} // namespace zib
