#include "ScsiRequests.h"

#include "Machine.h"

#include <scsi/sg.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace zib::drive {
namespace {

constexpr int kSgVersion = 30527; // what the kernel's block layer answers
constexpr int kReservedBytes = 256 * 1024;
constexpr int kDefaultTimeoutTicks = 6000;
constexpr unsigned long kGetIdLun = 0x5382;
constexpr unsigned long kGetBusNumber = 0x5386;
constexpr unsigned short kDriverSense = 0x08;
constexpr unsigned char kCheckCondition = 0x02;
constexpr std::size_t kSenseBytes = 18;

std::array<std::uint8_t, kSenseBytes> fixedSense(const Answer& answer)
{
    std::array<std::uint8_t, kSenseBytes> bytes{static_cast<std::uint8_t>(answer.deferred ? 0x71 : 0x70)};
    bytes[2] = answer.sense.key;
    bytes[7] = kSenseBytes - 8;
    bytes[12] = answer.sense.asc;
    bytes[13] = answer.sense.ascq;
    if (answer.address) {
        bytes[0] |= 0x80;
        for (std::size_t i = 0; i < 4; ++i) {
            bytes.at(3 + i) =
                static_cast<std::uint8_t>(static_cast<std::uint32_t>(*answer.address) >> (24U - 8U * i));
        }
    }
    return bytes;
}

std::array<std::uint8_t, kSenseBytes> descriptorSense(const Answer& answer)
{
    return {static_cast<std::uint8_t>(answer.deferred ? 0x73 : 0x72), answer.sense.key, answer.sense.asc,
            answer.sense.ascq};
}

void reportStatus(sg_io_hdr_t& header, int status)
{
    header.status = static_cast<unsigned char>(status);
    header.masked_status = static_cast<unsigned char>(header.status >> 1U);
    header.info |= SG_INFO_CHECK;
}

void reportSense(sg_io_hdr_t& header, const Answer& answer, SenseFormat format)
{
    reportStatus(header, kCheckCondition);
    if (format == SenseFormat::None) {
        return;
    }
    header.driver_status = kDriverSense;
    const auto sense = format == SenseFormat::Descriptor ? descriptorSense(answer) : fixedSense(answer);
    const auto size = std::min<std::size_t>(sense.size(), header.mx_sb_len);
    if (header.sbp != nullptr) {
        std::memcpy(header.sbp, sense.data(), size);
        header.sb_len_wr = static_cast<unsigned char>(size);
    }
}

/// The bytes of a transfer, gathered from or scattered to the caller's pieces.
class Transfer
{
public:
    explicit Transfer(const sg_io_hdr_t& header)
    {
        if (header.iovec_count == 0) {
            m_pieces.push_back({header.dxferp, header.dxfer_len});
            return;
        }
        const auto* list = static_cast<const sg_iovec_t*>(header.dxferp);
        m_pieces.assign(list, list + header.iovec_count);
    }

    [[nodiscard]] Bytes gather() const
    {
        Bytes bytes;
        for (const auto& piece : m_pieces) {
            const auto* from = static_cast<const std::uint8_t*>(piece.iov_base);
            bytes.insert(bytes.end(), from, from + piece.iov_len);
        }
        return bytes;
    }

    void scatter(ByteView bytes) const
    {
        for (const auto& piece : m_pieces) {
            const auto size = std::min(bytes.size(), piece.iov_len);
            std::memcpy(piece.iov_base, bytes.data(), size);
            bytes = bytes.subspan(size);
        }
    }

private:
    std::vector<sg_iovec_t> m_pieces;
};

Request requestOf(const sg_io_hdr_t& header, std::array<std::uint8_t, 16>& cdb, Bytes& out)
{
    std::memcpy(cdb.data(), header.cmdp, std::min<std::size_t>(header.cmd_len, cdb.size()));
    if (header.dxfer_direction == SG_DXFER_TO_DEV && header.dxfer_len > 0) {
        out = Transfer{header}.gather();
    }
    const bool reads =
        header.dxfer_direction == SG_DXFER_FROM_DEV || header.dxfer_direction == SG_DXFER_TO_FROM_DEV;
    return {cdb, out, reads ? header.dxfer_len : 0, header.timeout};
}

int execute(Drive& drive, sg_io_hdr_t& header)
{
    // Clients tell by this refusal that the node takes SG_IO at all.
    if (header.interface_id != 'S' || header.cmd_len > 16) {
        return -EINVAL;
    }
    std::array<std::uint8_t, 16> cdb{};
    Bytes out;
    const Request request = requestOf(header, cdb, out);
    const Answer answer = drive.execute(request);
    if (answer.error != 0) {
        return -answer.error;
    }
    header.status = header.masked_status = header.msg_status = header.sb_len_wr = 0;
    header.host_status = static_cast<unsigned short>(answer.hostStatus);
    header.driver_status = 0;
    header.info = header.host_status != 0 ? SG_INFO_CHECK : SG_INFO_OK;
    header.duration = 0;
    const std::size_t size = std::min(answer.data.size(), request.dataInBytes);
    header.resid = static_cast<int>(request.dataInBytes - size);
    if (header.host_status != 0) {
        return 0;
    }
    if (size > 0) {
        Transfer{header}.scatter({answer.data.data(), size});
    }
    if (answer.status != 0) {
        reportStatus(header, answer.status);
    } else if (!answer.sense.good()) {
        reportSense(header, answer, drive.config()->senseFormat);
    }
    return 0;
}

int identify(const Drive& drive, void* argument)
{
    struct Identity
    {
        std::uint32_t address;
        std::uint32_t host;
    };
    *static_cast<Identity*>(argument) = {Machine::numberOf(drive), 0};
    return 0;
}

int store(void* argument, int value)
{
    *static_cast<int*>(argument) = value;
    return 0;
}

} // namespace

bool isScsiRequest(unsigned long request)
{
    return request >> 8U == 0x22 || request == kGetIdLun || request == kGetBusNumber;
}

int scsiRequest(Drive& drive, unsigned long request, void* argument)
{
    switch (request) {
    case SG_IO:
        return execute(drive, *static_cast<sg_io_hdr_t*>(argument));
    case kGetIdLun:
        return identify(drive, argument);
    case kGetBusNumber:
        return store(argument, 0);
    case SG_GET_VERSION_NUM:
        return store(argument, kSgVersion);
    case SG_GET_RESERVED_SIZE:
        return store(argument, kReservedBytes);
    case SG_GET_TIMEOUT:
        return kDefaultTimeoutTicks;
    case SG_EMULATED_HOST:
        return store(argument, 1);
    case SG_SET_RESERVED_SIZE:
    case SG_SET_TIMEOUT:
        return 0;
    default:
        return -ENOTTY;
    }
}

} // namespace zib::drive
