#include "platform/IniFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <cstdio>

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

/// The calls of one write to the file system, in order, and the one of them that fails.
struct CallLog
{
    bool on = false;
    QStringList calls;
    int failing = -1; ///< Index of the call that fails, once.
    int error = 0;

    /// Notes a call. @returns whether it shall fail.
    bool note(const char* call)
    {
        if (!on)
            return false;
        calls << call;
        if (calls.size() - 1 != failing)
            return false;
        errno = error;
        return true;
    }
};

CallLog g_log;

const char* kindOf(int fd)
{
    struct stat info = {};
    return ::fstat(fd, &info) == 0 && S_ISDIR(info.st_mode) ? "sync folder" : "sync file";
}

} // namespace

// These stand before the system's own for everything that is linked into this program.
extern "C" {

int fsync(int fd)
{
    return g_log.note(kindOf(fd)) ? -1 : static_cast<int>(::syscall(SYS_fsync, fd));
}

ssize_t write(int fd, const void* data, size_t size)
{
    return g_log.note("write") ? -1 : ::syscall(SYS_write, fd, data, size);
}

int rename(const char* from, const char* to) noexcept
{
    return g_log.note("rename") ? -1 : static_cast<int>(::syscall(SYS_rename, from, to));
}

int fchmod(int fd, mode_t mode) noexcept
{
    return g_log.note("permissions") ? -1 : static_cast<int>(::syscall(SYS_fchmod, fd, mode));
}

} // extern "C"

/// Every call that a write makes fails once; the file is then the old one or the new one, never another.
class TestIniFaults : public QObject
{
    Q_OBJECT
private slots:
    void write_makesItsCallsInTheDurableOrder();
    void write_whenAnyCallFails_leavesTheOldOrTheNewFile_data();
    void write_whenAnyCallFails_leavesTheOldOrTheNewFile();
    void write_whereRightsAreRefused_isDone();

private:
    QByteArray content() const;
    bool write(const QByteArray& value);

    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath("a.ini");
};

QByteArray TestIniFaults::content() const
{
    QFile file(m_path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

bool TestIniFaults::write(const QByteArray& value)
{
    g_log.on = true;
    g_log.calls.clear();
    const bool done = zib::IniFile().WritePrivateProfileStringA("s", QByteArray("k"), value, m_path);
    g_log.on = false;
    return done;
}

void TestIniFaults::write_makesItsCallsInTheDurableOrder()
{
    QFile::remove(m_path);
    g_log.failing = -1;
    QVERIFY(write("1"));
    QCOMPARE(g_log.calls, (QStringList{"write", "sync file", "rename", "sync folder"}));
    QVERIFY(write("2"));
    QCOMPARE(g_log.calls, (QStringList{"permissions", "write", "sync file", "rename", "sync folder"}));
}

void TestIniFaults::write_whenAnyCallFails_leavesTheOldOrTheNewFile_data()
{
    QTest::addColumn<int>("call");
    QTest::addColumn<int>("error");
    QTest::addColumn<bool>("done");
    for (const int error : {ENOSPC, EIO, EROFS, EDQUOT})
        for (int call = 0; call < 5; ++call)
            QTest::newRow(qPrintable(QString("call %1, error %2").arg(call).arg(error)))
                << call << error << (call == 4);
    QTest::newRow("interrupted write") << 1 << EINTR << true;
}

void TestIniFaults::write_whenAnyCallFails_leavesTheOldOrTheNewFile()
{
    QFETCH(int, call);
    QFETCH(int, error);
    QFETCH(bool, done);
    QFile::remove(m_path);
    g_log.failing = -1;
    QVERIFY(write("old"));
    g_log.failing = call;
    g_log.error = error;
    QCOMPARE(write("new"), done);
    QCOMPARE(content(), done ? QByteArray("[s]\nk=new\n") : QByteArray("[s]\nk=old\n"));
    QCOMPARE(QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{"a.ini"});
}

void TestIniFaults::write_whereRightsAreRefused_isDone()
{
    for (const int error : {EPERM, ENOTSUP, ENOSYS}) {
        QFile::remove(m_path);
        g_log.failing = -1;
        QVERIFY(write("old"));
        QCOMPARE(::chmod(QFile::encodeName(m_path).constData(), 0600), 0);
        g_log.failing = 0;
        g_log.error = error;
        QVERIFY(write("new"));
        QCOMPARE(g_log.calls.first(), QString("permissions"));
        QCOMPARE(content(), QByteArray("[s]\nk=new\n"));
        struct stat info = {};
        QCOMPARE(::stat(QFile::encodeName(m_path).constData(), &info), 0);
        QCOMPARE(info.st_mode & 07777, mode_t(0600)); // Never more than the old file's.
    }
}

QTEST_APPLESS_MAIN(TestIniFaults)
#include "tst_inifaults.moc"
