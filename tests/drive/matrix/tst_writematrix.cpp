#include "CellRun.h"
#include "WriteSeat.h"

#include <QApplication>
#include <QTest>

#include <algorithm>
#include <cstdio>

using namespace zib;

// Every command of a write fails, lies, hangs or loses its drive, at its first, middle and last occurrence,
// in a real write and in test mode, session at once and track at once, and the user lets it run, cancels,
// closes the window or ends the program. After each: what the user was told is what became of the disc, the
// door is open, no local copy is left, the window answered all the time, and the next write works.
//
// The product has thousands of cells, each of them seconds of waiting: the tests draw some of them with a
// seed that they print. For others or for all of them, and for a single one:
//   tst_writematrix --cells 200 --seed 7       tst_writematrix --all       tst_writematrix --cell "NAME"

namespace {

struct Plan
{
    int cells = 32;
    quint32 seed = 20'261'121;
    int width = 8;
    int part = 0; ///< Of a whole product that several runs share.
    int parts = 1;
};

/// Plays cells, so many at once as there are slots, and prints a line for each.
class Matrix
{
public:
    explicit Matrix(int width) : m_width(width) {}

    QList<CellResult> play(const QList<Cell>& cells)
    {
        m_waiting = cells;
        m_results.clear();
        QEventLoop loop;
        m_loop = &loop;
        for (int i = 0; i < m_width; ++i)
            QTimer::singleShot(i * 100, &loop, [this] { next(); });
        if (!cells.isEmpty())
            loop.exec();
        return m_results;
    }

private:
    void next()
    {
        if (m_waiting.isEmpty())
            return;
        auto* run = new CellRun(m_waiting.takeFirst());
        ++m_running;
        QObject::connect(run, &CellRun::finished, m_loop, [this, run] { ended(run); });
        run->start();
    }

    void ended(CellRun* run)
    {
        const CellResult& result = run->result();
        m_results << result;
        std::printf("%s %s [%s] freeze %lld (machine %lld) silence %lld \"%s\"%s %s\n",
                    result.wrong.isEmpty() ? "ok" : "WRONG", qPrintable(result.cell.name()),
                    qPrintable(result.told), static_cast<long long>(result.freezeMs),
                    static_cast<long long>(result.starvationMs), static_cast<long long>(result.silenceMs),
                    qPrintable(result.silentText), result.struck ? "" : " (not struck)",
                    qPrintable(result.wrong));
        std::fflush(stdout);
        run->deleteLater();
        --m_running;
        next();
        if (m_running == 0 && m_waiting.isEmpty())
            m_loop->quit();
    }

