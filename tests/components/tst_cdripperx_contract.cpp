#include "engines/rip/RipBench.h"
#include "engines/rip/makers.h"
#include "fakes/FakeCDRipperX.h"

#include <QThread>

using namespace zib;

namespace {

/// A ripper with, as its last drive, a disc of sound, sound, data and sound.
using Make = std::function<std::unique_ptr<CDRipperX>(const QString& folder)>;
constexpr int kTracks = 4;
constexpr int kDataTrack = 3;

std::unique_ptr<CDRipperX> makeFake(const QString&)
{
    auto fake = std::make_unique<FakeCDRipperX>();
    fake->readers = {FakeReader{
        .path = "disc", .tracks = {{.frames = 400}, {.frames = 300}, {.frames = 350, .audio = false}, {}}}};
    fake->plays = true;
    return fake;
}

std::unique_ptr<CDRipperX> makeEngine(const QString& folder)
{
    QDir().mkpath(folder);
    QFile sheet(folder + "/disc.cue");
    QFile binary(folder + "/disc.bin");
    if (sheet.open(QIODevice::WriteOnly))
        sheet.write("FILE \"disc.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n"
                    "  TRACK 02 AUDIO\n    INDEX 01 00:05:25\n  TRACK 03 MODE1/2352\n    INDEX 01 00:09:25\n"
                    "  TRACK 04 AUDIO\n    INDEX 01 00:14:00\n");
    if (binary.open(QIODevice::WriteOnly))
        binary.write(discSound(1350, 5));
    return makeRipper(folder);
}

} // namespace
Q_DECLARE_METATYPE(Make)

/// What every ripper does, the fake of the window tests and the real one on a disc image alike.
class TestCdRipperXContract : public QObject
{
    Q_OBJECT
private slots:
    void numbers_ofStatesKindsAndReasons_areThoseOfTheComponent()
    {
        QCOMPARE(
            (QList<int>{CDRipperX::kPlaying, CDRipperX::kPaused, CDRipperX::kNoDisc, CDRipperX::kDiscLoaded}),
            (QList<int>{0, 1, 2, 4}));
        QCOMPARE((QList<int>{CDRipperX::kReadingProgress, CDRipperX::kVerifyingProgress,
                             CDRipperX::kRepairingProgress, CDRipperX::kSkippingProgress,
                             CDRipperX::kPositionProgress, CDRipperX::kReadErrorProgress}),
                 (QList<int>{0, 1, 2, 6, 7, 12}));
        QCOMPARE((QList<int>{CDRipperX::kReady, CDRipperX::kNoSuchDevice, CDRipperX::kNoPermission,
                             CDRipperX::kHeldByAnother, CDRipperX::kExtracting, CDRipperX::kNothingToDo}),
                 (QList<int>{0, 1, 2, 3, 4, 5}));
    }
    void drives_always_haveNames_data() { makers(); }
    void drives_always_haveNames()
    {
        const auto bench = made();
        const int count = bench->ripper->deviceCount();
        QVERIFY(count >= 1);
        for (int i = 0; i < count; ++i)
            QVERIFY(!bench->ripper->deviceText1(i).isEmpty() && !bench->ripper->deviceText2(i).isEmpty());
        QCOMPARE(bench->ripper->deviceText1(count), QString());
    }

    void nothing_beforeADriveIsSelected_isKnown_data() { makers(); }
    void nothing_beforeADriveIsSelected_isKnown()
    {
        const auto bench = made();
        QVERIFY(!bench->ripper->discPresent());
        QCOMPARE(bench->ripper->trackCount(), 0);
        QCOMPARE(bench->ripper->maxReadSpeed(), 0);
        QCOMPARE(bench->ripper->driveState(), CDRipperX::kNoDisc);
        QVERIFY(!bench->ripper->addTrack(1, bench->target(1)));
        QVERIFY(!bench->ripper->start());
        bench->ripper->abort();
    }

    void selectDevice_outOfRange_isRefused_data() { makers(); }
    void selectDevice_outOfRange_isRefused()
    {
        const auto bench = made();
        const int count = bench->ripper->deviceCount();
        QVERIFY(!bench->ripper->selectDevice(-1));
        QVERIFY(!bench->ripper->selectDevice(count));
        QVERIFY(bench->ripper->status() != CDRipperX::kReady);
        QVERIFY(bench->ripper->selectDevice(count - 1));
        QCOMPARE(bench->ripper->status(), CDRipperX::kReady);
    }

    void tracks_follow_eachOther_data() { makers(); }
    void tracks_follow_eachOther()
    {
        const auto bench = made();
        QVERIFY(bench->takeDisc("disc"));
        CDRipperX& ripper = *bench->ripper;
        QVERIFY(ripper.discPresent());
        QCOMPARE(ripper.trackCount(), kTracks);
        QVERIFY(!ripper.discText().isEmpty());
        for (int track = 1; track <= kTracks; ++track) {
            QVERIFY(ripper.trackLength(track) >= 300);
            QCOMPARE(ripper.isAudioTrack(track), track != kDataTrack);
            if (track > 1)
                QCOMPARE(ripper.trackStart(track),
                         ripper.trackStart(track - 1) + ripper.trackLength(track - 1));
        }
        QCOMPARE(ripper.trackLength(0), 0);
        QCOMPARE(ripper.trackLength(kTracks + 1), 0);
        QVERIFY(!ripper.isAudioTrack(kTracks + 1));
        QCOMPARE(ripper.timeText(4500 + 75 + 3), QString("01:01:03"));
    }

