#include "common/Colors.h"
#include "common/NativeName.h"
#include "fakes/FakeSeams.h"
#include "platform/IniFile.h"
#include "settings/OptionsFunc.h"
#include "settings/SettingsSaver.h"
#include "settings/frmOptions.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFile>
#include <QGuiApplication>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabBar>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>

/// The options dialog on a real settings file.
class TestFrmOptions : public QObject
{
    Q_OBJECT
private slots:
    void load_withoutAFile_showsTheDefaults();
    void load_ofStoredSettings_fillsEveryControl();
    void load_ofUnknownNumbers_leavesTheListsAsTheyWere();
    void load_always_opensOnTheFirstTabInTheMiddleOfTheScreen();
    void lists_afterLoad_holdTheFormats();
    void texts_ofTheForm_areTheStatedOnes_data();
    void texts_ofTheForm_areTheStatedOnes();
    void tabs_whenChanged_movePagesAndDisableTheOthers();
    void pages_atAnyFontAndSize_fitInTheirFrame();
    void ctrlTab_anywhere_goesToTheNextTabAndWraps();
    void ctrlShiftTab_anywhere_doesNothing();
    void focus_onAPageThatGoes_movesToTheTabs();
    void tabKey_onAPage_staysInTheShownControls();
    void toolbarStyles_whenClicked_excludeEachOther();
    void toolbarStyles_fromTheFile_areShownAsStored();
    void colour_whenChosen_showsInBoxAndSample();
    void colour_whenCancelled_stays();
    void folder_whenChosen_replacesTheText_data();
    void folder_whenChosen_replacesTheText();
    void apply_always_writesEveryKeyReloadsAndTells();
    void apply_withAClearedFolder_deletesTheKey();
    void apply_withoutASelection_keepsTheStoredFormat();
    void apply_onAFileWithOtherContents_keepsThem();
    void apply_afterAnotherProgramWrote_keepsItsKeys();
    void apply_onAReadOnlyFile_changesNeitherFileNorRecord();
    void apply_onAReadOnlyFile_showsWhatIsInForceAndSaysItOnce();
    void apply_onABusyDisk_isInForceAtOnce();
    void apply_thatTheDiskRefusesLate_isTakenBack();
    void ok_thatTheDiskRefusesLate_isTakenBackWithoutTheWindow();
    void apply_ofAFolderThatNoLineHolds_leavesOutThatOne();
    void apply_ofADefaultThatNoLineHolds_keepsTheDefault();
    void apply_ofAnyFolderName_bringsItBack_data();
    void apply_ofAnyFolderName_bringsItBack();
    void folderBox_whenLinesArePasted_takesTheFirst_data();
    void folderBox_whenLinesArePasted_takesTheFirst();
    void folder_whenPicked_startsAtTheBox();
    void wideWindow_showsOnePageOnly();
    void toolTips_ofEveryControl_sayWhatItDoes();
    void helpKeys_areNoTexts();
    void apply_isOneReplacementOfTheFile();
    void ok_always_appliesAndCloses();
    void cancel_afterChanges_writesNothing();
    void cancel_afterApply_keepsWhatWasApplied();
    void enter_onAFocusedButton_pressesThatOne();
    void escape_closesWithoutWriting();
    void defaults_thenCancel_leaveFileAndRecord();
    void defaults_thenApply_reachTheFile();
};

namespace zib {

/// An INI service whose disk answers when the test says so.
class SlowIni final : public IniService
{
public:
    explicit SlowIni(IniFile& disk) : m_disk(disk) {}
    QByteArray GetPrivateProfileStringA(const QByteArray& section, const QByteArray& key,
                                        const QByteArray& fallback, int size, const QString& file) override
    {
        return readAll({{section, key, fallback, size}}, file).first();
    }
    QList<QByteArray> readAll(const QList<IniQuery>& queries, const QString& file) override
    {
        return m_disk.readWith({m_changes}, queries, file);
    }
    bool WritePrivateProfileStringA(const QByteArray&, const std::optional<QByteArray>&,
                                    const std::optional<QByteArray>&, const QString&) override
    {
        return false;
    }
    void writeLater(const QList<IniChange>& changes, const QString& file,
                    const std::function<void(bool)>& done) override
    {
        m_changes = changes;
        m_file = file;
        m_done = done;
    }
    void answer(bool written)
    {
        if (written)
            m_disk.writeAll(m_changes, m_file);
        m_changes.clear();
        m_done(written);
    }

private:
    IniFile& m_disk;
    QList<IniChange> m_changes;
    QString m_file;
    std::function<void(bool)> m_done;
};

} // namespace zib

