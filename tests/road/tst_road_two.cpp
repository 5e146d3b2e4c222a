#include "road/Walk.h"

#include "DiscImage.h"
#include "EmulatedRecorder.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <vector>

using namespace road;

namespace {

/// A running program on a screen of its own, in a folder that it shares.
struct Seat
{
    explicit Seat(const QString& program, const QStringList& variables = {})
    {
        start(run, screen, program, variables);
        main = screen.waitForWindow("^Zib CD Burner$");
    }
    ~Seat()
    {
        run.kill();
        run.waitForFinished();
    }

    Screen screen;
    QProcess run;
    QString main;
    QString write;
};

/// A WAV file of one channel, which is prepared first, and the sound that a disc is to have of it.
QByteArray song(const QString& folder, const QString& name, int hertz)
{
    QDir().mkpath(folder);
    const QString file = folder + '/' + name;
    QProcess::execute("sox", {"-n", "-r", "44100", "-b", "16", "-c", "1", file, "synth", "4.5", "sine",
                              QString::number(hertz), "gain", "-6"});
    const QByteArray mono = decodedByOthers(file); // Both channels of it.
    return mono;
}

/// What the images of a folder hold, each as the sounds of its tracks.
QList<QList<QByteArray>> imagesIn(const QDir& folder)
{
    QList<QList<QByteArray>> images;
    for (const QString& cue : folder.entryList({"*.cue"}, QDir::Files, QDir::Name)) {
        images << QList<QByteArray>{};
        const auto disc = demo::DiscImage::open(folder.filePath(cue));
        const auto tracks = disc->tracks();
        for (const auto& track : *tracks)
            images.last() << disc->read(track.start, track.frames);
    }
    return images;
}

bool isDiscOf(const QList<QByteArray>& tracks, const QList<QByteArray>& sounds)
{
    if (tracks.size() != sounds.size())
        return false;
    for (qsizetype i = 0; i < sounds.size(); ++i)
        if (largestDifference(tracks[i], sounds[i]) > 1)
            return false;
    return true;
}

} // namespace

/// Two running programs in one folder: names that both want are taken once, and each writes its own songs.
class TestRoadTwo : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { skipWithout({"Xvfb", "xdotool", "sox"}); }

    void listsWithTheSameNames_becomeADiscEach()
    {
        QElapsedTimer taken;
        taken.start();
        QTemporaryDir home;
        const QString program = copiedProgram(home.path());
        const QDir folder(QFileInfo(program).path());
        put(folder.filePath("settings.ini"), "[View]\nShow Splash Screen=False\nShow Tips Of Day=False\n");
        const QStringList names{"song.wav", "other song.wav"};
        QList<QList<QByteArray>> sounds(2);
        std::vector<std::unique_ptr<Seat>> seats;
        for (int i = 0; i < 2; ++i)
            seats.push_back(std::make_unique<Seat>(program));
        for (int i = 0; i < 2; ++i) {
            QStringList files;
            for (qsizetype n = 0; n < names.size(); ++n) {
                const QString sources = home.filePath(QString::number(i));
                sounds[i] << song(sources, names[n], 300 + 200 * i + 50 * static_cast<int>(n));
                files << sources + '/' + names[n];
            }
            addFiles(seats[i]->screen, seats[i]->main, files);
        }
        for (const auto& seat : seats) // One right behind the other, both prepare now.
            seat->screen.press(seat->main, "ctrl+w");
        for (const auto& seat : seats) {
            seat->write = openedBy(seat->screen, seat->main, "ctrl+w", "^Write Audio CD$");
            QVERIFY(!seat->write.isEmpty());
        }
        QCOMPARE(QDir(folder.filePath("Temp")).entryList({"*.wav"}, QDir::Files, QDir::Name),
                 (QStringList{"other song-1.wav", "other song.wav", "song-1.wav", "song.wav"}));

        const QDir images(folder.filePath("Images"));
        const auto written = [&images] { return images.entryList({"*.cue"}, QDir::Files).size(); };
        for (int i = 0; i < 60 && written() < 2; ++i) {
            for (const auto& seat : seats) // A window that is done stands behind its box.
                seat->screen.press(seat->write, "alt+s");
            QTest::qWait(500);
        }
        QCOMPARE(written(), 2);
        const auto discs = imagesIn(images);
        QVERIFY(isDiscOf(discs[0], sounds[0]) || isDiscOf(discs[0], sounds[1]));
        QVERIFY(isDiscOf(discs[0], sounds[0]) ? isDiscOf(discs[1], sounds[1])
                                              : isDiscOf(discs[1], sounds[0]));
        qInfo("%lld ms", static_cast<long long>(taken.elapsed()));
    }

    void driveThatOneWrites_isToldToTheOtherAndLeftAlone()
    {
        QTemporaryDir home;
        const QString program = copiedProgram(home.path());
        put(QFileInfo(program).path() + "/settings.ini",
            "[View]\nShow Splash Screen=False\nShow Tips Of Day=False\n");
        zib::EmulatedRecorder recorder;
        recorder.addFault("WRITE_10 nth=4 times=9 delay=5000"); // until the other one has been told
        const QStringList variables = recorder.environment(ZIB_EMULATED_DRIVE);
        Seat writes(program, variables);
        Seat wants(program, variables);
        const QString file = cdFormatFile(home.path());
        for (Seat* seat : {&writes, &wants})
            addFiles(seat->screen, seat->main, {file});
        writes.write = openedBy(writes.screen, writes.main, "ctrl+w", "^Write Audio CD$");
        startWriting(writes.screen, writes.write, [&recorder] { return recorder.faultStruck(); });
        const int openings = refusedOpenings(recorder);
        wants.write = openedBy(wants.screen, wants.main, "ctrl+w", "^Write Audio CD$");
        QTRY_VERIFY_WITH_TIMEOUT(refusedOpenings(recorder) > openings, 30'000);
        recorder.clearFaults();
        QTRY_VERIFY_WITH_TIMEOUT(recorder.content()->finalized, 60'000);
        const auto disc = recorder.content();
        QCOMPARE(disc->tracks.size(), 1);
        const QByteArray found =
            recorder.frames(disc->tracks[0].start, disc->tracks[0].end - disc->tracks[0].start);
        QCOMPARE(largestDifference(found, decodedByOthers(file)), 0);
    }

private:
    static int refusedOpenings(const zib::EmulatedRecorder& recorder)
    {
        return static_cast<int>(recorder.journal().filter("answer=EBUSY").size());
    }
    static void put(const QString& path, const QByteArray& text)
    {
        QFile file(path);
        if (file.open(QIODevice::WriteOnly))
            file.write(text);
    }
};

QTEST_GUILESS_MAIN(TestRoadTwo)
#include "tst_road_two.moc"
