#pragma once

#include "common/Outcome.h"
#include "engines/rip/sheets/DiscSheet.h"

namespace zib {

/// Reads the text of a CUE sheet: keywords in any letter case, names with quotes or without, lines that it
/// does not know passed over.
/// @returns BadValue with the reason in words when it tells no disc.
Outcome<DiscSheet> parseCueSheet(const QString& text);

} // namespace zib
