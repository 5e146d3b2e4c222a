#include "comparison.h"
#include "road/Screen.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

namespace {

const QString kSamples = ZIB_SOURCE_DIR "/data/samples/";

/// What another decoder makes of a file, as stereo of 44100 Hz and 16 bits: ffmpeg of an MP3 file, sox of a
/// WAV file.
QByteArray decodedByOthers(const QString& file)
{
    QProcess decoder;
    if (file.endsWith(".mp3"))
        decoder.start("ffmpeg", {"-v", "error", "-nostdin", "-i", file, "-f", "s16le", "-ar", "44100", "-ac",
                                 "2", "-"});
    else
        decoder.start("sox", {file, "-t", "raw", "-e", "signed", "-b", "16", "-r", "44100", "-c", "2", "-"});
    decoder.waitForFinished(120000);
    return decoder.readAllStandardOutput();
}

const qint16* samplesOf(const QByteArray& bytes)
{
    return reinterpret_cast<const qint16*>(bytes.constData());
}

/// The largest difference of two sounds, the shorter one followed by silence.
int largestDifference(const QByteArray& a, const QByteArray& b)
{
    int largest = 0;
    const qsizetype count = std::max(a.size(), b.size()) / 2;
    for (qsizetype i = 0; i < count; ++i) {
        const int x = i < a.size() / 2 ? samplesOf(a)[i] : 0;
        const int y = i < b.size() / 2 ? samplesOf(b)[i] : 0;
        largest = std::max(largest, std::abs(x - y));
    }
    return largest;
}

/// Power of what differs, in decibels below the power of @p a.
double differenceDb(const QByteArray& a, const QByteArray& b)
{
    double sound = 1e-9;
    double different = 1e-9;
    for (qsizetype i = 0; i < std::min(a.size(), b.size()) / 2; ++i) {
        sound += std::pow(samplesOf(a)[i], 2);
        different += std::pow(samplesOf(a)[i] - samplesOf(b)[i], 2);
    }
    return 10 * std::log10(sound / different);
}

/// A WAV file that needs no preparation: five seconds and a bit of two tones.
QString cdFormatFile(const QString& folder)
{
    const QString file = folder + "/Ready Made.wav";
    QProcess::execute("sox", {"-n", "-r", "44100", "-b", "16", "-c", "2", file, "synth", "5.0071", "sine",
                              "440", "sine", "554.3", "gain", "-6"});
    return file;
}

} // namespace

