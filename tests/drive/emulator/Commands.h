#pragma once

#include "Station.h"

namespace zib::drive {

/// One command of the drive. Faults, unit attention, empty drive and busy drive are dealt with before it is
/// called.
using Command = Answer (*)(Station& station, const Request& request);

/// The command with operation code @p operation, or null.
[[nodiscard]] Command commandFor(int operation);

// Who the drive is (IdentityCommands.cpp).
Answer inquiry(Station& station, const Request& request);
Answer requestSense(Station& station, const Request& request);
Answer getConfiguration(Station& station, const Request& request);
Answer getPerformance(Station& station, const Request& request);

// Its settings (ModeCommands.cpp).
Answer modeSense6(Station& station, const Request& request);
Answer modeSense10(Station& station, const Request& request);
Answer modeSelect6(Station& station, const Request& request);
Answer modeSelect10(Station& station, const Request& request);
Answer setSpeed(Station& station, const Request& request);
Answer setStreaming(Station& station, const Request& request);

// Door, events and mechanism (DoorCommands.cpp).
Answer testUnitReady(Station& station, const Request& request);
Answer startStopUnit(Station& station, const Request& request);
Answer preventAllow(Station& station, const Request& request);
Answer getEventStatus(Station& station, const Request& request);
Answer mechanismStatus(Station& station, const Request& request);
Answer seek(Station& station, const Request& request);

// What the disc is (DiscCommands.cpp, TocCommands.cpp).
Answer readDiscInformation(Station& station, const Request& request);
Answer readTrackInformation(Station& station, const Request& request);
Answer readCapacity(Station& station, const Request& request);
Answer readFormatCapacities(Station& station, const Request& request);
Answer readBufferCapacity(Station& station, const Request& request);
Answer readToc(Station& station, const Request& request);

// Reading (ReadCommands.cpp).
Answer readCd(Station& station, const Request& request);
Answer readCdMsf(Station& station, const Request& request);
Answer readBlocks(Station& station, const Request& request);
Answer readSubChannel(Station& station, const Request& request);

// Writing (WriteCommands.cpp).
Answer sendCueSheet(Station& station, const Request& request);
Answer sendOpc(Station& station, const Request& request);
Answer write(Station& station, const Request& request);
Answer synchronizeCache(Station& station, const Request& request);
Answer closeTrackSession(Station& station, const Request& request);
Answer blankDisc(Station& station, const Request& request);

} // namespace zib::drive
