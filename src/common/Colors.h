#pragma once

#include <QColor>

namespace zib {

/// The colour of a number that holds red in its low byte, as settings and labels store it.
QColor colorFromNumber(qint32 number);

/// The number of a colour, red in the low byte, without its transparency.
qint32 numberFromColor(const QColor& color);

} // namespace zib
