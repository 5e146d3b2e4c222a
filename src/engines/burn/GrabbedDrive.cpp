#include "engines/burn/GrabbedDrive.h"

#include "engines/burn/LibburnSession.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include <fcntl.h>
#include <libburn/libburn.h>
#include <scsi/sg.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace burn;

namespace zib {

namespace {

constexpr std::chrono::milliseconds kJanitorPoll{200};

bool isDevice(int descriptor, const struct stat& device)
{
    struct stat open = {};
    return ::fstat(descriptor, &open) == 0 && S_ISBLK(open.st_mode) && open.st_rdev == device.st_rdev &&
           (::fcntl(descriptor, F_GETFL) & O_ACCMODE) == O_RDWR;
}

/// The descriptors of this process that may write to the device at @p path.
std::vector<int> openDescriptors(const QString& path)
{
    std::vector<int> found;
    struct stat device = {};
    if (::stat(QFile::encodeName(path).constData(), &device) != 0)
        return found;
    const QStringList all = QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::System | QDir::AllEntries);
    for (const QString& name : all) {
        bool isNumber = false;
        const int descriptor = name.toInt(&isNumber);
        if (isNumber && isDevice(descriptor, device))
            found.push_back(descriptor);
    }
    return found;
}

/// Calls that have not come back from the library.
std::atomic<int> g_hanging = 0;

void giveBack(burn_drive_info* info, int eject)
{
    if (!info)
        return;
    burn_drive_release(info->drive, eject);
    burn_drive_info_free(info);
}

/// Unlocks the door past the library, which is stuck in a call. On a thread of its own, for a drive in such a
/// state may take its time even for this.
void unlockDoor(const QString& path)
{
    std::thread([name = QFile::encodeName(path)] {
        constexpr unsigned kTimeLimitMs = 5000;
        unsigned char allowRemoval[6] = {0x1E, 0, 0, 0, 0, 0}; // MMC-5, 6.13
        unsigned char sense[32] = {};
        sg_io_hdr_t request = {};
        request.interface_id = 'S';
        request.dxfer_direction = SG_DXFER_NONE;
        request.cmd_len = sizeof allowRemoval;
        request.cmdp = allowRemoval;
        request.mx_sb_len = sizeof sense;
        request.sbp = sense;
        request.timeout = kTimeLimitMs;
        const int device = ::open(name.constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        if (device < 0)
            return;
        ::ioctl(device, SG_IO, &request);
        ::close(device);
    }).detach();
}

/// A call on its own thread, which outlives its caller when it hangs.
struct Call
{
    std::mutex mutex;
    std::condition_variable changed;
    burn_drive_info* info = nullptr;
    bool done = false;
    bool left = false;
};

/// The call's thread: what was left behind is freed once the call has come back.
void serve(const std::shared_ptr<Call>& call, const std::function<void(burn_drive_info*&)>& work)
{
    work(call->info);
    std::unique_lock lock(call->mutex);
    call->done = true;
    const bool left = call->left;
    lock.unlock();
    call->changed.notify_all();
    if (!left)
        return;
    const LibburnSession session;
    giveBack(call->info, 0);
    --g_hanging;
}

} // namespace

Outcome<> GrabbedDrive::check(const QString& path)
{
    if (g_hanging > 0)
        return Failure{Failure::Kind::DeviceGone, path};
    const int device = ::open(QFile::encodeName(path).constData(), O_RDWR | O_EXCL | O_NONBLOCK | O_CLOEXEC);
    if (device >= 0) {
        ::close(device);
        return {};
    }
    switch (errno) {
    case EBUSY:
        return Failure{Failure::Kind::Busy, path};
    case EACCES:
    case EPERM:
    case EROFS:
        return Failure{Failure::Kind::NoPermission, path};
    default:
        return Failure{Failure::Kind::NotFound, path};
    }
}

GrabbedDrive::GrabbedDrive(LibburnSession& session, const QString& path, int patienceMs)
    : m_path(path), m_patienceMs(patienceMs)
{
    // A look of our own first: the library spends six seconds on a drive that another program holds.
    if (const Outcome<> free = check(path); !free) {
        m_failure = free.error();
        return;
    }
    m_failure = Failure{Failure::Kind::DeviceGone, path};
    // A look that failed may leave the drive open within the library, and a drive that came back after it had
    // gone is first only forgotten: then a new start of the library and a second look.
    if (grab() || g_hanging > 0)
        return;
    session.restart();
    if (!grab() && g_hanging == 0)
        session.restart();
}

GrabbedDrive::~GrabbedDrive()
{
    release(0);
}

/// Runs a call of the library on this drive.  @returns false when it hangs; the drive is then lost to us.
bool GrabbedDrive::bounded(const std::function<void(burn_drive_info*&)>& work)
{
    const auto call = std::make_shared<Call>();
    call->info = m_info;
    std::thread([call, work] { serve(call, work); }).detach();
    std::unique_lock lock(call->mutex);
    const auto patience = std::chrono::milliseconds(m_patienceMs);
    if (call->changed.wait_for(lock, patience, [&call] { return call->done; })) {
        m_info = call->info;
        return true;
    }
    call->left = true;
    ++g_hanging;
    unlockDoor(m_path);
    m_info = nullptr;
    m_failure = Failure{Failure::Kind::DeviceGone, m_path};
    return false;
}

bool GrabbedDrive::grab()
{
    const QByteArray address = QFile::encodeName(m_path);
    const auto look = [address](burn_drive_info*& info) {
        QByteArray name = address;
        if (burn_drive_scan_and_grab(&info, name.data(), 0) != 1)
            info = nullptr;
    };
    if (!bounded(look) || !m_info)
        return false;
    // Held by the library alone, so whatever is open is open there.
    m_descriptors = openDescriptors(m_path);
    return true;
}

std::function<void()> GrabbedDrive::knife() const
{
    return [path = m_path, held = m_descriptors] {
        const int nowhere = ::open("/dev/null", O_RDWR | O_CLOEXEC);
        const std::vector<int> open = openDescriptors(path);
        for (const int descriptor : held)
            if (std::find(open.begin(), open.end(), descriptor) != open.end())
                ::dup3(nowhere, descriptor, O_CLOEXEC);
        ::close(nowhere);
    };
}

bool GrabbedDrive::reassess()
{
    const auto answer = std::make_shared<std::atomic<int>>(0);
    const auto ask = [answer](burn_drive_info*& info) { *answer = burn_drive_re_assess(info->drive, 0); };
    return m_info && bounded(ask) && *answer > 0;
}

void GrabbedDrive::release(int eject)
{
    if (!m_info)
        return;
    const auto letGo = [eject](burn_drive_info*& info) {
        giveBack(info, eject);
        info = nullptr;
    };
    bounded(letGo);
    m_info = nullptr;
}

void GrabbedDrive::releaseEjecting()
{
    release(1);
}

void GrabbedDrive::leaveWriting(std::shared_ptr<void> inUse)
{
    ++g_hanging;
    std::thread([info = std::exchange(m_info, nullptr), kept = std::move(inUse)]() mutable {
        while (burn_drive_get_status(info->drive, nullptr) != BURN_DRIVE_IDLE)
            std::this_thread::sleep_for(kJanitorPoll);
        const LibburnSession session;
        giveBack(info, 0);
        kept.reset();
        --g_hanging;
    }).detach();
    unlockDoor(m_path);
    m_failure = Failure{Failure::Kind::DeviceGone, m_path};
}

burn_drive* GrabbedDrive::drive() const
{
    return m_info->drive;
}

} // namespace zib
