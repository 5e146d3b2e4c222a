#include "faces/Face.h"
#include "faces/Look.h"
#include "faces/World.h"
#include "platform/IniFile.h"
#include "settings/OptionsFunc.h"
#include "settings/SettingsSaver.h"
#include "settings/frmOptions.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>

using namespace zib;

namespace {

/// The options over a real settings file.
struct Desk
{
    explicit Desk(const QString& name) : face(name)
    {
        setApplicationFolder(folder.path());
        setSettingsFile(folder.filePath("settings.ini"));
    }
    void open()
    {
        window = std::make_unique<frmOptions>(desk.services);
        window->show();
        window->activateWindow();
        if (!QTest::qWaitForWindowActive(window.get(), 30'000))
            qFatal("the window did not become active");
    }
    void stage(const QString& title) { face.stage(title, words()); }
    Words words() const
    {
        QCoreApplication::processEvents();
        Words said;
        said.sayWindow(window.get());
        sayWorld(said, desk);
        sayFile(said, "~file", gSettingsFile);
        const OptionsData& o = gOptions;
        QStringList record{QString::number(o.WAVFrequency), QString::number(o.WAVChannels),
                           QString::number(o.WAVBits)};
        for (const bool on : {o.ShowToolBar, o.ToolbarStyle3D, o.ToolbarStyleFlat, o.ShowTextOnToolbar,
                              o.ShowTipsOnToolbar, o.ShowStatusbar, o.ShowTipsOfDay, o.ShowSplashScreen,
                              o.ShowGridLines, o.CacheFilesLocally, o.TestMode, o.BufferProtection,
                              o.ExploreAfterConverting, o.ExploreAfterRipping, o.VerifyAfterWriting})
            record << (on ? "1" : "0");
        for (const QString& text : {o.WAVInput, o.WAVOutput, o.MP3Input, o.Temporary})
            record << QString("%1+%2").arg(text.trimmed()).arg(text.size());
        record << QString::number(o.GridBackColor, 16) << QString::number(o.GridTextColor, 16);
        said.say("~record", record.join(' '));
        said.replace(folder.path(), "FOLDER");
        return said;
    }
    template <typename Control>
    Control* find(const char* name) const
    {
        return window->findChild<Control*>(name);
    }
    void press(const char* name) const { find<QAbstractButton>(name)->click(); }
    /// Presses a button of a page, which is turned to.
    void pressOn(const char* name) const
    {
        auto* tabs = find<QTabWidget>("tbsOptions");
        for (int page = 0; page < tabs->count() && !find<QWidget>(name)->isEnabled(); ++page)
            tabs->setCurrentIndex(page);
        press(name);
    }

    QTemporaryDir folder;
    IniFile ini;
    FakeDesk desk{&ini};
    Face face;
    std::unique_ptr<frmOptions> window;
};

const char* const kOtherSettings =
    "[Wave]\r\nWAV Frequency=22050\r\nWAV Channels=1\r\nWAV Bits=8\r\n"
    "[View]\r\nShow ToolBar=False\r\nToolbar Style 3D=1\r\nToolbar Style Flat=0\r\n"
    "Show Text On Toolbar=false\r\nShow Tips On Toolbar=FALSE\r\nShow Statusbar=0.0\r\n"
    "Show Tips Of Day=False\r\nShow Splash Screen=False\r\nShow Grid Lines=False\r\n"
    "Grid Back Color=8388608\r\nGrid Text Color=65280\r\n"
    "[Folders]\r\nWAV Input=/wav/in\r\nWAV Output=/wav/out\r\nMP3 Input=/mp3/in\r\n"
    "Temporary=/temp\r\n"
    "[Misc]\r\nCache Files Locally=False\r\nTest Mode=True\r\nBuffer Protection=True\r\n"
    "Explore After Converting=False\r\nExplore After Ripping=False\r\n"
    "Verify After Writing=True\r\n";

} // namespace

/// The options in words: every page, every setting both ways.
class TestOptionFaces : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { dressUp(); }

