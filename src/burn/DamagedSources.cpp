#include "burn/DamagedSources.h"

#include "common/GeneralAPI.h"

#include <algorithm>

namespace zib {

namespace {

const QString kDamaged =
    QStringLiteral("The following files are damaged. What is lost of their sound is silent "
                   "or left out on the disc:\n");
constexpr qsizetype kLongestName = 60;

QString shortened(const QString& name)
{
    constexpr qsizetype kTail = 10; // the extension is seen
    if (name.size() <= kLongestName)
        return name;
    return name.first(kLongestName - kTail) + QChar(0x2026) + name.last(kTail);
}

/// Minutes and seconds as "3:07".
QString minutes(qint64 seconds)
{
    return QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

/// A length that is never none: in tenths of a second below a minute.
QString length(qint64 frames, int rateHz)
{
    const qint64 tenths = std::max<qint64>(1, qRound64(static_cast<double>(frames) * 10 / rateHz));
    if (tenths >= 600)
        return QStringLiteral("%1 minutes").arg(minutes((tenths + 5) / 10));
    return QStringLiteral("%1.%2 seconds").arg(tenths / 10).arg(tenths % 10);
}

} // namespace

void DamagedSources::add(const QString& source, const AudioLoss& loss, int rateHz)
{
    if (!loss.isAny() || rateHz <= 0 || m_sources.contains(source))
        return;
    m_sources.insert(source);
    if (m_lines.size() < kNamed)
        m_lines << QStringLiteral("%1: from %2 on, %3 lost")
                       .arg(shortened(GeneralAPI::GetFileNameOfPath(source)), minutes(loss.first / rateHz),
                            length(loss.frames, rateHz));
}

QString DamagedSources::text() const
{
    if (m_lines.isEmpty())
        return {};
    QString text = kDamaged + m_lines.join(u'\n');
    if (m_sources.size() > kNamed)
        text += QStringLiteral("\nand %1 more").arg(m_sources.size() - kNamed);
    return text;
}

} // namespace zib
