#include "common/Errands.h"
#include "engines/audio/AudioKit.h"
#include "engines/audio/makers.h"
#include "engines/play/makers.h"
#include "fakes/DiskPlayer.h"
#include "fakes/FakeSeams.h"

#include "tools/frmMP3ToWAV.h"
#include "tools/frmPlay.h"
#include "tools/frmPlayer.h"

#include <QAbstractButton>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QSignalSpy>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <csignal>
#include <memory>
#include <sys/resource.h>

namespace {

constexpr int kPatienceMs = 120000;

/// The windows on the real engines; what would be heard is captured.
struct Studio
{
    /// @param delayMs how long the device takes for 50 ms of sound.
    explicit Studio(int delayMs = 0)
    {
        zib::Errands::setPatience(std::chrono::minutes(2)); // a call's effect is there when it returns
        desk.components.makeFile = zib::makeAudioFile;
        desk.components.makeInformation = zib::makeAudioInformation;
        desk.components.makePlayer = [this, delayMs] {
            auto made = std::make_unique<zib::DiskPlayer>(zib::makeAudioPlayer(), delayMs);
            player = made.get();
            return made;
        };
    }

    QString wav(const QString& name, qint64 frames, int channels = 2, int rateHz = 44100) const
    {
        const QString path = folder.filePath(name);
        zib::kit::write(path, zib::kit::wav16(zib::kit::music16(frames, channels, rateHz), channels, rateHz));
        return path;
    }
    /// The file as the reader gives it, from first to last sample.
    static QList<qint16> decoded(const QString& path)
    {
        const auto reader = zib::makeAudioFile();
        reader->setSixteenBitBlocks(true);
        reader->open(path);
        return zib::kit::readNarrow(*reader);
    }
    static QAbstractButton* button(const QWidget& window, const char* name)
    {
        return window.findChild<QAbstractButton*>(name);
    }
    bool isEnded() const { return ends->size() > 0; }
    void watch() { ends = std::make_unique<QSignalSpy>(player, &AudioPlayer::PlaybackFinished); }

    zib::FakeDesk desk;
    QTemporaryDir folder;
    zib::DiskPlayer* player = nullptr;
    std::unique_ptr<QSignalSpy> ends;
};

/// Lets no file grow beyond @p bytes while it lives, as a disc without room would.
class SmallDisk
{
public:
    explicit SmallDisk(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit small{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    Q_DISABLE_COPY_MOVE(SmallDisk)

private:
    void (*m_handler)(int);
    rlimit m_before{};
};

/// Where @p part begins in @p whole, in samples; -1 when it is no part of it.
qsizetype placeOf(const QList<qint16>& part, const QList<qint16>& whole)
{
    const auto found = std::search(whole.begin(), whole.end(), part.begin(), part.end());
    return found == whole.end() ? -1 : found - whole.begin();
}

} // namespace

/// What is heard is what the files hold: windows, decoder and device together.
class TestSound : public QObject
{
    Q_OBJECT
private slots:
    void wholeFile_isHeardSampleForSample_data()
    {
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("channels");
        QTest::newRow("compact disc") << 44100 << 2;
        QTest::newRow("48 kHz") << 48000 << 2;
        QTest::newRow("mono 22 kHz") << 22050 << 1;
        QTest::newRow("mono 8 kHz") << 8000 << 1;
    }
    void wholeFile_isHeardSampleForSample()
    {
        QFETCH(int, rate);
        QFETCH(int, channels);
        Studio studio;
        const QString path = studio.wav("a.wav", rate * 7 + 123, channels, rate);
        zib::setCurrentFile(path);
        const frmPlay window(studio.desk.services);
        studio.watch();
        QTRY_VERIFY_WITH_TIMEOUT(studio.isEnded(), kPatienceMs);
        QVERIFY(studio.player->heard(0) == zib::DiskPlayer::trimmed(Studio::decoded(path)));
    }

    void wholeMp3_isHeardSampleForSample()
    {
        const QString path = zib::kit::lameFile("sound-a.mp3", 44100 * 9, 2, 44100, {"-b", "128"});
        if (path.isEmpty())
            QSKIP("lame is not installed");
        Studio studio;
        zib::setCurrentFile(path);
        const frmPlay window(studio.desk.services);
        studio.watch();
        QTRY_VERIFY_WITH_TIMEOUT(studio.isEnded(), kPatienceMs);
        QVERIFY(studio.player->heard(0) == zib::DiskPlayer::trimmed(zib::kit::libraryDecode(path)));
    }

