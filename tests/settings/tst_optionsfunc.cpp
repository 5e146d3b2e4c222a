#include "common/Colors.h"
#include "common/GeneralAPI.h"
#include "fakes/FakeSeams.h"
#include "platform/IniFile.h"
#include "settings/OptionsFunc.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

/// The settings record against real files.
class TestOptionsFunc : public QObject
{
    Q_OBJECT
private slots:
    void load_withoutAFile_givesExactlyTheDefaultsAndMakesNone();
    void setDefaults_afterOtherValues_touchesNoFile();
    void load_ofEveryKey_fillsItsField_data();
    void load_ofEveryKey_fillsItsField();
    void load_ofAnInteger_takesWhatFits_data();
    void load_ofAnInteger_takesWhatFits();
    void load_ofABoolean_takesWordsAndNumbers_data();
    void load_ofABoolean_takesWordsAndNumbers();
    void load_ofAFolder_padsAndCutsAt1024();
    void load_ofAFolderCutInsideACharacter_dropsItWhole();
    void load_ofSeveralBadValues_tellsThemInOneBox();
    void load_ofALongBadValue_showsItsBeginning();
    void load_readsInTheOrderOfTheFile();
    void load_inARootFolder_joinsWithOneSeparator();
    void load_replacesEarlierValues();
};

