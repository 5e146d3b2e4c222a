#include "common/BoxedRows.h"

#include <QAbstractItemView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyledItemDelegate>

namespace zib {

namespace {

QModelIndex boxOf(const QModelIndex& cell)
{
    const QModelIndex box = cell.siblingAtColumn(0);
    constexpr Qt::ItemFlags kNeeded = Qt::ItemIsEnabled | Qt::ItemIsUserCheckable;
    return (box.flags() & kNeeded) == kNeeded ? box : QModelIndex();
}

bool isTicked(const QModelIndex& box)
{
    return box.data(Qt::CheckStateRole).toInt() == Qt::Checked;
}

/// Frames the boxes of a dark list in its text's colour: styles draw them darker still, and nobody sees them.
class BoxFrames final : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::paint(painter, option, index);
        constexpr int kDark = 128;
        if (option.palette.color(QPalette::Base).lightness() >= kDark ||
            !index.data(Qt::CheckStateRole).isValid())
            return;
        QStyleOptionViewItem item = option;
        initStyleOption(&item, index);
        const QRect box =
            item.widget->style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &item, item.widget);
        painter->setPen(option.palette.color(QPalette::PlaceholderText));
        painter->drawRect(box.adjusted(0, 0, -1, -1));
    }
};

} // namespace

BoxedRows::BoxedRows(QAbstractItemView* view, DoubleClick doubleClick) : QObject(view), m_view(view)
{
    view->setItemDelegate(new BoxFrames(view));
    view->installEventFilter(this);
    if (doubleClick == DoubleClick::IsTheOwners)
        return;
    view->viewport()->installEventFilter(this);
    connect(view, &QAbstractItemView::doubleClicked, this, &BoxedRows::doubleClicked);
}

bool BoxedRows::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress && watched == m_view)
        return takesKey(*static_cast<QKeyEvent*>(event));
    if (event->type() == QEvent::MouseButtonPress && watched == m_view->viewport())
        pressed(m_view->indexAt(static_cast<QMouseEvent*>(event)->position().toPoint()));
    return false;
}

/// @returns whether the key is one of the list's; a key that is held down ticks once.
bool BoxedRows::takesKey(const QKeyEvent& event)
{
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    const bool plain = modifiers == Qt::NoModifier;
    const bool toTheEnds = plain || modifiers == Qt::ControlModifier;
    if (event.key() == Qt::Key_Space && plain) {
        if (!event.isAutoRepeat())
            toggle(m_view->currentIndex());
    } else if (event.matches(QKeySequence::SelectAll)) {
        tickAll();
    } else if (event.key() == Qt::Key_Home && toTheEnds) {
        goTo(0);
    } else if (event.key() == Qt::Key_End && toTheEnds) {
        goTo(m_view->model()->rowCount() - 1);
    } else {
        return false;
    }
    return true;
}

void BoxedRows::goTo(int row)
{
    const int column = qMax(0, m_view->currentIndex().column());
    if (const QModelIndex cell = m_view->model()->index(row, column); cell.isValid())
        m_view->setCurrentIndex(cell);
}

void BoxedRows::tickAll()
{
    QAbstractItemModel* model = m_view->model();
    for (int row = 0; row < model->rowCount(); ++row)
        if (const QModelIndex box = boxOf(model->index(row, 0)); box.isValid() && !isTicked(box))
            model->setData(box, Qt::Checked, Qt::CheckStateRole);
}

void BoxedRows::toggle(const QModelIndex& cell)
{
    if (const QModelIndex box = boxOf(cell); box.isValid())
        m_view->model()->setData(box, isTicked(box) ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
}

void BoxedRows::pressed(const QModelIndex& cell)
{
    m_pressedRow = cell.row();
    m_wasTicked = isTicked(boxOf(cell));
}

/// A first click that hit the box has ticked already: the rest is the view's.
void BoxedRows::doubleClicked(const QModelIndex& cell)
{
    if (cell.row() != m_pressedRow || isTicked(boxOf(cell)) == m_wasTicked)
        toggle(cell);
}

} // namespace zib
