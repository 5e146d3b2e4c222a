// Stands in front of ioctl: SCSI commands and the kernel's CD-ROM requests reach the emulated drive.

#include "CdromRequests.h"
#include "Machine.h"
#include "Real.h"
#include "ScsiRequests.h"

#include <cerrno>
#include <cstdarg>
#include <sys/ioctl.h>

namespace {

using namespace zib::drive;

/// The magic numbers of the requests a CD-ROM node understands: SCSI and CD-ROM ('S'), SCSI generic (0x22),
/// block (0x12).
bool mayConcernDrives(unsigned long request)
{
    const unsigned long group = request >> 8U & 0xFFU;
    return group == 0x53 || group == 0x22 || group == 0x12;
}

} // namespace

extern "C" __attribute__((visibility("default"))) int ioctl(int fd, unsigned long request, ...)
{
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    static auto* const next = real<int(int, unsigned long, ...)>("ioctl");
    Machine* machine = mayConcernDrives(request) && !Inside::already() ? Machine::existing() : nullptr;
    if (machine == nullptr) {
        return next(fd, request, argument);
    }
    const Inside inside;
    Drive* drive = machine->driveOf(fd);
    if (drive == nullptr) {
        return next(fd, request, argument);
    }
    const int result = isScsiRequest(request) ? scsiRequest(*drive, request, argument)
                                              : cdromRequest(*drive, request, argument);
    if (result < 0) {
        errno = -result;
        return -1;
    }
    return result;
}
