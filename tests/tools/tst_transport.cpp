#include "tools/Stage.h"

#include "tools/Transport.h"

#include <QSignalSpy>

#include <limits>

using zib::AudioBlock;
using zib::Transport;

namespace {

/// A file as long as a test likes, whose samples tell their own place; nothing of it is held.
class EndlessFile final : public AudioFile
{
public:
    EndlessFile(qint64 frames, int rateHz, int channels)
        : m_length(frames), m_rateHz(rateHz), m_channels(channels)
    {
    }

    int open(const QString&) override { return 0; }
    int create(const QString&) override { return -1; }
    int status() const override { return 0; }
    void setOutputFormat(int, int, int) override {}
    void setRateAndChannels(int, int) override {}
    void setInputFormat(int, int) override {}
    int formatRate() const override { return m_rateHz; }
    int formatChannels() const override { return m_channels; }
    qint64 length() const override { return m_length; }
    int samplesPerUnit() const override { return m_channels; }
    void setSixteenBitBlocks(bool) override {}
    AudioBlock readBlock(qint32 samples) override
    {
        const qint64 frames = std::min<qint64>(samples / m_channels, m_length - m_next);
        QList<qint16> block(frames * m_channels);
        for (qint64 i = 0; i < block.size(); ++i)
            block[i] = sampleAt(m_next * m_channels + i);
        m_next += frames;
        return AudioBlock(block);
    }
    qint64 seek(qint64 frame) override { return m_next = std::clamp<qint64>(frame, 0, m_length); }
    void writeBlock(const AudioBlock&) override {}
    void close() override { m_next = 0; }
    void discard() override {}

    static qint16 sampleAt(qint64 place) { return static_cast<qint16>(place % 32749); }

private:
    const qint64 m_length;
    const int m_rateHz;
    const int m_channels;
    qint64 m_next = 0;
};

} // namespace

/// The pump and its rules, without a window.
class TestTransport : public QObject
{
    Q_OBJECT

    /// Connects what a window would connect.
    static void wire(Transport& transport)
    {
        connect(&transport.player(), &AudioPlayer::BufferDone, &transport.player(),
                [&transport] { transport.FeedBlock(); });
    }

private slots:
    void construction_asksTheReaderForSixteenBits()
    {
        zib::Stage stage;
        const Transport transport(stage.desk.components);
        QCOMPARE(stage.shelf.calls, QStringList{"sixteen on"});
    }

    void playFile_queuesTwoSecondsAtOnce()
    {
        zib::Stage stage;
        stage.addSound("/m/a.wav", 10000, 1000, 2);
        Transport transport(stage.desk.components);
        transport.PlayFile("/m/a.wav");
        QVERIFY(transport.isPlaying());
        QCOMPARE(CurrentFile, QString("/m/a.wav"));
        QCOMPARE(stage.player->calls, (QStringList{"format 1000 2", "open", "write 2000", "write 2000"}));
    }

    void playFile_whatCannotBeOpened_endsSilently()
    {
        zib::Stage stage;
        Transport transport(stage.desk.components);
        transport.PlayFile("/m/missing.wav");
        QVERIFY(!transport.isPlaying());
        QCOMPARE(CurrentFile, QString("/m/missing.wav"));
        QVERIFY(stage.player->calls.isEmpty());
    }

    void playFile_ofNoLength_endsSilentlyAndClosesIt()
    {
        zib::Stage stage;
        stage.addSound("/m/empty.wav", 0);
        Transport transport(stage.desk.components);
        transport.PlayFile("/m/empty.wav");
        QVERIFY(!transport.isPlaying());
        QVERIFY(stage.player->calls.isEmpty());
        QVERIFY(stage.shelf.calls.contains("close /m/empty.wav"));
    }

    void playFile_withoutADevice_closesTheReader()
    {
        zib::Stage stage;
        stage.addSound("/m/a.wav", 5000);
        Transport transport(stage.desk.components);
        stage.player->nextOpen = -1;
        transport.PlayFile("/m/a.wav");
        QVERIFY(!transport.isPlaying());
        QVERIFY(stage.shelf.calls.contains("close /m/a.wav"));
    }

    void feedBlock_aSingleSample_isNotPlayed()
    {
        zib::Stage stage;
        stage.addSound("/m/a.wav", 1001);
        Transport transport(stage.desk.components);
        transport.PlayFile("/m/a.wav");
        QCOMPARE(stage.player->queuedBlocks(), 1);
        QCOMPARE(stage.player->calls.last(), QString("write 1000"));
    }

    void feedBlock_keepsTwoBuffersQueuedToTheEnd()
    {
        zib::Stage stage;
        stage.addSound("/m/a.wav", 4500);
        Transport transport(stage.desk.components);
        wire(transport);
        QSignalSpy finished(stage.player, &AudioPlayer::PlaybackFinished);
        transport.PlayFile("/m/a.wav");
        stage.player->play(1000);
        QCOMPARE(stage.player->queuedBlocks(), 2);
        stage.player->play(3500);
        QCOMPARE(finished.size(), 1);
        QCOMPARE(stage.player->heard, stage.shelf.sounds["/m/a.wav"].samples);
    }

