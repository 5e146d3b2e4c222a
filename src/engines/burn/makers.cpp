#include "engines/burn/makers.h"

#include "common/OwnThread.h"
#include "engines/burn/DiscWriter.h"
#include "engines/burn/drive/DriveLedger.h"
#include "engines/burn/drive/DriveRecorder.h"
#include "engines/burn/image/ImageRecorder.h"
#include "engines/burn/mmc/DriveLine.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>
#include <vector>

namespace zib {

namespace {

/// Has something done to each drive in use, each on a thread of its own that is left behind when it hangs.
/// @returns for each drive whether that came to its end within @p patience.
std::vector<bool> visited(std::chrono::milliseconds patience, const std::function<void(DriveLine&)>& visit)
{
    std::vector<std::future<void>> visits;
    for (const QString& path : DriveLedger::paths()) {
        visits.push_back(onOwnThread([path, visit] {
            if (const auto line = DriveLine::open(path, DriveLine::Hold::Shared); line)
                visit(**line);
        }));
    }
    const auto end = std::chrono::steady_clock::now() + patience;
    std::vector<bool> ended;
    ended.reserve(visits.size());
    for (const std::future<void>& one : visits)
        ended.push_back(one.wait_until(end) == std::future_status::ready);
    return ended;
}

} // namespace

bool unlockDrivesInUse(std::chrono::milliseconds patience)
{
    return !visited(patience, [](DriveLine& line) { unlockDoor(line); }).empty();
}

bool drivesInUseAnswer()
{
    constexpr std::chrono::seconds kPatience{2};
    const auto ended = visited(kPatience, [](DriveLine& line) { line.send({0, 0, 0, 0, 0, 0}); });
    return std::find(ended.cbegin(), ended.cend(), false) == ended.cend();
}

std::unique_ptr<DVDWriterPro> makeDiscWriter(const QString& imagesFolder)
{
    // Also where the connection to the screen breaks, which ends the program without asking.
    static constexpr std::chrono::seconds kAtExit{15};
    [[maybe_unused]] static const int registered = std::atexit([] { unlockDrivesInUse(kAtExit); });
    return std::make_unique<DiscWriter>([] { return findDrives(); },
                                        std::make_shared<ImageRecorder>(imagesFolder));
}

} // namespace zib