namespace {

struct Desk
{
    explicit Desk(const QByteArray& settings = {})
    {
        zib::setApplicationFolder("/opt/zib");
        zib::setSettingsFile(folder.filePath("settings.ini"));
        if (!settings.isEmpty())
            write(settings);
        OptionsFunc::LoadSettings();
    }
    frmOptions& window()
    {
        if (!m_window) {
            m_window = std::make_unique<frmOptions>(fakes.services);
            m_window->show();
            if (!QTest::qWaitForWindowExposed(m_window.get()))
                qFatal("The window does not show");
        }
        return *m_window;
    }
    template <typename T>
    T* control(const QString& name)
    {
        T* found = window().findChild<T*>(name);
        if (!found)
            qFatal("There is no control %s", qPrintable(name));
        return found;
    }
    /// Clicks a button, on its page if it has one.
    void click(const QString& name)
    {
        auto* button = control<QAbstractButton>(name);
        for (int i = 0; i < 4; ++i)
            if (page(i)->isAncestorOf(button))
                tabs()->setCurrentIndex(i);
        button->click();
    }
    void close() { m_window.reset(); }
    bool checked(const QString& name) { return control<QCheckBox>(name)->isChecked(); }
    QString text(const QString& name) { return control<QLineEdit>(name)->text(); }
    QColor back(const QString& name) { return control<QWidget>(name)->palette().color(QPalette::Window); }
    QTabWidget* tabs() { return control<QTabWidget>("tbsOptions"); }
    QWidget* page(int i) { return control<QWidget>(QString("picOptions_%1").arg(i)); }
    QByteArray value(const char* section, const char* key)
    {
        return ini.GetPrivateProfileStringA(section, key, "(none)", 4096, gSettingsFile);
    }
    void write(const QByteArray& text) const
    {
        QFile file(gSettingsFile);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("Cannot write the settings");
        file.write(text);
    }
    QByteArray content() const
    {
        QFile file(gSettingsFile);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }

    zib::IniFile ini;
    QTemporaryDir folder;
    zib::FakeDesk fakes{&ini};

private:
    std::unique_ptr<frmOptions> m_window;
};

const QByteArray kOther =
    "[Wave]\nWAV Frequency=22050\nWAV Channels=1\nWAV Bits=8\n"
    "[View]\nShow ToolBar=False\nToolbar Style 3D=True\nToolbar Style Flat=False\n"
    "Show Text On Toolbar=False\nShow Tips On Toolbar=False\nShow Statusbar=False\n"
    "Show Tips Of Day=False\nShow Splash Screen=False\nShow Grid Lines=False\n"
    "Grid Back Color=255\nGrid Text Color=65280\n"
    "[Folders]\nWAV Input=/a\nMP3 Input=/b\nWAV Output=/c\nTemporary=/d\n"
    "[Misc]\nCache Files Locally=False\nTest Mode=True\nBuffer Protection=True\n"
    "Explore After Converting=False\nExplore After Ripping=False\nVerify After Writing=True\n";

const QStringList kChecks{"chkToolbar",   "chk3D",           "chkFlat",    "chkTextTB",    "chkTipsTB",
                          "chkStatusbar", "chkTipDay",       "chkSplash",  "chkGridLines", "chkCacheFiles",
                          "chkTestWrite", "chkUseBurnProof", "chkConvert", "chkRip",       "chkVerify"};

QString checks(Desk& desk)
{
    QString marks;
    for (const QString& name : kChecks)
        marks += desk.checked(name) ? 'x' : '-';
    return marks;
}

} // namespace

void TestFrmOptions::load_withoutAFile_showsTheDefaults()
{
    Desk desk;
    QCOMPARE(checks(desk), QString("x-xxxxxxxx--xx-"));
    QCOMPARE(desk.control<QComboBox>("cboWAVFrequency")->currentText(), QString("44,100 Hz"));
    QCOMPARE(desk.control<QComboBox>("cboWAVChannels")->currentText(), QString("Stereo"));
    QCOMPARE(desk.control<QComboBox>("cboWAVBits")->currentText(), QString("16 Bits"));
    QCOMPARE(desk.text("txtWAVIn"), QString("/opt/zib"));
    QCOMPARE(desk.text("txtWAVOut"), QString("/opt/zib/WAV"));
    QCOMPARE(desk.text("txtMP3In"), QString("/opt/zib"));
    QCOMPARE(desk.text("txtTemp"), QString("/opt/zib/Temp"));
    QCOMPARE(desk.back("picBack"), QColor(Qt::white));
    QCOMPARE(desk.back("picText"), QColor(Qt::black));
    QCOMPARE(desk.content(), QByteArray("(no file)"));
    QCOMPARE(desk.fakes.messages.shown, QStringList());
}

void TestFrmOptions::load_ofStoredSettings_fillsEveryControl()
{
    Desk desk(kOther);
    QCOMPARE(checks(desk), QString("-x--------xx--x"));
    QCOMPARE(desk.control<QComboBox>("cboWAVFrequency")->currentText(), QString("22,050 Hz"));
    QCOMPARE(desk.control<QComboBox>("cboWAVChannels")->currentText(), QString("Mono"));
    QCOMPARE(desk.control<QComboBox>("cboWAVBits")->currentText(), QString("8 Bits"));
    QCOMPARE(desk.text("txtWAVIn"), QString("/a"));
    QCOMPARE(desk.text("txtMP3In"), QString("/b"));
    QCOMPARE(desk.text("txtWAVOut"), QString("/c"));
    QCOMPARE(desk.text("txtTemp"), QString("/d"));
    QCOMPARE(desk.back("picBack"), QColor(255, 0, 0));
    QCOMPARE(desk.back("picSample"), QColor(255, 0, 0));
    QCOMPARE(desk.back("picText"), QColor(0, 255, 0));
    QCOMPARE(desk.control<QLabel>("lblSample")->palette().color(QPalette::WindowText), QColor(0, 255, 0));
}

