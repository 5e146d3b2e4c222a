#include "app/Desk.h"
#include "common/NativeName.h"
#include "common/Texts.h"

#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QSignalSpy>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>

namespace {

struct Button
{
    const char* key;
    const char* caption;
    const char* tip;
};

const QList<Button> kButtons{
    {"add", "Add", "Add WAV Files to the List"},
    {"write", "Write", "Write WAV Files to CD"},
    {"up", "Up", "Move Selected Item Up"},
    {"down", "Down", "Move Selected Item Down"},
    {"play", "Play", "Play Selected Item"},
    {"delete", "Delete", "Delete Selected Item"},
    {"ripper", "Rip CD", "CD Ripper Tool - For Ripping CD to WAV Files"},
    {"converter", "Convert", "MP3 To WAV Converter Tool - For Converting MP3 Files to WAV Files"},
    {"label", "Label", "CD Label Maker Tool - For Making CD Label"},
    {"player", "Player", "MP3 WAV Player Tool - For Playing Audio MP3 or WAV Files"},
    {"options", "Options", "Options Tool - For Configuring the Software's Parameters"},
    {"help", "Help", "Open Help File"}};

/// "text|shortcut" of each item, "-" for a separator.
const QList<std::pair<QString, QStringList>> kMenus{
    {"mnuFile",
     {"&File", "Add MP3 or WAV &Files...|Ctrl+F", "&Write Files to CD...|Ctrl+W", "-", "&New Project|Ctrl+N",
      "&Open Project...|Ctrl+O", "&Save Project|Ctrl+S", "Save Project &As...|", "-", "E&xit|Ctrl+X"}},
    {"mnuView",
     {"&View", "&Toolbar|", "&Flat Toolbar|", "&3D Toolbar|", "T&ext on Toolbar|", "Ti&ps on Toolbar|", "-",
      "&Statusbar|", "-", "&Grid Lines|"}},
    {"mnuTracks",
     {"Trac&ks", "Move &Up|Ctrl+U", "Move &Down|Ctrl+D", "-", "&Tick All Tracks|", "&Untick All Tracks|", "-",
      "&Remove Checked Track(s)|", "&Clear All Tracks|", "-", "&Play...|Ctrl+P"}},
    {"mnuTools",
     {"&Tools", "Audio CD &Ripper...|", "MP3 To WAV &Converter...|", "Audio CD Label &Maker...|",
      "MP3 WAV &Player...|", "-", "&Options...|"}},
    {"mnuHelp",
     {"&Help", "&Contents and Index|F1", "-", "&Tip of the Day...|", "Visit &Homepage|", "-", "&About...|"}}};

} // namespace

