#pragma once

#include "common/Outcome.h"
#include "engines/rip/sheets/DiscSheet.h"

namespace zib {

/// Reads the text of a TOC file as cdrdao writes and takes them: tracks put together from parts of files and
/// from silence, with gaps and CD-TEXT.
/// @returns BadValue with the reason in words when it tells no disc.
Outcome<DiscSheet> parseTocSheet(const QString& text);

} // namespace zib