void TestFrmOptions::load_ofUnknownNumbers_leavesTheListsAsTheyWere()
{
    Desk desk("[Wave]\nWAV Frequency=12345\nWAV Channels=6\nWAV Bits=24\n");
    QCOMPARE(desk.control<QComboBox>("cboWAVFrequency")->currentText(), QString("44,100 Hz"));
    QCOMPARE(desk.control<QComboBox>("cboWAVChannels")->currentText(), QString("Stereo"));
    QCOMPARE(desk.control<QComboBox>("cboWAVBits")->currentText(), QString("16 Bits"));
}

void TestFrmOptions::load_always_opensOnTheFirstTabInTheMiddleOfTheScreen()
{
    Desk desk;
    QCOMPARE(desk.tabs()->currentIndex(), 0);
    QCOMPARE(desk.tabs()->tabText(0), QString("&Wave"));
    const QPoint off =
        desk.window().geometry().center() - desk.window().screen()->availableGeometry().center();
    QVERIFY2(off.manhattanLength() < 60, qPrintable(QString("%1 %2").arg(off.x()).arg(off.y())));
}

void TestFrmOptions::lists_afterLoad_holdTheFormats()
{
    Desk desk;
    const auto entries = [&desk](const QString& name) {
        QStringList texts;
        const auto* combo = desk.control<QComboBox>(name);
        for (int i = 0; i < combo->count(); ++i)
            texts << combo->itemText(i) + "=" + combo->itemData(i).toString();
        return texts.join("; ");
    };
    QCOMPARE(entries("cboWAVFrequency"),
             QString("96,000 Hz=96000; 88,200 Hz=88200; 48,000 Hz=48000; 44,100 Hz=44100; 32,000 Hz=32000; "
                     "24,000 Hz=24000; 22,050 Hz=22050; 16,000 Hz=16000; 12,000 Hz=12000; 11,025 Hz=11025; "
                     "8,000 Hz=8000; 6,000 Hz=6000"));
    QCOMPARE(entries("cboWAVChannels"), QString("Mono=1; Stereo=2"));
    QCOMPARE(entries("cboWAVBits"), QString("2 Bits=2; 3 Bits=3; 4 Bits=4; 5 Bits=5; 8 Bits=8; 16 Bits=16"));
}

void TestFrmOptions::texts_ofTheForm_areTheStatedOnes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    const QList<std::pair<const char*, const char*>> texts{
        {"chkToolbar", "Show Toolbar"},
        {"chk3D", "3D Toolbar"},
        {"chkFlat", "Flat Toolbar"},
        {"chkTextTB", "Show Text on Toolbar"},
        {"chkTipsTB", "Show Tips on Toolbar"},
        {"chkStatusbar", "Show Statusbar"},
        {"chkTipDay", "Show Tip of the Day When Starts"},
        {"chkSplash", "Show Splash Screen When Starts"},
        {"chkGridLines", "Show Grid Lines"},
        {"chkCacheFiles", "Cache Files Locally When Writting to CD"},
        {"chkTestWrite", "Use Test Mode When Writting to CD"},
        {"chkUseBurnProof", "Use Buffer Protection When Writting to CD"},
        {"chkConvert", "Explore Folder After Converting MP3 to WAV"},
        {"chkRip", "Explore Folder After Ripping CD to WAV"},
        {"chkVerify", "Compare Disc With Files After Writing"},
        {"cmdCancel", "&Cancel"},
        {"cmdApply", "&Apply"},
        {"cmdDefault", "&Default"},
        {"lblSample", "Text Sample"},
        {"lblBack", "Gird Back Color:"},
        {"lblText", "Gird Text Color:"},
        {"lblWAVFrequency", "Frequency:"},
        {"lblWAVChannels", "Channels:"},
        {"lblWAVBits", "Bits Per Sample:"},
        {"lblWAVIn", "WAV Input Folder:"},
        {"lblWAVOut", "WAV Output Folder:"},
        {"lblMP3In", "MP3 Input Folder:"},
        {"lblTemp", "Temporary Folder:"},
    };
    for (const auto& [name, text] : texts)
        QTest::newRow(name) << QString(name) << QString(text);
}

void TestFrmOptions::texts_ofTheForm_areTheStatedOnes()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    Desk desk;
    QCOMPARE(desk.control<QWidget>(name)->property("text").toString(), text);
    QCOMPARE(desk.window().windowTitle(), QString("Options"));
    QStringList tabs;
    QStringList frames;
    for (int i = 0; i < desk.tabs()->count(); ++i) {
        tabs << desk.tabs()->tabText(i);
        frames << desk.page(i)->findChild<QGroupBox*>()->title();
    }
    QCOMPARE(tabs, (QStringList{"&Wave", "&View", "&Folders", "&Misc"}));
    QCOMPARE(frames, (QStringList{"Wave Format", "View Settings", "Folders", "Miscellay"}));
}

void TestFrmOptions::tabs_whenChanged_movePagesAndDisableTheOthers()
{
    Desk desk;
    for (const int shown : {0, 1, 2, 3, 1, 0}) {
        desk.tabs()->setCurrentIndex(shown);
        for (int i = 0; i < 4; ++i) {
            QCOMPARE(desk.page(i)->x(), i == shown ? 14 : -1333); // 210 and -20000 twips.
            QCOMPARE(desk.page(i)->isEnabled(), i == shown);
            QVERIFY(!desk.page(i)->isHidden());
        }
    }
}