/// The main window's start, its view settings, and where its commands lead.
class TestFrmMain : public QObject
{
    Q_OBJECT
private slots:
    void toolbar_atStart_hasTheTwelveButtonsInOrder()
    {
        Desk desk;
        const QList<QAction*> actions = desk.control<QToolBar>("Toolbar1")->actions();
        QCOMPARE(actions.size(), kButtons.size());
        for (qsizetype i = 0; i < actions.size(); ++i) {
            QCOMPARE(actions[i]->objectName(), QString("Toolbar1_") + kButtons[i].key);
            QCOMPARE(actions[i]->data().toString(), QString(kButtons[i].key));
            QCOMPARE(actions[i]->text(), QString(kButtons[i].caption));
            QCOMPARE(button(desk, i)->toolTip(), QString(kButtons[i].tip));
            QVERIFY(!actions[i]->icon().isNull());
            QVERIFY(!actions[i]->icon().pixmap(32).isNull());
        }
    }
    void menus_atStart_haveTheirItemsAndShortcuts()
    {
        Desk desk;
        for (const auto& [name, texts] : kMenus) {
            const auto* menu = desk.control<QMenu>(name);
            QCOMPARE(menu->title(), texts.first());
            QCOMPARE(menu->actions().size(), texts.size() - 1);
            for (qsizetype i = 1; i < texts.size(); ++i) {
                const QAction* item = menu->actions().at(i - 1);
                QCOMPARE(item->objectName(), QString("%1Sub_%2").arg(name).arg(i));
                QCOMPARE(item->isSeparator(), texts[i] == "-");
                if (!item->isSeparator())
                    QCOMPARE(item->text() + "|" + item->shortcut().toString(), texts[i]);
            }
        }
    }
    void list_atStart_hasSevenColumns()
    {
        Desk desk;
        const QList<std::pair<QString, int>> columns{{"#", 75},        {"File name", 240}, {"Title", 169},
                                                     {"Artist", 169},  {"Time", 122},      {"File Size", 122},
                                                     {"Location", 169}};
        const QAbstractItemModel* model = desk.list()->model();
        QCOMPARE(model->columnCount(), columns.size());
        for (int i = 0; i < columns.size(); ++i) {
            QCOMPARE(model->headerData(i, Qt::Horizontal).toString(), columns[i].first);
            const int alignment = model->headerData(i, Qt::Horizontal, Qt::TextAlignmentRole).toInt();
            QCOMPARE(bool(alignment & Qt::AlignRight), i == 4 || i == 5);
            if (i + 1 < columns.size()) // The last one takes the room that is left.
                QCOMPARE(desk.list()->columnWidth(i), columns[i].second);
        }
        QCOMPARE(desk.list()->selectionMode(), QAbstractItemView::SingleSelection);
        QCOMPARE(desk.list()->selectionBehavior(), QAbstractItemView::SelectRows);
    }
    void statusBar_atStart_hasSixPanels()
    {
        Desk desk;
        QCOMPARE(desk.panel(1), QString("Total Time: 00:00:00"));
        QCOMPARE(desk.panel(2), QString("Total Files: 0"));
        QCOMPARE(desk.panel(3), QString("Convert MP3 or WAV to CD"));
        QCOMPARE(desk.panel(4), zib::kHomePage);
        for (int i = 1; i <= 4; ++i)
            QCOMPARE(desk.control<QLabel>(QString("StatusBar1_%1").arg(i))->toolTip(), desk.panel(i));
        const auto* bar = desk.control<QStatusBar>("StatusBar1");
        for (int i = 1, right = 0; i <= 6; ++i) { // Side by side, each with room for some words.
            const auto* panel = desk.control<QLabel>(QString("StatusBar1_%1").arg(i));
            QCOMPARE(panel->parentWidget(), bar);
            QVERIFY2(panel->x() >= right && panel->width() > 30, qPrintable(panel->objectName()));
            right = panel->geometry().right();
        }
        QVERIFY(desk.panel(5).contains(QString::number(QDate::currentDate().year() % 100)));
        QVERIFY2(desk.panel(6).contains(':'), qPrintable(desk.panel(6)));
    }
    void form_whenLoaded_readsTheSettingsFileOfTheApplicationFolder()
    {
        Desk desk;
        desk.set("View", "Grid Back Color", "255");
        zib::setTotalMinutes(12);
        zib::setCurrentFile("/old.mp3");
        desk.window();
        QCOMPARE(gSettingsFile, desk.folder.filePath("settings.ini"));
        QCOMPARE(gOptions.GridBackColor, 255);
        QCOMPARE(desk.list()->palette().color(QPalette::Base), QColor(255, 0, 0));
        QCOMPARE(TotalMinutes, 0.0);
        QCOMPARE(::CurrentFile, QString());
        QCOMPARE(desk.window().windowTitle(), QString("Zib CD Burner"));
        QVERIFY(!desk.window().windowIcon().isNull());
    }
    void form_whenASettingCannotBeConverted_saysSoAndGoesOn()
    {
        Desk desk;
        desk.set("View", "Show Statusbar", "yes");
        desk.window();
        QCOMPARE(desk.desk.messages.shown.size(), 1);
        QVERIFY(desk.control<QStatusBar>("StatusBar1")->isVisible());
    }
    void form_withoutAnyComponent_startsAndRefusesFiles()
    {
        Desk desk;
        desk.desk.components = {};
        desk.add({desk.file("a.wav")});
        QCOMPARE(desk.rows(), 0);
        QCOMPARE(desk.desk.messages.shown.size(), 1);
    }
    void splash_whenOn_closesBeforeTheWindowAppears()
    {
        Desk desk;
        desk.set("View", "Show Splash Screen", "True");
        bool visible = true;
        desk.desk.windows.onShow = [&](const QString& name) {
            QCOMPARE(name, QString("splash"));
            for (const QWidget* window : QApplication::topLevelWidgets())
                visible = visible && window->isVisible();
        };
        desk.window();
        QVERIFY(!visible);
        QCOMPARE(desk.desk.windows.shown, QStringList{"splash"});
    }
    void tip_whenOn_comesOnceAfterTheDelay()
    {
        Desk desk;
        desk.set("View", "Show Tips Of Day", "True");
        auto* timer = desk.control<QTimer>("Timer1");
        QVERIFY(timer->isActive());
        QCOMPARE(timer->interval(), 200);
        bool running = true;
        desk.desk.windows.onShow = [&](const QString&) { running = timer->isActive(); };
        QTRY_COMPARE_WITH_TIMEOUT(desk.desk.windows.shown, QStringList{"tip"}, 30000);
        QVERIFY(!running);
        QTest::qWait(500);
        QCOMPARE(desk.desk.windows.shown, QStringList{"tip"});
    }
    void tip_whenOff_neverComes()
    {
        Desk desk;
        QVERIFY(!desk.control<QTimer>("Timer1")->isActive());
    }
    void tip_whenTurnedOffMeanwhile_staysAway()
    {
        Desk desk;
        desk.set("View", "Show Tips Of Day", "True");
        auto* timer = desk.control<QTimer>("Timer1");
        OptionsData options = gOptions;
        options.ShowTipsOfDay = false;
        zib::setOptions(options);
        QTRY_VERIFY_WITH_TIMEOUT(!timer->isActive(), 30000);
        QCOMPARE(desk.desk.windows.shown, QStringList());
    }

