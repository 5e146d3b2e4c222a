#include "drive/burn/DiscTruth.h"

using namespace zib;

// A drive writes in the mode that was asked for, or not at all: whatever becomes of the commands that set the
// mode, at whichever of them, with session-at-once and track-at-once, in test mode and in earnest.

namespace {

// So many mode pages are sent, the one of the library's first look at the drive included.
constexpr int kSelectsOfASession = 3;
constexpr int kSelectsOfTwoTracks = 4;

/// What a real disc may be after a write that was refused its mode: untouched.
QString harm(const BurnBench& bench)
{
    if (!bench.recorder.content()->blank)
        return "the disc is not blank";
    return bench.recorder.doorLocked() ? "the door is locked" : QString();
}

} // namespace

class TestWriteMode : public QObject
{
    Q_OBJECT
private slots:
    void testMode_whateverBecomesOfTheModePage_burnsNothing_data();
    void testMode_whateverBecomesOfTheModePage_burnsNothing();
    void realMode_whateverBecomesOfTheModePage_isExactOrBlank_data();
    void realMode_whateverBecomesOfTheModePage_isExactOrBlank();
    void testMode_onADriveThatDropsTheBit_isRefusedInWords_data();
    void testMode_onADriveThatDropsTheBit_isRefusedInWords();
    void modePage_refused_isToldWithTheDrivesOwnSense();
    void modePage_thatNeedsASecondTry_isNoError();
    void speedDefault_sendsNoSpeedCommand();
    void disc_thatIsNotBlankAfterATest_isTold();
};

void TestWriteMode::testMode_whateverBecomesOfTheModePage_burnsNothing_data()
{
    QTest::addColumn<bool>("trackAtOnce");
    QTest::addColumn<QString>("fault");
    const auto add = [](bool trackAtOnce, const QString& rule) {
        QTest::addRow("%s %s", trackAtOnce ? "TAO" : "SAO", qPrintable(rule)) << trackAtOnce << rule;
    };
    for (const bool trackAtOnce : {false, true}) {
        add(trackAtOnce, "MODE_SELECT_10 nth=2 times=forever ignored");
        for (int nth = 2; nth <= (trackAtOnce ? kSelectsOfTwoTracks : kSelectsOfASession); ++nth)
            add(trackAtOnce, QString("MODE_SELECT_10 nth=%1 times=1 sense=5/26/00").arg(nth));
    }
    add(true, "MODE_SENSE_10 nth=6 times=forever sense=5/24/00");
}

void TestWriteMode::testMode_whateverBecomesOfTheModePage_burnsNothing()
{
    QFETCH(bool, trackAtOnce);
    QFETCH(QString, fault);
    BurnBench bench;
    bench.recorder.set("sao", trackAtOnce ? "no" : "yes");
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.writer.setTestWrite(true);
    bench.recorder.addFault(fault);
    const QString end = bench.write();
    QVERIFY2(end == "completed" || end == "error", qPrintable(end));
    QVERIFY(end == "completed" || !bench.description.isEmpty());
    QCOMPARE(harm(bench), QString());
}

void TestWriteMode::realMode_whateverBecomesOfTheModePage_isExactOrBlank_data()
{
    QTest::addColumn<bool>("trackAtOnce");
    QTest::addColumn<QString>("fault");
    QTest::newRow("SAO, the library's refused") << false << "MODE_SELECT_10 nth=3 times=1 sense=5/26/00";
    QTest::newRow("TAO, all ignored") << true << "MODE_SELECT_10 nth=2 times=forever ignored";
    QTest::newRow("TAO, the second track's refused") << true << "MODE_SELECT_10 nth=4 times=1 sense=5/26/00";
}

void TestWriteMode::realMode_whateverBecomesOfTheModePage_isExactOrBlank()
{
    QFETCH(bool, trackAtOnce);
    QFETCH(QString, fault);
    BurnBench bench;
    bench.recorder.set("sao", trackAtOnce ? "no" : "yes");
    const QList<QByteArray> tracks = addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.recorder.addFault(fault);
    const QString end = bench.write();
    if (end == "completed") {
        const int gap = trackAtOnce ? bench.recorder.content()->tracks[0].start + 150 : 150;
        QCOMPARE(difference(bench.recorder, tracks, gap), QString());
        QVERIFY(!bench.recorder.doorLocked());
        return;
    }
    QCOMPARE(end, QString("error"));
    QCOMPARE(harm(bench), QString());
}

void TestWriteMode::testMode_onADriveThatDropsTheBit_isRefusedInWords_data()
{
    QTest::addColumn<QString>("sao");
    QTest::newRow("session at once") << "yes";
    QTest::newRow("track at once") << "no";
}

void TestWriteMode::testMode_onADriveThatDropsTheBit_isRefusedInWords()
{
    QFETCH(QString, sao);
    BurnBench bench;
    bench.recorder.set("sao", sao);
    bench.recorder.set("test-bit", "dropped");
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.writer.setTestWrite(true);
    QCOMPARE(bench.write(), QString("error"));
    QVERIFY2(bench.description.contains("only a test was asked for"), qPrintable(bench.description));
    QCOMPARE(bench.recorder.count("WRITE_10"), 0);
    QCOMPARE(harm(bench), QString());
}

void TestWriteMode::modePage_refused_isToldWithTheDrivesOwnSense()
{
    BurnBench bench;
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.writer.setTestWrite(true);
    bench.recorder.addFault("MODE_SELECT_10 times=forever sense=5/26/02");
    QCOMPARE(bench.write(), QString("error"));
    QCOMPARE(bench.error, DVDWriterPro::kDriveError);
    QCOMPARE(bench.sense, 1025);
    QCOMPARE(bench.senseData, QString("[5 26 02]"));
    QVERIFY2(bench.description.contains("test mode"), qPrintable(bench.description));
    QCOMPARE(bench.recorder.count("WRITE_10"), 0);
}

void TestWriteMode::modePage_thatNeedsASecondTry_isNoError()
{
    BurnBench bench;
    const QList<QByteArray> tracks = addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.recorder.addFault("MODE_SELECT_10 sense=6/2A/00");
    QCOMPARE(bench.write(), QString("completed"));
    QCOMPARE(difference(bench.recorder, tracks), QString());
}

void TestWriteMode::speedDefault_sendsNoSpeedCommand()
{
    BurnBench bench;
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.recorder.clearJournal();
    QCOMPARE(bench.write(), QString("completed"));
    QCOMPARE(bench.recorder.count("SET_CD_SPEED"), 0);
    QCOMPARE(bench.recorder.count("SET_STREAMING"), 0);
}

void TestWriteMode::disc_thatIsNotBlankAfterATest_isTold()
{
    BurnBench bench;
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.writer.setTestWrite(true);
    bench.onSaid = [&](const QString& text) {
        if (text == "reading 2")
            bench.recorder.insert("used", {"audio 400", "close"});
    };
    bench.recorder.addFault("WRITE_10 times=forever delay=20");
    QCOMPARE(bench.write(), QString("error"));
}

QTEST_GUILESS_MAIN(TestWriteMode)
#include "tst_writemode.moc"
