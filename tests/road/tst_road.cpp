#include "road/Walk.h"

#include "comparison.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace road;

/// The whole program, from outside: keys on a virtual screen, files on the disc.
class TestRoad : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { skipWithout({"Xvfb", "xdotool", "ffmpeg", "sox"}); }

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
        saveProject(screen, main, project);
        QVERIFY(content(project).contains("FileCount=4"));

        screen.press(main, "ctrl+w");
        const QString write = screen.waitForWindow("^Write Audio CD$");
        QVERIFY(!write.isEmpty());
        const QDir images(QFileInfo(program).path() + "/Images");
        startWriting(screen, write, [&images] { return images.exists(); });
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

    void list_byTheKeyboardAlone_isOrderedTickedPlayedAndSaved()
    {
        Screen screen;
        QVERIFY(screen.isOn());
        QTemporaryDir home;
        QProcess run;
        start(run, screen, copiedProgram(home.path()), {"SDL_AUDIODRIVER=dummy"});
        const QString main = startedWithTip(screen);
        QVERIFY(!main.isEmpty());
        const QString ready = cdFormatFile(home.path());
        const QString morning = home.filePath("Morning Light.mp3");
        const QString night = home.filePath("Night Train.wav");
        const QString wave = home.filePath("Short Wave.wav");
        for (const QString& file : {morning, night, wave})
            QVERIFY(QFile::copy(kSamples + QFileInfo(file).fileName(), file));
        addFiles(screen, main, {morning, night, wave, ready});
        const QString save = openedBy(screen, main, "ctrl+s", "^Save Project As$"); // The list is there now.
        screen.press(save, "Escape");
        QTRY_VERIFY_WITH_TIMEOUT(!screen.hasWindow("^Save Project As$"), 60000);

        // The last one up, the first one down; then the new first one is ticked and removed.
        for (const char* key : {"End", "ctrl+u", "Home", "ctrl+d", "Home", "space", "Delete"})
            screen.press(main, key);
        screen.press(main, "Down"); // The selection stood on the row that followed.
        const QString player = openedBy(screen, main, "Return", "^Play...$");
        QVERIFY(!player.isEmpty());
        for (int i = 0; i < 60 && screen.hasWindow("^Play...$"); ++i) { // The first one ends the playing.
            screen.press(player, "Escape");
            QTest::qWait(500);
        }
        QVERIFY(!screen.hasWindow("^Play...$"));
        screen.press(main, "ctrl+d");

        const QString project = home.filePath("keys.zibp");
        saveProject(screen, main, project);
        QByteArray expected = "[General]\nFileCount=3\n[Files]\n";
        const QStringList order{morning, wave, ready};
        for (qsizetype i = 0; i < order.size(); ++i)
            expected += "File" + QByteArray::number(i + 1) + '=' + order[i].toUtf8() + '\n';
        QCOMPARE(content(project), expected);
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
            startWriting(screen, screen.waitForWindow("^Write Audio CD$"), [&work] { return work.exists(); });
        for (int i = 0; i < 120000 && work.entryList(QDir::Files | QDir::Hidden).isEmpty(); ++i)
            QTest::qSleep(1);
        QVERIFY(!work.entryList(QDir::Files | QDir::Hidden).isEmpty());
        run.kill();
        QVERIFY(run.waitForFinished(60000));
        QCOMPARE(work.entryList({"*.wav", "*.bin", "*.cue"}, QDir::Files), QStringList());
    }
};

QTEST_GUILESS_MAIN(TestRoad)
#include "tst_road.moc"
