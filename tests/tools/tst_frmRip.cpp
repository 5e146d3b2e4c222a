#include "common/Errands.h"
#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"
#include "fakes/FakeCDRipperX.h"
#include "fakes/FakeSeams.h"
#include "tools/frmRip.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <stdexcept>

using namespace zib;

namespace {

const FakeReader kAlbum{
    .tracks = {{.frames = 4500}, {.frames = 300, .copy = false}, {.frames = 750, .audio = false}}};

/// The ripper's window with everything outside faked; the folder of the settings is real.
struct RipDesk
{
    explicit RipDesk(const QList<FakeReader>& readers = {kAlbum})
    {
        Errands::setPatience(std::chrono::minutes(1));
        OptionsData options = gOptions;
        options.WAVOutput = QString("  %1  ").arg(target());
        options.ExploreAfterRipping = false;
        setOptions(options);
        desk.components.makeRipper = [this, readers] {
            auto made = std::make_unique<FakeCDRipperX>();
            made->readers = readers;
            ripper = made.get();
            return made;
        };
    }

    /// Shows the window and waits until it is loaded.
    frmRip& open()
    {
        window = std::make_unique<frmRip>(desk.services);
        window->show();
        if (!QTest::qWaitFor([this] { return !control<QLineEdit>("txtSaveTo")->text().contains("C:\\"); },
                             20'000))
            qWarning("the window did not load");
        return *window;
    }

    template <typename Widget>
    Widget* control(const char* name) const
    {
        auto* found = window->findChild<Widget*>(name);
        if (!found)
            qFatal("no control %s", name);
        return found;
    }
    void click(const char* name) const { QTest::mouseClick(control<QAbstractButton>(name), Qt::LeftButton); }
    QTreeWidget* list() const { return control<QTreeWidget>("lvwTracks"); }
    void tick(const QList<int>& tracks) const
    {
        for (const int track : tracks)
            list()->topLevelItem(track - 1)->setCheckState(0, Qt::Checked);
    }
    QStringList row(int track) const
    {
        QStringList cells;
        for (int column = 0; column < list()->columnCount(); ++column)
            cells << list()->topLevelItem(track - 1)->text(column);
        return cells;
    }
    QStringList entries(const char* name) const
    {
        QStringList all;
        const auto* combo = control<QComboBox>(name);
        for (int i = 0; i < combo->count(); ++i)
            all << combo->itemText(i);
        return all;
    }
    /// Puts files into the folder, as a disc copied before has left them.
    void leaveFiles(const QList<int>& tracks) const
    {
        for (const int track : tracks) {
            QFile left(file(track));
            if (!left.open(QIODevice::WriteOnly) || left.write("old") != 3)
                qFatal("no file");
        }
    }
    QString focus() const { return window->focusWidget() ? window->focusWidget()->objectName() : QString(); }
    QString target() const { return folder.filePath("WAV"); }
    QString file(int track) const { return target() + QString("/Track%1.wav").arg(track); }
    QString progress() const { return control<QLabel>("lblRip")->text(); }
    int bar() const { return control<QProgressBar>("pbRip")->value(); }
    bool idle() const
    {
        bool all = true;
        for (const char* name : {"cmdRip", "cboDevices", "lvwTracks", "cboSpeeds", "cmdOptions"})
            all = all && control<QWidget>(name)->isEnabled();
        return all && control<QFrame>("picFolder")->isVisible() &&
               control<QProgressBar>("pbRip")->isHidden() && control<QLabel>("lblRip")->isHidden();
    }
    bool busy() const
    {
        bool any = false;
        for (const char* name : {"cmdRip", "cboDevices", "lvwTracks", "cboSpeeds", "cmdOptions"})
            any = any || control<QWidget>(name)->isEnabled();
        return !any && control<QFrame>("picFolder")->isHidden() &&
               control<QProgressBar>("pbRip")->isVisible() && control<QLabel>("lblRip")->isVisible() &&
               control<QWidget>("cmdClose")->isEnabled();
    }
    bool hourglass() const { return window->cursor().shape() == Qt::WaitCursor; }
    QStringList& shown() { return desk.messages.shown; }

    QTemporaryDir folder;
    FakeDesk desk;
    FakeCDRipperX* ripper = nullptr;
    std::unique_ptr<frmRip> window;
};

} // namespace

class TestFrmRip : public QObject
{
    Q_OBJECT
private slots:
    void window_atLoad_listsDrivesTracksAndFolder()
    {
        RipDesk d({kAlbum, FakeReader{"/dev/sr1", "OTHER", "DRIVE"}});
        d.open();
        QCOMPARE(d.window->windowTitle(), QString("Rip CD to WAV"));
        QCOMPARE(d.entries("cboDevices"), (QStringList{"/dev/sr0: MAKER MODEL", "/dev/sr1: OTHER DRIVE"}));
        QCOMPARE(d.control<QComboBox>("cboDevices")->currentIndex(), 0);
        QCOMPARE(d.list()->topLevelItemCount(), 3);
        QCOMPARE(d.row(1), (QStringList{"1", "Track1.wav", "01:00:00", "Audio", "NO"}));
        QCOMPARE(d.row(2), (QStringList{"2", "Track2.wav", "00:04:00", "Audio", "YES"}));
        QCOMPARE(d.row(3), (QStringList{"3", "Track3.wav", "00:10:00", "Data", "NO"}));
        for (int row = 0; row < 3; ++row)
            QCOMPARE(d.list()->topLevelItem(row)->checkState(0), Qt::Unchecked);
        QCOMPARE(d.control<QLineEdit>("txtSaveTo")->text(), d.target());
        QVERIFY(QDir(d.target()).exists());
        QVERIFY(d.idle());
        QVERIFY(!d.hourglass());
        QCOMPARE(d.control<QTimer>("Timer1")->interval(), 200);
        QVERIFY(d.control<QTimer>("Timer1")->isActive());
        QCOMPARE(d.shown(), QStringList());
    }

