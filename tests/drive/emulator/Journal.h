#pragma once

#include <string>

namespace zib::drive {

/// Appends @p line and a line end to the file at @p path in one write, so that lines of several processes
/// stay whole. A journal that cannot be written is given up silently: the drive works without.
void appendToJournal(const std::string& path, std::string line);

} // namespace zib::drive
