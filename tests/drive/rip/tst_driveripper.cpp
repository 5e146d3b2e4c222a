#include "EmulatedRecorder.h"
#include "engines/rip/drive/TrackReader.h"
#include "engines/rip/makers.h"
#include "engines/rip/RipBench.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QStandardPaths>

using namespace zib;

namespace {

/// The ripper of the program on an emulated drive.
struct DriveBench : RipBench
{
    DriveBench() : RipBench(makeRipper("/nowhere")) {}

    /// Puts in a disc with sounds of these lengths.
    void insert(const QString& name, const QList<int>& frames, const QStringList& more = {"close"})
    {
        QStringList recipe;
        for (const int length : frames) {
            const QString raw = QString("%1-%2.raw").arg(name).arg(recipe.size());
            QFile file(recorder.folder() + '/' + raw);
            QVERIFY(file.open(QIODevice::WriteOnly));
            sounds << discSound(length, int(recipe.size()) + 1);
            file.write(sounds.last());
            recipe << "audio " + raw;
        }
        recorder.insert(name, recipe + more);
    }
    bool take() { return takeDisc(EmulatedRecorder::device()); }

    EmulatedRecorder recorder;
    QList<QByteArray> sounds;
};

} // namespace

/// The ripper on libcdio, over the emulated recorder.
class TestDriveRipper : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        const DriveBench bench;
        QVERIFY2(bench.recorder.isPreloaded(), "the emulated recorder is not under this process");
    }

    void disc_whenRipped_isBitExact()
    {
        DriveBench bench;
        bench.insert("album", {700, 300, 450});
        QVERIFY(bench.take());
        QCOMPARE(bench.ripper->trackCount(), 3);
        QCOMPARE(bench.ripper->maxReadSpeed(), 48);
        QCOMPARE(bench.rip({1, 2, 3}), QString("finished"));
        QCOMPARE(bench.ripper->unreadTracks(), QStringList());
        const auto content = bench.recorder.content();
        for (int track = 1; track <= 3; ++track) {
            const qint32 start = bench.ripper->trackStart(track);
            QCOMPARE(start, content->tracks[track - 1].start);
            QVERIFY2(wavSamples(bench.target(track)) ==
                         bench.recorder.frames(start, bench.ripper->trackLength(track)),
                     qPrintable(QString::number(track)));
        }
        QVERIFY(!bench.recorder.doorLocked());
    }

    void soundsOnTheDisc_areWhatWasPutIn()
    {
        DriveBench bench;
        bench.insert("album", {700, 300});
        QVERIFY(bench.take());
        QCOMPARE(bench.rip({1, 2}), QString("finished"));
        for (int track = 1; track <= 2; ++track)
            QVERIFY(wavSamples(bench.target(track)).startsWith(bench.sounds[track - 1]));
        QVERIFY(bench.sounds[0] != bench.sounds[1].left(bench.sounds[0].size()));
    }

    void events_comeInOrder_andPositionsNeverFall()
    {
        DriveBench bench;
        bench.insert("album", {700, 300, 450});
        QVERIFY(bench.take());
        QCOMPARE(bench.rip({3, 1}), QString("finished"));
        const auto bounds = [&bench](int track) {
            const qint32 start = bench.ripper->trackStart(track);
            return QString("track %1 %2 %3")
                .arg(track)
                .arg(start)
                .arg(start + bench.ripper->trackLength(track));
        };
        QCOMPARE(bench.said, (QStringList{"started", bounds(3), "track finished", bounds(1), "track finished",
                                          "finished"}));
        QCOMPARE(bench.files, (QStringList{bench.target(3), bench.target(1)}));
        qint32 last = -1;
        bool verified = false;
        for (const auto& [kind, position] : bench.positions) {
            verified = verified || kind == CDRipperX::kVerifyingProgress;
            if (kind != CDRipperX::kPositionProgress)
                continue;
            QVERIFY(position >= last || last == bench.ripper->trackStart(3) + bench.ripper->trackLength(3));
            last = position;
        }
        QCOMPARE(last, bench.ripper->trackStart(1) + bench.ripper->trackLength(1));
        QVERIFY(verified);
    }

    void disc_ofManyKinds_isToldAsItsContentsSay()
    {
        DriveBench bench;
        bench.recorder.insert("odd",
                              {"audio 400 number=5 copy", "audio 350 preemphasis", "data 300", "close"});
        QVERIFY(bench.take());
        QCOMPARE(bench.ripper->trackCount(), 3);
        QVERIFY(bench.ripper->isAudioTrack(1) && bench.ripper->isAudioTrack(2));
        QVERIFY(!bench.ripper->isAudioTrack(3));
        QVERIFY(bench.ripper->copyPermitted(1));
        QVERIFY(!bench.ripper->copyPermitted(2));
        QVERIFY(!bench.ripper->addTrack(3, bench.target(3)));
        QCOMPARE(bench.rip({1, 2}), QString("finished"));
        QCOMPARE(bench.ripper->unreadTracks(), QStringList());
        const auto content = bench.recorder.content();
        QCOMPARE(content->tracks[0].number, 5);
        for (int track = 1; track <= 2; ++track)
            QVERIFY(
                wavSamples(bench.target(track)) ==
                bench.recorder.frames(content->tracks[track - 1].start, bench.ripper->trackLength(track)));
    }

    void disc_thatBeginsWithData_givesItsSound()
    {
        DriveBench bench;
        bench.recorder.insert("mixed", {"data 600", "audio 400", "audio 500", "close"});
        QVERIFY(bench.take());
        QCOMPARE(bench.ripper->trackCount(), 3);
        QVERIFY(!bench.ripper->isAudioTrack(1));
        QCOMPARE(bench.rip({2, 3}), QString("finished"));
        QCOMPARE(bench.ripper->unreadTracks(), QStringList());
        for (int track = 2; track <= 3; ++track)
            QVERIFY(wavSamples(bench.target(track)) ==
                    bench.recorder.frames(bench.ripper->trackStart(track), bench.ripper->trackLength(track)));
    }

    void disc_withDataInASecondSession_endsItsSoundBeforeTheLeadOut()
    {
        DriveBench bench;
        bench.insert("extra", {400, 500}, {"session", "data 300", "close"});
        QVERIFY(bench.take());
        QCOMPARE(bench.ripper->trackCount(), 3);
        QVERIFY(!bench.ripper->isAudioTrack(3));
        QCOMPARE(bench.ripper->trackLength(2), 500);
        QCOMPARE(bench.rip({2}), QString("finished"));
        QCOMPARE(bench.ripper->unreadTracks(), QStringList());
        QVERIFY(wavSamples(bench.target(2)) == bench.sounds[1]);
    }

    void drive_withoutDisc_stillTellsItsSpeed()
    {
        DriveBench bench;
        bench.recorder.removeDisc();
        bench.recorder.set("read-speed", "32");
        QVERIFY(bench.ripper->deviceCount() >= 1);
        QVERIFY(bench.ripper->selectDevice(0));
        QTRY_COMPARE_WITH_TIMEOUT(bench.ripper->maxReadSpeed(), 32, 20'000);
        QVERIFY(!bench.ripper->discPresent());
        QCOMPARE(bench.ripper->driveState(), CDRipperX::kNoDisc);
        QVERIFY(!bench.ripper->start());
    }

    void disc_takenOutAndPutIn_isNoticed()
    {
        DriveBench bench;
        bench.insert("album", {700, 300});
        QVERIFY(bench.take());
        bench.recorder.removeDisc();
        QTRY_COMPARE_WITH_TIMEOUT(bench.ripper->driveState(), CDRipperX::kNoDisc, 20'000);
        QVERIFY(!bench.ripper->discPresent());
        bench.insert("other", {300, 400, 500});
        QTRY_COMPARE_WITH_TIMEOUT(bench.ripper->driveState(), CDRipperX::kDiscLoaded, 20'000);
        QCOMPARE(bench.ripper->trackCount(), 3);
    }

    void disc_changedBetweenTwoLooks_isSeenAsRemovedOnce()
    {
        DriveBench bench;
        bench.insert("album", {700, 300});
        QVERIFY(bench.take());
        bench.insert("other", {300, 400, 500});
        QList<int> states{CDRipperX::kDiscLoaded};
        const bool seen = QTest::qWaitFor(
            [&] {
                if (const int state = bench.ripper->driveState(); state != states.last())
                    states << state;
                return states.size() == 3;
            },
            20'000);
        QVERIFY(seen);
        QCOMPARE(states, (QList<int>{CDRipperX::kDiscLoaded, CDRipperX::kNoDisc, CDRipperX::kDiscLoaded}));
        QCOMPARE(bench.ripper->trackCount(), 3);
    }

    void polling_neitherWakesNorLocksTheDrive()
    {
        DriveBench bench;
        bench.insert("album", {700, 300});
        QVERIFY(bench.take());
        bench.recorder.clearJournal();
        for (int i = 0; i < 10; ++i) {
            bench.ripper->driveState();
            QTest::qWait(100);
        }
        QTRY_VERIFY_WITH_TIMEOUT(bench.recorder.count("GET_EVENT_STATUS") > 0, 20'000);
        for (const QString& line : bench.recorder.journal())
            QVERIFY2(line.contains(" GET_EVENT_STATUS ") && line.contains("door=unlocked"), qPrintable(line));
    }

    void polling_ofASlowDrive_neverKeepsTheCallerWaiting()
    {
        DriveBench bench;
        bench.insert("album", {700, 300});
        bench.recorder.addFault("MEDIA times=forever delay=2000");
        QVERIFY(bench.ripper->deviceCount() >= 1);
        QElapsedTimer time;
        time.start();
        QVERIFY(bench.ripper->selectDevice(0));
        for (int i = 0; i < 5; ++i) {
            bench.ripper->driveState();
            bench.ripper->discPresent();
        }
        QVERIFY2(time.elapsed() < 1900, qPrintable(QString::number(time.elapsed())));
        QTRY_COMPARE_WITH_TIMEOUT(bench.ripper->driveState(), CDRipperX::kDiscLoaded, 60'000);
        QCOMPARE(bench.ripper->trackCount(), 2);
    }

    void disc_thatBecomesReady_isWaitedFor()
    {
        DriveBench bench;
        bench.insert("album", {700, 300});
        bench.recorder.addFault("MEDIA times=6 sense=2/04/01");
        QVERIFY(bench.ripper->deviceCount() >= 1);
        QVERIFY(bench.ripper->selectDevice(0));
        QTRY_COMPARE_WITH_TIMEOUT(bench.ripper->driveState(), CDRipperX::kDiscLoaded, 60'000);
        QCOMPARE(bench.ripper->trackCount(), 2);
    }

    void drive_thatCannotBeHad_isListedAndSaid_data()
    {
        QTest::addColumn<QString>("open");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("words");
        QTest::newRow("held by another program")
            << "busy" << CDRipperX::kHeldByAnother << "used by another program";
        QTest::newRow("no permission") << "denied" << CDRipperX::kNoPermission << "no permission";
    }
    void drive_thatCannotBeHad_isListedAndSaid()
    {
        QFETCH(QString, open);
        DriveBench bench;
        bench.insert("album", {700, 300});
        bench.recorder.set("open", open);
        QCOMPARE(bench.ripper->deviceCount(), 1);
        QFETCH(QString, words);
        QTRY_VERIFY_WITH_TIMEOUT(bench.ripper->deviceText3(0).endsWith('(' + words + ')'), 20'000);
        QTRY_VERIFY_WITH_TIMEOUT(!bench.ripper->selectDevice(0), 20'000);
        QTEST(bench.ripper->status(), "status");
        QCOMPARE(bench.ripper->driveState(), CDRipperX::kNoDisc);
        QVERIFY(!bench.ripper->start());
        bench.recorder.set("open", "open");
        QTRY_COMPARE_WITH_TIMEOUT(bench.ripper->driveState(), CDRipperX::kDiscLoaded, 20'000);
        QVERIFY(bench.ripper->selectDevice(0));
        QCOMPARE(bench.ripper->trackCount(), 2);
    }

    void drive_thatIsMissing_isNotListed()
    {
        DriveBench bench;
        bench.recorder.set("open", "missing");
        QCOMPARE(bench.ripper->deviceCount(), 0);
        QVERIFY(!bench.ripper->selectDevice(0));
        QCOMPARE(bench.ripper->status(), CDRipperX::kNoSuchDevice);
    }

    void drive_isNamedByItself()
    {
        DriveBench bench;
        QCOMPARE(bench.ripper->deviceCount(), 1);
        QCOMPARE(bench.ripper->deviceText1(0), QString("/dev/sr0"));
        QVERIFY(!bench.ripper->deviceText2(0).isEmpty());
    }

    void speed_whenChosen_isToldToTheDrive()
    {
        DriveBench bench;
        bench.insert("album", {300, 300});
        QVERIFY(bench.take());
        bench.ripper->setReadSpeed(8);
        QCOMPARE(bench.rip({1}), QString("finished"));
        QCOMPARE(bench.recorder.count("SET_CD_SPEED"), 1);
        bench.ripper->setReadSpeed(0);
        QCOMPARE(bench.rip({1}), QString("finished"));
        QCOMPARE(bench.recorder.count("SET_CD_SPEED"), 2);
    }

    void faults_thatReadingAgainCures_leaveNoTrace_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::newRow("noise once") << "READ_CD lba=400-403 noise";
        QTest::newRow("noise now and then") << "READ_CD lba=500 times=3 noise";
        QTest::newRow("jitter") << "READ_CD nth=5 times=4 lba=0-900 jitter=37";
        QTest::newRow("errors at first") << "READ_CD lba=450 times=3 sense=3/11/05";
        QTest::newRow("slow") << "READ_CD lba=450 times=2 delay=900";
        QTest::newRow("not ready for a while") << "READ_CD nth=4 times=3 sense=2/04/01";
        QTest::newRow("unit attention") << "READ_CD nth=4 times=1 sense=6/29/00";
        QTest::newRow("transport") << "READ_CD nth=4 times=2 transport";
    }
    void faults_thatReadingAgainCures_leaveNoTrace()
    {
        QFETCH(QString, fault);
        DriveBench bench;
        bench.insert("album", {900, 300});
        QVERIFY(bench.take());
        bench.recorder.addFault(fault);
        QCOMPARE(bench.rip({1}), QString("finished"));
        QCOMPARE(bench.ripper->unreadTracks(), QStringList());
        QVERIFY(wavSamples(bench.target(1)) ==
                bench.recorder.frames(bench.ripper->trackStart(1), bench.ripper->trackLength(1)));
    }

    void sector_thatCannotBeRead_costsItsTrackOnly()
    {
        DriveBench bench;
        bench.insert("album", {400, 500, 350});
        QVERIFY(bench.take());
        const qint32 bad = bench.ripper->trackStart(2) + 2 * 75 + 33;
        bench.recorder.addFault(QString("READ_CD lba=%1 times=forever sense=3/11/05").arg(bad));
        QCOMPARE(bench.rip({1, 2, 3}), QString("finished"));
        QCOMPARE(bench.ripper->unreadTracks(), QStringList("Track 2 could not be read at 00:02:33"));
        QCOMPARE(bench.left(), (QStringList{"Track1.wav", "Track3.wav"}));
        QCOMPARE(bench.said.count("track finished"), 3);
        for (const int track : {1, 3})
            QVERIFY(wavSamples(bench.target(track)) ==
                    bench.recorder.frames(bench.ripper->trackStart(track), bench.ripper->trackLength(track)));
    }

    void sector_thatNeverReadsTheSame_isNotGuessed()
    {
        DriveBench bench;
        bench.insert("album", {400, 500});
        QVERIFY(bench.take());
        const qint32 bad = bench.ripper->trackStart(2) + 200;
        bench.recorder.addFault(QString("READ_CD lba=%1-%2 times=forever noise").arg(bad).arg(bad + 3));
        QCOMPARE(bench.rip({2}), QString("finished"));
        QCOMPARE(bench.ripper->unreadTracks().size(), 1);
        QCOMPARE(bench.left(), QStringList());
    }

    void track_thatFails_leavesTheOldFileOfItsName()
    {
        DriveBench bench;
        bench.insert("album", {400, 500});
        QFile old(bench.target(1));
        QVERIFY(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
        old.close();
        QVERIFY(bench.take());
        bench.recorder.addFault("READ_CD lba=200 times=forever sense=3/11/05");
        QCOMPARE(bench.rip({1}), QString("finished"));
        QCOMPARE(fileContent(bench.target(1)), QByteArray("old"));
        bench.recorder.clearFaults();
        QCOMPARE(bench.rip({1}), QString("finished"));
        QCOMPARE(bench.ripper->unreadTracks(), QStringList());
        QCOMPARE(wavSamples(bench.target(1)).size(), bench.ripper->trackLength(1) * 2352);
    }

    void drive_thatFailsForGood_endsEveryTrack_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QString>("words");
        QTest::newRow("disc pulled") << "READ_CD nth=8 pull"
                                     << "the disc was taken out";
        QTest::newRow("no medium") << "READ_CD nth=8 times=forever sense=2/3A/00"
                                   << "the disc was taken out";
        QTest::newRow("another disc") << "READ_CD nth=8 times=forever sense=6/28/00"
                                      << "the disc was changed";
        QTest::newRow("unplugged") << "READ_CD nth=8 gone"
                                   << "the drive does not answer any more";
    }
    void drive_thatFailsForGood_endsEveryTrack()
    {
        QFETCH(QString, fault);
        QFETCH(QString, words);
        DriveBench bench;
        bench.insert("album", {900, 500});
        QVERIFY(bench.take());
        bench.recorder.addFault(fault);
        QCOMPARE(bench.rip({1, 2}), QString("finished"));
        const QStringList unread = bench.ripper->unreadTracks();
        QCOMPARE(unread.size(), 2);
        for (const QString& line : unread)
            QVERIFY2(line.endsWith(words), qPrintable(line));
        QCOMPARE(bench.left(), QStringList());
        bench.recorder.clearFaults();
        QTRY_COMPARE_WITH_TIMEOUT(bench.ripper->driveState(), CDRipperX::kDiscLoaded, 60'000);
        QVERIFY(!bench.recorder.doorLocked());
    }

    void abort_whileReading_endsWithinTwoSecondsAndLeavesNothing_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::newRow("reading") << "READ_CD times=forever delay=20";
        QTest::newRow("in a drive that hangs") << "READ_CD nth=6 times=forever delay=5000";
        QTest::newRow("at a bad place") << "READ_CD lba=100-900 times=forever sense=3/11/05";
    }
    void abort_whileReading_endsWithinTwoSecondsAndLeavesNothing()
    {
        QFETCH(QString, fault);
        DriveBench bench;
        bench.insert("album", {3000, 500});
        QVERIFY(bench.take());
        bench.recorder.addFault(fault);
        bench.ripper->addTrack(1, bench.target(1));
        QVERIFY(bench.ripper->start());
        QTRY_VERIFY_WITH_TIMEOUT(bench.recorder.count("READ_CD") >= 5, 60'000);
        QVERIFY(!bench.left().isEmpty());
        QCOMPARE(bench.ripper->driveState(), CDRipperX::kPlaying);
        QElapsedTimer time;
        time.start();
        bench.ripper->abort();
        QVERIFY(time.elapsed() < 4000);
        QTRY_COMPARE_WITH_TIMEOUT(bench.left(), QStringList(), 60'000);
        QVERIFY2(time.elapsed() < 4500,
                 qPrintable(QString::number(time.elapsed()))); // 1 s on a machine at rest
        QTest::qWait(200);
        QVERIFY(!bench.ended());
        QVERIFY(!bench.said.contains("track finished"));
    }

    void destroy_whileTheDriveHangs_endsInTimeAndLeavesNothing()
    {
        DriveBench bench;
        bench.insert("album", {3000, 500});
        QVERIFY(bench.take());
        bench.recorder.addFault("READ_CD nth=6 times=forever delay=5000");
        bench.ripper->addTrack(1, bench.target(1));
        QVERIFY(bench.ripper->start());
        QTRY_VERIFY_WITH_TIMEOUT(!bench.left().isEmpty(), 60'000);
        QElapsedTimer time;
        time.start();
        bench.ripper.reset();
        QVERIFY2(time.elapsed() < 2000, qPrintable(QString::number(time.elapsed()))); // 80 ms at rest
        QTRY_COMPARE_WITH_TIMEOUT(bench.left(), QStringList(), 20'000);
    }

    void drive_whileReading_isHeldAgainstOthers()
    {
        DriveBench bench;
        bench.insert("album", {3000, 500});
        QVERIFY(bench.take());
        bench.recorder.addFault("READ_CD times=forever delay=30");
        bench.ripper->addTrack(1, bench.target(1));
        QVERIFY(bench.ripper->start());
        QTRY_VERIFY_WITH_TIMEOUT(bench.recorder.count("READ_CD") >= 2, 60'000);
        auto other = makeRipper("/nowhere");
        QCOMPARE(other->deviceCount(), 1);
        QTRY_VERIFY_WITH_TIMEOUT(other->deviceText3(0).endsWith(" (used by another program)"), 20'000);
        QTRY_VERIFY_WITH_TIMEOUT(!other->selectDevice(0), 20'000);
        QCOMPARE(other->status(), CDRipperX::kHeldByAnother);
        bench.ripper->abort();
        bool told = false;
        connect(other.get(), &CDRipperX::DevicesChanged, this, [&told] { told = true; });
        QTRY_VERIFY_WITH_TIMEOUT(other->driveState() == CDRipperX::kDiscLoaded && told, 20'000);
        QVERIFY2(!other->deviceText3(0).contains('('), qPrintable(other->deviceText3(0)));
    }

    void drive_heldByAnotherProgram_isFreeAgainUnasked()
    {
        DriveBench bench;
        bench.insert("album", {400, 500});
        bench.recorder.set("open", "busy");
        QCOMPARE(bench.ripper->deviceCount(), 1);
        QTRY_VERIFY_WITH_TIMEOUT(bench.ripper->deviceText3(0).endsWith(" (used by another program)"), 20'000);
        QVERIFY(bench.ripper->deviceHint(0).endsWith(": used by another program"));
        bench.recorder.set("open", "open");
        QTRY_VERIFY_WITH_TIMEOUT(!bench.ripper->deviceText3(0).contains('('), 20'000);
        QCOMPARE(bench.ripper->deviceHint(0), EmulatedRecorder::device());
    }

    void drive_thatRefusesToReadSound_isToldAsThat_data()
    {
        QTest::addColumn<QString>("sense");
        QTest::newRow("does not know the command") << "5/20/00";
        QTest::newRow("does not know the form") << "5/24/00";
        QTest::newRow("not for this track") << "5/64/00";
    }
    void drive_thatRefusesToReadSound_isToldAsThat()
    {
        QFETCH(QString, sense);
        DriveBench bench;
        bench.insert("album", {400, 500});
        QVERIFY(bench.take());
        bench.recorder.addFault("READ_CD times=forever sense=" + sense);
        QCOMPARE(bench.rip({1, 2}), QString("finished"));
        QCOMPARE(bench.ripper->unreadTracks(),
                 (QStringList{"Track 1 could not be read at 00:00:00: the drive refuses to read sound",
                              "Track 2 could not be read at 00:00:00: the drive refuses to read sound"}));
        QCOMPARE(bench.left(), QStringList());
        QTRY_VERIFY_WITH_TIMEOUT(bench.ripper->deviceText3(0).endsWith(" (refuses to read sound)"), 20'000);
        bench.recorder.removeDisc(); // the next one may be of another kind
        QTRY_COMPARE_WITH_TIMEOUT(bench.ripper->driveState(), CDRipperX::kNoDisc, 20'000);
        QVERIFY(!bench.ripper->deviceText3(0).contains('('));
        bench.insert("album", {400, 500});
        QTRY_COMPARE_WITH_TIMEOUT(bench.ripper->driveState(), CDRipperX::kDiscLoaded, 20'000);
        bench.recorder.clearFaults();
        QCOMPARE(bench.rip({1, 2}), QString("finished"));
        QCOMPARE(bench.ripper->unreadTracks(), QStringList());
        QTRY_VERIFY_WITH_TIMEOUT(!bench.ripper->deviceText3(0).contains('('), 20'000);
    }

    void drive_takenByAnotherMeanwhile_isSaid()
    {
        DriveBench bench;
        bench.insert("album", {400, 500});
        QVERIFY(bench.take());
        bench.recorder.set("open", "busy");
        QCOMPARE(bench.rip({1, 2}), QString("finished"));
        QCOMPARE(bench.ripper->unreadTracks(),
                 (QStringList{"Track 1 could not be read at 00:00:00: another program uses the drive",
                              "Track 2 could not be read at 00:00:00: another program uses the drive"}));
        QCOMPARE(bench.recorder.count("READ_CD"), 0);
        QCOMPARE(bench.left(), QStringList());
    }

    void frame_thatTakesForEver_isGivenUp()
    {
        DriveBench bench;
        bench.insert("album", {400, 300});
        const auto disc = CdioDisc::openDrive(EmulatedRecorder::device());
        QVERIFY(bool(disc));
        const TocTrack track = disc.value()->tracks().value(0);
        bench.recorder.addFault("READ_CD lba=200 times=forever delay=150");
        std::atomic<bool> stopped = false;
        TrackReader reader(*disc.value(), stopped, {}, 100);
        QVERIFY(bool(reader.open()));
        reader.begin(track);
        int frames = 0;
        Outcome<const char*> frame = reader.next();
        for (; frame && frames < track.frames; frame = reader.next())
            ++frames;
        QVERIFY(!frame);
        QCOMPARE(frame.error().kind, Failure::Kind::UnreadableFile);
        QVERIFY2(frames <= 200, qPrintable(QString::number(frames)));
    }

    void drive_thatHangs_isNoHindranceToAnother()
    {
        DriveBench bench;
        bench.insert("album", {400, 300});
        QTemporaryDir images;
        QFile sheet(images.filePath("disc.cue"));
        QFile binary(images.filePath("disc.bin"));
        QVERIFY(sheet.open(QIODevice::WriteOnly) && binary.open(QIODevice::WriteOnly));
        sheet.write("FILE \"disc.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n");
        binary.write(discSound(300, 1));
        sheet.close();
        binary.close();
        bench.ripper = makeRipper(images.path());
        QCOMPARE(bench.ripper->deviceCount(), 2);
        bench.recorder.addFault("ANY times=forever delay=3000");
        QElapsedTimer time;
        time.start();
        bench.ripper->selectDevice(0);
        bench.ripper->selectDevice(1);
        QVERIFY2(time.elapsed() < 2500, qPrintable(QString::number(time.elapsed())));
        QTRY_COMPARE_WITH_TIMEOUT(bench.ripper->driveState(), CDRipperX::kDiscLoaded, 20'000);
        QCOMPARE(bench.ripper->trackCount(), 1);
    }

    void cdparanoia_onTheSameDisc_givesTheSameBytes()
    {
        const QString cdparanoia = QStandardPaths::findExecutable("cdparanoia");
        if (cdparanoia.isEmpty())
            QSKIP("cdparanoia is not installed");
        DriveBench bench;
        bench.insert("album", {700, 320, 450}, {"session", "data 300", "close"});
        QVERIFY(bench.take());
        QCOMPARE(bench.rip({1, 2, 3}), QString("finished"));
        for (int track = 1; track <= 3; ++track) {
            const QString theirs = bench.folder.filePath(QString("theirs%1.wav").arg(track));
            QProcess run;
            run.setProcessChannelMode(QProcess::MergedChannels);
            run.start(cdparanoia, {"-d", "/dev/sr0", "-w", QString::number(track), theirs});
            QVERIFY(run.waitForFinished(120'000));
            QVERIFY2(run.exitCode() == 0, run.readAll());
            QVERIFY(wavSamples(bench.target(track)) == fileContent(theirs).mid(44));
        }
    }
};

QTEST_GUILESS_MAIN(TestDriveRipper)
#include "tst_driveripper.moc"
