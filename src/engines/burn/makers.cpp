#include "engines/burn/makers.h"

#include "engines/burn/DiscWriter.h"
#include "engines/burn/DriveRecorder.h"
#include "engines/burn/ImageRecorder.h"
#include "engines/burn/DriveLedger.h"
#include "engines/burn/mmc/DriveLine.h"

#include <chrono>
#include <cstdlib>
#include <future>
#include <thread>
#include <vector>

namespace zib {

bool unlockDrivesInUse()
{
    constexpr std::chrono::seconds kPatience{15};
    std::vector<std::future<void>> unlocked;
    for (const QString& path : DriveLedger::paths()) {
        auto done = std::make_shared<std::promise<void>>();
        unlocked.push_back(done->get_future());
        std::thread([path, done] {
            if (const auto line = DriveLine::open(path, DriveLine::Hold::Shared); line)
                unlockDoor(**line);
            done->set_value();
        }).detach();
    }
    const auto end = std::chrono::steady_clock::now() + kPatience;
    for (const std::future<void>& one : unlocked)
        one.wait_until(end);
    return !unlocked.empty();
}

std::unique_ptr<DVDWriterPro> makeDiscWriter(const QString& imagesFolder)
{
    // Also where the connection to the screen breaks, which ends the program without asking.
    [[maybe_unused]] static const int registered = std::atexit([] { unlockDrivesInUse(); });
    return std::make_unique<DiscWriter>([] { return findDrives(); },
                                        std::make_shared<ImageRecorder>(imagesFolder));
}

} // namespace zib
