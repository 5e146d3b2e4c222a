#include "app/ProjectFile.h"
#include "common/GenralMacro.h"
#include "fakes/FakeSeams.h"
#include "platform/IniFile.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>

/// Project files on the real INI service, with real files behind their paths.
class TestProjectFile : public QObject
{
    Q_OBJECT
private slots:
    void write_ofThreeTracks_givesTheStatedFile();
    void write_overALongerProject_keepsItsHigherKeysAndOtherSections();
    void read_afterAShorterSave_givesTheShorterList();
    void read_ofACount_refusesWhatIsNotOneTo200_data();
    void read_ofACount_refusesWhatIsNotOneTo200();
    void read_ofAMissingFile_isRefused();
    void read_withAKeyMissing_passesOverIt();
    void read_ofFilesThatAreGone_passesOverThem();
    void read_ofAFolderOrDevice_passesOverIt();
    void read_ofAProjectFromAnotherSystem_givesWhatIsThere();
    void read_twice_givesTheSame();
    void write_of200Files_comesBackWhole();
    void write_of201Files_isRefusedWhenRead();
    void path_ofAHostileName_comesBackAsItWent_data();
    void path_ofAHostileName_comesBackAsItWent();
    void path_of4000Bytes_comesBackAsItWent();
    void path_withLineBreaks_comesBackAsItWent();
    void path_thatNoLineHolds_isNamedAndPassedOver_data();
    void path_thatNoLineHolds_isNamedAndPassedOver();
    void path_thatIsNotUnicode_isPassedOver();
    void write_onAFullDisk_leavesTheOldFileWhole();
    void write_intoAMissingFolder_fails();
    void write_ofAllKeys_isOneReplacement();
    void read_ofAHugeProject_readsItOnce();
};

namespace {

struct Desk
{
    Desk() { QDir(folder.path()).mkdir("music"); }
    /// Makes a file. @returns its path.
    QString track(const QString& name) const
    {
        QFile file(folder.filePath("music/" + name));
        if (!file.open(QIODevice::WriteOnly))
            qFatal("Cannot make %s", qPrintable(file.fileName()));
        return file.fileName();
    }
    QStringList tracks(int count) const
    {
        QStringList paths;
        for (int i = 1; i <= count; ++i)
            paths << track(QString("track %1.wav").arg(i));
        return paths;
    }
    void write(const QByteArray& text) const
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("Cannot write the project");
        file.write(text);
    }
    QByteArray content() const
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QStringList read() const
    {
        const auto files = project.read();
        return files ? *files : QStringList{"refused"};
    }
    QStringList refusedBy(const QStringList& paths) const
    {
        const auto refused = project.write(paths);
        return refused ? *refused : QStringList{"failed"};
    }

    QTemporaryDir folder;
    zib::IniFile ini;
    zib::FakeDesk fakes{&ini};
    QString path = folder.filePath("a.zibp");
    zib::ProjectFile project{path};
};

/// A disk that is full after some bytes, for as long as this lives.
struct FullDisk
{
    explicit FullDisk(rlim_t bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &before);
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{bytes, before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { ::setrlimit(RLIMIT_FSIZE, &before); }
    rlimit before{};
};

} // namespace

void TestProjectFile::write_ofThreeTracks_givesTheStatedFile()
{
    Desk desk;
    QCOMPARE(desk.refusedBy({"C:\\Music\\Intro.mp3", "C:\\Music\\Song two.wav", "D:\\Live\\Encore.mp3"}),
             QStringList());
    QCOMPARE(desk.content(), QByteArray("[General]\nFileCount=3\n[Files]\nFile1=C:\\Music\\Intro.mp3\n"
                                        "File2=C:\\Music\\Song two.wav\nFile3=D:\\Live\\Encore.mp3\n"));
}