    void options_everyPage()
    {
        Desk d("frmOptions");
        d.open();
        d.stage("without a file");
        auto* tabs = d.find<QTabWidget>("tbsOptions");
        for (int page = 1; page < tabs->count(); ++page) {
            tabs->setCurrentIndex(page);
            d.stage(QString("page %1").arg(page));
        }
        QTest::keyClick(d.window.get(), Qt::Key_Tab, Qt::ControlModifier);
        d.stage("back to the first by a key");
        QTest::keyClick(d.window.get(), Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier);
        d.stage("which does not go backwards");
        d.window->resize(d.window->size() + QSize(100, 50));
        d.stage("larger");
        QFont letters = QApplication::font();
        letters.setPointSizeF(15);
        d.window->setFont(letters);
        d.stage("in larger letters");
        COMPARE_FACE(d.face);
    }

    void options_everyControl()
    {
        Desk d("frmOptions_changed");
        d.open();
        d.face.begin(d.words());
        for (const char* box : {"chkToolbar", "chkFlat", "chkTextTB", "chkTipsTB", "chkStatusbar",
                                "chkTipDay", "chkSplash", "chkGridLines", "chkCacheFiles", "chkTestWrite",
                                "chkUseBurnProof", "chkConvert", "chkRip", "chkVerify"}) {
            d.pressOn(box);
            d.stage(box);
        }
        d.pressOn("chk3D");
        d.stage("one of two styles");
        d.desk.dialogs.colors = {QColor(1, 2, 3), QColor(250, 150, 50)};
        d.pressOn("cmdChangeBack");
        d.stage("a colour");
        d.pressOn("cmdChangeText");
        d.pressOn("cmdChangeText");
        d.stage("the other, and one that is cancelled");
        d.desk.folders.answers = {"/a", "/b ", "  /c", "/d"};
        for (const char* button : {"cmdWAVInput", "cmdWAVOutput", "cmdMP3Input", "cmdTemp", "cmdTemp"}) {
            d.pressOn(button);
            d.stage(button);
        }
        for (const char* list : {"cboWAVFrequency", "cboWAVChannels", "cboWAVBits"})
            d.find<QComboBox>(list)->setCurrentIndex(0);
        d.stage("another format");
        d.press("cmdApply");
        d.stage("applied");
        d.press("cmdDefault");
        d.stage("the defaults");
        d.press("cmdCancel");
        d.stage("cancelled");
        COMPARE_FACE(d.face);
    }

    void options_ofAFile()
    {
        Desk d("frmOptions_file");
        d.open();
        d.face.begin(d.words());
        d.window.reset();
        QFile file(gSettingsFile);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(kOtherSettings) > 0);
        file.close();
        d.open();
        d.stage("every setting other than the default");
        auto* box = d.find<QLineEdit>("txtTemp");
        box->clear();
        QTest::keyClicks(box, "/t");
        d.press("cmdOK");
        d.stage("a folder typed, and OK");
        COMPARE_FACE(d.face);
    }

    void options_thatCannotBeStored()
    {
        Desk d("frmOptions_refused");
        QVERIFY(QDir().mkpath(gSettingsFile)); // A folder bears its name.
        d.open();
        d.face.begin(d.words());
        const QSignalSpy refused(&d.window->saver(), &SettingsSaver::refused);
        d.pressOn("chkToolbar");
        d.find<QLineEdit>("txtWAVIn")->setText("two\nlines");
        d.find<QLineEdit>("txtTemp")->setText("more\r");
        d.press("cmdApply");
        QTRY_COMPARE(refused.size(), 1);
        d.stage(refused[0][0].toString().replace(d.folder.path(), "FOLDER").replace('\n', "\\n"));
        COMPARE_FACE(d.face);
    }
};

QTEST_MAIN(TestOptionFaces)
#include "tst_optionfaces.moc"
