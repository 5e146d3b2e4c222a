#pragma once

#include <QPointF>
#include <QString>
#include <QTransform>

namespace zib {

/// The size of the disc that the label is for, in millimetres.
struct DiscSize
{
    double outer = 118; ///< Diameter of the outer edge.
    double hub = 22;    ///< Diameter of the hole in the middle.
};

/// Reads it from the settings file: section "Label", keys "Disc Diameter" and "Hub Hole". A number that is
/// missing, unreadable or no size of a disc gives its default.
DiscSize discSize();

/// How far a printer misses, set right: four numbers for one printer and one paper. Counted from the paper's
/// upper left corner; a positive shift moves to the right and down.
struct Calibration
{
    double shiftAcross = 0;   ///< Millimetres.
    double shiftDown = 0;     ///< Millimetres.
    double scaleAcross = 100; ///< Percent.
    double scaleDown = 100;   ///< Percent.

    static constexpr double kFarthestShift = 25; ///< Millimetres, either way.
    static constexpr double kSmallestScale = 90; ///< Percent.
    static constexpr double kLargestScale = 110; ///< Percent.

    /// What it does to a page in twips whose origin lies at @p corner twips from the paper's corner.
    QTransform transform(QPointF corner) const;

    bool operator==(const Calibration&) const = default;
};

/// Reads the numbers from the settings file: section "Label, PRINTER, PAPER", keys "Shift Across", "Shift
/// Down", "Scale Across" and "Scale Down". A missing or unreadable number changes nothing.
Calibration calibrationFor(const QString& printer, const QString& paper);

/// Writes them there, in hundredths.
/// @returns whether the settings file holds them.
bool storeCalibration(const QString& printer, const QString& paper, const Calibration& calibration);

/// Millimetres as twips.
double twipsFromMm(double mm);
/// Twips as millimetres.
double mmFromTwips(double twips);

} // namespace zib
