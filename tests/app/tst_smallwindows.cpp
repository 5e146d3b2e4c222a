#include "app/TipList.h"
#include "app/frmAbout.h"
#include "app/frmSplash.h"
#include "app/frmTip.h"
#include "fakes/FakeSeams.h"
#include "platform/IniFile.h"

#include <QCheckBox>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

/// The splash, tip and about windows.
class TestSmallWindows : public QObject
{
    Q_OBJECT
private slots:
    void splash_whenLoaded_isAsLargeAsItsPicture();
    void splash_afterItsTimer_closes();
    void splash_onAnyInput_closesBeforeItsTimer_data();
    void splash_onAnyInput_closesBeforeItsTimer();

    void tips_ofAFile_areItsLines_data();
    void tips_ofAFile_areItsLines();
    void tips_fromNoFile_fail_data();
    void tips_fromNoFile_fail();
    void tips_ofAFileAtItsLimit_areReadAndNoMore();
    void tips_chosenOften_areAllSeenAndSometimesTwice();
    void tips_ofAnotherSeed_comeInAnotherOrder();

    void tip_whenLoaded_showsATipAndTheSetting();
    void tip_withoutAFile_showsTheInstructions();
    void tip_withoutAFile_ignoresNextTip();
    void tip_ofOneLine_staysOnNextTip();
    void tip_thatLooksLikeMarkup_isShownAsItIs();
    void tip_inADarkTheme_hasTheColoursOfAPage();
    void tip_ofMillionsOfLetters_showsItsBeginning();
    void tip_ofAnEmptyFile_showsNothing();
    void tip_openedAgain_readsTheFileAgain();
    void tip_unticked_writesFalseAtOnce();
    void tip_tickedAgain_writesTrue();
    void tip_withAReadOnlyFile_stillChangesTheRecord();
    void tip_ok_closes();

    void about_whenLoaded_namesTitleAndVersion();
    void about_versionText_isPlainNumbers();
    void about_systemInfo_startsTheToolOfTheFirstKey();
    void about_systemInfo_startsTheToolInTheFolderOfTheSecondKey();
    void about_systemInfo_withoutATool_saysSo_data();
    void about_systemInfo_withoutATool_saysSo();
    void about_ok_closes();
};

namespace {

struct Desk
{
    Desk()
    {
        zib::setApplicationFolder(folder.path());
        zib::setSettingsFile(folder.filePath("settings.ini"));
    }
    void writeTips(const QByteArray& text) const { write("TIPOFDAY.TXT", text); }
    void write(const QString& name, const QByteArray& text) const
    {
        QFile file(folder.filePath(name));
        if (!file.open(QIODevice::WriteOnly))
            qFatal("Cannot write %s", qPrintable(name));
        file.write(text);
    }
    QByteArray settings() const
    {
        QFile file(gSettingsFile);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }

    zib::IniFile ini;
    QTemporaryDir folder;
    zib::FakeDesk fakes{&ini};
};

QString tipOf(const frmTip& window)
{
    return window.findChild<QLabel*>("lblTipText")->text();
}

void click(const QWidget& window, const QString& name)
{
    auto* button = window.findChild<QAbstractButton*>(name);
    if (!button)
        qFatal("There is no button %s", qPrintable(name));
    button->click();
}

} // namespace

void TestSmallWindows::splash_whenLoaded_isAsLargeAsItsPicture()
{
    frmSplash window;
    auto* picture = window.findChild<QLabel*>("Image1");
    QVERIFY(picture);
    const QSize artwork = picture->pixmap().deviceIndependentSize().toSize();
    QCOMPARE(artwork, QSize(480, 300));
    QCOMPARE(window.size(), artwork);
    QCOMPARE(picture->geometry(), QRect(QPoint(0, 0), artwork));
    QVERIFY(window.windowFlags().testFlag(Qt::FramelessWindowHint));
}

