#include "Commands.h"

namespace zib::drive {
namespace {

constexpr std::uint8_t kMediaClass = 4;
constexpr std::uint8_t kClassesOffered = 1U << kMediaClass;

} // namespace

Answer testUnitReady(Station&, const Request&)
{
    return kGood;
}

Answer startStopUnit(Station& station, const Request& request)
{
    const bool loadEject = (request.cdb[4] & 2U) != 0;
    const bool start = (request.cdb[4] & 1U) != 0;
    if (!loadEject) {
        return kGood;
    }
    if (!start && station.state.doorLocked) {
        return kMediumRemovalPrevented;
    }
    station.state.trayOpen = !start;
    return kGood;
}

Answer preventAllow(Station& station, const Request& request)
{
    station.state.doorLocked = (request.cdb[4] & 1U) != 0;
    return kGood;
}

Answer getEventStatus(Station& station, const Request& request)
{
    if ((request.cdb[1] & 1U) == 0) {
        return kInvalidField; // asynchronous notification is not offered
    }
    if ((request.cdb[4] & kClassesOffered) == 0) {
        return Bytes{0, 2, 0x80, kClassesOffered};
    }
    const auto event = station.state.mediaEvent;
    station.state.mediaEvent = 0;
    const auto media =
        static_cast<std::uint8_t>((station.state.trayOpen ? 1U : 0U) | (station.disc != nullptr ? 2U : 0U));
    return Bytes{0, 6, kMediaClass, kClassesOffered, event, media, 0, 0};
}

Answer mechanismStatus(Station& station, const Request&)
{
    return Bytes{0, static_cast<std::uint8_t>(station.state.trayOpen ? 0x10 : 0), 0, 0, 0, 1, 0, 0};
}

Answer seek(Station& station, const Request& request)
{
    return station.disc->readable(addressAt(request.cdb, 2)) ? kGood : kAddressOutOfRange;
}

} // namespace zib::drive
