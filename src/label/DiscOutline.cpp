#include "label/DiscOutline.h"

#include "common/Twips.h"

#include <QPainter>

namespace zib {

namespace {

constexpr int kFaint = 90; ///< Opacity, of 255.

} // namespace

DiscOutline::DiscOutline(QWidget* surface, const DiscSize& disc) : QWidget(surface), m_disc(disc)
{
    setObjectName(QStringLiteral("discOutline"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
}

/// Dark dashes on a light line are seen on every ground.
void DiscOutline::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    for (const double diameter : {m_disc.outer, m_disc.hub}) {
        const double radius = pixelsFromTwips(twipsFromMm(diameter)) / 2;
        painter.setPen(QPen(QColor(255, 255, 255, kFaint), 1));
        painter.drawEllipse(QRectF(rect()).center(), radius, radius);
        painter.setPen(QPen(QColor(0, 0, 0, kFaint), 1, Qt::DashLine));
        painter.drawEllipse(QRectF(rect()).center(), radius, radius);
    }
}

} // namespace zib
