#include "common/OwnThread.h"
#include "engines/burn/drive/DriveLedger.h"
#include "engines/burn/drive/DriveRecorder.h"
#include "engines/burn/mmc/DriveLine.h"

#include <QFile>
#include <QHash>

#include <chrono>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include <sys/stat.h>

namespace zib {

namespace {

/// Drives that were found before: one that hangs can still be named.
class KnownDrives
{
public:
    static void keep(const DriveRecorder::Traits& traits)
    {
        const std::lock_guard lock(mutex());
        known()[traits.path] = traits;
    }
    static DriveRecorder::Traits named(const QString& path)
    {
        const std::lock_guard lock(mutex());
        return known().value(path, DriveRecorder::Traits{path, QStringLiteral("CD recorder"), {}});
    }

private:
    static std::mutex& mutex()
    {
        static auto* const only = new std::mutex;
        return *only;
    }
    static QHash<QString, DriveRecorder::Traits>& known()
    {
        static auto* const only = new QHash<QString, DriveRecorder::Traits>;
        return *only;
    }
};

/// One drive as a search finds it.
struct Found
{
    QString trouble{}; ///< Why it may not be used, and what to do; empty when it may.
    std::optional<DriveRecorder::Traits> traits{};
};

/// A drive that has gone since it was seen is none to tell of.
QString troubleWith(const Failure& failure)
{
    switch (failure.kind) {
    case Failure::Kind::DeviceGone:
        return {};
    case Failure::Kind::Busy:
        return QStringLiteral("Another program is using \"%1\". Close that program, then close this window "
                              "and open it again.")
            .arg(failure.detail);
    case Failure::Kind::NoPermission:
        return QStringLiteral("You may not use \"%1\". Ask for membership in the group cdrom, then log in "
                              "again.")
            .arg(failure.detail);
    default:
        return QStringLiteral("\"%1\" cannot be opened. Connect it again, then close this window and open it "
                              "again.")
            .arg(failure.detail);
    }
}

/// A drive that hangs, or writes for a window that has closed, is named without being asked.
Found inUse(const QString& path, const QString& why)
{
    DriveRecorder::Traits traits = KnownDrives::named(path);
    traits.model = (traits.model + u' ' + why).trimmed();
    traits.writesCdR = traits.sessionAtOnce = true; // else nobody could choose it
    traits.told = false;                            // another drive may stand at its place by now
    return {.traits = traits};
}

/// Behind an earlier question, which may hold the drive for nobody any more.
std::unique_ptr<DriveLedger::Entry> askedAlone(const QString& path,
                                               std::chrono::steady_clock::time_point until)
{
    constexpr std::chrono::milliseconds kPause{50};
    auto entry = DriveLedger::enterIfFree(path, DriveLedger::Use::Asked);
    while (!entry && std::chrono::steady_clock::now() < until) {
        std::this_thread::sleep_for(kPause);
        entry = DriveLedger::enterIfFree(path, DriveLedger::Use::Asked);
    }
    return entry;
}

Found look(const QString& path, std::chrono::steady_clock::time_point until)
{
    const auto asking = askedAlone(path, until);
    if (!asking)
        return inUse(path, QStringLiteral("(does not answer)"));
    const auto line = DriveLine::open(path, DriveLine::Hold::Exclusive);
    if (!line)
        return {.trouble = troubleWith(line.error())};
    unlockDoor(**line); // as a program that was killed may have left it
    const auto traits = DriveRecorder::traitsOf(**line);
    if (!traits)
        return inUse(path, QStringLiteral("(does not answer)"));
    if (!traits->writesCdR && !traits->writesCdRw)
        return {};
    KnownDrives::keep(*traits);
    return {.traits = traits};
}

/// Looks at one drive on a thread of its own, which is left behind when the drive does not answer in time.
std::future<Found> lookAside(const QString& path, std::chrono::steady_clock::time_point until)
{
    return onOwnThread([path, until] { return look(path, until); });
}

Found search(const QString& path, std::future<Found>& looking, std::chrono::steady_clock::time_point until)
{
    switch (DriveLedger::useOf(path)) {
    case DriveLedger::Use::Hanging:
        return inUse(path, QStringLiteral("(does not answer)"));
    case DriveLedger::Use::Writing:
        return inUse(path, QStringLiteral("(still writing)"));
    case DriveLedger::Use::Asked:
    case DriveLedger::Use::None:
        break;
    }
    if (looking.valid() && looking.wait_until(until) == std::future_status::ready)
        return looking.get();
    return inUse(path, QStringLiteral("(does not answer)"));
}

/// Device files of the machine's optical drives, in order, as the kernel numbers them.
QStringList opticalDevices()
{
    constexpr int kMostDrives = 32;
    QStringList devices;
    for (int number = 0; number < kMostDrives; ++number) {
        const QString path = QStringLiteral("/dev/sr%1").arg(number);
        struct stat status = {};
        if (::stat(QFile::encodeName(path).constData(), &status) == 0 && S_ISBLK(status.st_mode))
            devices << path;
    }
    return devices;
}

} // namespace

FoundRecorders findDrives(const DrivePatience& patience)
{
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(patience.searchMs);
    const QStringList devices = opticalDevices();
    std::vector<std::future<Found>> looks;
    for (const QString& path : devices)
        looks.push_back(DriveLedger::useOf(path) <= DriveLedger::Use::Asked ? lookAside(path, until)
                                                                            : std::future<Found>());
    FoundRecorders found;
    QStringList troubles;
    for (qsizetype i = 0; i < devices.size(); ++i) {
        const Found drive = search(devices[i], looks[static_cast<size_t>(i)], until);
        if (!drive.trouble.isEmpty())
            troubles << drive.trouble;
        if (drive.traits)
            found.recorders.push_back(std::make_shared<DriveRecorder>(*drive.traits, patience));
    }
    found.allUsable = troubles.isEmpty();
    found.trouble = troubles.join(u'\n');
    return found;
}

} // namespace zib
