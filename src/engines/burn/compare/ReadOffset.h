#pragma once

#include "engines/burn/compare/DiscPiece.h"
#include "engines/burn/compare/DiscSamples.h"

namespace zib {

/// Drives read and write sound a constant number of samples early or late; the greatest known sum of both is
/// below 3000.
inline constexpr int kMostReadOffset = 5 * kSamplesPerFrame;

/// By how many sample pairs the sound on a disc stands before its place, negative when behind it: the
/// smallest of at most kMostReadOffset that a few looks at the disc agree on. Looks that cannot be read, or
/// fit nowhere, do not count; 0 when none does.
int readOffsetOf(DiscSamples& disc, const QList<DiscPiece>& pieces);

} // namespace zib
