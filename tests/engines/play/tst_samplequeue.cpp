#include "engines/play/SampleQueue.h"

#include <QTest>

#include <atomic>
#include <memory>
#include <thread>

using zib::SampleQueue;

namespace {

constexpr int kRate = 1000;

/// A stereo queue whose news are counted, and the device's end of it.
struct Line
{
    QList<qint16> fill(int samples)
    {
        QList<qint16> out(samples, 99);
        queue.fill({out.data(), static_cast<std::size_t>(samples)});
        return out;
    }

    std::atomic<int> told{0};
    SampleQueue queue{kRate, 2, [this] { ++told; }};
};

} // namespace

/// The blocks between the two threads.
class TestSampleQueue : public QObject
{
    Q_OBJECT
private slots:
    void fill_crossesBlocksWithoutAGap()
    {
        Line line;
        line.queue.append({1, 2, 3, 4, 5, 6});
        line.queue.append({7, 8, 9, 10});
        QCOMPARE(line.fill(4), (QList<qint16>{1, 2, 3, 4}));
        QCOMPARE(line.told.load(), 0);
        QCOMPARE(line.fill(4), (QList<qint16>{5, 6, 7, 8}));
        QCOMPARE(line.told.load(), 1);
        QCOMPARE(line.queue.takeUsedBlocks(), 1);
        QCOMPARE(line.queue.takeUsedBlocks(), 0);
        QCOMPARE(line.queue.handedFrames(), 4);
    }

    void fill_beforeTheFirstBlock_waitsForIt()
    {
        Line line;
        QList<qint16> out;
        std::thread device([&] { out = line.fill(2); });
        QTest::qWait(50); // The device asks first.
        line.queue.append({1, 2});
        device.join();
        QCOMPARE(out, (QList<qint16>{1, 2}));
    }

    void fill_whenDry_waitsForTheNextBlockInsteadOfSilence()
    {
        Line line;
        line.queue.append({1, 2});
        QList<qint16> out;
        std::thread device([&] { out = line.fill(6); });
        QTRY_COMPARE_WITH_TIMEOUT(line.told.load(), 1, 30000); // told before it waits
        line.queue.append({3, 4, 5, 6});
        device.join();
        QCOMPARE(out, (QList<qint16>{1, 2, 3, 4, 5, 6}));
    }

    void end_fillsUpWithSilenceAndIsHeardAfterThreePortions()
    {
        Line line;
        line.queue.append({1, 2});
        line.queue.end();
        QCOMPARE(line.fill(4), (QList<qint16>{1, 2, 0, 0}));
        line.queue.takeUsedBlocks();
        for (int portion = 0; portion < 3; ++portion) {
            QVERIFY(!line.queue.isHeard());
            QCOMPARE(line.fill(4), (QList<qint16>{0, 0, 0, 0}));
        }
        QVERIFY(line.queue.isHeard());
        QCOMPARE(line.told.load(), 2);
        QCOMPARE(line.queue.handedFrames(), 1);
    }

    void append_afterEnd_playsOn()
    {
        Line line;
        line.queue.end();
        line.queue.append({1, 2, 3, 4});
        QVERIFY(!line.queue.isHeard());
        QCOMPARE(line.fill(4), (QList<qint16>{1, 2, 3, 4}));
    }

    void clear_dropsAndCountsAnew()
    {
        Line line;
        line.queue.append({1, 2, 3, 4});
        line.fill(2);
        line.queue.clear();
        QVERIFY(line.queue.isEmpty());
        QCOMPARE(line.queue.handedFrames(), 0);
        QCOMPARE(line.queue.consumedFrames(), 0);
        line.queue.append({5, 6});
        QCOMPARE(line.fill(2), (QList<qint16>{5, 6}));
        QCOMPARE(line.queue.takeUsedBlocks(), 1);
    }

    void shut_wakesTheDeviceAndTellsNobody()
    {
        Line line;
        QList<qint16> out;
        std::thread device([&] { out = line.fill(2); });
        line.queue.shut();
        device.join();
        QCOMPARE(out, (QList<qint16>{0, 0}));
        line.queue.append({1, 2});
        QCOMPARE(line.fill(2), (QList<qint16>{0, 0}));
        QCOMPARE(line.told.load(), 0);
    }

    void consumedFrames_growWithTheClockWithinAPortion()
    {
        Line line;
        line.queue.append(QList<qint16>(200002, 1));
        line.fill(200000); // a hundred seconds
        const qint64 first = line.queue.consumedFrames();
        QVERIFY(first < 100000);
        QTRY_VERIFY_WITH_TIMEOUT(line.queue.consumedFrames() > first, 30000);
        line.fill(2);
        QVERIFY(line.queue.consumedFrames() >= 100000);
        QTRY_COMPARE_WITH_TIMEOUT(line.queue.consumedFrames(), 100001, 30000);
    }
};

QTEST_GUILESS_MAIN(TestSampleQueue)
#include "tst_samplequeue.moc"
