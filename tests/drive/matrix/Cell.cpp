#include "Cell.h"

#include <QHash>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <random>

namespace zib {

namespace {

const QStringList kActions{"run on", "cancel", "close", "SIGTERM"};

/// Sense data as real drives give them for each command.
QString senseOf(const QString& command)
{
    static const QMap<QString, QString> known{
        {"TEST_UNIT_READY", "2/04/01"},
        {"WRITE_10", "3/0C/00"},
        {"SEND_CUE_SHEET", "5/26/00"},
        {"SYNCHRONIZE_CACHE", "3/72/02"},
        {"CLOSE_TRACK_SESSION", "3/72/00"},
        {"READ_TOC", "3/57/00"},
        {"READ_DISC_INFORMATION", "2/04/01"},
        {"MODE_SELECT_10", "5/26/00"},
        {"START_STOP_UNIT", "4/53/00"},
        {"PREVENT_ALLOW", "5/53/02"},
        {"SEND_OPC", "3/73/03"},
    };
    return known.value(command, "5/24/00");
}

QStringList faultsOf(const QString& command)
{
    const QString sense = "sense=" + senseOf(command);
    return {sense,
            sense + " times=forever",
            "errno=EIO",
            "errno=EIO times=forever",
            "errno=ENODEV",
            "host=7",
            "host=7 times=forever",
            "host=3",
            "delay=2500",
            "delay=9000",
            "gone"};
}

QList<int> occurrences(int count)
{
    QList<int> which{1, (count + 1) / 2, count};
    which.erase(std::unique(which.begin(), which.end()), which.end());
    return which;
}

/// The part of the product that shares kind of write and action.
int groupOf(const Cell& cell)
{
    return (cell.testMode ? 8 : 0) + (cell.trackAtOnce ? 4 : 0) + static_cast<int>(cell.action);
}

} // namespace

QString Cell::rule() const
{
    return command.isEmpty() ? QString() : QString("%1 nth=%2 %3").arg(command).arg(nth).arg(fault);
}

QString Cell::name() const
{
    return QString("%1, %2, %3, %4")
        .arg(testMode ? "test" : "real", trackAtOnce ? "TAO" : "SAO", kActions[static_cast<int>(action)],
             rule());
}

Cell Cell::fromName(const QString& name)
{
    const QStringList parts = name.split(", ");
    Cell cell;
    if (parts.size() != 4)
        return cell;
    cell.testMode = parts[0] == "test";
    cell.trackAtOnce = parts[1] == "TAO";
    cell.action = static_cast<Action>(std::max(0, static_cast<int>(kActions.indexOf(parts[2]))));
    cell.command = parts[3].section(' ', 0, 0);
    cell.nth = parts[3].section(' ', 1, 1).section('=', 1).toInt();
    cell.fault = parts[3].section(' ', 2);
    return cell;
}

QString Cell::sense() const
{
    static const QRegularExpression triple("sense=(\\w)/(\\w\\w)/(\\w\\w)");
    const auto match = triple.match(fault);
    return match.hasMatch()
               ? QString("[%1 %2 %3]").arg(match.captured(1), match.captured(2), match.captured(3))
               : QString();
}

int Cell::delayMs() const
{
    return fault.startsWith("delay=") ? fault.mid(6).toInt() : 0;
}

bool Cell::keepsTheDoor() const
{
    return command == "PREVENT_ALLOW" && fault.contains("forever");
}

QList<Cell> allCells(const Census& census, bool testMode, bool trackAtOnce)
{
    QList<Cell> cells;
    for (auto command = census.cbegin(); command != census.cend(); ++command)
        for (const int nth : occurrences(command.value()))
            for (const QString& fault : faultsOf(command.key()))
                for (const auto action : {Cell::Action::RunOn, Cell::Action::Cancel, Cell::Action::Close,
                                          Cell::Action::Terminate})
                    cells << Cell{command.key(), nth, fault, testMode, trackAtOnce, action};
    return cells;
}

QList<Cell> drawn(const QList<Cell>& cells, int count, quint32 seed)
{
    QHash<int, QList<Cell>> groups;
    for (const Cell& cell : cells)
        groups[groupOf(cell)] << cell;
    std::mt19937 random(seed);
    QList<int> keys = groups.keys();
    std::ranges::sort(keys);
    for (const int key : keys)
        std::ranges::shuffle(groups[key], random);
    QList<Cell> chosen;
    const auto wanted = std::min<qsizetype>(count, cells.size());
    for (qsizetype round = 0; chosen.size() < wanted; ++round)
        for (const int key : keys)
            if (round < groups[key].size() && chosen.size() < wanted)
                chosen << groups[key][round];
    return chosen;
}

} // namespace zib
