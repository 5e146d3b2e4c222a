#pragma once

#include "engines/burn/compare/DiscSamples.h"
#include "engines/burn/compare/LongWait.h"
#include "engines/burn/mmc/DriveLine.h"

#include <atomic>
#include <functional>
#include <memory>

namespace zib {

/// The sound of the disc in a drive, by READ CD (MMC-5, 6.20), at the speed the drive chooses. A drive that
/// has something to announce, or spins up, is asked again for a while.
class DriveSound final : public DiscSamples
{
public:
    /// @param leadOut as the disc's table of contents has it.  @param cancelled ends the waiting; may be
    /// missing.  @param slow is called, from another thread, when the drive takes long for a piece.
    DriveSound(std::shared_ptr<DriveLine> line, qint64 leadOut, const std::atomic<bool>* cancelled,
               std::function<void()> slow);

    /// @returns also NoMedium, WrongMedium when another disc was put in meanwhile, DeviceGone, Unsupported
    /// when the drive reads no sound at all, and Cancelled while it waited for the drive.
    Outcome<> read(qint64 frame, int count, char* buffer) override;
    qint64 leadOut() const override { return m_leadOut; }

private:
    DriveAnswer ask(qint64 frame, int count);
    Outcome<DriveAnswer> settled(qint64 frame, int count);
    Outcome<> judge(const DriveAnswer& answer);

    const std::shared_ptr<DriveLine> m_line;
    const qint64 m_leadOut;
    const std::atomic<bool>* m_cancelled;
    bool m_hasRead = false; ///< Before, a drive may still announce the disc that it has just written.
    int m_lostCommands = 0; ///< One after the other.
    LongWait m_longWait;
};

} // namespace zib
