#include "engines/play/makers.h"
#include "fakes/DiskPlayer.h"
#include "fakes/FakeAudioPlayer.h"
#include "fakes/FakeAudioShelf.h"

#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <memory>

using zib::AudioBlock;

namespace {

constexpr int kPatienceMs = 60000;

QList<qint16> ramp(qint64 frames)
{
    QList<qint16> samples = zib::FakeAudioShelf::ramp(frames).samples;
    for (qint16& sample : samples)
        sample = static_cast<qint16>(sample % 30000 + 1); // no zeros, so that silence shows
    return samples;
}

/// One kind of player, whose device consumes by itself while events are processed.
class Subject
{
public:
    explicit Subject(const QString& kind)
    {
        if (kind == "fake") {
            auto fake = std::make_unique<zib::FakeAudioPlayer>();
            m_fake = fake.get();
            QObject::connect(&m_clock, &QTimer::timeout, m_fake, [this] { m_fake->play(2205); });
            m_clock.start(1);
            player = std::move(fake);
        } else {
            auto disk = std::make_unique<zib::DiskPlayer>(zib::makeAudioPlayer(), 1);
            m_disk = disk.get();
            player = std::move(disk);
        }
    }

    /// All samples heard, over all openings.
    QList<qint16> heard() const
    {
        if (m_fake)
            return m_fake->heard;
        QList<qint16> all;
        for (int opening = 0; opening < m_disk->openings(); ++opening)
            all << m_disk->heard(opening);
        return all;
    }

    std::unique_ptr<AudioPlayer> player;

private:
    zib::FakeAudioPlayer* m_fake = nullptr;
    zib::DiskPlayer* m_disk = nullptr;
    QTimer m_clock;
};

} // namespace

/// What every player keeps, the fake one as the real one.
class TestAudioPlayerContract : public QObject
{
    Q_OBJECT

    static void players()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("fake") << "fake";
        QTest::newRow("engine") << "engine";
    }

