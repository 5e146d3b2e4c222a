#include "app/totals.h"

#include "common/GeneralAPI.h"
#include "common/Numbers.h"

#include <QLocale>
#include <QStringList>

#include <array>
#include <cmath>

std::optional<double> DurationTextToMinutes(const QString& text)
{
    const QStringList parts = text.split(u':');
    if (parts.size() != 3)
        return std::nullopt;
    std::array<double, 3> numbers{};
    for (size_t i = 0; i < numbers.size(); ++i) {
        bool numeric = false;
        numbers.at(i) = parts.at(static_cast<qsizetype>(i)).toInt(&numeric);
        if (!numeric)
            return std::nullopt;
    }
    return numbers[0] + numbers[1] / 60 + numbers[2] / 100 / 60;
}

namespace zib {

QString fileSizeText(qint64 bytes)
{
    const double kilobytes = static_cast<double>(bytes) / 1024 + 1;
    const QLocale english(QLocale::English,
                          QLocale::UnitedStates); // "," between thousands, whatever the desktop's.
    return english.toString(static_cast<qint64>(std::floor(kilobytes + 0.5))) + QStringLiteral(" KB");
}

QString totalTimeText(double minutes)
{
    const qint64 milliseconds = roundHalfEven(minutes * 60 * 1000);
    if (const auto narrow = narrowed<qint32>(milliseconds))
        return GeneralAPI::FormatDuration(*narrow);
    const auto rest = static_cast<qint32>(milliseconds % 60000);
    return QString::number(milliseconds / 60000) + GeneralAPI::FormatDuration(rest).mid(2);
}

} // namespace zib
