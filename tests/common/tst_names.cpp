#include "common/NameBearer.h"
#include "common/ReservedNames.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <cstdio>

using namespace zib;

namespace {

QByteArray content(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("missing");
}

QByteArray put(const QString& path, const QByteArray& text)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(text);
    return QFile::encodeName(path);
}

QStringList entries(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

/// Another running instance that takes names of a folder and keeps them.
struct Other
{
    explicit Other(const QString& folder)
    {
        program.start(QCoreApplication::applicationFilePath(), {"--take", folder});
    }
    ~Other()
    {
        program.closeWriteChannel();
        program.waitForFinished();
    }
    /// "yes" or "no".
    QByteArray take(const QByteArray& name)
    {
        program.write(name + '\n');
        return program.waitForReadyRead() ? program.readAllStandardOutput().trimmed() : "silent";
    }

    QProcess program;
};

int takeNames(const QString& folder)
{
    ReservedNames names(folder);
    QFile in;
    if (!in.open(stdin, QIODevice::ReadOnly))
        return 1;
    for (QByteArray line = in.readLine(); !line.isEmpty(); line = in.readLine()) {
        std::puts(names.take(QString::fromUtf8(line.trimmed())) ? "yes" : "no");
        std::fflush(stdout);
    }
    return 0;
}

} // namespace

/// Names that several programs want at once.
class TestNames : public QObject
{
    Q_OBJECT
private slots:
    void take_inTwoPrograms_givesANameOnce()
    {
        QTemporaryDir folder;
        Other other(folder.path());
        QCOMPARE(other.take("song.wav"), QByteArray("yes"));
        ReservedNames ours(folder.path());
        QVERIFY(!ours.take("song.wav"));
        QVERIFY(!ours.take("Song.WAV"));
        QVERIFY(ours.take("song-1.wav"));
        QCOMPARE(other.take("song-1.wav"), QByteArray("no"));
        QCOMPARE(other.take("song-2.wav"), QByteArray("yes"));
    }

    void take_ofANameThatAFileBears_fails()
    {
        QTemporaryDir folder;
        put(folder.filePath("song.wav"), "x");
        QFile::link("/nowhere", folder.filePath("link.wav"));
        ReservedNames ours(folder.path());
        QVERIFY(!ours.take("song.wav"));
        QVERIFY(!ours.take("link.wav"));
    }

    void names_ofAKilledProgram_areFreeAgain()
    {
        QTemporaryDir folder;
        Other other(folder.path());
        QCOMPARE(other.take("song.wav"), QByteArray("yes"));
        other.program.kill();
        QVERIFY(other.program.waitForFinished());
        ReservedNames ours(folder.path());
        QVERIFY(ours.take("song.wav"));
    }

    void lastUser_leavesNothingInTheFolder()
    {
        QTemporaryDir folder;
        auto first = std::make_unique<ReservedNames>(folder.path());
        QVERIFY(first->take("a.wav"));
        {
            Other other(folder.path());
            QCOMPARE(other.take("b.wav"), QByteArray("yes"));
            first.reset();
            ReservedNames third(folder.path());
            QVERIFY(!third.take("b.wav"));
        }
        QCOMPARE(entries(folder.path()), QStringList());
    }

    void take_whereNothingCanBeLocked_givesFreeNames()
    {
        ReservedNames nowhere("/nowhere/at/all");
        QVERIFY(nowhere.take("song.wav"));
    }

    void giveName_toAFreeName_neverReplaces()
    {
        QTemporaryDir folder;
        const QByteArray from = put(folder.filePath("from"), "new");
        const QByteArray to = put(folder.filePath("to"), "old");
        QVERIFY(!giveName(from, to));
        QCOMPARE(errno, EEXIST);
        QCOMPARE(content(folder.filePath("to")), QByteArray("old"));
        QCOMPARE(content(folder.filePath("from")), QByteArray("new"));
        QVERIFY(QFile::remove(folder.filePath("to")));
        QVERIFY(giveName(from, to));
        QCOMPARE(entries(folder.path()), QStringList("to"));
        QCOMPARE(content(folder.filePath("to")), QByteArray("new"));
    }

    void giveName_inPlaceOfAFile_replacesThatOneOnly()
    {
        QTemporaryDir folder;
        const QByteArray from = put(folder.filePath("from"), "new");
        const QByteArray to = put(folder.filePath("to"), "old");
        const NameBearer seen = bearerOf(to);
        put(folder.filePath("beside"), "another");
        QVERIFY(QFile::rename(folder.filePath("to"), folder.filePath("away")));
        QVERIFY(QFile::rename(folder.filePath("beside"), folder.filePath("to")));
        QVERIFY(!giveName(from, to, seen));
        QCOMPARE(content(folder.filePath("to")), QByteArray("another"));
        QVERIFY(giveName(from, to, bearerOf(to)));
        QCOMPARE(content(folder.filePath("to")), QByteArray("new"));
        QCOMPARE(entries(folder.path()), (QStringList{"away", "to"}));
    }
};

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 3 && arguments[1] == "--take")
        return takeNames(arguments[2]);
    TestNames test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_names.moc"
