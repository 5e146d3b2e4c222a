#include "platform/DesktopShell.h"
#include "platform/SystemRegistry.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSaveFile>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

/// What the shell starts for what it is asked to open, how it starts it, and the registry's answers.
class TestShell : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void open_ofAThing_startsItsProgram_data();
    void open_ofAThing_startsItsProgram();
    void open_ofABrowser_takesTheFirstInstalled();
    void open_ofTheVolumeControl_takesTheFirstInstalled();
    void open_ofHelp_fallsBackToAReader();
    void open_ofADataFileMarkedExecutable_doesNotRunIt();
    void open_ofAnUnknownVerb_startsNothing();
    void start_ofAProgram_isDetachedAndInheritsNothing();
    void start_ofAProgram_passesArgumentsAsTheyAre();
    void start_ofSeveral_goesOnAfterAFailureOnly();
    void start_ofAMissingProgram_doesNotDisturb();
    void start_never_leavesAChildBehind();
    void registry_ofATable_answersByTheRules_data();
    void registry_ofATable_answersByTheRules();
    void registry_ofThisSystem_leadsToTheFirstInstalledTool();

private:
    QString program(const QString& name, const QByteArray& content = "#!/bin/sh\n");
    QString file(const QString& name, const QByteArray& content = "x");
    QStringList started(const QString& verb, const QString& thing, const QString& parameters = {});

    std::unique_ptr<QTemporaryDir> m_folder;
    QByteArray m_path;
};

namespace {

/// What a started program knows of itself; it runs this test's own executable.
int probe(const QString& report, int result, const QStringList& arguments)
{
    QStringList lines{QString("session %1").arg(::getsid(0) == ::getpgrp() ? "own" : "inherited"),
                      QString("folder %1").arg(QDir::currentPath())};
    struct sigaction pipe = {};
    ::sigaction(SIGPIPE, nullptr, &pipe);
    lines << QString("pipe %1").arg(pipe.sa_handler == SIG_DFL ? "default" : "changed");
    for (int fd = 0; fd < 200; ++fd) {
        char target[256] = {};
        const QByteArray link = "/proc/self/fd/" + QByteArray::number(fd);
        if (::fcntl(fd, F_GETFD) >= 0 && ::readlink(link.constData(), target, sizeof target - 1) > 0)
            lines << QString("fd %1 %2").arg(fd).arg(target);
    }
    for (const QString& argument : arguments)
        lines << "argument " + argument;
    QSaveFile file(report);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(lines.join('\n').toUtf8());
        file.commit();
    }
    return result;
}

zib::Command probeCommand(const QString& report, int result = 0, const QStringList& arguments = {})
{
    return {QCoreApplication::applicationFilePath(),
            QStringList{"--probe", report, QString::number(result)} + arguments};
}

QStringList linesOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).split('\n')
                                          : QStringList{"(none)"};
}

} // namespace

void TestShell::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_path = qgetenv("PATH");
    QVERIFY(QDir(m_folder->path()).mkdir("bin"));
    qputenv("PATH", m_folder->filePath("bin").toLocal8Bit());
}

void TestShell::cleanup()
{
    qputenv("PATH", m_path);
}

QString TestShell::program(const QString& name, const QByteArray& content)
{
    const QString path = file("bin/" + name, content);
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return path;
}

QString TestShell::file(const QString& name, const QByteArray& content)
{
    QFile made(m_folder->filePath(name));
    if (!made.open(QIODevice::WriteOnly))
        qFatal("Cannot make %s", qPrintable(name));
    made.write(content);
    return made.fileName();
}

/// @returns the commands as "program argument argument", programs without their folder; "false" when refused.
QStringList TestShell::started(const QString& verb, const QString& thing, const QString& parameters)
{
    QStringList lines;
    zib::DesktopShell shell([&lines](const QList<zib::Command>& commands, const QString&) {
        for (const zib::Command& command : commands)
            lines << (QStringList{command.program.section('/', -1)} + command.arguments).join(" | ");
        return true;
    });
    const bool done = shell.ShellExecuteA(verb, thing, parameters);
    if (!done)
        lines << "false";
    return lines;
}

