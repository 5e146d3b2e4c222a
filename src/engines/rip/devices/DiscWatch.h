#pragma once

#include "common/Worker.h"
#include "engines/rip/devices/DeviceList.h"
#include "engines/rip/Disc.h"
#include "engines/rip/image/ImageFile.h"

#include <QElapsedTimer>

#include <chrono>
#include <memory>
#include <optional>

namespace zib {

class RipRun;

/// What is known of a drive and its disc.
struct DiscKnowledge
{
    std::optional<Failure> refusal{}; ///< Why the drive cannot be used.
    bool present = false;             ///< A disc is in, and its tracks are known.
    int maxSpeed = 0;
    QList<TocTrack> tracks{};
    DiscNames names{};     ///< Of an image.
    QString remark{};      ///< What is amiss although tracks can be read, in words.
    bool answered = false; ///< The drive, or the image, was asked once.
};

/// Watches the disc in one drive, or one image, on a thread of its own, so that nobody waits for a drive.
/// The owner's thread only.
class DiscWatch
{
public:
    /// @param makeSound for images that stand on files of sound.
    DiscWatch(const RipDevice& device, MakeAudioFile makeSound);
    ~DiscWatch();
    Q_DISABLE_COPY_MOVE(DiscWatch)

    /// What hangs in the drive, or in the storage of an image, when the watch ends is left behind after so
    /// long.
    static constexpr std::chrono::milliseconds kFarewell{40};

    const RipDevice& device() const;
    /// Has the drive asked anew and waits a little for the answer: what is known then, fresh or not.
    DiscKnowledge look(std::chrono::milliseconds patience);
    DiscKnowledge known() const;
    /// Has the drive asked, unless that is under way or was a moment ago.
    void poll();
    /// Whether the disc was changed for another since the last call.
    bool takeChange();
    /// Copies tracks once the thread is free.  @param speed as CdioDisc::setReadSpeed takes it.
    void extract(const std::shared_ptr<RipRun>& run, int speed);

private:
    struct Shared;
    void post();

    std::shared_ptr<Shared> m_shared;
    QElapsedTimer m_asked;
    Worker m_worker; ///< Last, so that it ends first.
};

} // namespace zib
