#include "label/CalibrationPage.h"

#include "label/CaptionLayout.h"
#include "label/LabelLayout.h"
#include "label/LabelPainter.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace zib {

namespace {

constexpr double kLongestRulerMm = 100;
constexpr double kMarginMm = 10; ///< Left free beyond a ruler's end.
constexpr double kLineMm = 0.15; ///< Thickness of every line.
constexpr double kCrossArmMm = 10;
constexpr int kStepMm = 10; ///< A ruler is a multiple of it, and numbered at each.
constexpr double kPoints = 9;

/// Draws in millimetres from the paper's corner.
class MmPen
{
public:
    MmPen(QPainter& painter, QPointF corner) : m_painter(painter), m_corner(corner) {}

    void line(QPointF from, QPointF to) const
    {
        const double half = kLineMm / 2;
        const QRectF box = QRectF(from, to).normalized().adjusted(-half, -half, half, half);
        m_painter.fillRect(QRectF(at(box.topLeft()), at(box.bottomRight())), Qt::black);
    }
    void text(QPointF where, const QString& caption) const
    {
        const QFont font =
            paperFont(layout::labelFont(QStringLiteral("Arial"), kPoints, false, false, false));
        CaptionLayout(caption, font).paint(m_painter, at(where), Qt::black);
    }

private:
    QPointF at(QPointF mm) const { return QPointF(twipsFromMm(mm.x()), twipsFromMm(mm.y())) - m_corner; }

    QPainter& m_painter;
    QPointF m_corner;
};

double tickMm(int mm)
{
    return mm % kStepMm == 0 ? 5 : mm % 5 == 0 ? 3.5 : 2;
}

/// A ruler from the cross to the right or down, its marks on the far side of the text.
void paintRuler(const MmPen& pen, int length, bool across)
{
    const auto point = [across](double along, double aside) {
        return across ? QPointF(kCrossMm + along, kCrossMm - aside)
                      : QPointF(kCrossMm - aside, kCrossMm + along);
    };
    pen.line(point(0, 0), point(length, 0));
    for (int mm = 0; mm <= length; ++mm)
        pen.line(point(mm, 0), point(mm, tickMm(mm)));
    for (int mm = kStepMm; mm <= length; mm += kStepMm)
        pen.text(across ? point(mm - 2, 9.5) : point(mm - 2, 11), QString::number(mm));
}

QString explanation(const Printer::Target& target, const Calibration& inUse)
{
    const auto number = [](double value) { return QString::number(value, 'f', 2); };
    return QStringLiteral("Printer: %1\nPaper: %2 mm\n\nThe cross should lie %3 mm from the left edge\n"
                          "and %3 mm from the upper edge of the paper.\nBoth rulers should be %4 mm long.\n\n"
                          "Printed with these numbers:\nShift across %5 mm, down %6 mm\n"
                          "Scale across %7 %, down %8 %")
        .arg(target.printer, target.paper, QString::number(kCrossMm),
             QString::number(rulerMm(target.paperSize)), number(inUse.shiftAcross), number(inUse.shiftDown),
             number(inUse.scaleAcross), number(inUse.scaleDown));
}

} // namespace

double rulerMm(QSizeF paper)
{
    const double room = mmFromTwips(std::min(paper.width(), paper.height())) - kCrossMm - kMarginMm;
    return std::clamp(std::floor(room / kStepMm) * kStepMm, double(kStepMm), kLongestRulerMm);
}

Printer::Page calibrationPage(const Printer::Target& target, const Calibration& inUse)
{
    return [target, inUse](QPainter& painter) { paintCalibrationPage(painter, target, inUse); };
}

void paintCalibrationPage(QPainter& painter, const Printer::Target& target, const Calibration& inUse)
{
    const MmPen pen(painter, target.corner);
    pen.line({kCrossMm - kCrossArmMm, kCrossMm}, {kCrossMm + kCrossArmMm, kCrossMm});
    pen.line({kCrossMm, kCrossMm - kCrossArmMm}, {kCrossMm, kCrossMm + kCrossArmMm});
    const int length = static_cast<int>(rulerMm(target.paperSize));
    paintRuler(pen, length, true);
    paintRuler(pen, length, false);
    pen.text({kCrossMm + kMarginMm, kCrossMm + kMarginMm}, explanation(target, inUse));
}

} // namespace zib
