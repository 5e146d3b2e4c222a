#include "app/CapacityGauge.h"
#include "app/Desk.h"
#include "app/GaugeReader.h"
#include "app/frmAbout.h"
#include "app/frmSplash.h"
#include "app/frmTip.h"
#include "faces/Face.h"
#include "faces/Look.h"
#include "faces/Strokes.h"
#include "faces/World.h"
#include "settings/OptionsFunc.h"

#include <QAbstractButton>
#include <QDir>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <QSemaphore>
#include <QStyle>
#include <QTimer>

using namespace zib;

namespace {

/// The main window at its desk, in words.
struct MainDesk : Desk
{
    explicit MainDesk(const QString& name) : face(name)
    {
        face.replace(folder.path(), "FOLDER");
        face.leaveOut("picPanel.stroke");   // in words of its own
        face.leaveOut("StatusBar1_5.text"); // the day
        face.leaveOut("StatusBar1_6.text"); // the time
    }
    Words words()
    {
        Words said;
        said.sayWindow(&window());
        sayWorld(said, desk);
        said.sayStrokes("ListView1 ground", list()->viewport());
        return said;
    }
    void stage(const QString& title)
    {
        QCoreApplication::processEvents();
        face.stage(title, words());
    }
    /// The rest of a project file or of the settings.
    void stageWithFile(const QString& title, const QString& path)
    {
        QCoreApplication::processEvents();
        Words said = words();
        sayFile(said, "~file", path);
        face.stage(title, said);
    }

    /// Everything as it is now is told elsewhere, and so is what the list's ground looks like.
    void begin()
    {
        if (!focusList())
            qFatal("the window did not become active");
        QCoreApplication::processEvents();
        face.leaveOut("ListView1 ground");
        face.begin(words());
    }

    Face face;
};

Words wordsOf(QWidget& window, const FakeDesk& desk)
{
    Words words;
    words.sayWindow(&window);
    sayWorld(words, desk);
    return words;
}

} // namespace

