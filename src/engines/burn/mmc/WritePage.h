#pragma once

#include "engines/burn/mmc/DriveLine.h"

#include <optional>

namespace zib {

/// How a drive is to write (MMC-5, 7.5, write parameters mode page).
struct WritePlan
{
    bool sessionAtOnce = true;
    bool simulate = false;
    bool bufferProtection = false;
    bool multiSession = false; ///< The disc stays open for more.

    bool operator==(const WritePlan&) const = default;
};

/// Why a drive is not going to write as planned.
struct PlanFault
{
    enum class Kind
    {
        Refused,  ///< The drive refused to take the plan, or to tell its own.
        TestMode, ///< It would write really where it should simulate, or the other way round.
        WriteType,
        BufferProtection,
        Closing,
        Untold, ///< Its answer holds too little to know.
        Lost    ///< It does not answer.
    };

    Kind kind;
    std::optional<Sense> sense{}; ///< What the drive itself said, with Refused.
};

/// Tells the drive how to write.  @returns why it did not take it.
std::optional<PlanFault> plan(DriveLine& line, const WritePlan& wanted);

/// Asks the drive how it would write, and compares.  @returns the difference, or why it did not say.
std::optional<PlanFault> prove(DriveLine& line, const WritePlan& wanted);

} // namespace zib
