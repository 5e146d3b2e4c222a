#include "WindowRoad.h"

#include "drive/burn/DiscTruth.h"

#include <QPushButton>
#include <QTest>

using namespace zib;

namespace {

/// Two tracks of 400 frames, so that each fits in the other's place; they begin at 0 and at 550.
constexpr int kFrames = 400;

/// The list holds two files and the options ask for the comparing.
struct CompareRoad : WindowRoad
{
    CompareRoad()
    {
        QStringList files;
        for (int track = 1; track <= 2; ++track) {
            tracks << sound(588 * kFrames, track);
            files << put(path(QString("%1.wav").arg(track)), cdWav(tracks.last()));
        }
        list(files);
        compareAfterWriting(true);
    }

    QList<QByteArray> tracks;
};

} // namespace

/// What the user is told of a disc that was compared with its files, in the program's own windows.
class TestCompareWindow : public QObject
{
    Q_OBJECT
private slots:
    void exactDisc_isCompleted_data();
    void exactDisc_isCompleted();
    void driveThatHangsForAWhile_isSaid();
    void wrongDisc_isToldByItsPlace_data();
    void wrongDisc_isToldByItsPlace();
    void discThatGoes_isSaidNotToBeCompared_data();
    void discThatGoes_isSaidNotToBeCompared();
    void cancel_whileComparing_leavesACompletedDisc();
    void unticked_comparesNothing();
};

void TestCompareWindow::exactDisc_isCompleted_data()
{
    QTest::addColumn<QString>("fault");
    QTest::newRow("as it is") << "READ_CD times=forever delay=25";
    QTest::newRow("read early") << "READ_CD times=forever jitter=667";
    QTest::newRow("cured by reading again") << "READ_CD lba=222-222 times=3 sense=3/11/05";
}

void TestCompareWindow::exactDisc_isCompleted()
{
    QFETCH(QString, fault);
    CompareRoad road;
    road.recorder.addFault(fault);
    const auto written = road.write(WindowRoad::Recorder::Drive);
    QCOMPARE(written.box, QString("i: Writing is completed."));
    QCOMPARE(written.status, QString("Writing Completed."));
    QCOMPARE(written.note, QString());
    QCOMPARE(difference(road.recorder, road.tracks), QString());
    if (fault.contains("delay")) {
        const auto one = written.statuses.indexOf("Comparing Track #1 ... ");
        QVERIFY2(one > 0, qPrintable(written.statuses.join('|')));
        QVERIFY(written.statuses.indexOf("Comparing Track #2 ... ") > one);
    }
    QVERIFY(!road.recorder.doorLocked());
}

void TestCompareWindow::driveThatHangsForAWhile_isSaid()
{
    CompareRoad road;
    road.recorder.addFault("READ_CD nth=9 times=1 delay=4000");
    const auto written = road.write(WindowRoad::Recorder::Drive);
    QCOMPARE(written.box, QString("i: Writing is completed."));
    const auto said = written.statuses.indexOf("Waiting for the drive to go on reading, please wait...");
    QVERIFY2(said > 0, qPrintable(written.statuses.join('|')));
    QVERIFY(written.statuses.mid(said).filter("Comparing Track #").size() > 0);
}

void TestCompareWindow::wrongDisc_isToldByItsPlace_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("words");
    QTest::newRow("a flipped bit") << "READ_CD lba=560-560 times=forever flip=100/01"
                                   << "track 2 at 00:00:10 (minutes:seconds:frames); of 950 frames of 1/75 "
                                      "second, 1 frame differs.";
    QTest::newRow("a missing frame") << "READ_CD times=forever missing=600"
                                     << "track 2 at 00:00:50 (minutes:seconds:frames); of 950 frames of 1/75 "
                                        "second, 350 frames differ.";
    QTest::newRow("swapped tracks") << "READ_CD times=forever swapped=1/2"
                                    << "track 1 at 00:00:00 (minutes:seconds:frames); of 950 frames of 1/75 "
                                       "second, 800 frames differ.";
    QTest::newRow("an unreadable frame") << "READ_CD lba=77-77 times=forever sense=3/11/05"
                                         << "track 1 at 00:01:02 (minutes:seconds:frames); of 950 frames of "
                                            "1/75 second, 1 frame cannot be read.";
}

void TestCompareWindow::wrongDisc_isToldByItsPlace()
{
    QFETCH(QString, fault);
    QFETCH(QString, words);
    CompareRoad road;
    road.recorder.addFault(fault);
    const auto written = road.write(WindowRoad::Recorder::Drive);
    QVERIFY2(
        written.box.startsWith("c: Writing Error: (8)   The disc was written, but it is not what the files "
                               "hold: the first difference is in "),
        qPrintable(written.box));
    QVERIFY2(written.box.contains(words), qPrintable(written.box));
    QCOMPARE(road.desk.messages.shown.size(), 1);
    QCOMPARE(difference(road.recorder, road.tracks), QString());
    QVERIFY(!road.recorder.doorLocked());
}

void TestCompareWindow::discThatGoes_isSaidNotToBeCompared_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("why");
    QTest::newRow("the drive is unplugged") << "READ_CD nth=9 gone"
                                            << "does not answer any more";
    QTest::newRow("the drive refuses to read sound") << "READ_CD times=forever sense=5/20/00"
                                                     << "The drive refuses to read sound.";
    QTest::newRow("another disc is put in") << "READ_CD nth=9 times=1 sense=6/28/00"
                                            << "The disc in the drive was changed.";
}

void TestCompareWindow::discThatGoes_isSaidNotToBeCompared()
{
    QFETCH(QString, fault);
    CompareRoad road;
    road.recorder.addFault(fault);
    const auto written = road.write(WindowRoad::Recorder::Drive);
    QFETCH(QString, why);
    QVERIFY2(written.box.contains("The disc was written, but it could not be compared with its files. "),
             qPrintable(written.box));
    QVERIFY2(written.box.contains(why), qPrintable(written.box));
    QVERIFY(!written.box.contains("write again"));
    QCOMPARE(road.desk.messages.shown.size(), 1);
    QVERIFY(road.recorder.discEnd() != EmulatedRecorder::DiscEnd::Begun);
}

void TestCompareWindow::cancel_whileComparing_leavesACompletedDisc()
{
    CompareRoad road;
    road.recorder.addFault("READ_CD times=forever delay=150");
    const auto written = road.write(WindowRoad::Recorder::Drive, [](QWidget* window, const QString& status) {
        if (status == "Comparing Track #2 ... ")
            demo::press(window, "cmdCancel");
    });
    QCOMPARE(written.box, QString("i: Writing is completed."));
    QCOMPARE(written.status, QString("Writing Completed."));
    QVERIFY2(written.note.contains("The disc was written, but not compared with its files."),
             qPrintable(written.note));
    QVERIFY(written.statuses.contains("Writing Cancelled. Please wait ... "));
    QCOMPARE(difference(road.recorder, road.tracks), QString());
    QVERIFY(road.recorder.discEnd() == EmulatedRecorder::DiscEnd::Finished);
}

void TestCompareWindow::unticked_comparesNothing()
{
    CompareRoad road;
    road.compareAfterWriting(false);
    const auto written = road.write(WindowRoad::Recorder::Drive);
    QCOMPARE(written.box, QString("i: Writing is completed."));
    QCOMPARE(road.recorder.count("READ_CD"), 0);
}

QTEST_MAIN(TestCompareWindow)
#include "tst_comparewindow.moc"
