#include "road/SessionManager.h"
#include "road/Walk.h"

#include "EmulatedRecorder.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <signal.h>

using namespace road;

namespace {

/// The program on its way onto a disc, until the fault strikes.
struct Writing
{
    explicit Writing(const QString& fault, const QStringList& variables = {})
    {
        QFile settings(QFileInfo(program).path() + "/settings.ini");
        if (settings.open(QIODevice::WriteOnly))
            settings.write("[View]\nShow Splash Screen=False\nShow Tips Of Day=False\n");
        settings.close();
        begin(run, variables);
        recorder.addFault(fault);
        startWriting(screen, write, [this] { return recorder.faultStruck(); });
    }
    ~Writing()
    {
        run.kill();
        run.waitForFinished();
    }
    /// Starts the program and opens its writing window.
    void begin(QProcess& process, const QStringList& variables = {})
    {
        start(process, screen, program, recorder.environment(ZIB_EMULATED_DRIVE) + variables);
        main = screen.waitForWindow("^Zib CD Burner$");
        addFiles(screen, main, {cdFormatFile(home.path())});
        write = openedBy(screen, main, "ctrl+w", "^Write Audio CD$");
    }

    Screen screen;
    zib::EmulatedRecorder recorder;
    QTemporaryDir home;
    QString program = copiedProgram(home.path());
    QProcess run;
    QString main;
    QString write;
};

} // namespace

/// How the whole program ends in the middle of a write when the system or the session wants it to.
class TestRoadEnd : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { skipWithout({"Xvfb", "xdotool", "sox"}); }

    /// Which comes before the main window has begun to work.
    void terminated_whileTheSplashWindowShows_endsAtOnce()
    {
        const Screen screen;
        const QTemporaryDir home;
        QProcess run;
        start(run, screen, copiedProgram(home.path()));
        screen.waitForWindow("^Zib CD Burner$");
        ::kill(static_cast<pid_t>(run.processId()), SIGTERM);
        const bool ended = run.waitForFinished(20000);
        run.kill();
        QVERIFY(ended);
        QCOMPARE(run.exitStatus(), QProcess::NormalExit);
        QCOMPARE(run.exitCode(), 0);
    }
    void terminated_whileACommandHangs_endsSoonAndTheNextStartMendsTheDoor()
    {
        Writing writing("WRITE_10 nth=8 delay=forever");
        QVERIFY(writing.recorder.faultStruck());
        QElapsedTimer taken;
        taken.start();
        ::kill(static_cast<pid_t>(writing.run.processId()), SIGTERM);
        QVERIFY(writing.run.waitForFinished(60'000));
        qInfo("ended after %lld ms", static_cast<long long>(taken.elapsed()));
        QVERIFY2(taken.elapsed() < 18'000, qPrintable(QString::number(taken.elapsed())));
        writing.recorder.clearFaults();
        QProcess again;
        writing.begin(again);
        QVERIFY(!writing.write.isEmpty());
        QTRY_VERIFY_WITH_TIMEOUT(!writing.recorder.doorLocked(), 30'000);
        again.kill();
        again.waitForFinished();
    }

    void session_thatWouldEnd_isKeptByItsUserOrWaitsForTheDrive()
    {
        SessionManager session;
        if (session.address().isEmpty())
            QSKIP("no place for the session manager's socket");
        // Slow enough to be asked in the middle.
        Writing writing("WRITE_10 nth=4 times=forever delay=700", {"SESSION_MANAGER=" + session.address()});
        QVERIFY(writing.recorder.faultStruck());
        QTRY_VERIFY_WITH_TIMEOUT(session.hasClient(), 30'000);
        session.announceEnd();
        const QString question = "^Zib CD Burner$";
        const int writtenBefore = writing.recorder.count("WRITE_10");
        QTest::qWait(3000);
        QVERIFY(!session.isAnswered()); // The question stands.
        writing.screen.press(writing.screen.waitForWindow(question), "alt+n");
        QTRY_VERIFY_WITH_TIMEOUT(session.isAnswered(), 30'000);
        QVERIFY(session.isKept());
        QTRY_VERIFY_WITH_TIMEOUT(writing.recorder.count("WRITE_10") > writtenBefore + 2, 20'000);

        session.announceEnd();
        QTest::qWait(3000);
        QVERIFY(!session.isAnswered());
        writing.screen.press(writing.screen.waitForWindow(question), "alt+y");
        QTRY_VERIFY_WITH_TIMEOUT(session.isAnswered(), 30'000);
        QVERIFY(!session.isKept());
        QVERIFY(!writing.recorder.doorLocked());
        session.end();
        QTRY_VERIFY_WITH_TIMEOUT(writing.run.state() == QProcess::NotRunning, 30'000);
        QVERIFY(!writing.recorder.doorLocked());
    }
};

QTEST_GUILESS_MAIN(TestRoadEnd)
#include "tst_road_end.moc"