namespace {

/// A settings file in a folder of its own, read by the real INI service.
struct Desk
{
    Desk()
    {
        zib::setApplicationFolder("/opt/zib");
        zib::setSettingsFile(folder.filePath("settings.ini"));
    }
    void write(const QByteArray& text)
    {
        QFile file(gSettingsFile);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    QByteArray content() const
    {
        QFile file(gSettingsFile);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    zib::IniFile ini;
    QTemporaryDir folder;
    zib::FakeDesk fakes{&ini};
};

QString padded(const QString& text)
{
    return text.leftJustified(1024);
}

OptionsData expectedDefaults()
{
    OptionsData options;
    options.WAVFrequency = 44100;
    options.WAVChannels = 2;
    options.WAVBits = 16;
    options.ShowToolBar = true;
    options.ToolbarStyle3D = false;
    options.ToolbarStyleFlat = true;
    options.ShowTextOnToolbar = true;
    options.ShowTipsOnToolbar = true;
    options.ShowStatusbar = true;
    options.ShowTipsOfDay = true;
    options.ShowSplashScreen = true;
    options.ShowGridLines = true;
    options.GridBackColor = 16777215;
    options.GridTextColor = 0;
    options.WAVInput = padded("/opt/zib");
    options.MP3Input = padded("/opt/zib");
    options.WAVOutput = padded("/opt/zib/WAV");
    options.Temporary = padded("/opt/zib/Temp");
    options.CacheFilesLocally = true;
    options.TestMode = false;
    options.BufferProtection = false;
    options.ExploreAfterConverting = true;
    options.ExploreAfterRipping = true;
    options.VerifyAfterWriting = false;
    return options;
}

} // namespace

void TestOptionsFunc::load_withoutAFile_givesExactlyTheDefaultsAndMakesNone()
{
    Desk desk;
    OptionsFunc::LoadSettings();
    QVERIFY(gOptions == expectedDefaults());
    QVERIFY(!QFile::exists(gSettingsFile));
    QCOMPARE(desk.fakes.messages.shown, QStringList());
}

void TestOptionsFunc::setDefaults_afterOtherValues_touchesNoFile()
{
    Desk desk;
    desk.write("[Wave]\nWAV Bits=8\n");
    OptionsFunc::LoadSettings();
    QCOMPARE(gOptions.WAVBits, qint16(8));
    OptionsFunc::SetDefaultSettings();
    QVERIFY(gOptions == expectedDefaults());
    QCOMPARE(desk.content(), QByteArray("[Wave]\nWAV Bits=8\n"));
}

void TestOptionsFunc::load_ofEveryKey_fillsItsField_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<OptionsData>("expected");
    const auto row = [](const char* section, const char* key, const char* value, auto field, auto content) {
        OptionsData options = expectedDefaults();
        options.*field = content;
        QTest::newRow(key) << QByteArray("[") + section + "]\n" + key + "=" + value + "\n" << options;
    };
    row("Wave", "WAV Frequency", "8000", &OptionsData::WAVFrequency, 8000);
    row("Wave", "WAV Channels", "1", &OptionsData::WAVChannels, qint16(1));
    row("Wave", "WAV Bits", "8", &OptionsData::WAVBits, qint16(8));
    row("View", "Show ToolBar", "False", &OptionsData::ShowToolBar, false);
    row("View", "Toolbar Style 3D", "True", &OptionsData::ToolbarStyle3D, true);
    row("View", "Toolbar Style Flat", "False", &OptionsData::ToolbarStyleFlat, false);
    row("View", "Show Text On Toolbar", "False", &OptionsData::ShowTextOnToolbar, false);
    row("View", "Show Tips On Toolbar", "False", &OptionsData::ShowTipsOnToolbar, false);
    row("View", "Show Statusbar", "False", &OptionsData::ShowStatusbar, false);
    row("View", "Show Tips Of Day", "False", &OptionsData::ShowTipsOfDay, false);
    row("View", "Show Splash Screen", "False", &OptionsData::ShowSplashScreen, false);
    row("View", "Show Grid Lines", "False", &OptionsData::ShowGridLines, false);
    row("View", "Grid Back Color", "255", &OptionsData::GridBackColor, 255);
    row("View", "Grid Text Color", "65280", &OptionsData::GridTextColor, 65280);
    row("Folders", "WAV Input", "/a", &OptionsData::WAVInput, padded("/a"));
    row("Folders", "MP3 Input", "/b", &OptionsData::MP3Input, padded("/b"));
    row("Folders", "WAV Output", "/c", &OptionsData::WAVOutput, padded("/c"));
    row("Folders", "Temporary", "/d", &OptionsData::Temporary, padded("/d"));
    row("Misc", "Buffer Protection", "True", &OptionsData::BufferProtection, true);
    row("Misc", "Cache Files Locally", "False", &OptionsData::CacheFilesLocally, false);
    row("Misc", "Explore After Converting", "False", &OptionsData::ExploreAfterConverting, false);
    row("Misc", "Explore After Ripping", "False", &OptionsData::ExploreAfterRipping, false);
    row("Misc", "Test Mode", "True", &OptionsData::TestMode, true);
    row("Misc", "Verify After Writing", "True", &OptionsData::VerifyAfterWriting, true);
}

void TestOptionsFunc::load_ofEveryKey_fillsItsField()
{
    QFETCH(QByteArray, text);
    QFETCH(OptionsData, expected);
    Desk desk;
    desk.write(text);
    OptionsFunc::LoadSettings();
    QVERIFY(gOptions == expected);
    QCOMPARE(desk.fakes.messages.shown, QStringList());
    QCOMPARE(desk.content(), text);
}

void TestOptionsFunc::load_ofAnInteger_takesWhatFits_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<int>("number");
    QTest::addColumn<bool>("told");
    const auto row = [](const char* key, const char* value, int number, bool told) {
        QTest::newRow(qPrintable(QString("%1=%2").arg(key, value)))
            << QByteArray(key) << QByteArray(value) << number << told;
    };
    row("WAV Frequency", "22050", 22050, false);
    row("WAV Frequency", "-1", -1, false);
    row("WAV Frequency", "+7", 7, false);
    row("WAV Frequency", "0", 0, false);
    row("WAV Frequency", "\"8000\"", 8000, false);
    row("WAV Frequency", "  8000\t", 8000, false);
    row("WAV Frequency", "2147483647", 2147483647, false);
    row("WAV Frequency", "2147483648", 44100, true);
    row("WAV Frequency", "-2147483648", std::numeric_limits<int>::min(), false);
    row("WAV Frequency", "-2147483649", 44100, true);
    row("WAV Frequency", "99999999999999999999", 44100, true);
    row("WAV Frequency", "abc", 44100, true);
    row("WAV Frequency", "44100 Hz", 44100, true);
    row("WAV Frequency", "0x10", 44100, true);
    row("WAV Frequency", "", 44100, true);
    row("WAV Channels", "32767", 32767, false);
    row("WAV Channels", "32768", 2, true);
    row("WAV Channels", "70000", 2, true);
    row("WAV Channels", "-32768", -32768, false);
    row("WAV Channels", "-32769", 2, true);
    row("WAV Bits", "", 16, true);
    row("WAV Bits", "--8", 16, true);
}

