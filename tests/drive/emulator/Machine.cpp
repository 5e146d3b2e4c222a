#include "Machine.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace zib::drive {
namespace {

constexpr unsigned kScsiCdromMajor = 11;
constexpr gid_t kCdromGroup = 24;
constexpr std::string_view kDeviceFolder = "/dev/";

std::atomic<Machine*> theMachine{nullptr};

int fail(int error)
{
    errno = error;
    return -1;
}

const char* nameOf(int error)
{
    switch (error) {
    case EBUSY:
        return "EBUSY";
    case ENOMEDIUM:
        return "ENOMEDIUM";
    default:
        return "EACCES";
    }
}

void becomeBlockDevice(struct ::stat& info, const Drive& drive)
{
    const bool denied = drive.config()->access == NodeAccess::Denied;
    info.st_mode = S_IFBLK | (denied ? 0600U : 0660U);
    info.st_gid = kCdromGroup;
    info.st_rdev = ::makedev(kScsiCdromMajor, Machine::numberOf(drive));
    info.st_size = 0;
    info.st_blocks = 0;
}

std::string fileText(const std::string& path)
{
    std::string text;
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    std::array<char, 4096> piece{};
    for (ssize_t got = 1; fd >= 0 && got > 0;) {
        got = ::read(fd, piece.data(), piece.size());
        text.append(piece.data(), static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    }
    ::close(fd);
    return text;
}

std::string column(const std::vector<std::string>& values, const char* title)
{
    std::string line = title;
    for (const auto& value : values) {
        line += "\t" + value;
    }
    return line + "\n";
}

} // namespace

Machine::Machine(std::string configPath) : m_configPath(std::move(configPath)) {}

Machine* Machine::instance()
{
    const char* path = std::getenv(kVariable);
    if (path == nullptr || *path == '\0') {
        return nullptr;
    }
    // A test that goes on to another configuration gets another machine. The old ones stay for whoever still
    // uses them.
    static std::mutex making;
    static auto& made = *new std::map<std::string, std::unique_ptr<Machine>>; // outlives exit handlers
    const std::lock_guard lock{making};
    auto& machine = made[path];
    if (machine == nullptr) {
        machine = std::make_unique<Machine>(path);
    }
    theMachine = machine.get();
    return machine.get();
}

Machine* Machine::existing()
{
    return theMachine.load();
}

unsigned Machine::numberOf(const Drive& drive)
{
    const auto name = drive.config()->name;
    const auto digit = name.find_first_of("0123456789");
    return digit == std::string::npos ? 0 : static_cast<unsigned>(std::atoi(name.c_str() + digit));
}

void Machine::take(const DriveConfig& config)
{
    Slot& slot = m_slots[config.name];
    slot.configured = true;
    if (slot.drive != nullptr) {
        slot.drive->configure(config);
        return;
    }
    slot.drive = std::make_unique<Drive>(config);
    const std::string node = config.folder + "/" + config.name + ".node";
    const int fd = ::open(node.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    struct ::stat info
    {
    };
    if (fd >= 0 && ::fstat(fd, &info) == 0) {
        slot.nodeDevice = info.st_dev;
        slot.nodeFile = info.st_ino;
        ::close(fd);
    }
}

// Reading the file each time costs a few microseconds. Its time stamp is no substitute: two changes may share
// one.
void Machine::refresh()
{
    const std::string text = fileText(m_configPath);
    if (text == m_configText) {
        return;
    }
    m_configText = text;
    const Config config = readConfig(m_configPath, text);
    for (const auto& problem : config.problems) {
        std::fprintf(stderr, "emulated drive: %s: %s\n", m_configPath.c_str(), problem.c_str());
    }
    for (auto& [name, slot] : m_slots) {
        slot.configured = false;
    }
    for (const auto& [name, drive] : config.drives) {
        take(drive);
    }
}

bool Machine::pluggedIn(const Slot& slot)
{
    return slot.configured && slot.drive->config()->access != NodeAccess::Missing && !slot.drive->gone();
}

Machine::Slot* Machine::slotOf(std::string_view path)
{
    refresh();
    if (!path.starts_with(kDeviceFolder)) {
        return nullptr;
    }
    const auto found = m_slots.find(path.substr(kDeviceFolder.size()));
    return found == m_slots.end() || !pluggedIn(found->second) ? nullptr : &found->second;
}

bool Machine::isNode(std::string_view path)
{
    const std::lock_guard lock{m_mutex};
    return slotOf(path) != nullptr;
}

int Machine::refusalOf(const Drive& drive, int flags)
{
    const bool writing = (flags & O_ACCMODE) != O_RDONLY;
    switch (drive.config()->access) {
    case NodeAccess::Denied:
        return EACCES;
    case NodeAccess::ReadOnly:
        return writing ? EACCES : 0;
    case NodeAccess::Busy:
        return (flags & O_EXCL) != 0 ? EBUSY : 0;
    default:
        return (flags & O_NONBLOCK) == 0 && !drive.loaded() ? ENOMEDIUM : 0;
    }
}

int Machine::openNode(Slot& slot, int flags)
{
    const auto config = *slot.drive->config();
    const std::string node = config.folder + "/" + config.name + ".node";
    const int fd = ::open(node.c_str(), (flags & (O_ACCMODE | O_CLOEXEC | O_NONBLOCK)));
    if (fd >= 0 && (flags & O_EXCL) != 0 && ::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        ::close(fd);
        return fail(EBUSY);
    }
    return fd;
}

int Machine::open(std::string_view path, int flags)
{
    const std::lock_guard lock{m_mutex};
    Slot* slot = slotOf(path);
    if (slot == nullptr) {
        return fail(ENOENT);
    }
    const int refusal = refusalOf(*slot->drive, flags);
    const int fd = refusal != 0 ? fail(refusal) : openNode(*slot, flags);
    const int error = errno;
    const bool exclusive = (flags & O_EXCL) != 0;
    slot->drive->noteOpening(exclusive ? "exclusive" : "shared", fd >= 0 ? "good" : nameOf(error));
    errno = error;
    return fd;
}

int Machine::access(std::string_view path, int mode)
{
    const std::lock_guard lock{m_mutex};
    const Slot* slot = slotOf(path);
    if (slot == nullptr) {
        return fail(ENOENT);
    }
    const bool denied =
        (mode & (R_OK | W_OK)) != 0 &&
        refusalOf(*slot->drive, ((mode & W_OK) != 0 ? O_RDWR : O_RDONLY) | O_NONBLOCK) == EACCES;
    return denied || (mode & X_OK) != 0 ? fail(EACCES) : 0;
}

int Machine::describe(std::string_view path, struct ::stat& info)
{
    const std::lock_guard lock{m_mutex};
    const Slot* slot = slotOf(path);
    if (slot == nullptr) {
        return fail(ENOENT);
    }
    const auto config = *slot->drive->config();
    const int described = ::stat((config.folder + "/" + config.name + ".node").c_str(), &info);
    becomeBlockDevice(info, *slot->drive);
    return described;
}

bool Machine::disguise(struct ::stat& info)
{
    if (!S_ISREG(info.st_mode)) {
        return false;
    }
    const std::lock_guard lock{m_mutex};
    for (const auto& [name, slot] : m_slots) {
        if (slot.nodeFile == info.st_ino && slot.nodeDevice == info.st_dev) {
            becomeBlockDevice(info, *slot.drive);
            return true;
        }
    }
    return false;
}

Drive* Machine::driveOf(int fd)
{
    struct ::stat info
    {
    };
    const std::lock_guard lock{m_mutex};
    if (::fstat(fd, &info) != 0 || !(S_ISREG(info.st_mode) || S_ISBLK(info.st_mode))) {
        return nullptr;
    }
    refresh();
    for (const auto& [name, slot] : m_slots) {
        if (slot.nodeFile == info.st_ino && slot.nodeDevice == info.st_dev) {
            return slot.drive.get();
        }
    }
    return nullptr;
}

std::vector<std::string> Machine::nodes()
{
    const std::lock_guard lock{m_mutex};
    refresh();
    std::vector<std::string> paths;
    for (const auto& [name, slot] : m_slots) {
        if (pluggedIn(slot)) {
            paths.push_back(std::string{kDeviceFolder} + name);
        }
    }
    return paths;
}

std::string Machine::procInfo()
{
    std::vector<std::string> names;
    std::vector<std::string> speeds;
    std::vector<std::string> yes;
    for (const auto& path : nodes()) {
        const std::lock_guard lock{m_mutex};
        const Slot* slot = slotOf(path);
        if (slot != nullptr) {
            names.push_back(slot->drive->config()->name);
            speeds.push_back(std::to_string(slot->drive->config()->readSpeed));
            yes.emplace_back("1");
        }
    }
    return "CD-ROM information, Id: cdrom.c 3.20 2003/12/17\n\n" + column(names, "drive name:\t") +
           column(speeds, "drive speed:\t") + column(yes, "drive # of slots:") +
           column(yes, "Can close tray:\t") + column(yes, "Can open tray:\t") +
           column(yes, "Can lock tray:\t") + column(yes, "Can play audio:\t") +
           column(yes, "Can write CD-R:\t") + column(yes, "Can write CD-RW:") + "\n";
}

} // namespace zib::drive