void TestFrmOptions::pages_atAnyFontAndSize_fitInTheirFrame()
{
    for (const int points : {7, 10, 16, 24}) {
        Desk desk;
        QFont font = desk.window().font();
        font.setPointSize(points);
        desk.window().setFont(font);
        desk.window().resize(points == 10 ? QSize(900, 700) : QSize(10, 10));
        QCoreApplication::processEvents();
        for (int i = 0; i < 4; ++i) {
            desk.tabs()->setCurrentIndex(i);
            QTRY_VERIFY2(desk.page(i)->height() >= desk.page(i)->minimumSizeHint().height(),
                         qPrintable(QString("page %1 at %2 points").arg(i).arg(points)));
            QVERIFY(desk.page(i)->width() >= desk.page(i)->minimumSizeHint().width());
            const QRect frame(desk.tabs()->currentWidget()->mapTo(&desk.window(), QPoint(0, 0)),
                              desk.tabs()->currentWidget()->size());
            QVERIFY(frame.contains(desk.page(i)->geometry()));
        }
    }
}

void TestFrmOptions::ctrlTab_anywhere_goesToTheNextTabAndWraps()
{
    Desk desk;
    const QStringList focused{"cboWAVFrequency", "tbsOptions", "cmdOK", "cmdApply"};
    int expected = 0;
    for (const QString& name : focused) {
        desk.control<QWidget>(name)->setFocus();
        QTest::keyClick(desk.control<QWidget>(name), Qt::Key_Tab, Qt::ControlModifier);
        expected = (expected + 1) % 4;
        QCOMPARE(desk.tabs()->currentIndex(), expected);
    }
    QCOMPARE(desk.tabs()->currentIndex(), 0);
    desk.tabs()->setCurrentIndex(2);
    QTest::keyClick(desk.control<QWidget>("txtTemp"), Qt::Key_Tab, Qt::ControlModifier);
    QCOMPARE(desk.tabs()->currentIndex(), 3);
    QTest::keyClick(&desk.window(), Qt::Key_Tab, Qt::ControlModifier);
    QCOMPARE(desk.tabs()->currentIndex(), 0);
}

void TestFrmOptions::ctrlShiftTab_anywhere_doesNothing()
{
    Desk desk;
    desk.tabs()->setCurrentIndex(1);
    for (const char* name : {"tbsOptions", "chkToolbar", "cmdOK"})
        for (const auto key : {Qt::Key_Tab, Qt::Key_Backtab}) {
            QTest::keyClick(desk.control<QWidget>(name), key, Qt::ControlModifier | Qt::ShiftModifier);
            QCOMPARE(desk.tabs()->currentIndex(), 1);
        }
    QTest::keyClick(desk.tabs(), Qt::Key_Tab, Qt::ControlModifier | Qt::AltModifier);
    QCOMPARE(desk.tabs()->currentIndex(), 1);
}

void TestFrmOptions::focus_onAPageThatGoes_movesToTheTabs()
{
    Desk desk;
    desk.window().activateWindow();
    desk.control<QWidget>("cboWAVBits")->setFocus();
    QTest::keyClick(desk.window().focusWidget(), Qt::Key_Tab, Qt::ControlModifier);
    QVERIFY(desk.window().focusWidget());
    QCOMPARE(desk.window().focusWidget()->objectName(), QString("qt_tabwidget_tabbar"));
    desk.control<QWidget>("cmdApply")->setFocus();
    QTest::keyClick(desk.window().focusWidget(), Qt::Key_Tab, Qt::ControlModifier);
    QCOMPARE(desk.window().focusWidget()->objectName(), QString("cmdApply"));
}

void TestFrmOptions::tabKey_onAPage_staysInTheShownControls()
{
    Desk desk;
    desk.window().activateWindow();
    desk.tabs()->setCurrentIndex(2);
    desk.control<QWidget>("txtWAVIn")->setFocus();
    QStringList visited;
    for (int i = 0; i < 13; ++i) {
        visited << desk.window().focusWidget()->objectName();
        QTest::keyClick(desk.window().focusWidget(), Qt::Key_Tab);
    }
    QCOMPARE(visited, (QStringList{"txtWAVIn", "cmdWAVInput", "txtWAVOut", "cmdWAVOutput", "txtMP3In",
                                   "cmdMP3Input", "txtTemp", "cmdTemp", "cmdDefault", "cmdOK", "cmdCancel",
                                   "cmdApply", "qt_tabwidget_tabbar"}));
}

void TestFrmOptions::toolbarStyles_whenClicked_excludeEachOther()
{
    Desk desk;
    for (const QString& name : QStringList{"chk3D", "chk3D", "chkFlat", "chkFlat", "chk3D", "chkFlat"}) {
        const bool before = desk.checked(name);
        desk.click(name);
        QCOMPARE(desk.checked(name), !before);
        QCOMPARE(desk.checked("chk3D"), !desk.checked("chkFlat"));
    }
}

void TestFrmOptions::toolbarStyles_fromTheFile_areShownAsStored()
{
    Desk desk("[View]\nToolbar Style 3D=True\nToolbar Style Flat=True\n");
    QVERIFY(desk.checked("chk3D"));
    QVERIFY(desk.checked("chkFlat"));
}

