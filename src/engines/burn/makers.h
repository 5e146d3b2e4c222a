#pragma once

#include "components/DVDWriterPro.h"

#include <QString>

#include <memory>

namespace zib {

/// The disc writer of the program: the recorders of this machine, then the recorder of disc images.
/// @param imagesFolder where disc images go; made when the first one is written.
std::unique_ptr<DVDWriterPro> makeDiscWriter(const QString& imagesFolder);

} // namespace zib
