#include "common/StagedFile.h"

#include "fakes/OpenFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <functional>

using zib::StagedFile;

namespace {

QByteArray content(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("missing");
}

void put(const QString& path, const QByteArray& text)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
}

QStringList entries(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

} // namespace

class TestStagedFile : public QObject
{
    Q_OBJECT
private slots:
    void keep_whenTheNameIsTaken_leavesTheOtherFile()
    {
        QTemporaryDir folder;
        StagedFile file;
        QVERIFY(bool(file.create(folder.path(), "Track1.wav")));
        QVERIFY(bool(file.write("new", 3)));
        put(folder.filePath("Track1.wav"), "old");
        QVERIFY(!file.keep());
        QCOMPARE(content(folder.filePath("Track1.wav")), QByteArray("old"));
    }

    void dropped_withoutKeep_leavesNothing()
    {
        QTemporaryDir folder;
        {
            StagedFile file;
            QVERIFY(bool(file.create(folder.path(), "Track1.wav")));
            QVERIFY(bool(file.write("new", 3)));
        }
        QCOMPARE(entries(folder.path()), QStringList());
    }

    /// And what bears the old name since is left alone.
    void dropped_inAFolderThatWasMoved_leavesNothing()
    {
        const QTemporaryDir place;
        const QString folder = place.filePath("Images");
        const QString moved = place.filePath("Old images");
        QVERIFY(QDir().mkpath(folder));
        {
            StagedFile file;
            QVERIFY(file.create(folder, "Disc.bin"));
            QVERIFY(QDir().rename(folder, moved));
            QVERIFY(QDir().mkpath(folder));
            put(folder + "/.Disc.bin.part", "a stranger's");
        }
        QCOMPARE(entries(moved), QStringList());
        QCOMPARE(content(folder + "/.Disc.bin.part"), QByteArray("a stranger's"));
    }

    void removed_whenItHasNoNameAnyMore_touchesNothing()
    {
        const QTemporaryDir folder;
        StagedFile file;
        QVERIFY(file.create(folder.path(), "Disc.bin"));
        QVERIFY(QFile::remove(file.currentPath()));
        put(file.currentPath(), "a stranger's");
        file.remove();
        QCOMPARE(content(folder.filePath(".Disc.bin.part")), QByteArray("a stranger's"));
    }

    void everyWayOut_closesTheFile()
    {
        QTemporaryDir folder;
        const qsizetype before = zib::openFiles();
        StagedFile file;
        for (const auto& leave : {std::function([&] { file.remove(); }), std::function([&] {
                                      file.makeNameless();
                                      file.remove();
                                  }),
                                  std::function([&] { QVERIFY(bool(file.keep())); })}) {
            QVERIFY(bool(file.create(folder.path(), "Track1.wav")));
            QVERIFY(zib::openFiles() > before);
            leave();
            QCOMPARE(zib::openFiles(), before);
        }
        QCOMPARE(entries(folder.path()), QStringList("Track1.wav"));
    }

    void leftOver_ofAKilledRun_isRemoved_butNotOneBeingWritten()
    {
        QTemporaryDir folder;
        put(folder.filePath(".Track[1].wav.part"), "dead");
        StagedFile alive;
        QVERIFY(bool(alive.create(folder.path(), "Track2.wav")));
        StagedFile::removeLeftOver(folder.path(), "Track[1].wav");
        StagedFile::removeLeftOver(folder.path(), "Track2.wav");
        StagedFile::removeLeftOver(folder.path(), "Track3.wav");
        QCOMPARE(entries(folder.path()), QStringList(".Track2.wav.part"));
    }
};

QTEST_GUILESS_MAIN(TestStagedFile)
#include "tst_stagedfile.moc"