void TestSmallWindows::splash_afterItsTimer_closes()
{
    frmSplash window;
    auto* timer = window.findChild<QTimer*>("Timer1");
    QVERIFY(timer);
    QCOMPARE(timer->interval(), 3000);
    QVERIFY(!timer->isActive());
    timer->setInterval(1);
    QTimer::singleShot(60000, &window, &QDialog::reject);
    QCOMPARE(window.exec(), int(QDialog::Accepted));
    QVERIFY(!window.isVisible());
}

void TestSmallWindows::splash_onAnyInput_closesBeforeItsTimer_data()
{
    QTest::addColumn<QString>("input");
    for (const char* input :
         {"click window", "click picture", "double-click", "right click", "key", "Escape"})
        QTest::newRow(input) << QString(input);
}

void TestSmallWindows::splash_onAnyInput_closesBeforeItsTimer()
{
    QFETCH(QString, input);
    frmSplash window;
    auto* timer = window.findChild<QTimer*>("Timer1");
    auto* picture = window.findChild<QLabel*>("Image1");
    timer->setInterval(10 * 60 * 1000);
    window.setModal(true);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    if (input == "click window")
        QTest::mouseClick(&window, Qt::LeftButton);
    else if (input == "click picture")
        QTest::mouseClick(picture, Qt::LeftButton);
    else if (input == "double-click")
        QTest::mouseDClick(picture, Qt::LeftButton);
    else if (input == "right click")
        QTest::mouseClick(picture, Qt::RightButton);
    else if (input == "key")
        QTest::keyClick(&window, Qt::Key_A);
    else
        QTest::keyClick(&window, Qt::Key_Escape);
    QVERIFY(!window.isVisible());
}

void TestSmallWindows::tips_ofAFile_areItsLines_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("tips");
    const auto row = [](const char* name, const QByteArray& text, const QStringList& tips) {
        QTest::newRow(name) << text << tips;
    };
    row("one", "a", {"a"});
    row("one, ended", "a\n", {"a"});
    row("two", "a\nb\n", {"a", "b"});
    row("cr lf", "a\r\nb\r\n", {"a", "b"});
    row("cr", "a\rb\r", {"a", "b"});
    row("empty between", "a\n\nb", {"a", "", "b"});
    row("empty first", "\na", {"", "a"});
    row("empty last", "a\n\n", {"a", ""});
    row("one empty", "\n", {""});
    row("none", "", {});
    row("blanks stay", "  a  \n", {"  a  "});
    row("utf-8", "Größe 音\n", {"Größe 音"});
    row("utf-8 with mark",
        "\xEF\xBB\xBF"
        "a\n",
        {"a"});
    row("latin-1",
        "Gr\xF6\xDF"
        "e\n",
        {"Größe"});
}

void TestSmallWindows::tips_ofAFile_areItsLines()
{
    QFETCH(QByteArray, text);
    QTEST(zib::TipList::linesOf(text), "tips");
    Desk desk;
    desk.writeTips(text);
    zib::TipList tips(1);
    QVERIFY(tips.load(desk.folder.filePath("TIPOFDAY.TXT")));
    QCOMPARE(tips.count(), zib::TipList::linesOf(text).size());
}

void TestSmallWindows::tips_fromNoFile_fail_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("empty") << QString();
    QTest::newRow("missing") << "/nowhere/TIPOFDAY.TXT";
    QTest::newRow("folder") << "/tmp";
    QTest::newRow("device") << "/dev/zero";
}

void TestSmallWindows::tips_fromNoFile_fail()
{
    QFETCH(QString, path);
    zib::TipList tips(1);
    QVERIFY(!tips.load(path));
    QCOMPARE(tips.count(), 0);
    QCOMPARE(tips.any(), std::nullopt);
}

