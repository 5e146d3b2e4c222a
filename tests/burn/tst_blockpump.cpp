#include "burn/BlockPump.h"

#include "common/Worker.h"
#include "fakes/FakeAudioFile.h"
#include "fakes/FakeAudioShelf.h"

#include <QTest>

#include <algorithm>
#include <atomic>
#include <memory>

using namespace zib;

namespace {

constexpr int kSamples = 200;
constexpr int kBlocks = 10;

/// A sound of ten blocks on its way from a reader to a writer.
struct Bench
{
    Bench()
    {
        shelf.sounds.insert("/in", FakeAudioShelf::ramp(kSamples / 2 * kBlocks));
        shelf.onRead = [this] { ++reads; };
        reader->open("/in");
        writer->create("/nowhere/out");
    }
    void begin() { pump = std::make_unique<BlockPump>(worker, reader, writer, kSamples); }
    qint64 next()
    {
        return pump->next(&owner, [] { return true; });
    }

    FakeAudioShelf shelf;
    std::shared_ptr<AudioFile> reader = std::make_shared<FakeAudioFile>(shelf);
    std::shared_ptr<AudioFile> writer = std::make_shared<FakeAudioFile>(shelf);
    std::atomic<int> reads = 0;
    QObject owner;
    Worker worker;
    std::unique_ptr<BlockPump> pump;
};

} // namespace

/// What passes between the thread that converts and the window that tells of it.
class TestBlockPump : public QObject
{
    Q_OBJECT
private slots:
    void blocks_areThreeAheadOfTheWindow_andNoMore()
    {
        Bench bench;
        bench.begin();
        for (int taken = 0; taken < kBlocks; ++taken) {
            const int ahead = std::min(taken + 3, kBlocks + 1); // the last time there is nothing to read
            QTRY_COMPARE(bench.reads.load(), ahead);
            QTest::qWait(20);
            QCOMPARE(bench.reads.load(), ahead);
            QCOMPARE(bench.next(), kSamples);
        }
        QCOMPARE(bench.next(), 0);
    }
    void writerThatFails_endsIt()
    {
        Bench bench;
        bench.shelf.blocksUntilDiskFull = 1;
        bench.begin();
        QCOMPARE(bench.next(), kSamples);
        QCOMPARE(bench.next(), kSamples);
        QCOMPARE(bench.next(), 0);
        QCOMPARE(bench.reads.load(), 2);
    }
    void next_whenNobodyGoesOn_isNothing()
    {
        Bench bench;
        bench.begin();
        QCOMPARE(bench.pump->next(&bench.owner, [] { return false; }), 0);
        QCOMPARE(bench.next(), kSamples);
    }
    void pumpThatIsLeft_endsItsThread()
    {
        Bench bench;
        bench.begin();
        QTRY_COMPARE(bench.reads.load(), 3);
        bench.pump.reset();
        QCOMPARE(bench.worker.ask<int>(
                     &bench.owner, [] { return 1; }, std::chrono::seconds(30)),
                 std::optional<int>(1));
        QCOMPARE(bench.reads.load(), 3);
    }
};

QTEST_GUILESS_MAIN(TestBlockPump)
#include "tst_blockpump.moc"
