#pragma once

#include "components/DVDWriterPro.h"

#include <QString>

#include <memory>

namespace zib {

/// The disc writer of the program: the recorders of this machine, then the recorder of disc images.
/// @param imagesFolder where disc images go; made when the first one is written.
std::unique_ptr<DVDWriterPro> makeDiscWriter(const QString& imagesFolder);

/// Lets the discs be taken out of all drives that this process still has in its hands, past whatever hangs
/// there, in some seconds. For the end of the program.
/// @returns whether there were any.
bool unlockDrivesInUse();

} // namespace zib