void TestFrmOptions::colour_whenChosen_showsInBoxAndSample()
{
    Desk desk("[View]\nGrid Back Color=255\n");
    desk.fakes.dialogs.colors = {QColor(1, 2, 3), QColor(4, 5, 6)};
    desk.click("cmdChangeBack");
    QCOMPARE(desk.fakes.dialogs.presetColors, QList<QColor>{QColor(255, 0, 0)});
    QCOMPARE(desk.back("picBack"), QColor(1, 2, 3));
    QCOMPARE(desk.back("picSample"), QColor(1, 2, 3));
    desk.click("cmdChangeText");
    QCOMPARE(desk.back("picText"), QColor(4, 5, 6));
    QCOMPARE(desk.control<QLabel>("lblSample")->palette().color(QPalette::WindowText), QColor(4, 5, 6));
    QCOMPARE(desk.back("picSample"), QColor(1, 2, 3));
    desk.click("cmdApply");
    QCOMPARE(desk.value("View", "Grid Back Color"), QByteArray("197121")); // 0x030201.
    QCOMPARE(desk.value("View", "Grid Text Color"), QByteArray("394500"));
}

void TestFrmOptions::colour_whenCancelled_stays()
{
    Desk desk("[View]\nGrid Back Color=255\nGrid Text Color=65280\n");
    desk.click("cmdChangeBack");
    desk.click("cmdChangeText");
    QCOMPARE(desk.back("picBack"), QColor(255, 0, 0));
    QCOMPARE(desk.back("picText"), QColor(0, 255, 0));
    QCOMPARE(desk.fakes.messages.shown, QStringList());
}

void TestFrmOptions::folder_whenChosen_replacesTheText_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("box");
    QTest::newRow("wav in") << "cmdWAVInput"
                            << "txtWAVIn";
    QTest::newRow("wav out") << "cmdWAVOutput"
                             << "txtWAVOut";
    QTest::newRow("mp3 in") << "cmdMP3Input"
                            << "txtMP3In";
    QTest::newRow("temporary") << "cmdTemp"
                               << "txtTemp";
}

void TestFrmOptions::folder_whenChosen_replacesTheText()
{
    QFETCH(QString, button);
    QFETCH(QString, box);
    Desk desk;
    const QStringList boxes{"txtWAVIn", "txtWAVOut", "txtMP3In", "txtTemp"};
    QStringList before;
    for (const QString& name : boxes)
        before << desk.text(name);
    desk.fakes.folders.answers = {"  /picked  ", "", "   "};
    desk.click(button);
    desk.click(button);
    desk.click(button);
    QCOMPARE(desk.fakes.folders.titles, QStringList(3, "Please choose a folder to save the output files"));
    for (int i = 0; i < 4; ++i)
        QCOMPARE(desk.text(boxes[i]), boxes[i] == box ? QString("/picked") : before[i]);
}

void TestFrmOptions::apply_always_writesEveryKeyReloadsAndTells()
{
    Desk desk;
    desk.control<QComboBox>("cboWAVFrequency")->setCurrentIndex(6);
    desk.control<QComboBox>("cboWAVChannels")->setCurrentIndex(0);
    desk.control<QComboBox>("cboWAVBits")->setCurrentIndex(4);
    for (const QString& name : kChecks)
        if (name != "chkFlat")
            desk.click(name);
    desk.control<QLineEdit>("txtWAVIn")->setText(" /a ");
    desk.control<QLineEdit>("txtMP3In")->setText("/b");
    desk.control<QLineEdit>("txtWAVOut")->setText("/c");
    desk.control<QLineEdit>("txtTemp")->setText("/d");
    desk.fakes.dialogs.colors = {QColor(255, 0, 0), QColor(0, 255, 0)};
    desk.click("cmdChangeBack");
    desk.click("cmdChangeText");
    QSignalSpy applied(&desk.window(), &frmOptions::applied);
    bool loadedBefore = false;
    connect(&desk.window(), &frmOptions::applied, this, [&] { loadedBefore = gOptions.TestMode; });
    desk.click("cmdApply");
    QCOMPARE(applied.count(), 1);
    QVERIFY(loadedBefore);
    QVERIFY(desk.window().isVisible());

    const QByteArray written = desk.content();
    const OptionsData record = gOptions;
    desk.write(kOther);
    OptionsFunc::LoadSettings();
    QVERIFY(record == gOptions);
    for (const QByteArray& line : kOther.split('\n'))
        QVERIFY2(written.split('\n').contains(line), line.constData());
    QCOMPARE(written.split('\n').size(), kOther.split('\n').size());
}

void TestFrmOptions::apply_withAClearedFolder_deletesTheKey()
{
    Desk desk("[Folders]\nWAV Output=/c\nMP3 Input=/b\n");
    desk.control<QLineEdit>("txtWAVOut")->clear();
    desk.control<QLineEdit>("txtMP3In")->setText("   ");
    desk.click("cmdApply");
    QCOMPARE(desk.value("Folders", "WAV Output"), QByteArray("(none)"));
    QCOMPARE(desk.value("Folders", "MP3 Input"), QByteArray("(none)"));
    QCOMPARE(gOptions.WAVOutput.trimmed(), QString("/opt/zib/WAV"));
    frmOptions again(desk.fakes.services);
    QCOMPARE(again.findChild<QLineEdit*>("txtWAVOut")->text(), QString("/opt/zib/WAV"));
}

void TestFrmOptions::apply_withoutASelection_keepsTheStoredFormat()
{
    Desk desk("[Wave]\nWAV Frequency=12345\nWAV Channels=1\n");
    desk.control<QComboBox>("cboWAVFrequency")->setCurrentIndex(-1);
    desk.click("cmdApply");
    QCOMPARE(desk.value("Wave", "WAV Frequency"), QByteArray("12345"));
    QCOMPARE(desk.value("Wave", "WAV Channels"), QByteArray("1"));
}