    void addTrack_ofWhatCannotBeCopied_isRefused_data() { makers(); }
    void addTrack_ofWhatCannotBeCopied_isRefused()
    {
        const auto bench = made();
        QVERIFY(bench->takeDisc("disc"));
        QVERIFY(!bench->ripper->addTrack(kDataTrack, bench->target(3)));
        QVERIFY(!bench->ripper->addTrack(0, bench->target(1)));
        QVERIFY(!bench->ripper->addTrack(kTracks + 1, bench->target(5)));
        QVERIFY(!bench->ripper->addTrack(1, "Track1.wav"));
        QVERIFY(!bench->ripper->start());
        QVERIFY(bench->said.isEmpty());
    }

    void extraction_tellsEachTrackInOrder_andLeavesItsFile_data() { makers(); }
    void extraction_tellsEachTrackInOrder_andLeavesItsFile()
    {
        const auto bench = made();
        QVERIFY(bench->takeDisc("disc"));
        bool otherThread = false;
        bench->onProgress = [&](int, qint32) {
            otherThread = otherThread || QThread::currentThread() != bench->ripper->thread();
        };
        QCOMPARE(bench->rip({2, 4}), QString("finished"));
        const auto line = [&bench](int track) {
            const qint32 start = bench->ripper->trackStart(track);
            return QString("track %1 %2 %3")
                .arg(track)
                .arg(start)
                .arg(start + bench->ripper->trackLength(track));
        };
        QCOMPARE(bench->said,
                 (QStringList{"started", line(2), "track finished", line(4), "track finished", "finished"}));
        QCOMPARE(bench->files, (QStringList{bench->target(2), bench->target(4)}));
        QCOMPARE(bench->ripper->unreadTracks(), QStringList());
        QVERIFY(!otherThread);
        for (const int track : {2, 4})
            QCOMPARE(QFileInfo(bench->target(track)).size(),
                     44 + 2352 * qint64{bench->ripper->trackLength(track)});
        qint32 last = -1;
        for (const auto& [kind, position] : bench->positions)
            if (kind == CDRipperX::kPositionProgress)
                QVERIFY(position >= std::exchange(last, position));
        QCOMPARE(last, bench->ripper->trackStart(4) + bench->ripper->trackLength(4));
        QTRY_COMPARE_WITH_TIMEOUT(bench->ripper->driveState(), CDRipperX::kDiscLoaded, 20'000);
    }

    void start_whileRunning_isRefused_data() { makers(); }
    void start_whileRunning_isRefused()
    {
        const auto bench = made();
        QVERIFY(bench->takeDisc("disc"));
        QVERIFY(bench->ripper->addTrack(1, bench->target(1)));
        QVERIFY(bench->ripper->start());
        QVERIFY(!bench->ripper->start());
        QVERIFY(!bench->ripper->selectDevice(bench->ripper->deviceCount() - 1));
        QCOMPARE(bench->ripper->driveState(), CDRipperX::kPlaying);
        QTRY_VERIFY_WITH_TIMEOUT(bench->ended(), 60'000);
        QCOMPARE(bench->said.count("started"), 1);
    }

    void abort_endsWithoutFurtherEvents_data() { makers(); }
    void abort_endsWithoutFurtherEvents()
    {
        const auto bench = made();
        QVERIFY(bench->takeDisc("disc"));
        QVERIFY(bench->ripper->addTrack(1, bench->target(1)));
        QVERIFY(bench->ripper->start());
        bench->ripper->abort();
        QTest::qWait(300);
        QCOMPARE(bench->said, QStringList());
        QTRY_COMPARE_WITH_TIMEOUT(bench->left(), QStringList(),
                                  60'000); // what is flushed just now ends first
        QCOMPARE(bench->rip({1}), QString("finished"));
    }

    void clearQueue_forgetsTheTracks_data() { makers(); }
    void clearQueue_forgetsTheTracks()
    {
        const auto bench = made();
        QVERIFY(bench->takeDisc("disc"));
        QVERIFY(bench->ripper->addTrack(1, bench->target(1)));
        bench->ripper->clearQueue();
        QVERIFY(!bench->ripper->start());
        QCOMPARE(bench->rip({2}), QString("finished"));
        QCOMPARE(bench->left(), QStringList("Track2.wav"));
    }

private:
    static void makers()
    {
        QTest::addColumn<Make>("make");
        QTest::newRow("fake") << Make(makeFake);
        QTest::newRow("engine") << Make(makeEngine);
    }
    std::unique_ptr<RipBench> made()
    {
        const Make make = *static_cast<Make*>(QTest::qData("make", qMetaTypeId<Make>()));
        m_images = std::make_unique<QTemporaryDir>();
        return std::make_unique<RipBench>(make(m_images->path()));
    }

    std::unique_ptr<QTemporaryDir> m_images;
};

QTEST_GUILESS_MAIN(TestCdRipperXContract)
#include "tst_cdripperx_contract.moc"
