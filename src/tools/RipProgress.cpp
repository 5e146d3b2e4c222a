#include "tools/RipProgress.h"

#include "common/Numbers.h"
#include "components/CDRipperX.h"

#include <algorithm>

namespace zib {

namespace {
constexpr double kPercent = 100;
} // namespace

double fractionDone(qint32 start, qint32 end, qint32 position)
{
    const double first = start;
    return (position - first) / (end - first);
}

qint16 overallRipped(int done, double fraction, int total)
{
    const double overall = std::min((done + fraction) / total, 1.0);
    return narrowed<qint16>(roundHalfEven(overall * kPercent)).value_or(0);
}

float finishedRipped(int done, int total)
{
    return static_cast<float>(done) * static_cast<float>(kPercent) / static_cast<float>(total);
}

QString trackText(int track, const QString& what)
{
    return QStringLiteral("Track #%1 %2").arg(track, 2, 10, QLatin1Char('0')).arg(what);
}

QString driveStateText(int state)
{
    switch (state) {
    case CDRipperX::kPlaying:
        return QStringLiteral("Playing...");
    case CDRipperX::kPaused:
        return QStringLiteral("Paused...");
    case CDRipperX::kNoDisc:
        return QStringLiteral("No Disc Loaded...");
    case CDRipperX::kDiscLoaded:
        return QStringLiteral("Disc Loaded...");
    default:
        return QStringLiteral("No Status");
    }
}

} // namespace zib
