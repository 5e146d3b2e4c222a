#include "label/LabelSettings.h"

#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"
#include "common/Platform.h"
#include "common/Twips.h"

#include <array>

namespace zib {

namespace {

constexpr double kMmPerInch = 25.4;
constexpr double kSmallestDisc = 1;
constexpr double kLargestDisc = 300;

/// One number of a calibration: its key, its range and what it is when nothing is set right.
struct Number
{
    QString key;
    double Calibration::*field;
    double least;
    double most;
};

const std::array<Number, 4>& numbers()
{
    using C = Calibration;
    static const std::array<Number, 4> list{{
        {QStringLiteral("Shift Across"), &C::shiftAcross, -C::kFarthestShift, C::kFarthestShift},
        {QStringLiteral("Shift Down"), &C::shiftDown, -C::kFarthestShift, C::kFarthestShift},
        {QStringLiteral("Scale Across"), &C::scaleAcross, C::kSmallestScale, C::kLargestScale},
        {QStringLiteral("Scale Down"), &C::scaleDown, C::kSmallestScale, C::kLargestScale},
    }};
    return list;
}

/// A decimal number from the settings file, with a point or a comma.
double readNumber(const QString& section, const QString& key, double fallback, double least, double most)
{
    QString text = GeneralAPI::ReadIniString(section, key, {}, gSettingsFile);
    bool isNumber = false;
    const double number = text.replace(u',', u'.').toDouble(&isNumber);
    return isNumber && number >= least && number <= most ? number : fallback;
}

/// Brackets would end the section's name.
QString sectionFor(const QString& printer, const QString& paper)
{
    QString name = QStringLiteral("Label, %1, %2").arg(printer, paper);
    for (const char16_t bracket : {u'[', u']'})
        name.replace(bracket, u'_');
    return name;
}

} // namespace

DiscSize discSize()
{
    const QString section = QStringLiteral("Label");
    const DiscSize usual;
    return {readNumber(section, QStringLiteral("Disc Diameter"), usual.outer, kSmallestDisc, kLargestDisc),
            readNumber(section, QStringLiteral("Hub Hole"), usual.hub, kSmallestDisc, kLargestDisc)};
}

QTransform Calibration::transform(QPointF corner) const
{
    QTransform toPaper;
    toPaper.translate(-corner.x(), -corner.y());
    toPaper.translate(twipsFromMm(shiftAcross), twipsFromMm(shiftDown));
    toPaper.scale(scaleAcross / 100, scaleDown / 100);
    toPaper.translate(corner.x(), corner.y());
    return toPaper;
}

Calibration calibrationFor(const QString& printer, const QString& paper)
{
    Calibration calibration;
    for (const Number& number : numbers())
        calibration.*number.field = readNumber(sectionFor(printer, paper), number.key,
                                               calibration.*number.field, number.least, number.most);
    return calibration;
}

bool storeCalibration(const QString& printer, const QString& paper, const Calibration& calibration)
{
    const QString section = sectionFor(printer, paper);
    QList<IniChange> changes;
    for (const Number& number : numbers())
        changes << GeneralAPI::IniChangeOf(section, number.key,
                                           QString::number(calibration.*number.field, 'f', 2));
    return platform().ini && platform().ini->writeAll(changes, gSettingsFile);
}

double twipsFromMm(double mm)
{
    return mm / kMmPerInch * kTwipsPerInch;
}

double mmFromTwips(double twips)
{
    return twips / kTwipsPerInch * kMmPerInch;
}

} // namespace zib
