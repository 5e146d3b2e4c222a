#pragma once

#include "components/Printer.h"

#include <memory>

namespace zib {

/// The user's default printer, reached through CUPS.
std::unique_ptr<Printer> makePrinter();

} // namespace zib
