#include "burn/PreparedFiles.h"
#include "burn/WriteProgress.h"
#include "burn/frmWrite.h"
#include "fakes/FakeDVDWriterPro.h"
#include "fakes/FakeSeams.h"

#include <QComboBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScopedPointer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace zib;

namespace {

const QString kInvitation = "Click the below button \"Start Writing\" to start.";

/// The writing window with a faked writer and real track files.
struct Desk
{
    explicit Desk(int tracks = 3)
    {
        for (int n = 1; n <= tracks; ++n) {
            const QString path = folder.filePath(QString("%1.wav").arg(n));
            QFile file(path);
            if (file.open(QIODevice::WriteOnly))
                files << path;
        }
        desk.components.makeWriter = [this] { return std::unique_ptr<DVDWriterPro>(writer); };
        OptionsData options;
        options.CacheFilesLocally = false;
        options.Temporary = folder.filePath("Temporary").leftJustified(1024);
        setOptions(options);
    }
    ~Desk()
    {
        window.reset();
        if (!made)
            delete writer;
    }
    /// Shows the window and waits until its drives are listed.
    bool open()
    {
        made = true;
        window.reset(new frmWrite(desk.services, files, names));
        window->show();
        return QTest::qWaitFor([this] { return control<QPushButton>("cmdWrite")->isEnabled(); }, 30'000);
    }
    template <typename Control>
    Control* control(const char* name) const
    {
        return window->findChild<Control*>(name);
    }
    void click(const char* name) const { QTest::mouseClick(control<QPushButton>(name), Qt::LeftButton); }
    QString status() const { return control<QLabel>("lblStatus")->text(); }
    QString percent() const { return control<QLabel>("lblPer")->text(); }
    int bar() const { return control<QProgressBar>("pbPer")->value(); }
    QStringList entries(const char* name) const
    {
        QStringList texts;
        for (int i = 0; i < control<QComboBox>(name)->count(); ++i)
            texts << control<QComboBox>(name)->itemText(i);
        return texts;
    }
    /// Which of the controls that a write changes are enabled: D, S, W, O and C.
    QString enabled() const
    {
        QString letters;
        const auto add = [&](const char* name, char letter) {
            if (window->findChild<QWidget*>(name)->isEnabled())
                letters += letter;
        };
        add("cboDevices", 'D');
        add("cboWriteSpeed", 'S');
        add("cmdWrite", 'W');
        add("cmdOptions", 'O');
        add("cmdCancel", 'C');
        return letters;
    }
    QStringList callsSince(const QString& call) const
    {
        return writer->calls.mid(writer->calls.lastIndexOf(call));
    }
    void change(const std::function<void(OptionsData&)>& how)
    {
        OptionsData options = gOptions;
        how(options);
        setOptions(options);
    }

    QTemporaryDir folder;
    FakeDesk desk;
    FakeDVDWriterPro* writer = new FakeDVDWriterPro;
    bool made = false;
    QStringList files;
    DiscNames names;
    QScopedPointer<frmWrite> window;
};

} // namespace

/// The writing window, driven through its controls.
class TestFrmWrite : public QObject
{
    Q_OBJECT
private slots:
    void form_atDesignTime_hasItsTexts();
    void load_always_initializesListsAndAddsInThisOrder();
    void load_whileDrivesAreLookedFor_paintsAndPromisesNothing();
    void load_whenDrivesFail_saysSoInAPlainBoxAndGoesOn();
    void load_whenClosedAtOnce_isHarmless();
    void devices_always_showThreeTextsOfUsableDrives();
    void devices_withoutAny_leaveNothingSelected();
    void devices_chosen_areSelectedWithTheirSpeeds();
    void devices_chosenAgain_areAskedAgain();
    void devices_thatCannotBeSelected_countAsNone();
    void speeds_always_startWithDefault();
    void speeds_chosen_reachTheWriter();
    void speedText_ofAFactor_hasADecimalOnlyWhereNeeded_data();
    void speedText_ofAFactor_hasADecimalOnlyWhereNeeded();
    void tracks_missingOrRefused_areNamedAndSkipped();
    void tracks_changedAfterPreparation_areNamedAndSkipped();
    void write_withoutDrive_isRefused();
    void write_onAWrongDisc_isRefused_data();
    void write_onAWrongDisc_isRefused();
    void names_followTheirTracks_pastAMissingFile();
    void verify_setting_reachesTheWriter();
    void comparing_showsTrackAndPercent();
    void write_settings_reachTheWriterInOrder();
    void write_withCaching_makesTheFolder();
    void write_withBufferProtection_needsSettingAndDrive_data();
    void write_withBufferProtection_needsSettingAndDrive();
    void write_inTestMode_saysSoEachTimeBeforeTheStart();
    void write_whoseWindowClosesBehindTheBox_neverStarts();
    void write_afterOptionsChanged_usesThem();
    void write_refusedByTheWriter_saysSo();
    void write_whileItRuns_keepsTheSystemAwake();
    void write_clickedTwice_startsOnce();
    void events_always_showTheirTexts();
    void progress_ofTracks_isReckonedOverAll_data();
    void progress_ofTracks_isReckonedOverAll();
    void progress_withoutSense_keepsTheTexts();
    void completed_always_tellsAndFinishesRealWritesOnly_data();
    void completed_always_tellsAndFinishesRealWritesOnly();
    void cancel_pressed_asksTheWriterAndWaits();
    void error_ofAnyKind_isTold_data();
    void error_ofAnyKind_isTold();
    void states_always_enableTheirControls();
    void focus_whileWriting_isOnCancel();
    void focus_onOptionsAsWritingBegins_goesToCancel();
    void focus_whenAnotherDriveIsAsked_staysOnStart();
    void escape_always_doesNothing();
    void exit_whenIdle_closes();
    void exit_onEnter_closesAndWritesNothing();
    void close_whileWriting_cancelsAndClosesAtOnce();
    void destroy_whileWriting_handsTheWriterOver();
    void cancel_pressed_isNotOverwrittenByWhatStillGoesOn();
    void waiting_always_isSaidAndARemarkStays();
    void asking_canBeGivenUpAndClosed_data();
    void asking_canBeGivenUpAndClosed();
    void tracks_beyond99_areSaidByTheMainWindowAlone();
    void layout_withLongTexts_keepsTheWindowsWidth();
};

void TestFrmWrite::form_atDesignTime_hasItsTexts()
{
    Desk desk;
    desk.made = true;
    desk.window.reset(new frmWrite(desk.desk.services, desk.files));
    QCOMPARE(desk.control<QLabel>("lblRecorder")->text(), QString("Drive:"));
    QCOMPARE(desk.control<QLabel>("lblWriteSpeed")->text(), QString("Speed:"));
    QCOMPARE(desk.window->findChild<QWidget*>("Frame1")->property("title").toString(), QString("Status"));
    QCOMPARE(desk.status(), kInvitation);
    QCOMPARE(desk.percent(), QString("Percent:  0%"));
    QCOMPARE(desk.control<QPushButton>("cmdWrite")->text(), QString("&Start Writing"));
    QCOMPARE(desk.control<QPushButton>("cmdCancel")->text(), QString("&Cancel"));
    QCOMPARE(desk.control<QPushButton>("cmdOptions")->text(), QString("&Options..."));
    QCOMPARE(desk.control<QPushButton>("cmdExit")->text(), QString("E&xit"));
    QCOMPARE(desk.control<QProgressBar>("pbPer")->maximum(), 100);
    QCOMPARE(desk.enabled(), QString());
    QVERIFY(desk.writer->calls.isEmpty());
}

void TestFrmWrite::load_always_initializesListsAndAddsInThisOrder()
{
    Desk desk(2);
    QVERIFY(desk.open());
    QCOMPARE(desk.writer->calls,
             (QStringList{"initializeDrives 0", "selectDrive 0", "writeSpeeds",
                          "addAudioTrack " + desk.files[0], "addAudioTrack " + desk.files[1]}));
    QCOMPARE(desk.desk.messages.shown, QStringList());
    QCOMPARE(desk.status(), kInvitation);
}

void TestFrmWrite::load_whileDrivesAreLookedFor_paintsAndPromisesNothing()
{
    Desk desk;
    QString status;
    QString enabled;
    Qt::CursorShape shape = Qt::ArrowCursor;
    desk.writer->onInitialize = [&] {
        status = desk.status();
        enabled = desk.enabled();
        shape = desk.window->cursor().shape();
    };
    QVERIFY(desk.open());
    QVERIFY(status != kInvitation && !status.isEmpty());
    QCOMPARE(enabled, QString());
    QCOMPARE(shape, Qt::WaitCursor);
    QCOMPARE(desk.window->cursor().shape(), Qt::ArrowCursor);
    QCOMPARE(desk.status(), kInvitation);
}

void TestFrmWrite::load_whenDrivesFail_saysSoInAPlainBoxAndGoesOn()
{
    Desk desk;
    desk.writer->initializes = false;
    desk.writer->onInitialize = [&desk] { emit desk.writer->Remark("Another program is using it."); };
    QVERIFY(desk.open());
    QVERIFY(desk.control<QLabel>("lblNote")->isVisible());
    QCOMPARE(desk.control<QLabel>("lblNote")->text(), QString("Another program is using it."));
    QCOMPARE(desk.desk.messages.shown, QStringList{"p: Your drives could not be initialized. "});
    QCOMPARE(desk.desk.messages.owners.value(0).data(), desk.window.data());
    QCOMPARE(desk.entries("cboDevices").size(), 1);
    QCOMPARE(desk.writer->tracks.size(), 3);
}

void TestFrmWrite::load_whenClosedAtOnce_isHarmless()
{
    Desk desk;
    desk.writer->onInitialize = [&] { desk.window->close(); };
    desk.open();
    QVERIFY(!desk.window->isVisible());
    Desk other;
    other.made = true;
    other.window.reset(new frmWrite(other.desk.services, other.files));
    other.window->show();
    other.window.reset();
    QTest::qWait(50);
}

void TestFrmWrite::devices_always_showThreeTextsOfUsableDrives()
{
    Desk desk;
    desk.writer->drives = {
        {.path = "/dev/sr0", .maker = "READER", .model = "R", .writesCdR = false, .writesCdRw = false},
        {.path = "/dev/sr1", .maker = "NOSOUND", .model = "N", .writesAudio = false},
        {.path = "/dev/sr2", .maker = "ACME", .model = "Burner 5", .writesCdRw = false},
        {.path = "/dev/sr3", .maker = "ACME", .model = "Rewriter", .writesCdR = false},
    };
    QVERIFY(desk.open());
    QCOMPARE(desk.entries("cboDevices"), (QStringList{"/dev/sr2: ACME Burner 5", "/dev/sr3: ACME Rewriter"}));
    auto* list = desk.control<QComboBox>("cboDevices");
    QCOMPARE(list->currentIndex(), 0);
    QCOMPARE(list->itemData(0).toInt(), 2);
    QCOMPARE(list->itemData(1, Qt::UserRole).toInt(), 3);
    QVERIFY(desk.writer->calls.contains("selectDrive 2"));
}

void TestFrmWrite::devices_withoutAny_leaveNothingSelected()
{
    Desk desk;
    desk.writer->drives.clear();
    QVERIFY(desk.open());
    QCOMPARE(desk.entries("cboDevices"), QStringList());
    QCOMPARE(desk.entries("cboWriteSpeed"), QStringList());
    QVERIFY(!desk.writer->calls.join(' ').contains("selectDrive"));
    QCOMPARE(desk.enabled(), QString("DSWO"));
}

void TestFrmWrite::devices_chosen_areSelectedWithTheirSpeeds()
{
    Desk desk;
    desk.writer->drives = {{.speeds = {{8, 1411}}}, {.path = "/dev/sr1", .speeds = {{16, 2822}, {4, 706}}}};
    QVERIFY(desk.open());
    QCOMPARE(desk.entries("cboWriteSpeed"), (QStringList{"Default", "8x"}));
    auto* list = desk.control<QComboBox>("cboDevices");
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Down);
    QCOMPARE(desk.writer->selected, 1);
    QCOMPARE(desk.entries("cboWriteSpeed"), (QStringList{"Default", "16x", "4x"}));
    QCOMPARE(desk.writer->calls.count("selectDrive 1"), 1);
}

