#include "platform/AtomicFile.h"
#include "platform/IniFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <csignal>
#include <thread>
#include <vector>

#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <fcntl.h>
#include <grp.h>
#include <unistd.h>

/// The INI service against the file system: what a write replaces, keeps, follows and leaves alone.
class TestIniFile : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void write_toAMissingFile_makesItWithTheUsualRights();
    void write_toAMissingFolder_fails();
    void delete_inAMissingFile_makesNone();
    void write_ofTheSameValue_leavesTheFileUntouched();
    void write_always_keepsPermissions_data();
    void write_always_keepsPermissions();
    void write_always_leavesNothingBeside();
    void write_throughALink_changesItsTarget();
    void write_throughADanglingLink_makesItsTarget();
    void write_throughALoopOfLinks_fails();
    void write_toAReadOnlyFile_leavesIt();
    void write_inAReadOnlyFolder_goesOverTheOldContents();
    void write_inAReadOnlyFolderOnAFullDisk_leavesTheOldContents();
    void write_toAnothersFileInASharedFolder_goesOverItsContents();
    void write_toAnothersFile_keepsOnlyTheRightsThatItMayGive();
    void write_toAFileItMayNotRead_leavesIt();
    void write_onAFullDisk_leavesTheOldFile();
    void write_toWhatIsNoFile_isRefusedAtOnce_data();
    void write_toWhatIsNoFile_isRefusedAtOnce();
    void write_afterAKilledOne_takesItsRestAway();
    void write_toTheLongestName_works();
    void write_toAnEnormousFile_leavesIt();
    void write_whileAnotherProgramWrites_losesNothing();
    void write_whileTheFolderIsLocked_goesOnAfterAWhile();
    void replace_ofAFileChangedSince_doesNothing_data();
    void replace_ofAFileChangedSince_doesNothing();
    void kill_atAnyMoment_leavesTheOldOrTheNewFile();

private:
    void put(const QByteArray& content) const;
    QByteArray get() const;
    bool write(const QByteArray& key, const QByteArray& value);

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
    zib::IniFile m_ini;
};

namespace {

/// Root may do everything, so while this lives the process is nobody.
struct AsNobody
{
    AsNobody() : wasRoot(::geteuid() == 0)
    {
        if (wasRoot && (::setegid(65534) != 0 || ::seteuid(65534) != 0))
            qFatal("Cannot become nobody");
    }
    ~AsNobody()
    {
        if (wasRoot && (::seteuid(0) != 0 || ::setegid(0) != 0))
            qFatal("Cannot become root again");
    }
    bool wasRoot;
};

/// While this lives the process is in no group but its own.
class WithoutGroups
{
public:
    WithoutGroups() : m_groups(static_cast<size_t>(std::max(::getgroups(0, nullptr), 0)))
    {
        if (::getgroups(static_cast<int>(m_groups.size()), m_groups.data()) < 0 ||
            ::setgroups(0, nullptr) != 0)
            qFatal("Cannot leave the groups");
    }
    ~WithoutGroups()
    {
        if (::setgroups(m_groups.size(), m_groups.data()) != 0)
            qFatal("Cannot join the groups again");
    }
    Q_DISABLE_COPY_MOVE(WithoutGroups)

private:
    std::vector<gid_t> m_groups;
};

mode_t modeOf(const QString& path)
{
    struct stat info = {};
    return ::stat(qPrintable(path), &info) == 0 ? info.st_mode & 07777 : 0;
}

/// A writer of its own process that dies in the middle of writing, by the signal of a file too large.
/// @returns the path of what it left beside the file.
QString restOfAKilledWriter(const QString& path)
{
    const pid_t child = ::fork();
    if (child == 0) {
        const rlimit noCore{0, 0};
        const rlimit full{3, 3};
        ::signal(SIGXFSZ, SIG_DFL);
        ::setrlimit(RLIMIT_CORE, &noCore);
        ::setrlimit(RLIMIT_FSIZE, &full);
        zib::IniFile().WritePrivateProfileStringA("s", QByteArray("k"), QByteArray("2"), path);
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    const QDir folder(QFileInfo(path).path());
    const QStringList files = folder.entryList({".*"}, QDir::Files | QDir::Hidden);
    return WIFSIGNALED(status) && files.size() == 1 ? folder.filePath(files.first()) : QString();
}

} // namespace

void TestIniFile::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_path = m_folder->filePath("a.ini");
}

