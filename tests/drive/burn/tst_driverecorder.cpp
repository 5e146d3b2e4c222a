#include "drive/burn/DiscTruth.h"

#include "engines/burn/drive/DriveLedger.h"
#include "engines/burn/drive/LibburnSession.h"
#include "engines/burn/mmc/DriveLine.h"

#include <QTimer>

using namespace zib;

namespace {

constexpr qint64 kPairsPerFrame = 588;

} // namespace

/// The writer on libburn, over the emulated recorder: finding, looking, writing.
class TestDriveRecorder : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();

    void drives_areListedBeforeTheImageRecorder();
    void drives_thatCannotBeOpened_failTheInitialisation_data();
    void drives_thatCannotBeOpened_failTheInitialisation();
    void drives_thatOnlyRead_areNotListed();
    void door_thatAKilledProgramLocked_isUnlocked();
    void abilities_areTheDrivesOwn();
    void discs_areToldApart_data();
    void discs_areToldApart();
    void disc_thatBecomesReady_isWaitedFor();
    void speeds_areListedOnceFastestFirst();

    void write_onBlankDisc_isBitExact();
    void write_withoutSessionAtOnce_fallsBackToTrackAtOnce();
    void write_throughCache_leavesNoCopies();
    void write_inTestMode_leavesTheDiscBlank();
    void write_inTestModeTheDriveLacks_isRefused();
    void write_longerThanTheDisc_neverBegins();
    void write_atAChosenSpeed_tellsTheDrive();
    void write_toTheLastFrame_fits();
    void progress_neverFalls_andEndsAtTheFullSize();

    void write_ofAFileCutMeanwhile_isAnError();
    void write_withTheDiscPulled_saysSo();
    void write_withTheDriveGone_saysSo();
    void write_afterTheDriveWasGoneWhileItWasTaken_works();
    void write_withADriveStuckNotReady_ends();
    void write_whoseDiscShowsNothing_isNoSuccess();
    void write_errors_areToldByTheTable_data();
    void write_errors_areToldByTheTable();
    void cancel_whileWriting_endsUnlocked();
    void cancel_whileClosing_isTheWholeDisc();
    void write_whoseWayBreaks_endsUnlockedAndSaysTheDiscsState_data();
    void write_whoseWayBreaks_endsUnlockedAndSaysTheDiscsState();
    void drive_thatHangs_isNamedAndDelaysNobody();
    void anotherDriveThatHangs_isNamedAsTheCause();
    void drive_thatAClosedWindowAsks_isWaitedFor();
    void drive_thatCouldNotBeAskedBefore_isWrittenTheWayItCan();
    void write_whileAnotherDriveWrites_saysSoAndTakesACancel();
    void write_whileAnotherDriveWrites_waitsForItsEnd();
    void destroy_whileWriting_freesTheDrive();
    void finish_withEject_handsTheDiscOut();
};

void TestDriveRecorder::initTestCase()
{
    const BurnBench bench;
    QVERIFY2(bench.recorder.isPreloaded(), "the emulated recorder is not under this process");
}

void TestDriveRecorder::drives_areListedBeforeTheImageRecorder()
{
    BurnBench bench;
    QVERIFY(bench.writer.initializeDrives(false));
    QCOMPARE(bench.writer.driveCount(), 2);
    QCOMPARE(bench.writer.driveText1(0), QString("/dev/sr0"));
    QCOMPARE(bench.writer.driveText2(0), QString("ZIB"));
    QCOMPARE(bench.writer.driveText3(0), QString("EMULATED CD-RW"));
    QVERIFY(!bench.recorder.doorLocked());
}

void TestDriveRecorder::drives_thatCannotBeOpened_failTheInitialisation_data()
{
    QTest::addColumn<QString>("open");
    QTest::addColumn<bool>("initialised");
    QTest::addColumn<QString>("expected");
    const QString mayNot = "You may not use \"/dev/sr0\". Ask for membership in the group cdrom";
    QTest::newRow("no permission") << "denied" << false << mayNot;
    QTest::newRow("no permission to write") << "read-only" << false << mayNot;
    QTest::newRow("held by another program") << "busy" << false << "Another program is using \"/dev/sr0\".";
    QTest::newRow("not there") << "missing" << true << "";
}

