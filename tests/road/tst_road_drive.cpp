#include "road/Walk.h"

#include "EmulatedRecorder.h"
#include "comparison.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace road;

/// The whole program, from outside, with a recorder of its own: through libburn onto a disc, and back.
class TestRoadDrive : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { skipWithout({"Xvfb", "xdotool", "ffmpeg", "sox"}); }

    void listToDriveAndBack_byTheKeyboard_isWhatAnotherDecoderHears()
    {
        Screen screen;
        QVERIFY(screen.isOn());
        zib::EmulatedRecorder recorder;
        QTemporaryDir home;
        const QString program = copiedProgram(home.path());
        const QStringList sources{kSamples + "Morning Light.mp3", kSamples + "Night Train.wav",
                                  kSamples + "Short Wave.wav", cdFormatFile(home.path())};

        QProcess run;
        start(run, screen, program, recorder.environment(ZIB_EMULATED_DRIVE));
        const QString main = startedWithTip(screen);
        QVERIFY(!main.isEmpty());
        addFiles(screen, main, sources);
        saveProject(screen, main, home.filePath("road.zibp"));
        screen.press(main, "ctrl+w");
        const QString write = screen.waitForWindow("^Write Audio CD$");
        QVERIFY(!write.isEmpty());
        startWriting(screen, write, [&recorder] { return recorder.count("SEND_CUE_SHEET") > 0; });
        QTRY_VERIFY_WITH_TIMEOUT(recorder.content()->finalized, 120000);
        closeWriting(screen);
        QVERIFY(!recorder.doorLocked());

        const auto disc = recorder.content();
        QCOMPARE(disc->tracks.size(), sources.size());
        const QDir temp(QFileInfo(program).path() + "/Temp");
        rip(screen, main, static_cast<int>(sources.size()));
        const QDir ripped(QFileInfo(program).path() + "/WAV");
        for (qsizetype i = 0; i < sources.size(); ++i) {
            const QString ready = temp.filePath(QFileInfo(sources[i]).completeBaseName() + ".wav");
            const auto prepared = demo::soundOf(QFileInfo::exists(ready) ? ready : sources[i]);
            QVERIFY(prepared);
            const auto& track = disc->tracks[i];
            const qint64 frames = std::max<qint64>((prepared->size() + 2351) / 2352, 300);
            const QByteArray written = recorder.frames(track.start, static_cast<int>(frames));
            QCOMPARE(written, *prepared + QByteArray(written.size() - prepared->size(), '\0'));
            if (i == 0)
                QVERIFY(largestDifference(written, decodedByOthers(sources[i])) <= 2);
            const auto copied = demo::soundOf(ripped.filePath(QString("Track%1.wav").arg(i + 1)));
            QVERIFY2(copied, qPrintable(ripped.entryList().join(' ')));
            QVERIFY(copied->startsWith(written));
        }
        QVERIFY(!recorder.doorLocked());
        exitProgram(screen, run, main);
    }
};

QTEST_GUILESS_MAIN(TestRoadDrive)
#include "tst_road_drive.moc"