void TestSmallWindows::tips_ofAFileAtItsLimit_areReadAndNoMore()
{
    constexpr qint64 kMost = 16 * 1024 * 1024;
    Desk desk;
    desk.writeTips("first\nsecond");
    const QString path = desk.folder.filePath("TIPOFDAY.TXT");
    zib::TipList tips(1);
    QVERIFY(QFile::resize(path, kMost));
    QVERIFY(tips.load(path));
    QCOMPARE(tips.count(), 2);
    QVERIFY(QFile::resize(path, kMost + 1));
    QVERIFY(!tips.load(path));
    QCOMPARE(tips.count(), 0); // Nor are those of before kept.
}

void TestSmallWindows::tips_chosenOften_areAllSeenAndSometimesTwice()
{
    Desk desk;
    desk.writeTips("a\nb\nc\nd\n");
    zib::TipList tips(12345);
    QVERIFY(tips.load(desk.folder.filePath("TIPOFDAY.TXT")));
    QMap<QString, int> seen;
    QString before;
    int twice = 0;
    for (int i = 0; i < 4000; ++i) {
        const QString tip = *tips.any();
        ++seen[tip];
        twice += tip == before;
        before = tip;
    }
    QCOMPARE(seen.keys(), (QStringList{"a", "b", "c", "d"}));
    for (const int times : seen)
        QVERIFY2(times > 800 && times < 1200, qPrintable(QString::number(times)));
    QVERIFY2(twice > 800 && twice < 1200, qPrintable(QString::number(twice)));
}

void TestSmallWindows::tips_ofAnotherSeed_comeInAnotherOrder()
{
    Desk desk;
    desk.writeTips("a\nb\nc\nd\n");
    const auto order = [&desk](quint32 seed) {
        zib::TipList tips(seed);
        if (!tips.load(desk.folder.filePath("TIPOFDAY.TXT")))
            return QString("none");
        QString text;
        for (int i = 0; i < 50; ++i)
            text += *tips.any();
        return text;
    };
    QVERIFY(order(1) != order(2));
    QCOMPARE(order(1), order(1));
}

void TestSmallWindows::tip_whenLoaded_showsATipAndTheSetting()
{
    Desk desk;
    desk.writeTips("first\nsecond\n");
    OptionsData options;
    options.ShowTipsOfDay = false;
    zib::setOptions(options);
    const frmTip window;
    QCOMPARE(window.windowTitle(), QString("Tip of the Day"));
    QCOMPARE(window.findChild<QLabel*>("lblHeading")->text(), QString("Did you know..."));
    QCOMPARE(window.findChild<QPushButton*>("cmdNextTip")->text(), QString("&Next Tip"));
    QVERIFY((QStringList{"first", "second"}.contains(tipOf(window))));
    const auto* box = window.findChild<QCheckBox*>("chkLoadTipsAtStartup");
    QCOMPARE(box->text(), QString("&Show Tips at Startup"));
    QVERIFY(!box->isChecked());
    options.ShowTipsOfDay = true;
    zib::setOptions(options);
    QVERIFY(frmTip().findChild<QCheckBox*>("chkLoadTipsAtStartup")->isChecked());
    QCOMPARE(desk.settings(), QByteArray("(no file)"));
}

void TestSmallWindows::tip_withoutAFile_showsTheInstructions()
{
    Desk desk;
    QCOMPARE(
        tipOf(frmTip()),
        QString("That the TIPOFDAY.TXT file was not found? \n\nCreate a text file named TIPOFDAY.TXT using "
                "NotePad with 1 tip per line. Then place it in the same directory as the application. "));
}

void TestSmallWindows::tip_withoutAFile_ignoresNextTip()
{
    Desk desk;
    const frmTip window;
    const QString text = tipOf(window);
    click(window, "cmdNextTip");
    QCOMPARE(tipOf(window), text);
}

void TestSmallWindows::tip_ofOneLine_staysOnNextTip()
{
    Desk desk;
    desk.writeTips("only\n");
    const frmTip window;
    for (int i = 0; i < 20; ++i) {
        QCOMPARE(tipOf(window), QString("only"));
        click(window, "cmdNextTip");
    }
}

