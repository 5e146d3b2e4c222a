#include "platform/Detached.h"

#include "common/NativeName.h"

#include <QStandardPaths>

#include <cerrno>
#include <csignal>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zib {

namespace {

/// A command as exec takes it. Made before the fork, for behind it nothing may allocate.
class ExecCommand
{
public:
    explicit ExecCommand(const Command& command) : m_words{nativeName(command.program)}
    {
        for (const QString& argument : command.arguments)
            m_words << nativeBytes(argument);
        for (QByteArray& word : m_words)
            m_pointers.push_back(word.data());
        m_pointers.push_back(nullptr);
    }
    [[noreturn]] void run() const
    {
        ::execv(m_pointers[0], m_pointers.data());
        ::_exit(127);
    }

private:
    QList<QByteArray> m_words;
    std::vector<char*> m_pointers;
};

void forgetOurProcess(const char* folder)
{
    ::setsid();
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::signal(SIGPIPE, SIG_DFL);
    ::signal(SIGCHLD, SIG_DFL);
    const int nothing = ::open("/dev/null", O_RDWR);
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd)
        ::dup2(nothing, fd);
    ::close_range(STDERR_FILENO + 1, ~0U, 0);
    if (folder[0] != 0 && ::chdir(folder) != 0)
        ::_exit(126);
}

/// Runs the commands in turn until one succeeds; the last one takes over this process.
[[noreturn]] void runInTurn(const std::vector<ExecCommand>& commands)
{
    for (size_t i = 0; i + 1 < commands.size(); ++i) {
        const pid_t child = ::fork();
        if (child == 0)
            commands[i].run();
        int status = 0;
        while (child > 0 && ::waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
        if (child > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0)
            ::_exit(0);
    }
    commands.back().run();
}

} // namespace

bool startDetached(const QList<Command>& commands, const QString& folder)
{
    if (commands.isEmpty())
        return false;
    const std::vector<ExecCommand> list(commands.begin(), commands.end());
    const QByteArray where = nativeName(folder);
    const pid_t middle = ::fork();
    if (middle < 0)
        return false;
    if (middle == 0) {
        forgetOurProcess(where.constData());
        const pid_t child = ::fork();
        if (child == 0)
            runInTurn(list);
        ::_exit(child > 0 ? 0 : 1);
    }
    int status = 0;
    while (::waitpid(middle, &status, 0) < 0)
        if (errno != EINTR)
            return false;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

QString firstInstalled(const QStringList& names)
{
    for (const QString& name : names)
        if (const QString path = QStandardPaths::findExecutable(name); !path.isEmpty())
            return path;
    return {};
}

} // namespace zib
