#include "drive/burn/DiscTruth.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QProcess>
#include <QRegularExpression>

#include <cstdio>

using namespace zib;

// Every command of a write session fails: its first, middle and last occurrence, once and for good, with the
// sense data that drives give there; the disc is pulled, the drive unplugged and the write cancelled at every
// stage. After each: one end, and a true one; the door unlocked; no local copy left; and the same writer
// writes the next disc.
//
// A cell spends its time waiting for libburn's own pauses, so several processes share the cells.

namespace {

constexpr int kProcesses = 10;
constexpr int kCellTimeoutMs = 180'000;

/// Sense data as real drives give them for each command.
QStringList sensesOf(const QString& command)
{
    static const QMap<QString, QStringList> known{
        {"TEST_UNIT_READY", {"2/04/01"}},
        {"WRITE_10", {"3/0C/00", "3/0C/09"}},
        {"SEND_CUE_SHEET", {"5/26/00"}},
        {"SYNCHRONIZE_CACHE", {"3/72/02"}},
        {"CLOSE_TRACK_SESSION", {"3/72/00"}},
        {"READ_TOC", {"3/57/00"}},
        {"READ_DISC_INFORMATION", {"2/04/01"}},
        {"MODE_SELECT_10", {"5/26/00"}},
        {"START_STOP_UNIT", {"4/53/00"}},
        {"PREVENT_ALLOW", {"5/53/02"}},
        {"SEND_OPC", {"3/73/03"}},
    };
    return known.value(command, {"5/24/00"});
}

struct Cell
{
    QString name;
    bool trackAtOnce = false;
    QString fault;    ///< A rule of the emulated recorder; empty when the write is cancelled.
    QString cancelAt; ///< What the writer says when it is cancelled.