void TestSmallWindows::tip_thatLooksLikeMarkup_isShownAsItIs()
{
    Desk desk;
    desk.writeTips("<b>Bold</b>&amp;\n");
    const frmTip window;
    QCOMPARE(tipOf(window), QString("<b>Bold</b>&amp;"));
    QCOMPARE(window.findChild<QLabel*>("lblTipText")->textFormat(), Qt::PlainText);
}

void TestSmallWindows::tip_inADarkTheme_hasTheColoursOfAPage()
{
    Desk desk;
    desk.writeTips("one\n");
    const frmTip window;
    const auto* scroller = window.findChild<QScrollArea*>("scrTip");
    for (const QWidget* page : {window.findChild<QWidget*>("fraTip"), scroller->viewport(),
                                window.findChild<QWidget*>("scrTipContents")})
        QCOMPARE(page->backgroundRole(), QPalette::Base);
    for (const QWidget* words :
         {window.findChild<QWidget*>("fraTip"), scroller->viewport(),
          window.findChild<QWidget*>("lblHeading"), window.findChild<QWidget*>("lblTipText")})
        QCOMPARE(words->foregroundRole(), QPalette::Text);
    QVERIFY(window.findChild<QLabel*>("lblHeading")->font().bold());
    QVERIFY(!window.findChild<QLabel*>("imgTip")->pixmap().isNull());
}