    void stopPlaying_closesBothAndUnticksPause()
    {
        zib::Stage stage;
        stage.addSound("/m/a.wav", 5000);
        Transport transport(stage.desk.components);
        transport.PlayFile("/m/a.wav");
        transport.TogglePause();
        transport.StopPlaying();
        QVERIFY(!transport.isPlaying());
        QVERIFY(!transport.pauseTicked());
        QVERIFY2(transport.isPaused(), "a stop leaves the paused flag as it is");
        QVERIFY(!stage.player->isOpen());
        QVERIFY(stage.shelf.calls.contains("close /m/a.wav"));
    }

    void togglePause_whenStopped_doesNothing()
    {
        zib::Stage stage;
        Transport transport(stage.desk.components);
        transport.TogglePause();
        QVERIFY(!transport.isPaused());
        QVERIFY(!transport.pauseTicked());
        QVERIFY(stage.player->calls.isEmpty());
    }

    void togglePause_remembersThePlaceAndFreesTheDevice()
    {
        zib::Stage stage;
        stage.addSound("/m/a.wav", 5000);
        Transport transport(stage.desk.components);
        wire(transport);
        transport.PlayFile("/m/a.wav");
        stage.player->play(1234);
        transport.TogglePause();
        QVERIFY(transport.pauseTicked());
        QVERIFY(!stage.player->isOpen());
        QCOMPARE(transport.playPos(), 1234);

        stage.player->calls.clear();
        transport.TogglePause();
        QVERIFY(!transport.pauseTicked());
        QVERIFY(!transport.isPaused());
        QCOMPARE(stage.player->calls, (QStringList{"open", "write 1000", "write 1000"}));
        stage.player->play(10000);
        QCOMPARE(stage.player->heard, stage.shelf.sounds["/m/a.wav"].samples);
    }

    void togglePause_whenTheDeviceHasGoneMeanwhile_stops()
    {
        zib::Stage stage;
        stage.addSound("/m/a.wav", 5000);
        Transport transport(stage.desk.components);
        transport.PlayFile("/m/a.wav");
        transport.TogglePause();
        stage.player->nextOpen = -1;
        transport.TogglePause();
        QVERIFY(!transport.isPlaying());
        QVERIFY(!transport.pauseTicked());
    }

    void togglePause_afterAStopWhilePaused_resumesInsteadOfPausing()
    {
        zib::Stage stage;
        stage.addSound("/m/a.wav", 9000);
        Transport transport(stage.desk.components);
        wire(transport);
        transport.PlayFile("/m/a.wav");
        transport.TogglePause();
        transport.StopPlaying();
        transport.PlayFile("/m/a.wav");
        QVERIFY(!transport.pauseTicked());
        stage.player->play(2500);
        stage.player->calls.clear();
        stage.player->heard.clear();
        transport.TogglePause();
        QVERIFY(!transport.pauseTicked());
        QVERIFY(!transport.isPaused());
        QVERIFY(stage.player->isOpen());
        QCOMPARE(stage.player->calls, (QStringList{"open", "write 1000", "write 1000"}));
        stage.player->play(1000);
        QCOMPARE(stage.player->heard, stage.shelf.sounds["/m/a.wav"].samples.mid(0, 1000));
    }

    void seekToSlider_roundsHalfToEvenAndRefills_data()
    {
        QTest::addColumn<int>("slider");
        QTest::addColumn<qint64>("length");
        QTest::addColumn<qint64>("place");
        QTest::newRow("start") << 0 << qint64{5000} << qint64{0};
        QTest::newRow("end") << 100 << qint64{5000} << qint64{5000};
        QTest::newRow("0.5 to 0") << 1 << qint64{50} << qint64{0};
        QTest::newRow("1.5 to 2") << 3 << qint64{50} << qint64{2};
        QTest::newRow("2.5 to 2") << 5 << qint64{50} << qint64{2};
        QTest::newRow("33 percent") << 33 << qint64{4999} << qint64{1650};
    }
    void seekToSlider_roundsHalfToEvenAndRefills()
    {
        QFETCH(int, slider);
        QFETCH(qint64, length);
        zib::Stage stage;
        stage.addSound("/m/a.wav", length);
        Transport transport(stage.desk.components);
        transport.PlayFile("/m/a.wav");
        stage.player->calls.clear();
        transport.SeekToSlider(slider);
        QTEST(transport.playPos(), "place");
        QCOMPARE(stage.player->calls.first(), QString("reset"));
        const qint64 left = std::min<qint64>(length - transport.playPos(), 2000);
        stage.player->heard.clear();
        stage.player->play(2000);
        QCOMPARE(stage.player->heard, stage.shelf.sounds["/m/a.wav"].samples.mid(transport.playPos(), left));
    }

