#pragma once

#include "engines/audio/SourceFile.h"

namespace zib {

/// Bytes of a tag's beginning that tell its size.
inline constexpr int kTagHead = 32;

/// Bytes of an ID3v2 tag that begins at @p tag (ten bytes); 0 when none does.
qint64 id3v2Bytes(const uchar* tag);
/// Bytes of any tag that begins at @p tag (kTagHead bytes) and tells its size there; 0 when none does.
qint64 leadingTagBytes(const uchar* tag);
/// Bytes of the tag in which @p file ends at @p end, not reaching before @p begin; 0 when there is none.
qint64 trailingTagBytes(const SourceFile& file, qint64 begin, qint64 end);

} // namespace zib
