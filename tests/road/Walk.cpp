#include "road/Walk.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

#include <cmath>

namespace road {

namespace {

const qint16* samplesOf(const QByteArray& bytes)
{
    return reinterpret_cast<const qint16*>(bytes.constData());
}

} // namespace

void skipWithout(const QStringList& tools)
{
    for (const QString& tool : tools)
        if (QStandardPaths::findExecutable(tool).isEmpty())
            QSKIP(qPrintable(tool + " is not installed"));
}

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

QString cdFormatFile(const QString& folder)
{
    const QString file = folder + "/Ready Made.wav";
    QProcess::execute("sox", {"-n", "-r", "44100", "-b", "16", "-c", "2", file, "synth", "5.0071", "sine",
                              "440", "sine", "554.3", "gain", "-6"});
    return file;
}

QString startedWithTip(const Screen& screen)
{
    const QString tip = screen.waitForWindow("^Tip of the Day$");
    const QString main = screen.waitForWindow("^Zib CD Burner$");
    for (int i = 0; i < 60 && screen.hasWindow("^Tip of the Day$"); ++i) {
        screen.press(tip, "Escape");
        QTest::qWait(500);
    }
    return main;
}

void addFiles(const Screen& screen, const QString& main, const QStringList& files)
{
    const QString add = openedBy(screen, main, "ctrl+f", "^Open Audio Files MP3 and WAV$");
    QVERIFY(!add.isEmpty());
    screen.type(add, '"' + files.join("\" \"") + '"');
    screen.press(add, "Return");
    QTRY_VERIFY_WITH_TIMEOUT(!screen.hasWindow("^Open Audio Files"), 60000);
}

void startWriting(const Screen& screen, const QString& window, const std::function<bool()>& begun)
{
    for (int i = 0; i < 600 && !begun(); ++i) {
        if (i % 10 == 0)
            screen.press(window, "alt+s");
        QTest::qWait(100);
    }
}

QString copiedProgram(const QString& home)
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

void start(QProcess& run, const Screen& screen, const QString& program, const QStringList& variables)
{
    QProcessEnvironment environment = screen.environment();
    for (const QString& variable : variables)
        environment.insert(variable.section('=', 0, 0), variable.section('=', 1));
    run.setProcessEnvironment(environment);
    run.setProcessChannelMode(QProcess::ForwardedChannels);
    run.start(program, QStringList());
    QVERIFY(run.waitForStarted());
}

QString openedBy(const Screen& screen, const QString& window, const QString& keys, const QString& title)
{
    for (int i = 0; i < 60 && !screen.hasWindow(title); ++i) {
        screen.press(window, keys);
        QTest::qWait(1000);
    }
    return screen.waitForWindow(title);
}

void saveProject(const Screen& screen, const QString& main, const QString& project)
{
    const QString save = openedBy(screen, main, "ctrl+s", "^Save Project As$");
    QVERIFY(!save.isEmpty());
    screen.type(save, project);
    screen.press(save, "Return");
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(project), 60000);
    QVERIFY(!screen.waitForWindow("^Zib CD Burner - .*" + QFileInfo(project).fileName() + '$').isEmpty());
}

QByteArray content(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void closeWriting(const Screen& screen)
{
    closeBox(screen);
    screen.press(screen.waitForWindow("^Write Audio CD$"), "alt+x");
    QTRY_VERIFY_WITH_TIMEOUT(!screen.hasWindow("^Write Audio CD$"), 60000);
}

void rip(const Screen& screen, const QString& main, int tracks)
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

void closeBox(const Screen& screen)
{
    const QString box = screen.waitForWindow("^Zib CD Burner$"); // The main window's title names its project.
    if (box.isEmpty())
        screen.picture(ZIB_BINARY_DIR "/road.png"); // What there is instead.
    QVERIFY(!box.isEmpty());
    screen.press(box, "Return");
    QTRY_VERIFY_WITH_TIMEOUT(!screen.hasWindow("^Zib CD Burner$"), 60000);
}

void exitProgram(const Screen& screen, QProcess& run, const QString& main)
{
    screen.press(main, "ctrl+x");
    QVERIFY(run.waitForFinished(60000));
    QCOMPARE(run.exitStatus(), QProcess::NormalExit);
    QCOMPARE(run.exitCode(), 0);
}

} // namespace road