void TestProjectFile::write_overALongerProject_keepsItsHigherKeysAndOtherSections()
{
    Desk desk;
    desk.write("; mine\r\n[Notes]\r\nx=1\r\n[General]\r\nFileCount=5\r\n[Files]\r\nFile1=/1\r\nFile2=/2\r\n"
               "File3=/3\r\nFile4=/4\r\nFile5=/5\r\n");
    QCOMPARE(desk.refusedBy({"/a", "/b", "/c"}), QStringList());
    QCOMPARE(desk.content(), QByteArray("; mine\r\n[Notes]\r\nx=1\r\n[General]\r\nFileCount=3\r\n[Files]\r\n"
                                        "File1=/a\r\nFile2=/b\r\nFile3=/c\r\nFile4=/4\r\nFile5=/5\r\n"));
}

void TestProjectFile::read_afterAShorterSave_givesTheShorterList()
{
    Desk desk;
    const QStringList five = desk.tracks(5);
    QCOMPARE(desk.refusedBy(five), QStringList());
    QCOMPARE(desk.read(), five);
    QCOMPARE(desk.refusedBy(five.mid(1, 3)), QStringList());
    QCOMPARE(desk.read(), five.mid(1, 3));
}

void TestProjectFile::read_ofACount_refusesWhatIsNotOneTo200_data()
{
    QTest::addColumn<QByteArray>("count");
    QTest::addColumn<bool>("opens");
    const auto row = [](const char* count, bool opens) {
        QTest::newRow(count) << QByteArray(count) << opens;
    };
    row("1", true);
    row("200", true);
    row(" 2 ", true);
    row("\"2\"", true);
    row("0", false);
    row("-1", false);
    row("201", false);
    row("99999999999", false);
    row("three", false);
    row("", false);
}

void TestProjectFile::read_ofACount_refusesWhatIsNotOneTo200()
{
    QFETCH(QByteArray, count);
    QFETCH(bool, opens);
    Desk desk;
    const QString track = desk.track("a.wav");
    desk.write("[General]\nFileCount=" + count + "\n[Files]\nFile1=" + track.toUtf8() + "\n");
    QCOMPARE(desk.read(), opens ? QStringList{track} : QStringList{"refused"});
}

void TestProjectFile::read_ofAMissingFile_isRefused()
{
    Desk desk;
    QCOMPARE(desk.read(), QStringList{"refused"});
    desk.write("[Files]\nFile1=/a\n");
    QCOMPARE(desk.read(), QStringList{"refused"});
    QCOMPARE(desk.project.read().error().kind, zib::Failure::Kind::BadValue);
}

void TestProjectFile::read_withAKeyMissing_passesOverIt()
{
    Desk desk;
    const QString track = desk.track("b.wav");
    desk.write("[General]\nFileCount=2\n[Files]\nFile2=" + track.toUtf8() + "\n");
    QCOMPARE(desk.read(), QStringList{track});
}

void TestProjectFile::read_ofFilesThatAreGone_passesOverThem()
{
    Desk desk;
    const QStringList three = desk.tracks(3);
    QCOMPARE(desk.refusedBy(three), QStringList());
    QFile::remove(three[1]);
    QCOMPARE(desk.read(), (QStringList{three[0], three[2]}));
    QFile::remove(three[0]);
    QFile::remove(three[2]);
    QCOMPARE(desk.read(), QStringList());
}

void TestProjectFile::read_ofAFolderOrDevice_passesOverIt()
{
    Desk desk;
    const QString pipe = desk.folder.filePath("pipe");
    QCOMPARE(::mkfifo(qPrintable(pipe), 0600), 0);
    QCOMPARE(desk.refusedBy({desk.folder.path(), "/dev/zero", pipe}), QStringList());
    QCOMPARE(desk.read(), QStringList());
}

void TestProjectFile::read_ofAProjectFromAnotherSystem_givesWhatIsThere()
{
    Desk desk;
    const QString track = desk.track("Größe 音.mp3");
    QByteArray text("\xFF\xFE", 2);
    const QString lines = "[general]\r\nfilecount=3\r\n[FILES]\r\nfile1=C:\\Music\\a.mp3\r\nFILE2=" + track +
                          "\r\nFile3=\\\\server\\b.mp3\r\n";
    text += QByteArray(reinterpret_cast<const char*>(lines.utf16()), lines.size() * 2);
    desk.write(text);
    QCOMPARE(desk.read(), QStringList{track});
}