void TestOptionsFunc::load_ofAnInteger_takesWhatFits()
{
    QFETCH(QByteArray, key);
    QFETCH(QByteArray, value);
    QFETCH(int, number);
    QFETCH(bool, told);
    Desk desk;
    const QByteArray text = "[Wave]\n" + key + "=" + value + "\n";
    desk.write(text);
    OptionsFunc::LoadSettings();
    const int read = key == "WAV Frequency"  ? gOptions.WAVFrequency
                     : key == "WAV Channels" ? gOptions.WAVChannels
                                             : gOptions.WAVBits;
    QCOMPARE(read, number);
    QCOMPARE(desk.fakes.messages.shown.size(), told ? 1 : 0);
    QCOMPARE(desk.content(), text);
}

void TestOptionsFunc::load_ofABoolean_takesWordsAndNumbers_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<bool>("on");
    QTest::addColumn<bool>("told");
    const auto row = [](const char* value, bool on, bool told) {
        QTest::newRow(value) << QByteArray(value) << on << told;
    };
    row("True", true, false);
    row("true", true, false);
    row("TRUE", true, false);
    row("False", false, false);
    row("false", false, false);
    row("FALSE", false, false);
    row("0", false, false);
    row("-0", false, false);
    row("0.0", false, false);
    row("00", false, false);
    row("1", true, false);
    row("-1", true, false);
    row("0.5", true, false);
    row("12345678901234567890", true, false);
    row("yes", true, true);
    row("no", true, true);
    row("", true, true);
    row("nan", true, true);
    row("1x", true, true);
    row("Wahr", true, true);
}

void TestOptionsFunc::load_ofABoolean_takesWordsAndNumbers()
{
    QFETCH(QByteArray, value);
    QFETCH(bool, on);
    QFETCH(bool, told);
    Desk desk;
    desk.write("[View]\nShow Splash Screen=" + value + "\n");
    OptionsFunc::LoadSettings();
    QCOMPARE(gOptions.ShowSplashScreen, on);
    QCOMPARE(desk.fakes.messages.shown.size(), told ? 1 : 0);
}

void TestOptionsFunc::load_ofAFolder_padsAndCutsAt1024()
{
    Desk desk;
    const QByteArray longest(1024, 'x');
    desk.write("[Folders]\nWAV Input=   C:\\Music   \nMP3 Input=" + longest + "yz\nWAV Output=" + longest +
               "\nTemporary=\n");
    OptionsFunc::LoadSettings();
    QCOMPARE(gOptions.WAVInput, padded("C:\\Music"));
    QCOMPARE(gOptions.WAVInput.trimmed(), QString("C:\\Music"));
    QCOMPARE(gOptions.MP3Input, QString(longest));
    QCOMPARE(gOptions.WAVOutput, QString(longest));
    QCOMPARE(gOptions.Temporary, padded(""));
    QCOMPARE(desk.fakes.messages.shown, QStringList());
}

void TestOptionsFunc::load_ofAFolderCutInsideACharacter_dropsItWhole()
{
    Desk desk;
    desk.write("[Folders]\nWAV Input=" + QByteArray(1023, 'x') + "\xF0\x9F\x8E\xB5\n"); // A note, two units.
    OptionsFunc::LoadSettings();
    QCOMPARE(gOptions.WAVInput, QString(1023, 'x') + ' ');
}

