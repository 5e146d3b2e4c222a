#include "common/ElidedLabel.h"

#include <QPainter>
#include <QStyle>

namespace zib {

void ElidedLabel::paintEvent(QPaintEvent* event)
{
    // NOLINTNEXTLINE(bugprone-parent-virtual-call): the label would draw the whole text.
    QFrame::paintEvent(event);
    const QRect room = contentsRect().marginsRemoved({margin(), margin(), margin(), margin()});
    // A line break in a name would push the rest of it out of sight.
    const QString line = text().simplified();
    QPainter painter(this);
    style()->drawItemText(&painter, room, static_cast<int>(alignment()), palette(), isEnabled(),
                          fontMetrics().elidedText(line, Qt::ElideRight, room.width()), foregroundRole());
}

} // namespace zib
