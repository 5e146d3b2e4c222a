#pragma once

#include "engines/burn/Recorder.h"
#include "engines/burn/compare/DiscPiece.h"
#include "engines/burn/compare/DiscSamples.h"

#include <optional>

namespace zib {

/// The last step of a write: compares what was written with its files and tells the observer how far it is.
/// A cancel ends the comparing only, and a remark says so.
/// @param readOffset as DiscComparison::run takes it.
/// @returns nothing when every sample is right, or the user did not want to wait; else what is wrong, or why
/// the comparing could not come to its end.
std::optional<BurnError> compareWithFiles(DiscSamples& disc, const QList<DiscPiece>& pieces, int readOffset,
                                          const BurnJob& job, BurnObserver& observer);
/// The same for an image.  @param image, @param seen as compareImage takes them.
std::optional<BurnError> compareWithFiles(const QString& image, const QList<DiscPiece>& pieces, qint64 seen,
                                          const BurnJob& job, BurnObserver& observer);

} // namespace zib
