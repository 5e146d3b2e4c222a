#pragma once

#include "common/Outcome.h"
#include "engines/burn/drive/LibraryThread.h"

#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

#include <sys/types.h>

namespace burn {
struct burn_drive;
struct burn_drive_info;
} // namespace burn

namespace zib {

class LibburnSession;

/// A drive of ours alone, from grab to destruction, which gives it back unlocked.
///
/// libburn waits an hour for a drive that answers "becoming ready", and for ever for a command that hangs.
/// Every call that may do so gets @c patienceMs; after that the drive is left to a thread of its own, which
/// frees it when the call comes back. Until then no drive can be grabbed; the door is unlocked all the same.
class GrabbedDrive
{
public:
    /// @param cancelled shortens the patience to some seconds once it is set; may be missing.
    GrabbedDrive(LibburnSession& session, const QString& path, int patienceMs,
                 const std::atomic<bool>* cancelled = nullptr);
    ~GrabbedDrive();
    Q_DISABLE_COPY_MOVE(GrabbedDrive)

    /// Whether the device may be opened now: NoPermission or Busy otherwise; DeviceGone where it is not
    /// there, and while an earlier call still hangs. Takes no time.
    static Outcome<> check(const QString& path);

    explicit operator bool() const { return m_info != nullptr; }
    burn::burn_drive* drive() const;
    burn::burn_drive_info* info() const { return m_info; }
    /// Why the drive could not be had, or was lost.
    const Failure& failure() const { return m_failure; }

    /// Leaves a drive whose write on @p thread does not end; @p inUse lives until it has.
    void leaveWriting(const LibraryThread& thread, std::shared_ptr<void> inUse);
    /// Unlocks the door past the library, which does not come to its end; takes no time.
    void unlockAside() const;
    /// What takes the drive out of the library's hands: called, from any thread, whatever the library sends
    /// from then on reaches nobody, and it counts the drive as lost. Outlives this object.
    std::function<void()> knife() const;

private:
    bool grab();
    void cutWhatIsLeft() const;
    void release();
    bool bounded(const std::function<void(burn::burn_drive_info*&)>& work);

    QString m_path;
    dev_t m_device; ///< Its number, for a drive that has gone has no other name.
    int m_patienceMs;
    const std::atomic<bool>* m_cancelled;
    burn::burn_drive_info* m_info = nullptr;
    Failure m_failure{Failure::Kind::DeviceGone};
    std::vector<int> m_descriptors; ///< What the library has opened the device with.
};

} // namespace zib