private slots:
    void bufferSize_inTheSetFormat_countsSamplesOfAllChannels_data() { players(); }
    void bufferSize_inTheSetFormat_countsSamplesOfAllChannels()
    {
        QFETCH(QString, kind);
        Subject subject(kind);
        subject.player->setFormat(44100, 2);
        QCOMPARE(subject.player->bufferSize(1000), 88200);
        subject.player->setFormat(8000, 1);
        QCOMPARE(subject.player->bufferSize(500), 4000);
    }

    void open_withoutAFormat_isANegativeStatus_data() { players(); }
    void open_withoutAFormat_isANegativeStatus()
    {
        QFETCH(QString, kind);
        Subject subject(kind);
        QVERIFY(subject.player->open() < 0);
        QVERIFY(subject.player->status() < 0);
    }

    void blocks_queuedAhead_areHeardInOrderAndTold_data() { players(); }
    void blocks_queuedAhead_areHeardInOrderAndTold()
    {
        QFETCH(QString, kind);
        Subject subject(kind);
        QSignalSpy done(subject.player.get(), &AudioPlayer::BufferDone);
        QSignalSpy finished(subject.player.get(), &AudioPlayer::PlaybackFinished);
        const QList<qint16> sound = ramp(30000);
        subject.player->setFormat(44100, 2);
        QCOMPARE(subject.player->open(), 0);
        subject.player->writeBlock(AudioBlock(sound.mid(0, 20000)));
        subject.player->writeBlock(AudioBlock(sound.mid(20000)));
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, kPatienceMs);
        QCOMPARE(done.size(), 2);
        QCOMPARE(subject.player->status(), 0);
        QCOMPARE(subject.player->position(), 30000);
        subject.player->close();
        QVERIFY(subject.heard() == sound);
    }

    void expecting_holdsTheEndUntilTheBlockComes_data() { players(); }
    void expecting_holdsTheEndUntilTheBlockComes()
    {
        QFETCH(QString, kind);
        Subject subject(kind);
        QSignalSpy done(subject.player.get(), &AudioPlayer::BufferDone);
        QSignalSpy finished(subject.player.get(), &AudioPlayer::PlaybackFinished);
        const QList<qint16> sound = ramp(30000);
        subject.player->setFormat(44100, 2);
        QCOMPARE(subject.player->open(), 0);
        subject.player->setExpecting(true);
        subject.player->writeBlock(AudioBlock(sound.mid(0, 20000)));
        QTRY_COMPARE_WITH_TIMEOUT(done.size(), 1, kPatienceMs);
        QTest::qWait(300);
        QCOMPARE(finished.size(), 0);
        subject.player->writeBlock(AudioBlock(sound.mid(20000)));
        subject.player->setExpecting(false);
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, kPatienceMs);
        subject.player->close();
        QVERIFY(subject.heard() == sound);
    }

    void expecting_inVain_endsWhenItIsTakenBack_data() { players(); }
    void expecting_inVain_endsWhenItIsTakenBack()
    {
        QFETCH(QString, kind);
        Subject subject(kind);
        QSignalSpy done(subject.player.get(), &AudioPlayer::BufferDone);
        QSignalSpy finished(subject.player.get(), &AudioPlayer::PlaybackFinished);
        subject.player->setFormat(44100, 2);
        QCOMPARE(subject.player->open(), 0);
        subject.player->setExpecting(true);
        subject.player->writeBlock(AudioBlock(ramp(20000)));
        QTRY_COMPARE_WITH_TIMEOUT(done.size(), 1, kPatienceMs);
        subject.player->setExpecting(false);
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, kPatienceMs);
        QCOMPARE(subject.player->status(), 0);
    }

    void blocks_writtenOnBufferDone_joinWithoutAGap_data() { players(); }
    void blocks_writtenOnBufferDone_joinWithoutAGap()
    {
        QFETCH(QString, kind);
        Subject subject(kind);
        const QList<qint16> sound = ramp(200000);
        qsizetype next = 0;
        const auto feed = [&] {
            if (next < sound.size())
                subject.player->writeBlock(AudioBlock(sound.mid(next, 7000)));
            next += 7000;
        };
        connect(subject.player.get(), &AudioPlayer::BufferDone, this, feed);
        QSignalSpy finished(subject.player.get(), &AudioPlayer::PlaybackFinished);
        subject.player->setFormat(44100, 2);
        QCOMPARE(subject.player->open(), 0);
        feed();
        feed();
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, kPatienceMs);
        subject.player->close();
        QVERIFY(subject.heard() == sound);
    }

    void position_whilePlaying_neverFallsAndIsTold_data() { players(); }
    void position_whilePlaying_neverFallsAndIsTold()
    {
        QFETCH(QString, kind);
        Subject subject(kind);
        QList<qint64> told;
        connect(subject.player.get(), &AudioPlayer::PositionChanged, this,
                [&](qint64 frames) { told << frames; });
        connect(subject.player.get(), &AudioPlayer::BufferDone, this,
                [&] { subject.player->writeBlock(AudioBlock(ramp(44100))); });
        subject.player->setFormat(44100, 2);
        QCOMPARE(subject.player->open(), 0);
        subject.player->writeBlock(AudioBlock(ramp(44100)));
        QTRY_VERIFY_WITH_TIMEOUT(told.size() >= 3, kPatienceMs);
        QVERIFY(std::is_sorted(told.begin(), told.end()));
        QVERIFY(told.last() > 0);
    }

    void nothingQueued_afterOpen_finishes_data() { players(); }
    void nothingQueued_afterOpen_finishes()
    {
        QFETCH(QString, kind);
        Subject subject(kind);
        QSignalSpy finished(subject.player.get(), &AudioPlayer::PlaybackFinished);
        subject.player->setFormat(44100, 2);
        QCOMPARE(subject.player->open(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, kPatienceMs);
        QCOMPARE(subject.player->position(), 0);
    }

    void reset_dropsWhatIsQueuedAndCountsAnew_data() { players(); }
    void reset_dropsWhatIsQueuedAndCountsAnew()
    {
        QFETCH(QString, kind);
        Subject subject(kind);
        QSignalSpy done(subject.player.get(), &AudioPlayer::BufferDone);
        QSignalSpy finished(subject.player.get(), &AudioPlayer::PlaybackFinished);
        const QList<qint16> sound = ramp(1000);
        subject.player->setFormat(44100, 2);
        QCOMPARE(subject.player->open(), 0);
        subject.player->writeBlock(AudioBlock(ramp(10 * 44100)));
        subject.player->writeBlock(AudioBlock(ramp(10 * 44100)));
        subject.player->reset();
        QCOMPARE(subject.player->position(), 0);
        subject.player->writeBlock(AudioBlock(sound));
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, kPatienceMs);
        QCOMPARE(done.size(), 1);
        QCOMPARE(subject.player->position(), 1000);
        QVERIFY(subject.heard().endsWith(sound.last()));
        QVERIFY(subject.heard().size() < 20 * 44100);
    }

    void reset_withNothingAfterIt_finishes_data() { players(); }
    void reset_withNothingAfterIt_finishes()
    {
        QFETCH(QString, kind);
        Subject subject(kind);
        QSignalSpy finished(subject.player.get(), &AudioPlayer::PlaybackFinished);
        subject.player->setFormat(44100, 2);
        QCOMPARE(subject.player->open(), 0);
        subject.player->writeBlock(AudioBlock(ramp(10 * 44100)));
        subject.player->reset();
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, kPatienceMs);
    }

    void close_whilePlaying_saysNothingMore_data() { players(); }
    void close_whilePlaying_saysNothingMore()
    {
        QFETCH(QString, kind);
        Subject subject(kind);
        QSignalSpy moved(subject.player.get(), &AudioPlayer::PositionChanged);
        subject.player->setFormat(44100, 2);
        QCOMPARE(subject.player->open(), 0);
        subject.player->writeBlock(AudioBlock(ramp(60 * 44100)));
        QTRY_VERIFY_WITH_TIMEOUT(!moved.isEmpty(), kPatienceMs);
        subject.player->close();
        const qint64 ended = subject.player->position();
        QSignalSpy done(subject.player.get(), &AudioPlayer::BufferDone);
        QSignalSpy finished(subject.player.get(), &AudioPlayer::PlaybackFinished);
        moved.clear();
        QTest::qWait(300);
        QCOMPARE(done.size() + finished.size() + moved.size(), 0);
        QVERIFY(ended > 0);
        QCOMPARE(subject.player->position(), ended);
        QVERIFY(subject.heard() == ramp(ended));
    }

    void writeBlock_withoutADevice_isDropped_data() { players(); }
    void writeBlock_withoutADevice_isDropped()
    {
        QFETCH(QString, kind);
        Subject subject(kind);
        QSignalSpy finished(subject.player.get(), &AudioPlayer::PlaybackFinished);
        subject.player->setFormat(44100, 2);
        subject.player->writeBlock(AudioBlock(ramp(1000)));
        subject.player->reset();
        QCOMPARE(subject.player->open(), 0);
        subject.player->writeBlock(AudioBlock(QList<float>(1000, 0.5F)));
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, kPatienceMs);
        QCOMPARE(subject.player->position(), 0);
        QVERIFY(subject.heard().isEmpty());
    }

    void open_whileOpen_startsAnew_data() { players(); }
    void open_whileOpen_startsAnew()
    {
        QFETCH(QString, kind);
        Subject subject(kind);
        QSignalSpy finished(subject.player.get(), &AudioPlayer::PlaybackFinished);
        subject.player->setFormat(44100, 2);
        QCOMPARE(subject.player->open(), 0);
        subject.player->writeBlock(AudioBlock(ramp(60 * 44100)));
        QCOMPARE(subject.player->open(), 0);
        subject.player->writeBlock(AudioBlock(ramp(500)));
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, kPatienceMs);
        QCOMPARE(subject.player->position(), 500);
    }
};

QTEST_GUILESS_MAIN(TestAudioPlayerContract)
#include "tst_audioplayer_contract.moc"