    void seekToSlider_whenTheProductOverflows_changesNothing()
    {
        zib::Stage stage;
        const qint64 tenMinutes = qint64{10} * 60 * 44100;
        stage.desk.components.makeFile = [=] { return std::make_unique<EndlessFile>(tenMinutes, 44100, 2); };
        Transport transport(stage.desk.components);
        transport.PlayFile("/m/long.mp3");
        stage.player->calls.clear();
        transport.SeekToSlider(82); // 82 x 26,460,000 is beyond 2,147,483,647
        QVERIFY(stage.player->calls.isEmpty());
        QCOMPARE(transport.playPos(), 0);
        transport.SeekToSlider(81);
        QCOMPARE(transport.playPos(), tenMinutes / 100 * 81);
    }

    void seekToSlider_whilePaused_movesTheResumePlace()
    {
        zib::Stage stage;
        stage.addSound("/m/a.wav", 5000);
        Transport transport(stage.desk.components);
        transport.PlayFile("/m/a.wav");
        transport.TogglePause();
        transport.SeekToSlider(50);
        QCOMPARE(stage.player->queuedBlocks(), 0);
        transport.TogglePause();
        stage.player->play(100);
        QCOMPARE(stage.player->heard, stage.shelf.sounds["/m/a.wav"].samples.mid(2500, 100));
    }

    void drag_inATenHourFile_reachesEveryPlace()
    {
        zib::Stage stage;
        const qint64 tenHours = qint64{10} * 3600 * 44100;
        stage.desk.components.makeFile = [=] { return std::make_unique<EndlessFile>(tenHours, 44100, 2); };
        Transport transport(stage.desk.components);
        transport.PlayFile("/m/ten-hours.mp3");
        transport.beginDrag();
        transport.endDrag(97);
        QCOMPARE(transport.playPos(), tenHours / 100 * 97);
        stage.player->play(10);
        QCOMPARE(stage.player->heard.first(), EndlessFile::sampleAt(tenHours / 100 * 97 * 2));
        QCOMPARE(transport.sliderFor(0), std::optional(97));
        QCOMPARE(transport.sliderFor(tenHours / 100), std::optional(98));
    }

    void drag_whileStopped_changesNothing()
    {
        zib::Stage stage;
        stage.addSound("/m/a.wav", 5000);
        Transport transport(stage.desk.components);
        transport.PlayFile("/m/a.wav");
        transport.StopPlaying();
        stage.player->calls.clear();
        stage.shelf.calls.clear();
        transport.beginDrag();
        transport.endDrag(50);
        QVERIFY(stage.player->calls.isEmpty());
        QVERIFY(stage.shelf.calls.isEmpty());
        transport.PlayFile("/m/a.wav");
        QVERIFY2(transport.sliderFor(0), "the drag has ended");
    }

    void sliderFor_whileDragging_isNothing()
    {
        zib::Stage stage;
        stage.addSound("/m/a.wav", 5000);
        Transport transport(stage.desk.components);
        transport.PlayFile("/m/a.wav");
        transport.beginDrag();
        QVERIFY(!transport.sliderFor(100));
    }

    void sliderFor_roundsHalfToEvenAndStopsAtTheEnd()
    {
        zib::Stage stage;
        stage.addSound("/m/a.wav", 200);
        Transport transport(stage.desk.components);
        QVERIFY2(!transport.sliderFor(1), "nothing is open");
        transport.PlayFile("/m/a.wav");
        QCOMPARE(transport.sliderFor(1), std::optional(0));
        QCOMPARE(transport.sliderFor(3), std::optional(2));
        QCOMPARE(transport.sliderFor(5), std::optional(2));
        QCOMPARE(transport.sliderFor(900), std::optional(100));
    }

    void oneHour_inPortionsOfAFastClock_losesNotOneSample()
    {
        zib::Stage stage;
        const qint64 hour = qint64{3600} * 44100 + 17;
        stage.desk.components.makeFile = [=] { return std::make_unique<EndlessFile>(hour, 44100, 2); };
        Transport transport(stage.desk.components);
        wire(transport);
        bool ended = false;
        qint64 last = -1;
        connect(stage.player, &AudioPlayer::PlaybackFinished, this, [&] { ended = true; });
        connect(stage.player, &AudioPlayer::PositionChanged, this, [&](qint64 frames) { last = frames; });
        transport.PlayFile("/m/hour.mp3");

        qint64 place = 0;
        bool inOrder = true;
        qsizetype mostQueued = 0;
        while (!ended) { // 50 ms of a clock that runs twenty times too fast
            stage.player->play(44100);
            for (const qint16 sample : std::as_const(stage.player->heard))
                inOrder = inOrder && sample == EndlessFile::sampleAt(place++);
            stage.player->heard.clear();
            stage.player->calls.clear();
            mostQueued = std::max(mostQueued, stage.player->queuedBlocks());
        }
        QVERIFY(inOrder);
        QCOMPARE(place, hour * 2);
        QCOMPARE(last, hour);
        QVERIFY(mostQueued <= 2);
    }
};

QTEST_GUILESS_MAIN(TestTransport)
#include "tst_transport.moc"
