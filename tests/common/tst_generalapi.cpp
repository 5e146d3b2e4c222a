#include "common/GeneralAPI.h"
#include "fakes/FakeSeams.h"
#include "platform/IniFile.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

/// The utilities that every window uses.
class TestGeneralAPI : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void defaultFile_isBuiltOnceFromFolderAndProgram();
    void read_ofAValue_isCleaned_data();
    void read_ofAValue_isCleaned();
    void read_withoutAKey_givesTheCleanedDefault();
    void read_ofALongValue_isCutAt2047Bytes();
    void read_withoutAService_givesTheDefault();
    void readMany_ofKeys_givesWhatEachReadingGives();
    void values_thatAreNoUtf8_keepTheirBytes();
    void write_ofAValue_isCleaned_data();
    void write_ofAValue_isCleaned();
    void write_ofTheEmptyText_deletesTheKey();
    void write_ofAnEmptyKey_deletesTheSection();
    void write_toAnUnwritableFile_givesFalseAndNoMessage();
    void joinPath_ofFolderAndName_hasOneSeparator_data();
    void joinPath_ofFolderAndName_hasOneSeparator();
    void pathParts_ofAPath_splitAtItsLastSeparator_data();
    void pathParts_ofAPath_splitAtItsLastSeparator();
    void makeFolder_ofANativePath_makesEveryParent_data();
    void makeFolder_ofANativePath_makesEveryParent();
    void makeFolder_ofABackslashPath_skipsEmptyParts();
    void makeFolder_belowAFolderWithBlanks_goesIntoIt();
    void makeFolder_thatExists_saysNothing();
    void makeFolder_thatFails_namesTheWholePathAndKeepsWhatWasMade();
    void browse_always_showsTheSameTitle();
    void browse_withAFolder_startsThere();
    void settingFolder_isTakenFromTheApplicationFolder_data();
    void settingFolder_isTakenFromTheApplicationFolder();
    void duration_ofMilliseconds_isTruncated_data();
    void duration_ofMilliseconds_isTruncated();
    void shell_calls_handOverWhatIsStated();
    void comboData_ofASelection_isItsNumber();
    void checkBox_values_areOnlyCheckedAndUnchecked();
    void formatLists_whenFilledTwice_holdTheirEntriesOnce();
    void withoutServices_nothingHappens();

private:
    QByteArray content(const QString& name) const;
    void put(const QString& name, const QByteArray& text) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    zib::IniFile m_ini;
};

void TestGeneralAPI::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

