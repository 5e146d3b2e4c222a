#pragma once

#include <QSlider>

namespace zib {

/// A slider that a click anywhere takes to the pointer, as players have it; the drag begins there.
class PositionSlider final : public QSlider
{
    Q_OBJECT
public:
    using QSlider::QSlider;
    ~PositionSlider() override;

protected:
    void mousePressEvent(QMouseEvent* event) override;
};

} // namespace zib
