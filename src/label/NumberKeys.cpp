#include "label/NumberKeys.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScrollBar>

namespace zib {

namespace {

constexpr int kSlowRepeats = 10; ///< A third of a second at the usual rate, then
constexpr int kFastStep = 5;     ///< five at once, and
constexpr int kFastRepeats = 40; ///< a second later
constexpr int kFastestStep = 20; ///< twenty.

int stepAfter(int repeats)
{
    return repeats < kSlowRepeats ? 1 : repeats < kFastRepeats ? kFastStep : kFastestStep;
}

} // namespace

void NumberKeys::install(QScrollBar* bar, QLineEdit* box)
{
    if (!box->findChild<NumberKeys*>(QString(), Qt::FindDirectChildrenOnly))
        new NumberKeys(bar, box);
}

NumberKeys::NumberKeys(QScrollBar* bar, QLineEdit* box) : QObject(box), m_bar(bar), m_box(box)
{
    box->installEventFilter(this);
    bar->installEventFilter(this);
}

bool NumberKeys::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress)
        return keyPressed(*static_cast<QKeyEvent*>(event));
    if (event->type() != QEvent::Wheel || watched != m_box)
        return false;
    QCoreApplication::sendEvent(m_bar, event);
    return true;
}

bool NumberKeys::keyPressed(const QKeyEvent& event)
{
    switch (event.key()) {
    case Qt::Key_Up:
        step(-1, event);
        return true;
    case Qt::Key_Down:
        step(+1, event);
        return true;
    case Qt::Key_PageUp:
        m_bar->triggerAction(QAbstractSlider::SliderPageStepSub);
        return true;
    case Qt::Key_PageDown:
        m_bar->triggerAction(QAbstractSlider::SliderPageStepAdd);
        return true;
    case Qt::Key_Home:
        m_bar->triggerAction(QAbstractSlider::SliderToMaximum);
        return true;
    case Qt::Key_End:
        m_bar->triggerAction(QAbstractSlider::SliderToMinimum);
        return true;
    default:
        return false;
    }
}

void NumberKeys::step(int direction, const QKeyEvent& event)
{
    m_repeats = event.isAutoRepeat() ? m_repeats + 1 : 0;
    m_bar->setValue(m_bar->value() + direction * stepAfter(m_repeats) * m_bar->singleStep());
}

} // namespace zib