void TestSmallWindows::tip_ofMillionsOfLetters_showsItsBeginning()
{
    Desk desk;
    desk.writeTips(QByteArray(3'000'000, 'x'));
    const frmTip window;
    QVERIFY2(tipOf(window).size() < 10'000, qPrintable(QString::number(tipOf(window).size())));
    QVERIFY(tipOf(window).startsWith("xxx"));
    desk.writeTips(QByteArray(4000, 'x'));
    const frmTip whole;
    QCOMPARE(tipOf(whole).size(), 4000);
}

void TestSmallWindows::tip_ofAnEmptyFile_showsNothing()
{
    Desk desk;
    desk.writeTips("");
    const frmTip window;
    click(window, "cmdNextTip");
    QCOMPARE(tipOf(window), QString());
}

void TestSmallWindows::tip_openedAgain_readsTheFileAgain()
{
    Desk desk;
    desk.writeTips("old\n");
    QCOMPARE(tipOf(frmTip()), QString("old"));
    desk.writeTips("new\n");
    QCOMPARE(tipOf(frmTip()), QString("new"));
}

void TestSmallWindows::tip_unticked_writesFalseAtOnce()
{
    Desk desk;
    desk.writeTips("a\n");
    desk.write("settings.ini", "; mine\n[View]\nShow ToolBar=True\n");
    const frmTip window;
    QVERIFY(gOptions.ShowTipsOfDay);
    click(window, "chkLoadTipsAtStartup");
    QCOMPARE(desk.settings(), QByteArray("; mine\n[View]\nShow ToolBar=True\nShow Tips Of Day=False\n"));
    QCOMPARE(gOptions.ShowTipsOfDay, false);
}

void TestSmallWindows::tip_tickedAgain_writesTrue()
{
    Desk desk;
    const frmTip window;
    click(window, "chkLoadTipsAtStartup");
    click(window, "chkLoadTipsAtStartup");
    QCOMPARE(desk.settings(), QByteArray("[View]\nShow Tips Of Day=True\n"));
    QCOMPARE(gOptions.ShowTipsOfDay, true);
}

void TestSmallWindows::tip_withAReadOnlyFile_stillChangesTheRecord()
{
    Desk desk;
    desk.write("settings.ini", "[View]\n");
    QVERIFY(QFile::setPermissions(gSettingsFile, QFile::ReadOwner));
    const frmTip window;
    click(window, "chkLoadTipsAtStartup");
    QCOMPARE(desk.settings(), QByteArray("[View]\n"));
    QCOMPARE(gOptions.ShowTipsOfDay, false);
    QCOMPARE(desk.fakes.messages.shown, QStringList());
}

void TestSmallWindows::tip_ok_closes()
{
    Desk desk;
    frmTip window;
    window.show();
    click(window, "cmdOK");
    QVERIFY(!window.isVisible());
}

void TestSmallWindows::about_whenLoaded_namesTitleAndVersion()
{
    zib::FakeDesk desk;
    const frmAbout window(desk.messages);
    QCOMPARE(window.windowTitle(), QString("About Zib CD Burner"));
    QCOMPARE(window.findChild<QLabel*>("lblTitle")->text(), QString("Zib CD Burner"));
    QCOMPARE(window.findChild<QLabel*>("lblVersion")->text(),
             frmAbout::versionText(zib::kVersionMajor, zib::kVersionMinor, zib::kVersionRevision));
    QCOMPARE(window.findChild<QLabel*>("lblDescription")->text(),
             QString("Burn Audio Files MP3/WAV as CD Audio for being played by your CD player."));
    QCOMPARE(window.findChild<QPushButton*>("cmdSysInfo")->text(), QString("&System Info..."));
}

void TestSmallWindows::about_versionText_isPlainNumbers()
{
    QCOMPARE(frmAbout::versionText(1, 3, 1), QString("Version 1.3.1"));
    QCOMPARE(frmAbout::versionText(10, 0, 25), QString("Version 10.0.25"));
}

void TestSmallWindows::about_systemInfo_startsTheToolOfTheFirstKey()
{
    zib::FakeDesk desk;
    desk.registry.entries = {{"SOFTWARE\\Microsoft\\Shared Tools\\MSINFO\\PATH", "/usr/bin/tool"},
                             {"SOFTWARE\\Microsoft\\Shared Tools Location\\MSINFO", "/usr/other"}};
    const frmAbout window(desk.messages);
    click(window, "cmdSysInfo");
    QCOMPARE(desk.shell.calls, QStringList{"open /usr/bin/tool"});
    QCOMPARE(desk.messages.shown, QStringList());
}

void TestSmallWindows::about_systemInfo_startsTheToolInTheFolderOfTheSecondKey()
{
    Desk desk;
    desk.write("x\\MSINFO32.EXE", "");
    desk.fakes.registry.entries = {
        {"SOFTWARE\\Microsoft\\Shared Tools Location\\MSINFO", desk.folder.filePath("x")}};
    const frmAbout window(desk.fakes.messages);
    click(window, "cmdSysInfo");
    QCOMPARE(desk.fakes.shell.calls, QStringList{"open " + desk.folder.filePath("x\\MSINFO32.EXE")});
}

void TestSmallWindows::about_systemInfo_withoutATool_saysSo_data()
{
    QTest::addColumn<QString>("folder");
    QTest::newRow("no key") << QString();
    QTest::newRow("folder without the tool") << "/nowhere";
}

void TestSmallWindows::about_systemInfo_withoutATool_saysSo()
{
    QFETCH(QString, folder);
    zib::FakeDesk desk;
    if (!folder.isEmpty())
        desk.registry.entries = {{"SOFTWARE\\Microsoft\\Shared Tools Location\\MSINFO", folder}};
    frmAbout window(desk.messages);
    click(window, "cmdSysInfo");
    QCOMPARE(desk.messages.shown, QStringList{"p: System Information Is Unavailable At This Time"});
    QCOMPARE(desk.messages.owners.first().data(), &window);
    QCOMPARE(desk.shell.calls, QStringList());
}

void TestSmallWindows::about_ok_closes()
{
    zib::FakeDesk desk;
    frmAbout window(desk.messages);
    window.show();
    click(window, "cmdOK");
    QVERIFY(!window.isVisible());
}

QTEST_MAIN(TestSmallWindows)
#include "tst_smallwindows.moc"
