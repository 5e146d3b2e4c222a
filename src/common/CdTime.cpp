#include "common/CdTime.h"

namespace zib {

QString CdTime::toMsf() const
{
    const qint64 seconds = m_frames / kFramesPerSecond;
    const auto two = [](qint64 n) { return QStringLiteral("%1").arg(n, 2, 10, QLatin1Char('0')); };
    return two(seconds / 60) + QLatin1Char(':') + two(seconds % 60) + QLatin1Char(':') +
           two(m_frames % kFramesPerSecond);
}

} // namespace zib
