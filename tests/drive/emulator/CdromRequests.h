#pragma once

namespace zib::drive {

class Drive;

/// Carries out one of the kernel's CD-ROM requests (<linux/cdrom.h>) by sending the drive the commands the
/// kernel sends.
/// @returns what ioctl returns, or a negative errno.
int cdromRequest(Drive& drive, unsigned long request, void* argument);

} // namespace zib::drive