    int m_width;
    int m_running = 0;
    QList<Cell> m_waiting;
    QList<CellResult> m_results;
    QEventLoop* m_loop = nullptr;
};

/// Every cell of one kind of write, real and in test mode; empty when a write that nothing disturbs fails.
QList<Cell> product(bool trackAtOnce)
{
    Cell undisturbed;
    undisturbed.trackAtOnce = trackAtOnce;
    Cell simulated = undisturbed;
    simulated.testMode = true;
    QList<Cell> cells;
    for (const CellResult& result : Matrix(2).play({undisturbed, simulated})) {
        if (!result.wrong.isEmpty()) {
            std::printf("undisturbed, %s: %s\n", qPrintable(result.cell.name()), qPrintable(result.wrong));
            return {};
        }
        cells << allCells(result.census, result.cell.testMode, trackAtOnce);
    }
    return cells;
}

/// Prints the figures.  @returns what went wrong.
QStringList summary(const QList<CellResult>& results)
{
    QStringList wrong;
    qsizetype struck = 0;
    CellResult frozen;
    CellResult silent;
    for (const CellResult& result : results) {
        struck += result.struck ? 1 : 0;
        if (result.freezeMs > frozen.freezeMs)
            frozen = result;
        if (result.silenceMs > silent.silenceMs)
            silent = result;
        if (!result.wrong.isEmpty())
            wrong << result.cell.name() + ": " + result.wrong;
    }
    std::printf("%d cells played, %d struck, %d wrong\n", int(results.size()), int(struck),
                int(wrong.size()));
    std::printf("longest freeze %lld ms (goal 100; the machine alone %lld ms): %s\n",
                static_cast<long long>(frozen.freezeMs), static_cast<long long>(frozen.starvationMs),
                qPrintable(frozen.cell.name()));
    std::printf("longest silence %lld ms under \"%s\": %s\n", static_cast<long long>(silent.silenceMs),
                qPrintable(silent.silentText), qPrintable(silent.cell.name()));
    return wrong;
}

int playAll(const Plan& plan)
{
    QList<Cell> all;
    for (const bool trackAtOnce : {false, true})
        all << product(trackAtOnce);
    QList<Cell> cells;
    for (qsizetype i = plan.part; i < all.size(); i += plan.parts)
        cells << all[i];
    std::printf("%d cells of %d\n", int(cells.size()), int(all.size()));
    return summary(Matrix(plan.width).play(cells)).isEmpty() ? 0 : 1;
}

int playOne(const QString& name)
{
    const QList<CellResult> results = Matrix(1).play({Cell::fromName(name)});
    for (const QString& line : results.first().story)
        std::printf("  %s\n", qPrintable(line));
    return summary(results).isEmpty() ? 0 : 1;
}

/// The part of the product that the sample is drawn from.
bool isDrawn(const Cell& cell)
{
    return cell.action != Cell::Action::Terminate && !cell.fault.contains("forever") &&
           cell.fault != "delay=9000";
}

QString valueOf(const QStringList& arguments, const QString& key)
{
    return arguments.value(arguments.indexOf(key) + 1);
}

} // namespace

/// Draws cells, plays them and counts what went wrong.
class TestWriteMatrix : public QObject
{
    Q_OBJECT
public:
    explicit TestWriteMatrix(const Plan& plan) : m_plan(plan) {}

private slots:
    void sessionAtOnce() { playSample(false); }
    void trackAtOnce() { playSample(true); }

private:
    void playSample(bool trackAtOnce)
    {
        const QList<Cell> all = product(trackAtOnce);
        QVERIFY2(all.size() > 500, "an undisturbed write fails");
        QList<Cell> open = all;
        open.removeIf([](const Cell& cell) { return !isDrawn(cell); });
        const QList<Cell> cells = drawn(open, m_plan.cells, m_plan.seed);
        std::printf("%d cells of %d, seed %u\n", int(cells.size()), int(all.size()), m_plan.seed);
        const QStringList wrong = summary(Matrix(m_plan.width).play(cells));
        QVERIFY2(wrong.isEmpty(), qPrintable("\n" + wrong.join('\n')));
    }

    Plan m_plan;
};

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.contains("--seat")) {
        WriteSeat seat(valueOf(arguments, "--seat"));
        return seat.run();
    }
    Plan plan;
    if (arguments.contains("--seed"))
        plan.seed = valueOf(arguments, "--seed").toUInt();
    if (arguments.contains("--cells"))
        plan.cells = valueOf(arguments, "--cells").toInt();
    if (arguments.contains("--slots"))
        plan.width = valueOf(arguments, "--slots").toInt();
    if (arguments.contains("--part")) {
        plan.part = valueOf(arguments, "--part").section('/', 0, 0).toInt();
        plan.parts = valueOf(arguments, "--part").section('/', 1).toInt();
    }
    if (arguments.contains("--cell"))
        return playOne(valueOf(arguments, "--cell"));
    if (arguments.contains("--all"))
        return playAll(plan);
    TestWriteMatrix test(plan);
    // One kind of write in each run; session at once unless told otherwise.
    const QString kind = arguments.contains("trackAtOnce") ? "trackAtOnce" : "sessionAtOnce";
    return QTest::qExec(&test, {arguments.first(), kind});
}
#include "tst_writematrix.moc"
