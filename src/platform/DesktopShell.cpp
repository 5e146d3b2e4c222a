#include "platform/DesktopShell.h"

#include "common/NativeName.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <unistd.h>

namespace zib {

namespace {

/// Programs that do one job, best first; the arguments stand in front of the caller's.
struct Equivalent
{
    QString name;
    QStringList arguments{};
};

const QList<Equivalent>& browsers()
{
    static const QList<Equivalent> list{
        {QStringLiteral("x-www-browser")}, {QStringLiteral("firefox-esr")},
        {QStringLiteral("firefox")},       {QStringLiteral("chromium")},
        {QStringLiteral("google-chrome")}, {QStringLiteral("epiphany-browser")},
        {QStringLiteral("falkon")},        {QStringLiteral("konqueror")},
        {QStringLiteral("xdg-open")},
    };
    return list;
}

const QList<Equivalent>& mixers()
{
    static const QList<Equivalent> list{
        {QStringLiteral("pavucontrol")},
        {QStringLiteral("pavucontrol-qt")},
        {QStringLiteral("kmix")},
        {QStringLiteral("gnome-control-center"), {QStringLiteral("sound")}},
        {QStringLiteral("mate-volume-control")},
        {QStringLiteral("xfce4-mixer")},
        {QStringLiteral("qasmixer")},
        {QStringLiteral("gnome-alsamixer")},
    };
    return list;
}

const QList<Equivalent>& helpReaders()
{
    static const QList<Equivalent> list{
        {QStringLiteral("xchm")},
        {QStringLiteral("kchmviewer")},
        {QStringLiteral("uchmviewer")},
        {QStringLiteral("okular")},
    };
    return list;
}

/// The first installed program of a list as a command with these arguments.
QList<Command> firstOf(const QList<Equivalent>& list, const QStringList& arguments)
{
    for (const Equivalent& program : list)
        if (const QString path = firstInstalled({program.name}); !path.isEmpty())
            return {Command{path, program.arguments + arguments}};
    return {};
}

/// The desktop's mixer, or one in a terminal.
QList<Command> volumeControl()
{
    if (const QList<Command> mixer = firstOf(mixers(), {}); !mixer.isEmpty())
        return mixer;
    const QString terminal = firstInstalled({QStringLiteral("x-terminal-emulator"), QStringLiteral("xterm")});
    const QString mixer = firstInstalled({QStringLiteral("alsamixer")});
    if (terminal.isEmpty() || mixer.isEmpty())
        return {};
    return {Command{terminal, {QStringLiteral("-e"), mixer}}};
}

/// Whether a path is a program itself: a file system may call every file executable, so its first bytes
/// count.
bool isProgram(const QString& file)
{
    if (!file.startsWith(u'/') || ::access(nativeName(file).constData(), X_OK) != 0)
        return false;
    QFile content;
    if (!openForReading(content, file))
        return false;
    const QByteArray head = content.read(4);
    return head == "\x7F"
                   "ELF" ||
           head.startsWith("#!");
}

bool isAddress(const QString& file)
{
    return file.startsWith(QStringLiteral("https://")) || file.startsWith(QStringLiteral("http://")) ||
           file.startsWith(QStringLiteral("mailto:"));
}

QString absolute(const QString& file)
{
    return file.startsWith(u'/') ? file : QDir::current().filePath(file);
}

QList<Command> opener(const QString& file)
{
    const QString program = firstInstalled({QStringLiteral("xdg-open")});
    return program.isEmpty() ? QList<Command>{} : QList<Command>{Command{program, {file}}};
}

} // namespace

QList<Command> DesktopShell::commandsFor(const QString& file, const QString& parameters) const
{
    const QStringList words = QProcess::splitCommand(parameters);
    if (file.compare(QStringLiteral("IExplore.exe"), Qt::CaseInsensitive) == 0)
        return firstOf(browsers(), words);
    if (file.compare(QStringLiteral("sndvol32.exe"), Qt::CaseInsensitive) == 0)
        return volumeControl();
    if (isAddress(file))
        return opener(file);
    if (isProgram(file))
        return {Command{file, words}};
    if (!pathExists(file))
        return {};
    const QString path = absolute(file);
    if (path.endsWith(QStringLiteral(".chm"), Qt::CaseInsensitive))
        return opener(path) + firstOf(helpReaders(), {path});
    return opener(path);
}

bool DesktopShell::ShellExecuteA(const QString& verb, const QString& file, const QString& parameters,
                                 const QString& folder)
{
    if (verb == QStringLiteral("explore")) {
        return isFolder(file) && m_start(opener(absolute(file)), folder);
    }
    if (verb != QStringLiteral("open"))
        return false;
    const QList<Command> commands = commandsFor(file, parameters);
    return !commands.isEmpty() && m_start(commands, folder);
}

} // namespace zib
