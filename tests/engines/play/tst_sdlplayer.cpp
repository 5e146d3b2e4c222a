#include "engines/play/makers.h"
#include "fakes/DiskPlayer.h"

#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <SDL.h>

#include <csignal>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using zib::AudioBlock;

namespace {

constexpr int kPatienceMs = 60000;

QList<qint16> tone(qint64 samples)
{
    QList<qint16> all(samples);
    for (qint64 i = 0; i < samples; ++i)
        all[i] = static_cast<qint16>(i % 30000 + 1);
    return all;
}

/// A sound device that the test can stop: a pipe that is read only when asked to.
class PipeDevice
{
public:
    PipeDevice()
    {
        mkfifo(QFile::encodeName(path()).constData(), 0600);
        qputenv("SDL_AUDIODRIVER", "disk");
        qputenv("SDL_DISKAUDIODELAY", "0");
        qputenv("SDL_DISKAUDIOFILE", QFile::encodeName(path()));
    }
    ~PipeDevice() { release(); }

    QString path() const { return m_folder.filePath("device"); }
    /// Something listens, but takes no more than the pipe holds.
    void listen() { m_reader = ::open(QFile::encodeName(path()).constData(), O_RDONLY | O_NONBLOCK); }
    /// Takes everything from now on until the writers have gone.
    void release()
    {
        if (m_drain.joinable() || !QFile::exists(path()))
            return;
        if (m_reader < 0)
            listen();
        m_drain = std::jthread([this](const std::stop_token& stop) {
            QByteArray sink(65536, '\0');
            while (!stop.stop_requested())
                if (::read(m_reader, sink.data(), static_cast<std::size_t>(sink.size())) <= 0)
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
        });
    }

private:
    QTemporaryDir m_folder;
    int m_reader = -1;
    std::jthread m_drain;
};

} // namespace

/// The real player on the devices that SDL offers without any hardware.
class TestSdlPlayer : public QObject
{
    Q_OBJECT
private slots:
    void init() { qputenv("SDL_AUDIODRIVER", "dummy"); }

    void open_withoutAnyDevice_isANegativeStatus()
    {
        qputenv("SDL_AUDIODRIVER", "no-such-driver");
        const auto player = zib::makeAudioPlayer();
        QSignalSpy finished(player.get(), &AudioPlayer::PlaybackFinished);
        QCOMPARE(player->position(), 0);
        player->setFormat(44100, 2);
        QVERIFY(player->open() < 0);
        QVERIFY(player->status() < 0);
        player->writeBlock(AudioBlock(tone(100)));
        player->reset();
        player->close();
        QCOMPARE(player->position(), 0);
        QTest::qWait(50);
        QCOMPARE(finished.size(), 0);
    }

    void open_afterTheServerCameBack_works()
    {
        qputenv("SDL_AUDIODRIVER", "no-such-driver");
        const auto player = zib::makeAudioPlayer();
        player->setFormat(44100, 2);
        QVERIFY(player->open() < 0);
        qputenv("SDL_AUDIODRIVER", "dummy");
        QCOMPARE(player->open(), 0);
        QCOMPARE(player->status(), 0);
    }

    void open_leavesTheSignalHandlersAlone()
    {
        struct sigaction before[2];
        struct sigaction during[2];
        sigaction(SIGINT, nullptr, &before[0]);
        sigaction(SIGTERM, nullptr, &before[1]);
        const auto player = zib::makeAudioPlayer();
        player->setFormat(44100, 2);
        QCOMPARE(player->open(), 0);
        sigaction(SIGINT, nullptr, &during[0]);
        sigaction(SIGTERM, nullptr, &during[1]);
        QVERIFY(before[0].sa_handler == during[0].sa_handler);
        QVERIFY(before[1].sa_handler == during[1].sa_handler);
    }