    void refreshMain_fromTheSettings_checksTheViewMenu_data()
    {
        QTest::addColumn<OptionsData>("options");
        QTest::addColumn<QString>("checks"); // Of items 1, 2, 3, 4, 5, 7, 9.
        const auto row = [](const char* name, auto change, const char* checks) {
            OptionsData options;
            change(options);
            QTest::newRow(name) << options << QString(checks);
        };
        row(
            "defaults", [](OptionsData&) {}, "1101111");
        row(
            "no toolbar", [](OptionsData& o) { o.ShowToolBar = false; }, "0101111");
        row(
            "not flat", [](OptionsData& o) { o.ToolbarStyleFlat = false; }, "1011111");
        row(
            "3D has no say", [](OptionsData& o) { o.ToolbarStyle3D = true; }, "1101111");
        row(
            "text has no say", [](OptionsData& o) { o.ShowTextOnToolbar = false; }, "1101111");
        row(
            "tips rule both", [](OptionsData& o) { o.ShowTipsOnToolbar = false; }, "1100011");
        row(
            "no status bar", [](OptionsData& o) { o.ShowStatusbar = false; }, "1101101");
        row(
            "no grid", [](OptionsData& o) { o.ShowGridLines = false; }, "1101110");
    }
    void refreshMain_fromTheSettings_checksTheViewMenu()
    {
        QFETCH(OptionsData, options);
        QFETCH(QString, checks);
        Desk desk;
        desk.window();
        zib::setOptions(options);
        desk.window().RefreshMain();
        QString found;
        for (const int i : {1, 2, 3, 4, 5, 7, 9})
            found += view(desk, i)->isChecked() ? '1' : '0';
        QCOMPARE(found, checks);
        QCOMPARE(desk.control<QToolBar>("Toolbar1")->isVisible(), checks[0] == '1');
        for (const int i : {2, 3, 4, 5})
            QCOMPARE(view(desk, i)->isEnabled(), checks[0] == '1');
        QCOMPARE(button(desk, 0)->autoRaise(), checks[1] == '1');
        QCOMPARE(desk.action("Toolbar1_add")->text(), QString(checks[3] == '1' ? "Add" : ""));
        QCOMPARE(button(desk, 0)->toolTip(), QString(checks[4] == '1' ? "Add WAV Files to the List" : ""));
        QCOMPARE(desk.control<QStatusBar>("StatusBar1")->isVisible(), checks[5] == '1');
        QCOMPARE(desk.list()->showGrid(), checks[6] == '1');
    }
    void start_withTextOnAndTipsOff_hasNeitherCaptionsNorTips()
    {
        Desk desk;
        desk.set("View", "Show Text On Toolbar", "True");
        desk.set("View", "Show Tips On Toolbar", "False");
        for (qsizetype i = 0; i < kButtons.size(); ++i) {
            QCOMPARE(button(desk, i)->text(), QString());
            QCOMPARE(button(desk, i)->toolTip(), QString());
        }
    }
    void colors_fromTheSettings_paintTheList()
    {
        Desk desk;
        desk.set("View", "Grid Back Color", "16711680");
        desk.set("View", "Grid Text Color", "255");
        QCOMPARE(desk.list()->palette().color(QPalette::Base), QColor(0, 0, 255));
        QCOMPARE(desk.list()->palette().color(QPalette::Text), QColor(255, 0, 0));
    }