/// The whole program, from outside: keys on a virtual screen, files on the disc.
class TestRoad : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        for (const char* tool : {"Xvfb", "xdotool", "ffmpeg", "sox"})
            if (QStandardPaths::findExecutable(tool).isEmpty())
                QSKIP(qPrintable(QString("%1 is not installed").arg(tool)));
    }

    void listToDiscAndBack_byTheKeyboard_isWhatAnotherDecoderHears()
    {
        Screen screen;
        QVERIFY(screen.isOn());
        QTemporaryDir home;
        const QString program = copiedProgram(home.path());
        const QStringList sources{kSamples + "Morning Light.mp3", kSamples + "Night Train.wav",
                                  kSamples + "Short Wave.wav", cdFormatFile(home.path())};

        QProcess run;
        start(run, screen, program);
        const QString main = startedWithTip(screen);
        QVERIFY(!main.isEmpty());
        addFiles(screen, main, sources);

        const QString project = home.filePath("road.zibp");
        const QString save = openedBy(screen, main, "ctrl+s", "^Save Project As$");
        QVERIFY(!save.isEmpty());
        screen.type(save, project);
        screen.press(save, "Return");
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(project), 60000);
        QVERIFY(!screen.waitForWindow("^Zib CD Burner - .*road.zibp$").isEmpty());
        QVERIFY(content(project).contains("FileCount=4"));

        screen.press(main, "ctrl+w");
        const QString write = screen.waitForWindow("^Write Audio CD$");
        QVERIFY(!write.isEmpty());
        const QDir images(QFileInfo(program).path() + "/Images");
        startWriting(screen, write, images);
        QTRY_COMPARE_WITH_TIMEOUT(images.entryList({"*.cue"}, QDir::Files).size(), 1, 120000);
        const QString cue = images.filePath(images.entryList({"*.cue"}, QDir::Files).first());

        const auto disc = demo::DiscImage::open(cue);
        QVERIFY(bool(disc));
        const auto tracks = disc->tracks();
        QVERIFY(bool(tracks));
        QCOMPARE(tracks->size(), sources.size());
        for (qsizetype i = 0; i < sources.size(); ++i) {
            const QByteArray other = decodedByOthers(sources[i]);
            const QByteArray found = disc->read(tracks->at(i).start, tracks->at(i).frames);
            QVERIFY2(other.size() > 100000, qPrintable(sources[i]));
            QVERIFY(found.size() >=
                    other.size() - 8); // Two rate converters may differ by a sample at the end.
            if (i == 0)
                QVERIFY2(largestDifference(found, other) <= 2, qPrintable(sources[i]));
            else if (i == 3)
                QCOMPARE(largestDifference(found, other), 0);
            else
                QVERIFY2(differenceDb(other, found) > 60,
                         qPrintable(QString("%1: %2 dB").arg(sources[i]).arg(differenceDb(other, found))));
        }
        closeWriting(screen);
        rip(screen, main, static_cast<int>(sources.size()));
        const QDir ripped(QFileInfo(program).path() + "/WAV");
        for (qsizetype i = 0; i < sources.size(); ++i) {
            const auto sound = demo::soundOf(ripped.filePath(QString("Track%1.wav").arg(i + 1)));
            QVERIFY2(sound, qPrintable(ripped.entryList().join(' ')));
            // What follows is the pregap of the next track, which a player counts as part of this one.
            QVERIFY(sound->startsWith(disc->read(tracks->at(i).start, tracks->at(i).frames)));
        }
        exitProgram(screen, run, main);
    }

    void kill_inTheMiddle_leavesNothingThatLooksFinished_data()
    {
        QTest::addColumn<QString>("rate"); // Of the source: another one than a disc's is prepared first.
        QTest::addColumn<QString>("folder");
        QTest::newRow("preparing") << "48000"
                                   << "Temp";
        QTest::newRow("writing") << "44100"
                                 << "Images";
    }
    void kill_inTheMiddle_leavesNothingThatLooksFinished()
    {
        QFETCH(QString, rate);
        QFETCH(QString, folder);
        Screen screen;
        QVERIFY(screen.isOn());
        QTemporaryDir home;
        const QString program = copiedProgram(home.path());
        const QString source = home.filePath("long.wav");
        QProcess::execute("sox",
                          {"-n", "-r", rate, "-b", "16", "-c", "2", source, "synth", "1200", "sine", "440"});

        QProcess run;
        start(run, screen, program);
        const QString main = startedWithTip(screen);
        QVERIFY(!main.isEmpty());
        addFiles(screen, main, {source});
        const QString project =
            openedBy(screen, main, "ctrl+s", "^Save Project As$"); // The list is there now.
        screen.press(project, "Escape");
        QTRY_VERIFY_WITH_TIMEOUT(!screen.hasWindow("^Save Project As$"), 60000);
        screen.press(main, "ctrl+w");
        const QDir work(QFileInfo(program).path() + '/' + folder);
        if (folder == "Images")
            startWriting(screen, screen.waitForWindow("^Write Audio CD$"), work);
        for (int i = 0; i < 120000 && work.entryList(QDir::Files | QDir::Hidden).isEmpty(); ++i)
            QTest::qSleep(1);
        QVERIFY(!work.entryList(QDir::Files | QDir::Hidden).isEmpty());
        run.kill();
        QVERIFY(run.waitForFinished(60000));
        QCOMPARE(work.entryList({"*.wav", "*.bin", "*.cue"}, QDir::Files), QStringList());
    }

