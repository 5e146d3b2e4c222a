#pragma once

#include <QtGlobal>

#include <limits>
#include <optional>

namespace zib {

/// Rounds to the nearest whole number, halves to the even one. NaN and values beyond 64 bits give 0.
qint64 roundHalfEven(double value);

/// @p value as a narrower integer, or nothing when it does not fit: callers name the overflow, none wraps.
template <typename Narrow>
constexpr std::optional<Narrow> narrowed(qint64 value)
{
    if (value < std::numeric_limits<Narrow>::min() || value > std::numeric_limits<Narrow>::max())
        return std::nullopt;
    return static_cast<Narrow>(value);
}

/// The product as a 32-bit number, or nothing when it overflows.
constexpr std::optional<qint32> product32(qint32 a, qint32 b)
{
    return narrowed<qint32>(qint64{a} * qint64{b});
}

} // namespace zib
