#pragma once

#include <QList>
#include <QMap>
#include <QString>

namespace zib {

/// How often each command occurs from Start Writing to the end of an undisturbed write.
using Census = QMap<QString, int>;

/// One cell of the matrix: what the drive does, in which kind of write, and what the user does then.
struct Cell
{
    enum class Action
    {
        RunOn,    ///< nothing
        Cancel,   ///< presses Cancel
        Close,    ///< closes the window
        Terminate ///< ends the program with SIGTERM
    };

    QString command;
    int nth = 1;
    QString fault; ///< the words behind the command in a rule of the emulated recorder
    bool testMode = false;
    bool trackAtOnce = false;
    Action action = Action::RunOn;

    /// The whole rule; empty for a write that nothing disturbs.
    [[nodiscard]] QString rule() const;
    /// The words of the cell in one line; @c fromName reads them.
    [[nodiscard]] QString name() const;
    [[nodiscard]] static Cell fromName(const QString& name);
    /// The fault's sense data as the program tells it, "[3 0C 00]"; empty for another fault.
    [[nodiscard]] QString sense() const;
    /// How long the drive itself takes longer.
    [[nodiscard]] int delayMs() const;
    /// Whether the drive refuses for good to unlock its door.
    [[nodiscard]] bool keepsTheDoor() const;
};

/// Every cell over the commands of @p census: first, middle and last occurrence of each, with every fault
/// that a drive, its cable or its power gives there, and every action.
[[nodiscard]] QList<Cell> allCells(const Census& census, bool testMode, bool trackAtOnce);

/// @p count cells drawn with @p seed, as many as possible of each kind of write and action.
[[nodiscard]] QList<Cell> drawn(const QList<Cell>& cells, int count, quint32 seed);

} // namespace zib