void TestIniFile::put(const QByteArray& content) const
{
    QFile file(m_path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("Cannot write the file");
    file.write(content);
}

QByteArray TestIniFile::get() const
{
    QFile file(m_path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

bool TestIniFile::write(const QByteArray& key, const QByteArray& value)
{
    return m_ini.WritePrivateProfileStringA("s", key, value, m_path);
}

void TestIniFile::write_toAMissingFile_makesItWithTheUsualRights()
{
    const mode_t before = ::umask(027);
    QVERIFY(write("k", "1"));
    ::umask(before);
    QCOMPARE(get(), QByteArray("[s]\nk=1\n"));
    QCOMPARE(modeOf(m_path), mode_t(0640));
}

void TestIniFile::write_toAMissingFolder_fails()
{
    m_path = m_folder->filePath("none/a.ini");
    QVERIFY(!write("k", "1"));
    QVERIFY(!QFileInfo::exists(m_folder->filePath("none")));
}

void TestIniFile::delete_inAMissingFile_makesNone()
{
    QVERIFY(m_ini.WritePrivateProfileStringA("s", QByteArray("k"), std::nullopt, m_path));
    QVERIFY(m_ini.WritePrivateProfileStringA("s", std::nullopt, std::nullopt, m_path));
    QVERIFY(!QFile::exists(m_path));
}

void TestIniFile::write_ofTheSameValue_leavesTheFileUntouched()
{
    put("[s]\nk=1\n");
    struct stat before = {};
    struct stat after = {};
    QCOMPARE(::stat(qPrintable(m_path), &before), 0);
    QVERIFY(write("k", "1"));
    QCOMPARE(::stat(qPrintable(m_path), &after), 0);
    QCOMPARE(after.st_ino, before.st_ino);
    QCOMPARE(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
}

void TestIniFile::write_always_keepsPermissions_data()
{
    QTest::addColumn<int>("mode");
    for (const int mode : {0644, 0600, 0664, 0666, 0640, 0755, 0200 | 0444})
        QTest::newRow(qPrintable(QString::number(mode, 8))) << mode;
}

void TestIniFile::write_always_keepsPermissions()
{
    QFETCH(int, mode);
    put("[s]\nk=0\n");
    QCOMPARE(::chmod(qPrintable(m_path), static_cast<mode_t>(mode)), 0);
    QVERIFY(write("k", "1"));
    QCOMPARE(get(), QByteArray("[s]\nk=1\n"));
    QCOMPARE(modeOf(m_path), static_cast<mode_t>(mode));
}

void TestIniFile::write_always_leavesNothingBeside()
{
    put("[s]\n");
    for (int i = 0; i < 5; ++i)
        QVERIFY(write("k", QByteArray::number(i)));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{"a.ini"});
}

void TestIniFile::write_throughALink_changesItsTarget()
{
    put("[s]\nk=0\n");
    QVERIFY(QDir(m_folder->path()).mkdir("sub"));
    const QString link = m_folder->filePath("sub/link.ini");
    QCOMPARE(::symlink("../hop.ini", qPrintable(link)), 0);
    QCOMPARE(::symlink(qPrintable(m_path), qPrintable(m_folder->filePath("hop.ini"))), 0);
    QVERIFY(m_ini.WritePrivateProfileStringA("s", QByteArray("k"), QByteArray("1"), link));
    QCOMPARE(get(), QByteArray("[s]\nk=1\n"));
    QVERIFY(QFileInfo(link).isSymLink());
    QVERIFY(QFileInfo(m_folder->filePath("hop.ini")).isSymLink());
    QVERIFY(!QFileInfo(m_path).isSymLink());
    QCOMPARE(m_ini.GetPrivateProfileStringA("s", "k", "", 10, link), QByteArray("1"));
}

void TestIniFile::write_throughADanglingLink_makesItsTarget()
{
    const QString link = m_folder->filePath("link.ini");
    QCOMPARE(::symlink("a.ini", qPrintable(link)), 0);
    QVERIFY(m_ini.WritePrivateProfileStringA("s", QByteArray("k"), QByteArray("1"), link));
    QCOMPARE(get(), QByteArray("[s]\nk=1\n"));
    QVERIFY(QFileInfo(link).isSymLink());
}

void TestIniFile::write_throughALoopOfLinks_fails()
{
    QCOMPARE(::symlink("b.ini", qPrintable(m_path)), 0);
    QCOMPARE(::symlink("a.ini", qPrintable(m_folder->filePath("b.ini"))), 0);
    QVERIFY(!write("k", "1"));
    QCOMPARE(m_ini.GetPrivateProfileStringA("s", "k", "DEF", 10, m_path), QByteArray("DEF"));
    QVERIFY(QFileInfo(m_path).isSymLink());
}

void TestIniFile::write_toAReadOnlyFile_leavesIt()
{
    put("[s]\nk=0\n");
    QCOMPARE(::chmod(qPrintable(m_path), 0444), 0);
    QVERIFY(!write("k", "1"));
    QCOMPARE(get(), QByteArray("[s]\nk=0\n"));
}

void TestIniFile::write_inAReadOnlyFolder_goesOverTheOldContents()
{
    put("[s]\nk=0\nl=" + QByteArray(5000, 'x') + "\n");
    QCOMPARE(::chmod(qPrintable(m_path), 0666), 0);
    QCOMPARE(::chmod(qPrintable(m_folder->path()), 0555), 0);
    {
        const AsNobody nobody;
        QVERIFY(write("k", QByteArray(5000, 'y')));
        QVERIFY(write("l", "1"));
        QVERIFY(write("k", "2"));
    }
    QCOMPARE(::chmod(qPrintable(m_folder->path()), 0755), 0);
    QCOMPARE(get(), QByteArray("[s]\nk=2\nl=1\n"));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
}

void TestIniFile::write_inAReadOnlyFolderOnAFullDisk_leavesTheOldContents()
{
    const QByteArray before = "[s]\nk=0\n";
    put(before);
    QCOMPARE(::chmod(qPrintable(m_path), 0666), 0);
    QCOMPARE(::chmod(qPrintable(m_folder->path()), 0555), 0);
    rlimit limit = {};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit full{1000, limit.rlim_max};
    ::signal(SIGXFSZ, SIG_IGN);
    {
        const AsNobody nobody;
        QCOMPARE(::setrlimit(RLIMIT_FSIZE, &full), 0);
        const bool written = write("k", QByteArray(5000, 'y'));
        ::setrlimit(RLIMIT_FSIZE, &limit);
        QVERIFY(!written);
    }
    QCOMPARE(::chmod(qPrintable(m_folder->path()), 0755), 0);
    QCOMPARE(get(), before);
}

void TestIniFile::write_toAnothersFileInASharedFolder_goesOverItsContents()
{
    if (::geteuid() != 0)
        QSKIP("Needs a file of another account, which only root can make.");
    put("[s]\nk=0\n");
    QCOMPARE(::chmod(qPrintable(m_path), 0666), 0);
    QCOMPARE(::chmod(qPrintable(m_folder->path()), 01777), 0);
    {
        const AsNobody nobody;
        QVERIFY(write("k", "1"));
    }
    QCOMPARE(::chmod(qPrintable(m_folder->path()), 0755), 0);
    QCOMPARE(get(), QByteArray("[s]\nk=1\n"));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
}

/// A program that runs as its owner, or whose group is its folder's, would do so as somebody else.
void TestIniFile::write_toAnothersFile_keepsOnlyTheRightsThatItMayGive()
{
    if (::geteuid() != 0)
        QSKIP("Needs a file of another account, which only root can make.");
    put("[s]\nk=0\n");
    QCOMPARE(::chmod(qPrintable(m_path), 06757), 0);
    QCOMPARE(::chmod(qPrintable(m_folder->path()), 0777), 0);
    {
        const WithoutGroups noGroups; // Else the file's group could be given to the new one.
        const AsNobody nobody;
        QVERIFY(write("k", "1"));
    }
    QCOMPARE(::chmod(qPrintable(m_folder->path()), 0755), 0);
    QCOMPARE(get(), QByteArray("[s]\nk=1\n"));
    QCOMPARE(modeOf(m_path), mode_t{0757});
}

void TestIniFile::write_toAFileItMayNotRead_leavesIt()
{
    put("[s]\nk=0\nother=1\n");
    QCOMPARE(::chmod(qPrintable(m_path), 0200), 0);
    QCOMPARE(::chmod(qPrintable(m_folder->path()), 0777), 0);
    {
        const AsNobody nobody;
        QVERIFY(!write("k", "1"));
        QCOMPARE(m_ini.GetPrivateProfileStringA("s", "k", "DEF", 10, m_path), QByteArray("DEF"));
    }
    QCOMPARE(::chmod(qPrintable(m_path), 0600), 0);
    QCOMPARE(get(), QByteArray("[s]\nk=0\nother=1\n"));
}

void TestIniFile::write_onAFullDisk_leavesTheOldFile()
{
    const QByteArray before = "[s]\nk=0\n" + QByteArray(1000, ';') + "\n";
    put(before);
    rlimit limit = {};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit full{1000, limit.rlim_max};
    ::signal(SIGXFSZ, SIG_IGN);
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &full), 0);
    const bool done = write("k", "1");
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    QVERIFY(!done);
    QCOMPARE(get(), before);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{"a.ini"});
    QVERIFY(write("k", "1"));
}

