#pragma once

#include <QString>

#include <optional>

/// Minutes of a "mm:ss:hh" text as FormatDuration writes it, or nothing when the text is not of that shape.
std::optional<double> DurationTextToMinutes(const QString& text);

namespace zib {

/// Silence before each track, in seconds.
inline constexpr int kGapSeconds = 2;

/// Size of a file as the list shows it: kilobytes plus one, rounded, with "," between thousands and " KB".
QString fileSizeText(qint64 bytes);

/// A running time as FormatDuration writes it. Lists longer than its 32 bits of milliseconds (about 24 days)
/// are written in the same shape, with more digits of minutes.
QString totalTimeText(double minutes);

} // namespace zib
