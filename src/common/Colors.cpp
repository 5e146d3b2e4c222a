#include "common/Colors.h"

namespace zib {

QColor colorFromNumber(qint32 number)
{
    return QColor(number & 0xFF, (number >> 8) & 0xFF, (number >> 16) & 0xFF);
}

qint32 numberFromColor(const QColor& color)
{
    return color.red() | (color.green() << 8) | (color.blue() << 16);
}

} // namespace zib