    void toolbarItem_whenUnchecked_hidesTheToolbarAndGreysItsItems()
    {
        Desk desk;
        desk.trigger("mnuViewSub_1");
        QVERIFY(!desk.control<QToolBar>("Toolbar1")->isVisible());
        for (const int i : {2, 3, 4, 5})
            QVERIFY(!view(desk, i)->isEnabled());
        desk.trigger("mnuViewSub_1");
        QVERIFY(desk.control<QToolBar>("Toolbar1")->isVisible());
        for (const int i : {2, 3, 4, 5})
            QVERIFY(view(desk, i)->isEnabled());
    }
    void flatAnd3D_whenClicked_excludeEachOther()
    {
        Desk desk;
        desk.trigger("mnuViewSub_3");
        QVERIFY(view(desk, 3)->isChecked() && !view(desk, 2)->isChecked());
        QVERIFY(!button(desk, 0)->autoRaise());
        desk.trigger("mnuViewSub_3");
        QVERIFY(!view(desk, 3)->isChecked() && view(desk, 2)->isChecked());
        QVERIFY(button(desk, 0)->autoRaise());
        desk.trigger("mnuViewSub_2");
        QVERIFY(view(desk, 3)->isChecked() && !view(desk, 2)->isChecked());
        QVERIFY(!button(desk, 11)->autoRaise());
        desk.trigger("mnuViewSub_2");
        QVERIFY(!view(desk, 3)->isChecked() && view(desk, 2)->isChecked());
    }
    void captions_whenTurnedOffAndOn_areTheOriginalOnes()
    {
        Desk desk;
        desk.trigger("mnuViewSub_4");
        for (qsizetype i = 0; i < kButtons.size(); ++i) {
            QCOMPARE(button(desk, i)->text(), QString());
            QCOMPARE(button(desk, i)->toolTip(), QString(kButtons[i].tip));
            QCOMPARE(button(desk, i)->accessibleName(), QString(kButtons[i].caption));
        }
        desk.trigger("mnuViewSub_4");
        for (qsizetype i = 0; i < kButtons.size(); ++i)
            QCOMPARE(button(desk, i)->text(), QString(kButtons[i].caption));
    }
    void tips_whenTurnedOffAndOn_areTheOriginalOnes()
    {
        Desk desk;
        desk.trigger("mnuViewSub_5");
        for (qsizetype i = 0; i < kButtons.size(); ++i) {
            QCOMPARE(button(desk, i)->toolTip(), QString());
            QCOMPARE(button(desk, i)->text(), QString(kButtons[i].caption));
        }
        QHelpEvent ask(QEvent::ToolTip, QPoint(5, 5), QPoint(5, 5));
        QApplication::sendEvent(button(desk, 0), &ask);
        QVERIFY(!QApplication::activePopupWidget());
        desk.trigger("mnuViewSub_5");
        for (qsizetype i = 0; i < kButtons.size(); ++i)
            QCOMPARE(button(desk, i)->toolTip(), QString(kButtons[i].tip));
    }
    void tips_whenOffWhileCaptionsComeBack_stayOff()
    {
        Desk desk;
        desk.trigger("mnuViewSub_5");
        desk.trigger("mnuViewSub_4");
        desk.trigger("mnuViewSub_4");
        QCOMPARE(button(desk, 0)->text(), QString("Add"));
        QCOMPARE(button(desk, 0)->toolTip(), QString());
    }
    void statusbarAndGridItems_whenClicked_showAndHide()
    {
        Desk desk;
        desk.trigger("mnuViewSub_7");
        QVERIFY(!desk.control<QStatusBar>("StatusBar1")->isVisible());
        desk.trigger("mnuViewSub_9");
        QVERIFY(!desk.list()->showGrid());
        desk.trigger("mnuViewSub_7");
        QVERIFY(desk.control<QStatusBar>("StatusBar1")->isVisible());
        desk.trigger("mnuViewSub_9");
        QVERIFY(desk.list()->showGrid());
    }
    void viewMenu_whenUsed_writesNoSetting()
    {
        Desk desk;
        desk.window();
        const QByteArray before = settings(desk);
        for (const int i : {1, 1, 2, 3, 4, 5, 7, 9})
            view(desk, i)->trigger();
        QCOMPARE(settings(desk), before);
        QVERIFY(gOptions.ShowGridLines);
    }

