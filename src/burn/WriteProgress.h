#pragma once

#include <QString>

#include <optional>

namespace zib {

/// The percent of the whole write, rounded with halves to even like the track's percent that it is made of;
/// never above 100.
/// @param track from 1.  @param done bytes of the track so far.  @param size bytes of the track.
/// @returns nothing when the numbers allow no reckoning.
std::optional<int> overallPercent(qint32 track, qint32 done, qint32 size, qint16 trackCount);

/// A write speed as the list shows it: "8x", with one decimal when it is no whole number.
QString speedText(double factor);

} // namespace zib