void TestOptionsFunc::load_ofSeveralBadValues_tellsThemInOneBox()
{
    Desk desk;
    desk.write("[Wave]\nWAV Frequency=abc\n[View]\nShow ToolBar=yes\nShow Statusbar=False\n");
    OptionsFunc::LoadSettings();
    QCOMPARE(desk.fakes.messages.shown,
             QStringList{"c: These settings cannot be read, so their defaults are used:\n\n"
                         "[Wave] WAV Frequency = \"abc\"\n[View] Show ToolBar = \"yes\"\n\n"
                         "They stand in the file\n" +
                         gSettingsFile});
    QCOMPARE(gOptions.WAVFrequency, 44100);
    QCOMPARE(gOptions.ShowToolBar, true);
    QCOMPARE(gOptions.ShowStatusbar, false);
}

void TestOptionsFunc::load_ofALongBadValue_showsItsBeginning()
{
    Desk desk;
    desk.write("[Wave]\nWAV Bits=" + QByteArray(500, 'q') + "\n");
    OptionsFunc::LoadSettings();
    QCOMPARE(desk.fakes.messages.shown.size(), 1);
    QVERIFY(desk.fakes.messages.shown[0].contains("= \"" + QString(80, 'q') + "...\""));
}

void TestOptionsFunc::load_readsInTheOrderOfTheFile()
{
    struct Listening final : zib::IniService
    {
        QByteArray GetPrivateProfileStringA(const QByteArray& section, const QByteArray& key,
                                            const QByteArray& fallback, int, const QString&) override
        {
            asked << QString(section + "/" + key + "=" + fallback);
            return fallback;
        }
        bool WritePrivateProfileStringA(const QByteArray&, const std::optional<QByteArray>&,
                                        const std::optional<QByteArray>&, const QString&) override
        {
            ++writes;
            return true;
        }
        QStringList asked;
        int writes = 0;
    } ini;
    zib::FakeDesk desk(&ini);
    zib::setSettingsFile("/opt/zib/settings.ini");
    zib::setApplicationFolder("/opt/zib");
    OptionsFunc::LoadSettings();
    const QStringList expected{"Wave/WAV Frequency=44100",
                               "Wave/WAV Channels=2",
                               "Wave/WAV Bits=16",
                               "View/Show ToolBar=True",
                               "View/Toolbar Style 3D=False",
                               "View/Toolbar Style Flat=True",
                               "View/Show Text On Toolbar=True",
                               "View/Show Tips On Toolbar=True",
                               "View/Show Statusbar=True",
                               "View/Show Tips Of Day=True",
                               "View/Show Splash Screen=True",
                               "View/Show Grid Lines=True",
                               "View/Grid Back Color=16777215",
                               "View/Grid Text Color=0",
                               "Folders/WAV Input=/opt/zib",
                               "Folders/MP3 Input=/opt/zib",
                               "Folders/WAV Output=/opt/zib/WAV",
                               "Folders/Temporary=/opt/zib/Temp",
                               "Misc/Buffer Protection=False",
                               "Misc/Cache Files Locally=True",
                               "Misc/Explore After Converting=True",
                               "Misc/Explore After Ripping=True",
                               "Misc/Test Mode=False",
                               "Misc/Verify After Writing=False"};
    QCOMPARE(ini.asked, expected);
    QCOMPARE(ini.writes, 0);
}

void TestOptionsFunc::load_inARootFolder_joinsWithOneSeparator()
{
    Desk desk;
    zib::setApplicationFolder("/");
    OptionsFunc::LoadSettings();
    QCOMPARE(gOptions.Temporary.trimmed(), QString("/Temp"));
    zib::setApplicationFolder("C:\\");
    OptionsFunc::LoadSettings();
    QCOMPARE(gOptions.WAVOutput.trimmed(), QString("C:\\WAV"));
}

void TestOptionsFunc::load_replacesEarlierValues()
{
    Desk desk;
    desk.write("[View]\nGrid Back Color=255\n");
    OptionsFunc::LoadSettings();
    QCOMPARE(zib::colorFromNumber(gOptions.GridBackColor), QColor(255, 0, 0));
    desk.write("");
    OptionsFunc::LoadSettings();
    QVERIFY(gOptions == expectedDefaults());
}

QTEST_APPLESS_MAIN(TestOptionsFunc)
#include "tst_optionsfunc.moc"
