#include "engines/burn/drive/GrabbedDrive.h"

#include "engines/burn/drive/DriveLedger.h"
#include "engines/burn/drive/LibburnSession.h"
#include "engines/burn/mmc/DriveLine.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <libburn/libburn.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace burn;

namespace zib {

namespace {

constexpr std::chrono::milliseconds kJanitorPoll{200};
constexpr dev_t kNoDevice = 0;

/// The number of the device at @p path.
dev_t numberOf(const QString& path)
{
    struct stat device = {};
    return ::stat(QFile::encodeName(path).constData(), &device) == 0 ? device.st_rdev : kNoDevice;
}

bool isDevice(int descriptor, dev_t device)
{
    struct stat open = {};
    return ::fstat(descriptor, &open) == 0 && S_ISBLK(open.st_mode) && open.st_rdev == device &&
           (::fcntl(descriptor, F_GETFL) & O_ACCMODE) == O_RDWR;
}

/// The library's descriptors that may write to a device, which may have gone meanwhile.
std::vector<int> openDescriptors(dev_t device)
{
    std::vector<int> found;
    if (device == kNoDevice)
        return found;
    const QStringList all = QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::System | QDir::AllEntries);
    for (const QString& name : all) {
        bool isNumber = false;
        const int descriptor = name.toInt(&isNumber);
        if (isNumber && !DriveLine::isOurs(descriptor) && isDevice(descriptor, device))
            found.push_back(descriptor);
    }
    return found;
}

void giveBack(burn_drive_info* info)
{
    if (!info)
        return;
    burn_drive_release(info->drive, 0);
    burn_drive_info_free(info);
}

/// Unlocks the door past the library, which is stuck in a call. On a thread of its own, for a drive in such a
/// state may take its time even for this.
void unlockLater(const QString& path)
{
    std::thread([path] {
        if (const auto line = DriveLine::open(path, DriveLine::Hold::Shared); line)
            unlockDoor(**line);
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
    std::unique_ptr<DriveLedger::Entry> hanging{};
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
    giveBack(call->info);
    call->hanging.reset();
}

} // namespace

Outcome<> GrabbedDrive::check(const QString& path)
{
    // The library can take no drive while a call of it hangs, on whatever drive.
    if (DriveLedger::anyHanging())
        return Failure{Failure::Kind::DeviceGone, path};
    const auto line = DriveLine::open(path, DriveLine::Hold::Exclusive);
    if (!line)
        return line.error();
    return {};
}

GrabbedDrive::GrabbedDrive(LibburnSession& session, const QString& path, int patienceMs,
                           const std::atomic<bool>* cancelled)
    : m_path(path), m_device(numberOf(path)), m_patienceMs(patienceMs), m_cancelled(cancelled)
{
    // A look of our own first: the library spends six seconds on a drive that another program holds.
    if (const Outcome<> free = check(path); !free) {
        m_failure = free.error();
        return;
    }
    m_failure = Failure{Failure::Kind::DeviceGone, path};
    // A look that failed may leave the drive open within the library, and a drive that came back after it had
    // gone is first only forgotten: then a new start of the library and a second look.
    if (grab() || DriveLedger::anyHanging())
        return;
    session.restart();
    if (grab() || DriveLedger::anyHanging())
        return;
    session.restart();
    cutWhatIsLeft();
}

GrabbedDrive::~GrabbedDrive()
{
    release();
}

namespace {

/// Whether a call came back within its time; a cancel shortens that.
bool comesBack(Call& call, std::unique_lock<std::mutex>& lock, int patienceMs,
               const std::atomic<bool>* cancelled)
{
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds kStep{50};
    constexpr std::chrono::milliseconds kAfterCancel{3000};
    auto end = Clock::now() + std::chrono::milliseconds(patienceMs);
    for (bool shortened = false; !call.done && Clock::now() < end;) {
        if (cancelled && *cancelled && !std::exchange(shortened, true))
            end = std::min(end, Clock::now() + kAfterCancel);
        call.changed.wait_for(lock, kStep);
    }
    return call.done;
}

} // namespace

/// Runs a call of the library on this drive.  @returns false when it hangs; the drive is then lost to us.
bool GrabbedDrive::bounded(const std::function<void(burn_drive_info*&)>& work)
{
    const auto call = std::make_shared<Call>();
    call->info = m_info;
    std::thread([call, work] { serve(call, work); }).detach();
    std::unique_lock lock(call->mutex);
    if (comesBack(*call, lock, m_patienceMs, m_cancelled)) {
        m_info = call->info;
        return true;
    }
    call->left = true;
    call->hanging = std::make_unique<DriveLedger::Entry>(m_path, DriveLedger::Use::Hanging);
    unlockLater(m_path);
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
    m_descriptors = openDescriptors(m_device);
    return true;
}

namespace {

/// The descriptors stay open and lead nowhere.
void cut(const std::vector<int>& descriptors)
{
    const int nowhere = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int descriptor : descriptors)
        ::dup3(nowhere, descriptor, O_CLOEXEC);
    ::close(nowhere);
}

} // namespace

std::function<void()> GrabbedDrive::knife() const
{
    return [device = m_device, held = m_descriptors] {
        std::vector<int> open = openDescriptors(device);
        std::erase_if(open, [&held](int descriptor) {
            return std::find(held.begin(), held.end(), descriptor) == held.end();
        });
        cut(open);
    };
}

/// A drive whose connection was lost in the middle may stay open in the library, which has forgotten it: then
/// nobody could have it any more.
void GrabbedDrive::cutWhatIsLeft() const
{
    if (DriveLedger::useOf(m_path) != DriveLedger::Use::Hanging)
        cut(openDescriptors(m_device));
}

void GrabbedDrive::release()
{
    if (!m_info)
        return;
    const auto letGo = [](burn_drive_info*& info) {
        giveBack(info);
        info = nullptr;
    };
    bounded(letGo);
    m_info = nullptr;
    cutWhatIsLeft();
}

void GrabbedDrive::unlockAside() const
{
    unlockLater(m_path);
}

void GrabbedDrive::leaveWriting(const LibraryThread& thread, std::shared_ptr<void> inUse)
{
    auto hanging = std::make_shared<DriveLedger::Entry>(m_path, DriveLedger::Use::Hanging);
    std::thread([info = std::exchange(m_info, nullptr), kept = std::move(inUse), hanging, thread]() mutable {
        while (thread.isRunning() || burn_drive_get_status(info->drive, nullptr) != BURN_DRIVE_IDLE)
            std::this_thread::sleep_for(kJanitorPoll);
        const LibburnSession session;
        giveBack(info);
        kept.reset();
        hanging.reset();
    }).detach();
    unlockLater(m_path);
    m_failure = Failure{Failure::Kind::DeviceGone, m_path};
}

burn_drive* GrabbedDrive::drive() const
{
    return m_info->drive;
}

} // namespace zib
