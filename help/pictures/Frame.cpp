#include "Frame.h"

#include <QIcon>
#include <QPainter>
#include <QPainterPath>

namespace {

constexpr int kBar = 30;   // height of the title bar
constexpr int kShade = 10; // room for the shadow
constexpr int kRound = 7;  // radius of the upper corners

QPainterPath outline(const QRectF& box)
{
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    path.addRoundedRect(box, kRound, kRound);
    path.addRect(box.adjusted(0, box.height() / 2, 0, 0));
    return path.simplified();
}

void drawCross(QPainter& painter, const QPointF& middle)
{
    painter.drawLine(middle - QPointF(4, 4), middle + QPointF(4, 4));
    painter.drawLine(middle - QPointF(4, -4), middle + QPointF(4, -4));
}

} // namespace

QPixmap framed(const QPixmap& window, const QString& title, bool dialog)
{
    const QSize inner = window.deviceIndependentSize().toSize();
    QPixmap picture(inner + QSize(2 + 2 * kShade, kBar + 1 + 2 * kShade));
    picture.fill(Qt::white);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF box(kShade + 0.5, kShade - 1.5, inner.width() + 1, inner.height() + kBar);
    for (int i = kShade; i > 0; --i) {
        painter.fillPath(outline(box.adjusted(-i, -i + 3, i, i + 1).intersected(QRectF(picture.rect()))),
                         QColor(20, 40, 70, 6));
    }
    painter.setPen(QColor("#8fa0b5"));
    painter.setBrush(QColor("#dfe6ef"));
    painter.drawPath(outline(box));
    QIcon(":/icons/zibcdburner.svg").paint(&painter, QRect(kShade + 9, kShade + 5, 18, 18));
    painter.setPen(QColor("#24354b"));
    painter.drawText(QRectF(kShade + 34, kShade - 1, inner.width() - 110, kBar), Qt::AlignVCenter, title);
    painter.setPen(QPen(QColor("#44566d"), 1.4, Qt::SolidLine, Qt::RoundCap));
    const QPointF close(kShade + inner.width() - 18, kShade + kBar / 2.0 - 1);
    drawCross(painter, close);
    if (!dialog) {
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRectF(close.x() - 32, close.y() - 4, 8, 8));
        painter.drawLine(close - QPointF(56, -4), close - QPointF(48, -4));
    }
    painter.drawPixmap(kShade + 1, kShade + kBar - 2, window);
    return picture;
}
