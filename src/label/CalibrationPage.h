#pragma once

#include "components/Printer.h"
#include "label/LabelSettings.h"

namespace zib {

/// How far the cross of the calibration page lies from the paper's left and upper edge, in millimetres.
inline constexpr double kCrossMm = 30;

/// The length of the rulers on a paper of that size in twips, in millimetres: 100, less on a small one.
double rulerMm(QSizeF paper);

/// The page below, ready to be painted on any thread.
Printer::Page calibrationPage(const Printer::Target& target, const Calibration& inUse);

/// A page with a cross, a ruler across and a ruler down, drawn in twips from the printable area's corner.
/// Both rulers begin at the cross.
/// @param inUse the numbers that the page is set right by; they are printed beside the rulers.
void paintCalibrationPage(QPainter& painter, const Printer::Target& target, const Calibration& inUse);

} // namespace zib