    void headers_areTheColumnsOfATrack()
    {
        RipDesk d;
        d.open();
        const QStringList wanted{"#", "File Name", "Time", "Type", "Protected"};
        for (int column = 0; column < wanted.size(); ++column)
            QCOMPARE(d.list()->headerItem()->text(column), wanted[column]);
        QCOMPARE(d.list()->columnCount(), 5);
    }

    void columns_haveRoomForTheirWidestText()
    {
        RipDesk d;
        d.open();
        const QStringList widest{"[x] 99", "Track99.wav", "00:00:00", "Audio", "Protected"};
        for (int column = 0; column < widest.size(); ++column) {
            const int room = d.list()->columnWidth(column);
            const int needed = d.list()->fontMetrics().horizontalAdvance(widest[column]);
            QVERIFY2(room >= needed, qPrintable(widest[column]));
            if (column != 1) // the names take what is left
                QCOMPARE(room - needed,
                         d.list()->columnWidth(0) - d.list()->fontMetrics().horizontalAdvance("[x] 99"));
        }
        QVERIFY(d.list()->columnWidth(1) > d.list()->columnWidth(2));
    }

    void trackNames_areNotPadded()
    {
        FakeReader many;
        many.tracks = QList<FakeDiscTrack>(12);
        RipDesk d({many});
        d.open();
        QCOMPARE(d.row(1)[1], QString("Track1.wav"));
        QCOMPARE(d.row(12)[1], QString("Track12.wav"));
    }

    void drive_foundLate_isChosenOnlyWhereThereWasNone()
    {
        RipDesk d((QList<FakeReader>()));
        d.open();
        d.ripper->readers = {kAlbum};
        emit d.ripper->DevicesChanged(1);
        QCOMPARE(d.ripper->calls.count("selectDevice 0"), 1);
        QCOMPARE(d.list()->topLevelItemCount(), 3);
        d.tick({1, 2});
        d.ripper->readers << FakeReader{"/dev/sr1", "OTHER", "DRIVE"};
        emit d.ripper->DevicesChanged(2);
        QCOMPARE(d.entries("cboDevices"), (QStringList{"/dev/sr0: MAKER MODEL", "/dev/sr1: OTHER DRIVE"}));
        QCOMPARE(d.ripper->calls.count("selectDevice 0"), 1);
        for (int row = 0; row < 2; ++row)
            QCOMPARE(d.list()->topLevelItem(row)->checkState(0), Qt::Checked);
    }

    void window_withoutDrives_isEmptyAndStands()
    {
        RipDesk d((QList<FakeReader>()));
        d.open();
        QCOMPARE(d.control<QComboBox>("cboDevices")->count(), 0);
        QCOMPARE(d.control<QComboBox>("cboSpeeds")->count(), 0);
        QVERIFY(!d.ripper->calls.contains("selectDevice 0"));
        d.click("cmdRip");
        QCOMPARE(d.shown(), QStringList("i: Please check tracks to rip."));
    }