    void open_startsNothingButSound()
    {
        const auto player = zib::makeAudioPlayer();
        player->setFormat(44100, 2);
        QCOMPARE(player->open(), 0);
        QVERIFY(SDL_WasInit(SDL_INIT_AUDIO));
        QVERIFY(!SDL_WasInit(SDL_INIT_VIDEO | SDL_INIT_JOYSTICK | SDL_INIT_HAPTIC | SDL_INIT_SENSOR));
        player->close();
        QVERIFY(!SDL_WasInit(SDL_INIT_AUDIO));
    }

    void open_namesTheProgramToTheMixer()
    {
        const auto player = zib::makeAudioPlayer();
        player->setFormat(44100, 2);
        QCOMPARE(player->open(), 0);
        QCOMPARE(SDL_GetHint(SDL_HINT_AUDIO_DEVICE_APP_NAME), "Zib CD Burner");
        QCOMPARE(SDL_GetHint(SDL_HINT_APP_NAME), "Zib CD Burner");
        QCOMPARE(SDL_GetHint(SDL_HINT_AUDIO_DEVICE_STREAM_NAME), "Music");
        QCOMPARE(SDL_GetHint(SDL_HINT_AUDIO_DEVICE_STREAM_ROLE), "music");
        QVERIFY2(!qEnvironmentVariableIsSet("PULSE_PROP_application.icon_name"),
                 "programs started later must not carry the icon");
    }

