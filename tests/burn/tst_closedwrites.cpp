#include "burn/ClosedWrites.h"
#include "fakes/FakeDVDWriterPro.h"
#include "fakes/FakeSeams.h"

#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

using namespace zib;
using namespace std::chrono_literals;

namespace {

/// A writer whose window has closed, kept.
struct Desk
{
    Desk() { closed.keep(std::unique_ptr<DVDWriterPro>(writer)); }
    /// What was said, once the events have gone on.
    QStringList said()
    {
        QTest::qWait(20);
        return messages.shown;
    }

    ScriptedMessages messages;
    QWidget window;
    ClosedWrites closed{messages, [this] { return &window; }};
    FakeDVDWriterPro* writer = new FakeDVDWriterPro;
};

} // namespace

/// The ends of writes whose window has closed.
class TestClosedWrites : public QObject
{
    Q_OBJECT
private slots:
    void completed_isToldOverTheMainWindow()
    {
        Desk desk;
        emit desk.writer->WriteCompleted();
        QVERIFY(desk.closed.isEmpty());
        QCOMPARE(desk.said(), QStringList{"i: Writing is completed."});
        QCOMPARE(desk.messages.owners.value(0).data(), &desk.window);
    }
    void completed_tellsWhatTheWindowWouldHaveNoted()
    {
        Desk desk;
        emit desk.writer->Remark("The disc was written, but not compared with its files.");
        emit desk.writer->WriteCompleted();
        QCOMPARE(desk.said(), QStringList{"i: Writing is completed.\nThe disc was written, but not compared "
                                          "with its files."});
    }
    void cancelled_tellsTheDiscsState_andNothingWithoutOne()
    {
        Desk desk;
        emit desk.writer->Remark("The disc was begun.");
        emit desk.writer->WriteCancelled();
        QCOMPARE(desk.said(), QStringList{"i: Writing Cancelled.\nThe disc was begun."});
        Desk other;
        emit other.writer->WriteCancelled();
        QCOMPARE(other.said(), QStringList());
    }
    void failed_isToldAsInTheWindow()
    {
        Desk desk;
        emit desk.writer->WriteError(6, 0, "It stopped.", {});
        QCOMPARE(desk.said(), QStringList{"c: Writing Error: (6)   It stopped.\n"});
    }
    void await_waitsForTheEndAndItsBox_inBoundedTime()
    {
        Desk desk;
        QTimer::singleShot(100, desk.writer, [&desk] { emit desk.writer->WriteCompleted(); });
        QVERIFY(desk.closed.await(20s));
        QCOMPARE(desk.messages.shown.size(), 1);
        Desk stuck;
        QElapsedTimer taken;
        taken.start();
        QVERIFY(!stuck.closed.await(100ms));
        QVERIFY(taken.elapsed() < 10'000);
    }
    void kept_whileItRuns_keepsTheSystemAwake()
    {
        const FakeDesk outside;
        Desk desk;
        QCOMPARE(*outside.inhibitor.held, QStringList{"A disc is being written"});
        emit desk.writer->WriteCompleted();
        QCOMPARE(*outside.inhibitor.held, QStringList());
    }
    void hurry_endsTheWaitingAndTellsNothing()
    {
        Desk desk;
        QTimer::singleShot(50, &desk.window, [&desk] { desk.closed.hurry(100ms); });
        QVERIFY(!desk.closed.await(60s));
        emit desk.writer->WriteCompleted();
        QCOMPARE(desk.said(), QStringList());
    }
    void hurry_isOverOnceADriveHangs()
    {
        Desk desk;
        int asked = 0;
        desk.closed.hurry(60s, [&asked] { return ++asked < 2; });
        QElapsedTimer taken;
        taken.start();
        QVERIFY(!desk.closed.await(60s));
        QCOMPARE(asked, 2);
        QVERIFY2(taken.elapsed() < 20'000, qPrintable(QString::number(taken.elapsed())));
    }
};

QTEST_MAIN(TestClosedWrites)
#include "tst_closedwrites.moc"