    void speeds_growByTheRule_data()
    {
        QTest::addColumn<int>("fastest");
        QTest::addColumn<QString>("entries");
        QTest::newRow("unknown") << 0 << "AUTO";
        QTest::newRow("1") << 1 << "AUTO 1X";
        QTest::newRow("4") << 4 << "AUTO 1X 2X 4X";
        QTest::newRow("10") << 10 << "AUTO 1X 2X 4X 8X";
        QTest::newRow("24") << 24 << "AUTO 1X 2X 4X 8X 12X 16X 20X 24X";
    }
    void speeds_growByTheRule()
    {
        QFETCH(int, fastest);
        FakeReader reader = kAlbum;
        reader.maxSpeed = fastest;
        RipDesk d({reader});
        d.open();
        QTEST(d.entries("cboSpeeds").join(' '), "entries");
        auto* speeds = d.control<QComboBox>("cboSpeeds");
        QCOMPARE(speeds->currentIndex(), 0);
        for (int i = 0; i < speeds->count(); ++i)
            QCOMPARE(speeds->itemData(i).toInt(), speeds->itemText(i).chopped(1).toInt());
        QCOMPARE(d.ripper->calls.filter("setReadSpeed"), QStringList("setReadSpeed 0"));
    }

    void speed_whenChosen_isHandedToTheRipper()
    {
        RipDesk d;
        d.open();
        d.control<QComboBox>("cboSpeeds")->setCurrentIndex(4);
        QCOMPARE(d.ripper->calls.last(), QString("setReadSpeed 8"));
        d.control<QComboBox>("cboSpeeds")->setCurrentIndex(0);
        QCOMPARE(d.ripper->calls.last(), QString("setReadSpeed 0"));
    }

    void drive_whenChosen_readsItsDisc()
    {
        RipDesk d({kAlbum, FakeReader{.path = "/dev/sr1", .maxSpeed = 8, .tracks = {{.frames = 900}}}});
        d.open();
        d.ripper->calls.clear();
        d.control<QComboBox>("cboDevices")->setCurrentIndex(1);
        QCOMPARE(d.ripper->calls,
                 (QStringList{"selectDevice 1", "setReadSpeed 0", "discText", "trackStart 1"}));
        QCOMPARE(d.list()->topLevelItemCount(), 1);
        QCOMPARE(d.row(1), (QStringList{"1", "Track1.wav", "00:12:00", "Audio", "NO"}));
        QCOMPARE(d.entries("cboSpeeds").size(), 5);
        QVERIFY(d.control<QTimer>("Timer1")->isActive());
    }

    void drive_chosenAgain_readsItsDiscAgain()
    {
        RipDesk d;
        d.open();
        d.ripper->calls.clear();
        emit d.control<QComboBox>("cboDevices")->activated(0);
        QVERIFY(d.ripper->calls.contains("selectDevice 0"));
    }

    void drive_withoutDisc_hasSpeedsAndNoTracks()
    {
        RipDesk d({FakeReader{}});
        d.open();
        QCOMPARE(d.list()->topLevelItemCount(), 0);
        QVERIFY(d.control<QComboBox>("cboSpeeds")->count() > 1);
        QVERIFY(!d.ripper->calls.contains("discText"));
    }

    void drive_thatCannotBeSelected_isSilentAndEmpty()
    {
        FakeReader held = kAlbum;
        held.usable = false;
        RipDesk d({kAlbum, held});
        d.open();
        const QStringList speeds = d.entries("cboSpeeds");
        d.ripper->calls.clear();
        d.control<QComboBox>("cboDevices")->setCurrentIndex(1);
        QCOMPARE(d.ripper->calls, (QStringList{"selectDevice 1", "status"}));
        QCOMPARE(d.list()->topLevelItemCount(), 0);
        QCOMPARE(d.entries("cboSpeeds"), speeds);
        QCOMPARE(d.shown(), QStringList());
        QVERIFY(d.control<QTimer>("Timer1")->isActive());
    }

