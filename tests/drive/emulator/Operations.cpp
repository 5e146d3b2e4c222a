#include "Operations.h"

#include "Msf.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace zib::drive {
namespace {

struct Operation
{
    int code;
    const char* name;
    bool media;
};

constexpr std::array kOperations{
    Operation{0x00, "TEST_UNIT_READY", true},
    Operation{0x01, "REZERO_UNIT", true},
    Operation{0x03, "REQUEST_SENSE", false},
    Operation{0x12, "INQUIRY", false},
    Operation{0x15, "MODE_SELECT_6", false},
    Operation{0x1A, "MODE_SENSE_6", false},
    Operation{0x1B, "START_STOP_UNIT", false},
    Operation{0x1E, "PREVENT_ALLOW", false},
    Operation{0x23, "READ_FORMAT_CAPACITIES", true},
    Operation{0x25, "READ_CAPACITY", true},
    Operation{0x28, "READ_10", true},
    Operation{0x2A, "WRITE_10", true},
    Operation{0x2B, "SEEK_10", true},
    Operation{0x35, "SYNCHRONIZE_CACHE", true},
    Operation{0x42, "READ_SUB_CHANNEL", true},
    Operation{0x43, "READ_TOC", true},
    Operation{0x46, "GET_CONFIGURATION", false},
    Operation{0x4A, "GET_EVENT_STATUS", false},
    Operation{0x51, "READ_DISC_INFORMATION", true},
    Operation{0x52, "READ_TRACK_INFORMATION", true},
    Operation{0x53, "RESERVE_TRACK", true},
    Operation{0x54, "SEND_OPC", true},
    Operation{0x55, "MODE_SELECT_10", false},
    Operation{0x5A, "MODE_SENSE_10", false},
    Operation{0x5B, "CLOSE_TRACK_SESSION", true},
    Operation{0x5C, "READ_BUFFER_CAPACITY", false},
    Operation{0x5D, "SEND_CUE_SHEET", true},
    Operation{0xA1, "BLANK", true},
    Operation{0xA8, "READ_12", true},
    Operation{0xAA, "WRITE_12", true},
    Operation{0xAC, "GET_PERFORMANCE", false},
    Operation{0xB6, "SET_STREAMING", false},
    Operation{0xB9, "READ_CD_MSF", true},
    Operation{0xBB, "SET_CD_SPEED", false},
    Operation{0xBD, "MECHANISM_STATUS", false},
    Operation{0xBE, "READ_CD", true},
};

CommandRange msfRange(ByteView cdb)
{
    const std::int32_t first = toLba({cdb[3], cdb[4], cdb[5]});
    return {true, first, toLba({cdb[6], cdb[7], cdb[8]}) - first};
}

} // namespace

std::string operationName(int operation)
{
    const auto* found = std::ranges::find(kOperations, operation, &Operation::code);
    if (found != kOperations.end()) {
        return found->name;
    }
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    return std::string("OP_") + kDigits[(operation >> 4) & 0xF] + kDigits[operation & 0xF];
}

std::optional<int> operationFromName(std::string_view name)
{
    if (name == "ANY") {
        return kAnyOperation;
    }
    if (name == "MEDIA") {
        return kMediaOperation;
    }
    const auto* found = std::ranges::find(kOperations, name, &Operation::name);
    if (found != kOperations.end()) {
        return found->code;
    }
    int code = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), code, 16);
    const bool whole = error == std::errc{} && end == name.data() + name.size() && name.size() == 2;
    return whole ? std::optional(code) : std::nullopt;
}

bool needsMedia(int operation)
{
    const auto* found = std::ranges::find(kOperations, operation, &Operation::code);
    return found != kOperations.end() && found->media;
}

int controlByteOf(ByteView cdb)
{
    const std::size_t bytes = cdb[0] < 0x20 ? 6 : cdb[0] < 0x80 ? 10 : 12;
    return cdb[bytes - 1];
}

CommandRange rangeOf(ByteView cdb)
{
    switch (cdb[0]) {
    case 0x28:
    case 0x2A:
        return {true, addressAt(cdb, 2), static_cast<std::int32_t>(bigEndian(cdb, 7, 2))};
    case 0xA8:
    case 0xAA:
        return {true, addressAt(cdb, 2), addressAt(cdb, 6)};
    case 0xBE:
        return {true, addressAt(cdb, 2), static_cast<std::int32_t>(bigEndian(cdb, 6, 3))};
    case 0xB9:
        return msfRange(cdb);
    default:
        return {};
    }
}

CommandRange subjectOf(ByteView cdb, ByteView data)
{
    CommandRange subject = rangeOf(cdb);
    if (cdb[0] == 0x1A || cdb[0] == 0x5A) {
        subject.page = cdb[2] & 0x3F;
    } else if (cdb[0] == 0x15 || cdb[0] == 0x55) {
        const bool six = cdb[0] == 0x15;
        const std::size_t at = six ? 4 + bigEndian(data, 3, 1) : 8 + bigEndian(data, 6, 2);
        subject.page = at < data.size() ? data[at] & 0x3F : kAnyPage;
    }
    return subject;
}

} // namespace zib::drive