private:
    /// Waits for the tip of the day, which comes behind splash and main window, and closes it.
    /// @returns the main window.
    static QString startedWithTip(const Screen& screen)
    {
        const QString tip = screen.waitForWindow("^Tip of the Day$");
        const QString main = screen.waitForWindow("^Zib CD Burner$");
        for (int i = 0; i < 60 && screen.hasWindow("^Tip of the Day$"); ++i) {
            screen.press(tip, "Escape");
            QTest::qWait(500);
        }
        return main;
    }
    static void addFiles(const Screen& screen, const QString& main, const QStringList& files)
    {
        screen.press(main, "ctrl+f");
        const QString add = screen.waitForWindow("^Open Audio Files MP3 and WAV$");
        QVERIFY(!add.isEmpty());
        screen.type(add, '"' + files.join("\" \"") + '"');
        screen.press(add, "Return");
        QTRY_VERIFY_WITH_TIMEOUT(!screen.hasWindow("^Open Audio Files"), 60000);
    }
    /// The drives are looked for first, so the button may not answer at once.
    static void startWriting(const Screen& screen, const QString& window, const QDir& images)
    {
        for (int i = 0; i < 600 && !images.exists(); ++i) {
            if (i % 10 == 0)
                screen.press(window, "alt+s");
            QTest::qWait(100);
        }
    }
    /// The program folder, copied to where nothing of the build tree is near.
    static QString copiedProgram(const QString& home)
    {
        const QString folder = home + "/Program Folder";
        QDir().mkpath(folder);
        for (const char* file : {"ZibCDBurner", "TIPOFDAY.TXT", "Sample1.jpg"})
            QFile::copy(QString(ZIB_PROGRAM_DIR "/") + file, folder + '/' + file);
        QFile settings(folder + "/settings.ini"); // No file manager is to come up at the end.
        if (settings.open(QIODevice::WriteOnly))
            settings.write("[Misc]\nExplore After Ripping=False\n");
        return folder + "/ZibCDBurner";
    }
    static void start(QProcess& run, const Screen& screen, const QString& program)
    {
        run.setProcessEnvironment(screen.environment());
        run.setProcessChannelMode(QProcess::ForwardedChannels);
        run.start(program, QStringList());
        QVERIFY(run.waitForStarted());
    }
    /// Presses keys until a window answers: a program that is still adding files does not listen.
    static QString openedBy(const Screen& screen, const QString& window, const QString& keys,
                            const QString& title)
    {
        for (int i = 0; i < 60 && !screen.hasWindow(title); ++i) {
            screen.press(window, keys);
            QTest::qWait(1000);
        }
        return screen.waitForWindow(title);
    }
    static QByteArray content(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    /// Answers the box that tells of the end and leaves the writing window.
    static void closeWriting(const Screen& screen)
    {
        closeBox(screen);
        screen.press(screen.waitForWindow("^Write Audio CD$"), "alt+x");
        QTRY_VERIFY_WITH_TIMEOUT(!screen.hasWindow("^Write Audio CD$"), 60000);
    }
    /// Copies every track of the disc that was written, the only one in the ripper's list.
    static void rip(const Screen& screen, const QString& main, int tracks)
    {
        screen.press(main, "alt+t");
        screen.press(main, "r");
        const QString ripper = screen.waitForWindow("^Rip CD to WAV$");
        QVERIFY(!ripper.isEmpty());
        for (const char* key : {"Home", "space"}) // The list of tracks has the focus.
            screen.press(ripper, key);
        for (int i = 1; i < tracks; ++i) {
            screen.press(ripper, "Down");
            screen.press(ripper, "space");
        }
        screen.press(ripper, "alt+s");
        closeBox(screen);
        screen.press(ripper, "alt+c");
        QTRY_VERIFY_WITH_TIMEOUT(!screen.hasWindow("^Rip CD to WAV$"), 60000);
    }
    static void closeBox(const Screen& screen)
    {
        const QString box =
            screen.waitForWindow("^Zib CD Burner$"); // The main window's title names its project.
        if (box.isEmpty())
            screen.picture(ZIB_BINARY_DIR "/road.png"); // What there is instead.
        QVERIFY(!box.isEmpty());
        screen.press(box, "Return");
        QTRY_VERIFY_WITH_TIMEOUT(!screen.hasWindow("^Zib CD Burner$"), 60000);
    }
    static void exitProgram(const Screen& screen, QProcess& run, const QString& main)
    {
        screen.press(main, "ctrl+x");
        QVERIFY(run.waitForFinished(60000));
        QCOMPARE(run.exitStatus(), QProcess::NormalExit);
        QCOMPARE(run.exitCode(), 0);
    }
};

QTEST_GUILESS_MAIN(TestRoad)
#include "tst_road.moc"