void TestIniFile::write_toWhatIsNoFile_isRefusedAtOnce_data()
{
    QTest::addColumn<QString>("kind");
    for (const char* kind :
         {"folder", "pipe", "device", "endless device", "empty name", "nul in the name", "below a file"})
        QTest::newRow(kind) << QString(kind);
}

void TestIniFile::write_toWhatIsNoFile_isRefusedAtOnce()
{
    QFETCH(QString, kind);
    put("[s]\nk=0\n");
    QString path;
    if (kind == "folder")
        path = m_folder->path();
    else if (kind == "device")
        path = "/dev/null";
    else if (kind == "endless device")
        path = "/dev/zero";
    else if (kind == "nul in the name")
        path = m_path + QChar(QChar::Null) + "b";
    else if (kind == "below a file")
        path = m_path + "/b.ini";
    else if (kind == "pipe" && ::mkfifo(qPrintable(path = m_folder->filePath("pipe")), 0600) != 0)
        QFAIL("no pipe");
    QCOMPARE(m_ini.GetPrivateProfileStringA("s", "k", "DEF", 10, path), QByteArray("DEF"));
    QVERIFY(!m_ini.WritePrivateProfileStringA("s", QByteArray("k"), QByteArray("1"), path));
    QCOMPARE(get(), QByteArray("[s]\nk=0\n"));
}