void TestDriveRecorder::drives_thatCannotBeOpened_failTheInitialisation()
{
    QFETCH(QString, open);
    QFETCH(QString, expected);
    BurnBench bench;
    bench.recorder.set("open", open);
    QString remark;
    QObject::connect(&bench.writer, &DVDWriterPro::Remark, [&remark](const QString& text) { remark = text; });
    QTEST(bench.writer.initializeDrives(false), "initialised");
    QVERIFY2(expected.isEmpty() ? remark.isEmpty() : remark.startsWith(expected), qPrintable(remark));
    QCOMPARE(bench.writer.driveCount(), 1);
    QCOMPARE(bench.recorder.count("INQUIRY"), 0);
    bench.recorder.set("open", "open");
    QVERIFY(bench.takeDrive());
}

void TestDriveRecorder::drives_thatOnlyRead_areNotListed()
{
    BurnBench bench;
    bench.recorder.set("writes-cd-r", "no");
    bench.recorder.set("writes-cd-rw", "no");
    QVERIFY(bench.writer.initializeDrives(false));
    QCOMPARE(bench.writer.driveCount(), 1);
}

void TestDriveRecorder::door_thatAKilledProgramLocked_isUnlocked()
{
    BurnBench bench;
    {
        const auto killed = DriveLine::open("/dev/sr0", DriveLine::Hold::Exclusive);
        QVERIFY(killed && (*killed)->send({0x1E, 0, 0, 0, 1, 0}).good());
    }
    QVERIFY(bench.recorder.doorLocked());
    QVERIFY(bench.writer.initializeDrives(false));
    QVERIFY(!bench.recorder.doorLocked());
}

void TestDriveRecorder::abilities_areTheDrivesOwn()
{
    BurnBench able;
    QVERIFY(able.takeDrive());
    QVERIFY(able.writer.canWriteCdR(0) && able.writer.canWriteCdRw(0) && able.writer.canWriteAudio(0));
    QVERIFY(able.writer.supportsBufferProtection());

    BurnBench poor;
    poor.recorder.set("buffer-protection", "no");
    poor.recorder.set("writes-cd-rw", "no");
    QVERIFY(poor.takeDrive());
    QVERIFY(!poor.writer.supportsBufferProtection());
    QVERIFY(!poor.writer.canWriteCdRw(0));
}

void TestDriveRecorder::discs_areToldApart_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QStringList>("recipe");
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("holdsData");
    QTest::newRow("blank") << "cd-r" << QStringList{} << DVDWriterPro::kBlankDisc << false;
    QTest::newRow("blank, rewritable") << "cd-rw" << QStringList{} << DVDWriterPro::kBlankDisc << false;
    QTest::newRow("appendable") << "cd-r" << QStringList{"audio 400", "session"}
                                << DVDWriterPro::kAppendableDisc << true;
    QTest::newRow("full") << "cd-r" << QStringList{"audio 400", "close"} << DVDWriterPro::kUnusableDisc
                          << true;
    QTest::newRow("full, rewritable")
        << "cd-rw" << QStringList{"audio 400", "close"} << DVDWriterPro::kAppendableDisc << true;
    QTest::newRow("pressed") << "cd-rom" << QStringList{"audio 400", "data 400", "close"}
                             << DVDWriterPro::kUnusableDisc << true;
}

void TestDriveRecorder::discs_areToldApart()
{
    QFETCH(QString, kind);
    QFETCH(QStringList, recipe);
    BurnBench bench;
    bench.recorder.set("disc-kind", kind);
    bench.recorder.insert("other", recipe);
    QVERIFY(bench.takeDrive());
    QTEST(bench.writer.discStatus(), "status");
    QTEST(bench.writer.discHoldsData(), "holdsData");
    bench.recorder.removeDisc();
    QCOMPARE(bench.writer.discStatus(), DVDWriterPro::kNoDisc);
    QVERIFY(!bench.recorder.doorLocked());
}

