#include "common/CdTime.h"
#include "comparison.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using zib::kBytesPerFrame;

namespace {

constexpr int kGap = zib::kPregapFrames;

/// Sample pairs that count up.
QByteArray ramp(int pairs)
{
    QByteArray sound(pairs * 4, '\0');
    for (int i = 0; i < pairs; ++i)
        for (int byte = 0; byte < 4; ++byte)
            sound[i * 4 + byte] = static_cast<char>((i + 1) >> (byte % 2 * 8));
    return sound;
}

/// A disc of two tracks: 400 frames that end in a part-frame, and a short one that is padded to 300.
struct Disc
{
    Disc() : sounds{ramp(400 * 588 - 100), ramp(588)}
    {
        bytes = sounds[0] + QByteArray(400, '\0') + QByteArray(kGap * kBytesPerFrame, '\0') + sounds[1] +
                QByteArray(299 * kBytesPerFrame, '\0');
    }
    std::optional<QList<demo::TrackVerdict>> judge()
    {
        write("d.bin", bytes);
        write("d.cue", "FILE \"d.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n"
                       "  TRACK 02 AUDIO\n    INDEX 00 00:05:25\n    INDEX 01 00:07:25\n");
        const auto disc = demo::DiscImage::open(folder.filePath("d.cue"));
        return disc ? demo::compare(*disc, sounds) : std::nullopt;
    }
    void write(const QString& name, const QByteArray& content)
    {
        QFile file(folder.filePath(name));
        if (file.open(QIODevice::WriteOnly))
            file.write(content);
    }

    QTemporaryDir folder;
    QList<QByteArray> sounds;
    QByteArray bytes;
};

} // namespace

/// The judge of the demonstration and of the road: it must see every wrong sample.
class TestComparison : public QObject
{
    Q_OBJECT
private slots:
    void disc_asItShouldBe_isRight()
    {
        Disc disc;
        const auto verdicts = disc.judge();
        QVERIFY(verdicts);
        QCOMPARE(verdicts->size(), 2);
        for (const demo::TrackVerdict& verdict : *verdicts)
            QVERIFY(verdict.right());
        QCOMPARE(verdicts->at(0).frames, 400);
        QCOMPARE(verdicts->at(1).frames, 300);
        QCOMPARE(verdicts->at(1).samples, 588);
    }
    void disc_withOneWrongBit_isWrong_data()
    {
        QTest::addColumn<int>("at");
        QTest::addColumn<int>("track");
        QTest::newRow("first sample") << 0 << 0;
        QTest::newRow("last sample") << 400 * kBytesPerFrame - 401 << 0;
        QTest::newRow("padding of the part-frame") << 400 * kBytesPerFrame - 1 << 0;
        QTest::newRow("gap") << 420 * kBytesPerFrame << 0;
        QTest::newRow("second track") << 550 * kBytesPerFrame + 7 << 1;
        QTest::newRow("padding of the short track") << 850 * kBytesPerFrame - 1 << 1;
    }
    void disc_withOneWrongBit_isWrong()
    {
        QFETCH(int, at);
        QFETCH(int, track);
        Disc disc;
        disc.bytes[at] = static_cast<char>(disc.bytes[at] ^ 1);
        const auto verdicts = disc.judge();
        QVERIFY(verdicts);
        QCOMPARE(verdicts->at(track).different, 1);
        QVERIFY(!verdicts->at(track).right());
        QVERIFY(verdicts->at(1 - track).right());
    }
    void disc_thatEndsEarly_isWrong()
    {
        Disc disc;
        disc.bytes.chop(kBytesPerFrame);
        const auto verdicts = disc.judge();
        QVERIFY(!verdicts || !verdicts->at(1).right());
    }
    void disc_withAnotherNumberOfTracks_givesNothing()
    {
        Disc disc;
        disc.sounds << ramp(588);
        QVERIFY(!disc.judge());
    }
    void soundOf_aFileOfAnotherFormat_isNothing()
    {
        QVERIFY(!demo::soundOf(ZIB_SOURCE_DIR "/data/samples/Night Train.wav"));
        QVERIFY(!demo::soundOf("/nowhere.wav"));
    }
};

QTEST_GUILESS_MAIN(TestComparison)
#include "tst_comparison.moc"
