#include "common/NativeName.h"
#include "platform/ProgramFolder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <functional>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

/// Where the program's folder is, for an account that may not write the installed one.
class TestProgramFolder : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void executableFolder_thatMayBeWritten_isIt();
    void installedFolder_isNeverIt_evenForRoot_data();
    void installedFolder_isNeverIt_evenForRoot();
    void userFolder_atTheFirstStart_getsTheDataFiles();
    void userFolder_ofAnOddName_isMade();
    void userFolder_afterAnUpdate_getsTheNewFiles();
    void userFolder_afterAnUpdate_keepsWhatTheUserChanged();
    void userFolder_keepsWhatTheUserDeletedUntilAnUpdate();
    void userFolder_ofAnInstalledPrefix_takesTheShare();
    void twoFirstStarts_atOnce_leaveWholeFiles();
    void readOnlyHome_isToldInWords();
    void fullDisk_isToldInWords();
    void variable_ofTheDataHome_isFollowed_data();
    void variable_ofTheDataHome_isFollowed();

private:
    zib::ProgramFolder findAsUser(const std::function<void()>& before = {});
    void install(const QByteArray& tips) const;
    QByteArray read(const QString& path) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_program;
    QString m_home;
    QString m_user;
};

namespace {

constexpr uid_t kNobody = 65534;

void put(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("Cannot write %s", qPrintable(path));
}

bool isRoot()
{
    return ::geteuid() == 0;
}

/// Runs this as an account without rights, in a process of its own. @returns what it gives.
QByteArray asPlainUser(const std::function<QByteArray()>& task)
{
    int ends[2];
    if (::pipe(ends) != 0)
        qFatal("No pipe");
    const pid_t child = ::fork();
    if (child == 0) {
        if (isRoot() && (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0))
            ::_exit(1);
        const QByteArray answer = task();
        ::_exit(::write(ends[1], answer.constData(), static_cast<size_t>(answer.size())) < 0 ? 1 : 0);
    }
    ::close(ends[1]);
    QFile from;
    if (!from.open(ends[0], QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        qFatal("No answer");
    const QByteArray answer = from.readAll();
    ::waitpid(child, nullptr, 0);
    return answer;
}

} // namespace

void TestProgramFolder::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QCOMPARE(::chmod(qPrintable(m_folder->path()), 0755), 0);
    m_program = m_folder->filePath("program");
    m_home = m_folder->filePath("home");
    m_user = m_home + "/.local/share/ZibCDBurner";
    QVERIFY(QDir().mkpath(m_program) && QDir().mkpath(m_home));
    install("Tip 1\n");
    if (isRoot())
        QCOMPARE(::chown(qPrintable(m_home), kNobody, kNobody), 0);
    QCOMPARE(::chmod(qPrintable(m_program), 0555), 0);
}

/// What a package puts into the program's folder.
void TestProgramFolder::install(const QByteArray& tips) const
{
    ::chmod(qPrintable(m_program), 0755);
    put(m_program + "/TIPOFDAY.TXT", tips);
    put(m_program + "/zibburn.chm", QByteArray(20000, 'h'));
    put(m_program + "/Sample1.jpg", QByteArray(30000, 'j'));
    ::chmod(qPrintable(m_program), 0555);
}

QByteArray TestProgramFolder::read(const QString& path) const
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

zib::ProgramFolder TestProgramFolder::findAsUser(const std::function<void()>& before)
{
    const QByteArrayList answer = asPlainUser([&] {
                                      if (before)
                                          before();
                                      const auto found = zib::findProgramFolder(m_program, m_user);
                                      return found.path.toUtf8() + '\0' + found.trouble.toUtf8();
                                  }).split('\0');
    return {QString::fromUtf8(answer.value(0)), QString::fromUtf8(answer.value(1))};
}

void TestProgramFolder::executableFolder_thatMayBeWritten_isIt()
{
    QCOMPARE(::chmod(qPrintable(m_program), 0777), 0);
    const zib::ProgramFolder found = findAsUser();
    QCOMPARE(found.path, m_program);
    QCOMPARE(found.trouble, QString());
    QCOMPARE(QDir(m_home).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList());
    QCOMPARE(QDir(m_program).entryList(QDir::Files | QDir::Hidden).size(), 3);
}

void TestProgramFolder::installedFolder_isNeverIt_evenForRoot_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<bool>("installed");
    for (const char* folder : {"/usr/bin", "/usr/lib", "/usr/local/lib", "/usr/local/bin"})
        QTest::newRow(folder) << folder << true;
    for (const char* folder : {"/usr/src", "/var/lib", "/opt"})
        QTest::newRow(folder) << folder << false;
}

