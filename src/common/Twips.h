#pragma once

#include "common/Numbers.h"

namespace zib {

/// Twips to one logical pixel on the screen (96 pixels and 1440 twips to the inch).
inline constexpr int kTwipsPerPixel = 15;
inline constexpr int kTwipsPerInch = 1440;

/// Twips as logical pixels, with their fraction.
constexpr double pixelsFromTwips(double twips)
{
    return twips / kTwipsPerPixel;
}

/// Twips as whole logical pixels, halves to the even one.
inline int wholePixels(qint64 twips)
{
    return static_cast<int>(roundHalfEven(pixelsFromTwips(static_cast<double>(twips))));
}

/// Logical pixels as twips.
constexpr qint32 twipsFromPixels(qint32 pixels)
{
    return pixels * kTwipsPerPixel;
}

} // namespace zib