void TestDriveRecorder::disc_thatBecomesReady_isWaitedFor()
{
    BurnBench bench;
    QVERIFY(bench.takeDrive());
    bench.recorder.addFault("MEDIA times=12 sense=2/04/01");
    QCOMPARE(bench.writer.discStatus(), DVDWriterPro::kBlankDisc);
}

void TestDriveRecorder::speeds_areListedOnceFastestFirst()
{
    BurnBench bench;
    bench.recorder.set("write-speeds", "24 8 4 16 8");
    QVERIFY(bench.takeDrive());
    QList<double> factors;
    for (const WriteSpeed& speed : bench.writer.writeSpeeds())
        factors << speed.factor;
    QCOMPARE(factors, (QList<double>{24, 16, 8, 4}));
    QCOMPARE(bench.writer.maxWriteSpeed(), bench.writer.writeSpeeds().first().value);
}

void TestDriveRecorder::write_onBlankDisc_isBitExact()
{
    BurnBench bench;
    const QList<QByteArray> tracks = addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    QCOMPARE(bench.write(), QString("completed"));
    QCOMPARE(bench.said, (QStringList{"preparing", "reading 1", "reading 2", "closing disc", "completed"}));
    QCOMPARE(difference(bench.recorder, tracks), QString());
    QCOMPARE(bench.recorder.count("SEND_CUE_SHEET"), 1);
    QVERIFY(!bench.recorder.doorLocked());
    QCOMPARE(bench.writer.discStatus(), DVDWriterPro::kUnusableDisc);
}

void TestDriveRecorder::write_withoutSessionAtOnce_fallsBackToTrackAtOnce()
{
    BurnBench bench;
    bench.recorder.set("sao", "no");
    const QList<QByteArray> tracks = addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    QCOMPARE(bench.write(), QString("completed"));
    QCOMPARE(bench.recorder.count("SEND_CUE_SHEET"), 0);
    const auto content = bench.recorder.content();
    QVERIFY(content && content->finalized && content->tracks.size() == 2);
    for (int i = 0; i < 2; ++i)
        QCOMPARE(bench.recorder.frames(content->tracks[i].start, int(tracks[i].size() / 2352)), tracks[i]);
}

void TestDriveRecorder::write_throughCache_leavesNoCopies()
{
    BurnBench bench;
    const QList<QByteArray> tracks = addPair(bench);
    QVERIFY(QDir().mkpath(bench.folder.filePath("cache")));
    QVERIFY(bench.takeDrive());
    bench.cache = true;
    bench.configure();
    QCOMPARE(bench.write(), QString("completed"));
    QCOMPARE(difference(bench.recorder, tracks), QString());
    QCOMPARE(bench.leftCopies(), QStringList());
}

void TestDriveRecorder::write_inTestMode_leavesTheDiscBlank()
{
    BurnBench bench;
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.writer.setTestWrite(true);
    QCOMPARE(bench.write(), QString("completed"));
    QVERIFY(bench.recorder.count("WRITE_10") > 10);
    QVERIFY(bench.recorder.content()->blank);
    QCOMPARE(bench.writer.discStatus(), DVDWriterPro::kBlankDisc);
}

void TestDriveRecorder::write_inTestModeTheDriveLacks_isRefused()
{
    BurnBench bench;
    bench.recorder.set("simulation", "no");
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.writer.setTestWrite(true);
    QCOMPARE(bench.write(), QString("error"));
    QVERIFY(bench.error != DVDWriterPro::kDriveError);
    QVERIFY2(bench.description.contains("test mode"), qPrintable(bench.description));
    QCOMPARE(bench.recorder.count("WRITE_10"), 0);
    QVERIFY(bench.recorder.content()->blank);
}

