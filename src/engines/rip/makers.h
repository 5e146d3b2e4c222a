#pragma once

#include "components/CDRipperX.h"

#include <QString>

#include <memory>

namespace zib {

/// The ripper of the program: the drives of this machine, then the disc images.
/// @param imagesFolder where CUE sheets with their BIN files lie; need not exist.
std::unique_ptr<CDRipperX> makeRipper(const QString& imagesFolder);

} // namespace zib