    void command_whenTriggered_opensItsWindow_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<QString>("window");
        for (const auto& [action, window] :
             QList<std::pair<const char*, const char*>>{{"Toolbar1_ripper", "rip"},
                                                        {"mnuToolsSub_1", "rip"},
                                                        {"Toolbar1_converter", "converter"},
                                                        {"mnuToolsSub_2", "converter"},
                                                        {"Toolbar1_label", "label"},
                                                        {"mnuToolsSub_3", "label"},
                                                        {"Toolbar1_player", "player"},
                                                        {"mnuToolsSub_4", "player"},
                                                        {"Toolbar1_options", "options"},
                                                        {"mnuToolsSub_6", "options"},
                                                        {"mnuHelpSub_3", "tip"},
                                                        {"mnuHelpSub_6", "about"}})
            QTest::newRow(action) << action << window;
    }
    void command_whenTriggered_opensItsWindow()
    {
        QFETCH(QString, action);
        QFETCH(QString, window);
        Desk desk;
        desk.addThree();
        desk.trigger(action);
        QCOMPARE(desk.desk.windows.shown, QStringList{window});
        if (window == "label")
            QCOMPARE(desk.desk.windows.rows.size(), 3);
    }
    void help_fromToolbarOrMenu_opensTheHelpFile()
    {
        Desk desk;
        desk.trigger("Toolbar1_help");
        desk.trigger("mnuHelpSub_1");
        const QString call = "open " + desk.folder.filePath("zibburn.chm");
        QCOMPARE(desk.desk.shell.calls, (QStringList{call, call}));
    }
    void homepage_fromTheMenu_goesToTheBrowser()
    {
        Desk desk;
        desk.trigger("mnuHelpSub_4");
        QCOMPARE(desk.desk.shell.calls, QStringList{"open IExplore.exe " + zib::kHomePage});
    }
    void panelOfTheAddress_whenClicked_opensTheHelp()
    {
        Desk desk;
        QTest::mouseClick(desk.control<QLabel>("StatusBar1_4"), Qt::LeftButton);
        QCOMPARE(desk.desk.shell.calls, QStringList{"open " + desk.folder.filePath("zibburn.chm")});
    }
    void rightClick_onBars_bringsNoMenuOfTheToolkit()
    {
        Desk desk;
        for (const char* name : {"menubar", "Toolbar1", "StatusBar1", "picPanel"}) {
            auto* bar = desk.control<QWidget>(name);
            QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5), bar->mapToGlobal(QPoint(5, 5)));
            QApplication::sendEvent(bar, &event);
            QVERIFY2(!QApplication::activePopupWidget(), name);
        }
        QCOMPARE(desk.window().findChildren<QMenu*>(QString(), Qt::FindDirectChildrenOnly).size(), 0);
    }
    void toolbarButton_withAnUnknownKey_doesNothing()
    {
        Desk desk;
        auto* stranger = desk.control<QToolBar>("Toolbar1")->addAction("Stranger");
        stranger->setData("stranger");
        stranger->trigger();
        QCOMPARE(desk.desk.windows.shown, QStringList());
        QCOMPARE(desk.desk.messages.shown, QStringList());
    }

    void write_onAnEmptyList_isRefused()
    {
        Desk desk;
        for (const char* action : {"Toolbar1_write", "mnuFileSub_2"}) {
            desk.desk.messages.shown.clear();
            desk.trigger(action);
            QCOMPARE(desk.desk.messages.shown, QStringList{"i: There are no files in the list to write!"});
            QCOMPARE(desk.desk.messages.owners.last().data(), &desk.window());
        }
        QCOMPARE(desk.desk.windows.shown, QStringList());
    }
    void write_withTracks_preparesAndThenWritesWhatWasPrepared()
    {
        Desk desk;
        desk.addThree();
        desk.desk.windows.preparedFiles = {"/tmp/a.wav", "/tmp/b.wav", "/tmp/c.wav"};
        desk.trigger("Toolbar1_write");
        QCOMPARE(desk.desk.windows.shown, (QStringList{"prepare", "write"}));
        QCOMPARE(desk.desk.windows.rows.size(), 3);
        QCOMPARE(desk.desk.windows.rows.at(2).path(), desk.folder.filePath("c.wav"));
        QCOMPARE(desk.desk.windows.rows.at(2).time, QString("01:00:00"));
        QCOMPARE(desk.desk.windows.trackFiles, desk.desk.windows.preparedFiles);
    }
    void write_whileTheProgramEnds_opensNoFurtherWindow_data()
    {
        QTest::addColumn<int>("files");
        QTest::addColumn<QStringList>("shown");
        QTest::newRow("during the preparation") << 3 << QStringList{"prepare"};
        QTest::newRow("at the box before it") << 100 << QStringList();
    }
    void write_whileTheProgramEnds_opensNoFurtherWindow()
    {
        QFETCH(int, files);
        Desk desk;
        QStringList sounds;
        for (int i = 0; i < files; ++i)
            sounds << desk.sound(QString("%1.wav").arg(i));
        desk.add(sounds);
        desk.desk.messages.onShow = [&desk](const QString&) { desk.window().close(); };
        desk.desk.windows.onShow = [&desk](const QString&) { desk.window().close(); };
        desk.trigger("Toolbar1_write");
        QTEST(desk.desk.windows.shown, "shown");
    }
    void write_ofNamedTracks_passesTheirNamesOn()
    {
        Desk desk;
        desk.add({desk.sound("a.wav", 60000, 1000, "Song", "Choir"),
                  desk.sound("b.wav", 60000, 1000, "", "Choir")});
        desk.trigger("Toolbar1_write");
        QCOMPARE(desk.desk.windows.discNames,
                 (zib::DiscNames{"", "Choir", {{"Song", "Choir"}, {"", "Choir"}}}));
        desk.desk.dialogs.files = {desk.folder.filePath("My.Best Mix.zibp")};
        desk.trigger("mnuFileSub_6");
        desk.trigger("Toolbar1_write");
        QCOMPARE(desk.desk.windows.discNames.title, QString("My.Best Mix"));
        const QString project = desk.folder.filePath(zib::nativeText("Caf\xE9.zibp"));
        desk.desk.dialogs.files = {project};
        desk.trigger("mnuFileSub_7");
        desk.trigger("Toolbar1_write");
        QCOMPARE(desk.desk.windows.discNames.title, QStringLiteral("Café"));
        QVERIFY(zib::removeFile(project)); // The folder could not.
    }
    void write_ofMoreTracksThanADiscHolds_saysTheLimitOnceBefore()
    {
        Desk desk;
        QStringList sounds;
        for (int i = 0; i < 100; ++i)
            sounds << desk.sound(QString("%1.wav").arg(i));
        desk.add(sounds.mid(0, 99));
        desk.trigger("Toolbar1_write");
        QCOMPARE(desk.desk.messages.shown, QStringList());
        desk.add(sounds);
        desk.desk.windows.onShow = [&](const QString&) { QCOMPARE(desk.desk.messages.shown.size(), 1); };
        desk.trigger("Toolbar1_write");
        QCOMPARE(desk.desk.messages.shown,
                 QStringList{"i: An audio CD holds 99 tracks at most, and there are 100 files in the list.\n"
                             "Only the first 99 can be written."});
        QCOMPARE(desk.desk.windows.shown, (QStringList{"prepare", "write", "prepare", "write"}));
    }
    void write_whenNothingWasPrepared_stillShowsTheWritingWindow()
    {
        Desk desk;
        desk.addThree();
        desk.trigger("mnuFileSub_2");
        QCOMPARE(desk.desk.windows.shown, (QStringList{"prepare", "write"}));
        QCOMPARE(desk.desk.windows.trackFiles, QStringList());
    }
    void exit_withTracks_closesWithoutAQuestion()
    {
        Desk desk;
        desk.addThree();
        const QByteArray before = settings(desk);
        desk.trigger("mnuFileSub_9");
        QVERIFY(!desk.window().isVisible());
        QCOMPARE(desk.desk.messages.shown, QStringList());
        QCOMPARE(settings(desk), before);
    }

    void layout_onEveryResize_fillsTheFreeRoom_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("usual") << QSize(1104, 640);
        QTest::newRow("wide") << QSize(1800, 500);
        QTest::newRow("small") << QSize(700, 300);
    }
    void layout_onEveryResize_fillsTheFreeRoom()
    {
        QFETCH(QSize, size);
        Desk desk;
        desk.window().resize(size);
        QTest::qWait(1);
        const auto* frame = desk.control<QWidget>("Picture1");
        const auto* gauge = desk.control<QFrame>("picPanel");
        QCOMPARE(desk.list()->size(), frame->size());
        QCOMPARE(frame->width(), desk.window().width());
        QVERIFY(gauge->mapTo(&desk.window(), QPoint()).y() >=
                frame->mapTo(&desk.window(), QPoint()).y() + frame->height());
        QCOMPARE(gauge->frameShape(), QFrame::NoFrame);
        QVERIFY(frame->height() > size.height() / 4);
    }
    void tabKey_inTheList_leavesIt()
    {
        Desk desk;
        desk.addThree();
        QVERIFY(desk.focusList());
        const QModelIndex before = desk.list()->currentIndex();
        QTest::keyClick(desk.list(), Qt::Key_Tab);
        QCOMPARE(desk.list()->currentIndex(), before);
    }

private:
    static QToolButton* button(Desk& desk, qsizetype index)
    {
        const auto* toolbar = desk.control<QToolBar>("Toolbar1");
        return qobject_cast<QToolButton*>(toolbar->widgetForAction(toolbar->actions().at(index)));
    }
    static QAction* view(Desk& desk, int index) { return desk.action(QString("mnuViewSub_%1").arg(index)); }
    static QByteArray settings(Desk& desk)
    {
        QFile file(desk.folder.filePath("settings.ini"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
};

QTEST_MAIN(TestFrmMain)
#include "tst_frmMain.moc"
