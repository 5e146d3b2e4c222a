#include "engines/burn/mmc/DriveLine.h"

#include <QTest>

using namespace zib;
using Kind = DriveAnswer::Kind;

/// What an answer of a drive means: its sense data with every kind of answer, its bytes up to the end.
class TestDriveAnswer : public QObject
{
    Q_OBJECT
private slots:
    void senses_tellWhatToDo_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("asc");
        QTest::addColumn<bool>("passes");
        QTest::addColumn<bool>("hasNoDisc");
        QTest::newRow("becoming ready") << 2 << 0x04 << true << false;
        QTest::newRow("changed") << 6 << 0x28 << true << false;
        QTest::newRow("reset") << 6 << 0x29 << true << false;
        QTest::newRow("no disc") << 2 << 0x3A << false << true;
        QTest::newRow("taken out") << 6 << 0x3A << true << true;
        QTest::newRow("not ready, otherwise") << 2 << 0x05 << false << false;
        QTest::newRow("medium error with the same number") << 3 << 0x04 << false << false;
        QTest::newRow("unknown command") << 5 << 0x20 << false << false;
        QTest::newRow("nothing") << 0 << 0 << false << false;
    }
    void senses_tellWhatToDo()
    {
        QFETCH(int, key);
        QFETCH(int, asc);
        QFETCH(bool, passes);
        QFETCH(bool, hasNoDisc);
        DriveAnswer answer{Kind::Refused, {key, asc, 0}, {}};
        QCOMPARE(answer.passing(), passes);
        QCOMPARE(answer.hasNoDisc(), hasNoDisc);
        QVERIFY(!answer.good());
        for (const Kind kind : {Kind::Good, Kind::Broken, Kind::Gone}) { // the sense data then mean nothing
            answer.kind = kind;
            QVERIFY(!answer.passing() && !answer.hasNoDisc());
            QCOMPARE(answer.good(), kind == Kind::Good);
        }
    }
    void bytes_beyondTheEnd_areNought()
    {
        const DriveAnswer answer{Kind::Good, {}, QByteArray::fromHex("0180FF040506")};
        QCOMPARE(answer.byte(2), 0xFF);
        QCOMPARE(answer.byte(6), 0);
        QCOMPARE(answer.word(1), 0x80FF);
        QCOMPARE(answer.word(5), 0x0600);
        QCOMPARE(answer.quad(2), qint64{0xFF040506});
        QCOMPARE(answer.quad(4), qint64{0x05060000});
    }
};

QTEST_GUILESS_MAIN(TestDriveAnswer)
#include "tst_driveanswer.moc"
