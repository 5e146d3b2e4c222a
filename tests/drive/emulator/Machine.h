#pragma once

#include "Config.h"
#include "Drive.h"

#include <sys/stat.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace zib::drive {

/// All emulated drives of this process, and the device nodes in front of them. Safe for threads.
///
/// A node is opened as an ordinary file of its own (FOLDER/sr0.node). Which descriptors belong to a drive is
/// told by that file, so duplicated and inherited descriptors need no bookkeeping, and exclusive opening is a
/// lock on it.
class Machine
{
public:
    /// Environment variable that names the configuration file.
    static constexpr const char* kVariable = "ZIB_DRIVE_CONFIG";

    explicit Machine(std::string configPath);

    /// The machine that the variable names, made at first use; null when it is not set.
    static Machine* instance();
    /// The machine that instance() gave last; null when nobody has asked.
    static Machine* existing();

    /// Whether @p path is the node of a drive that is plugged in.
    [[nodiscard]] bool isNode(std::string_view path);
    /// Opens the node at @p path.
    /// @returns a descriptor, or -1 with errno set.
    int open(std::string_view path, int flags);
    /// Answers access(2) for a node. @returns 0, or -1 with errno set.
    int access(std::string_view path, int mode);
    /// Describes the node at @p path as a block device. @returns 0, or -1 with errno set.
    int describe(std::string_view path, struct ::stat& info);
    /// Turns the description of a node's file, as fstat gives it, into that of the block device.
    bool disguise(struct ::stat& info);
    /// The drive behind a descriptor, or null. Takes over a changed configuration first.
    Drive* driveOf(int fd);
    /// The paths of all nodes.
    [[nodiscard]] std::vector<std::string> nodes();
    /// The text of /proc/sys/dev/cdrom/info.
    [[nodiscard]] std::string procInfo();
    /// Number of a drive: its minor device number and SCSI target.
    static unsigned numberOf(const Drive& drive);

private:
    struct Slot
    {
        std::unique_ptr<Drive> drive;
        dev_t nodeDevice = 0;
        ino_t nodeFile = 0;
        bool configured = false;
    };

    void refresh();
    void take(const DriveConfig& config);
    Slot* slotOf(std::string_view path);
    [[nodiscard]] static bool pluggedIn(const Slot& slot);
    int openNode(Slot& slot, int flags);
    static int refusalOf(const Drive& drive, int flags);

    std::mutex m_mutex;
    std::string m_configPath;
    std::string m_configText;
    std::map<std::string, Slot, std::less<>> m_slots;
};

} // namespace zib::drive
