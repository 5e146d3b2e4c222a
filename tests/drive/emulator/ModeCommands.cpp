#include "Commands.h"

#include <algorithm>
#include <span>

namespace zib::drive {
namespace {

constexpr std::uint8_t kErrorRecoveryPage = 0x01;
constexpr std::uint8_t kWriteParametersPage = 0x05;
constexpr std::uint8_t kPowerPage = 0x1A;
constexpr std::uint8_t kTimeoutPage = 0x1D;
constexpr std::uint8_t kCapabilitiesPage = 0x2A;
constexpr std::uint8_t kAllPages = 0x3F;

Bytes capabilities(const Station& station)
{
    const DriveConfig& config = station.config;
    const bool locked = station.state.doorLocked;
    Bytes page{kCapabilitiesPage, 0, 0x07};
    page.push_back(static_cast<std::uint8_t>((config.writesCdR ? 1U : 0U) | (config.writesCdRw ? 2U : 0U) |
                                             (config.simulation ? 4U : 0U)));
    page.push_back(static_cast<std::uint8_t>(0x71U | (config.bufferProtection ? 0x80U : 0U)));
    page.push_back(static_cast<std::uint8_t>(0x6FU | (config.c2Pointers ? 0x10U : 0U)));
    page.push_back(static_cast<std::uint8_t>(0x29U | (locked ? 2U : 0U)));
    page.push_back(static_cast<std::uint8_t>(config.cdText ? 0x20U : 0U));
    const auto fastest = config.writeSpeeds.empty() ? 0 : kilobytesPerSecond(config.writeSpeeds.front());
    const auto writing = static_cast<std::uint32_t>(station.state.writeSpeed);
    appendBigEndian(page, 2, static_cast<std::uint32_t>(kilobytesPerSecond(config.readSpeed)));
    appendBigEndian(page, 2, 256);
    appendBigEndian(page, 2, 2048);
    appendBigEndian(page, 2, static_cast<std::uint32_t>(station.state.readSpeed));
    appendBigEndian(page, 2, 0);
    appendBigEndian(page, 2, static_cast<std::uint32_t>(fastest));
    appendBigEndian(page, 2, writing);
    appendBigEndian(page, 2, 1);
    appendBigEndian(page, 2, 0);
    appendBigEndian(page, 2, 0);
    appendBigEndian(page, 2, writing);
    appendBigEndian(page, 2, static_cast<std::uint32_t>(config.writeSpeeds.size()));
    for (const int speed : config.writeSpeeds) {
        appendBigEndian(page, 4, static_cast<std::uint32_t>(kilobytesPerSecond(speed)));
    }
    page[1] = static_cast<std::uint8_t>(page.size() - 2);
    return page;
}

Bytes pageBytes(const Station& station, std::uint8_t page)
{
    const DriveState& state = station.state;
    switch (page) {
    case kErrorRecoveryPage:
        return {state.errorRecovery.begin(), state.errorRecovery.end()};
    case kWriteParametersPage:
        return {state.writeParameters.begin(), state.writeParameters.end()};
    case kPowerPage:
        return {kPowerPage, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    case kTimeoutPage:
        return {kTimeoutPage, 10, 0, 0, 0, 0, 0, 0, 0, 60, 0, 60};
    case kCapabilitiesPage:
        return capabilities(station);
    default:
        return {};
    }
}

Bytes changeable(std::uint8_t page, Bytes bytes)
{
    const bool writable = page == kErrorRecoveryPage || page == kWriteParametersPage;
    std::fill(bytes.begin() + 2, bytes.end(), static_cast<std::uint8_t>(writable ? 0xFF : 0));
    return bytes;
}

Bytes pagesFor(const Station& station, const Request& request)
{
    const std::uint8_t wanted = request.cdb[2] & 0x3FU;
    const bool mask = request.cdb[2] >> 6U == 1;
    Bytes all;
    for (const std::uint8_t page :
         {kErrorRecoveryPage, kWriteParametersPage, kPowerPage, kTimeoutPage, kCapabilitiesPage}) {
        if (wanted != page && wanted != kAllPages) {
            continue;
        }
        const Bytes bytes = mask ? changeable(page, pageBytes(station, page)) : pageBytes(station, page);
        all.insert(all.end(), bytes.begin(), bytes.end());
    }
    return all;
}

bool blockTypeFits(std::uint8_t writeType, std::uint8_t blockType)
{
    const bool known = blockType == 0 || blockType == 8 || blockType == 10 || blockType == 13;
    return writeType == kSessionAtOnce ? known : blockType == 0 || blockType == 8;
}

bool writeParametersFit(const DriveConfig& config, ByteView page)
{
    const std::uint8_t type = page[2] & 0xFU;
    const bool able = (type == kTrackAtOnce && config.tao) || (type == kSessionAtOnce && config.sao);
    const bool test = (page[2] & 0x10U) != 0;
    const bool protection = (page[2] & 0x40U) != 0;
    return able && (!test || config.simulation) && (!protection || config.bufferProtection) &&
           blockTypeFits(type, page[4] & 0xFU);
}

Sense selectWriteParameters(Station& station, ByteView page)
{
    if (page.size() < kWriteParameterBytes || !writeParametersFit(station.config, page)) {
        return kInvalidParameter;
    }
    DriveState& state = station.state;
    std::ranges::copy(page.first(kWriteParameterBytes), state.writeParameters.begin());
    state.writeParameters[0] = kWriteParametersPage;
    if (station.config.testBit == TestBit::Dropped) {
        state.writeParameters[2] &= static_cast<std::uint8_t>(~0x10U);
    }
    if (!station.testWrite()) {
        state.simulatedTracks = 0;
        state.simulatedOpen = false;
    }
    return kGood;
}

Sense selectPage(Station& station, ByteView page)
{
    const std::uint8_t code = page[0] & 0x3FU;
    if (code == kWriteParametersPage) {
        return selectWriteParameters(station, page);
    }
    if (code == kErrorRecoveryPage) {
        const auto size = std::min(page.size(), kErrorRecoveryBytes);
        std::ranges::copy(page.first(size), station.state.errorRecovery.begin());
        station.state.errorRecovery[0] = kErrorRecoveryPage;
        station.state.errorRecovery[1] = kErrorRecoveryBytes - 2;
    }
    return kGood;
}

Answer selectPages(Station& station, ByteView list, std::size_t headerBytes, std::size_t descriptorBytes)
{
    if (list.size() < headerBytes + descriptorBytes) {
        return list.empty() ? kGood : kParameterListLength;
    }
    ByteView pages = list.subspan(headerBytes + descriptorBytes);
    while (pages.size() >= 2) {
        const std::size_t size = std::min<std::size_t>(pages[1] + 2U, pages.size());
        const Sense sense = selectPage(station, pages.first(size));
        if (!sense.good()) {
            return sense;
        }
        pages = pages.subspan(size);
    }
    return kGood;
}

int nearestSpeed(const std::vector<int>& speeds, std::uint32_t asked)
{
    int chosen = speeds.empty() ? 0 : kilobytesPerSecond(speeds.front());
    for (const int speed : speeds) {
        if (static_cast<std::uint32_t>(kilobytesPerSecond(speed)) + 2 >= asked) {
            chosen = kilobytesPerSecond(speed);
        }
    }
    return chosen;
}

void selectSpeeds(Station& station, std::uint32_t reading, std::uint32_t writing)
{
    const int fastest = kilobytesPerSecond(station.config.readSpeed);
    station.state.readSpeed =
        reading == 0
            ? fastest
            : static_cast<int>(std::min<std::uint32_t>(reading, static_cast<std::uint32_t>(fastest)));
    station.state.writeSpeed = nearestSpeed(station.config.writeSpeeds, writing == 0 ? 0xFFFF : writing);
}

} // namespace

Answer modeSense6(Station& station, const Request& request)
{
    const Bytes pages = pagesFor(station, request);
    if (pages.empty()) {
        return kInvalidField;
    }
    Bytes reply{static_cast<std::uint8_t>(pages.size() + 3), 0, 0, 0};
    reply.insert(reply.end(), pages.begin(), pages.end());
    return reply;
}

Answer modeSense10(Station& station, const Request& request)
{
    const Bytes pages = pagesFor(station, request);
    if (pages.empty()) {
        return kInvalidField;
    }
    const std::uint32_t descriptorBytes = station.config.blockDescriptor ? 8 : 0;
    Bytes reply(8 + descriptorBytes);
    putBigEndian(reply, 0, 2, static_cast<std::uint32_t>(pages.size() + 6 + descriptorBytes));
    putBigEndian(reply, 6, 2, descriptorBytes);
    reply.insert(reply.end(), pages.begin(), pages.end());
    return reply;
}

Answer modeSelect6(Station& station, const Request& request)
{
    return selectPages(station, request.dataOut, 4, bigEndian(request.dataOut, 3, 1));
}

Answer modeSelect10(Station& station, const Request& request)
{
    return selectPages(station, request.dataOut, 8, bigEndian(request.dataOut, 6, 2));
}

Answer setSpeed(Station& station, const Request& request)
{
    selectSpeeds(station, bigEndian(request.cdb, 2, 2) % 0xFFFF, bigEndian(request.cdb, 4, 2) % 0xFFFF);
    return kGood;
}

Answer setStreaming(Station& station, const Request& request)
{
    if (request.dataOut.size() < 28) {
        return kParameterListLength;
    }
    const std::uint32_t readMs = std::max(1U, bigEndian(request.dataOut, 16, 4));
    const std::uint32_t writeMs = std::max(1U, bigEndian(request.dataOut, 24, 4));
    const std::uint64_t reading = bigEndian(request.dataOut, 12, 4) * 1000ULL / readMs;
    const std::uint64_t writing = bigEndian(request.dataOut, 20, 4) * 1000ULL / writeMs;
    selectSpeeds(station, static_cast<std::uint32_t>(std::min<std::uint64_t>(reading, 0xFFFF)),
                 static_cast<std::uint32_t>(std::min<std::uint64_t>(writing, 0xFFFF)));
    return kGood;
}

} // namespace zib::drive
