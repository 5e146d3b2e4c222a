#include "label/NoteLabel.h"

#include <QPainter>
#include <QTextLayout>
#include <QTextOption>

#include <cmath>

namespace zib {

namespace {

QTextOption breaking()
{
    QTextOption option(Qt::AlignLeading);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    return option;
}

} // namespace

QSize NoteLabel::sizeHint() const
{
    return {fontMetrics().horizontalAdvance(text()), heightForWidth(width())};
}

QSize NoteLabel::minimumSizeHint() const
{
    return {fontMetrics().maxWidth(), heightForWidth(width())};
}

int NoteLabel::heightForWidth(int width) const
{
    QTextLayout layout(text(), font());
    layout.setTextOption(breaking());
    double height = 0;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        height += line.height();
    }
    layout.endLayout();
    return static_cast<int>(std::ceil(height));
}

void NoteLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    QTextOption option = breaking();
    option.setTextDirection(layoutDirection());
    painter.drawText(QRectF(rect()), text(), option);
}

} // namespace zib