QByteArray TestGeneralAPI::content(const QString& name) const
{
    QFile file(m_folder->filePath(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

void TestGeneralAPI::put(const QString& name, const QByteArray& text) const
{
    QFile file(m_folder->filePath(name));
    if (!file.open(QIODevice::WriteOnly))
        qFatal("Cannot write %s", qPrintable(name));
    file.write(text);
}

void TestGeneralAPI::defaultFile_isBuiltOnceFromFolderAndProgram()
{
    zib::FakeDesk desk(&m_ini);
    zib::setApplicationFolder(m_folder->path());
    QVERIFY(GeneralAPI::WriteIniString("s", "k", "1"));
    QCOMPARE(content("tst_generalapi.ini"), QByteArray("[s]\nk=1\n"));
    QCOMPARE(GeneralAPI::ReadIniString("s", "k", "DEF"), QString("1"));
    zib::setApplicationFolder("/elsewhere");
    QCOMPARE(GeneralAPI::ReadIniString("s", "k", "DEF", ""), QString("1"));
}

void TestGeneralAPI::read_ofAValue_isCleaned_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<QString>("read");
    QTest::newRow("plain") << QByteArray("C:\\Music") << "C:\\Music";
    QTest::newRow("blanks round it") << QByteArray("   C:\\Music   ") << "C:\\Music";
    QTest::newRow("blanks in quotes") << QByteArray("\"  a  \"") << "a";
    QTest::newRow("nul inside") << QByteArray("a\0b\0", 4) << "ab";
    QTest::newRow("nul between blanks") << QByteArray("\" \0 a\"", 6) << "a";
    QTest::newRow("empty") << QByteArray("") << "";
    QTest::newRow("tab in quotes stays") << QByteArray("\"\ta\"") << "\ta";
    QTest::newRow("no-break space stays") << QByteArray("\xC2\xA0"
                                                        "a")
                                          << QString("\u00A0a");
    QTest::newRow("utf-8") << QByteArray("Größe 音🎵") << "Größe 音🎵";
}

void TestGeneralAPI::read_ofAValue_isCleaned()
{
    QFETCH(QByteArray, stored);
    zib::FakeDesk desk(&m_ini);
    put("a.ini", "[s]\nk=" + stored + "\n");
    QTEST(GeneralAPI::ReadIniString("s", "k", "DEF", m_folder->filePath("a.ini")), "read");
}

void TestGeneralAPI::read_withoutAKey_givesTheCleanedDefault()
{
    zib::FakeDesk desk(&m_ini);
    const QString file = m_folder->filePath("none.ini");
    QCOMPARE(GeneralAPI::ReadIniString("s", "k", "  d e f  ", file), QString("d e f"));
    QCOMPARE(GeneralAPI::ReadIniString("s", "k", "", file), QString(""));
    QVERIFY(!QFile::exists(file));
}

void TestGeneralAPI::read_ofALongValue_isCutAt2047Bytes()
{
    zib::FakeDesk desk(&m_ini);
    put("a.ini", "[s]\nk=" + QByteArray(3000, 'x') + "\nu=" + QByteArray(2046, 'x') + "ö\n");
    const QString file = m_folder->filePath("a.ini");
    QCOMPARE(GeneralAPI::ReadIniString("s", "k", "", file), QString(2047, 'x'));
    QCOMPARE(GeneralAPI::ReadIniString("s", "u", "", file), QString(2046, 'x'));
}

void TestGeneralAPI::read_withoutAService_givesTheDefault()
{
    zib::FakeDesk desk;
    QCOMPARE(GeneralAPI::ReadIniString("s", "k", " def ", "/a.ini"), QString("def"));
    QVERIFY(!GeneralAPI::WriteIniString("s", "k", "1", "/a.ini"));
}

void TestGeneralAPI::write_ofAValue_isCleaned_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("plain") << "1" << QByteArray("k=1");
    QTest::newRow("blanks round it") << "  a b  " << QByteArray("k=a b");
    QTest::newRow("nul") << QString::fromLatin1("a\0b", 3) << QByteArray("k=ab");
    QTest::newRow("nul between blanks") << QString::fromLatin1(" \0 a \0", 6) << QByteArray("k=a");
    QTest::newRow("utf-8") << "Größe 音" << QByteArray("k=Größe 音");
}

void TestGeneralAPI::write_ofAValue_isCleaned()
{
    QFETCH(QString, value);
    QFETCH(QByteArray, line);
    zib::FakeDesk desk(&m_ini);
    QVERIFY(GeneralAPI::WriteIniString("s", "k", value, m_folder->filePath("a.ini")));
    QCOMPARE(content("a.ini"), "[s]\n" + line + "\n");
}

void TestGeneralAPI::write_ofTheEmptyText_deletesTheKey()
{
    zib::FakeDesk desk(&m_ini);
    const QString file = m_folder->filePath("a.ini");
    for (const QString& nothing : {QString(""), QString(), QString("   "), QString::fromLatin1(" \0 ", 3)}) {
        put("a.ini", "[s]\nk=1\nl=2\n");
        QVERIFY(GeneralAPI::WriteIniString("s", "k", nothing, file));
        QCOMPARE(content("a.ini"), QByteArray("[s]\nl=2\n"));
        QCOMPARE(GeneralAPI::ReadIniString("s", "k", "DEF", file), QString("DEF"));
    }
}

void TestGeneralAPI::write_ofAnEmptyKey_deletesTheSection()
{
    zib::FakeDesk desk(&m_ini);
    put("a.ini", "[s]\nk=1\n[t]\nl=2\n");
    QVERIFY(GeneralAPI::WriteIniString("s", "", "value", m_folder->filePath("a.ini")));
    QCOMPARE(content("a.ini"), QByteArray("[t]\nl=2\n"));
    QVERIFY(GeneralAPI::WriteIniString("t", "", "", m_folder->filePath("a.ini")));
    QCOMPARE(content("a.ini"), QByteArray(""));
}

void TestGeneralAPI::write_toAnUnwritableFile_givesFalseAndNoMessage()
{
    zib::FakeDesk desk(&m_ini);
    QVERIFY(!GeneralAPI::WriteIniString("s", "k", "1", m_folder->filePath("none/a.ini")));
    QCOMPARE(desk.messages.shown, QStringList());
}

void TestGeneralAPI::joinPath_ofFolderAndName_hasOneSeparator_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("joined");
    const auto row = [](const char* folder, const char* name, const char* joined) {
        QTest::newRow(qPrintable(QString("'%1' '%2'").arg(folder, name)))
            << QString(folder) << QString(name) << QString(joined);
    };
    row("C:\\Music\\", "a.wav", "C:\\Music\\a.wav");
    row("C:\\Music", "a.wav", "C:\\Music\\a.wav");
    row("C:", "a.wav", "C:\\a.wav");
    row("C:\\", "a.wav", "C:\\a.wav");
    row("\\\\server\\share", "a.wav", "\\\\server\\share\\a.wav");
    row("C:/Music", "a.wav", "C:/Music\\a.wav");
    row("   ", "a.wav", "a.wav");
    row("", "a.wav", "a.wav");
    row("/music", "a.wav", "/music/a.wav");
    row("/music/", "a.wav", "/music/a.wav");
    row("/", "a.wav", "/a.wav");
    row("music", "a.wav", "music/a.wav");
    row("/my\\music", "a.wav", "/my\\music/a.wav");
    row("/my\\music\\", "a.wav", "/my\\music\\/a.wav");
    row(" /music ", "a.wav", " /music /a.wav");
    row("/music", "", "/music/");
    row("/music", " a.wav ", "/music/ a.wav ");
    row("/music", "/a.wav", "/music//a.wav");
    row("/Größe", "音.mp3", "/Größe/音.mp3");
}

