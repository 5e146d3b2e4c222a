#include "platform/QuitSignals.h"

#include "fakes/OpenFiles.h"

#include <QSignalSpy>
#include <QTest>

#include <csignal>
#include <memory>

/// The signals that ask a program to end.
class TestQuitSignals : public QObject
{
    Q_OBJECT
private slots:
    void signal_isAnEvent_andTheSystemsOwnAgainAfterwards()
    {
        const qsizetype before = zib::openFiles();
        auto quit = std::make_unique<zib::QuitSignals>();
        QSignalSpy raised(quit.get(), &zib::QuitSignals::raised);
        for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
            raised.clear();
            QCOMPARE(std::raise(number), 0);
            QTRY_COMPARE(raised.size(), 1);
        }
        quit.reset();
        for (const int number : {SIGTERM, SIGINT, SIGHUP})
            QVERIFY(std::signal(number, SIG_DFL) == SIG_DFL);
        QCOMPARE(zib::openFiles(), before);
    }
};

QTEST_GUILESS_MAIN(TestQuitSignals)
#include "tst_quitsignals.moc"