void TestFrmWrite::devices_chosenAgain_areAskedAgain()
{
    Desk desk;
    QVERIFY(desk.open());
    desk.writer->drives[0].speeds = {{48, 8467}};
    auto* list = desk.control<QComboBox>("cboDevices");
    emit list->activated(0);
    QCOMPARE(desk.entries("cboWriteSpeed"), (QStringList{"Default", "48x"}));
}

void TestFrmWrite::devices_thatCannotBeSelected_countAsNone()
{
    Desk desk;
    QVERIFY(desk.open());
    auto* list = desk.control<QComboBox>("cboDevices");
    list->addItem("gone", 7);
    list->setCurrentIndex(1);
    desk.click("cmdWrite");
    QCOMPARE(desk.desk.messages.shown,
             QStringList{"i: No drives installed on your computer or no drive selected."});
}

void TestFrmWrite::speeds_always_startWithDefault()
{
    Desk desk;
    desk.writer->drives[0].speeds = {{52, 9172}, {2.4, 423}, {1, 176}};
    QVERIFY(desk.open());
    QCOMPARE(desk.entries("cboWriteSpeed"), (QStringList{"Default", "52x", "2.4x", "1x"}));
    QCOMPARE(desk.control<QComboBox>("cboWriteSpeed")->currentText(), QString("Default"));
    QVERIFY(!desk.writer->calls.join(' ').contains("setWriteSpeed"));
}