void TestGeneralAPI::joinPath_ofFolderAndName_hasOneSeparator()
{
    QFETCH(QString, folder);
    QFETCH(QString, name);
    QTEST(GeneralAPI::JoinPath(folder, name), "joined");
}

void TestGeneralAPI::pathParts_ofAPath_splitAtItsLastSeparator_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("name");
    const auto row = [](const char* path, const char* folder, const char* name) {
        QTest::newRow(path) << QString(path) << QString(folder) << QString(name);
    };
    row("a.wav", "", "a.wav");
    row("C:\\x\\a.wav", "C:\\x\\", "a.wav");
    row("C:\\a.wav", "C:\\", "a.wav");
    row("x\\a.wav", "x\\", "a.wav");
    row("C:\\x\\", "C:\\x\\", "");
    row("C:/x\\a.wav", "C:/x\\", "a.wav");
    row("C:a.wav", "", "C:a.wav");
    row("/x/a.wav", "/x/", "a.wav");
    row("/a.wav", "/", "a.wav");
    row("x/a.wav", "x/", "a.wav");
    row("/x/", "/x/", "");
    row("/x/a\\b.wav", "/x/", "a\\b.wav");
    row("/x/C:\\a.wav", "/x/", "C:\\a.wav");
    row("1:\\a", "1:\\", "a");
    row("ö:/a", "ö:/", "a");
    row("", "", "");
    row("/", "/", "");
    row("/x//a.wav", "/x//", "a.wav");
}

void TestGeneralAPI::pathParts_ofAPath_splitAtItsLastSeparator()
{
    QFETCH(QString, path);
    QTEST(GeneralAPI::GetFolderOfPath(path), "folder");
    QTEST(GeneralAPI::GetFileNameOfPath(path), "name");
    QCOMPARE(GeneralAPI::GetFolderOfPath(path) + GeneralAPI::GetFileNameOfPath(path), path);
}

