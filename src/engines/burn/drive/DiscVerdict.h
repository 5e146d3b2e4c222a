#pragma once

#include "engines/burn/mmc/DiscLook.h"
#include "engines/burn/Recorder.h"

namespace zib {

/// What has become of a disc, as the drive itself shows it.
struct DiscVerdict
{
    enum class Truth
    {
        Blank,  ///< Nothing was written.
        Whole,  ///< Closed, and every track stands there in its full length.
        Begun,  ///< Something was written, and it is not what was asked for.
        Unknown ///< The drive does not tell.
    };

    Truth truth = Truth::Unknown;
    DriveAnswer refusal{}; ///< With Unknown: the drive's last answer.

    /// The disc's state in a sentence that says what it is good for.
    QString sentence() const;
};

/// Looks at the disc after @p job was written to it, or tried.
/// @param patienceMs for a drive that is not ready at once.  @param going called while it is not.
DiscVerdict judgeDisc(DriveLine& line, const BurnJob& job, bool trackAtOnce, int patienceMs,
                      const WhileWaiting& going = {});

} // namespace zib
