#pragma once

#include "common/Outcome.h"

#include <QString>

namespace zib {

/// Checks a CUE sheet before a library reads it: one binary file beside it, tracks of whole raw sectors that
/// follow each other, each with its beginning inside the file.
/// @param sheet path of the CUE sheet.
/// @returns the path of the binary file; UnreadableFile when anything is amiss.
Outcome<QString> soundBinaryOf(const QString& sheet);

} // namespace zib
