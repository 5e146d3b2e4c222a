#include "tools/PositionSlider.h"

#include <QMouseEvent>
#include <QStyle>
#include <QStyleOptionSlider>

namespace zib {

PositionSlider::~PositionSlider() = default;

void PositionSlider::mousePressEvent(QMouseEvent* event)
{
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect handle = style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
    const QPoint at = event->position().toPoint();
    if (event->button() == Qt::LeftButton && !handle.contains(at)) {
        const int offset = at.x() - handle.width() / 2;
        setValue(QStyle::sliderValueFromPosition(minimum(), maximum(), offset, width() - handle.width(),
                                                 option.upsideDown));
    }
    QSlider::mousePressEvent(event);
}

} // namespace zib
