#include "common/CdTime.h"
#include "engines/rip/drive/GapSearch.h"

#include <QTest>

using zib::GapSearch;
using zib::QPlace;

namespace {

constexpr qint32 kEnd = 50'000;

char decimal(int value)
{
    return static_cast<char>(value / 10 << 4 | value % 10);
}

char plain(int value)
{
    return static_cast<char>(value);
}

/// A formatted Q sub-channel.
QByteArray q(const QPlace& place, char (*number)(int), int adr = 1)
{
    const int frame = place.frame + zib::kPregapFrames;
    QByteArray bytes(zib::kQBytes, '\0');
    bytes[0] = static_cast<char>(adr);
    bytes[1] = number(place.track);
    bytes[2] = number(place.index);
    bytes[7] = number(frame / 75 / 60);
    bytes[8] = number(frame / 75 % 60);
    bytes[9] = number(frame % 75);
    return bytes;
}

} // namespace

/// The search for the beginning of a gap, and what the Q sub-channel tells.
class TestGapSearch : public QObject
{
    Q_OBJECT
private slots:
    void gap_isFoundInFewQuestions_data();
    void gap_isFoundInFewQuestions();
    void frame_thatDoesNotTell_isAskedBesides();
    void drive_thatTellsNothing_isAskedTwice();
    void drive_thatSeldomTells_isAskedNoMoreThanPromised();
    void place_isReadInBothSpellings_data();
    void place_isReadInBothSpellings();
    void place_ofAnotherKind_isNone();
};

void TestGapSearch::gap_isFoundInFewQuestions_data()
{
    QTest::addColumn<int>("gap");
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("questions");
    for (const int gap : {0, 1, 2, 75, 149, 150, 151, 152, 225, 599, 600, 601, 4500})
        QTest::addRow("%d frames", gap) << gap << 0 << (gap == 0 ? 1 : gap == 150 ? 3 : 20);
    QTest::newRow("the whole of a short track but its first frame") << 99 << kEnd - 100 << 20;
    QTest::newRow("a track of one frame") << 0 << kEnd - 1 << 0;
    QTest::newRow("a track of 151 frames") << 150 << kEnd - 151 << 20;
}

void TestGapSearch::gap_isFoundInFewQuestions()
{
    QFETCH(int, gap);
    QFETCH(int, first);
    QFETCH(int, questions);
    int asked = 0;
    GapSearch search([&](qint32 frame) -> std::optional<bool> {
        ++asked;
        return frame > first && frame < kEnd && frame >= kEnd - gap;
    });
    QCOMPARE(search.lengthBefore(kEnd, first), gap);
    QVERIFY2(asked <= questions, qPrintable(QString::number(asked)));
}

void TestGapSearch::frame_thatDoesNotTell_isAskedBesides()
{
    for (const qint32 silent : {kEnd - 1, kEnd - 150, kEnd - 151}) {
        GapSearch search([silent](qint32 frame) {
            return frame == silent ? std::optional<bool>() : std::optional(frame >= kEnd - 200);
        });
        QCOMPARE(search.lengthBefore(kEnd, 0), 200);
    }
}

void TestGapSearch::drive_thatTellsNothing_isAskedTwice()
{
    int asked = 0;
    GapSearch search([&asked](qint32) {
        ++asked;
        return std::optional<bool>();
    });
    QCOMPARE(search.lengthBefore(kEnd, 0), 0);
    QCOMPARE(asked, 2);
}

void TestGapSearch::drive_thatSeldomTells_isAskedNoMoreThanPromised()
{
    int asked = 0;
    GapSearch search([&asked](qint32 frame) {
        const bool first = asked++ % 2 == 0;
        return first ? std::optional<bool>() : std::optional(frame >= kEnd - 4500);
    });
    QCOMPARE(search.lengthBefore(kEnd, 0), 0);
    QCOMPARE(asked, GapSearch::kMostQuestions);
}

void TestGapSearch::place_isReadInBothSpellings_data()
{
    QTest::addColumn<qint32>("frame");
    for (const qint32 frame : {0, 149, 150, 4500, 12'345, 359'000})
        QTest::addRow("%d", frame) << frame;
}

void TestGapSearch::place_isReadInBothSpellings()
{
    QFETCH(qint32, frame);
    const QPlace place{frame, 12, 0};
    QVERIFY(zib::placeIn(q(place, decimal), frame) == place);
    QVERIFY(zib::placeIn(q(place, plain), frame) == place);
    QVERIFY(zib::placeIn(q(place, decimal), frame + 1) == place);
}

void TestGapSearch::place_ofAnotherKind_isNone()
{
    const QPlace place{4500, 2, 0};
    QVERIFY(!zib::placeIn(q(place, decimal, 2), 4500));
    QVERIFY(!zib::placeIn(q(place, decimal, 3), 4500));
    QVERIFY(!zib::placeIn(q(place, decimal), 9000));
    QVERIFY(!zib::placeIn(QByteArray(zib::kQBytes, '\0'), 4500));
    QVERIFY(!zib::placeIn(QByteArray(10, '\1'), 4500));
    QVERIFY(!zib::placeIn(q({4500, 2, 231}, plain), 4500));
    QVERIFY(!zib::placeIn(q({4500, 231, 0}, plain), 4500));
}

QTEST_GUILESS_MAIN(TestGapSearch)
#include "tst_gapsearch.moc"