    void pauseAndResume_loseAndRepeatNothing()
    {
        Studio studio(4);
        const QString path = studio.wav("a.wav", 44100 * 20);
        zib::setCurrentFile(path);
        const frmPlay window(studio.desk.services);
        studio.watch();
        QSignalSpy moved(studio.player, &AudioPlayer::PositionChanged);
        for (int pause = 0; pause < 3; ++pause) {
            moved.clear();
            QTRY_VERIFY_WITH_TIMEOUT(!moved.isEmpty() || studio.isEnded(), kPatienceMs);
            Studio::button(window, "chkPause")->click();
            Studio::button(window, "chkPause")->click();
        }
        QTRY_VERIFY_WITH_TIMEOUT(studio.isEnded(), kPatienceMs);
        QList<qint16> heard;
        for (int opening = 0; opening < studio.player->openings(); ++opening)
            heard << studio.player->heard(opening);
        QVERIFY(studio.player->openings() > 1);
        QVERIFY(heard == zib::DiskPlayer::trimmed(Studio::decoded(path)));
    }

    void seek_goesOnExactlyThere_data()
    {
        QTest::addColumn<int>("slider");
        QTest::newRow("back to the start") << 0;
        QTest::newRow("forward") << 83;
        QTest::newRow("near the end") << 99;
    }
    void seek_goesOnExactlyThere()
    {
        QFETCH(int, slider);
        Studio studio(4);
        const QString path = studio.wav("a.wav", 44100 * 30 + 17);
        zib::setCurrentFile(path);
        const frmPlay window(studio.desk.services);
        studio.watch();
        QSignalSpy moved(studio.player, &AudioPlayer::PositionChanged);
        QTRY_VERIFY_WITH_TIMEOUT(!moved.isEmpty(), kPatienceMs);
        auto* bar = window.findChild<QSlider*>("Slider1");
        bar->setValue(slider - 1);
        Studio::button(window, slider == 0 ? "cmdTop" : "cmdForward")->click();
        QTRY_VERIFY_WITH_TIMEOUT(studio.isEnded(), kPatienceMs);

        const QList<qint16> whole = Studio::decoded(path);
        const qint64 from = qRound64((44100 * 30 + 17) * slider / 100.0) * 2;
        const QList<qint16> rest = zib::DiskPlayer::trimmed(whole.mid(from));
        const QList<qint16> heard = studio.player->heard(0);
        QVERIFY(heard.endsWith(rest.last()));
        QVERIFY(heard.last(rest.size()) == rest);
        const QList<qint16> before = heard.first(heard.size() - rest.size());
        QVERIFY2(placeOf(zib::DiskPlayer::trimmed(before), whole) <= 2,
                 "and before it the file from its start");
    }

    void playlist_changesTracksWithoutLosingASample()
    {
        Studio studio;
        const QString first = studio.wav("1.wav", 44100 * 3 + 5);
        const QString second = studio.wav("2.wav", 22050 * 2 + 7, 1, 22050);
        const QString third = studio.wav("3.wav", 48000 * 2 + 9, 2, 48000);
        frmPlayer window(studio.desk.services);
        studio.watch();
        studio.desk.dialogs.files << QStringList{studio.folder.path(), "1.wav", "2.wav", "3.wav"}.join(
            QChar::Null);
        Studio::button(window, "cmdOpen")->click();
        Studio::button(window, "cmdPlay")->click();
        QTRY_COMPARE_WITH_TIMEOUT(studio.ends->size(), 3, kPatienceMs);
        QCOMPARE(studio.player->openings(), 3);
        int opening = 0;
        for (const QString& path : {first, second, third})
            QVERIFY(studio.player->heard(opening++) == zib::DiskPlayer::trimmed(Studio::decoded(path)));
    }

    void fileDeletedWhilePlaying_isHeardOrEndsButNeverHangs()
    {
        Studio studio;
        const QString path = studio.wav("a.wav", 44100 * 10);
        const QList<qint16> whole = Studio::decoded(path);
        zib::setCurrentFile(path);
        const frmPlay window(studio.desk.services);
        studio.watch();
        QVERIFY(QFile::remove(path));
        QTRY_VERIFY_WITH_TIMEOUT(studio.isEnded(), kPatienceMs);
        QCOMPARE(placeOf(studio.player->heard(0), zib::DiskPlayer::trimmed(whole)), 0);
    }

    void fileCutWhilePlaying_endsWithWhatWasThere()
    {
        Studio studio(2);
        const QString path = studio.wav("a.wav", 44100 * 30);
        zib::setCurrentFile(path);
        const frmPlay window(studio.desk.services);
        studio.watch();
        QVERIFY(QFile::resize(path, 44100 * 4 * 5));
        QTRY_VERIFY_WITH_TIMEOUT(studio.isEnded(), kPatienceMs);
        QVERIFY(!studio.player->heard(0).isEmpty());
    }

    void badFiles_playNothingAndSayNothing_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("text") << QByteArray("Not music at all, only words.\n").repeated(50);
        QTest::newRow("only a tag") << QByteArray("ID3\x04\x00\x00\x00\x00\x02\x00", 10) +
                                           QByteArray(256, '\0');
        QTest::newRow("WAV without samples") << zib::kit::wav16({}, 2, 44100);
        QTest::newRow("no whole frame") << QByteArray("\xff\xfb\x90\x64", 4) + QByteArray(40, '\0');
    }
    void badFiles_playNothingAndSayNothing()
    {
        QFETCH(QByteArray, content);
        Studio studio;
        const QString path = studio.folder.filePath("bad.mp3");
        zib::kit::write(path, content);
        zib::setCurrentFile(path);
        const frmPlay window(studio.desk.services);
        QTest::qWait(20);
        QCOMPARE(studio.player->openings(), 0);
        QVERIFY(studio.desk.messages.shown.isEmpty());
    }

