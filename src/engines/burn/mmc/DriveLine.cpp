#include "engines/burn/mmc/DriveLine.h"

#include <QFile>
#include <QThread>

#include <algorithm>
#include <array>
#include <cerrno>
#include <mutex>
#include <set>
#include <utility>

#include <fcntl.h>
#include <scsi/sg.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace zib {

namespace {

constexpr int kSenseBytes = 64;
constexpr int kCheckCondition = 0x02;
constexpr int kDescriptorFormat = 0x72; ///< SPC-3, 4.5.2; 0x73 for deferred errors.

/// The triple within sense data of either format.
Sense senseOf(const std::array<uchar, kSenseBytes>& bytes)
{
    const int format = bytes[0] & 0x7F;
    if (format == kDescriptorFormat || format == kDescriptorFormat + 1)
        return {bytes[1] & 0x0F, bytes[2], bytes[3]};
    return {bytes[2] & 0x0F, bytes[12], bytes[13]};
}

/// One command on its way.
struct Transport
{
    Transport(std::initializer_list<int> command, int timeoutMs)
    {
        std::transform(command.begin(), command.end(), cdb.begin(),
                       [](int byte) { return static_cast<uchar>(byte); });
        header.interface_id = 'S';
        header.dxfer_direction = SG_DXFER_NONE;
        header.cmd_len = static_cast<uchar>(command.size());
        header.cmdp = cdb.data();
        header.mx_sb_len = static_cast<uchar>(sense.size());
        header.sbp = sense.data();
        header.timeout = static_cast<unsigned>(timeoutMs);
    }

    void carry(int direction, void* data, qsizetype bytes)
    {
        if (bytes == 0)
            return;
        header.dxfer_direction = direction;
        header.dxferp = data;
        header.dxfer_len = static_cast<unsigned>(bytes);
    }

    DriveAnswer run(int device)
    {
        while (::ioctl(device, SG_IO, &header) != 0)
            if (errno != EINTR)
                return {.kind = errno == EIO ? DriveAnswer::Kind::Broken : DriveAnswer::Kind::Gone};
        const Sense told = senseOf(sense);
        if (header.status == kCheckCondition && told.key != 1)
            return {.kind = DriveAnswer::Kind::Refused, .sense = told};
        const bool arrived = header.host_status == 0 && (header.status & ~kCheckCondition) == 0;
        return {.kind = arrived ? DriveAnswer::Kind::Good : DriveAnswer::Kind::Broken};
    }

    sg_io_hdr_t header{};
    std::array<uchar, 16> cdb{};
    std::array<uchar, kSenseBytes> sense{};
};

} // namespace

bool DriveAnswer::passing() const
{
    constexpr int kUnitAttention = 6;
    constexpr int kBecomingReady = 0x04;
    return kind == Kind::Refused &&
           (sense.key == kUnitAttention || (sense.key == 2 && sense.asc == kBecomingReady));
}

bool DriveAnswer::hasNoDisc() const
{
    constexpr int kMediumNotPresent = 0x3A;
    return kind == Kind::Refused && sense.asc == kMediumNotPresent;
}

Outcome<std::shared_ptr<DriveLine>> DriveLine::open(const QString& path, Hold hold)
{
    const int exclusive = hold == Hold::Exclusive ? O_EXCL : 0;
    const int device =
        ::open(QFile::encodeName(path).constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC | exclusive);
    if (device >= 0)
        return std::shared_ptr<DriveLine>(new DriveLine(path, device));
    switch (errno) {
    case EBUSY:
        return Failure{Failure::Kind::Busy, path};
    case EACCES:
    case EPERM:
    case EROFS:
        return Failure{Failure::Kind::NoPermission, path};
    default:
        return Failure{Failure::Kind::DeviceGone, path};
    }
}

namespace {

std::mutex g_lineMutex;

/// The descriptors of all ways.
std::set<int>& descriptors()
{
    // Never destroyed: threads that hang may outlive everything else.
    static auto* const open = new std::set<int>;
    return *open;
}

} // namespace

bool DriveLine::isOurs(int descriptor)
{
    const std::lock_guard lock(g_lineMutex);
    return descriptors().contains(descriptor);
}

DriveLine::DriveLine(QString path, int device) : m_path(std::move(path)), m_device(device)
{
    const std::lock_guard lock(g_lineMutex);
    descriptors().insert(device);
}

DriveLine::~DriveLine()
{
    const std::lock_guard lock(g_lineMutex);
    descriptors().erase(m_device);
    ::close(m_device);
}

DriveAnswer DriveLine::read(std::initializer_list<int> command, int bytes, int timeoutMs)
{
    QByteArray data(bytes, '\0');
    Transport transport(command, timeoutMs);
    transport.carry(SG_DXFER_FROM_DEV, data.data(), bytes);
    DriveAnswer answer = transport.run(m_device);
    data.truncate(std::clamp(bytes - transport.header.resid, 0, bytes));
    if (answer.good())
        answer.data = data;
    return answer;
}

DriveAnswer DriveLine::send(std::initializer_list<int> command, const QByteArray& data, int timeoutMs)
{
    Transport transport(command, timeoutMs);
    transport.carry(SG_DXFER_TO_DEV, const_cast<char*>(data.constData()), data.size());
    return transport.run(m_device);
}

bool unlockDoor(DriveLine& line)
{
    constexpr int kTries = 5;
    constexpr unsigned long kPauseMs = 200;
    for (int tries = 0; tries < kTries; ++tries) {
        const DriveAnswer answer = line.send({0x1E, 0, 0, 0, 0, 0}); // MMC-5, 6.13: allow removal
        if (answer.good() || answer.kind == DriveAnswer::Kind::Gone)
            return answer.good();
        QThread::msleep(kPauseMs);
    }
    return false;
}

} // namespace zib