void TestFrmWrite::speeds_chosen_reachTheWriter()
{
    Desk desk;
    desk.writer->drives[0].speeds = {{8, 1411}, {4, 706}};
    QVERIFY(desk.open());
    auto* list = desk.control<QComboBox>("cboWriteSpeed");
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Down);
    QCOMPARE(desk.writer->calls.mid(desk.writer->calls.size() - 2),
             (QStringList{"setWriteSpeed 1411", "setWriteSpeed 706"}));
    QTest::keyClick(list, Qt::Key_Home);
    QCOMPARE(desk.writer->calls.last(), QString("setWriteSpeed 0"));
}

void TestFrmWrite::speedText_ofAFactor_hasADecimalOnlyWhereNeeded_data()
{
    QTest::addColumn<double>("factor");
    QTest::addColumn<QString>("text");
    QTest::newRow("1") << 1.0 << "1x";
    QTest::newRow("48") << 48.0 << "48x";
    QTest::newRow("2.4") << 2.4 << "2.4x";
    QTest::newRow("2.25") << 2.25 << "2.3x";
    QTest::newRow("7.98") << 7.98 << "8.0x";
}

void TestFrmWrite::speedText_ofAFactor_hasADecimalOnlyWhereNeeded()
{
    QFETCH(double, factor);
    QTEST(speedText(factor), "text");
}

void TestFrmWrite::tracks_missingOrRefused_areNamedAndSkipped()
{
    Desk desk(3);
    const QString folder = desk.folder.filePath("folder.wav");
    QDir().mkdir(folder);
    QFile::remove(desk.files[0]);
    desk.writer->refused << desk.files[2];
    desk.files << folder << QString();
    PreparedFiles::noteTrouble(desk.files[0], "This file cannot be read:\na.mp3");
    PreparedFiles::noteTrouble(desk.files[2], "This is of another day.");
    QVERIFY(desk.open());
    const QString text = "i: The following file could not be written to CD audio:\n";
    QCOMPARE(desk.desk.messages.shown,
             (QStringList{text + desk.files[0] + "\nThis file cannot be read:\na.mp3", text + desk.files[2],
                          text + folder, text}));
    QCOMPARE(desk.writer->tracks, QStringList{desk.files[1]});
}

void TestFrmWrite::tracks_changedAfterPreparation_areNamedAndSkipped()
{
    Desk desk(3);
    for (const QString& path : desk.files)
        PreparedFiles::note(path);
    QFile changed(desk.files[1]);
    QVERIFY(changed.open(QIODevice::WriteOnly));
    changed.write("another song");
    changed.close();
    QVERIFY(desk.open());
    QCOMPARE(
        desk.desk.messages.shown,
        QStringList{"i: The following file was changed by another program after it was prepared, so it is "
                    "not written. Close this window and press Write again:\n" +
                    desk.files[1]});
    QCOMPARE(desk.desk.messages.owners.value(0).data(), desk.window.data());
    QCOMPARE(desk.writer->tracks, (QStringList{desk.files[0], desk.files[2]}));
    // The rest can be written; a window that is opened after another preparation takes the file as it is.
    desk.click("cmdWrite");
    QVERIFY(desk.writer->calls.contains("start"));
    emit desk.writer->WriteCompleted();
    PreparedFiles::note(desk.files[1]);
    QVERIFY(!PreparedFiles::wasChanged(desk.files[1]));
}