void TestProgramFolder::installedFolder_isNeverIt_evenForRoot()
{
    QFETCH(QString, folder);
    QFETCH(bool, installed);
    if (::access(qPrintable(folder), W_OK) != 0)
        QSKIP("This account may not write there anyway");
    const QString user = m_folder->filePath("ZibCDBurner");
    QCOMPARE(zib::findProgramFolder(folder, user).path, installed ? user : folder);
}

void TestProgramFolder::userFolder_atTheFirstStart_getsTheDataFiles()
{
    const zib::ProgramFolder found = findAsUser();
    QCOMPARE(found.path, m_user);
    QCOMPARE(found.trouble, QString());
    QCOMPARE(read(m_user + "/TIPOFDAY.TXT"), QByteArray("Tip 1\n"));
    QCOMPARE(read(m_user + "/zibburn.chm").size(), 20000);
    QCOMPARE(read(m_user + "/Sample1.jpg").size(), 30000);
    struct stat info = {};
    QCOMPARE(::stat(qPrintable(m_user), &info), 0);
    QCOMPARE(info.st_mode & 07777, mode_t(0700));
}

void TestProgramFolder::userFolder_ofAnOddName_isMade()
{
    const QByteArray odd = asPlainUser([this] {
        const QString folder = m_home + "/" + zib::nativeText(" M\xFCll\n ") + "/ZibCDBurner";
        return zib::nativeBytes(zib::findProgramFolder(m_program, folder).path);
    });
    QVERIFY(odd.contains(" M\xFCll\n "));
    QVERIFY(zib::isFile(zib::nativeText(odd) + "/TIPOFDAY.TXT"));
    asPlainUser([&odd] {
        const QString folder = zib::nativeText(odd);
        for (const QString& name : zib::folderEntries(folder))
            zib::removeFile(folder + '/' + name);
        ::rmdir(odd.constData());
        ::rmdir(odd.left(odd.lastIndexOf('/')).constData());
        return QByteArray();
    });
}

void TestProgramFolder::userFolder_afterAnUpdate_getsTheNewFiles()
{
    findAsUser();
    install("Tip 2\n");
    QCOMPARE(findAsUser().trouble, QString());
    QCOMPARE(read(m_user + "/TIPOFDAY.TXT"), QByteArray("Tip 2\n"));
}

void TestProgramFolder::userFolder_afterAnUpdate_keepsWhatTheUserChanged()
{
    findAsUser();
    put(m_user + "/TIPOFDAY.TXT", "mine\n");
    put(m_user + "/settings.ini", "[View]\n");
    QCOMPARE(findAsUser().trouble, QString());
    install("Tip 2\n");
    QCOMPARE(findAsUser().trouble, QString());
    QCOMPARE(findAsUser().trouble, QString());
    QCOMPARE(read(m_user + "/TIPOFDAY.TXT"), QByteArray("mine\n"));
    QCOMPARE(read(m_user + "/settings.ini"), QByteArray("[View]\n"));
}

void TestProgramFolder::userFolder_keepsWhatTheUserDeletedUntilAnUpdate()
{
    findAsUser();
    QVERIFY(QFile::remove(m_user + "/TIPOFDAY.TXT"));
    findAsUser();
    QCOMPARE(read(m_user + "/TIPOFDAY.TXT"), QByteArray("(none)"));
    install("Tip 2\n");
    findAsUser();
    QCOMPARE(read(m_user + "/TIPOFDAY.TXT"), QByteArray("Tip 2\n"));
}

