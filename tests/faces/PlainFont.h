#pragma once

#include <QFont>

namespace zib {

/// A font made on the spot, whose measures no machine decides: every letter is half as wide as the font is
/// high, three quarters of it stand above the line, a quarter below, and nothing between lines.
///
/// @returns it with letters of 8 by 16 pixels; the application knows it by kPlainFont from then on.
QFont plainFont();

inline constexpr const char* kPlainFont = "Zib Plain";

} // namespace zib
