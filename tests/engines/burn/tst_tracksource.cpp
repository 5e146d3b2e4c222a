#include "WavMaker.h"

#include "engines/burn/tracks/TrackSource.h"
#include "fakes/OpenFiles.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <utility>

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace zib;

namespace {

int g_readError = 0; ///< What the next read fails with; zero is obedience.

} // namespace

// Stands before the system's own for everything that is linked into this program.
extern "C" ssize_t pread(int file, void* buffer, size_t size, off_t place)
{
    if (const int error = std::exchange(g_readError, 0)) {
        errno = error;
        return -1;
    }
    return ::syscall(SYS_pread64, file, buffer, size, place);
}

/// WAV files as tracks: what is taken, what is refused, and what a recorder reads from them.
class TestTrackSource : public QObject
{
    Q_OBJECT
private slots:
    void findTrack_inOneFile_answers_data();
    void findTrack_inOneFile_answers();
    void findTrack_whatIsNoFile_isRefused_data();
    void findTrack_whatIsNoFile_isRefused();
    void findTrack_lengths_countPartFramesAndTheShortestTrack_data();
    void findTrack_lengths_countPartFramesAndTheShortestTrack();
    void findTrack_andReading_leaveNoFileOpen();
    void read_inPieces_givesSamplesThenSilence();
    void read_thatIsInterrupted_goesOn_andThatFails_isToldSo();
    void open_afterAChange_isRefused_data();
    void open_afterAChange_isRefused();
    void read_whileTheFileShrinks_isAFailure();
    void read_whenTheFileWasRewrittenMeanwhile_isAFailure();

private:
    QString file(const QString& name) const { return m_folder.filePath(name); }
    QTemporaryDir m_folder;
};

