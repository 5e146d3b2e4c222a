#pragma once

#include "engines/burn/WriteEvents.h"

#include <atomic>
#include <memory>
#include <optional>

namespace zib {

/// A write as the worker does it, from the last checks to the end event. It owns all it touches, so it can be
/// left behind when a drive hangs.
struct WriteRun
{
    std::shared_ptr<Recorder> recorder;
    BurnJob job{};
    bool cache = false;
    QString cacheFolder{};
    std::atomic<bool> cancelled = false;
    WriteEvents events{};

    /// Pushes the events; the last one is Ended.
    void run();

private:
    std::optional<BurnError> perform();
    std::optional<BurnError> checkTracks() const;
    std::optional<BurnError> checkDisc();
};

} // namespace zib