void TestShell::open_ofAThing_startsItsProgram_data()
{
    QTest::addColumn<QString>("verb");
    QTest::addColumn<QString>("thing");
    QTest::addColumn<QString>("expected");
    QTest::newRow("document") << "open"
                              << "F/a b.txt"
                              << "xdg-open | F/a b.txt";
    QTest::newRow("name that looks like an option") << "open"
                                                    << "F/-x.txt"
                                                    << "xdg-open | F/-x.txt";
    QTest::newRow("name with shell letters") << "open"
                                             << "F/$(x);`y`'\".txt"
                                             << "xdg-open | F/$(x);`y`'\".txt";
    QTest::newRow("folder") << "open"
                            << "F/bin"
                            << "xdg-open | F/bin";
    QTest::newRow("explored folder") << "explore"
                                     << "F/bin"
                                     << "xdg-open | F/bin";
    QTest::newRow("explored folder, ended") << "explore"
                                            << "F/bin/"
                                            << "xdg-open | F/bin/";
    QTest::newRow("explored file") << "explore"
                                   << "F/a b.txt"
                                   << "false";
    QTest::newRow("explored missing folder") << "explore"
                                             << "F/none"
                                             << "false";
    QTest::newRow("missing document") << "open"
                                      << "F/none.chm"
                                      << "false";
    QTest::newRow("empty") << "open"
                           << ""
                           << "false";
    QTest::newRow("address") << "open"
                             << "https://example.org/a?b=c"
                             << "xdg-open | https://example.org/a?b=c";
    QTest::newRow("unknown program name") << "open"
                                          << "notepad.exe"
                                          << "false";
    QTest::newRow("script") << "open"
                            << "F/bin/tool"
                            << "tool";
}

void TestShell::open_ofAThing_startsItsProgram()
{
    QFETCH(QString, verb);
    QFETCH(QString, thing);
    QFETCH(QString, expected);
    program("xdg-open");
    program("tool");
    for (const char* name : {"a b.txt", "-x.txt", "$(x);`y`'\".txt"})
        file(name);
    QCOMPARE(started(verb, QString(thing).replace("F/", m_folder->path() + "/")).join("; "),
             QString(expected).replace("F/", m_folder->path() + "/"));
}

void TestShell::open_ofABrowser_takesTheFirstInstalled()
{
    QCOMPARE(started("open", "IExplore.exe", "https://a.example/"), QStringList{"false"});
    program("xdg-open");
    QCOMPARE(started("open", "IExplore.exe", "https://a.example/"),
             QStringList{"xdg-open | https://a.example/"});
    program("konqueror");
    QCOMPARE(started("open", "iexplore.EXE", "https://a.example/"),
             QStringList{"konqueror | https://a.example/"});
    program("firefox-esr");
    QCOMPARE(started("open", "IExplore.exe", "https://a.example/"),
             QStringList{"firefox-esr | https://a.example/"});
}

void TestShell::open_ofTheVolumeControl_takesTheFirstInstalled()
{
    program("xdg-open");
    QCOMPARE(started("open", "sndvol32.exe"), QStringList{"false"});
    program("alsamixer");
    QCOMPARE(started("open", "sndvol32.exe"), QStringList{"false"});
    program("xterm");
    QCOMPARE(started("open", "sndvol32.exe"),
             QStringList{"xterm | -e | " + m_folder->filePath("bin/alsamixer")});
    program("gnome-control-center");
    QCOMPARE(started("open", "SndVol32.exe"), QStringList{"gnome-control-center | sound"});
    program("pavucontrol");
    QCOMPARE(started("open", "sndvol32.exe"), QStringList{"pavucontrol"});
}

void TestShell::open_ofHelp_fallsBackToAReader()
{
    const QString help = file("zibburn.CHM");
    QCOMPARE(started("open", help), QStringList{"false"});
    program("kchmviewer");
    QCOMPARE(started("open", help), QStringList{"kchmviewer | " + help});
    program("xdg-open");
    program("xchm");
    QCOMPARE(started("open", help), (QStringList{"xdg-open | " + help, "xchm | " + help}));
}

void TestShell::open_ofADataFileMarkedExecutable_doesNotRunIt()
{
    program("xdg-open");
    const QString data = program("zibburn.txt", "ITSF");
    QCOMPARE(started("open", data), QStringList{"xdg-open | " + data});
    const QString binary = program("binary", "\x7F"
                                             "ELF...");
    QCOMPARE(started("open", binary, "-a \"b c\""), QStringList{"binary | -a | b c"});
}

void TestShell::open_ofAnUnknownVerb_startsNothing()
{
    program("xdg-open");
    QCOMPARE(started("print", file("a.txt")), QStringList{"false"});
    QCOMPARE(started("", file("a.txt")), QStringList{"false"});
}

void TestShell::start_ofAProgram_isDetachedAndInheritsNothing()
{
    const QString report = m_folder->filePath("report");
    const int open = ::open("/dev/zero", O_RDONLY); // Without close-on-exec, like a careless library's.
    const int high = ::fcntl(open, F_DUPFD, 150);
    ::signal(SIGPIPE, SIG_IGN);
    QVERIFY(zib::startDetached({probeCommand(report)}, m_folder->path()));
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(report), 60000);
    ::close(open);
    ::close(high);
    QCOMPARE(linesOf(report), (QStringList{"session own", "folder " + m_folder->path(), "pipe default",
                                           "fd 0 /dev/null", "fd 1 /dev/null", "fd 2 /dev/null"}));
}