void TestGeneralAPI::makeFolder_ofANativePath_makesEveryParent_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("made");
    QTest::newRow("one") << "/a"
                         << "a";
    QTest::newRow("three") << "/a/b/c"
                           << "a/b/c";
    QTest::newRow("ended") << "/a/b/"
                           << "a/b";
    QTest::newRow("empty parts") << "/a///b"
                                 << "a/b";
    QTest::newRow("blank parts") << "/a/   /b"
                                 << "a/b";
    QTest::newRow("parts are trimmed") << "/ a / b "
                                       << "a/b";
    QTest::newRow("blanks inside") << "/a b/c"
                                   << "a b/c";
    QTest::newRow("backslash is a letter") << "/a\\b"
                                           << "a\\b";
    QTest::newRow("unicode") << "/Größe/音🎵"
                             << "Größe/音🎵";
}

void TestGeneralAPI::makeFolder_ofANativePath_makesEveryParent()
{
    QFETCH(QString, path);
    QFETCH(QString, made);
    zib::FakeDesk desk;
    GeneralAPI::MakeFolderPath(m_folder->path() + path);
    QVERIFY(QFileInfo(m_folder->filePath(made)).isDir());
    QCOMPARE(desk.messages.shown, QStringList());

    QDir::setCurrent(m_folder->path());
    GeneralAPI::MakeFolderPath("relative" + path);
    QDir::setCurrent("/");
    QVERIFY(QFileInfo(m_folder->filePath("relative/" + made)).isDir());
}

void TestGeneralAPI::makeFolder_ofABackslashPath_skipsEmptyParts()
{
    zib::FakeDesk desk;
    QDir::setCurrent(m_folder->path());
    GeneralAPI::MakeFolderPath("C:\\a\\\\b");
    QDir::setCurrent("/");
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
             (QStringList{"C:\\", "C:\\a\\", "C:\\a\\b\\"}));
    QCOMPARE(desk.messages.shown, QStringList());
}

void TestGeneralAPI::makeFolder_thatExists_saysNothing()
{
    zib::FakeDesk desk;
    QVERIFY(QDir(m_folder->path()).mkpath("a/b"));
    QVERIFY(QFile::link(m_folder->filePath("a"), m_folder->filePath("link")));
    for (const char* path : {"/a/b", "/a", "/link/b/c", "/", ""})
        GeneralAPI::MakeFolderPath(m_folder->path() + path);
    GeneralAPI::MakeFolderPath("/");
    GeneralAPI::MakeFolderPath("");
    GeneralAPI::MakeFolderPath("   ");
    QVERIFY(QFileInfo(m_folder->filePath("a/b/c")).isDir());
    QCOMPARE(desk.messages.shown, QStringList());
}

void TestGeneralAPI::makeFolder_thatFails_namesTheWholePathAndKeepsWhatWasMade()
{
    zib::FakeDesk desk;
    put("file", "x");
    const QString path = m_folder->filePath("file/a/b");
    GeneralAPI::MakeFolderPath(path);
    QCOMPARE(desk.messages.shown, QStringList{"c[Error]: Create directory error: " + path});
    QCOMPARE(content("file"), QByteArray("x"));

    const QString tooLong = m_folder->filePath("made/" + QString(300, 'n') + "/after");
    GeneralAPI::MakeFolderPath(tooLong);
    QCOMPARE(desk.messages.shown.size(), 2);
    QCOMPARE(desk.messages.shown.last(), "c[Error]: Create directory error: " + tooLong);
    QVERIFY(QFileInfo(m_folder->filePath("made")).isDir());
    QVERIFY(!QFileInfo::exists(m_folder->filePath("made/after")));
}

void TestGeneralAPI::browse_always_showsTheSameTitle()
{
    zib::FakeDesk desk;
    desk.folders.answers = {"/music"};
    QCOMPARE(GeneralAPI::BrowseForFolder(nullptr), QString("/music"));
    QCOMPARE(GeneralAPI::BrowseForFolder(nullptr), QString(""));
    QCOMPARE(desk.folders.titles, QStringList(2, "Please choose a folder to save the output files"));
}

