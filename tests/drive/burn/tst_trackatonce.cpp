#include "drive/burn/DiscTruth.h"

using namespace zib;

/// Discs that are written track by track: what fails between the tracks is told by its own name, with its own
/// sense data and the track that it befell.
class TestTrackAtOnce : public QObject
{
    Q_OBJECT
private slots:
    void failures_areToldAsWhatTheyAre_data();
    void failures_areToldAsWhatTheyAre();
    void place_inAnAnswerCutShort_isTakenWhenItStandsThere();
};

void TestTrackAtOnce::failures_areToldAsWhatTheyAre_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("words");
    QTest::addColumn<QString>("senseData");
    QTest::addColumn<QString>("disc");
    const auto row = [](const char* fault, const char* words, const char* senseData, const char* disc) {
        QTest::newRow(fault) << fault << words << senseData << disc;
    };
    const char* blank = "The disc is still blank";
    const char* begun = "The disc was begun and is not to be used.";
    // The first two times it is asked before anything is written.
    row("READ_TRACK_INFORMATION nth=3 sense=4/44/00",
        "did not tell where track 1 is to begin. Switch the drive off and on again, or try another drive.",
        "[4 44 00]", blank);
    row("READ_TRACK_INFORMATION nth=4 sense=5/24/00",
        "did not tell where track 2 is to begin. Try another disc, or another drive.", "[5 24 00]", begun);
    row("READ_TRACK_INFORMATION nth=4 errno=EIO", "did not tell where track 2 is to begin", "", begun);
    row("SYNCHRONIZE_CACHE nth=2 sense=3/0C/00",
        "could not finish track 2. Try a disc of another make, or a lower speed.", "[3 0C 00]", begun);
    row("SYNCHRONIZE_CACHE nth=2 errno=EIO", "could not finish track 2", "", begun);
    row("CLOSE_TRACK_SESSION sense=3/72/00", "could not close the disc", "[3 72 00]", begun);
    row("CLOSE_TRACK_SESSION host=7", "could not close the disc", "", begun);
}

void TestTrackAtOnce::failures_areToldAsWhatTheyAre()
{
    QFETCH(QString, fault);
    QFETCH(QString, words);
    QFETCH(QString, disc);
    BurnBench bench;
    bench.recorder.set("sao", "no");
    for (int n = 1; n <= 3; ++n)
        bench.addTrack(300 * 588, n);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.recorder.addFault(fault);
    QCOMPARE(bench.write(), QString("error"));
    const QByteArray told = bench.description.toUtf8();
    QVERIFY2(bench.description.startsWith("The drive " + words), told.constData());
    QVERIFY2(bench.description.contains(disc), told.constData());
    QTEST(bench.senseData, "senseData");
    QCOMPARE(bench.error == DVDWriterPro::kDriveError, !bench.senseData.isEmpty());
}

void TestTrackAtOnce::place_inAnAnswerCutShort_isTakenWhenItStandsThere()
{
    for (const auto& [bytes, end] : {std::pair(12, "completed"), {11, "error"}}) {
        BurnBench bench;
        bench.recorder.set("sao", "no");
        bench.addTrack(300 * 588, 1);
        QVERIFY(bench.takeDrive());
        bench.configure();
        bench.recorder.addFault(QString("READ_TRACK_INFORMATION nth=2 short=%1").arg(bytes));
        QCOMPARE(bench.write(), QString(end));
        QCOMPARE(bench.description.contains("where the first track is to begin"), bytes < 12);
    }
}

QTEST_GUILESS_MAIN(TestTrackAtOnce)
#include "tst_trackatonce.moc"
