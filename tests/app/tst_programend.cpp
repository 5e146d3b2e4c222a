#include "app/ProgramEnd.h"
#include "app/WindowBook.h"
#include "common/GenralMacro.h"
#include "fakes/FakeAudioFile.h"
#include "fakes/FakeAudioInformation.h"
#include "fakes/FakeDVDWriterPro.h"
#include "fakes/FakeSeams.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QTimer>

using namespace zib;
using namespace std::chrono_literals;

namespace {

/// A writing window, and the program's end with drives that are only talked of.
struct Desk
{
    Desk()
    {
        desk.components.makeWriter = [this] { return std::unique_ptr<DVDWriterPro>(writer); };
        QFile file(track);
        [[maybe_unused]] const bool made = file.open(QIODevice::WriteOnly);
    }
    /// Opens the writing window, starts the write and does something while it runs; then closes the window.
    void whileWriting(const std::function<void()>& act)
    {
        QTimer::singleShot(0, &timer, [this, act] {
            QWidget* window = QApplication::activeModalWidget();
            auto* start = window->findChild<QPushButton*>("cmdWrite");
            started = QTest::qWaitFor([start] { return start->isEnabled(); }, 20'000);
            start->click();
            started = started && writer->calls.contains("start");
            act();
            window->close();
        });
        book.showWrite(nullptr, {track}, {});
    }
    std::function<bool()> answering(bool yes)
    {
        return [this, yes] {
            ++asked;
            return yes;
        };
    }

    FakeDesk desk;
    WindowBook book{desk.messages, desk.dialogs, desk.components};
    bool driveAnswers = true;
    QList<std::chrono::milliseconds> unlocked;
    ProgramEnd end{book,
                   {.answer = [this] { return driveAnswers; },
                    .unlock =
                        [this](std::chrono::milliseconds patience) {
                            unlocked << patience;
                            return false;
                        }}};
    QTemporaryDir folder;
    QString track = folder.filePath("track.wav");
    FakeDVDWriterPro* writer = new FakeDVDWriterPro;
    bool started = false;
    int asked = 0;
    QObject timer;
};

} // namespace

/// How the program ends when the system or the session wants it to.
class TestProgramEnd : public QObject
{
    Q_OBJECT
private slots:
    void session_withNothingBeingWritten_endsUnasked()
    {
        Desk desk;
        QVERIFY(desk.end.mayEnd(desk.answering(false)));
        QCOMPARE(desk.asked, 0);
        delete desk.writer;
    }

    void session_thatTheUserKeeps_leavesTheWriteAlone()
    {
        Desk desk;
        desk.whileWriting([&desk] {
            QVERIFY(!desk.end.mayEnd(desk.answering(false)));
            QVERIFY(desk.book.isWriting());
            QVERIFY(!desk.writer->calls.contains("cancel"));
            QVERIFY(QApplication::activeModalWidget());
            emit desk.writer->WriteCompleted();
        });
        QVERIFY(desk.started);
        QCOMPARE(desk.asked, 1);
        QVERIFY(!desk.book.isWriting());
    }

    void session_thatTheUserEnds_waitsUntilTheWriteHasStopped()
    {
        Desk desk;
        desk.whileWriting([&desk] {
            QVERIFY(desk.end.mayEnd(desk.answering(true)));
            QVERIFY(!desk.book.isWriting());
        });
        QVERIFY(desk.started);
        QCOMPARE(desk.desk.messages.shown, QStringList());
    }

    void session_thatAllowsNoQuestion_spoilsNoDiscBeforeItEnds()
    {
        Desk desk;
        desk.whileWriting([&desk] {
            desk.writer->obeysCancel = false;
            QVERIFY(desk.end.mayEnd({}));
            QVERIFY(desk.book.isWriting());
            QVERIFY(!desk.writer->calls.contains("cancel"));
        });
        // Now it has closed the windows.
        QVERIFY(desk.writer->calls.contains("cancel"));
        desk.driveAnswers = false;
        QElapsedTimer taken;
        taken.start();
        desk.end.leave(0);
        QVERIFY2(taken.elapsed() < 15'000, qPrintable(QString::number(taken.elapsed())));
        QCOMPARE(desk.unlocked, QList<std::chrono::milliseconds>{2s});
        QCOMPARE(desk.desk.messages.shown, QStringList());
    }

    void hurry_whileTracksArePrepared_closesTheWindowThatItsUserCannotClose()
    {
        Desk desk;
        delete desk.writer;
        setApplicationFolder(desk.folder.path());
        FakeAudioShelf shelf;
        shelf.sounds.insert("/music/a.mp3", FakeAudioShelf::ramp(200'000, 8000, 1));
        shelf.onRead = [] { QThread::msleep(100); };
        desk.desk.components.makeInformation = [&] { return std::make_unique<FakeAudioInformation>(shelf); };
        desk.desk.components.makeFile = [&] { return std::make_unique<FakeAudioFile>(shelf); };
        CompilationRow row;
        row.fileName = "a.mp3";
        row.location = "/music/";
        WindowBook book{desk.desk.messages, desk.desk.dialogs, desk.desk.components};
        ProgramEnd end{book, {.answer = [] { return true; }, .unlock = [](auto) { return false; }}};
        bool closed = false;
        QTimer ending;
        QObject::connect(&ending, &QTimer::timeout, &ending, [&] {
            QWidget* window = QApplication::activeModalWidget();
            if (!window || shelf.noted().filter("create ").isEmpty())
                return;
            ending.stop();
            end.hurry();
            closed = !window->isVisible();
        });
        ending.start(10);
        book.showPrepare(nullptr, {row});
        QVERIFY(closed);
        QCOMPARE(shelf.written.keys(), QStringList());
    }

    void leave_byTheUser_givesADriveItsTime()
    {
        Desk desk;
        delete desk.writer;
        desk.end.leave(0);
        QCOMPARE(desk.unlocked, QList<std::chrono::milliseconds>{15s});
    }
};

QTEST_MAIN(TestProgramEnd)
#include "tst_programend.moc"