void TestDriveRecorder::write_longerThanTheDisc_neverBegins()
{
    BurnBench bench;
    bench.recorder.set("disc-frames", "1300");
    bench.recorder.insert("small");
    bench.addTrack(kPairsPerFrame * 1200, 1);
    QVERIFY(bench.takeDrive());
    bench.configure();
    QCOMPARE(bench.write(), QString("error"));
    QCOMPARE(bench.error, DVDWriterPro::kDriveError);
    QCOMPARE(bench.sense, 1021);
    QCOMPARE(bench.senseData, QString("[5 21 00]"));
    QCOMPARE(bench.recorder.count("WRITE_10"), 0);
    QVERIFY(bench.recorder.content()->blank);
}

void TestDriveRecorder::write_toTheLastFrame_fits()
{
    BurnBench bench;
    bench.recorder.set("disc-frames", "1301"); // The last lead-out stands one frame before the end.
    bench.recorder.insert("small");
    const QList<QByteArray> tracks{bench.addTrack(kPairsPerFrame * 1150, 1)};
    QVERIFY(bench.takeDrive());
    bench.configure();
    QCOMPARE(bench.write(), QString("completed"));
    QCOMPARE(difference(bench.recorder, tracks), QString());
}

void TestDriveRecorder::write_atAChosenSpeed_tellsTheDrive()
{
    BurnBench bench;
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    const QList<WriteSpeed> speeds = bench.writer.writeSpeeds();
    const int slow = speeds.last().value;
    bench.writer.setWriteSpeed(slow);
    bench.recorder.clearJournal();
    QCOMPARE(bench.write(), QString("completed"));
    const QString wanted = QString("%1").arg(slow, 4, 16, QLatin1Char('0')).toUpper();
    bool told = bench.recorder.count("SET_STREAMING") > 0;
    for (const QString& line : bench.recorder.journal())
        told = told || (line.contains("SET_CD_SPEED") && line.contains(wanted));
    QVERIFY(told);
}

void TestDriveRecorder::progress_neverFalls_andEndsAtTheFullSize()
{
    BurnBench bench;
    const QList<QByteArray> tracks = addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.recorder.addFault("WRITE_10 times=forever delay=5");
    QCOMPARE(bench.write(), QString("completed"));
    std::tuple<qint32, qint32, qint32> last{1, 0, 0};
    QList<qint32> reached{0, 0};
    for (const auto& position : bench.positions) {
        const auto [track, done, size] = position;
        QVERIFY(std::tuple(track, done) >= std::tuple(std::get<0>(last), std::get<1>(last)));
        QVERIFY(done <= size);
        QCOMPARE(qint64(size), tracks[track - 1].size());
        reached[track - 1] = done;
        last = position;
    }
    QCOMPARE(reached, (QList<qint32>{qint32(tracks[0].size()), qint32(tracks[1].size())}));
    QVERIFY(bench.positions.size() > 3);
}

