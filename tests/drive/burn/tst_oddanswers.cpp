#include "drive/burn/DiscTruth.h"

#include <QRegularExpression>
#include <QTimer>

using namespace zib;

// Drives whose answers are odd rather than refusals: cut short, without sense data, behind block descriptors,
// slow, or those of a drive that was reset in the middle. What is told is what became of the disc, and why.

namespace {

/// How often a write asks whether the drive is ready, the question before the reading back included.
int readinessQuestionsBeforeReadingBack()
{
    BurnBench bench;
    addPair(bench);
    if (!bench.takeDrive())
        return 0;
    bench.configure();
    bench.recorder.clearJournal();
    if (bench.write() != "completed")
        return 0;
    const QStringList journal = bench.recorder.journal();
    const auto looked = journal.lastIndexOf(QRegularExpression(".*READ_DISC_INFORMATION.*"));
    return int(QStringList(journal.mid(0, looked)).filter("TEST_UNIT_READY").size());
}

} // namespace

class TestOddAnswers : public QObject
{
    Q_OBJECT
private slots:
    void drive_ofOtherManners_isWritten_data();
    void drive_ofOtherManners_isWritten();
    void answer_thatSaysTooLittle_isNamedAsTheCause_data();
    void answer_thatSaysTooLittle_isNamedAsTheCause();
    void drive_thatRefusesWithoutAWord_isToldByItsDisc();
    void drive_thatIsResetBetweenTracks_tellsNoLaterPhase();
    void disc_thatWasChangedBehindOurBack_isNotToldAsBegun_data();
    void disc_thatWasChangedBehindOurBack_isNotToldAsBegun();
    void cancel_whoseStoppingFails_isACancelAllTheSame_data();
    void cancel_whoseStoppingFails_isACancelAllTheSame();
    void drive_thatKeepsUsWaiting_isSaidSo_data();
    void drive_thatKeepsUsWaiting_isSaidSo();
    void readingBack_ofADriveThatIsBusy_saysItsReason();
};

void TestOddAnswers::drive_ofOtherManners_isWritten_data()
{
    QTest::addColumn<QStringList>("keys");
    QTest::addColumn<QStringList>("faults");
    QTest::newRow("another style") << QStringList{"block-descriptor", "yes", "sense-format", "descriptor"}
                                   << QStringList{
                                          "MODE_SENSE_10 page=05 times=forever flip=8/80",
                                          "MODE_SENSE_10 page=05 times=forever flip=18/A0",
                                          "READ_DISC_INFORMATION times=forever patch=17/FFFFFFFFFFFFFF",
                                          "READ_DISC_INFORMATION times=6 sense=6/28/00",
                                          "TEST_UNIT_READY times=4 sense=2/04/01"};
    QTest::newRow("no profiles") << QStringList{"disc-kind", "cd-rw"}
                                 << QStringList{"GET_CONFIGURATION times=forever sense=5/20/00"};
}

void TestOddAnswers::drive_ofOtherManners_isWritten()
{
    QFETCH(QStringList, keys);
    QFETCH(QStringList, faults);
    BurnBench bench;
    for (qsizetype i = 0; i + 1 < keys.size(); i += 2)
        bench.recorder.set(keys[i], keys[i + 1]);
    const QList<QByteArray> tracks = addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    for (const QString& fault : faults)
        bench.recorder.addFault(fault);
    QCOMPARE(bench.writer.discStatus(), DVDWriterPro::kBlankDisc);
    QCOMPARE(bench.write() + bench.description, QString("completed"));
    QCOMPARE(difference(bench.recorder, tracks), QString());
}

void TestOddAnswers::answer_thatSaysTooLittle_isNamedAsTheCause_data()
{
    QTest::addColumn<QString>("sao");
    QTest::addColumn<QString>("fault");
    QTest::addColumn<qint32>("code");
    QTest::addColumn<QString>("words");
    QTest::newRow("disc information") << "yes"
                                      << "READ_DISC_INFORMATION short=4 times=forever"
                                      << BurnErrorCode::kUnsupported << "does not tell what disc it holds";
    QTest::newRow("the profile") << "yes"
                                 << "GET_CONFIGURATION short=4 times=forever" << BurnErrorCode::kUnsupported
                                 << "does not tell what disc it holds";
    QTest::newRow("the profile, refused") << "yes"
                                          << "GET_CONFIGURATION times=forever sense=5/24/00"
                                          << DVDWriterPro::kDriveError << "does not tell what disc it holds";
    QTest::newRow("the mode page") << "yes"
                                   << "MODE_SENSE_10 page=05 short=12 times=forever"
                                   << BurnErrorCode::kUnsupported
                                   << "does not tell in what way it would write";
    QTest::newRow("the next track") << "no"
                                    << "READ_TRACK_INFORMATION short=8 times=forever"
                                    << BurnErrorCode::kUnsupported
                                    << "does not tell where the first track is to begin";
    QTest::newRow("the table of contents")
        << "yes"
        << "READ_TOC short=6 times=forever" << BurnErrorCode::kVerify << "could not be read back";
}

void TestOddAnswers::answer_thatSaysTooLittle_isNamedAsTheCause()
{
    QFETCH(QString, sao);
    QFETCH(QString, fault);
    QFETCH(qint32, code);
    QFETCH(QString, words);
    BurnBench bench;
    bench.recorder.set("sao", sao);
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.recorder.addFault(fault);
    QCOMPARE(bench.write(), QString("error"));
    QVERIFY2(bench.description.contains(words), qPrintable(bench.description));
    QVERIFY2(!bench.description.contains("does not answer"), qPrintable(bench.description));
    QCOMPARE(bench.error, code);
}

