#pragma once

#include "drive/burn/DiscTruth.h"
#include "drive/stories/Teller.h"

#include <functional>

namespace zib {

/// What is done with the drive: how it is, and what the user and the drive do.
struct Story
{
    QString name;
    std::function<void(BurnBench&)> prepare{};                   ///< Before the drive is looked for.
    std::function<void(BurnBench&)> choose{};                    ///< Between the look and the write.
    std::function<void(BurnBench&, const QString&)> meanwhile{}; ///< Whenever the writer says something.
    bool isWritten = true;                                       ///< Only looked at otherwise.
};

/// Plays a story on a drive of its own and tells all of it, a line for each: what the look at the drive
/// found, what the writer said, how the write ended, what disc and drive are then, and which commands the
/// drive was sent. Where something is done meanwhile, no two writes are the same: then the commands are not
/// told.
answers::Answer told(const Story& story);

} // namespace zib
