#pragma once

namespace zib::drive {

class Drive;

/// Whether @p request is one of the SCSI layer's: SG_IO and the questions around it.
[[nodiscard]] bool isScsiRequest(unsigned long request);

/// Carries out a request of the SCSI layer as the kernel would.
/// @returns what ioctl returns, or a negative errno.
int scsiRequest(Drive& drive, unsigned long request, void* argument);

} // namespace zib::drive
