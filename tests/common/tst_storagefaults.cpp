#include "common/NameBearer.h"
#include "common/StagedFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <functional>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace zib;

namespace {

/// A storage that does not do everything, as those of networks and memory cards. Zero is obedience.
struct Storage
{
    int exclusiveRename = 0; ///< What renaming with flags fails with.
    int link = 0;
    int rename = 0;
    int fsync = 0;
    std::function<void()> behindRename; ///< What another program does behind a refused rename.
    std::function<void()> behindLink;   ///< The same behind a refused link.
    unsigned long waitMs = 0;           ///< What a wait for it takes.
    int wait = 0;                       ///< What the wait fails with.
};
Storage g_storage;
qint64 g_handedOver = 0; ///< Bytes from the beginning of a file that were handed to the storage.
qint64 g_awaited = 0;    ///< Those of them that were waited for.
qint64 g_mostAhead = 0;  ///< By so much the first was ahead of the second behind a wait.
QByteArray g_flushed;    ///< What was asked to be on the disk, in order: 'f' for a file, 'd' for a folder.

int failed(int error, const std::function<void()>& behind = {})
{
    if (behind)
        behind();
    errno = error;
    return -1;
}

} // namespace

// These stand before the system's own for everything that is linked into this program.
extern "C" {

int fsync(int file)
{
    if (g_storage.fsync != 0)
        return failed(g_storage.fsync);
    struct stat info = {};
    ::fstat(file, &info);
    g_flushed += S_ISDIR(info.st_mode) ? 'd' : 'f';
    return static_cast<int>(::syscall(SYS_fsync, file));
}

int sync_file_range(int, off64_t offset, off64_t bytes, unsigned how)
{
    if (how & SYNC_FILE_RANGE_WRITE)
        g_handedOver = offset == g_handedOver ? offset + bytes : -1;
    if (how & SYNC_FILE_RANGE_WAIT_BEFORE) {
        QThread::msleep(g_storage.waitMs);
        g_awaited = offset == g_awaited ? offset + bytes : -1;
        g_mostAhead = std::max(g_mostAhead, g_handedOver - g_awaited);
        if (g_storage.wait != 0)
            return failed(std::exchange(g_storage.wait, 0));
    }
    return 0;
}

int renameat2(int oldFolder, const char* from, int newFolder, const char* to, unsigned flags) noexcept
{
    if (flags != 0 && g_storage.exclusiveRename != 0)
        return failed(g_storage.exclusiveRename, g_storage.behindRename);
    return static_cast<int>(::syscall(SYS_renameat2, oldFolder, from, newFolder, to, flags));
}

int link(const char* from, const char* to) noexcept
{
    if (g_storage.link != 0)
        return failed(g_storage.link, g_storage.behindLink);
    return static_cast<int>(::syscall(SYS_linkat, AT_FDCWD, from, AT_FDCWD, to, 0));
}

int rename(const char* from, const char* to) noexcept
{
    if (g_storage.rename != 0)
        return failed(g_storage.rename);
    return static_cast<int>(::syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}

} // extern "C"

namespace {

/// A folder with a finished file in it that is to get its name.
struct Place
{
    Place() { put(from, "ours"); }
    ~Place() { g_storage = {}; }

    static void put(const QByteArray& path, const QByteArray& text)
    {
        QFile file(QFile::decodeName(path));
        if (file.open(QIODevice::WriteOnly))
            file.write(text);
    }
    static QByteArray text(const QByteArray& path)
    {
        QFile file(QFile::decodeName(path));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("none");
    }
    QStringList names() const
    {
        return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

    QTemporaryDir folder;
    QByteArray from = QFile::encodeName(folder.filePath("made"));
    QByteArray to = QFile::encodeName(folder.filePath("song.wav"));
};

} // namespace

/// Names are taken in one step also where the storage knows no such step: nothing is replaced that nobody was
/// asked about, nothing is left behind, and what the storage refuses for good is told.
class TestStorageFaults : public QObject
{
    Q_OBJECT
private slots:
    void refusals_areToldFromFailures()
    {
        using Kind = Failure::Kind;
        const QTemporaryDir folder;
        StagedFile file;
        QVERIFY(file.create(folder.path(), "kept.bin"));
        for (const auto& [error, kind] : {std::pair(EACCES, Kind::NoPermission),
                                          {EPERM, Kind::NoPermission},
                                          {EROFS, Kind::NoPermission},
                                          {ENOSPC, Kind::WriteFailed},
                                          {EDQUOT, Kind::WriteFailed},
                                          {EIO, Kind::WriteFailed}}) {
            g_storage.fsync = error;
            const auto flushed = file.flush();
            g_storage = {};
            QVERIFY(!flushed);
            QCOMPARE(flushed.error(), (Failure{kind, folder.path()}));
        }
    }
    void file_thatIsKept_isOnTheDiskWithItsName()
    {
        const QTemporaryDir folder;
        g_flushed.clear();
        {
            StagedFile file;
            QVERIFY(file.create(folder.path(), "kept.bin"));
            QVERIFY(file.write("abc", 3));
            QVERIFY(file.flush());
            QCOMPARE(g_flushed, QByteArray("f"));
            QVERIFY(file.keep());
        }
        QCOMPARE(g_flushed, QByteArray("fd")); // the name as well
        QVERIFY(QFile::exists(folder.filePath("kept.bin")));
    }
    void file_isAheadOfItsStorage_byATenthOfASecond_data()
    {
        QTest::addColumn<int>("waitMs");
        QTest::addColumn<int>("megabytes");
        QTest::newRow("8 MB in half a second: a step") << 500 << 8;
        QTest::newRow("8 MB in 40 ms: 20 MB, and what a loaded machine loses") << 40 << 21;
        QTest::newRow("at once: no more than that") << 0 << 64;
    }
    void file_isAheadOfItsStorage_byATenthOfASecond()
    {
        QFETCH(int, waitMs);
        QFETCH(int, megabytes);
        constexpr qint64 kMegabyte = 1 << 20;
        const QTemporaryDir folder;
        g_handedOver = g_awaited = g_mostAhead = 0;
        g_storage.waitMs = static_cast<unsigned long>(waitMs);
        StagedFile file;
        QVERIFY(file.create(folder.path(), "long.bin"));
        const QByteArray step(kMegabyte, 's');
        for (int i = 0; i < (waitMs > 100 ? 32 : 160); ++i)
            QVERIFY(file.write(step.constData(), step.size()));
        g_storage = {};
        const QByteArray told = QByteArray::number(g_mostAhead / kMegabyte) + " MB ahead";
        QVERIFY2(g_mostAhead >= 8 * kMegabyte && g_mostAhead <= megabytes * kMegabyte, told);
        if (waitMs == 0)
            QVERIFY2(g_mostAhead > 16 * kMegabyte, told);
        QVERIFY(g_handedOver - g_awaited <= megabytes * kMegabyte);
    }
    void file_thatDidNotArrive_isToldAtOnce_data()
    {
        QTest::addColumn<int>("error");
        QTest::addColumn<bool>("arrives");
        QTest::newRow("a bad block") << EIO << false;
        QTest::newRow("a full server") << ENOSPC << false;
        QTest::newRow("more than the account may have") << EDQUOT << false;
        QTest::newRow("a file that the server lost") << ESTALE << false;
        QTest::newRow("a system without the call") << ENOSYS << true;
        QTest::newRow("a storage without the call") << EINVAL << true;
    }
    void file_thatDidNotArrive_isToldAtOnce()
    {
        QFETCH(int, error);
        QFETCH(bool, arrives);
        const QTemporaryDir folder;
        StagedFile file;
        QVERIFY(file.create(folder.path(), "long.bin"));
        g_handedOver = g_awaited = 0;
        g_storage.wait = error;
        const QByteArray step(8 << 20, 's');
        Outcome<> written;
        for (int i = 0; i < 4 && written; ++i)
            written = file.write(step.constData(), step.size());
        QCOMPARE(g_storage.wait, 0);
        QCOMPARE(static_cast<bool>(written), arrives);
        if (!arrives)
            QCOMPARE(written.error().kind, Failure::Kind::WriteFailed);
        g_storage = {};
    }
    void names_onEveryStorage_areGivenAndNeverTaken_data()
    {
        QTest::addColumn<int>("exclusiveRename");
        QTest::addColumn<int>("link");
        QTest::newRow("all there is") << 0 << 0;
        QTest::newRow("no flags") << EINVAL << 0;
        QTest::newRow("no such call") << ENOSYS << 0;
        QTest::newRow("no flags, no links") << EINVAL << EPERM;
        QTest::newRow("no such call, no links") << ENOSYS << EOPNOTSUPP;
        QTest::newRow("no more links") << EINVAL << EMLINK;
    }
    void names_onEveryStorage_areGivenAndNeverTaken()
    {
        QFETCH(const int, exclusiveRename);
        QFETCH(const int, link);
        Place place;
        g_storage.exclusiveRename = exclusiveRename;
        g_storage.link = link;

        QVERIFY(giveName(place.from, place.to));
        QCOMPARE(place.names(), QStringList{"song.wav"});
        QCOMPARE(Place::text(place.to), QByteArray("ours"));

        Place::put(place.from, "second");
        QVERIFY(!giveName(place.from, place.to));
        QCOMPARE(errno, EEXIST);
        QCOMPARE(Place::text(place.to), QByteArray("ours"));
        QCOMPARE(Place::text(place.from), QByteArray("second"));

        const NameBearer seen = bearerOf(place.to);
        QVERIFY(giveName(place.from, place.to, seen));
        QCOMPARE(Place::text(place.to), QByteArray("second"));
        QCOMPARE(place.names(), QStringList{"song.wav"});

        Place::put(place.from, "third");
        QVERIFY(!giveName(place.from, place.to, seen));
        QCOMPARE(errno, EEXIST);
        QCOMPARE(Place::text(place.to), QByteArray("second"));
        QCOMPARE(Place::text(place.from), QByteArray("third"));
    }

    void name_takenBetweenTwoTries_isLeftToItsOwner_data()
    {
        QTest::addColumn<bool>("behindLink");
        QTest::newRow("before the link") << false;
        QTest::newRow("before the empty file") << true;
    }
    void name_takenBetweenTwoTries_isLeftToItsOwner()
    {
        QFETCH(const bool, behindLink);
        Place place;
        g_storage.exclusiveRename = EINVAL;
        const auto other = [&place] { Place::put(place.to, "another program's"); };
        if (behindLink) {
            g_storage.link = EPERM;
            g_storage.behindLink = other;
        } else {
            g_storage.behindRename = other;
        }
        QVERIFY(!giveName(place.from, place.to));
        QCOMPARE(errno, EEXIST);
        QCOMPARE(Place::text(place.to), QByteArray("another program's"));
        QCOMPARE(Place::text(place.from), QByteArray("ours"));
    }

    void move_refusedAtItsLastStep_leavesNoEmptyFile()
    {
        Place place;
        g_storage.exclusiveRename = EINVAL;
        g_storage.link = EPERM;
        g_storage.rename = EIO;
        QVERIFY(!giveName(place.from, place.to));
        QCOMPARE(errno, EIO);
        QCOMPARE(place.names(), QStringList{"made"});
        QCOMPARE(Place::text(place.from), QByteArray("ours"));
    }

    void refusal_ofTheNameItself_isNotGoneAround()
    {
        Place place;
        g_storage.exclusiveRename = EACCES;
        QVERIFY(!giveName(place.from, place.to));
        QCOMPARE(errno, EACCES);
        QCOMPARE(place.names(), QStringList{"made"});
    }
};

QTEST_GUILESS_MAIN(TestStorageFaults)
#include "tst_storagefaults.moc"
