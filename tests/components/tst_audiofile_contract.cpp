#include "components/AudioWorlds.h"

#include <QTest>

using namespace zib;

/// What every AudioFile promises, asked of the stand-in and of the engine.
class TestAudioFileContract : public QObject
{
    Q_OBJECT
private slots:
    void open_ofASound_tellsItsFormat_data() { AudioWorld::rows(); }
    void open_ofASound_tellsItsFormat()
    {
        const auto world = AudioWorld::ofRow();
        world->add(world->path("a.wav"), FakeAudioShelf::ramp(5000, 22050, 1));
        const auto reader = world->makeFile();
        QCOMPARE(reader->open(world->path("a.wav")), 0);
        QCOMPARE(reader->status(), 0);
        QCOMPARE(reader->formatRate(), 22050);
        QCOMPARE(reader->formatChannels(), 1);
        QCOMPARE(reader->samplesPerUnit(), 1);
        QCOMPARE(reader->length(), qint64{5000});
    }
    void open_ofNothing_isNegativeAndHarmless_data() { AudioWorld::rows(); }
    void open_ofNothing_isNegativeAndHarmless()
    {
        const auto world = AudioWorld::ofRow();
        const auto reader = world->makeFile();
        QVERIFY(reader->open(world->path("missing.wav")) < 0);
        QVERIFY(reader->status() < 0);
        QCOMPARE(reader->length(), qint64{0});
        QVERIFY(reader->readBlock(1000).isEmpty());
        QCOMPARE(reader->seek(10), qint64{0});
        reader->writeBlock(AudioBlock(QList<qint16>{1, 2}));
        reader->discard();
        reader->close();
        QVERIFY(reader->readBlock(1000).isEmpty());
    }
    void open_afterAFailure_worksAgain_data() { AudioWorld::rows(); }
    void open_afterAFailure_worksAgain()
    {
        const auto world = AudioWorld::ofRow();
        world->add(world->path("a.wav"), FakeAudioShelf::ramp(100));
        const auto reader = world->makeFile();
        QVERIFY(reader->open(world->path("missing.wav")) < 0);
        QCOMPARE(reader->open(world->path("a.wav")), 0);
        QCOMPARE(reader->readBlock(1000).sampleCount(), 200);
    }
    void readBlock_inAnyLength_givesEverySampleOnce_data() { AudioWorld::rows(); }
    void readBlock_inAnyLength_givesEverySampleOnce()
    {
        const auto world = AudioWorld::ofRow();
        const FakeSound sound = FakeAudioShelf::ramp(150'001);
        world->add(world->path("a.wav"), sound);
        for (const qint32 length : {88200, 2, 3, 1'000'000, 131'073}) {
            const auto reader = world->makeFile();
            QCOMPARE(reader->open(world->path("a.wav")), 0);
            QList<qint16> read;
            for (AudioBlock block = reader->readBlock(length); !block.isEmpty();
                 block = reader->readBlock(length)) {
                QVERIFY(block.narrow() != nullptr);
                QVERIFY(block.sampleCount() <= length);
                QCOMPARE(block.sampleCount() % 2, 0);
                read += *block.narrow();
            }
            QCOMPARE(read, sound.samples);
            QCOMPARE(reader->status(), 0);
        }
    }
    void seek_anywhere_continuesThere_data() { AudioWorld::rows(); }
    void seek_anywhere_continuesThere()
    {
        const auto world = AudioWorld::ofRow();
        const FakeSound sound = FakeAudioShelf::ramp(100'000);
        world->add(world->path("a.wav"), sound);
        const auto reader = world->makeFile();
        reader->open(world->path("a.wav"));
        for (const qint64 frame : {50'000LL, 0LL, 99'999LL, 12'345LL}) {
            QCOMPARE(reader->seek(frame), frame);
            const AudioBlock block = reader->readBlock(2);
            QCOMPARE(*block.narrow(), sound.samples.mid(frame * 2, 2));
        }
    }
    void seek_beyondTheEnds_staysWithin_data() { AudioWorld::rows(); }
    void seek_beyondTheEnds_staysWithin()
    {
        const auto world = AudioWorld::ofRow();
        const FakeSound sound = FakeAudioShelf::ramp(1000);
        world->add(world->path("a.wav"), sound);
        const auto reader = world->makeFile();
        reader->open(world->path("a.wav"));
        QCOMPARE(reader->seek(2000), qint64{1000});
        QVERIFY(reader->readBlock(100).isEmpty());
        QCOMPARE(reader->status(), 0);
        QCOMPARE(reader->seek(-5), qint64{0});
        QCOMPARE(*reader->readBlock(100).narrow(), sound.samples.first(100));
    }
    void loss_ofAWholeFile_isNone_data() { AudioWorld::rows(); }
    void loss_ofAWholeFile_isNone()
    {
        const auto world = AudioWorld::ofRow();
        world->add(world->path("a.wav"), FakeAudioShelf::ramp(1000));
        const auto reader = world->makeFile();
        QCOMPARE(reader->loss(), AudioLoss());
        reader->open(world->path("a.wav"));
        while (!reader->readBlock(500).isEmpty())
            QCOMPARE(reader->loss(), AudioLoss());
        QCOMPARE(reader->loss(), AudioLoss());
    }
    void loss_ofACutFile_isItsEnd_data() { AudioWorld::rows(); }
    void loss_ofACutFile_isItsEnd()
    {
        const auto world = AudioWorld::ofRow();
        FakeSound sound = FakeAudioShelf::ramp(1000, 22050, 1);
        sound.loss = {1000, 250};
        world->add(world->path("a.wav"), sound);
        const auto reader = world->makeFile();
        reader->open(world->path("a.wav"));
        QCOMPARE(reader->loss(), sound.loss);
        while (!reader->readBlock(500).isEmpty())
            QCOMPARE(reader->loss(), sound.loss);
        QCOMPARE(reader->loss(), sound.loss);
        QCOMPARE(reader->status(), 0);
        reader->close();
        QCOMPARE(reader->loss(), AudioLoss());
        const auto information = world->makeInformation();
        QVERIFY(information->open(world->path("a.wav")));
        QCOMPARE(information->loss(), sound.loss);
        QVERIFY(!information->open(world->path("missing.wav")));
        QCOMPARE(information->loss(), AudioLoss());
    }
    void close_afterReading_forgetsTheFile_data() { AudioWorld::rows(); }
    void close_afterReading_forgetsTheFile()
    {
        const auto world = AudioWorld::ofRow();
        world->add(world->path("a.wav"), FakeAudioShelf::ramp(1000));
        const auto reader = world->makeFile();
        reader->open(world->path("a.wav"));
        reader->readBlock(100);
        reader->close();
        QCOMPARE(reader->length(), qint64{0});
        QCOMPARE(reader->formatRate(), 0);
        QVERIFY(reader->readBlock(100).isEmpty());
    }
    void close_afterWriting_leavesTheWholeFile_data() { AudioWorld::rows(); }
    void close_afterWriting_leavesTheWholeFile()
    {
        const auto world = AudioWorld::ofRow();
        const QList<qint16> samples = FakeAudioShelf::ramp(100'000).samples;
        const auto writer = world->makeFile();
        writer->setOutputFormat(44100, 2, 16);
        QCOMPARE(writer->create(world->path("out.wav")), 0);
        writer->setInputFormat(44100, 2);
        for (qsizetype at = 0; at < samples.size(); at += 30'000)
            writer->writeBlock(AudioBlock(samples.mid(at, 30'000)));
        QVERIFY(!world->target(world->path("out.wav")));
        writer->close();
        QCOMPARE(writer->status(), 0);
        QCOMPARE(world->target(world->path("out.wav")), std::optional(samples));
    }
    void discard_afterWriting_leavesNothing_data() { AudioWorld::rows(); }
    void discard_afterWriting_leavesNothing()
    {
        const auto world = AudioWorld::ofRow();
        const auto writer = world->makeFile();
        writer->setRateAndChannels(44100, 2);
        QCOMPARE(writer->create(world->path("out.wav")), 0);
        writer->setInputFormat(44100, 2);
        writer->writeBlock(AudioBlock(FakeAudioShelf::ramp(1000).samples));
        writer->discard();
        QVERIFY(!world->target(world->path("out.wav")));
        writer->close();
        QVERIFY(!world->target(world->path("out.wav")));
    }
    void create_whereNothingCanBe_isNegativeAndHarmless_data() { AudioWorld::rows(); }
    void create_whereNothingCanBe_isNegativeAndHarmless()
    {
        const auto world = AudioWorld::ofRow();
        const QString path = world->refusedTarget();
        const auto writer = world->makeFile();
        writer->setOutputFormat(44100, 2, 16);
        QVERIFY(writer->create(path) < 0);
        writer->setInputFormat(44100, 2);
        writer->writeBlock(AudioBlock(QList<qint16>{1, 2}));
        writer->close();
        QVERIFY(writer->status() < 0);
        QVERIFY(!world->target(path));
    }
    void write_ofWideBlocks_roundsThem_data() { AudioWorld::rows(); }
    void write_ofWideBlocks_roundsThem()
    {
        const auto world = AudioWorld::ofRow();
        const auto writer = world->makeFile();
        writer->setOutputFormat(44100, 2, 16);
        writer->create(world->path("out.wav"));
        writer->setInputFormat(44100, 2);
        writer->writeBlock(AudioBlock(QList<float>{0.5F, -0.5F, 2.0F, -2.0F}));
        writer->close();
        const auto samples = world->target(world->path("out.wav"));
        QVERIFY(samples);
        QCOMPARE(samples->size(), 4);
        QVERIFY(std::abs(samples->at(0) - 16384) <= 1);
        QVERIFY(std::abs(samples->at(1) + 16384) <= 1);
        QCOMPARE(samples->at(2), qint16{32767});
        QCOMPARE(samples->at(3), qint16{-32768});
    }
};

QTEST_GUILESS_MAIN(TestAudioFileContract)
#include "tst_audiofile_contract.moc"
