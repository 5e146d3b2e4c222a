#pragma once

#include "common/Outcome.h"
#include "label/LabelItems.h"

#include <chrono>
#include <memory>

class QObject;

namespace zib {

/// The most pixels a picture keeps in memory; a larger file is read scaled down.
inline constexpr qint64 kMostPicturePixels = 32'000'000;

/// The most memory that decoding a picture may take; a larger one is refused unless its format can be read
/// scaled down.
inline constexpr qint64 kMostPictureBytes = 1'600'000'000;

/// How long a picture is looked for: a disk that starts and a share that connects answer within it.
inline constexpr std::chrono::seconds kLookingPatience{10};

/// Reads a picture, upright: an animated file gives its first frame, an orientation stored by a camera is
/// obeyed.
/// @returns a failure whose detail is a sentence for the user.
Outcome<LabelPicture> readPicture(const QString& path);

/// The picture of a file, read once for all who hold it at the same time; a changed file is read again. It is
/// looked for and read on a thread of its own, under the wait pointer; meanwhile windows paint, and nothing
/// the user does arrives. A place that does not answer is given up after a while; what is held of it is
/// used. GUI thread only.
/// @returns what readPicture returns, NotFound when there is no such file, or Cancelled when @p owner has
/// gone meanwhile.
Outcome<std::shared_ptr<const LabelPicture>>
sharedPicture(const QString& path, QObject* owner, std::chrono::milliseconds patience = kLookingPatience);

} // namespace zib
