#include "common/Errands.h"

#include <QElapsedTimer>
#include <QSemaphore>
#include <QTest>
#include <QThread>

#include <atomic>

using zib::Errands;

namespace {

constexpr int kPatienceMs = 20'000;

/// A place that hangs until it is told to answer; shared, as a question must own what it uses.
struct Place
{
    QSemaphore gate;
    std::atomic<int> asked = 0;
    std::atomic<int> answered = 0;
};

/// A question to a place that hangs.
std::function<int()> slow(const std::shared_ptr<Place>& place, int answer)
{
    return [place, answer] {
        ++place->asked;
        place->gate.acquire();
        ++place->answered;
        return answer;
    };
}

} // namespace

/// Questions that are answered at once, late, or never.
class TestErrands : public QObject
{
    Q_OBJECT
private slots:
    void init() { Errands::setPatience(Errands::kPatience); }

    void answerAtOnce_isThereWhenAskReturns()
    {
        Errands::setPatience(std::chrono::minutes(1));
        Errands errands;
        int got = 0;
        errands.ask<int>([] { return 7; }, [&got](int answer) { got = answer; });
        QCOMPARE(got, 7);
        QVERIFY(!errands.isWaiting());
    }

    void question_isAnsweredOnAnotherThread_andTakenOnOurs()
    {
        Errands errands;
        Qt::HANDLE asked = nullptr;
        Qt::HANDLE taken = nullptr;
        errands.ask<Qt::HANDLE>([] { return QThread::currentThreadId(); },
                                [&](Qt::HANDLE thread) {
                                    asked = thread;
                                    taken = QThread::currentThreadId();
                                });
        QTRY_VERIFY_WITH_TIMEOUT(asked != nullptr, kPatienceMs);
        QVERIFY(asked != QThread::currentThreadId());
        QCOMPARE(taken, QThread::currentThreadId());
    }

    void lateAnswer_comesFromTheEventLoop_andNobodyWaits()
    {
        const auto place = std::make_shared<Place>();
        Errands errands;
        QElapsedTimer clock;
        clock.start();
        int got = 0;
        errands.ask<int>(slow(place, 7), [&got](int answer) { got = answer; });
        QVERIFY2(clock.elapsed() < 5000, qPrintable(QString::number(clock.elapsed())));
        QVERIFY(errands.isWaiting());
        QTest::qWait(50);
        QCOMPARE(got, 0);
        place->gate.release();
        QTRY_COMPARE_WITH_TIMEOUT(got, 7, kPatienceMs);
        QVERIFY(!errands.isWaiting());
    }

    void answers_keepTheOrderOfTheQuestions()
    {
        const auto place = std::make_shared<Place>();
        Errands errands;
        QList<int> got;
        const auto take = [&got](int answer) { got << answer; };
        errands.ask<int>(slow(place, 1), take);
        errands.ask<int>([] { return 2; }, take);
        errands.ask<int>([] { return 3; }, take);
        QCOMPARE(got, QList<int>());
        place->gate.release();
        QTRY_COMPARE_WITH_TIMEOUT(got, (QList<int>{1, 2, 3}), kPatienceMs);
    }

    void forgotten_answersAreDropped_andUnbegunQuestionsNotAsked()
    {
        const auto place = std::make_shared<Place>();
        Errands errands;
        QList<int> got;
        const auto take = [&got](int answer) { got << answer; };
        errands.ask<int>(slow(place, 1), take);
        errands.ask<int>(slow(place, 2), take);
        errands.forget();
        errands.ask<int>([] { return 3; }, take);
        place->gate.release();
        QTRY_COMPARE_WITH_TIMEOUT(got, QList<int>{3}, kPatienceMs);
        QCOMPARE(place->asked.load(), 1);
    }

    void abandoned_whatHangsIsLeftBehind_andTheNextIsAnswered()
    {
        const auto place = std::make_shared<Place>();
        Errands errands;
        QVERIFY(!errands.abandon());
        QList<int> got;
        const auto take = [&got](int answer) { got << answer; };
        errands.ask<int>(slow(place, 1), take);
        QTRY_COMPARE_WITH_TIMEOUT(place->asked.load(), 1, kPatienceMs);
        QVERIFY(errands.abandon());
        errands.ask<int>([] { return 2; }, take);
        QTRY_COMPARE_WITH_TIMEOUT(got, QList<int>{2}, kPatienceMs);
        place->gate.release();
        QTRY_COMPARE_WITH_TIMEOUT(place->answered.load(), 1, kPatienceMs);
        QTest::qWait(20);
        QCOMPARE(got, QList<int>{2});
    }

    void destroyed_whileAQuestionHangs_waitsForNothing()
    {
        const auto place = std::make_shared<Place>();
        QElapsedTimer clock;
        bool called = false;
        {
            Errands errands;
            errands.ask<int>(slow(place, 1), [&called](int) { called = true; });
            QTRY_COMPARE_WITH_TIMEOUT(place->asked.load(), 1, kPatienceMs);
            clock.start();
        }
        QVERIFY2(clock.elapsed() < 5000, qPrintable(QString::number(clock.elapsed())));
        place->gate.release();
        QTRY_COMPARE_WITH_TIMEOUT(place->answered.load(), 1, kPatienceMs);
        QTest::qWait(20);
        QVERIFY(!called);
    }

    void destroyed_byAReceiver_isNoHarm()
    {
        auto errands = std::make_unique<Errands>();
        const auto place = std::make_shared<Place>();
        errands->ask<int>(slow(place, 1), [&errands](int) { errands.reset(); });
        errands->ask<int>([] { return 2; }, [](int) { QFAIL("nobody is there any more"); });
        place->gate.release();
        QTRY_VERIFY_WITH_TIMEOUT(!errands, kPatienceMs);
    }

    void whatAQuestionOwns_isLetGoOfOnItsThread()
    {
        struct Owned
        {
            explicit Owned(std::atomic<Qt::HANDLE>& thread) : goneOn(thread) {}
            ~Owned() { goneOn = QThread::currentThreadId(); }
            std::atomic<Qt::HANDLE>& goneOn;
        };
        std::atomic<Qt::HANDLE> goneOn = nullptr;
        Errands errands;
        errands.tell([owned = std::make_shared<Owned>(goneOn)] {});
        QTRY_VERIFY_WITH_TIMEOUT(goneOn != nullptr, kPatienceMs);
        QVERIFY(goneOn != QThread::currentThreadId());
    }

    void receiver_mayAskAgain()
    {
        Errands::setPatience(std::chrono::minutes(1));
        Errands errands;
        int sum = 0;
        errands.ask<int>([] { return 1; },
                         [&](int answer) {
                             sum += answer;
                             errands.ask<int>([] { return 10; }, [&sum](int next) { sum += next; });
                         });
        QCOMPARE(sum, 11);
    }
};

QTEST_MAIN(TestErrands)
#include "tst_errands.moc"