    void mp3_cutInTheMiddle_isHeardToTheCut()
    {
        const QString source = zib::kit::lameFile("sound-a.mp3", 44100 * 9, 2, 44100, {"-b", "128"});
        if (source.isEmpty())
            QSKIP("lame is not installed");
        Studio studio;
        const QString path = studio.folder.filePath("cut.mp3");
        zib::kit::write(path, zib::kit::contentOf(source).first(70001));
        const QList<qint16> whole = Studio::decoded(path);
        QVERIFY(!whole.isEmpty());
        zib::setCurrentFile(path);
        const frmPlay window(studio.desk.services);
        studio.watch();
        QTRY_VERIFY_WITH_TIMEOUT(studio.isEnded(), kPatienceMs);
        QVERIFY(studio.player->heard(0) == zib::DiskPlayer::trimmed(whole));
    }

    void conversion_equalsThePumpOfThePreparation_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("channels");
        QTest::newRow("constant") << QStringList{"-b", "128"} << 44100 << 2;
        QTest::newRow("variable 48 kHz") << QStringList{"-V", "2"} << 48000 << 2;
        QTest::newRow("mono 22 kHz") << QStringList{"-b", "64"} << 22050 << 1;
    }
    void conversion_equalsThePumpOfThePreparation()
    {
        QFETCH(QStringList, options);
        QFETCH(int, rate);
        QFETCH(int, channels);
        const QString name = QString("sound-%1-%2.mp3").arg(rate).arg(channels);
        const QString source = zib::kit::lameFile(name, rate * 5, channels, rate, options);
        if (source.isEmpty())
            QSKIP("lame is not installed");
        Studio studio;
        OptionsData quiet;
        quiet.ExploreAfterConverting = false;
        zib::setOptions(quiet);
        const QString target = studio.folder.filePath("new/a.wav");
        frmMP3ToWAV window(studio.desk.services);
        window.findChild<QLineEdit*>("txtOpen")->setText(source);
        window.findChild<QLineEdit*>("txtSave")->setText(target);
        Studio::button(window, "cmdConvert")->click();
        QCOMPARE(studio.desk.messages.shown, QStringList{"i: Converting Completed."});
        const QString expected = studio.folder.filePath("expected.wav");
        QCOMPARE(zib::kit::convert(source, expected), 0);
        QVERIFY(!zib::kit::contentOf(target).isEmpty());
        QVERIFY(zib::kit::contentOf(target) == zib::kit::contentOf(expected));
    }

    void conversion_onADiskThatFills_leavesNoFileAndSaysSo()
    {
        const QString source = zib::kit::lameFile("sound-a.mp3", 44100 * 9, 2, 44100, {"-b", "128"});
        if (source.isEmpty())
            QSKIP("lame is not installed");
        Studio studio;
        OptionsData quiet;
        quiet.ExploreAfterConverting = false;
        zib::setOptions(quiet);
        frmMP3ToWAV window(studio.desk.services);
        window.findChild<QLineEdit*>("txtOpen")->setText(source);
        window.findChild<QLineEdit*>("txtSave")->setText(studio.folder.filePath("a.wav"));
        {
            const SmallDisk disk(300000);
            Studio::button(window, "cmdConvert")->click();
        }
        QCOMPARE(
            studio.desk.messages.shown,
            (QStringList{
                "c: The following MP3 file could not be converted whole, so no WAV file was made.\n" + source,
                "i: Converting Completed."}));
        QCOMPARE(QDir(studio.folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList());
    }

    void conversion_ofAFileWithoutSound_makesNoFile()
    {
        Studio studio;
        OptionsData quiet;
        quiet.ExploreAfterConverting = false;
        zib::setOptions(quiet);
        const QString source = studio.folder.filePath("tag.mp3");
        zib::kit::write(source, QByteArray("ID3\x04\x00\x00\x00\x00\x02\x00", 10) + QByteArray(256, '\0'));
        frmMP3ToWAV window(studio.desk.services);
        window.findChild<QLineEdit*>("txtOpen")->setText(source);
        window.findChild<QLineEdit*>("txtSave")->setText(studio.folder.filePath("tag.wav"));
        Studio::button(window, "cmdConvert")->click();
        QCOMPARE(studio.desk.messages.shown, QStringList{"i: Converting Completed."});
        QVERIFY(!QFile::exists(studio.folder.filePath("tag.wav")));
    }
};

QTEST_MAIN(TestSound)
#include "tst_sound.moc"
