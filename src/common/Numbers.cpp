#include "common/Numbers.h"

#include <cmath>

namespace zib {

qint64 roundHalfEven(double value)
{
    constexpr double kLimit = 9.2e18;
    if (!(value > -kLimit && value < kLimit))
        return 0;
    const double below = std::floor(value);
    const double rest = value - below;
    const auto whole = static_cast<qint64>(below);
    if (rest == 0.5)
        return whole + (whole & 1);
    return rest > 0.5 ? whole + 1 : whole;
}

} // namespace zib
