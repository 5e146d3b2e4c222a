#include "common/GenralMacro.h"
#include "faces/Face.h"
#include "faces/Look.h"
#include "faces/World.h"
#include "fakes/FakeCDRipperX.h"
#include "tools/Stage.h"
#include "tools/frmMP3ToWAV.h"
#include "tools/frmPlay.h"
#include "tools/frmPlayer.h"
#include "tools/frmRip.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QGroupBox>
#include <QLineEdit>
#include <QSemaphore>
#include <QSignalSpy>
#include <QSlider>
#include <QTableView>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeWidget>

using namespace zib;

namespace {

void fill(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write("old") != 3)
        qFatal("no file");
}

/// A tool window with everything outside faked; its folders are real.
template <typename Window>
struct Tool : Stage
{
    explicit Tool(const char* name) : face(name)
    {
        OptionsData options;
        options.MP3Input = folder.filePath("mp3").leftJustified(1024);
        options.WAVOutput = folder.filePath("wav").leftJustified(1024);
        options.ExploreAfterConverting = options.ExploreAfterRipping = false;
        setOptions(options);
        face.replace(folder.path(), "FOLDER");
    }
    void open()
    {
        window = std::make_unique<Window>(desk.services);
        window->show();
        window->activateWindow();
        if (!QTest::qWaitForWindowActive(window.get(), 30'000))
            qFatal("the window did not become active");
    }
    virtual void sayMore(Words&) {}
    Words words()
    {
        Words said;
        said.sayWindow(window.get());
        sayWorld(said, desk);
        sayAll(said, "~shelf", shelf.noted());
        if (player)
            sayAll(said, "~player", player->calls);
        sayMore(said);
        return said;
    }
    void stage(const QString& title) { face.stage(title, words()); }
    template <typename Control>
    Control* find(const char* name) const
    {
        return window->template findChild<Control*>(name);
    }
    void press(const char* name) { click(*window, name); }
    QString path(const QString& name) const { return folder.filePath(name); }

    QTemporaryDir folder;
    Face face;
    std::unique_ptr<Window> window;
};

struct Ripping : Tool<frmRip>
{
    Ripping(const char* name, const QList<FakeReader>& readers) : Tool(name)
    {
        desk.components.makeRipper = [this, readers] {
            auto made = std::make_unique<FakeCDRipperX>();
            made->readers = readers;
            made->plays = true;
            ripper = made.get();
            return made;
        };
        open();
    }
    /// Whether the window came so far.
    bool loads()
    {
        return QTest::qWaitFor([this] { return find<QLineEdit>("txtSaveTo")->text() == path("wav"); },
                               20'000);
    }
    void sayMore(Words& said) override
    {
        sayAll(said, "~ripper", ripper->calls);
        said.say("~folder", QDir(path("wav")).entryList(QDir::Files | QDir::Hidden).join(' '));
    }
    void tick(int track, Qt::CheckState state = Qt::Checked) const
    {
        find<QTreeWidget>("lvwTracks")->topLevelItem(track - 1)->setCheckState(0, state);
    }

    FakeCDRipperX* ripper = nullptr;
};

const FakeReader kAlbum{.maker = "FINE",
                        .model = "READER",
                        .maxSpeed = 32,
                        .tracks = {{.frames = 74},
                                   {.frames = 75, .copy = false},
                                   {.frames = 4500},
                                   {.frames = 352'499, .audio = false}}};

} // namespace

/// The tools' windows in words, at rest and at work.
class TestToolFaces : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { dressUp(); }

    void ripper_copying()
    {
        Ripping t("frmRip", {kAlbum, {"/dev/sr1", "OTHER", "DRIVE", true, 5, {}}});
        t.face.leaveOut("~ripper");
        t.stage("before the drives are known");
        QVERIFY(t.loads());
        t.stage("a disc with four tracks");
        t.press("cmdRip");
        t.stage("nothing ticked");
        t.tick(1);
        t.tick(3);
        t.ripper->plays = false;
        t.press("cmdRip");
        QTRY_VERIFY(t.ripper->running);
        t.stage("started");
        emit t.ripper->ExtractionStarted();
        emit t.ripper->TrackStarted(t.path("wav/Track1.wav"), 0, 74, 1);
        emit t.ripper->ExtractionProgress(CDRipperX::kPositionProgress, 37);
        t.stage("half of the first of two");
        emit t.ripper->TrackFinished();
        emit t.ripper->TrackStarted(t.path("wav/Track3.wav"), 149, 4649, 3);
        t.stage("the first is done");
        emit t.ripper->ExtractionProgress(CDRipperX::kPositionProgress, 149 + 3375);
        QTest::keyClick(t.window.get(), Qt::Key_Escape);
        QTest::keyClick(t.window.get(), Qt::Key_Return);
        t.stage("three quarters of the second, and keys that do nothing");
        t.ripper->unread = {"Track 3, from 00:10:00"};
        t.ripper->running = false;
        emit t.ripper->TrackFinished();
        emit t.ripper->ExtractionFinished();
        t.stage("done, one track unread");
        t.press("cmdClose");
        t.stage("closed");
        COMPARE_FACE(t.face);
    }

    void ripper_choosing()
    {
        Ripping t("frmRip_choosing",
                  {kAlbum, {"/dev/sr1", "OTHER", "DRIVE", true, 5, {{.frames = 150}}}, {.usable = false}});
        QVERIFY(t.loads());
        t.find<QTimer>("Timer1")->stop();
        t.face.begin(t.words());
        auto* devices = t.find<QComboBox>("cboDevices");
        devices->setCurrentIndex(1);
        t.stage("the other drive, with a disc of one track");
        t.find<QComboBox>("cboSpeeds")->setCurrentIndex(2);
        t.stage("its second speed");
        devices->setCurrentIndex(2);
        t.stage("a drive of no use");
        devices->setCurrentIndex(0);
        emit devices->activated(0);
        t.stage("the first again");
        emit devices->activated(0);
        t.stage("chosen once more");
        t.desk.folders.answers << "  " + t.path("else") + ' ';
        t.press("cmdFolder");
        t.press("cmdExplore");
        t.press("cmdOptions");
        t.stage("another folder, shown, and the options");
        t.desk.folders.answers << QString();
        t.press("cmdFolder");
        t.stage("no other folder");
        COMPARE_FACE(t.face);
    }

    void ripper_withFilesThere()
    {
        Ripping t("frmRip_again", {kAlbum});
        QVERIFY(t.loads());
        t.face.leaveOut("~ripper");
        QVERIFY(QDir().mkpath(t.path("wav")));
        fill(t.path("wav/Track1.wav"));
        for (const int track : {1, 2, 4})
            t.tick(track);
        t.face.begin(t.words());
        t.press("cmdRip");
        QTRY_COMPARE(t.desk.messages.shown.size(), 1);
        t.stage("the question, cancelled");
        t.desk.messages.answer = Messages::Answer::Yes;
        OptionsData options = gOptions;
        options.ExploreAfterRipping = true;
        setOptions(options);
        fill(t.path("wav/Track2.wav"));
        t.tick(4, Qt::Unchecked);
        t.press("cmdRip");
        QTRY_COMPARE(t.desk.shell.calls.size(), 1);
        t.stage("two replaced and shown in their folder");
        t.desk.messages.answer = Messages::Answer::No;
        t.tick(2, Qt::Unchecked);
        t.press("cmdRip");
        QTRY_COMPARE(t.desk.messages.shown.size(), 4);
        t.stage("what is there stays, so none is left");
        t.ripper->refusedTracks = {3};
        for (const int track : {1, 3, 4})
            t.tick(track);
        t.press("cmdRip");
        QTRY_COMPARE(t.desk.messages.shown.size(), 8);
        t.stage("one is there, one refused, one of data");
        COMPARE_FACE(t.face);
    }

    void ripper_withoutDrives()
    {
        Ripping t("frmRip_nodrive", {});
        QVERIFY(t.loads());
        t.face.begin(t.words());
        t.find<QLineEdit>("txtSaveTo")->setText("relative");
        t.stage("a folder that is no path");
        t.ripper->readers = {kAlbum};
        emit t.ripper->DevicesChanged(1);
        t.stage("a drive was found late");
        t.ripper->readers[0].path = "/dev/sr5";
        emit t.ripper->DevicesChanged(1);
        t.stage("and told otherwise");
        t.tick(1);
        t.press("cmdRip");
        QTRY_VERIFY(!t.desk.messages.shown.isEmpty());
        t.stage("refused for its folder");
        t.ripper->readers[0].tracks.clear();
        QTRY_COMPARE(t.find<QTreeWidget>("lvwTracks")->topLevelItemCount(), 0);
        t.face.leaveOut("~ripper");
        t.stage("the disc is out");
        t.ripper->readers[0].tracks = {{.frames = 6000}};
        QTRY_COMPARE(t.find<QTreeWidget>("lvwTracks")->topLevelItemCount(), 1);
        t.stage("another disc is in");
        t.ripper->starts = false;
        t.find<QLineEdit>("txtSaveTo")->setText(t.path("wav"));
        t.tick(1);
        t.press("cmdRip");
        QTRY_COMPARE(t.desk.messages.shown.size(), 2);
        t.stage("not started");
        COMPARE_FACE(t.face);
    }

    void player_playing()
    {
        Tool<frmPlayer> t("frmPlayer");
        t.open();
        t.stage("empty");
        t.press("cmdRemove");
        t.press("cmdPlay");
        t.press("cmdStop");
        t.stage("nothing to remove or to play");
        QStringList names{t.folder.path()};
        for (const auto& [name, frames] :
             {std::pair{"one.wav", 3000}, {"two.mp3", 4'500}, {"three.wav", 6'010}}) {
            names << name;
            t.addSound(t.path(name), frames);
        }
        t.shelf.sounds[t.path("two.mp3")].title = "A title";
        t.shelf.sounds[t.path("two.mp3")].artist = "Somebody";
        t.desk.dialogs.files << names.join(QChar::Null);
        t.press("cmdOpen");
        auto* list = t.find<QTableView>("ListView1");
        QTRY_COMPARE(list->model()->rowCount(), 3);
        t.stage("three files");
        t.press("cmdPlay");
        t.stage("the first plays");
        t.player->play(1500);
        t.stage("half of it");
        t.find<QAbstractButton>("chkPause")->click();
        t.stage("paused");
        t.find<QAbstractButton>("chkPause")->click();
        t.stage("goes on");
        t.press("cmdForward");
        t.press("cmdForward");
        t.stage("two steps on");
        t.press("cmdBackward");
        t.stage("one back");
        t.press("cmdTop");
        t.stage("from the beginning");
        t.player->play(100'000);
        t.stage("the next one");
        t.press("cmdEnd");
        t.press("cmdVol");
        t.stage("to its end");
        t.find<QAbstractButton>("chkRpt")->click();
        t.press("cmdStop");
        t.stage("stopped, to be repeated");
        list->setCurrentIndex(list->model()->index(2, 1));
        t.press("cmdPlay");
        t.player->play(100'000);
        t.stage("the last is over and the first plays");
        QTest::keyClick(t.window.get(), Qt::Key_Escape);
        QTest::keyClick(t.window.get(), Qt::Key_Escape);
        t.stage("stopped by Escape, which does not close a list");
        COMPARE_FACE(t.face);
    }

    void player_listing()
    {
        Tool<frmPlayer> t("frmPlayer_list");
        t.open();
        t.face.begin(t.words());
        t.find<QAbstractButton>("chkDown")->click();
        t.stage("collapsed");
        t.window->resize(t.window->width() + 50, t.window->height());
        t.find<QAbstractButton>("chkDown")->click();
        t.stage("and not any more");
        t.window->resize(t.window->width(), t.window->height() + 70);
        t.find<QAbstractButton>("chkDown")->click();
        t.find<QAbstractButton>("chkDown")->click();
        t.stage("as high as the user made it");
        QStringList names{t.folder.path()};
        for (const char* name : {"a.wav", "b.wav", "c.wav", "d.wav", "e.wav"}) {
            names << name;
            t.addSound(t.path(name), 1000);
        }
        t.desk.dialogs.files << names.join(QChar::Null) << t.path("a.wav") << t.path("silent.txt");
        t.press("cmdOpen");
        auto* list = t.find<QTableView>("ListView1");
        QTRY_COMPARE(list->model()->rowCount(), 5);
        t.press("cmdRemove");
        t.stage("five files, none ticked");
        t.press("cmdOpen");
        QTRY_VERIFY(!list->testAttribute(Qt::WA_SetCursor));
        t.press("cmdOpen");
        QTRY_VERIFY(!list->testAttribute(Qt::WA_SetCursor));
        t.stage("one that is there already, and no sound");
        for (const int row : {1, 2, 4})
            list->model()->setData(list->model()->index(row, 0), Qt::Checked, Qt::CheckStateRole);
        list->setFocus();
        QTest::keyClick(list, Qt::Key_End);
        t.stage("three ticked");
        QTest::keyClick(list, Qt::Key_Delete);
        t.stage("and removed by a key");
        QTest::keyClick(list, Qt::Key_Home);
        QTest::keyClick(list, Qt::Key_Space);
        QTest::keyClick(list, Qt::Key_Return);
        t.stage("the first ticked and played by keys");
        QTest::keyClick(list, Qt::Key_A, Qt::ControlModifier);
        t.stage("all ticked");
        list->model()->setData(list->model()->index(0, 0), Qt::Unchecked, Qt::CheckStateRole);
        t.press("cmdRemove");
        QTest::keyClick(t.window.get(), Qt::Key_Escape);
        t.stage("all but one removed; Escape stops that one");
        QTest::keyClick(t.window.get(), Qt::Key_Escape);
        t.stage("and does not close a list of one");
        t.desk.dialogs.noFile = Failure{Failure::Kind::BadValue};
        t.press("cmdOpen");
        t.stage("too many names");
        COMPARE_FACE(t.face);
    }

    void play_oneFile()
    {
        Tool<frmPlay> t("frmPlay");
        t.addSound(t.path("song.wav"), 8000, 2000, 2);
        setCurrentFile(t.path("song.wav"));
        t.open();
        QTRY_VERIFY(t.player && t.player->calls.contains("open"));
        t.stage("plays at once");
        t.player->play(2000);
        t.stage("a quarter");
        auto* slider = t.find<QSlider>("Slider1");
        slider->setFocus();
        QTest::keyClick(slider, Qt::Key_PageUp);
        t.stage("a page on by a key");
        QTest::keyClick(slider, Qt::Key_Home);
        t.stage("home by a key");
        t.find<QAbstractButton>("chkRpt")->click();
        t.player->play(100'000);
        t.stage("over, and from the beginning");
        t.find<QAbstractButton>("chkRpt")->click();
        t.find<QAbstractButton>("chkPause")->click();
        t.press("cmdStop");
        t.stage("paused and stopped");
        QTest::keyClick(t.window.get(), Qt::Key_Escape);
        t.stage("closed by Escape");
        COMPARE_FACE(t.face);
    }

    void play_withTheMouse()
    {
        Tool<frmPlay> t("frmPlay_mouse");
        t.addSound(t.path("song.wav"), 10'000);
        setCurrentFile(t.path("song.wav"));
        t.open();
        QTRY_VERIFY(t.player && t.player->calls.contains("open"));
        t.face.begin(t.words());
        auto* slider = t.find<QSlider>("Slider1");
        slider->resize(400, slider->height());
        const int middle = slider->height() / 2;
        for (const int x : {200, 100, 0, 399}) {
            QTest::mouseClick(slider, Qt::LeftButton, {}, {x, middle});
            t.stage(QString("clicked at %1").arg(x));
        }
        QTest::mouseClick(slider, Qt::RightButton, {}, {50, middle});
        t.stage("clicked by the other button");
        QTest::mouseClick(slider, Qt::LeftButton, {}, {100, middle});
        t.stage("back again");
        QTest::mousePress(slider, Qt::LeftButton, {}, {300, middle});
        t.player->play(500);
        t.stage("held");
        QTest::mouseMove(slider, {150, middle});
        t.stage("dragged");
        QTest::mouseRelease(slider, Qt::LeftButton, {}, {150, middle});
        t.stage("let go");
        t.find<QAbstractButton>("chkPause")->click();
        QTest::mouseClick(slider, Qt::LeftButton, {}, {300, middle});
        t.stage("clicked while paused");
        t.find<QAbstractButton>("chkPause")->click();
        t.stage("goes on from there");
        t.player->lose();
        t.stage("the device is gone");
        t.player->nextOpen = -1;
        t.press("cmdPlay");
        t.stage("no device");
        setCurrentFile(t.path("gone.wav"));
        t.player->nextOpen = 0;
        t.press("cmdPlay");
        t.stage("no file");
        COMPARE_FACE(t.face);
    }

    void ripper_speeds()
    {
        QList<FakeReader> readers;
        for (const int speed : {0, 1, 2, 4, 5, 7, 8, 9, 52})
            readers << FakeReader{"/dev/sr", "FINE", QString("UP TO %1").arg(speed),
                                  true,      speed,  {{.frames = 75}}};
        Ripping t("frmRip_speeds", readers);
        QVERIFY(t.loads());
        t.find<QTimer>("Timer1")->stop();
        t.face.begin(t.words());
        for (int reader = 1; reader < readers.size(); ++reader) {
            t.find<QComboBox>("cboDevices")->setCurrentIndex(reader);
            t.stage(readers[reader].model);
        }
        COMPARE_FACE(t.face);
    }

    void converter_converting()
    {
        Tool<frmMP3ToWAV> t("frmMP3ToWAV");
        QSemaphore gate;
        t.open();
        t.stage("empty");
        t.press("cmdConvert");
        t.find<QLineEdit>("txtOpen")->setText("x.mp3");
        t.press("cmdConvert");
        t.stage("no source, no target");
        fill(t.path("song.mp3"));
        t.addSound(t.path("song.mp3"), 44'100 * 4, 44'100, 2);
        t.desk.dialogs.files << t.path("song.mp3") << t.path("song.wav");
        t.press("cmdOpen");
        t.stage("one chosen, the other suggested");
        t.press("cmdSave");
        t.stage("both chosen");
        Errands::setPatience(Errands::kPatience);
        t.shelf.onRead = [&gate] { gate.acquire(); };
        t.press("cmdConvert");
        QTRY_VERIFY(t.window->testAttribute(Qt::WA_SetCursor));
        t.face.leaveOut("~shelf");
        t.stage("begun");
        for (const char* percent : {"25%", "50%"}) {
            gate.release(1);
            if (!QTest::qWaitFor([&] { return t.find<QGroupBox>("frmPer")->title().endsWith(percent); },
                                 30'000)) {
                gate.release(1000);
                QFAIL(percent);
            }
            QTest::keyClick(t.window.get(), Qt::Key_Escape);
            QTest::keyClick(t.window.get(), Qt::Key_Return);
            t.stage(percent);
        }
        gate.release(1000);
        QTRY_COMPARE(t.desk.messages.shown.size(), 3);
        t.stage("done");
        t.shelf.onRead = {};
        fill(t.path("taken.wav"));
        t.find<QLineEdit>("txtSave")->setText(t.path("taken.wav"));
        t.press("cmdConvert");
        QTRY_COMPARE(t.desk.messages.shown.size(), 4);
        t.stage("not to be replaced");
        t.find<QLineEdit>("txtSave")->setText(t.path("song.mp3"));
        t.press("cmdConvert");
        QTRY_COMPARE(t.desk.messages.shown.size(), 5);
        t.stage("onto itself");
        t.find<QLineEdit>("txtOpen")->setText(t.path("gone.mp3"));
        t.press("cmdConvert");
        QTRY_COMPARE(t.desk.messages.shown.size(), 6);
        t.stage("from nothing");
        t.find<QLineEdit>("txtOpen")->setText(t.path("song.mp3"));
        t.find<QLineEdit>("txtSave")->setText(t.path("song.mp3/under.wav"));
        t.press("cmdConvert");
        QTRY_COMPARE(t.desk.messages.shown.size(), 7);
        t.stage("into a file");
        t.shelf.sounds[t.path("song.mp3")].failAtSample = 50'000;
        OptionsData options = gOptions;
        options.ExploreAfterConverting = true;
        setOptions(options);
        t.find<QLineEdit>("txtSave")->setText(t.path("half.wav"));
        t.press("cmdConvert");
        QTRY_COMPARE(t.desk.shell.calls.size(), 1);
        t.stage("broken off, and the folder shown");
        t.press("cmdOptions");
        t.press("CancelButton");
        t.stage("options, then closed");
        COMPARE_FACE(t.face);
    }
};

QTEST_MAIN(TestToolFaces)
#include "tst_toolfaces.moc"