/// The main window and the small ones in words, at rest and at work.
class TestAppFaces : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { dressUp(); }

    void main_withAList()
    {
        MainDesk d("frmMain");
        d.window();
        d.stage("empty");
        d.trigger("mnuFileSub_2");
        d.trigger("mnuTracksSub_1");
        d.trigger("mnuTracksSub_2");
        d.trigger("mnuTracksSub_7");
        d.trigger("mnuTracksSub_8");
        d.trigger("mnuTracksSub_10");
        d.stage("nothing to write, move, remove or play");
        d.add({d.sound("one.wav", 3'599'990, 1023, "First", "Somebody")});
        d.stage("an hour but for a hundredth");
        d.trigger("mnuFileSub_4");
        d.stage("a new project, cancelled");
        d.add({d.sound("two.mp3", 10, 1024), d.sound("10.wav", 61'000, 1025, "<b>", QString(101, 'a')),
               d.sound("9.wav", 1000, 2'097'152)});
        d.trigger("mnuTracksSub_7");
        d.stage("four tracks, none ticked to be removed");
        d.list()->setCurrentIndex(d.list()->model()->index(2, 3));
        d.trigger("mnuTracksSub_1");
        d.stage("the third is the second");
        d.trigger("mnuTracksSub_2");
        d.trigger("mnuTracksSub_2");
        d.stage("and then the last");
        d.trigger("mnuTracksSub_10");
        d.stage("played");
        d.trigger("mnuTracksSub_4");
        d.stage("all ticked");
        d.trigger("mnuTracksSub_5");
        d.tick(0);
        d.tick(2);
        d.trigger("mnuTracksSub_7");
        d.stage("two removed");
        d.trigger("mnuFileSub_2");
        d.stage("written");
        d.trigger("mnuTracksSub_8");
        d.stage("cleared");
        COMPARE_FACE(d.face);
    }

    void main_keys()
    {
        MainDesk d("frmMain_keys");
        d.addThree();
        d.begin();
        QTest::keyClick(d.list(), Qt::Key_End);
        d.stage("the last");
        QTest::keyClick(d.list(), Qt::Key_Space);
        d.stage("ticked");
        QTest::keyClick(d.list(), Qt::Key_Return);
        d.stage("played");
        QTest::keyClick(d.list(), Qt::Key_Delete);
        d.stage("removed");
        QTest::keyClick(d.list(), Qt::Key_Home, Qt::ControlModifier);
        QTest::keyClick(d.list(), Qt::Key_Enter, Qt::KeypadModifier);
        d.stage("the first, played");
        const QPoint second = d.list()->visualRect(d.list()->model()->index(1, 2)).center();
        QTest::mouseDClick(d.list()->viewport(), Qt::RightButton, {}, second);
        d.stage("the other button plays nothing");
        QTest::mouseClick(d.list()->viewport(), Qt::LeftButton, {}, second);
        QTest::mouseDClick(d.list()->viewport(), Qt::LeftButton, {}, second);
        d.stage("the second, played by a double-click");
        d.window().resize(400, 300);
        QTest::keyClick(d.list(), Qt::Key_Right);
        QTest::keyClick(d.list(), Qt::Key_Right);
        d.stage(QString("to the right by two steps: %1").arg(d.list()->horizontalScrollBar()->value()));
        QTest::keyClick(d.list(), Qt::Key_Left);
        d.stage(QString("and back by one: %1").arg(d.list()->horizontalScrollBar()->value()));
        COMPARE_FACE(d.face);
    }

    void main_view()
    {
        MainDesk d("frmMain_view");
        d.window();
        QVERIFY(d.focusList());
        QCoreApplication::processEvents();
        d.face.begin(d.words());
        for (const int item : {1, 1, 2, 3, 3, 2, 4, 5, 4, 5, 7, 9}) {
            d.trigger(QString("mnuViewSub_%1").arg(item));
            d.stage(QString("item %1 of the View menu").arg(item));
        }
        COMPARE_FACE(d.face);
    }

    void main_withOtherSettings()
    {
        MainDesk d("frmMain_settings");
        for (const auto& [key, value] : {std::pair{"Show ToolBar", "False"},
                                         {"Toolbar Style Flat", "False"},
                                         {"Toolbar Style 3D", "True"},
                                         {"Show Text On Toolbar", "False"},
                                         {"Show Tips On Toolbar", "False"},
                                         {"Show Statusbar", "False"},
                                         {"Show Grid Lines", "False"},
                                         {"Grid Back Color", "8323072"},
                                         {"Grid Text Color", "65535"},
                                         {"Show Splash Screen", "True"},
                                         {"Show Tips Of Day", "True"}})
            d.set("View", key, value);
        d.window();
        d.addThree();
        d.tick(1);
        d.stage("all the other way round, on a dark list");
        QTRY_VERIFY(d.desk.windows.shown.contains("tip"));
        d.stage("the tip of the day was shown");
        COMPARE_FACE(d.face);
    }

    void main_tools()
    {
        MainDesk d("frmMain_tools");
        d.desk.messages.answer = Messages::Answer::No;
        d.window();
        d.begin();
        for (const char* item :
             {"mnuToolsSub_1", "mnuToolsSub_2", "mnuToolsSub_3", "mnuToolsSub_4", "mnuToolsSub_6",
              "mnuHelpSub_1", "mnuHelpSub_3", "mnuHelpSub_4", "mnuHelpSub_6"}) {
            d.trigger(item);
            d.stage(item);
        }
        for (const char* key : {"add", "write", "up", "down", "play", "delete", "ripper", "converter",
                                "label", "player", "options", "help"}) {
            d.trigger(QString("Toolbar1_") + key);
            d.stage(QString("the button ") + key);
        }
        QTest::mouseClick(d.control<QWidget>("StatusBar1_4"), Qt::LeftButton);
        d.stage("the address in the status bar");
        QTest::mouseClick(d.control<QWidget>("StatusBar1_4"), Qt::RightButton);
        QTest::mouseClick(d.control<QWidget>("StatusBar1_3"), Qt::LeftButton);
        d.stage("which the other button and another panel do not open");
        d.trigger("mnuFileSub_9");
        d.stage("left");
        COMPARE_FACE(d.face);
    }

    void main_projects()
    {
        MainDesk d("frmMain_project");
        d.addThree();
        d.begin();
        const QString path = d.folder.filePath("My disc.zibp");
        d.desk.dialogs.files << path;
        d.trigger("mnuFileSub_6");
        QTRY_VERIFY(QFile::exists(path));
        QTRY_VERIFY(d.action("mnuFileSub_4")->isEnabled());
        d.stageWithFile("saved", path);
        d.add({d.sound("late.wav", 2000, 10)});
        d.trigger("mnuFileSub_6");
        d.stageWithFile("saved again with one more", path);
        d.desk.messages.answer = Messages::Answer::Cancel;
        d.trigger("mnuFileSub_4");
        d.stage("a new one, cancelled");
        d.desk.messages.answer = Messages::Answer::No;
        d.trigger("mnuFileSub_4");
        d.stage("a new one, nothing saved");
        QVERIFY(QFile::remove(d.folder.filePath("b.wav")));
        d.desk.dialogs.files << path;
        d.trigger("mnuFileSub_5");
        QTRY_COMPARE(d.rows(), 3);
        d.stage("opened again, one file gone");
        d.trigger("mnuFileSub_2");
        d.stage(QString("written as a disc called \"%1\"").arg(d.desk.windows.discNames.title));
        d.desk.messages.answer = Messages::Answer::Yes;
        d.desk.dialogs.files << d.folder.filePath("else.zibp");
        d.trigger("mnuFileSub_7");
        QTRY_VERIFY(QFile::exists(d.folder.filePath("else.zibp")));
        d.stageWithFile("saved elsewhere", d.folder.filePath("else.zibp"));
        d.trigger("mnuTracksSub_8");
        d.trigger("mnuFileSub_6");
        d.stageWithFile("cleared, and not to be saved so", d.folder.filePath("else.zibp"));
        COMPARE_FACE(d.face);
    }

    void main_dropping()
    {
        MainDesk d("frmMain_drop");
        d.addThree();
        d.begin();
        QVERIFY(QDir(d.folder.path()).mkpath("dropped/below"));
        for (const char* name : {"dropped/10.mp3", "dropped/9.mp3", "dropped/below/Z.mp3",
                                 "dropped/below/a.mp3", "dropped/.hidden.mp3"})
            d.sound(name, 1000);
        QStringList paths{d.folder.filePath("dropped/"), d.folder.filePath("a.wav")};
        for (int i = 1; i <= 10; ++i)
            paths << d.file(QString("text %1.txt").arg(i));
        drop(d.window(), paths);
        QTRY_COMPARE(d.desk.messages.shown.size(), 1);
        d.stage("a folder, a file that is there, and ten of no sound");
        drop(d.window(), paths << d.file("text 11.txt"));
        QTRY_COMPARE(d.desk.messages.shown.size(), 2);
        d.stage("eleven of no sound");
        d.add({d.file("other.txt"), d.sound("last.wav"), d.file("more.txt")});
        d.stage("chosen, two of no sound");
        d.desk.dialogs.noFile = Failure{Failure::Kind::BadValue};
        d.trigger("mnuFileSub_1");
        d.stage("too many names");
        QFile project(d.folder.filePath("two.zibp"));
        QVERIFY(project.open(QIODevice::WriteOnly));
        project.write(QString("[General]\r\nFileCount=2\r\n[Files]\r\nFile1=%1\r\nFile2=%2\r\n")
                          .arg(d.folder.filePath("c.wav"), d.folder.filePath("dropped/9.mp3"))
                          .toUtf8());
        project.close();
        drop(d.window(), {project.fileName()});
        QTRY_COMPARE(d.rows(), 2);
        d.stage("a project");
        drop(d.window(), {d.folder.filePath("a.wav"), project.fileName()});
        QTRY_COMPARE(d.rows(), 3);
        d.stage("the same among others");
        COMPARE_FACE(d.face);
    }

    void main_busy_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("withStatusbar");
        QTest::newRow("with the status bar") << "frmMain_busy" << true;
        QTest::newRow("without it") << "frmMain_busy_plain" << false;
    }
    void main_busy()
    {
        QFETCH(QString, name);
        QFETCH(bool, withStatusbar);
        const auto gate = std::make_shared<QSemaphore>(); // a thread that is left behind may hold it longer
        struct SlowSound : AnySound
        {
            explicit SlowSound(const std::shared_ptr<QSemaphore>& opened) : gate(opened) {}
            bool isAudioFile(const QString&) override { return gate->tryAcquire(1, 30'000); }
            std::shared_ptr<QSemaphore> gate;
        };
        MainDesk d(name);
        d.set("View", "Show Statusbar", withStatusbar ? "True" : "False");
        d.desk.components.makeInformation = [gate] { return std::make_unique<SlowSound>(gate); };
        d.window();
        for (const char* what : {"ListView1", "StatusBar1_1.t", "StatusBar1_2.t", "picPanel", "~minutes"})
            d.face.leaveOut(what); // told elsewhere
        d.begin();
        gate->release(2);
        QTimer watch;
        connect(&watch, &QTimer::timeout, this, [&] {
            if (!d.control<QLabel>("lblProgress")->text().contains("2 of 3"))
                return;
            watch.stop();
            d.face.stage("two of three", d.words());
            QTest::keyClick(&d.window(), Qt::Key_Escape);
        });
        watch.start(10);
        d.add({d.file("1.wav"), d.file("2.wav"), d.file("3.wav")});
        QVERIFY(!watch.isActive());
        QCOMPARE(d.rows(), 2);
        gate->release(1);
        d.stage("stopped");
        COMPARE_FACE(d.face);
    }

    void main_listsOfEveryGround()
    {
        MainDesk d("frmMain_grounds");
        d.face.leaveOut("ListView1.");
        d.addThree();
        d.tick(1);
        d.face.begin(d.words());
        for (const char* color : {"8355711", "8421504"}) { // as light as 127 and 128
            d.set("View", "Grid Back Color", color);
            OptionsFunc::LoadSettings();
            d.window().RefreshMain();
            d.stage(QString("a ground of ") + color);
        }
        COMPARE_FACE(d.face);
    }

    void gauge_ofAnyTotal()
    {
        Face face("gauge");
        const GlobalsScope globals;
        CapacityGauge gauge;
        gauge.setObjectName("gauge");
        gauge.resize(1001, 48);
        const auto stage = [&](const QString& title) {
            Words words;
            gauge.showTotal();
            words.sayWindow(&gauge);
            GaugeReader reader(&gauge);
            words.say("gauge.spoken",
                      reader.text(QAccessible::Value) + " (" + reader.currentValue().toString() + ' ' +
                          reader.minimumValue().toString() + ' ' + reader.maximumValue().toString() + ')');
            words.say("gauge.wants", QString("%1x%2, at least %3x%4")
                                         .arg(gauge.sizeHint().width())
                                         .arg(gauge.sizeHint().height())
                                         .arg(gauge.minimumSizeHint().width())
                                         .arg(gauge.minimumSizeHint().height()));
            face.stage(title, words);
        };
        gauge.show();
        for (const double minutes :
             {0.0, 0.01, 30.0, 60.0, 60.01, 74.0, 74.01, 80.0, 80.01, 99.99, 100.0, 101.0}) {
            setTotalMinutes(minutes);
            stage(QString("%1 minutes").arg(minutes));
        }
        setTotalMinutes(0);
        for (const int lightness : {159, 160, 161}) {
            QPalette colors;
            colors.setColor(QPalette::Window, QColor(lightness, lightness, lightness));
            gauge.setPalette(colors);
            stage(QString("a window as light as %1").arg(lightness));
        }
        gauge.resize(440, 40);
        stage("as narrow as it may be");
        QFont letters = QApplication::font();
        letters.setPointSizeF(22.5);
        gauge.setFont(letters);
        stage("large letters");
        COMPARE_FACE(face);
    }

    void about_always()
    {
        FakeDesk desk;
        Face face("frmAbout");
        frmAbout about(desk.messages);
        about.show();
        face.stage("shown", wordsOf(about, desk));
        about.findChild<QAbstractButton*>("cmdSysInfo")->click();
        face.stage("of a system that tells nothing", wordsOf(about, desk));
        desk.registry.entries = {{"SOFTWARE\\Microsoft\\Shared Tools\\MSINFO\\PATH", "/usr/bin/info"}};
        about.findChild<QAbstractButton*>("cmdSysInfo")->click();
        face.stage("of a system with a tool", wordsOf(about, desk));
        about.findChild<QAbstractButton*>("cmdOK")->click();
        face.stage("closed", wordsOf(about, desk));
        COMPARE_FACE(face);
    }

    void splash_always()
    {
        const FakeDesk desk;
        Face face("frmSplash");
        frmSplash splash;
        face.stage("not yet shown", wordsOf(splash, desk));
        splash.show();
        face.stage("shown", wordsOf(splash, desk));
        QTest::mouseClick(&splash, Qt::LeftButton);
        face.stage("clicked", wordsOf(splash, desk));
        COMPARE_FACE(face);
    }

    void tip_ofAFile()
    {
        const FakeDesk desk;
        const QTemporaryDir folder;
        zib::setApplicationFolder(folder.path());
        Face face("frmTip");
        frmTip empty;
        empty.show();
        face.stage("without a file", wordsOf(empty, desk));
        QFile tips(folder.filePath("TIPOFDAY.TXT"));
        QVERIFY(tips.open(QIODevice::WriteOnly) && tips.write("The only tip.\n") > 0);
        tips.close();
        frmTip tip;
        tip.show();
        face.stage("one tip", wordsOf(tip, desk));
        tip.findChild<QAbstractButton*>("cmdNextTip")->click();
        tip.findChild<QAbstractButton*>("chkLoadTipsAtStartup")->click();
        face.stage(QString("again, and at the start: %1").arg(gOptions.ShowTipsOfDay), wordsOf(tip, desk));
        QFont letters = QApplication::font();
        letters.setPointSizeF(15);
        tip.setFont(letters);
        face.stage("in larger letters", wordsOf(tip, desk));
        tip.findChild<QAbstractButton*>("cmdOK")->click();
        face.stage("closed", wordsOf(tip, desk));
        COMPARE_FACE(face);
    }
};

QTEST_MAIN(TestAppFaces)
#include "tst_appfaces.moc"
