#include "app/TrackTable.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

namespace zib {

namespace {

constexpr int kHintAlpha = 160; // Paler than the rows' text on any colours.
constexpr int kHintMargin = 24;

} // namespace

void TrackTable::setHint(const QString& text)
{
    m_hint = text;
    viewport()->update();
}

int TrackTable::selectedRow() const
{
    const QModelIndexList rows = selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

void TrackTable::chooseRow(int row)
{
    const QModelIndex index = model()->index(row, m_nameColumn);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    scrollTo(index);
}

void TrackTable::scrollTo(const QModelIndex& index, ScrollHint hint)
{
    const int left = horizontalScrollBar()->value();
    QTableView::scrollTo(index, hint);
    horizontalScrollBar()->setValue(left);
}

void TrackTable::rowsInserted(const QModelIndex& parent, int first, int last)
{
    QTableView::rowsInserted(parent, first, last);
    if (model()->rowCount() == last - first + 1)
        chooseRow(0);
    viewport()->update(); // The hint may have to go.
}

void TrackTable::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Left)
        horizontalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepSub);
    else if (event->key() == Qt::Key_Right)
        horizontalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepAdd);
    else
        return QTableView::keyPressEvent(event);
    event->accept();
}

void TrackTable::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        QTableView::mouseDoubleClickEvent(event);
}

void TrackTable::paintEvent(QPaintEvent* event)
{
    QTableView::paintEvent(event);
    if (model()->rowCount() > 0)
        return;
    QColor color = palette().color(QPalette::Text);
    color.setAlpha(kHintAlpha);
    QPainter painter(viewport());
    painter.setPen(color);
    const QRect room = viewport()->rect().adjusted(kHintMargin, kHintMargin, -kHintMargin, -kHintMargin);
    painter.drawText(room, Qt::AlignCenter | Qt::TextWordWrap, m_hint);
}

} // namespace zib