    QJsonObject toJson() const
    {
        return {{"name", name}, {"tao", trackAtOnce}, {"fault", fault}, {"cancelAt", cancelAt}};
    }
    static Cell fromJson(const QJsonObject& json)
    {
        return {json["name"].toString(), json["tao"].toBool(), json["fault"].toString(),
                json["cancelAt"].toString()};
    }
    QString sense() const
    {
        static const QRegularExpression triple("sense=(\\w)/(\\w\\w)/(\\w\\w)");
        const auto match = triple.match(fault);
        return match.hasMatch()
                   ? QString("[%1 %2 %3]").arg(match.captured(1), match.captured(2), match.captured(3))
                   : QString();
    }
};

/// How often each command occurs between start and end of an undisturbed write.
QMap<QString, int> commandsOfASession(bool trackAtOnce)
{
    BurnBench bench;
    if (trackAtOnce)
        bench.recorder.set("sao", "no");
    addPair(bench);
    QMap<QString, int> counts;
    if (!bench.takeDrive())
        return counts;
    bench.configure();
    bench.recorder.clearJournal();
    if (bench.write() != "completed")
        return counts;
    for (const QString& line : bench.recorder.journal()) {
        const QString command = line.section(' ', 2, 2);
        if (command != "OPEN")
            ++counts[command];
    }
    return counts;
}

void addFaultCells(QList<Cell>& cells, const QMap<QString, int>& counts, bool trackAtOnce)
{
    const QString mode = trackAtOnce ? "TAO " : "SAO ";
    for (auto command = counts.cbegin(); command != counts.cend(); ++command) {
        QList<int> occurrences{1, (command.value() + 1) / 2, command.value()};
        occurrences.erase(std::unique(occurrences.begin(), occurrences.end()), occurrences.end());
        for (const int nth : occurrences)
            for (const QString& sense : sensesOf(command.key()))
                for (const QString& times : {QString("1"), QString("forever")}) {
                    const QString rule =
                        QString("%1 nth=%2 times=%3 sense=%4").arg(command.key()).arg(nth).arg(times, sense);
                    cells << Cell{mode + rule, trackAtOnce, rule, {}};
                }
    }
}

void addStageCells(QList<Cell>& cells, const QMap<QString, int>& counts)
{
    const QStringList stages{"TEST_UNIT_READY", "READ_DISC_INFORMATION", "SEND_CUE_SHEET",
                             "SYNCHRONIZE_CACHE", "READ_TOC"};
    QList<std::pair<QString, int>> moments;
    for (const QString& stage : stages)
        moments << std::pair(stage, counts.value(stage));
    for (const int nth : {1, counts.value("WRITE_10") / 2, counts.value("WRITE_10")})
        moments << std::pair(QString("WRITE_10"), nth);
    for (const auto& [command, nth] : moments)
        for (const QString& what : {QString("pull"), QString("gone")}) {
            const QString rule = QString("%1 nth=%2 %3").arg(command).arg(nth).arg(what);
            cells << Cell{"SAO " + rule, false, rule, {}};
        }
    for (const char* moment : {"preparing", "caching", "reading 1", "progress", "reading 2", "closing disc"})
        cells << Cell{QString("cancelled at ") + moment, false, {}, moment};
}

/// What is wrong with how the write of this cell ended; empty when it ended well.
QString judgeEnd(const Cell& cell, const BurnBench& bench, const QString& end,
                 const QList<QByteArray>& tracks)
{
    if (end == "completed")
        return difference(bench.recorder, tracks,
                          cell.trackAtOnce ? bench.recorder.content()->tracks[0].start + 150 : 150);
    if (end == "cancelled")
        return cell.cancelAt.isEmpty() ? "nobody cancelled" : QString();
    if (end != "error")
        return end;
    if (bench.error != DVDWriterPro::kDriveError)
        return bench.description.isEmpty() ? "an error without words" : QString();
    if (bench.sense < 1000 || bench.sense > 1055)
        return QString("sense code %1").arg(bench.sense);
    if (!cell.sense().isEmpty() && bench.senseData != cell.sense())
        return "told as " + bench.senseData;
    return {};
}

QString judgeTraces(const Cell& cell, const BurnBench& bench)
{
    const bool drivesOwnWill = cell.fault.contains("PREVENT_ALLOW") || cell.fault.endsWith("gone");
    const auto unlocked = [&bench] { return !bench.recorder.doorLocked(); };
    if (!drivesOwnWill && !QTest::qWaitFor(unlocked, 5000))
        return "the door stays locked";
    if (!bench.leftCopies().isEmpty())
        return "copies left: " + bench.leftCopies().join(' ');
    return {};
}

QString playCell(const Cell& cell)
{
    BurnBench bench({.pollMs = 20,
                     .readyMs = 3000,
                     .callMs = 8000,
                     .writeMs = 3000,
                     .closeMs = 5000,
                     .cancelMs = 60'000});
    if (cell.trackAtOnce)
        bench.recorder.set("sao", "no");
    const QList<QByteArray> tracks = addPair(bench);
    if (!QDir().mkpath(bench.folder.filePath("cache")) || !bench.takeDrive())
        return "no drive";
    bench.cache = true;
    bench.configure();
    bench.onSaid = [&](const QString& text) {
        if (text == cell.cancelAt)
            bench.writer.cancel();
    };
    if (!cell.fault.isEmpty())
        bench.recorder.addFault(cell.fault);
    QString wrong = judgeEnd(cell, bench, bench.write(kCellTimeoutMs), tracks);
    if (wrong.isEmpty())
        wrong = judgeTraces(cell, bench);
    if (!wrong.isEmpty())
        return wrong;
    bench.recorder.clearFaults();
    bench.onSaid = {};
    bench.recorder.insert("fresh");
    QString again = bench.write(kCellTimeoutMs);
    // A call that hung in the library comes back once the drive is well; until then it is told so.
    for (int tries = 0; again == "error" && bench.error == BurnErrorCode::kStalled && tries < 10; ++tries) {
        QTest::qWait(1000);
        again = bench.write(kCellTimeoutMs);
    }
    if (again != "completed")
        return "the next write: " + again + " " + bench.description + bench.senseData;
    return judgeTraces(Cell(), bench);
}

/// Plays every n-th cell of a list, and prints a line for each that went wrong.
int playShare(const QString& listFile, int share)
{
    QFile file(listFile);
    if (!file.open(QIODevice::ReadOnly))
        return 2;
    const QJsonArray cells = QJsonDocument::fromJson(file.readAll()).array();
    int played = 0;
    for (int i = share; i < cells.size(); i += kProcesses) {
        const Cell cell = Cell::fromJson(cells[i].toObject());
        const QString wrong = playCell(cell);
        ++played;
        if (!wrong.isEmpty())
            std::printf("WRONG %s: %s\n", qPrintable(cell.name), qPrintable(wrong));
    }
    std::printf("PLAYED %d\n", played);
    return 0;
}

} // namespace

/// Runs the matrix and counts its cells.
class TestFaultMatrix : public QObject
{
    Q_OBJECT
private slots:
    void everyCell_endsTrulyAndCleanly();
};

void TestFaultMatrix::everyCell_endsTrulyAndCleanly()
{
    QList<Cell> cells;
    const QMap<QString, int> session = commandsOfASession(false);
    QVERIFY(session.contains("SEND_CUE_SHEET") && session.value("WRITE_10") > 10);
    addFaultCells(cells, session, false);
    addStageCells(cells, session);
    QMap<QString, int> single = commandsOfASession(true);
    QVERIFY(single.contains("CLOSE_TRACK_SESSION"));
    for (const QString& command : session.keys())
        if (command != "WRITE_10" && command != "SYNCHRONIZE_CACHE")
            single.remove(command);
    addFaultCells(cells, single, true);

    QTemporaryDir folder;
    QJsonArray list;
    for (const Cell& cell : cells)
        list << cell.toJson();
    put(folder.filePath("cells"), QJsonDocument(list).toJson());
    QList<QProcess*> shares;
    for (int share = 0; share < kProcesses; ++share) {
        shares << new QProcess(this);
        shares.last()->start(QCoreApplication::applicationFilePath(),
                             {"--cells", folder.filePath("cells"), QString::number(share)});
    }
    QStringList wrong;
    int played = 0;
    for (QProcess* share : shares) {
        QVERIFY(share->waitForFinished(-1));
        for (const QString& line : QString::fromUtf8(share->readAllStandardOutput()).split('\n')) {
            if (line.startsWith("WRONG "))
                wrong << line.mid(6);
            else if (line.startsWith("PLAYED "))
                played += line.mid(7).toInt();
        }
        QCOMPARE(share->exitStatus(), QProcess::NormalExit);
    }
    qInfo("%d cells played", played);
    QCOMPARE(played, int(cells.size()));
    QVERIFY2(wrong.isEmpty(), qPrintable("\n" + wrong.join('\n')));
}

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 4 && arguments[1] == "--cells")
        return playShare(arguments[2], arguments[3].toInt());
    TestFaultMatrix test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_faultmatrix.moc"
