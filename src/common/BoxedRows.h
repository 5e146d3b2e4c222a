#pragma once

#include <QObject>

class QAbstractItemView;
class QKeyEvent;
class QModelIndex;

namespace zib {

/// The keys and the mouse of a list whose rows have a box in their first column; one for every such list.
///
/// Space ticks the current row, or takes its tick away, whichever cell the user clicked. Ctrl+A ticks every
/// row. Home and End, with Ctrl or without, go to the first and the last row. A double click ticks as Space
/// does, unless the list's owner has another use for it; on the box itself the view does what it always does.
/// Rows without a box stay as they are. Lives as long as the view.
class BoxedRows final : public QObject
{
public:
    enum class DoubleClick
    {
        Ticks,
        IsTheOwners
    };

    BoxedRows(QAbstractItemView* view, DoubleClick doubleClick);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool takesKey(const QKeyEvent& event);
    void goTo(int row);
    void tickAll();
    void toggle(const QModelIndex& cell);
    void pressed(const QModelIndex& cell);
    void doubleClicked(const QModelIndex& cell);

    QAbstractItemView* const m_view;
    int m_pressedRow = -1;    ///< Where the last click began ...
    bool m_wasTicked = false; ///< ... and whether that row was ticked before it.
};

} // namespace zib