/// The library takes a refusal without sense data for consent.
void TestOddAnswers::drive_thatRefusesWithoutAWord_isToldByItsDisc()
{
    BurnBench bench;
    bench.recorder.set("sense-format", "none");
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.recorder.addFault("SEND_CUE_SHEET sense=5/26/00");
    QCOMPARE(bench.write(), QString("error"));
    QVERIFY2(bench.description.contains("still blank"), qPrintable(bench.description));
    QVERIFY(bench.recorder.content()->blank);
}

void TestOddAnswers::drive_thatIsResetBetweenTracks_tellsNoLaterPhase()
{
    BurnBench bench;
    bench.recorder.set("sao", "no");
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.writer.setTestWrite(true);
    bench.recorder.addFault("SYNCHRONIZE_CACHE nth=1 reset");
    QCOMPARE(bench.write(), QString("error"));
    QVERIFY(!bench.said.contains("closing disc"));
    QVERIFY(!bench.said.contains("reading 2"));
    QVERIFY2(bench.description.contains("could not write track 2"), qPrintable(bench.description));
    QVERIFY2(bench.description.contains("The writing library says"), qPrintable(bench.description));
}

void TestOddAnswers::disc_thatWasChangedBehindOurBack_isNotToldAsBegun_data()
{
    QTest::addColumn<QString>("delay");
    QTest::addColumn<QStringList>("recipe");
    QTest::addColumn<QString>("words");
    QTest::newRow("a full one, before the layout")
        << "MODE_SELECT_10 nth=2 delay=1500" << QStringList{"audio 3000", "close"}
        << "not the one that was there";
    QTest::newRow("none, before the layout")
        << "MODE_SELECT_10 nth=2 delay=1500" << QStringList{} << "no disc in the drive any more";
    QTest::newRow("none, before the drive was taken")
        << "INQUIRY nth=1 delay=1500" << QStringList{} << "taken out of the drive";
}

void TestOddAnswers::disc_thatWasChangedBehindOurBack_isNotToldAsBegun()
{
    QFETCH(QString, delay);
    QFETCH(QStringList, recipe);
    QFETCH(QString, words);
    BurnBench bench;
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    bench.recorder.addFault(delay);
    QTimer looking;
    connect(&looking, &QTimer::timeout, this, [&] {
        if (!bench.recorder.faultStruck())
            return;
        looking.stop();
        recipe.isEmpty() ? bench.recorder.removeDisc() : bench.recorder.insert("other", recipe);
    });
    looking.start(20);
    QCOMPARE(bench.write(), QString("error"));
    QVERIFY2(bench.description.contains(words), qPrintable(bench.description));
    QVERIFY2(!bench.description.contains("was begun"), qPrintable(bench.description));
}

void TestOddAnswers::cancel_whoseStoppingFails_isACancelAllTheSame_data()
{
    QTest::addColumn<QString>("sao");
    QTest::addColumn<QString>("fault");
    QTest::newRow("the flush") << "yes"
                               << "SYNCHRONIZE_CACHE times=forever sense=3/72/02";
    QTest::newRow("the closing") << "no"
                                 << "CLOSE_TRACK_SESSION times=forever sense=3/72/00";
}

void TestOddAnswers::cancel_whoseStoppingFails_isACancelAllTheSame()
{
    QFETCH(QString, sao);
    QFETCH(QString, fault);
    BurnBench bench;
    bench.recorder.set("sao", sao);
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    QString remark;
    connect(&bench.writer, &DVDWriterPro::Remark, this, [&](const QString& text) { remark = text; });
    bench.recorder.addFault("WRITE_10 times=forever delay=40");
    bench.recorder.addFault(fault);
    bench.onProgress = [&](qint32, qint32 done) {
        if (done > 0)
            bench.writer.cancel();
    };
    QCOMPARE(bench.write() + bench.description, QString("cancelled"));
    QVERIFY2(remark.contains("was begun"), qPrintable(remark));
}

void TestOddAnswers::drive_thatKeepsUsWaiting_isSaidSo_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("words");
    QTest::newRow("before the first block") << "SEND_CUE_SHEET delay=2500"
                                            << "to begin to write";
    QTest::newRow("in a track") << "WRITE_10 nth=25 delay=2500"
                                << "to go on writing";
}

void TestOddAnswers::drive_thatKeepsUsWaiting_isSaidSo()
{
    QFETCH(QString, fault);
    QFETCH(QString, words);
    DrivePatience patience = testPatience();
    patience.writeMs = 60'000; // What it is told is held here, not when it is given up.
    BurnBench bench(patience);
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    QStringList waits;
    connect(&bench.writer, &DVDWriterPro::Waiting, this, [&](const QString& what) { waits << what; });
    bench.recorder.addFault(fault);
    QCOMPARE(bench.write() + bench.description, QString("completed"));
    QCOMPARE(waits.filter("Making the drive ready").size(), 1);
    QCOMPARE(waits.filter(words).size(), 1);
}

void TestOddAnswers::readingBack_ofADriveThatIsBusy_saysItsReason()
{
    const int asked = readinessQuestionsBeforeReadingBack();
    QVERIFY(asked > 0);
    BurnBench bench;
    addPair(bench);
    QVERIFY(bench.takeDrive());
    bench.configure();
    QStringList waits;
    connect(&bench.writer, &DVDWriterPro::Waiting, this, [&](const QString& what) { waits << what; });
    bench.recorder.addFault(QString("TEST_UNIT_READY nth=%1 times=5 sense=2/04/08").arg(asked));
    QCOMPARE(bench.write(), QString("completed"));
    QVERIFY2(!waits.filter("[2 04 08]").isEmpty(), qPrintable(waits.join('\n')));
}

QTEST_GUILESS_MAIN(TestOddAnswers)
#include "tst_oddanswers.moc"
