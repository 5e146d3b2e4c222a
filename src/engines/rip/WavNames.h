#pragma once

#include "common/DiscNames.h"

#include <QByteArray>

namespace zib {

/// The chunks of a WAV file that carry a track's names, to stand behind its sound: a LIST of kind INFO in
/// UTF-8, and, where a name goes beyond ASCII, which is all that every reader of INFO takes, an ID3v2 tag
/// too.
/// @returns an even number of bytes; none for a track without names.
QByteArray nameChunks(const TrackNames& names);

} // namespace zib
