#pragma once

#include "components/DVDWriterPro.h"

#include <QString>

#include <chrono>
#include <memory>

namespace zib {

/// The disc writer of the program: the recorders of this machine, then the recorder of disc images.
/// @param imagesFolder where disc images go; made when the first one is written.
std::unique_ptr<DVDWriterPro> makeDiscWriter(const QString& imagesFolder);

/// Lets the discs be taken out of all drives that this process still has in its hands, past whatever hangs
/// there, in @p patience at most. For the end of the program.
/// @returns whether there were any.
bool unlockDrivesInUse(std::chrono::milliseconds patience);

/// Whether all those drives answer to a command within two seconds, be it with a refusal. One that takes
/// longer hangs, or spoils no more than it has spoilt already.
bool drivesInUseAnswer();

} // namespace zib