void TestFrmWrite::write_withoutDrive_isRefused()
{
    Desk desk;
    desk.writer->drives.clear();
    QVERIFY(desk.open());
    const QStringList before = desk.writer->calls;
    desk.click("cmdWrite");
    QCOMPARE(desk.desk.messages.shown,
             QStringList{"i: No drives installed on your computer or no drive selected."});
    QCOMPARE(desk.writer->calls, before);
    QCOMPARE(desk.enabled(), QString("DSWO"));
}

void TestFrmWrite::write_onAWrongDisc_isRefused_data()
{
    QTest::addColumn<int>("discStatus");
    QTest::addColumn<bool>("holdsData");
    QTest::addColumn<QString>("message");
    const QString none = "i: Please insert an empty disc and load the CDR-ROM for burning.";
    const QString wrong = "i: Please load an empty CD or CDR/W for burning.";
    const QString used = "i: Please insert an empty disc for burning.";
    QTest::newRow("no disc") << 254 << true << none;
    QTest::newRow("unusable") << 0 << true << wrong;
    QTest::newRow("another code") << 252 << false << wrong;
    QTest::newRow("blank with data") << 255 << true << used;
    QTest::newRow("appendable with data") << 253 << true << used;
    QTest::newRow("blank") << 255 << false << QString();
    QTest::newRow("appendable") << 253 << false << QString();
}

void TestFrmWrite::write_onAWrongDisc_isRefused()
{
    QFETCH(int, discStatus);
    QFETCH(bool, holdsData);
    QFETCH(QString, message);
    Desk desk;
    desk.writer->drives[0].status = discStatus;
    desk.writer->drives[0].holdsData = holdsData;
    QVERIFY(desk.open());
    desk.click("cmdWrite");
    QCOMPARE(desk.desk.messages.shown, message.isEmpty() ? QStringList() : QStringList{message});
    QCOMPARE(desk.writer->calls.contains("start"), message.isEmpty());
    QCOMPARE(desk.enabled(), message.isEmpty() ? QString("C") : QString("DSWO"));
}

void TestFrmWrite::names_followTheirTracks_pastAMissingFile()
{
    Desk desk;
    desk.names = {"Mix", "", {{"One", "A"}, {"Two", "B"}, {"Three", "C"}}};
    QFile::remove(desk.files[1]);
    QVERIFY(desk.open());
    QCOMPARE(desk.writer->tracks.size(), desk.files.size() - 1);
    QCOMPARE(desk.writer->discTitle, QString("Mix"));
    QCOMPARE(desk.writer->trackNames.value(1), (zib::TrackNames{"One", "A"}));
    QCOMPARE(desk.writer->trackNames.value(2), (zib::TrackNames{"Three", "C"}));
}

void TestFrmWrite::verify_setting_reachesTheWriter()
{
    Desk desk;
    desk.change([](OptionsData& o) { o.VerifyAfterWriting = true; });
    QVERIFY(desk.open());
    desk.click("cmdWrite");
    QVERIFY(desk.writer->calls.contains("setVerify 1"));
}

void TestFrmWrite::comparing_showsTrackAndPercent()
{
    Desk desk;
    QVERIFY(desk.open());
    desk.click("cmdWrite");
    emit desk.writer->WritingProgress(static_cast<int>(desk.files.size()), 100, 100);
    QCOMPARE(desk.bar(), 100);
    emit desk.writer->ComparingTrack(1, 0, 400);
    QCOMPARE(desk.status(), QString("Comparing Track #1 ... "));
    QCOMPARE(desk.bar(), 0);
    emit desk.writer->ComparingTrack(static_cast<int>(desk.files.size()), 400, 400);
    QCOMPARE(desk.percent(), QString("Percent:   100%"));
    desk.click("cmdCancel");
    emit desk.writer->ComparingTrack(1, 10, 400);
    QCOMPARE(desk.status(), QString("Writing Cancelled. Please wait ... "));
}

void TestFrmWrite::write_settings_reachTheWriterInOrder()
{
    Desk desk;
    desk.writer->drives[0].bufferProtection = true;
    desk.change([](OptionsData& o) { o.BufferProtection = true; });
    QVERIFY(desk.open());
    desk.click("cmdWrite");
    QCOMPARE(desk.callsSince("discStatus"),
             (QStringList{"discStatus", "discHoldsData", "setCacheLocally 0", "setWriteMode 0",
                          "setTestWrite 0", "setCloseSession 1", "setCloseDisc 1", "setVerify 0",
                          "setBufferProtection 1", "start"}));
}

void TestFrmWrite::write_withCaching_makesTheFolder()
{
    Desk desk;
    const QString cache = desk.folder.filePath("deep/Cache");
    desk.change([&](OptionsData& o) {
        o.CacheFilesLocally = true;
        o.Temporary = ("  " + cache).leftJustified(1024);
    });
    QVERIFY(desk.open());
    desk.click("cmdWrite");
    QVERIFY(QFileInfo(cache).isDir());
    QVERIFY(desk.writer->calls.contains("setCacheLocally 1"));
    QVERIFY(desk.writer->calls.contains("setCacheFolder " + cache));
    QVERIFY(desk.writer->running);
}

void TestFrmWrite::write_withBufferProtection_needsSettingAndDrive_data()
{
    QTest::addColumn<bool>("setting");
    QTest::addColumn<bool>("drive");
    for (const bool setting : {false, true})
        for (const bool drive : {false, true})
            QTest::addRow("%d %d", setting, drive) << setting << drive;
}

