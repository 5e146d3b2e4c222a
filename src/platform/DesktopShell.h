#pragma once

#include "common/Platform.h"
#include "platform/Detached.h"

#include <functional>

namespace zib {

/// Hands files, folders, addresses and programs to the desktop.
///
/// Folders, documents and addresses go to the desktop's opener. Program names of another platform that
/// windows ask for are looked up in a table of this platform's equivalents. An absolute path of a program is
/// run itself.
class DesktopShell final : public Shell
{
public:
    using Starter = std::function<bool(const QList<Command>&, const QString& folder)>;

    /// @param starter what runs the commands; another one than the usual is for tests.
    explicit DesktopShell(Starter starter = startDetached) : m_start(std::move(starter)) {}
    bool ShellExecuteA(const QString& verb, const QString& file, const QString& parameters = {},
                       const QString& folder = {}) override;

private:
    QList<Command> commandsFor(const QString& file, const QString& parameters) const;

    Starter m_start;
};

} // namespace zib