void TestProgramFolder::userFolder_ofAnInstalledPrefix_takesTheShare()
{
    const QString share = m_folder->filePath("prefix/share/zibcdburner");
    const QString lib = m_folder->filePath("prefix/lib/x86_64-linux-gnu/ZibCDBurner");
    QVERIFY(QDir().mkpath(share) && QDir().mkpath(lib));
    put(share + "/TIPOFDAY.TXT", "Shared\n");
    QCOMPARE(::chmod(qPrintable(lib), 0555), 0);
    m_program = lib;
    QCOMPARE(findAsUser().path, m_user);
    QCOMPARE(read(m_user + "/TIPOFDAY.TXT"), QByteArray("Shared\n"));
}

void TestProgramFolder::twoFirstStarts_atOnce_leaveWholeFiles()
{
    const QByteArray answers = asPlainUser([this] {
        for (int i = 0; i < 4; ++i)
            if (::fork() == 0)
                ::_exit(zib::findProgramFolder(m_program, m_user).trouble.isEmpty() ? 0 : 1);
        QByteArray ends;
        for (int status = 0; ::wait(&status) > 0;)
            ends += WIFEXITED(status) && WEXITSTATUS(status) == 0 ? 'y' : 'n';
        return ends;
    });
    QCOMPARE(answers, QByteArray("yyyy"));
    QCOMPARE(read(m_user + "/TIPOFDAY.TXT"), QByteArray("Tip 1\n"));
    QCOMPARE(read(m_user + "/Sample1.jpg").size(), 30000);
    QCOMPARE(QDir(m_user).entryList(QDir::Files | QDir::Hidden),
             (QStringList{".installed.ini", "Sample1.jpg", "TIPOFDAY.TXT", "zibburn.chm"}));
}

void TestProgramFolder::readOnlyHome_isToldInWords()
{
    QCOMPARE(::chmod(qPrintable(m_home), 0555), 0);
    const zib::ProgramFolder found = findAsUser();
    QCOMPARE(found.path, m_program);
    QVERIFY2(found.trouble.contains(m_user) && found.trouble.contains("Permission denied"),
             qPrintable(found.trouble));
    QCOMPARE(::chmod(qPrintable(m_home), 0755), 0);
}

void TestProgramFolder::fullDisk_isToldInWords()
{
    const zib::ProgramFolder found = findAsUser([] {
        const rlimit full{10000, 10000};
        ::signal(SIGXFSZ, SIG_IGN);
        ::setrlimit(RLIMIT_FSIZE, &full);
    });
    QCOMPARE(found.path, m_user);
    QVERIFY2(found.trouble.contains(m_user) && found.trouble.contains("File too large"),
             qPrintable(found.trouble));
    QVERIFY(!QFile::exists(m_user + "/zibburn.chm")); // Nothing half.
    QCOMPARE(findAsUser().trouble, QString());
    QCOMPARE(read(m_user + "/zibburn.chm").size(), 20000);
}

void TestProgramFolder::variable_ofTheDataHome_isFollowed_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QByteArray>("home");
    QTest::addColumn<QString>("folder");
    QTest::newRow("set") << QByteArray("/data") << QByteArray("/h") << "/data/ZibCDBurner";
    QTest::newRow("not set") << QByteArray() << QByteArray("/h") << "/h/.local/share/ZibCDBurner";
    QTest::newRow("relative") << QByteArray("data") << QByteArray("/h") << "/h/.local/share/ZibCDBurner";
    QTest::newRow("slash at the end") << QByteArray("/data/") << QByteArray("/h") << "/data/ZibCDBurner";
}

void TestProgramFolder::variable_ofTheDataHome_isFollowed()
{
    QFETCH(QByteArray, data);
    QFETCH(QByteArray, home);
    const QByteArray dataBefore = qgetenv("XDG_DATA_HOME");
    const QByteArray homeBefore = qgetenv("HOME");
    qputenv("XDG_DATA_HOME", data);
    qputenv("HOME", home);
    const QString folder = zib::userProgramFolder();
    qputenv("XDG_DATA_HOME", dataBefore);
    qputenv("HOME", homeBefore);
    QTEST(folder, "folder");
}

QTEST_GUILESS_MAIN(TestProgramFolder)
#include "tst_programfolder.moc"