void TestFrmWrite::write_withBufferProtection_needsSettingAndDrive()
{
    QFETCH(bool, setting);
    QFETCH(bool, drive);
    Desk desk;
    desk.writer->drives[0].bufferProtection = drive;
    desk.change([&](OptionsData& o) { o.BufferProtection = setting; });
    QVERIFY(desk.open());
    desk.click("cmdWrite");
    QVERIFY(desk.writer->calls.contains(QString("setBufferProtection %1").arg(setting && drive)));
}

void TestFrmWrite::write_inTestMode_saysSoEachTimeBeforeTheStart()
{
    Desk desk;
    desk.change([](OptionsData& o) { o.TestMode = true; });
    QVERIFY(desk.open());
    bool startedBefore = true;
    desk.desk.messages.onShow = [&](const QString&) { startedBefore = desk.writer->calls.last() == "start"; };
    for (int n = 1; n <= 2; ++n) {
        desk.click("cmdWrite");
        QCOMPARE(desk.desk.messages.shown.size(), n);
        QCOMPARE(startedBefore, false);
        desk.click("cmdCancel");
        QTRY_COMPARE(desk.enabled(), QString("DSWO"));
    }
    QCOMPARE(
        desk.desk.messages.shown[0],
        QString("i: The software was set to \"Test Mode\" now. The test write mode will simulate the writing "
                "activity on the drive, but will not write actually. If you want to write actually, you may "
                "uncheck theitem \"Use Test Mode When Writing to CD\" from options."));
    QVERIFY(desk.writer->calls.contains("setTestWrite 1"));
}

/// As at the end of the session, which closes all windows.
void TestFrmWrite::write_whoseWindowClosesBehindTheBox_neverStarts()
{
    Desk desk;
    desk.change([](OptionsData& o) { o.TestMode = true; });
    QVERIFY(desk.open());
    desk.desk.messages.onShow = [&](const QString&) { desk.window->close(); };
    desk.click("cmdWrite");
    QCOMPARE(desk.desk.messages.shown.size(), 1);
    QVERIFY(!desk.window->isVisible());
    QVERIFY(!desk.writer->calls.contains("start"));
}

void TestFrmWrite::write_afterOptionsChanged_usesThem()
{
    Desk desk;
    QVERIFY(desk.open());
    desk.desk.windows.onShow = [&](const QString&) {
        desk.change([](OptionsData& o) { o.TestMode = true; });
    };
    desk.click("cmdOptions");
    QCOMPARE(desk.desk.windows.shown, QStringList{"options"});
    desk.click("cmdWrite");
    QCOMPARE(desk.desk.messages.shown.size(), 1);
    QVERIFY(desk.writer->testing);
    QVERIFY(desk.writer->running);
}

void TestFrmWrite::write_refusedByTheWriter_saysSo()
{
    Desk desk;
    desk.writer->starts = false;
    QVERIFY(desk.open());
    desk.click("cmdWrite");
    QCOMPARE(desk.desk.messages.shown, QStringList{"c: Write to disc failed."});
    QCOMPARE(desk.enabled(), QString("DSWO"));
    QCOMPARE(desk.status(), kInvitation);
    QVERIFY(!desk.control<QLabel>("lblNote")->isVisible());
    desk.writer->toldTracks = 0;
    desk.click("cmdWrite");
    QVERIFY(desk.control<QLabel>("lblNote")->isVisible());
    QVERIFY(desk.control<QLabel>("lblNote")->text().startsWith("There is no track that can be written."));
}

void TestFrmWrite::write_whileItRuns_keepsTheSystemAwake()
{
    Desk desk;
    QVERIFY(desk.open());
    const QStringList& held = *desk.desk.inhibitor.held;
    QStringList heldInBox;
    desk.desk.messages.onShow = [&](const QString&) { heldInBox += held; };
    const auto ends = {std::function<void()>([&] { emit desk.writer->WriteCompleted(); }),
                       std::function<void()>([&] { emit desk.writer->WriteCancelled(); }),
                       std::function<void()>([&] { emit desk.writer->WriteError(6, 0, "It stopped.", {}); })};
    for (const auto& end : ends) {
        QCOMPARE(held, QStringList());
        desk.click("cmdWrite");
        QCOMPARE(held, QStringList{"A disc is being written"});
        QVERIFY(desk.window->isWriting());
        desk.writer->running = false;
        end();
        QVERIFY(!desk.window->isWriting());
    }
    QCOMPARE(heldInBox, QStringList());
    desk.writer->starts = false;
    desk.click("cmdWrite");
    QCOMPARE(held, QStringList());
}

void TestFrmWrite::write_clickedTwice_startsOnce()
{
    Desk desk;
    desk.change([](OptionsData& o) { o.TestMode = true; });
    QVERIFY(desk.open());
    desk.desk.messages.onShow = [&](const QString&) { desk.click("cmdWrite"); };
    desk.click("cmdWrite");
    desk.click("cmdWrite");
    QCOMPARE(desk.writer->calls.count("start"), 1);
    QCOMPARE(desk.desk.messages.shown.size(), 1);
}