void TestDriveRecorder::write_ofAFileCutMeanwhile_isAnError()
{
    BurnBench bench;
    bench.addTrack(kPairsPerFrame * 400, 1);
    bench.addTrack(kPairsPerFrame * 9000, 2);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.recorder.addFault("WRITE_10 times=forever delay=10");
    bench.onProgress = [&bench](qint32, qint32) { QFile::resize(bench.files.last(), 100'000); };
    QCOMPARE(bench.write(), QString("error"));
    QVERIFY(bench.error != DVDWriterPro::kDriveError);
    QVERIFY2(bench.description.contains("track2.wav"), qPrintable(bench.description));
    QVERIFY(!bench.recorder.doorLocked());
}

void TestDriveRecorder::write_withTheDiscPulled_saysSo()
{
    BurnBench bench;
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.recorder.addFault("WRITE_10 nth=9 pull");
    QCOMPARE(bench.write(), QString("error"));
    QCOMPARE(bench.error, DVDWriterPro::kDriveError);
    QCOMPARE(bench.sense, 1033);
    QCOMPARE(bench.senseData, QString("[2 3A 00]"));
}

void TestDriveRecorder::write_withTheDriveGone_saysSo()
{
    BurnBench bench;
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.recorder.addFault("WRITE_10 nth=9 gone");
    QCOMPARE(bench.write(), QString("error"));
    QVERIFY(bench.error != DVDWriterPro::kDriveError);
    QVERIFY2(bench.description.contains("/dev/sr0"), qPrintable(bench.description));
    bench.recorder.clearFaults();
    bench.recorder.insert("fresh");
    QVERIFY(bench.takeDrive());
    QCOMPARE(bench.write(), QString("completed"));
}

/// The library keeps open what it loses while it looks, which must not stand in the way of the next write.
void TestDriveRecorder::write_afterTheDriveWasGoneWhileItWasTaken_works()
{
    BurnBench bench;
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    for (int question = 1; question <= 4; ++question) {
        bench.recorder.addFault(QString("TEST_UNIT_READY nth=%1 gone").arg(question));
        QCOMPARE(bench.write(), QString("error"));
        bench.recorder.clearFaults();
        bench.recorder.clearJournal();
        bench.recorder.insert(QString("fresh%1").arg(question));
        QVERIFY(bench.takeDrive());
        QVERIFY2(bench.write() == "completed", qPrintable(bench.description));
        bench.recorder.insert(QString("next%1").arg(question));
    }
}

void TestDriveRecorder::write_withADriveStuckNotReady_ends()
{
    BurnBench bench({.pollMs = 20,
                     .readyMs = 2000,
                     .callMs = 15'000,
                     .writeMs = 2000,
                     .closeMs = 3000,
                     .cancelMs = 30'000});
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.recorder.addFault("WRITE_10 nth=9 times=forever sense=2/04/01");
    QCOMPARE(bench.write(), QString("error"));
    QCOMPARE(bench.error, BurnErrorCode::kStalled);
    QVERIFY2(bench.description.contains("stopped answering"), qPrintable(bench.description));
}

void TestDriveRecorder::write_whoseDiscShowsNothing_isNoSuccess()
{
    BurnBench bench;
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.recorder.addFault("SYNCHRONIZE_CACHE nth=1 after pull");
    QCOMPARE(bench.write(), QString("error"));
    QVERIFY(!bench.said.contains("completed"));
}

void TestDriveRecorder::write_errors_areToldByTheTable_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<int>("sense");
    QTest::addColumn<QString>("data");
    QTest::newRow("medium") << "WRITE_10 nth=5 times=forever sense=3/0C/00" << 1005 << "[3 0C 00]";
    QTest::newRow("under-run") << "WRITE_10 nth=5 times=forever sense=3/0C/09" << 1008 << "[3 0C 09]";
    QTest::newRow("servo") << "WRITE_10 nth=5 times=forever sense=4/09/01" << 1004 << "[4 09 01]";
    QTest::newRow("calibration") << "WRITE_10 nth=1 times=forever sense=3/73/03" << 1048 << "[3 73 03]";
    QTest::newRow("cue sheet") << "SEND_CUE_SHEET sense=5/26/00" << 1023 << "[5 26 00]";
    QTest::newRow("closing") << "SYNCHRONIZE_CACHE times=forever sense=3/72/02" << 1044 << "[3 72 02]";
}

void TestDriveRecorder::write_errors_areToldByTheTable()
{
    QFETCH(QString, fault);
    BurnBench bench;
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.recorder.addFault(fault);
    QCOMPARE(bench.write(), QString("error"));
    QCOMPARE(bench.error, DVDWriterPro::kDriveError);
    QTEST(bench.sense, "sense");
    QTEST(bench.senseData, "data");
    QVERIFY(!bench.recorder.doorLocked());
}

void TestDriveRecorder::cancel_whileWriting_endsUnlocked()
{
    BurnBench bench;
    bench.addTrack(kPairsPerFrame * 6000, 1);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.recorder.addFault("WRITE_10 times=forever delay=20");
    bench.onProgress = [&bench](qint32, qint32 done) {
        if (done > 0)
            bench.writer.cancel();
    };
    QCOMPARE(bench.write(), QString("cancelled"));
    QVERIFY(!bench.recorder.doorLocked());
    bench.recorder.clearFaults();
    bench.onProgress = {};
    bench.recorder.insert("fresh");
    QCOMPARE(bench.write(), QString("completed"));
}

void TestDriveRecorder::cancel_whileClosing_isTheWholeDisc()
{
    BurnBench bench;
    bench.recorder.set("closing-ms", "2000");
    const QList<QByteArray> tracks = addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.onSaid = [&bench](const QString& text) {
        if (text == "closing disc")
            bench.writer.cancel();
    };
    QCOMPARE(bench.write(), QString("completed"));
    QCOMPARE(difference(bench.recorder, tracks), QString());
}

void TestDriveRecorder::write_whoseWayBreaks_endsUnlockedAndSaysTheDiscsState_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("words");
    QTest::newRow("a write, for good") << "WRITE_10 nth=20 times=forever transport"
                                       << "not to be used";
    QTest::newRow("a write, by the host adapter") << "WRITE_10 nth=20 times=forever host=7"
                                                  << "not to be used";
    QTest::newRow("a question while writing, for good") << "READ_BUFFER_CAPACITY errno=ENODEV"
                                                        << "does not answer any more";
    QTest::newRow("the layout") << "SEND_CUE_SHEET transport"
                                << "still blank";
    QTest::newRow("locking and unlocking") << "PREVENT_ALLOW nth=3 times=2 transport"
                                           << "";
    QTest::newRow("the fifth write, by the drive") << "WRITE_10 nth=5 sense=3/0C/00"
                                                   << "could not write track 1";
    QTest::newRow("the flush, by the drive") << "SYNCHRONIZE_CACHE sense=3/72/02"
                                             << "could not close the disc";
    QTest::newRow("the contents, by the drive") << "READ_TOC times=forever sense=3/57/00"
                                                << "could not be read back";
}

void TestDriveRecorder::write_whoseWayBreaks_endsUnlockedAndSaysTheDiscsState()
{
    QFETCH(QString, fault);
    QFETCH(QString, words);
    BurnBench bench;
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.recorder.addFault(fault);
    const QString end = bench.write();
    QVERIFY2(end == "error" || (words.isEmpty() && end == "completed"), qPrintable(end));
    QVERIFY2(bench.description.contains(words), qPrintable(bench.description));
    QTRY_VERIFY(!bench.recorder.doorLocked());
}

void TestDriveRecorder::drive_thatHangs_isNamedAndDelaysNobody()
{
    BurnBench bench;
    const DriveLedger::Entry hanging("/dev/sr0", DriveLedger::Use::Hanging);
    QElapsedTimer taken;
    taken.start();
    QVERIFY(bench.takeDrive());
    QVERIFY(bench.writer.driveText3(0).contains("does not answer"));
    addPair(bench);
    bench.configure();
    QCOMPARE(bench.write(), QString("error"));
    QCOMPARE(bench.error, BurnErrorCode::kStalled);
    QCOMPARE(bench.recorder.count("INQUIRY"), 0);
    QVERIFY2(taken.elapsed() < 10'000, qPrintable(QString("%1 ms").arg(taken.elapsed())));
}

void TestDriveRecorder::anotherDriveThatHangs_isNamedAsTheCause()
{
    BurnBench bench;
    const DriveLedger::Entry hanging("/dev/sr1", DriveLedger::Use::Hanging);
    QVERIFY(bench.takeDrive());
    addPair(bench);
    bench.configure();
    QCOMPARE(bench.write(), QString("error"));
    QCOMPARE(bench.error, BurnErrorCode::kStalled);
    QVERIFY2(bench.description.startsWith("\"/dev/sr1\" has not come back"), qPrintable(bench.description));
}

void TestDriveRecorder::drive_thatAClosedWindowAsks_isWaitedFor()
{
    BurnBench bench;
    auto asked = std::make_unique<DriveLedger::Entry>("/dev/sr0", DriveLedger::Use::Asked);
    QTimer::singleShot(700, &bench.writer, [&asked] { asked.reset(); });
    QVERIFY(bench.takeDrive());
    QVERIFY(!asked);
    QVERIFY2(!bench.writer.driveText3(0).contains("does not answer"), qPrintable(bench.writer.driveText3(0)));
    asked = std::make_unique<DriveLedger::Entry>("/dev/sr0", DriveLedger::Use::Asked);
    QTimer::singleShot(700, &bench.writer, [&asked] { asked.reset(); });
    QCOMPARE(bench.writer.discStatus(), int(DVDWriterPro::kBlankDisc));
    QVERIFY(!asked);
}

void TestDriveRecorder::drive_thatCouldNotBeAskedBefore_isWrittenTheWayItCan()
{
    BurnBench bench;
    bench.recorder.set("sao", "no");
    addPair(bench);
    auto hanging = std::make_unique<DriveLedger::Entry>("/dev/sr0", DriveLedger::Use::Hanging);
    QVERIFY(bench.takeDrive());
    hanging.reset();
    bench.configure();
    QVERIFY2(bench.write() == "completed", qPrintable(bench.description));
    QCOMPARE(bench.recorder.count("SEND_CUE_SHEET"), 0);
}

void TestDriveRecorder::write_whileAnotherDriveWrites_saysSoAndTakesACancel()
{
    BurnBench bench;
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    const LibburnSession other;
    QStringList waited;
    QObject::connect(&bench.writer, &DVDWriterPro::Waiting, &bench.writer, [&](const QString& what) {
        waited << what;
        bench.writer.cancel();
    });
    QCOMPARE(bench.write(), QString("cancelled"));
    QVERIFY2(waited.value(0).contains("other drive"), qPrintable(waited.join('/')));
    QCOMPARE(bench.recorder.count("WRITE_10"), 0);
}

void TestDriveRecorder::write_whileAnotherDriveWrites_waitsForItsEnd()
{
    BurnBench bench;
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    auto other = std::make_unique<LibburnSession>();
    QTimer::singleShot(500, &bench.writer, [&] {
        QCOMPARE(bench.recorder.count("WRITE_10"), 0);
        other.reset();
    });
    QCOMPARE(bench.write(), QString("completed"));
    QVERIFY(!other);
}

void TestDriveRecorder::destroy_whileWriting_freesTheDrive()
{
    EmulatedRecorder* kept = nullptr;
    {
        BurnBench bench;
        kept = &bench.recorder;
        bench.addTrack(kPairsPerFrame * 6000, 1);
        QVERIFY(bench.takeDrive());
        bench.configure();
        bench.recorder.addFault("WRITE_10 times=forever delay=20");
        QVERIFY(bench.writer.start());
        QTRY_VERIFY_WITH_TIMEOUT(!bench.positions.isEmpty(), 30'000);
        QVERIFY(kept->doorLocked());
    }
    QTRY_VERIFY_WITH_TIMEOUT(DriveLedger::paths().isEmpty(), 30'000);
    BurnBench next;
    QVERIFY(next.takeDrive());
    QCOMPARE(next.writer.discStatus(), DVDWriterPro::kBlankDisc);
}

void TestDriveRecorder::finish_withEject_handsTheDiscOut()
{
    BurnBench bench;
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    QCOMPARE(bench.write(), QString("completed"));
    const auto ejects = [&bench] {
        int count = 0;
        for (const QString& line : bench.recorder.journal())
            count += line.contains("START_STOP_UNIT cdb=1B") && line.contains("00000200 ");
        return count;
    };
    bench.writer.finish(false);
    QCOMPARE(ejects(), 0);
    bench.writer.finish(true);
    QTRY_VERIFY_WITH_TIMEOUT(ejects() > 0, 20'000);
}

QTEST_GUILESS_MAIN(TestDriveRecorder)
#include "tst_driverecorder.moc"