void TestTrackSource::findTrack_inOneFile_answers_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<qint64>("offset"); // -1: refused
    QTest::addColumn<qint64>("bytes");
    const QByteArray data = chunk("data", sound(1000));
    const QByteArray plain = riff(formatChunk() + data);
    QTest::newRow("plain") << plain << qint64{44} << qint64{4000};
    QTest::newRow("extensible") << riff(extensibleChunk() + data) << qint64{68} << qint64{4000};
    QTest::newRow("extensible float") << riff(extensibleChunk(3) + data) << qint64{-1} << qint64{0};
    QTest::newRow("odd chunk before")
        << riff(chunk("LIST", "abc") + formatChunk() + data) << qint64{56} << qint64{4000};
    QTest::newRow("odd chunk between")
        << riff(formatChunk() + chunk("junk", "x") + data) << qint64{54} << qint64{4000};
    QTest::newRow("chunk behind") << plain + chunk("LIST", "abcd") << qint64{44} << qint64{4000};
    QTest::newRow("data cut off") << plain.chopped(100) << qint64{44} << qint64{3900};
    QTest::newRow("data cut within a pair") << plain.chopped(101) << qint64{44} << qint64{3896};
    QTest::newRow("data of unknown size")
        << riff(formatChunk() + "data" + little32(0xFFFFFFFF) + sound(10)) << qint64{44} << qint64{40};
    QTest::newRow("rf64") << riff(chunk("ds64", QByteArray(8, '\0') + little32(40) + little32(0) +
                                                    QByteArray(12, '\0')) +
                                      formatChunk() + "data" + little32(0xFFFFFFFF) + sound(20),
                                  "RF64")
                          << qint64{80} << qint64{40};
    QTest::newRow("rf64 with a negative size")
        << riff(chunk("ds64", QByteArray(16, '\xff') + QByteArray(12, '\0')) + formatChunk() + "data" +
                    little32(0xFFFFFFFF) + sound(20),
                "RF64")
        << qint64{80} << qint64{80};
    QTest::newRow("format with extra bytes")
        << riff(chunk("fmt ", formatChunk().mid(8) + little16(0)) + data) << qint64{46} << qint64{4000};
    QTest::newRow("bw64") << riff(formatChunk() + data, "BW64") << qint64{44} << qint64{4000};
    QTest::newRow("unfinished header")
        << riff(formatChunk() + "data" + little32(0) + sound(10)) << qint64{44} << qint64{40};
    QTest::newRow("no padding byte") << riff(formatChunk() + "junk" + little32(1) + "x" + data) << qint64{53}
                                     << qint64{4000};
    QTest::newRow("format behind the samples") << riff(data + formatChunk()) << qint64{20} << qint64{4000};
    QTest::newRow("two formats") << riff(formatChunk() + formatChunk(1, 1) + data) << qint64{68}
                                 << qint64{4000};
    QTest::newRow("a format cut short before another")
        << riff(chunk("fmt ", formatChunk().mid(8, 14)) + formatChunk() + data) << qint64{-1} << qint64{0};
    QTest::newRow("a format cut too short before another")
        << riff(chunk("fmt ", formatChunk().mid(8, 12)) + formatChunk() + data) << qint64{64} << qint64{4000};
    const auto ofBlock = [&](int bytes) {
        return riff(chunk("fmt ", formatChunk().mid(8).replace(12, 2, little16(bytes))) + data);
    };
    QTest::newRow("no block size") << ofBlock(0) << qint64{44} << qint64{4000};
    QTest::newRow("16 bits in four bytes") << ofBlock(8) << qint64{-1} << qint64{0};
    QTest::newRow("16 bits in three bytes") << ofBlock(6) << qint64{-1} << qint64{0};
    QTest::newRow("16 bits in eight bytes") << ofBlock(16) << qint64{-1} << qint64{0};
    QTest::newRow("a block wider than any sample") << ofBlock(18) << qint64{44} << qint64{4000};
    QTest::newRow("an odd block") << ofBlock(5) << qint64{44} << qint64{4000};
    QTest::newRow("mono") << riff(formatChunk(1, 1) + data) << qint64{-1} << qint64{0};
    QTest::newRow("48000 Hz") << riff(formatChunk(1, 2, 48000) + data) << qint64{-1} << qint64{0};
    QTest::newRow("24 bits") << riff(formatChunk(1, 2, 44100, 24) + data) << qint64{-1} << qint64{0};
    QTest::newRow("A-law") << riff(formatChunk(6, 2, 44100, 16) + data) << qint64{-1} << qint64{0};
    QTest::newRow("no data chunk") << riff(formatChunk()) << qint64{-1} << qint64{0};
    QTest::newRow("no format chunk") << riff(data) << qint64{-1} << qint64{0};
    QTest::newRow("no sample") << cdWav({}) << qint64{-1} << qint64{0};
    QTest::newRow("half a pair") << riff(formatChunk() + chunk("data", "ab")) << qint64{-1} << qint64{0};
    QTest::newRow("empty file") << QByteArray() << qint64{-1} << qint64{0};
    QTest::newRow("text") << QByteArray("This is no sound at all, just a text.") << qint64{-1} << qint64{0};
    QTest::newRow("head alone") << QByteArray("RIFF....WAVE") << qint64{-1} << qint64{0};
    QTest::newRow("only tiny chunks")
        << riff(chunk("junk", {}).repeated(50'000) + formatChunk() + data) << qint64{-1} << qint64{0};
}

void TestTrackSource::findTrack_inOneFile_answers()
{
    QFETCH(QByteArray, content);
    QFETCH(qint64, offset);
    const QString path = put(file("one.wav"), content);
    const auto track = findTrack(path);
    if (offset < 0) {
        QVERIFY(!track);
        QCOMPARE(track.error(), (Failure{Failure::Kind::UnreadableFile, path}));
        return;
    }
    QVERIFY(track);
    QCOMPARE(track->dataOffset, offset);
    QTEST(track->dataBytes, "bytes");
    QCOMPARE(track->name, path);
}

void TestTrackSource::findTrack_whatIsNoFile_isRefused_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("missing") << file("missing.wav");
    QTest::newRow("empty name") << QString();
    QTest::newRow("folder") << m_folder.path();
    QTest::newRow("device") << "/dev/null";
    QTest::newRow("terminal") << "/dev/tty";
    QTest::newRow("pipe") << file("pipe.wav");
    QTest::newRow("link to itself") << file("loop.wav");
    QTest::newRow("link to nothing") << file("dangling.wav");
    mkfifo(qPrintable(file("pipe.wav")), 0600);
    QFile::link("loop.wav", file("loop.wav"));
    QFile::link("nowhere.wav", file("dangling.wav"));
}

void TestTrackSource::findTrack_whatIsNoFile_isRefused()
{
    QFETCH(QString, path);
    QVERIFY(!findTrack(path));
}

void TestTrackSource::findTrack_lengths_countPartFramesAndTheShortestTrack_data()
{
    QTest::addColumn<qint64>("pairs");
    QTest::addColumn<qint64>("frames");
    QTest::newRow("one pair") << qint64{1} << qint64{300};
    QTest::newRow("just four seconds") << qint64{300 * 588} << qint64{300};
    QTest::newRow("one pair more") << qint64{300 * 588 + 1} << qint64{301};
    QTest::newRow("whole frames") << qint64{450 * 588} << qint64{450};
    QTest::newRow("one pair less") << qint64{450 * 588 - 1} << qint64{450};
}