void TestFrmWrite::events_always_showTheirTexts()
{
    Desk desk;
    QVERIFY(desk.open());
    desk.click("cmdWrite");
    emit desk.writer->WritingProgress(1, 1, 1);
    emit desk.writer->PreparingToWrite();
    QCOMPARE(desk.status(), QString("Preparing to Write Disc...."));
    QCOMPARE(desk.percent(), QString("Percent:   0%"));
    QCOMPARE(desk.bar(), 0);
    emit desk.writer->CachingProgress(0);
    QCOMPARE(desk.status(), QString("Caching - 0%"));
    emit desk.writer->CachingProgress(100);
    QCOMPARE(desk.status(), QString("Caching - 100%"));
    emit desk.writer->ReadingTrack("<b>song</b> & more.wav", 12345, 1);
    QCOMPARE(desk.status(), QString("Track: 01 - Reading...12345 - <b>song</b> & more.wav"));
    QCOMPARE(desk.control<QLabel>("lblStatus")->textFormat(), Qt::PlainText);
    emit desk.writer->ReadingTrack("a.wav", 1, 12);
    QCOMPARE(desk.status(), QString("Track: 12 - Reading...1 - a.wav"));
    emit desk.writer->WritingProgress(2, 1, 2);
    QCOMPARE(desk.status(), QString("Writing Track #2 ... "));
    emit desk.writer->ClosingTrack(3);
    QCOMPARE(desk.status(), QString("Closing Track...#03"));
    emit desk.writer->ClosingTrack(99);
    QCOMPARE(desk.status(), QString("Closing Track...#99"));
    emit desk.writer->ClosingDisc();
    QCOMPARE(desk.status(), QString("Closing disc... , please wait, this may last for several minutes."));
    emit desk.writer->Information("noise", 1, 2, 3);
    QCOMPARE(desk.status(), QString("Closing disc... , please wait, this may last for several minutes."));
    QCOMPARE(desk.enabled(), QString("C"));
}

void TestFrmWrite::progress_ofTracks_isReckonedOverAll_data()
{
    QTest::addColumn<int>("tracks");
    QTest::addColumn<int>("track");
    QTest::addColumn<int>("done");
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("percent");
    QTest::newRow("three tracks, half of the second") << 3 << 2 << 500 << 1000 << 50;
    QTest::newRow("beginning") << 3 << 1 << 0 << 1000 << 0;
    QTest::newRow("end") << 3 << 3 << 1000 << 1000 << 100;
    QTest::newRow("track's half goes to the even 2") << 1 << 1 << 25 << 1000 << 2;
    QTest::newRow("track's half goes to the even 4") << 1 << 1 << 35 << 1000 << 4;
    QTest::newRow("overall half goes to the even 12") << 4 << 1 << 500 << 1000 << 12;
    QTest::newRow("overall half goes to the even 38") << 4 << 2 << 500 << 1000 << 38;
    QTest::newRow("rounded twice") << 2 << 1 << 25 << 1000 << 1;
    QTest::newRow("a whole disc in bytes") << 1 << 1 << 400'000'000 << 800'000'000 << 50;
    QTest::newRow("more than all") << 2 << 3 << 1000 << 1000 << 100;
}

void TestFrmWrite::progress_ofTracks_isReckonedOverAll()
{
    QFETCH(int, tracks);
    QFETCH(int, track);
    QFETCH(int, done);
    QFETCH(int, size);
    QFETCH(int, percent);
    Desk desk(tracks);
    QVERIFY(desk.open());
    desk.click("cmdWrite");
    emit desk.writer->WritingProgress(track, done, size);
    QCOMPARE(desk.percent(), QString("Percent:   %1%").arg(percent));
    QCOMPARE(desk.bar(), percent);
    QCOMPARE(desk.status(), QString("Writing Track #%1 ... ").arg(track));
}

void TestFrmWrite::progress_withoutSense_keepsTheTexts()
{
    Desk desk;
    QVERIFY(desk.open());
    desk.click("cmdWrite");
    emit desk.writer->WritingProgress(2, 500, 1000);
    emit desk.writer->WritingProgress(3, 0, 0);
    emit desk.writer->WritingProgress(3, 5, 0);
    QCOMPARE(desk.percent(), QString("Percent:   50%"));
    QCOMPARE(desk.bar(), 50);
    QCOMPARE(desk.status(), QString("Writing Track #2 ... "));
    QVERIFY(!overallPercent(1, 5, 10, 0));
    QCOMPARE(overallPercent(std::numeric_limits<qint32>::max(), 5, 10, 1), std::optional<int>(100));
}

void TestFrmWrite::completed_always_tellsAndFinishesRealWritesOnly_data()
{
    QTest::addColumn<bool>("test");
    QTest::newRow("real") << false;
    QTest::newRow("test") << true;
}

void TestFrmWrite::completed_always_tellsAndFinishesRealWritesOnly()
{
    QFETCH(bool, test);
    Desk desk;
    QVERIFY(desk.open());
    desk.change([&](OptionsData& o) { o.TestMode = test; });
    desk.click("cmdWrite");
    desk.desk.messages.shown.clear();
    QString meanwhile;
    desk.desk.messages.onShow = [&](const QString&) { meanwhile = desk.status() + desk.enabled(); };
    desk.writer->running = false;
    emit desk.writer->WriteCompleted();
    QCOMPARE(desk.desk.messages.shown, QStringList{"i: Writing is completed."});
    QCOMPARE(meanwhile, QString("Writing Completed.C"));
    QCOMPARE(desk.writer->calls.contains("finish 0"), !test);
    QCOMPARE(desk.enabled(), QString("DSWO"));
    QVERIFY(desk.window->isVisible());
}

void TestFrmWrite::cancel_pressed_asksTheWriterAndWaits()
{
    Desk desk;
    desk.writer->obeysCancel = false;
    QVERIFY(desk.open());
    desk.click("cmdWrite");
    desk.click("cmdCancel");
    QCOMPARE(desk.status(), QString("Writing Cancelled. Please wait ... "));
    QCOMPARE(desk.writer->calls.last(), QString("cancel"));
    QCOMPARE(desk.enabled(), QString("C"));
    desk.writer->running = false;
    emit desk.writer->WriteCancelled();
    QCOMPARE(desk.status(), QString("Writing Cancelled."));
    QCOMPARE(desk.enabled(), QString("DSWO"));
    QCOMPARE(desk.desk.messages.shown, QStringList());
    desk.click("cmdWrite");
    QCOMPARE(desk.writer->calls.count("start"), 2);
}

