#include "app/CapacityGauge.h"

#include "app/GaugeReader.h"
#include "common/GenralMacro.h"
#include "common/Twips.h"

#include <QEvent>
#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>

namespace zib {

namespace {

constexpr int kLabelTop = 360;
constexpr int kLabelShift = 195;     ///< A label's start before its tick.
constexpr int kLastLabelShift = 390; ///< The last label's start before its tick.
constexpr int kBottomTwips = 60;
constexpr int kWholeStretch = 100; ///< Percent of the digits' own width.
constexpr int kStretchStep = 2;
constexpr int kLeastStretch = 50; ///< Narrower is not tried.
constexpr QColor kGrey(128, 128, 128);
constexpr QColor kTrough(255, 255, 255);
constexpr QColor kPaleGrey(200, 200, 200);
constexpr int kLightestDark = 160; ///< Lightness below which black is hard to read.

struct Band
{
    double from; ///< Minutes.
    double to;
    QColor color;
};

constexpr std::array<Band, 4> kBands{{{0, 60, QColor(0, 0, 255)},
                                      {60, 74, QColor(0, 255, 0)},
                                      {74, 80, QColor(255, 255, 0)},
                                      {80, 100, QColor(255, 0, 0)}}};

/// A rectangle given by its corners in twips, in logical pixels.
QRectF pixels(double left, double top, double right, double bottom)
{
    return {QPointF(pixelsFromTwips(left), pixelsFromTwips(top)),
            QPointF(pixelsFromTwips(right), pixelsFromTwips(bottom))};
}

/// One tick, a pixel wide.
void tick(QPainter& painter, double x, double bottom)
{
    painter.fillRect(pixels(x, 225, x + kTwipsPerPixel, bottom), kGrey);
}

QString labelText(int tens)
{
    return QString::number(tens * 10) + QStringLiteral(":00");
}

} // namespace

CapacityGauge::CapacityGauge(QWidget* parent) : QFrame(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    GaugeReader::install();
}

void CapacityGauge::showTotal()
{
    update();
    setToolTip(GaugeReader::valueText());
    QAccessibleValueChangeEvent news(this, TotalMinutes);
    QAccessible::updateAccessibility(&news);
}

QSize CapacityGauge::sizeHint() const
{
    const int labelHeight = static_cast<int>(std::ceil(QFontMetricsF(wideFont()).height()));
    return {wholePixels(12000), wholePixels(kLabelTop + kBottomTwips) + labelHeight};
}

QSize CapacityGauge::minimumSizeHint() const
{
    return {wholePixels(6600), sizeHint().height()};
}

/// The labels' font before it is made narrow; as high as it is then.
QFont CapacityGauge::wideFont() const
{
    QFont wide = font();
    wide.setPixelSize(11);
    wide.setHintingPreference(QFont::PreferNoHinting);
    wide.setStretch(kWholeStretch);
    return wide;
}

/// The last label has 405 twips up to the panel's edge, so the digits are made narrow enough for it. Each
/// stretch that is tried is a font to be found: unhinted digits narrow evenly, so the search begins where it
/// will end.
QFont CapacityGauge::narrowFont() const
{
    const double room = pixelsFromTwips(kLastLabelShift);
    QFont narrow = wideFont();
    const double width = QFontMetricsF(narrow).horizontalAdvance(labelText(10));
    if (width <= room)
        return narrow;
    const int near = static_cast<int>(kWholeStretch * room / width) / kStretchStep * kStretchStep;
    for (int stretch = std::min(near + kStretchStep, kWholeStretch); stretch > kLeastStretch;
         stretch -= kStretchStep) {
        narrow.setStretch(stretch);
        if (QFontMetricsF(narrow).horizontalAdvance(labelText(10)) <= room)
            break;
    }
    return narrow;
}

/// The labels are black in every theme, so a dark theme does not reach the panel behind them.
QColor CapacityGauge::background() const
{
    const QColor window = palette().color(QPalette::Window);
    return window.lightness() >= kLightestDark ? window : kPaleGrey;
}

void CapacityGauge::changeEvent(QEvent* event)
{
    QFrame::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        m_labelFont.reset();
        updateGeometry();
    }
}

/// Twips of the scale from 0 to 100 minutes.
double CapacityGauge::scaleTwips() const
{
    return twipsFromPixels(width()) - kTwipsPerPixel;
}

void CapacityGauge::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    painter.fillRect(rect(), background());
    paintTrough(painter);
    paintTicks(painter);
    paintLabels(painter);
    paintFill(painter);
    painter.end();
    QFrame::paintEvent(event);
}

void CapacityGauge::paintTrough(QPainter& painter) const
{
    const double w = scaleTwips();
    painter.fillRect(pixels(0, 60, w + kTwipsPerPixel, 180 + kTwipsPerPixel), kGrey);
    painter.fillRect(pixels(15, 75, w, 180), kTrough);
    painter.fillRect(pixels(0, 225, w + kTwipsPerPixel, 225 + kTwipsPerPixel), kGrey);
}

void CapacityGauge::paintTicks(QPainter& painter) const
{
    const double w = scaleTwips();
    for (int j = 0; j <= 100; ++j)
        tick(painter, w * j / 100, j % 10 == 0 ? 345 : j % 5 == 0 ? 315 : 285);
}

void CapacityGauge::paintLabels(QPainter& painter)
{
    if (!m_labelFont)
        m_labelFont = narrowFont();
    painter.setFont(*m_labelFont);
    painter.setPen(Qt::black);
    const double baseline = pixelsFromTwips(kLabelTop) + QFontMetricsF(*m_labelFont).ascent();
    for (int i = 0; i <= 10; ++i) {
        const int shift = i == 0 ? 0 : i == 10 ? kLastLabelShift : kLabelShift;
        painter.drawText(QPointF(pixelsFromTwips(scaleTwips() * i / 10 - shift), baseline), labelText(i));
    }
}

void CapacityGauge::paintFill(QPainter& painter) const
{
    const double filled = std::min(TotalMinutes, kScaleMinutes);
    const auto x = [this](double minutes) { return kTwipsPerPixel + scaleTwips() * minutes / kScaleMinutes; };
    for (const Band& band : kBands)
        if (filled > band.from)
            painter.fillRect(
                pixels(x(band.from), 75, std::min(x(std::min(filled, band.to)), scaleTwips()), 180),
                band.color);
}

} // namespace zib