void TestIniFile::write_afterAKilledOne_takesItsRestAway()
{
    put("[s]\nk=0\n");
    QVERIFY(write("k", "1"));
    const QString rest = restOfAKilledWriter(m_path);
    QVERIFY2(!rest.isEmpty(), "the killed writer left nothing");
    QCOMPARE(get(), QByteArray("[s]\nk=1\n"));
    QVERIFY(write("k", "3"));
    QCOMPARE(get(), QByteArray("[s]\nk=3\n"));
    QVERIFY(!QFile::exists(rest));
}

void TestIniFile::write_toTheLongestName_works()
{
    m_path = m_folder->filePath(QString(255, 'n'));
    put("[s]\nk=0\n");
    QVERIFY(write("k", "1"));
    QCOMPARE(get(), QByteArray("[s]\nk=1\n"));
}

void TestIniFile::write_toAnEnormousFile_leavesIt()
{
    put("[s]\nk=0\n");
    QVERIFY(QFile::resize(m_path, 65 * 1024 * 1024));
    QVERIFY(!write("k", "1"));
    QCOMPARE(m_ini.GetPrivateProfileStringA("s", "k", "DEF", 10, m_path), QByteArray("DEF"));
    QCOMPARE(QFileInfo(m_path).size(), 65 * 1024 * 1024);
}