void TestFrmWrite::error_ofAnyKind_isTold_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("sense");
    QTest::addColumn<QString>("message");
    QTest::newRow("drive error")
        << 3 << 1008
        << "c: Writing Error: (3)   It stopped.\nA buffer under-run has occurred (1008).\n"
           " Error Sense Data: [3 0C 09]";
    QTest::newRow("unknown sense")
        << 3 << 7 << "c: Writing Error: (3)   It stopped.\n (7).\n Error Sense Data: [3 0C 09]";
    QTest::newRow("no sense") << 6 << 1008 << "c: Writing Error: (6)   It stopped.\n";
    QTest::newRow("negative") << -1 << 0 << "c: Writing Error: (-1)   It stopped.\n";
}

void TestFrmWrite::error_ofAnyKind_isTold()
{
    QFETCH(int, code);
    QFETCH(int, sense);
    Desk desk;
    QVERIFY(desk.open());
    desk.click("cmdWrite");
    emit desk.writer->PreparingToWrite();
    QString meanwhile;
    desk.desk.messages.onShow = [&](const QString&) { meanwhile = desk.enabled(); };
    desk.writer->running = false;
    emit desk.writer->WriteError(code, sense, "It stopped.", "[3 0C 09]");
    QTEST(desk.desk.messages.shown.value(0), "message");
    QCOMPARE(desk.desk.messages.shown.size(), 1);
    QCOMPARE(meanwhile, QString("C"));
    QCOMPARE(desk.enabled(), QString("DSWO"));
    QCOMPARE(desk.status(), kInvitation);
    QVERIFY(!desk.writer->calls.contains("finish 0"));
}

void TestFrmWrite::states_always_enableTheirControls()
{
    Desk desk;
    QVERIFY(desk.open());
    QCOMPARE(desk.enabled(), QString("DSWO"));
    desk.writer->plays = true;
    QStringList seen;
    const auto look = [&] { seen << desk.enabled(); };
    connect(desk.writer, &DVDWriterPro::PreparingToWrite, desk.window.data(), look);
    connect(desk.writer, &DVDWriterPro::WritingProgress, desk.window.data(), look);
    connect(desk.writer, &DVDWriterPro::ClosingTrack, desk.window.data(), look);
    connect(desk.writer, &DVDWriterPro::ClosingDisc, desk.window.data(), look);
    desk.click("cmdWrite");
    QTRY_COMPARE(desk.enabled(), QString("DSWO"));
    QCOMPARE(seen.size(), 11);
    QCOMPARE(seen.count("C"), 11);
    QCOMPARE(desk.percent(), QString("Percent:   100%"));
    QVERIFY(desk.control<QPushButton>("cmdExit")->isEnabled());
}

void TestFrmWrite::focus_whileWriting_isOnCancel()
{
    Desk desk;
    QVERIFY(desk.open());
    desk.window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(desk.window.data()));
    QTRY_VERIFY(desk.control<QPushButton>("cmdWrite")->hasFocus());
    QTest::keyClick(desk.window.data(), Qt::Key_Return);
    QVERIFY(desk.writer->running);
    QVERIFY(desk.control<QPushButton>("cmdCancel")->hasFocus());
    QTest::keyClick(desk.window.data(), Qt::Key_Return);
    QVERIFY(!desk.writer->calls.contains("cancel"));
    desk.click("cmdCancel");
    QTRY_VERIFY(desk.control<QPushButton>("cmdWrite")->hasFocus());
}

/// A letter of the keyboard starts the write while the focus stands on Options.
void TestFrmWrite::focus_onOptionsAsWritingBegins_goesToCancel()
{
    Desk desk;
    QVERIFY(desk.open());
    desk.window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(desk.window.data()));
    desk.control<QPushButton>("cmdOptions")->setFocus();
    desk.control<QPushButton>("cmdWrite")->click();
    QVERIFY(desk.writer->running);
    QVERIFY(desk.control<QPushButton>("cmdCancel")->hasFocus());
    QTest::keyClick(desk.window.data(), Qt::Key_Return);
    QVERIFY(desk.window->isVisible());
    QVERIFY(!desk.writer->calls.contains("cancel"));
}

void TestFrmWrite::focus_whenAnotherDriveIsAsked_staysOnStart()
{
    Desk desk;
    QVERIFY(desk.open());
    desk.window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(desk.window.data()));
    QTRY_VERIFY(desk.control<QPushButton>("cmdWrite")->hasFocus());
    auto* drives = desk.control<QComboBox>("cboDevices");
    emit drives->activated(drives->currentIndex());
    emit drives->activated(drives->currentIndex());
    QTRY_VERIFY(desk.control<QPushButton>("cmdWrite")->isEnabled());
    QVERIFY(desk.control<QPushButton>("cmdWrite")->hasFocus());
}

void TestFrmWrite::escape_always_doesNothing()
{
    Desk desk;
    QVERIFY(desk.open());
    QTest::keyClick(desk.window.data(), Qt::Key_Escape);
    QVERIFY(desk.window->isVisible());
    desk.click("cmdWrite");
    QTest::keyClick(desk.window.data(), Qt::Key_Escape);
    QVERIFY(desk.window->isVisible());
    QVERIFY(!desk.writer->calls.contains("cancel"));
}

void TestFrmWrite::exit_whenIdle_closes()
{
    Desk desk;
    QVERIFY(desk.open());
    desk.click("cmdExit");
    QVERIFY(!desk.window->isVisible());
    QVERIFY(!desk.writer->calls.contains("cancel"));
}

