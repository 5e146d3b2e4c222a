#include "engines/rip/drive/DriveQuestion.h"

#include <cerrno>

#include <cdio/cdio.h>
#include <cdio/mmc.h>
#include <cdio/mmc_cmds.h>

namespace zib {

namespace {
constexpr int kIllegalRequest = 0x5;
constexpr int kInvalidCommand = 0x20;
constexpr int kInvalidField = 0x24;
constexpr int kIllegalMode = 0x64; // for this track
} // namespace

bool askDrive(_CdIo* drive, std::initializer_list<int> command, quint8* reply, std::size_t size)
{
    mmc_cdb_t cdb{};
    std::size_t at = 0;
    for (const int byte : command)
        cdb.field[at++] = static_cast<quint8>(byte);
    errno = 0;
    return mmc_run_cmd(drive, kQuestionMs, &cdb, SCSI_MMC_DATA_READ, static_cast<unsigned>(size), reply) ==
           DRIVER_OP_SUCCESS;
}

Sense lastSense(const _CdIo* drive)
{
    cdio_mmc_request_sense_t* data = nullptr;
    Sense sense;
    if (mmc_last_cmd_sense(drive, &data) > 0 && data)
        sense = {data->sense_key, data->asc};
    cdio_free(data);
    return sense;
}

bool isRefusal(const Sense& sense)
{
    return sense.key == kIllegalRequest &&
           (sense.asc == kInvalidCommand || sense.asc == kInvalidField || sense.asc == kIllegalMode);
}

} // namespace zib