    void disc_takenOut_emptiesTheList_andTheNextOneFillsIt()
    {
        RipDesk d;
        d.open();
        d.ripper->state = CDRipperX::kNoDisc;
        QTRY_COMPARE_WITH_TIMEOUT(d.list()->topLevelItemCount(), 0, 20'000);
        QTRY_COMPARE_WITH_TIMEOUT(d.window->property("driveState").toString(), QString("No Disc Loaded..."),
                                  20'000);
        d.ripper->calls.clear();
        d.ripper->readers[0].tracks = {{.frames = 375}};
        d.ripper->state = CDRipperX::kDiscLoaded;
        QTRY_COMPARE_WITH_TIMEOUT(d.list()->topLevelItemCount(), 1, 20'000);
        QCOMPARE(d.row(1)[2], QString("00:05:00"));
        QCOMPARE(d.entries("cboDevices").size(), 1);
        QTest::qWait(600);
        QCOMPARE(d.ripper->calls.count("selectDevice 0"), 1);
    }

    void state_ofAnyOtherKind_changesNothing_data()
    {
        QTest::addColumn<int>("state");
        QTest::addColumn<QString>("text");
        QTest::newRow("playing") << 0 << "Playing...";
        QTest::newRow("paused") << 1 << "Paused...";
        QTest::newRow("loaded") << 4 << "Disc Loaded...";
        QTest::newRow("unknown") << 3 << "No Status";
    }
    void state_ofAnyOtherKind_changesNothing()
    {
        QFETCH(int, state);
        QFETCH(QString, text);
        RipDesk d;
        d.open();
        d.tick({1});
        d.ripper->calls.clear();
        d.ripper->state = state;
        QTRY_COMPARE_WITH_TIMEOUT(d.window->property("driveState").toString(), text, 20'000);
        QTest::qWait(300);
        QCOMPARE(d.list()->topLevelItemCount(), 3);
        QCOMPARE(d.list()->topLevelItem(0)->checkState(0), Qt::Checked);
        QVERIFY(!d.ripper->calls.contains("selectDevice 0"));
        for (const auto* label : d.window->findChildren<QLabel*>())
            QVERIFY(label->text() != text);
    }

    void folder_whenChosen_isShownButNotMade()
    {
        RipDesk d;
        d.open();
        d.desk.folders.answers << "";
        d.click("cmdFolder");
        QCOMPARE(d.control<QLineEdit>("txtSaveTo")->text(), d.target());
        const QString other = d.folder.filePath("other");
        d.desk.folders.answers << "  " + other + " ";
        d.click("cmdFolder");
        QCOMPARE(d.control<QLineEdit>("txtSaveTo")->text(), other);
        QVERIFY(!QDir(other).exists());
    }

    void explore_opensTheFolder()
    {
        RipDesk d;
        d.open();
        d.control<QLineEdit>("txtSaveTo")->setText("/music/here");
        d.click("cmdExplore");
        QCOMPARE(d.desk.shell.calls, QStringList("explore /music/here"));
    }

    void options_areOpened()
    {
        RipDesk d;
        d.open();
        d.click("cmdOptions");
        QCOMPARE(d.desk.windows.shown, QStringList("options"));
    }

    void start_withoutTicks_saysSoAndDoesNothing()
    {
        RipDesk d;
        d.open();
        d.ripper->calls.clear();
        d.click("cmdRip");
        QCOMPARE(d.shown(), QStringList("i: Please check tracks to rip."));
        QCOMPARE(d.desk.messages.owners.first().data(), d.window.get());
        QCOMPARE(d.ripper->calls, QStringList());
        QVERIFY(d.idle());
        QVERIFY(!d.hourglass());
    }

    void start_queuesTheTickedTracks_andBeginsOnce()
    {
        RipDesk d;
        d.open();
        d.tick({1, 2});
        d.ripper->calls.clear();
        d.click("cmdRip");
        QCOMPARE(d.ripper->calls,
                 (QStringList{"clearQueue", "addTrack 1 " + d.file(1), "addTrack 2 " + d.file(2), "start"}));
        QVERIFY(d.busy());
        QCOMPARE(d.progress(), QString("Progress:  0%"));
        QCOMPARE(d.shown(), QStringList());
    }

    void start_untilTheEnd_keepsTheSystemAwake()
    {
        RipDesk desk;
        desk.open();
        const auto held = desk.desk.inhibitor.held;
        for (const bool closes : {false, true}) {
            QCOMPARE(*held, QStringList());
            desk.tick({1});
            desk.click("cmdRip");
            emit desk.ripper->ExtractionStarted();
            QCOMPARE(*held, QStringList{"Tracks of a disc are being copied"});
            if (closes)
                desk.click("cmdClose");
            else
                emit desk.ripper->ExtractionFinished();
        }
        QCOMPARE(*held, QStringList());
    }
    void start_withAFolderThatCannotBeUsed_isToldOnce_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("told");
        QTest::newRow("blank") << "  "
                               << "no folder is named.\n";
        QTest::newRow("relative") << "WAV"
                                  << "its name must begin with /.\nWAV";
        QTest::newRow("another system's") << "C:\\"
                                          << "its name must begin with /.\nC:\\";
        QTest::newRow("below a file") << "FOLDER/file/WAV"
                                      << "a file of that name is in the way.\nFOLDER/file/WAV";
        QTest::newRow("a file") << "FOLDER/file"
                                << "a file of that name is in the way.\nFOLDER/file";
        QTest::newRow("system's") << "/proc/WAV"
                                  << "No such file or directory.\n/proc/WAV";
    }
    void start_withAFolderThatCannotBeUsed_isToldOnce()
    {
        QFETCH(QString, folder);
        QFETCH(QString, told);
        RipDesk d;
        d.open();
        QFile file(d.folder.filePath("file"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        d.control<QLineEdit>("txtSaveTo")->setText(folder.replace("FOLDER", d.folder.path()));
        d.tick({1, 3});
        d.ripper->calls.clear();
        d.click("cmdRip");
        QCOMPARE(d.shown(), QStringList("i: The WAV files cannot be saved in this folder: " +
                                        told.replace("FOLDER", d.folder.path())));
        QVERIFY(d.idle());
        QVERIFY(!d.hourglass());
        QVERIFY(!d.ripper->calls.contains("start"));
    }

    void start_withBlanksAroundTheFolder_makesNoStrayOne()
    {
        RipDesk d;
        d.open();
        d.control<QLineEdit>("txtSaveTo")->setText("  " + d.folder.filePath("new") + "  ");
        d.tick({1});
        d.click("cmdRip");
        QVERIFY(d.ripper->calls.contains("addTrack 1 " + d.folder.filePath("new/Track1.wav")));
        QCOMPARE(QDir(d.folder.path()).entryList({"*new*"}, QDir::Dirs), QStringList{"new"});
    }

    void start_thatWouldReplaceFiles_asksOnce_data()
    {
        QTest::addColumn<QList<int>>("there");
        QTest::addColumn<QString>("question");
        QTest::newRow("one") << QList<int>{2} << "The file Track2.wav is in the folder already. Replace it?";
        QTest::newRow("two") << QList<int>{1, 2} << "2 of the files are in the folder already. Replace them?";
    }
    void start_thatWouldReplaceFiles_asksOnce()
    {
        QFETCH(QList<int>, there);
        QFETCH(QString, question);
        RipDesk d;
        d.open();
        d.leaveFiles(there);
        d.leaveFiles({3}); // a data track's name, which nothing would replace
        d.desk.messages.answer = Messages::Answer::Yes;
        d.tick({1, 2, 3});
        d.click("cmdRip");
        QCOMPARE(d.shown().size(), 2);
        QVERIFY(d.shown()[0].startsWith("q: " + question));
        QCOMPARE(d.desk.messages.presets, QList{Messages::Answer::No});
        QVERIFY(d.shown()[1].startsWith("i: Track #03 is a data track"));
        QCOMPARE(d.ripper->queuedTracks, (QList<int>{1, 2}));
        QVERIFY(d.busy());
    }

    void start_mayReplaceOnlyWhatStoodThereWhenAsked()
    {
        RipDesk desk;
        desk.open();
        desk.leaveFiles({1});
        const NameBearer first = bearerOf(QFile::encodeName(desk.file(1)));
        desk.desk.messages.answer = Messages::Answer::Yes;
        desk.desk.messages.onShow = [&](const QString&) { desk.leaveFiles({2}); }; // another program's
        desk.tick({1, 2});
        desk.click("cmdRip");
        QCOMPARE(desk.ripper->mayReplace.size(), 2);
        QVERIFY(desk.ripper->mayReplace[0] == first);
        QVERIFY(desk.ripper->mayReplace[1] == NameBearer());
    }
    void start_answeredWithNo_leavesTheFilesAndCopiesTheOthers()
    {
        RipDesk d;
        d.open();
        d.leaveFiles({2});
        d.desk.messages.answer = Messages::Answer::No;
        d.ripper->plays = true;
        d.tick({1, 2});
        d.click("cmdRip");
        QTRY_VERIFY_WITH_TIMEOUT(d.shown().contains("i: Audio Ripping Completed."), 20'000);
        QCOMPARE(d.window->focusWidget(), d.list());
        QCOMPARE(d.ripper->queuedTracks, QList<int>{1});
        QCOMPARE(QFileInfo(d.file(2)).size(), 3);
        QCOMPARE(d.list()->topLevelItem(1)->checkState(0), Qt::Unchecked);
    }

    void start_answeredWithNo_andNothingLeft_staysIdle()
    {
        RipDesk d;
        d.open();
        d.leaveFiles({1, 2});
        d.desk.messages.answer = Messages::Answer::No;
        d.tick({1, 2});
        d.ripper->calls.clear();
        d.click("cmdRip");
        QVERIFY(d.idle());
        QVERIFY(d.ripper->calls.isEmpty());
        QCOMPARE(d.shown().size(), 1);
    }

    void start_cancelled_changesNothing()
    {
        RipDesk d;
        d.open();
        d.leaveFiles({1});
        d.desk.messages.answer = Messages::Answer::Cancel;
        d.tick({1, 2});
        d.ripper->calls.clear();
        d.click("cmdRip");
        QVERIFY(d.idle());
        QVERIFY(d.ripper->calls.isEmpty());
        QCOMPARE(d.list()->topLevelItem(0)->checkState(0), Qt::Checked);
    }

    void speeds_thatComeLate_areListedWithoutADisc()
    {
        RipDesk d({FakeReader{.maxSpeed = 0}});
        d.open();
        QCOMPARE(d.entries("cboSpeeds"), QStringList("AUTO"));
        d.ripper->readers[0].maxSpeed = 4;
        QTRY_COMPARE_WITH_TIMEOUT(d.entries("cboSpeeds"), (QStringList{"AUTO", "1X", "2X", "4X"}), 20'000);
        d.control<QComboBox>("cboSpeeds")->setCurrentIndex(2);
        QTest::qWait(450);
        QCOMPARE(d.control<QComboBox>("cboSpeeds")->currentIndex(), 2);
        QCOMPARE(d.ripper->calls.count("selectDevice 0"), 1);
    }

    void start_withATickedDataTrack_tellsAndGoesOn()
    {
        RipDesk d;
        d.open();
        d.tick({1, 3});
        d.click("cmdRip");
        QCOMPARE(d.shown(), QStringList("i: Track #03 is a data track and cannot be extracted!"));
        QCOMPARE(d.ripper->queuedTracks, QList<int>{1});
        QVERIFY(d.ripper->running);
        QVERIFY(d.busy());
    }

    void start_withARefusedTrack_tellsAndGoesOn()
    {
        FakeReader many;
        many.tracks = QList<FakeDiscTrack>(12);
        RipDesk d({many});
        d.open();
        d.ripper->refusedTracks = {7, 12};
        d.tick({7, 9, 12});
        d.click("cmdRip");
        QCOMPARE(d.shown(), (QStringList{"i: Track #07 could not be added for extraction!",
                                         "i: Track #12 could not be added for extraction!"}));
        QCOMPARE(d.ripper->queuedTracks, QList<int>{9});
    }

    void start_whenRefused_saysSoAndStaysDisabled()
    {
        RipDesk d;
        d.open();
        d.ripper->starts = false;
        d.tick({1});
        d.click("cmdRip");
        QCOMPARE(d.shown(), QStringList("i: Extraction could not be started."));
        QVERIFY(d.busy());
        d.click("cmdClose");
        QVERIFY(!d.window->isVisible());
        QVERIFY(!d.ripper->calls.contains("abort"));
    }

    void start_thatRaisesAnError_endsQuietlyAndStaysDisabled()
    {
        RipDesk d;
        d.open();
        d.ripper->onCall = [] { throw std::runtime_error("broken"); };
        d.tick({1});
        d.window->setCursor(Qt::WaitCursor);
        d.click("cmdRip");
        QCOMPARE(d.shown(), QStringList());
        QVERIFY(d.busy());
        QVERIFY(!d.hourglass());
    }

    void start_withTheDiscTakenOutBehindABox_isRefusedInPeace()
    {
        RipDesk d;
        d.open();
        d.tick({2, 3});
        d.ripper->refusedTracks = {2};
        d.desk.messages.onShow = [&d](const QString&) {
            d.ripper->readers[0].tracks.clear();
            d.list()->clear();
        };
        d.click("cmdRip");
        QCOMPARE(d.shown(), (QStringList{"i: Track #02 could not be added for extraction!",
                                         "i: Extraction could not be started."}));
    }

    void progress_countsTracksAndPositions()
    {
        RipDesk d;
        d.open();
        d.tick({1, 2});
        d.click("cmdRip");
        emit d.ripper->ExtractionStarted();
        QVERIFY(d.hourglass());
        emit d.ripper->TrackStarted("file", 1000, 2000, 1);
        emit d.ripper->ExtractionProgress(CDRipperX::kVerifyingProgress, 1900);
        QCOMPARE(d.bar(), 0);
        emit d.ripper->ExtractionProgress(7, 1500);
        QCOMPARE(d.bar(), 25);
        QCOMPARE(d.progress(), QString("Progress:  25%"));
        emit d.ripper->TrackFinished();
        QCOMPARE(d.bar(), 50);
        QCOMPARE(d.progress(), QString("Progress:  25%"));
        emit d.ripper->TrackStarted("file", 2000, 2100, 2);
        emit d.ripper->ExtractionProgress(7, 2050);
        QCOMPARE(d.progress(), QString("Progress:  75%"));
        emit d.ripper->ExtractionProgress(7, 9999);
        QCOMPARE(d.bar(), 100);
        QCOMPARE(d.progress(), QString("Progress:  100%"));
    }

    void progress_roundsHalvesToTheEvenNumber()
    {
        RipDesk d;
        d.open();
        d.tick({1});
        d.click("cmdRip");
        emit d.ripper->TrackStarted("file", 0, 1000, 1);
        emit d.ripper->ExtractionProgress(7, 25);
        QCOMPARE(d.bar(), 2);
        emit d.ripper->ExtractionProgress(7, 35);
        QCOMPARE(d.bar(), 4);
        emit d.ripper->ExtractionProgress(7, 36);
        QCOMPARE(d.bar(), 4);
    }

    void progress_ofAnEmptyTrack_isNoDivision()
    {
        RipDesk d;
        d.open();
        emit d.ripper->TrackStarted("file", 100, 100, 1);
        emit d.ripper->ExtractionProgress(7, 100);
        emit d.ripper->TrackFinished();
        QCOMPARE(d.bar(), 0);
        d.tick({1});
        d.click("cmdRip");
        emit d.ripper->TrackStarted("file", 100, 100, 1);
        emit d.ripper->ExtractionProgress(7, 100);
        QCOMPARE(d.bar(), 0);
    }

    void trackFinished_movesTheBarWithoutRounding()
    {
        RipDesk d({FakeReader{.tracks = {{}, {}, {}}}});
        d.open();
        d.tick({1, 2, 3});
        d.click("cmdRip");
        emit d.ripper->TrackFinished();
        QCOMPARE(d.bar(), 33);
        emit d.ripper->TrackFinished();
        QCOMPARE(d.bar(), 66);
        emit d.ripper->TrackFinished();
        QCOMPARE(d.bar(), 100);
    }

    void extraction_whenFinished_isToldAndTheWindowIsIdle()
    {
        RipDesk d;
        d.open();
        d.ripper->plays = true;
        d.tick({1, 2});
        d.desk.messages.onShow = [&d](const QString&) { QVERIFY(d.idle() && !d.hourglass()); };
        d.click("cmdRip");
        QTRY_COMPARE_WITH_TIMEOUT(d.shown(), QStringList("i: Audio Ripping Completed."), 20'000);
        QVERIFY(d.idle());
        QVERIFY(!d.hourglass());
        QCOMPARE(d.desk.shell.calls, QStringList());
        QCOMPARE(d.bar(), 0);
        QCOMPARE(d.list()->topLevelItemCount(), 3);
        QCOMPARE(QDir(d.target()).entryList(QDir::Files), (QStringList{"Track1.wav", "Track2.wav"}));
    }

    void extraction_whenFinished_exploresIfWished()
    {
        RipDesk d;
        OptionsData options = gOptions;
        options.ExploreAfterRipping = true;
        setOptions(options);
        d.open();
        d.ripper->plays = true;
        d.tick({1});
        d.click("cmdRip");
        QTRY_COMPARE_WITH_TIMEOUT(d.desk.shell.calls, QStringList("explore " + d.target()), 20'000);
    }

    void extraction_withUnreadTracks_namesThemInASecondMessage()
    {
        RipDesk d;
        d.open();
        d.ripper->plays = true;
        d.ripper->unread = {"Track 1 could not be read at 01:23:45", "Track 2 could not be read at 00:00:10"};
        d.tick({1, 2});
        d.click("cmdRip");
        QTRY_COMPARE_WITH_TIMEOUT(d.shown().size(), 2, 20'000);
        QCOMPARE(d.shown(),
                 (QStringList{"i: Audio Ripping Completed.",
                              "i: Some tracks could not be copied, and no files were made of them:\n"
                              "Track 1 could not be read at 01:23:45\n"
                              "Track 2 could not be read at 00:00:10"}));
    }

    void extraction_canBeDoneTwice()
    {
        RipDesk d;
        d.open();
        d.ripper->plays = true;
        d.desk.messages.answer = Messages::Answer::Yes; // the first run's file is in the way of the second
        d.tick({1});
        for (int time = 1; time <= 2; ++time) {
            d.click("cmdRip");
            QTRY_COMPARE_WITH_TIMEOUT(d.shown().count("i: Audio Ripping Completed."), time, 20'000);
        }
        QCOMPARE(d.ripper->calls.count("start"), 2);
        QCOMPARE(d.progress(), QString("Progress:  100%"));
        d.ripper->plays = false;
        d.click("cmdRip");
        QCOMPARE(d.progress(), QString("Progress:  0%"));
    }

    void close_whileRipping_abortsAndSaysNothing()
    {
        RipDesk d;
        d.open();
        d.tick({1});
        d.click("cmdRip");
        emit d.ripper->ExtractionStarted();
        d.click("cmdClose");
        QVERIFY(d.ripper->calls.contains("abort"));
        QVERIFY(!d.window->isVisible());
        QCOMPARE(d.shown(), QStringList());
    }

    void close_whenIdle_doesNotAbort()
    {
        RipDesk d;
        d.open();
        d.click("cmdClose");
        QVERIFY(!d.ripper->calls.contains("abort"));
        QVERIFY(!d.window->isVisible());
    }

    void close_byTheFrame_doesNotAsk()
    {
        RipDesk d;
        d.open();
        d.tick({1});
        d.click("cmdRip");
        emit d.ripper->ExtractionStarted();
        d.window->close();
        QVERIFY(!d.ripper->calls.contains("abort"));
        QVERIFY(!d.window->isVisible());
    }

    void enter_whileRipping_doesNoHarm()
    {
        RipDesk d;
        d.open();
        QApplication::setActiveWindow(d.window.get());
        d.tick({1});
        d.list()->setFocus();
        QTest::keyClick(d.list(), Qt::Key_Return);
        emit d.ripper->ExtractionStarted();
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
            QCOMPARE(d.focus(), QString("pbRip"));
            QTest::keyClick(d.window->focusWidget(), key);
        }
        d.control<QWidget>("cmdClose")->setFocus();
        QTest::keyClick(d.control<QWidget>("cmdClose"), Qt::Key_Return);
        QVERIFY(d.window->isVisible());
        QVERIFY(!d.ripper->calls.contains("abort"));
        QCOMPARE(d.ripper->calls.count("start"), 1);
        QTest::keyClick(d.control<QWidget>("cmdClose"), Qt::Key_Space); // pressed on purpose
        QVERIFY(!d.window->isVisible());
        QVERIFY(d.ripper->calls.contains("abort"));
    }

    void escape_whileRipping_doesNothing()
    {
        RipDesk d;
        d.open();
        d.tick({1});
        d.click("cmdRip");
        emit d.ripper->ExtractionStarted();
        QTest::keyClick(d.window.get(), Qt::Key_Escape);
        QVERIFY(d.window->isVisible());
        emit d.ripper->ExtractionFinished();
        QTest::keyClick(d.window.get(), Qt::Key_Escape);
        QVERIFY(!d.window->isVisible());
    }

    void keyboard_reachesEverything()
    {
        RipDesk d;
        d.open();
        d.list()->setFocus();
        d.list()->setCurrentItem(d.list()->topLevelItem(1));
        QTest::keyClick(d.list(), Qt::Key_Space);
        QCOMPARE(d.list()->topLevelItem(1)->checkState(0), Qt::Checked);
        QTest::mouseClick(d.list()->viewport(), Qt::LeftButton, {},
                          d.list()->visualItemRect(d.list()->topLevelItem(0)).center());
        QTest::keyClick(d.list(), Qt::Key_Space);
        QCOMPARE(d.list()->topLevelItem(0)->checkState(0), Qt::Checked);
        QTest::keyClick(d.list(), Qt::Key_Space);
        QTest::keyClick(d.list(), Qt::Key_Return);
        QCOMPARE(d.ripper->queuedTracks, QList<int>{2});
        QCOMPARE(d.focus(), QString("pbRip"));
    }

    void layout_keepsItsPlaceWhileRipping()
    {
        RipDesk d;
        d.open();
        const QRect before = d.list()->geometry();
        d.tick({1});
        d.click("cmdRip");
        QTest::qWait(50);
        QCOMPARE(d.list()->geometry(), before);
        const int bar = d.window->findChild<QProgressBar*>("pbRip")->width();
        emit d.ripper->TrackStarted("file", 0, 100, 1);
        for (const int percent : {5, 50, 100}) {
            emit d.ripper->ExtractionProgress(7, percent);
            QTest::qWait(50);
            QCOMPARE(d.window->findChild<QProgressBar*>("pbRip")->width(), bar);
        }
    }
};

QTEST_MAIN(TestFrmRip)
#include "tst_frmRip.moc"