void TestFrmWrite::exit_onEnter_closesAndWritesNothing()
{
    Desk desk;
    QVERIFY(desk.open());
    auto* exit = desk.control<QPushButton>("cmdExit");
    exit->setFocus();
    QTest::keyClick(exit, Qt::Key_Return);
    QVERIFY(!desk.writer->running);
    QVERIFY(!desk.window->isVisible());
}

void TestFrmWrite::close_whileWriting_cancelsAndClosesAtOnce()
{
    for (const bool byFrame : {false, true}) {
        Desk desk;
        desk.writer->obeysCancel = false;
        QVERIFY(desk.open());
        desk.click("cmdWrite");
        byFrame ? void(desk.window->close()) : desk.click("cmdExit");
        QVERIFY(!desk.window->isVisible());
        QCOMPARE(desk.writer->calls.count("cancel"), 1);
        QCOMPARE(desk.desk.windows.kept.size(), size_t(1));
        QCOMPARE(desk.desk.windows.kept.at(0).get(), desk.writer);
        emit desk.writer->WriteCompleted();
        QCOMPARE(desk.desk.messages.shown, QStringList());
    }
}

void TestFrmWrite::destroy_whileWriting_handsTheWriterOver()
{
    Desk desk;
    desk.writer->obeysCancel = false;
    QVERIFY(desk.open());
    desk.click("cmdWrite");
    desk.window.reset();
    QCOMPARE(desk.desk.windows.kept.size(), size_t(1));
}

void TestFrmWrite::cancel_pressed_isNotOverwrittenByWhatStillGoesOn()
{
    Desk desk;
    desk.writer->obeysCancel = false;
    QVERIFY(desk.open());
    desk.click("cmdWrite");
    desk.click("cmdCancel");
    emit desk.writer->ReadingTrack("x.wav", 1, 1);
    emit desk.writer->WritingProgress(1, 1, 2);
    emit desk.writer->ClosingTrack(1);
    emit desk.writer->ClosingDisc();
    emit desk.writer->Waiting("Reading the disc back");
    emit desk.writer->CachingProgress(4);
    QCOMPARE(desk.status(), QString("Writing Cancelled. Please wait ... "));
    desk.writer->running = false;
    emit desk.writer->WriteCompleted();
    QCOMPARE(desk.status(), QString("Writing Completed."));
}

void TestFrmWrite::waiting_always_isSaidAndARemarkStays()
{
    Desk desk;
    QVERIFY(desk.open());
    QVERIFY(!desk.control<QLabel>("lblNote")->isVisible());
    desk.click("cmdWrite");
    emit desk.writer->Waiting("The drive becomes ready [2 04 01]");
    QCOMPARE(desk.status(), QString("The drive becomes ready [2 04 01]"));
    emit desk.writer->Remark("The disc is still blank.");
    desk.writer->running = false;
    emit desk.writer->WriteCancelled();
    QCOMPARE(desk.status(), QString("Writing Cancelled."));
    QCOMPARE(desk.control<QLabel>("lblNote")->text(), QString("The disc is still blank."));
    QVERIFY(desk.control<QLabel>("lblNote")->isVisible());
    desk.click("cmdWrite");
    QVERIFY(!desk.control<QLabel>("lblNote")->isVisible());
}

void TestFrmWrite::asking_canBeGivenUpAndClosed_data()
{
    QTest::addColumn<QString>("how");
    QTest::newRow("cancel") << "cmdCancel";
    QTest::newRow("exit") << "cmdExit";
}

void TestFrmWrite::asking_canBeGivenUpAndClosed()
{
    QFETCH(QString, how);
    Desk desk;
    QVERIFY(desk.open());
    QString status;
    QString enabled;
    desk.writer->onDiscStatus = [&] {
        status = desk.status();
        enabled = desk.enabled();
        desk.click(how.toLatin1());
    };
    desk.click("cmdWrite");
    QCOMPARE(status, QString("Asking the drive about its disc, please wait..."));
    QCOMPARE(enabled, QString("C"));
    QVERIFY(desk.writer->calls.contains("abandon"));
    QVERIFY(!desk.writer->calls.contains("start"));
    QCOMPARE(desk.window->isVisible(), how == "cmdCancel");
    QCOMPARE(desk.desk.messages.shown, QStringList());
    if (how == "cmdCancel")
        QCOMPARE(desk.enabled() + desk.status(), "DSWO" + kInvitation);
}

void TestFrmWrite::tracks_beyond99_areSaidByTheMainWindowAlone()
{
    Desk desk(101);
    QVERIFY(desk.open());
    QCOMPARE(desk.desk.messages.shown.filter("99").size(), 0);
}

void TestFrmWrite::layout_withLongTexts_keepsTheWindowsWidth()
{
    Desk desk;
    desk.writer->drives[0].model = QString(400, 'W');
    QVERIFY(desk.open());
    const QSize before = desk.window->size();
    emit desk.writer->ReadingTrack(QString(500, 'W'), 1, 1);
    emit desk.writer->ReadingTrack(QString("word ").repeated(100), 1, 1);
    QTest::qWait(50);
    QCOMPARE(desk.window->size().width(), before.width());
    QVERIFY(desk.window->minimumSizeHint().width() < 700);
    for (const char* name : {"cmdWrite", "cmdCancel", "cmdOptions", "cmdExit"}) {
        const auto* button = desk.control<QPushButton>(name);
        QVERIFY(button->width() >= button->sizeHint().width());
        QVERIFY(desk.window->rect().contains(button->geometry()));
    }
}

QTEST_MAIN(TestFrmWrite)
#include "tst_frmwrite.moc"