void TestIniFile::write_whileAnotherProgramWrites_losesNothing()
{
    constexpr int kWriters = 4;
    constexpr int kKeys = 15;
    std::vector<std::thread> writers;
    for (int writer = 0; writer < kWriters; ++writer)
        writers.emplace_back([this, writer] {
            zib::IniFile ini;
            for (int i = 0; i < kKeys; ++i)
                ini.WritePrivateProfileStringA("s", QString("w%1k%2").arg(writer).arg(i).toUtf8(),
                                               QByteArray("1"), m_path);
        });
    for (std::thread& writer : writers)
        writer.join();
    for (int writer = 0; writer < kWriters; ++writer)
        for (int i = 0; i < kKeys; ++i)
            QCOMPARE(m_ini.GetPrivateProfileStringA("s", QString("w%1k%2").arg(writer).arg(i).toUtf8(), "DEF",
                                                    10, m_path),
                     QByteArray("1"));
    QCOMPARE(get().count('\n'), 1 + kWriters * kKeys);
}

void TestIniFile::write_whileTheFolderIsLocked_goesOnAfterAWhile()
{
    const int folder = ::open(qPrintable(m_folder->path()), O_RDONLY | O_DIRECTORY);
    QCOMPARE(::flock(folder, LOCK_EX), 0);
    QVERIFY(write("k", "1"));
    ::close(folder);
    QCOMPARE(get(), QByteArray("[s]\nk=1\n"));
}

void TestIniFile::replace_ofAFileChangedSince_doesNothing_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("since");
    QTest::newRow("longer") << QByteArray("[s]\n") << QByteArray("[s]\nother=1\n");
    QTest::newRow("as long") << QByteArray("[s]\nk=1\n") << QByteArray("[s]\nk=2\n");
    QTest::newRow("made") << QByteArray() << QByteArray("[s]\nk=2\n");
    QTest::newRow("removed") << QByteArray("[s]\nk=2\n") << QByteArray();
}

void TestIniFile::replace_ofAFileChangedSince_doesNothing()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, since);
    if (!before.isEmpty())
        put(before);
    const auto snapshot = zib::readSnapshot(m_path);
    QVERIFY(snapshot);
    QTest::qSleep(20); // Beyond the file system's own clock tick.
    if (since.isEmpty())
        QFile::remove(m_path);
    else
        put(since);
    const zib::FolderLock lock(m_path);
    QVERIFY(zib::replaceFile(m_path, "mine", *snapshot, lock) == zib::Replaced::Changed);
    QCOMPARE(get(), since.isEmpty() ? QByteArray("(none)") : since);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden).size(), since.isEmpty() ? 0 : 1);
}

void TestIniFile::kill_atAnyMoment_leavesTheOldOrTheNewFile()
{
    const QByteArray rest = "; " + QByteArray(200000, 'x') + "\n[t]\nlast=1\n";
    put("[s]\nk=0\n" + rest);
    for (int round = 0; round < 25; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            zib::IniFile ini;
            for (int i = 0;; ++i)
                ini.WritePrivateProfileStringA("s", QByteArray("k"), QByteArray::number(i), m_path);
        }
        QVERIFY(child > 0);
        QTest::qSleep(1 + round % 7);
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        const QByteArray now = get();
        QVERIFY2(now.startsWith("[s]\nk=") && now.endsWith("\n" + rest), now.left(50).constData());
        QCOMPARE(now.size() - rest.size(), now.indexOf('\n', 4) + 1);
    }
}

QTEST_APPLESS_MAIN(TestIniFile)
#include "tst_inifile.moc"
