#include "Commands.h"

#include <array>
#include <time.h>

namespace zib::drive {
namespace {

struct Row
{
    int operation;
    Command command;
};

constexpr std::array kCommands{
    Row{0x00, testUnitReady},
    Row{0x01, testUnitReady},
    Row{0x03, requestSense},
    Row{0x12, inquiry},
    Row{0x15, modeSelect6},
    Row{0x1A, modeSense6},
    Row{0x1B, startStopUnit},
    Row{0x1E, preventAllow},
    Row{0x23, readFormatCapacities},
    Row{0x25, readCapacity},
    Row{0x28, readBlocks},
    Row{0x2A, write},
    Row{0x2B, seek},
    Row{0x35, synchronizeCache},
    Row{0x42, readSubChannel},
    Row{0x43, readToc},
    Row{0x46, getConfiguration},
    Row{0x4A, getEventStatus},
    Row{0x51, readDiscInformation},
    Row{0x52, readTrackInformation},
    Row{0x54, sendOpc},
    Row{0x55, modeSelect10},
    Row{0x5A, modeSense10},
    Row{0x5B, closeTrackSession},
    Row{0x5C, readBufferCapacity},
    Row{0x5D, sendCueSheet},
    Row{0xA1, blankDisc},
    Row{0xA8, readBlocks},
    Row{0xAA, write},
    Row{0xAC, getPerformance},
    Row{0xB6, setStreaming},
    Row{0xB9, readCdMsf},
    Row{0xBB, setSpeed},
    Row{0xBD, mechanismStatus},
    Row{0xBE, readCd},
};

} // namespace

Command commandFor(int operation)
{
    for (const Row& row : kCommands) {
        if (row.operation == operation) {
            return row.command;
        }
    }
    return nullptr;
}

std::int64_t monotonicMs()
{
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

} // namespace zib::drive
