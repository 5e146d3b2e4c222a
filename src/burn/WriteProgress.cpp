#include "burn/WriteProgress.h"

#include "common/Numbers.h"

#include <algorithm>
#include <cmath>

namespace zib {

std::optional<int> overallPercent(qint32 track, qint32 done, qint32 size, qint16 trackCount)
{
    if (size == 0 || trackCount == 0)
        return std::nullopt;
    const auto ofTrack = static_cast<double>(roundHalfEven(static_cast<double>(done) / size * 100));
    const qint64 ofAll = roundHalfEven((static_cast<double>(track) - 1 + ofTrack / 100) / trackCount * 100);
    return static_cast<int>(std::clamp<qint64>(ofAll, 0, 100));
}

QString speedText(double factor)
{
    if (factor == std::floor(factor))
        return QString::number(factor, 'f', 0) + u'x';
    return QString::number(std::floor(factor * 10 + 0.5) / 10, 'f', 1) + u'x';
}

} // namespace zib