void TestProjectFile::read_twice_givesTheSame()
{
    Desk desk;
    QCOMPARE(desk.refusedBy(desk.tracks(4)), QStringList());
    const QByteArray before = desk.content();
    QCOMPARE(desk.read(), desk.read());
    QCOMPARE(desk.content(), before);
}

void TestProjectFile::write_of200Files_comesBackWhole()
{
    Desk desk;
    const QStringList tracks = desk.tracks(200);
    QCOMPARE(desk.refusedBy(tracks), QStringList());
    QCOMPARE(desk.read(), tracks);
}

void TestProjectFile::write_of201Files_isRefusedWhenRead()
{
    Desk desk;
    QCOMPARE(desk.refusedBy(desk.tracks(201)), QStringList());
    QVERIFY(desk.content().contains("FileCount=201\n"));
    QVERIFY(desk.content().contains("\nFile201="));
    QCOMPARE(desk.read(), QStringList{"refused"});
}

void TestProjectFile::path_ofAHostileName_comesBackAsItWent_data()
{
    QTest::addColumn<QString>("name");
    const QStringList names{
        "a=b.wav",
        "=.wav",
        "a;b.wav",
        "; comment.wav",
        "[General].wav",
        "a]b.wav",
        "[x",
        "\"quoted\".wav",
        "'single'",
        "\"both\"",
        "\"",
        "\"\"",
        "one\"",
        " leading.wav",
        "trailing.wav ",
        "   ",
        "\ttab.wav\t",
        "tab\t",
        "FileCount=1",
        "a\\b.wav",
        "C:\\a.wav",
        "%00.wav",
        "&amp;.wav",
        "a\u2028b.wav",
        "Größe.wav",
        "音楽.mp3",
        "🎵.mp3",
        "e\u0301.wav",
        "\u00E9.wav",
        "\u00A0nbsp\u00A0",
        "a\x01"
        "b.wav",
        "a\x1A"
        "b.wav",
        "\uFEFFbom.wav",
        "a\vb\fc.wav",
        "-rf",
        "$(x)`y`.wav",
    };
    for (const QString& name : names)
        QTest::newRow(qPrintable(name)) << name;
}

void TestProjectFile::path_ofAHostileName_comesBackAsItWent()
{
    QFETCH(QString, name);
    Desk desk;
    const QStringList tracks{desk.track("before.wav"), desk.track(name), desk.track("after.wav")};
    QCOMPARE(desk.refusedBy(tracks), QStringList());
    QCOMPARE(desk.read(), tracks);

    // The bare name, whose first letter is the hostile one, is taken from the application folder.
    const zib::GlobalsScope globals;
    zib::setApplicationFolder(desk.folder.filePath("music"));
    QCOMPARE(desk.refusedBy({name, tracks[2]}), QStringList());
    QCOMPARE(desk.read(), tracks.mid(1));
}

void TestProjectFile::path_of4000Bytes_comesBackAsItWent()
{
    Desk desk;
    QString folder = desk.folder.path();
    while (folder.size() < 3780) {
        folder += '/' + QString(200, 'd');
        QVERIFY(QDir().mkdir(folder));
    }
    const QString path = folder + '/' + QString(3999 - folder.size(), 'f');
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(path.size(), 4000);
    QCOMPARE(desk.refusedBy({path}), QStringList());
    QCOMPARE(desk.read(), QStringList{path});
}

void TestProjectFile::path_withLineBreaks_comesBackAsItWent()
{
    Desk desk;
    QStringList tracks{desk.track("plain.wav")};
    for (const char* name : {"a\n[General]\nFileCount=9.wav", "a\rb.wav", "\n", "100% \n %0A #1?.wav"})
        tracks << desk.track(name);
    QCOMPARE(desk.refusedBy(tracks), QStringList());
    QCOMPARE(desk.content().count('\n'), 3 + tracks.size());
    QCOMPARE(desk.read(), tracks);
    QCOMPARE(desk.refusedBy({"relative\n.wav"}), QStringList{"relative\n.wav"});
}