void TestTrackSource::findTrack_lengths_countPartFramesAndTheShortestTrack()
{
    QFETCH(qint64, pairs);
    const auto track = findTrack(put(file("length.wav"), cdWav(sound(pairs))));
    QVERIFY(track);
    QTEST(track->length.frames(), "frames");
}

void TestTrackSource::findTrack_andReading_leaveNoFileOpen()
{
    const QString good = put(file("good.wav"), riff(formatChunk() + chunk("data", sound(1000))));
    const QString bad = put(file("bad.wav"), riff(formatChunk()));
    const qsizetype before = openFiles();
    const auto track = findTrack(good);
    QVERIFY(track && !findTrack(bad) && !findTrack(file("")));
    {
        TrackSource source;
        QVERIFY(source.open(*track));
        QVERIFY(source.open(*track));
        QCOMPARE(openFiles(), before + 1);
    }
    QCOMPARE(openFiles(), before);
}

void TestTrackSource::read_inPieces_givesSamplesThenSilence()
{
    const QByteArray samples = sound(301 * 588 + 7);
    const auto track =
        findTrack(put(file("read.wav"), riff(formatChunk() + chunk("data", samples) + "LIST...")));
    TrackSource source;
    QVERIFY(source.open(*track));
    QByteArray all;
    QByteArray piece(10'007, 'x');
    for (;;) {
        const auto got = source.read(piece.data(), piece.size());
        QVERIFY(got);
        if (*got == 0)
            break;
        all += piece.left(*got);
    }
    QCOMPARE(all.size(), 302 * 2352);
    QCOMPARE(source.size(), qint64{302 * 2352});
    QVERIFY(all.left(samples.size()) == samples);
    QCOMPARE(all.mid(samples.size()).count('\0'), all.size() - samples.size());
}

void TestTrackSource::read_thatIsInterrupted_goesOn_andThatFails_isToldSo()
{
    const auto track = findTrack(put(file("read.wav"), cdWav(sound(1000))));
    TrackSource source;
    QByteArray piece(1000, 'x');
    for (const auto& [error, well] : {std::pair(EINTR, true), {EIO, false}}) {
        QVERIFY(source.open(*track));
        g_readError = error;
        const auto got = source.read(piece.data(), piece.size());
        QCOMPARE(bool(got), well);
        if (!well)
            QCOMPARE(got.error().kind, Failure::Kind::UnreadableFile);
    }
}

void TestTrackSource::open_afterAChange_isRefused_data()
{
    QTest::addColumn<QString>("change");
    QTest::newRow("removed") << "removed";
    QTest::newRow("longer") << "longer";
    QTest::newRow("rewritten") << "rewritten";
    QTest::newRow("replaced by a folder") << "folder";
}

void TestTrackSource::open_afterAChange_isRefused()
{
    QFETCH(QString, change);
    const QString path = put(file("changing.wav"), cdWav(sound(1000)));
    const auto track = findTrack(path);
    QVERIFY(track);
    if (change == "longer")
        put(path, cdWav(sound(2000)));
    else
        QFile::remove(path);
    if (change == "rewritten")
        put(path, cdWav(sound(1000, 2)));
    else if (change == "folder")
        QDir().mkdir(path);
    const auto opened = TrackSource().open(*track);
    QDir().rmdir(path);
    QVERIFY(!opened);
    QCOMPARE(opened.error(), (Failure{Failure::Kind::UnreadableFile, path}));
}

void TestTrackSource::read_whileTheFileShrinks_isAFailure()
{
    const QString path = put(file("shrinking.wav"), cdWav(sound(400 * 588)));
    TrackSource source;
    QVERIFY(source.open(*findTrack(path)));
    QByteArray buffer(2352 * 100, '\0');
    QVERIFY(source.read(buffer.data(), buffer.size()));
    QVERIFY(QFile::resize(path, 2352 * 150));
    const auto got = source.read(buffer.data(), buffer.size());
    QVERIFY(!got);
    QCOMPARE(got.error().kind, Failure::Kind::UnreadableFile);
}

void TestTrackSource::read_whenTheFileWasRewrittenMeanwhile_isAFailure()
{
    const QString path = put(file("rewritten.wav"), cdWav(sound(300 * 588)));
    TrackSource source;
    QVERIFY(source.open(*findTrack(path)));
    QByteArray buffer(2352 * 200, '\0');
    QVERIFY(source.read(buffer.data(), buffer.size()));
    QTest::qWait(20);
    put(path, cdWav(sound(300 * 588, 2)));
    QVERIFY(!source.read(buffer.data(), buffer.size()));
}

QTEST_APPLESS_MAIN(TestTrackSource)
#include "tst_tracksource.moc"
