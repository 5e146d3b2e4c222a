#pragma once

#include "common/Outcome.h"
#include "label/LabelItems.h"

namespace zib {

/// The most pixels a picture keeps in memory; a larger file is read scaled down.
inline constexpr qint64 kMostPicturePixels = 32'000'000;

/// Reads a picture, upright: an animated file gives its first frame, an orientation stored by a camera is
/// obeyed.
/// @returns a failure whose detail is a sentence for the user.
Outcome<LabelPicture> readPicture(const QString& path);

} // namespace zib