void TestGeneralAPI::duration_ofMilliseconds_isTruncated_data()
{
    QTest::addColumn<qint32>("milliseconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << 0 << "00:00:00";
    QTest::newRow("nine ms") << 9 << "00:00:00";
    QTest::newRow("ten ms") << 10 << "00:00:01";
    QTest::newRow("almost a second") << 999 << "00:00:99";
    QTest::newRow("a second") << 1000 << "00:01:00";
    QTest::newRow("almost a minute") << 59999 << "00:59:99";
    QTest::newRow("a minute") << 60000 << "01:00:00";
    QTest::newRow("61,230 ms") << 61230 << "01:01:23";
    QTest::newRow("no hours") << 3600000 << "60:00:00";
    QTest::newRow("99 minutes") << 5999999 << "99:59:99";
    QTest::newRow("100 minutes") << 6000000 << "100:00:00";
    QTest::newRow("longest") << 2147483647 << "35791:23:64";
    QTest::newRow("negative") << -61230 << "-01:-01:-23";
    QTest::newRow("shortest") << std::numeric_limits<qint32>::min() << "-35791:-23:-64";
}

void TestGeneralAPI::duration_ofMilliseconds_isTruncated()
{
    QFETCH(qint32, milliseconds);
    QTEST(GeneralAPI::FormatDuration(milliseconds), "text");
}

void TestGeneralAPI::shell_calls_handOverWhatIsStated()
{
    zib::FakeDesk desk;
    zib::setApplicationFolder("/opt/zib");
    GeneralAPI::OpenHelpFile();
    GeneralAPI::OpenHomePage();
    GeneralAPI::ExploreFolder("/music/my rips");
    QCOMPARE(desk.shell.calls,
             (QStringList{"open /opt/zib/zibburn.chm", "open IExplore.exe " + zib::kHomePage,
                          "explore /music/my rips"}));
    QCOMPARE(desk.messages.shown, QStringList());
}

void TestGeneralAPI::comboData_ofASelection_isItsNumber()
{
    QComboBox combo;
    QCOMPARE(GeneralAPI::GetComboItemData(&combo), std::nullopt);
    combo.addItem("a", 5);
    combo.addItem("b", -7);
    combo.addItem("c", 5);
    combo.setCurrentIndex(-1);
    QCOMPARE(GeneralAPI::GetComboItemData(&combo), std::nullopt);
    GeneralAPI::SelectComboItemData(&combo, -7);
    QCOMPARE(combo.currentIndex(), 1);
    QCOMPARE(GeneralAPI::GetComboItemData(&combo), std::optional(-7));
    GeneralAPI::SelectComboItemData(&combo, 6);
    QCOMPARE(combo.currentIndex(), 1);
    GeneralAPI::SelectComboItemData(&combo, 5);
    QCOMPARE(combo.currentIndex(), 0);
}

void TestGeneralAPI::checkBox_values_areOnlyCheckedAndUnchecked()
{
    QCheckBox box;
    box.setTristate();
    GeneralAPI::SetCheckValue(&box, true);
    QCOMPARE(box.checkState(), Qt::Checked);
    QVERIFY(GeneralAPI::IsChecked(&box));
    GeneralAPI::SetCheckValue(&box, false);
    QCOMPARE(box.checkState(), Qt::Unchecked);
    QVERIFY(!GeneralAPI::IsChecked(&box));
    box.setCheckState(Qt::PartiallyChecked);
    QVERIFY(!GeneralAPI::IsChecked(&box));
}

void TestGeneralAPI::formatLists_whenFilledTwice_holdTheirEntriesOnce()
{
    QComboBox combo;
    combo.addItem("old", 1);
    for (int i = 0; i < 2; ++i) {
        GeneralAPI::FillFrequencyList(&combo, 3);
        QCOMPARE(combo.count(), 12);
        QCOMPARE(combo.currentText(), QString("44,100 Hz"));
        QCOMPARE(GeneralAPI::GetComboItemData(&combo), std::optional(44100));
    }
    GeneralAPI::FillChannelsList(&combo, 0);
    QCOMPARE(combo.count(), 2);
    QCOMPARE(combo.currentText(), QString("Mono"));
    GeneralAPI::FillBitsList(&combo, 5);
    QCOMPARE(combo.count(), 6);
    QCOMPARE(combo.currentText(), QString("16 Bits"));
    GeneralAPI::FillBitsList(&combo, -1);
    QCOMPARE(GeneralAPI::GetComboItemData(&combo), std::nullopt);
}

void TestGeneralAPI::withoutServices_nothingHappens()
{
    const zib::Platform before = zib::platform();
    zib::setPlatform({});
    GeneralAPI::OpenHelpFile();
    GeneralAPI::OpenHomePage();
    GeneralAPI::ExploreFolder("/music");
    GeneralAPI::MakeFolderPath("/dev/null/a");
    QCOMPARE(GeneralAPI::BrowseForFolder(nullptr), QString());
    zib::setPlatform(before);
}

void TestGeneralAPI::readMany_ofKeys_givesWhatEachReadingGives()
{
    zib::FakeDesk desk(&m_ini);
    put("a.ini", "[s]\nk= x \nlong=" + QByteArray(3000, 'y') + "\n");
    const QString file = m_folder->filePath("a.ini");
    const QList<GeneralAPI::IniKey> keys{{"S", "K"}, {"s", "long"}, {"s", "none", " def "}, {"t", "k", "2"}};
    QStringList singly;
    for (const auto& key : keys)
        singly << GeneralAPI::ReadIniString(key.section, key.key, key.fallback, file);
    QCOMPARE(GeneralAPI::ReadIniStrings(keys, file), singly);
    QCOMPARE(singly, (QStringList{"x", QString(2047, 'y'), "def", "2"}));
    zib::setPlatform({});
    QCOMPARE(GeneralAPI::ReadIniStrings(keys, file), (QStringList{"", "", "def", "2"}));
}

void TestGeneralAPI::values_thatAreNoUtf8_keepTheirBytes()
{
    zib::FakeDesk desk(&m_ini);
    put("a.ini", "[s]\nk=/M\xFCll\n");
    const QString file = m_folder->filePath("a.ini");
    const QString value = GeneralAPI::ReadIniString("s", "k", {}, file);
    QVERIFY(GeneralAPI::WriteIniString("s", "l", value, file));
    QCOMPARE(content("a.ini"), QByteArray("[s]\nk=/M\xFCll\nl=/M\xFCll\n"));
}

void TestGeneralAPI::makeFolder_belowAFolderWithBlanks_goesIntoIt()
{
    zib::FakeDesk desk(&m_ini);
    QVERIFY(QDir(m_folder->path()).mkdir(" zib "));
    GeneralAPI::MakeFolderPath(m_folder->filePath(" zib / Temp /x"));
    QVERIFY(QFileInfo(m_folder->filePath(" zib /Temp/x")).isDir()); // What is made is trimmed, as ever.
    QVERIFY(!QFileInfo::exists(m_folder->filePath("zib")));
    QCOMPARE(desk.messages.shown, QStringList());
}

void TestGeneralAPI::browse_withAFolder_startsThere()
{
    zib::FakeDesk desk(&m_ini);
    zib::setApplicationFolder("/opt/zib");
    GeneralAPI::BrowseForFolder(nullptr, " /music ");
    GeneralAPI::BrowseForFolder(nullptr, "WAV");
    GeneralAPI::BrowseForFolder(nullptr);
    QCOMPARE(desk.folders.starts, (QStringList{"/music", "/opt/zib/WAV", ""}));
}

void TestGeneralAPI::settingFolder_isTakenFromTheApplicationFolder_data()
{
    QTest::addColumn<QString>("setting");
    QTest::addColumn<QString>("folder");
    QTest::newRow("absolute") << "/a/b"
                              << "/a/b";
    QTest::newRow("padded") << QString("/a/b").leftJustified(1024) << "/a/b";
    QTest::newRow("relative") << "WAV/x"
                              << "/opt/zib/WAV/x";
    QTest::newRow("dots") << "../WAV"
                          << "/opt/zib/../WAV";
    QTest::newRow("another platform's") << "C:\\Music"
                                        << "C:\\Music";
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("blank") << "   "
                           << "";
}

void TestGeneralAPI::settingFolder_isTakenFromTheApplicationFolder()
{
    QFETCH(QString, setting);
    zib::FakeDesk desk(&m_ini);
    zib::setApplicationFolder("/opt/zib");
    QTEST(GeneralAPI::SettingFolder(setting), "folder");
}

QTEST_MAIN(TestGeneralAPI)
#include "tst_generalapi.moc"