void TestFrmOptions::apply_onAFileWithOtherContents_keepsThem()
{
    Desk desk("; mine\n[Other]\nx=1\n\n[View]\n; yours\nShow Statusbar=True\nForeign=2\n");
    desk.click("chkStatusbar");
    desk.click("cmdApply");
    QVERIFY(desk.content().startsWith(
        "; mine\n[Other]\nx=1\n\n[View]\n; yours\nShow Statusbar=False\nForeign=2\n"));
}

void TestFrmOptions::apply_afterAnotherProgramWrote_keepsItsKeys()
{
    Desk desk("[View]\nShow Statusbar=True\n");
    desk.click("chkStatusbar"); // The dialog has read the file.
    desk.write("[Theirs]\r\nx=1\r\n[View]\r\nShow Statusbar=True\r\nNew=2\r\n");
    desk.click("cmdApply");
    QVERIFY(desk.content().startsWith("[Theirs]\r\nx=1\r\n[View]\r\nShow Statusbar=False\r\nNew=2\r\n"));
}

void TestFrmOptions::apply_onAReadOnlyFile_changesNeitherFileNorRecord()
{
    Desk desk(kOther);
    desk.window();
    QVERIFY(QFile::setPermissions(gSettingsFile, QFile::ReadOwner));
    desk.click("chkStatusbar");
    desk.click("cmdApply");
    QCOMPARE(desk.content(), kOther);
    QCOMPARE(gOptions.ShowStatusbar, false);
    QCOMPARE(desk.fakes.messages.shown, QStringList());
}

void TestFrmOptions::apply_onAReadOnlyFile_showsWhatIsInForceAndSaysItOnce()
{
    for (const char* button : {"cmdApply", "cmdOK"}) {
        Desk desk(kOther);
        QStringList told;
        connect(&desk.window(), &frmOptions::refused, &desk.window(),
                [&](const QString& text) { told << text; });
        QVERIFY(QFile::setPermissions(gSettingsFile, QFile::ReadOwner));
        desk.click("chkStatusbar");
        desk.control<QLineEdit>("txtTemp")->setText("/new");
        desk.click(button);
        QCOMPARE(told.size(), 1);
        QVERIFY2(told.first().contains(gSettingsFile), qPrintable(told.first()));
        QCOMPARE(desk.window().isVisible(), QString(button) == "cmdApply");
        if (!desk.window().isVisible())
            continue;
        QCOMPARE(desk.checked("chkStatusbar"), false);
        QCOMPARE(desk.text("txtTemp"), QString("/d"));
    }
}

void TestFrmOptions::apply_onABusyDisk_isInForceAtOnce()
{
    Desk desk;
    zib::SlowIni slow(desk.ini);
    zib::setPlatform({&slow, nullptr, nullptr, nullptr, &desk.fakes.messages});
    QSignalSpy applied(&desk.window(), &frmOptions::applied);
    desk.click("chkGridLines");
    desk.click("cmdApply");
    QCOMPARE(applied.count(), 1);
    QCOMPARE(gOptions.ShowGridLines, false);
    QCOMPARE(desk.content(), QByteArray("(no file)"));
    slow.answer(true);
    QCOMPARE(desk.value("View", "Show Grid Lines"), QByteArray("False"));
    QCOMPARE(applied.count(), 1);
}

void TestFrmOptions::apply_thatTheDiskRefusesLate_isTakenBack()
{
    Desk desk(kOther);
    zib::SlowIni slow(desk.ini);
    zib::setPlatform({&slow, nullptr, nullptr, nullptr, &desk.fakes.messages});
    QSignalSpy applied(&desk.window(), &frmOptions::applied);
    QSignalSpy refused(&desk.window(), &frmOptions::refused);
    desk.click("chkGridLines");
    desk.click("cmdApply");
    QCOMPARE(gOptions.ShowGridLines, true);
    slow.answer(false);
    QCOMPARE(gOptions.ShowGridLines, false);
    QCOMPARE(desk.checked("chkGridLines"), false);
    QCOMPARE(applied.count(), 2);
    QCOMPARE(refused.count(), 1);
}

void TestFrmOptions::ok_thatTheDiskRefusesLate_isTakenBackWithoutTheWindow()
{
    Desk desk(kOther);
    zib::SlowIni slow(desk.ini);
    zib::setPlatform({&slow, nullptr, nullptr, nullptr, &desk.fakes.messages});
    QSignalSpy refused(&desk.window().saver(), &zib::SettingsSaver::refused);
    QSignalSpy applied(&desk.window().saver(), &zib::SettingsSaver::applied);
    desk.click("chkGridLines");
    desk.click("cmdOK");
    QCOMPARE(gOptions.ShowGridLines, true);
    desk.close();
    slow.answer(false);
    QCOMPARE(gOptions.ShowGridLines, false);
    QCOMPARE(refused.count(), 1);
    QCOMPARE(applied.count(), 2);
}

