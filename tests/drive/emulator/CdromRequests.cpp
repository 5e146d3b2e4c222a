#include "CdromRequests.h"

#include "Drive.h"

#include <linux/cdrom.h>
#include <linux/fs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>

namespace zib::drive {
namespace {

constexpr std::uint32_t kKernelTimeoutMs = 30000;
using Cdb = std::array<std::uint8_t, 16>;

/// The errno the kernel makes of a failed command.
int errnoOf(const Answer& answer)
{
    if (answer.error != 0) {
        return -answer.error;
    }
    if (answer.hostStatus != 0) {
        return -EIO;
    }
    if (answer.sense.good()) {
        return 0;
    }
    return answer.sense.key == 0x2 && answer.sense.asc == 0x3A ? -ENOMEDIUM : -EIO;
}

Answer send(Drive& drive, const Cdb& cdb, std::size_t replyBytes = 0)
{
    Request request;
    request.cdb = cdb;
    request.dataInBytes = replyBytes;
    request.timeoutMs = kKernelTimeoutMs;
    return drive.execute(request);
}

Answer readToc(Drive& drive, std::uint8_t from, bool msf)
{
    return send(drive, {0x43, static_cast<std::uint8_t>(msf ? 2 : 0), 0, 0, 0, 0, from, 0x08, 0x00}, 0x800);
}

int tocHeader(Drive& drive, cdrom_tochdr& header)
{
    const Answer answer = readToc(drive, 0, false);
    if (answer.data.size() >= 4) {
        header.cdth_trk0 = answer.data[2];
        header.cdth_trk1 = answer.data[3];
    }
    return errnoOf(answer);
}

int tocEntry(Drive& drive, cdrom_tocentry& entry)
{
    const bool msf = entry.cdte_format == CDROM_MSF;
    const Answer answer = readToc(drive, entry.cdte_track, msf);
    if (answer.data.size() < 12) {
        return answer.sense.good() && answer.error == 0 ? -EINVAL : errnoOf(answer);
    }
    entry.cdte_adr = answer.data[5] >> 4U & 0xFU;
    entry.cdte_ctrl = answer.data[5] & 0xFU;
    entry.cdte_datamode = (answer.data[5] & 4U) != 0 ? 1 : 0;
    if (msf) {
        entry.cdte_addr.msf = {answer.data[9], answer.data[10], answer.data[11]};
    } else {
        entry.cdte_addr.lba = addressAt(answer.data, 8);
    }
    return 0;
}

int sendPacket(Drive& drive, cdrom_generic_command& command)
{
    Cdb cdb{};
    std::copy_n(std::begin(command.cmd), CDROM_PACKET_SIZE, cdb.begin());
    Request request;
    request.cdb = cdb;
    request.timeoutMs =
        command.timeout > 0 ? static_cast<std::uint32_t>(command.timeout) * 10U : kKernelTimeoutMs;
    if (command.data_direction == CGC_DATA_WRITE) {
        request.dataOut = {command.buffer, command.buflen};
    } else if (command.data_direction == CGC_DATA_READ) {
        request.dataInBytes = command.buflen;
    }
    const Answer answer = drive.execute(request);
    command.stat = errnoOf(answer);
    if (request.dataInBytes > 0 && !answer.data.empty()) {
        std::memcpy(command.buffer, answer.data.data(),
                    std::min<std::size_t>(answer.data.size(), command.buflen));
    }
    if (command.sense != nullptr && !answer.sense.good()) {
        *command.sense = {};
        command.sense->error_code = 0x70;
        command.sense->sense_key = answer.sense.key & 0xFU;
        command.sense->add_sense_len = 10;
        command.sense->asc = answer.sense.asc;
        command.sense->ascq = answer.sense.ascq;
    }
    return errnoOf(answer);
}

int driveStatus(Drive& drive)
{
    const Answer ready = send(drive, {0x00});
    if (ready.error != 0) {
        return -ready.error;
    }
    if (ready.sense.good() || ready.sense.key == 0x6) {
        return CDS_DISC_OK;
    }
    if (ready.sense.asc != 0x3A) {
        return CDS_DRIVE_NOT_READY;
    }
    return ready.sense.ascq == 0x02 ? CDS_TRAY_OPEN : CDS_NO_DISC;
}

// The kernel looks at the tracks: any audio track makes the disc an audio or a mixed one.
int discStatus(Drive& drive)
{
    const Answer answer = readToc(drive, 0, false);
    if (answer.error != 0) {
        return -answer.error;
    }
    if (!answer.sense.good()) {
        return answer.sense.asc == 0x3A ? CDS_NO_DISC : CDS_NO_INFO;
    }
    bool audio = false;
    bool data = false;
    for (std::size_t at = 4; at + 8 <= answer.data.size(); at += 8) {
        const bool track = answer.data[at + 2] != CDROM_LEADOUT;
        audio = audio || (track && (answer.data[at + 1] & 4U) == 0);
        data = data || (track && (answer.data[at + 1] & 4U) != 0);
    }
    return audio && data ? CDS_MIXED : audio ? CDS_AUDIO : data ? CDS_DATA_1 : CDS_NO_INFO;
}

int capabilities(const DriveConfig& config)
{
    return CDC_CLOSE_TRAY | CDC_OPEN_TRAY | CDC_LOCK | CDC_SELECT_SPEED | CDC_MULTI_SESSION | CDC_MCN |
           CDC_MEDIA_CHANGED | CDC_PLAY_AUDIO | CDC_RESET | CDC_DRIVE_STATUS | CDC_GENERIC_PACKET |
           (config.writesCdR ? CDC_CD_R : 0) | (config.writesCdRw ? CDC_CD_RW : 0);
}

int selectSpeed(Drive& drive, unsigned long speed)
{
    const auto rate =
        static_cast<std::uint32_t>(speed == 0 ? 0xFFFF : kilobytesPerSecond(static_cast<int>(speed)));
    return errnoOf(send(drive, {0xBB, 0, static_cast<std::uint8_t>(rate >> 8U),
                                static_cast<std::uint8_t>(rate), 0xFF, 0xFF}));
}

int multiSession(Drive& drive, cdrom_multisession& info)
{
    const Answer answer = send(drive, {0x43, 0, 1, 0, 0, 0, 0, 0, 12}, 12);
    if (answer.data.size() < 12) {
        return errnoOf(answer);
    }
    const std::int32_t lba = addressAt(answer.data, 8);
    info.xa_flag = answer.data[3] > 1 ? 1 : 0;
    if (info.addr_format == CDROM_LBA) {
        info.addr.lba = lba;
    } else {
        const Msf msf = toMsf(lba);
        info.addr.msf = {msf.minute, msf.second, msf.frame};
    }
    return 0;
}

int subChannel(Drive& drive, cdrom_subchnl& info)
{
    const Answer answer = send(drive, {0x42, 2, 0x40, 1, 0, 0, 0, 0, 16}, 16);
    if (answer.data.size() >= 16) {
        info = {.cdsc_format = CDROM_MSF,
                .cdsc_audiostatus = answer.data[1],
                .cdsc_adr = 0,
                .cdsc_ctrl = 0,
                .cdsc_trk = answer.data[6],
                .cdsc_ind = answer.data[7],
                .cdsc_absaddr = {},
                .cdsc_reladdr = {}};
    }
    return errnoOf(answer);
}

int catalogNumber(Drive& drive, cdrom_mcn& mcn)
{
    const Answer answer = send(drive, {0x42, 0, 0x40, 2, 0, 0, 0, 0, 24}, 24);
    std::memset(&mcn, 0, sizeof mcn);
    if (answer.data.size() >= 22 && (answer.data[8] & 0x80U) != 0) {
        std::copy_n(answer.data.begin() + 9, 13, mcn.medium_catalog_number);
    }
    return errnoOf(answer);
}

// The old way to read audio: the kernel sends READ CD for whole frames.
int readAudio(Drive& drive, const cdrom_read_audio& request)
{
    const std::int32_t lba =
        request.addr_format == CDROM_LBA
            ? request.addr.lba
            : toLba({request.addr.msf.minute, request.addr.msf.second, request.addr.msf.frame});
    if (request.nframes <= 0 || request.nframes > kFramesPerSecond) {
        return -EINVAL;
    }
    const auto address = static_cast<std::uint32_t>(lba);
    const Answer answer =
        send(drive,
             {0xBE, 0x04, static_cast<std::uint8_t>(address >> 24U),
              static_cast<std::uint8_t>(address >> 16U), static_cast<std::uint8_t>(address >> 8U),
              static_cast<std::uint8_t>(address), 0, 0, static_cast<std::uint8_t>(request.nframes), 0xF8},
             static_cast<std::size_t>(request.nframes) * kFrameBytes);
    std::memcpy(request.buf, answer.data.data(), answer.data.size());
    return errnoOf(answer);
}

int moveTray(Drive& drive, bool out)
{
    return errnoOf(send(drive, {0x1B, 0, 0, 0, static_cast<std::uint8_t>(out ? 2 : 3)}));
}

} // namespace

int cdromRequest(Drive& drive, unsigned long request, void* argument)
{
    switch (request) {
    case CDROMREADTOCHDR:
        return tocHeader(drive, *static_cast<cdrom_tochdr*>(argument));
    case CDROMREADTOCENTRY:
        return tocEntry(drive, *static_cast<cdrom_tocentry*>(argument));
    case CDROM_SEND_PACKET:
        return sendPacket(drive, *static_cast<cdrom_generic_command*>(argument));
    case CDROM_GET_CAPABILITY:
        return capabilities(*drive.config());
    case CDROM_DRIVE_STATUS:
        return driveStatus(drive);
    case CDROM_DISC_STATUS:
        return discStatus(drive);
    case CDROM_MEDIA_CHANGED:
        return drive.takeMediaChanged() ? 1 : 0;
    case CDROM_LOCKDOOR:
        return errnoOf(send(drive, {0x1E, 0, 0, 0, static_cast<std::uint8_t>(argument != nullptr ? 1 : 0)}));
    case CDROM_SELECT_SPEED:
        return selectSpeed(drive, reinterpret_cast<unsigned long>(argument));
    case CDROMMULTISESSION:
        return multiSession(drive, *static_cast<cdrom_multisession*>(argument));
    case CDROMSUBCHNL:
        return subChannel(drive, *static_cast<cdrom_subchnl*>(argument));
    case CDROM_GET_MCN:
        return catalogNumber(drive, *static_cast<cdrom_mcn*>(argument));
    case CDROMREADAUDIO:
        return readAudio(drive, *static_cast<cdrom_read_audio*>(argument));
    case CDROMEJECT:
    case CDROMCLOSETRAY:
        return moveTray(drive, request == CDROMEJECT);
    case CDROMSTART:
    case CDROMSTOP:
    case CDROM_SET_OPTIONS:
    case CDROM_CLEAR_OPTIONS:
    case BLKFLSBUF:
        return 0;
    default:
        return -ENOTTY;
    }
}

} // namespace zib::drive