void TestShell::start_ofAProgram_passesArgumentsAsTheyAre()
{
    const QString report = m_folder->filePath("report");
    const QStringList arguments{"a b", "", "$HOME", "*", "\"quoted\"", "Größe 音"};
    QVERIFY(zib::startDetached({probeCommand(report, 0, arguments)}));
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(report), 60000);
    QStringList seen = linesOf(report).filter(QRegularExpression("^argument "));
    for (QString& line : seen)
        line.remove(0, 9);
    QCOMPARE(seen, arguments);
}

void TestShell::start_ofSeveral_goesOnAfterAFailureOnly()
{
    const QString first = m_folder->filePath("first");
    const QString second = m_folder->filePath("second");
    const QString third = m_folder->filePath("third");
    const zib::Command missing{m_folder->filePath("missing"), {}};
    QVERIFY(
        zib::startDetached({missing, probeCommand(first, 3), probeCommand(second, 0), probeCommand(third)}));
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(second), 60000);
    QVERIFY(QFile::exists(first));
    QTest::qWait(200);
    QVERIFY(!QFile::exists(third));
    QFile::remove(first);
    QVERIFY(zib::startDetached({probeCommand(first), probeCommand(third)}));
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(first), 60000);
    QTest::qWait(200);
    QVERIFY(!QFile::exists(third));
}

void TestShell::start_ofAMissingProgram_doesNotDisturb()
{
    QVERIFY(zib::startDetached({zib::Command{m_folder->filePath("missing"), {}}}));
    QVERIFY(!zib::startDetached({}));
}

void TestShell::start_never_leavesAChildBehind()
{
    const QString report = m_folder->filePath("report");
    QVERIFY(zib::startDetached({probeCommand(report)}));
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(report), 60000);
    QCOMPARE(::waitpid(-1, nullptr, WNOHANG), -1);
    QCOMPARE(errno, ECHILD);
}

void TestShell::registry_ofATable_answersByTheRules_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char* key, const char* name, const QString& expected) {
        QTest::newRow(qPrintable(QString("%1 %2").arg(key, name)))
            << QString(key) << QString(name) << expected;
    };
    row("A\\B", "Text", "words");
    row("a\\b", "TEXT", "words");
    row("A\\B", "Empty", "");
    row("A\\B", "Number", "&h123405");
    row("A\\B", "Zero", "&h0000");
    row("A\\B", "Large", "&hFFFFFFFF");
    row("A\\B", "Bytes", "(none)");
    row("A\\B", "Longest", QString(1023, 'x'));
    row("A\\B", "TooLong", "(none)");
    row("A\\B", "Other", "(none)");
    row("A", "Text", "(none)");
    row("A\\B\\C", "Text", "(none)");
}

void TestShell::registry_ofATable_answersByTheRules()
{
    QFETCH(QString, key);
    QFETCH(QString, name);
    const QString at = "A\\B";
    const zib::SystemRegistry registry({{at, "Text", QString("words")},
                                        {at, "Empty", QString()},
                                        {at, "Number", quint32(0x12340005)},
                                        {at, "Zero", quint32(0)},
                                        {at, "Large", quint32(0xFFFFFFFF)},
                                        {at, "Bytes", QByteArray("abc")},
                                        {at, "Longest", QString(1023, 'x')},
                                        {at, "TooLong", QString(1024, 'x')}});
    QTEST(registry.value(key, name).value_or("(none)"), "expected");
}

void TestShell::registry_ofThisSystem_leadsToTheFirstInstalledTool()
{
    const QString key = "SOFTWARE\\Microsoft\\Shared Tools\\MSINFO";
    QCOMPARE(zib::SystemRegistry().value(key, "PATH"), std::nullopt);
    const QString second = program("gnome-system-monitor");
    QCOMPARE(zib::SystemRegistry().value(key, "PATH"), std::optional(second));
    const QString first = program("hardinfo");
    QCOMPARE(zib::SystemRegistry().value(key, "PATH"), std::optional(first));
    QCOMPARE(zib::SystemRegistry().value("SOFTWARE\\Microsoft\\Shared Tools Location", "MSINFO"),
             std::nullopt);
}

int main(int argc, char* argv[])
{
    if (argc > 3 && qstrcmp(argv[1], "--probe") == 0) { // Before Qt opens descriptors of its own.
        QStringList arguments;
        for (int i = 4; i < argc; ++i)
            arguments << QString::fromUtf8(argv[i]);
        return probe(QString::fromUtf8(argv[2]), std::atoi(argv[3]), arguments);
    }
    QCoreApplication application(argc, argv);
    TestShell test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_shell.moc"