void TestProjectFile::path_thatNoLineHolds_isNamedAndPassedOver_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("nul") << QString::fromLatin1("/music/a\0b.wav", 14);
    QTest::newRow("half a pair") << "/music/" + QString(QChar(0xD800));
    QTest::newRow("empty") << QString();
}

void TestProjectFile::path_thatNoLineHolds_isNamedAndPassedOver()
{
    QFETCH(QString, path);
    Desk desk;
    const QString first = desk.track("1.wav");
    const QString last = desk.track("3.wav");
    QCOMPARE(desk.refusedBy({first, desk.track("old.wav"), last}), QStringList());
    QCOMPARE(desk.refusedBy({first, path, last}), QStringList{path});
    QCOMPARE(desk.content().count('\n'), 5);
    QCOMPARE(desk.read(), (QStringList{first, last}));
}

void TestProjectFile::path_thatIsNotUnicode_isPassedOver()
{
    Desk desk;
    const QString last = desk.track("2.wav");
    QFile file(desk.folder.filePath("music"));
    desk.write("[General]\nFileCount=2\n[Files]\nFile1=/music/\xFF\xFE.wav\nFile2=" + last.toUtf8() + "\n");
    QCOMPARE(desk.read(), QStringList{last});
}

void TestProjectFile::write_onAFullDisk_leavesTheOldFileWhole()
{
    Desk desk;
    QCOMPARE(desk.refusedBy(desk.tracks(50)), QStringList());
    const QByteArray before = desk.content();
    {
        const FullDisk full(static_cast<rlim_t>(before.size()));
        QCOMPARE(desk.refusedBy(desk.tracks(60)), QStringList{"failed"});
    }
    QCOMPARE(desk.content(), before);
    QCOMPARE(QDir(desk.folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"a.zibp"});
}

void TestProjectFile::write_intoAMissingFolder_fails()
{
    Desk desk;
    const auto result = zib::ProjectFile(desk.folder.filePath("none/a.zibp")).write({"/a"});
    QVERIFY(!result);
    QCOMPARE(result.error().kind, zib::Failure::Kind::NotFound);
    QCOMPARE(result.error().detail, desk.folder.filePath("none/a.zibp"));
}

void TestProjectFile::write_ofAllKeys_isOneReplacement()
{
    struct Counting final : zib::IniService
    {
        QByteArray GetPrivateProfileStringA(const QByteArray&, const QByteArray&, const QByteArray& fallback,
                                            int, const QString&) override
        {
            return fallback;
        }
        bool WritePrivateProfileStringA(const QByteArray&, const std::optional<QByteArray>&,
                                        const std::optional<QByteArray>&, const QString&) override
        {
            ++single;
            return true;
        }
        bool writeAll(const QList<zib::IniChange>& changes, const QString&) override
        {
            sizes << changes.size();
            return true;
        }
        int single = 0;
        QList<qsizetype> sizes;
    } ini;
    zib::FakeDesk desk(&ini);
    QVERIFY(zib::ProjectFile("/p.zibp").write({"/a", "/b"}));
    QCOMPARE(ini.sizes, QList<qsizetype>{3});
    QCOMPARE(ini.single, 0);
}

void TestProjectFile::read_ofAHugeProject_readsItOnce()
{
    Desk desk;
    const QStringList tracks = desk.tracks(200);
    QCOMPARE(desk.refusedBy(tracks), QStringList());
    QByteArray text = desk.content();
    for (int i = 0; i < 60000; ++i)
        text += "Remark" + QByteArray::number(i) + "=of somebody who likes to write much\n";
    desk.write(text);
    QVERIFY(text.size() > 2000000);
    QElapsedTimer clock;
    clock.start();
    zib::IniFile().GetPrivateProfileStringA("Files", "Remark59999", {}, 100, desk.path);
    const qint64 oneMs = clock.restart();
    QCOMPARE(desk.read(), tracks);
    qInfo("one key: %lld ms, the project of 200: %lld ms", oneMs, clock.elapsed());
    QVERIFY(clock.elapsed() < 10 * oneMs + 1000);
}

QTEST_GUILESS_MAIN(TestProjectFile)
#include "tst_projectfile.moc"