void TestFrmOptions::apply_ofAFolderThatNoLineHolds_leavesOutThatOne()
{
    Desk desk(kOther);
    QSignalSpy refused(&desk.window(), &frmOptions::refused);
    desk.control<QLineEdit>("txtWAVOut")->setText("/a\n/b");
    desk.control<QLineEdit>("txtTemp")->setText(QString("/x") + QChar(0xD800));
    desk.control<QLineEdit>("txtMP3In")->setText("/new");
    desk.click("chkGridLines");
    desk.click("cmdApply");
    QCOMPARE(desk.value("Folders", "WAV Output"), QByteArray("/c"));
    QCOMPARE(desk.value("Folders", "Temporary"), QByteArray("/d"));
    QCOMPARE(desk.value("Folders", "MP3 Input"), QByteArray("/new"));
    QCOMPARE(desk.value("View", "Show Grid Lines"), QByteArray("True"));
    QCOMPARE(desk.text("txtWAVOut"), QString("/c"));
    QCOMPARE(refused.count(), 1);
    const QString text = refused.first().first().toString();
    QVERIFY2(text.contains("WAV Output Folder") && text.contains("Temporary Folder"), qPrintable(text));
    QVERIFY(!text.contains("MP3"));
}

void TestFrmOptions::apply_ofADefaultThatNoLineHolds_keepsTheDefault()
{
    Desk desk("[Folders]\nTemporary=/d\n");
    zib::setApplicationFolder("/opt/zib \nx ");
    QSignalSpy refused(&desk.window(), &frmOptions::refused);
    desk.click("cmdDefault");
    QCOMPARE(desk.text("txtTemp"), QString("/opt/zib \nx /Temp"));
    QCOMPARE(desk.text("txtWAVIn"), QString("/opt/zib \nx /"));
    desk.click("cmdApply");
    QCOMPARE(refused.count(), 0);
    QCOMPARE(desk.value("Folders", "Temporary"), QByteArray("(none)"));
    QCOMPARE(gOptions.Temporary.trimmed(), QString("/opt/zib \nx /Temp"));
}

void TestFrmOptions::apply_ofAnyFolderName_bringsItBack_data()
{
    QTest::addColumn<QByteArray>("folder");
    QTest::newRow("utf-8") << QByteArray("/Größe/音🎵");
    QTest::newRow("no utf-8") << QByteArray("/M\xFCll/\xEE\xBF\xBC");
    QTest::newRow("inner blanks") << QByteArray("/ a / b");
    QTest::newRow("a blank at the end") << QByteArray("/a /");
    QTest::newRow("relative") << QByteArray("WAV");
    QTest::newRow("like a comment") << QByteArray("/;a=b]");
}

void TestFrmOptions::apply_ofAnyFolderName_bringsItBack()
{
    QFETCH(QByteArray, folder);
    Desk desk;
    desk.control<QLineEdit>("txtWAVOut")->setText(zib::nativeText(folder));
    desk.click("cmdApply");
    QCOMPARE(desk.value("Folders", "WAV Output"), folder);
    QCOMPARE(zib::nativeBytes(gOptions.WAVOutput.trimmed()), folder);
}

void TestFrmOptions::folderBox_whenLinesArePasted_takesTheFirst_data()
{
    QTest::addColumn<QString>("pasted");
    QTest::addColumn<QString>("text");
    QTest::newRow("one line") << "/music"
                              << "/music";
    QTest::newRow("a line break at the end") << "/music\n"
                                             << "/music";
    QTest::newRow("two lines") << "/music\n/other"
                               << "/music";
    QTest::newRow("an empty line first") << "\r\n/music\r\n"
                                         << "/music";
    QTest::newRow("only line breaks") << "\n\n"
                                      << "";
}

void TestFrmOptions::folderBox_whenLinesArePasted_takesTheFirst()
{
    QFETCH(QString, pasted);
    Desk desk;
    desk.tabs()->setCurrentIndex(2);
    auto* box = desk.control<QLineEdit>("txtWAVOut");
    QGuiApplication::clipboard()->setText(pasted);
    box->selectAll();
    box->paste();
    QTEST(box->text(), "text");
}

void TestFrmOptions::folder_whenPicked_startsAtTheBox()
{
    Desk desk;
    desk.control<QLineEdit>("txtWAVOut")->setText("/music");
    desk.control<QLineEdit>("txtTemp")->setText("Cache");
    desk.click("cmdWAVOutput");
    desk.click("cmdTemp");
    QCOMPARE(desk.fakes.folders.starts, (QStringList{"/music", "/opt/zib/Cache"}));
}

void TestFrmOptions::wideWindow_showsOnePageOnly()
{
    Desk desk;
    for (const int width : {1360, 1361, 2000, 4000}) {
        desk.window().resize(width, 500);
        QCoreApplication::processEvents();
        for (int shown = 0; shown < 4; ++shown) {
            desk.tabs()->setCurrentIndex(shown);
            for (int i = 0; i < 4; ++i)
                QVERIFY2(i == shown || desk.page(i)->geometry().right() < 0,
                         qPrintable(QString("page %1 at %2 pixels").arg(i).arg(width)));
            QCOMPARE(desk.page(shown)->width(), desk.window().width() - 28);
        }
    }
}

void TestFrmOptions::toolTips_ofEveryControl_sayWhatItDoes()
{
    Desk desk;
    QStringList silent;
    for (const auto* control : desk.window().findChildren<QWidget*>())
        if ((control->inherits("QAbstractButton") || control->inherits("QComboBox") ||
             (control->inherits("QLineEdit") && !control->objectName().startsWith("qt_"))) &&
            !qobject_cast<QTabBar*>(control->parent()) && control->toolTip().size() < 10)
            silent << control->objectName();
    QCOMPARE(silent, QStringList());
    for (const char* unused : {"cboWAVFrequency", "cboWAVChannels", "cboWAVBits", "txtWAVIn", "chkTextTB"})
        QVERIFY(desk.control<QWidget>(unused)->toolTip().startsWith("Kept for compatibility only"));
    QVERIFY(!desk.control<QWidget>("txtWAVOut")->toolTip().contains("compatibility"));
}