    void formats_ofEveryKind_play_data()
    {
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("channels");
        for (const int rate : {8000, 11025, 22050, 44100, 48000, 96000, 192000})
            for (const int channels : {1, 2})
                QTest::addRow("%d Hz, %d", rate, channels) << rate << channels;
        QTest::newRow("surround") << 48000 << 6;
        QTest::newRow("as many as there can be") << 48000 << 8;
    }
    void formats_ofEveryKind_play()
    {
        QFETCH(int, rate);
        QFETCH(int, channels);
        zib::DiskPlayer player(zib::makeAudioPlayer());
        QSignalSpy finished(&player, &AudioPlayer::PlaybackFinished);
        player.setFormat(rate, channels);
        QCOMPARE(player.bufferSize(1000), rate * channels);
        QCOMPARE(player.open(), 0);
        const auto sound = tone(qint64{rate} * channels / 4);
        player.writeBlock(AudioBlock(sound));
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, kPatienceMs);
        QVERIFY(!SDL_WasInit(SDL_INIT_AUDIO)); // The device was given back.
        QVERIFY(player.heard(0) == sound);
        QCOMPARE(player.position(), sound.size() / channels);
    }

    void formats_ofNoSense_areRefused_data()
    {
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("channels");
        QTest::newRow("no rate") << 0 << 2;
        QTest::newRow("negative rate") << -44100 << 2;
        QTest::newRow("no channel") << 44100 << 0;
        QTest::newRow("a channel too many") << 44100 << 9;
        QTest::newRow("many channels") << 44100 << 300;
    }
    void formats_ofNoSense_areRefused()
    {
        QFETCH(int, rate);
        QFETCH(int, channels);
        const auto player = zib::makeAudioPlayer();
        QVERIFY(player->open() < 0); // without any format
        player->setFormat(rate, channels);
        QVERIFY(player->bufferSize(1000) >= 0 || rate < 0);
        QVERIFY(player->open() < 0);
    }

    void lateBlocks_leaveNoHole()
    {
        zib::DiskPlayer player(zib::makeAudioPlayer());
        QSignalSpy finished(&player, &AudioPlayer::PlaybackFinished);
        const auto sound = tone(400000);
        qsizetype next = 0;
        connect(&player, &AudioPlayer::BufferDone, this, [&] {
            QTest::qSleep(20); // far behind a device that takes everything at once
            if (next < sound.size())
                player.writeBlock(AudioBlock(sound.mid(next, 40000)));
            next += 40000;
        });
        player.setFormat(44100, 2);
        QCOMPARE(player.open(), 0);
        player.writeBlock(AudioBlock(sound.mid(next, 40000)));
        next += 40000;
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, kPatienceMs);
        QVERIFY(player.heard(0) == sound);
    }

    void assertionInTheLibrary_doesNotEndTheProgram()
    {
        const auto player = zib::makeAudioPlayer();
        player->setFormat(44100, 2);
        QCOMPARE(player->open(), 0);
        SDL_assert_always(player == nullptr);
    }

    void deviceLost_whilePlaying_finishesWithANegativeStatus()
    {
        const QTemporaryDir folder;
        const QByteArray pipe = QFile::encodeName(folder.filePath("sound"));
        QCOMPARE(::mkfifo(pipe.constData(), 0600), 0);
        const int listener = ::open(pipe.constData(), O_RDONLY | O_NONBLOCK);
        std::signal(SIGPIPE, SIG_IGN);
        qputenv("SDL_AUDIODRIVER", "disk");
        qputenv("SDL_DISKAUDIODELAY", "1");
        qputenv("SDL_DISKAUDIOFILE", pipe);
        const auto player = zib::makeAudioPlayer();
        QSignalSpy finished(player.get(), &AudioPlayer::PlaybackFinished);
        connect(player.get(), &AudioPlayer::BufferDone, this,
                [&] { player->writeBlock(AudioBlock(tone(88200))); });
        player->setFormat(44100, 2);
        QCOMPARE(player->open(), 0);
        player->writeBlock(AudioBlock(tone(88200)));
        player->writeBlock(AudioBlock(tone(88200)));
        ::close(listener); // from here on every portion fails
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, kPatienceMs);
        QVERIFY(player->status() < 0);
        player->close();
        QTest::qWait(200);
        QCOMPARE(finished.size(), 1);
    }

    void receiverThatOpensAgain_whenPlaybackFinished_playsOn()
    {
        zib::DiskPlayer player(zib::makeAudioPlayer());
        int ends = 0;
        connect(&player, &AudioPlayer::PlaybackFinished, this, [&] {
            if (++ends == 3)
                return;
            player.open();
            player.writeBlock(AudioBlock(tone(1000)));
        });
        player.setFormat(44100, 2);
        QCOMPARE(player.open(), 0);
        player.writeBlock(AudioBlock(tone(1000)));
        QTRY_COMPARE_WITH_TIMEOUT(ends, 3, kPatienceMs);
        for (int opening = 0; opening < 3; ++opening)
            QVERIFY(player.heard(opening) == tone(1000));
    }

    void destruction_whilePlaying_isQuiet()
    {
        for (int i = 0; i < 20; ++i) {
            const auto player = zib::makeAudioPlayer();
            player->setFormat(44100, 2);
            QCOMPARE(player->open(), 0);
            player->writeBlock(AudioBlock(tone(88200)));
            QTest::qWait(i);
        }
    }

    void serverThatDoesNotAnswer_costsABoundedTime()
    {
        PipeDevice device; // nobody listens: opening it waits for ever
        const auto player = zib::makeAudioPlayer();
        player->setFormat(44100, 2);
        QVERIFY(player->open() < 0);
        QVERIFY(player->open() < 0);
        device.release();
        QTRY_COMPARE_WITH_TIMEOUT(player->open(), 0, kPatienceMs);
    }

    void serverThatStalls_finishesAndLetsTheProgramGoOn()
    {
        PipeDevice device;
        device.listen();
        const auto player = zib::makeAudioPlayer();
        QSignalSpy finished(player.get(), &AudioPlayer::PlaybackFinished);
        player->setFormat(44100, 2);
        QCOMPARE(player->open(), 0);
        player->writeBlock(AudioBlock(tone(44100 * 20)));
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, kPatienceMs);
        QVERIFY(player->status() < 0);
        device.release();
        QTRY_COMPARE_WITH_TIMEOUT(player->open(), 0, kPatienceMs);
        player->close();
    }
};

QTEST_GUILESS_MAIN(TestSdlPlayer)
#include "tst_sdlplayer.moc"
