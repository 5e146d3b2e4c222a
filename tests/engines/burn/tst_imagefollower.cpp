#include "WavMaker.h"

#include "common/CdTime.h"
#include "engines/burn/compare/FileLease.h"
#include "engines/burn/compare/ImageFollower.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

using namespace zib;

namespace {

/// An open file that closes itself.
struct OpenFile
{
    OpenFile(const QString& path, int flags)
        : fd(::open(path.toLocal8Bit().constData(), flags | O_CLOEXEC, 0666))
    {
    }
    ~OpenFile() { ::close(fd); }
    Q_DISABLE_COPY_MOVE(OpenFile)

    const int fd;
};

/// Two tracks and the image that a recorder makes of them; opened as the recorder does.
struct Bench
{
    Bench()
    {
        for (int number = 1; number <= 2; ++number) {
            const QByteArray samples = sound(588 * 2000, number);
            tracks << *findTrack(put(folder.filePath(QString::number(number)), cdWav(samples)));
            bytes += QByteArray(number > 1 ? kPregapFrames * kBytesPerFrame : 0, '\0') + samples;
        }
    }
    QString path() const { return folder.filePath("image"); }
    qint64 frames() const { return bytes.size() / kBytesPerFrame; }
    void write(qint64 from, qint64 to) const
    {
        const qint64 size = (to - from) * kBytesPerFrame;
        QCOMPARE(::pwrite(image.fd, bytes.constData() + from * kBytesPerFrame, size_t(size),
                          from * kBytesPerFrame),
                 size);
    }
    /// Writes all of it with a pause behind it, longer from time to time until it was long enough.
    qint64 seenAfterAPause() const
    {
        qint64 seen = 0;
        for (int pause = 25; seen < frames() && pause < 10'000; pause *= 2) {
            ImageFollower follower(image.fd, piecesOf(tracks));
            write(0, frames());
            follower.written(frames());
            QThread::msleep(static_cast<unsigned long>(pause));
            seen = follower.finish();
        }
        return seen;
    }

    QTemporaryDir folder;
    QList<BurnTrack> tracks;
    QByteArray bytes;
    OpenFile image{path(), O_RDWR | O_CREAT};
};

} // namespace

/// An image that is compared while it is being written.
class TestImageFollower : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void rightImage_isSeenToItsEnd();
    void whatIsNotWritten_isNotLookedAt();
    void wrongFrame_isLeftForLater_data();
    void wrongFrame_isLeftForLater();
    void touchedImage_isNotTrusted_data();
    void touchedImage_isNotTrusted();
    void whoeverOpensTheImage_doesNotWait();
    void finishedImage_isFree();
    void lease_onWhatOthersMayChange_isNotHeld();
};

void TestImageFollower::initTestCase()
{
    const Bench bench;
    if (!FileLease(bench.image.fd).isHeld())
        QSKIP("The storage of temporary files gives no leases: no image is compared there while it is "
              "written.");
}

void TestImageFollower::rightImage_isSeenToItsEnd()
{
    const Bench bench;
    QCOMPARE(bench.seenAfterAPause(), bench.frames());
}

void TestImageFollower::whatIsNotWritten_isNotLookedAt()
{
    const Bench bench;
    qint64 seen = 0;
    for (int pause = 25; seen == 0 && pause < 10'000; pause *= 2) {
        ImageFollower follower(bench.image.fd, piecesOf(bench.tracks));
        bench.write(0, 1234);
        follower.written(1234);
        QThread::msleep(static_cast<unsigned long>(pause));
        seen = follower.finish();
    }
    QCOMPARE(seen, 1234);
}

void TestImageFollower::wrongFrame_isLeftForLater_data()
{
    QTest::addColumn<qint64>("frame");
    QTest::newRow("first") << qint64{0};
    QTest::newRow("in the pause") << qint64{2000 + 75};
    QTest::newRow("last") << qint64{2000 + 150 + 2000 - 1};
}

void TestImageFollower::wrongFrame_isLeftForLater()
{
    QFETCH(qint64, frame);
    Bench bench;
    bench.bytes[frame * kBytesPerFrame] ^= 1;
    ImageFollower follower(bench.image.fd, piecesOf(bench.tracks));
    bench.write(0, bench.frames());
    follower.written(bench.frames());
    QThread::msleep(200);
    QCOMPARE(follower.finish(), 0);
}

void TestImageFollower::touchedImage_isNotTrusted_data()
{
    QTest::addColumn<QString>("how");
    QTest::newRow("written to") << "write";
    QTest::newRow("opened") << "open";
    QTest::newRow("cut off") << "cut";
}

void TestImageFollower::touchedImage_isNotTrusted()
{
    QFETCH(QString, how);
    const Bench bench;
    const auto touch = [&] {
        if (how == "cut") {
            QCOMPARE(::truncate(bench.path().toLocal8Bit().constData(), 1000), 0);
            return;
        }
        const OpenFile other(bench.path(), how == "write" ? O_RDWR : O_RDONLY);
        QVERIFY(other.fd >= 0);
        if (how == "write")
            QCOMPARE(::pwrite(other.fd, "x", 1, 0), 1);
    };
    ImageFollower follower(bench.image.fd, piecesOf(bench.tracks));
    bench.write(0, bench.frames());
    follower.written(bench.frames());
    QThread::msleep(100);
    touch();
    QCOMPARE(follower.finish(), 0);
}

/// Not even when the writer is stuck, or nothing is looked at any more.
void TestImageFollower::whoeverOpensTheImage_doesNotWait()
{
    Bench bench;
    for (const char wrong : {0, 1}) {
        bench.bytes[0] = static_cast<char>(bench.bytes[0] ^ wrong);
        bench.write(0, 100);
        ImageFollower follower(bench.image.fd, piecesOf(bench.tracks));
        follower.written(100);
        QThread::msleep(50);
        QElapsedTimer clock;
        clock.start();
        const OpenFile other(bench.path(), O_RDWR);
        QVERIFY(other.fd >= 0);
        QVERIFY2(clock.elapsed() < 5000, QByteArray::number(clock.elapsed()) + " ms"); // else it is 45 s
    }
}

void TestImageFollower::finishedImage_isFree()
{
    const Bench bench;
    ImageFollower follower(bench.image.fd, piecesOf(bench.tracks));
    bench.write(0, 100);
    follower.written(100);
    follower.finish();
    const OpenFile other(bench.path(), O_RDWR | O_NONBLOCK);
    QVERIFY2(other.fd >= 0, strerror(errno));
}

void TestImageFollower::lease_onWhatOthersMayChange_isNotHeld()
{
    const Bench bench;
    QVERIFY(FileLease(bench.image.fd).isHeld());
    {
        const OpenFile other(bench.path(), O_RDWR);
        QVERIFY(!FileLease(bench.image.fd).isHeld());
    }
    const OpenFile elsewhere("/proc/self/comm", O_RDWR); // a storage of another kind
    QVERIFY(elsewhere.fd >= 0 && !FileLease(elsewhere.fd).isHeld());
    QVERIFY(!FileLease(-1).isHeld());
}

QTEST_GUILESS_MAIN(TestImageFollower)
#include "tst_imagefollower.moc"