void TestFrmOptions::helpKeys_areNoTexts()
{
    Desk desk;
    QStringList keys;
    for (int i = 0; i < 4; ++i)
        keys << desk.tabs()->widget(i)->property("key").toString();
    QCOMPARE(keys, (QStringList{"wave", "view", "folder", "misc"}));
    for (const auto* control : desk.window().findChildren<QWidget*>())
        QCOMPARE(control->whatsThis(), QString());
}

void TestFrmOptions::apply_isOneReplacementOfTheFile()
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
            return false;
        }
        bool writeAll(const QList<zib::IniChange>& changes, const QString&) override
        {
            for (const zib::IniChange& change : changes)
                keys << change.section + "/" + change.key.value_or("");
            ++calls;
            return true;
        }
        QByteArrayList keys;
        int calls = 0;
    } ini;
    zib::FakeDesk desk(&ini);
    zib::setSettingsFile("/settings.ini");
    zib::setApplicationFolder("/opt/zib");
    frmOptions window(desk.services);
    window.findChild<QPushButton*>("cmdApply")->click();
    QCOMPARE(ini.calls, 1);
    QCOMPARE(ini.keys.size(), 24);
    QCOMPARE(ini.keys.mid(0, 7),
             (QByteArrayList{"Wave/WAV Frequency", "Wave/WAV Channels", "Wave/WAV Bits", "Folders/WAV Input",
                             "Folders/MP3 Input", "Folders/WAV Output", "Folders/Temporary"}));
    QVERIFY(ini.keys.contains("Misc/Explore After Ripping"));
    QVERIFY(ini.keys.contains("View/Grid Text Color"));
}

void TestFrmOptions::ok_always_appliesAndCloses()
{
    Desk desk;
    QSignalSpy applied(&desk.window(), &frmOptions::applied);
    desk.click("chkGridLines");
    desk.click("cmdOK");
    QCOMPARE(applied.count(), 1);
    QVERIFY(!desk.window().isVisible());
    QCOMPARE(desk.value("View", "Show Grid Lines"), QByteArray("False"));
    QCOMPARE(gOptions.ShowGridLines, false);
}

void TestFrmOptions::cancel_afterChanges_writesNothing()
{
    Desk desk(kOther);
    const OptionsData before = gOptions;
    QSignalSpy applied(&desk.window(), &frmOptions::applied);
    for (const QString& name : kChecks)
        desk.click(name);
    desk.control<QLineEdit>("txtTemp")->setText("/elsewhere");
    desk.click("cmdCancel");
    QCOMPARE(applied.count(), 0);
    QVERIFY(!desk.window().isVisible());
    QCOMPARE(desk.content(), kOther);
    QVERIFY(gOptions == before);
}

void TestFrmOptions::cancel_afterApply_keepsWhatWasApplied()
{
    Desk desk;
    desk.click("chkTestWrite");
    desk.click("cmdApply");
    desk.click("chkTestWrite");
    desk.click("cmdCancel");
    QCOMPARE(gOptions.TestMode, true);
    QCOMPARE(desk.value("Misc", "Test Mode"), QByteArray("True"));
}

void TestFrmOptions::enter_onAFocusedButton_pressesThatOne()
{
    Desk desk(kOther);
    desk.click("chkTestWrite");
    auto* cancel = desk.control<QPushButton>("cmdCancel");
    cancel->setFocus();
    QTest::keyClick(cancel, Qt::Key_Return);
    QVERIFY(!desk.window().isVisible());
    QCOMPARE(desk.content(), kOther);
}

void TestFrmOptions::escape_closesWithoutWriting()
{
    Desk desk;
    desk.click("chkTestWrite");
    QTest::keyClick(&desk.window(), Qt::Key_Escape);
    QVERIFY(!desk.window().isVisible());
    QCOMPARE(desk.content(), QByteArray("(no file)"));
}

void TestFrmOptions::defaults_thenCancel_leaveFileAndRecord()
{
    Desk desk(kOther);
    const OptionsData before = gOptions;
    desk.click("cmdDefault");
    QCOMPARE(checks(desk), QString("x-xxxxxxxx--xx-"));
    QCOMPARE(desk.text("txtTemp"), QString("/opt/zib/Temp"));
    QCOMPARE(desk.control<QComboBox>("cboWAVFrequency")->currentText(), QString("44,100 Hz"));
    QCOMPARE(desk.back("picSample"), QColor(Qt::white));
    desk.click("cmdCancel");
    QCOMPARE(desk.content(), kOther);
    QVERIFY(gOptions == before); // A test run stays a test run.
}

void TestFrmOptions::defaults_thenApply_reachTheFile()
{
    Desk desk(kOther);
    desk.click("cmdDefault");
    desk.click("cmdApply");
    QCOMPARE(desk.value("Misc", "Test Mode"), QByteArray("False"));
    QCOMPARE(desk.value("Folders", "Temporary"), QByteArray("/opt/zib/Temp"));
    QCOMPARE(gOptions.WAVFrequency, 44100);
}

QTEST_MAIN(TestFrmOptions)
#include "tst_frmOptions.moc"
