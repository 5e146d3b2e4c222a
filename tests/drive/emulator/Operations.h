#pragma once

#include "Bytes.h"
#include "Faults.h"

#include <optional>
#include <string>
#include <string_view>

namespace zib::drive {

/// The name of an operation code in journal and fault rules, for example "WRITE_10"; "OP_xx" for strangers.
[[nodiscard]] std::string operationName(int operation);

/// The operation code of a name, of "ANY" or "MEDIA", or of two hexadecimal digits.
[[nodiscard]] std::optional<int> operationFromName(std::string_view name);

/// Whether the command needs a disc that is ready.
[[nodiscard]] bool needsMedia(int operation);

/// The last byte of a command of 6, 10 or 12 bytes; what it asks for, drives do not offer.
[[nodiscard]] int controlByteOf(ByteView cdb);

/// The addresses that a reading or writing command names.
[[nodiscard]] CommandRange rangeOf(ByteView cdb);

/// The same, and the page that a mode command is about; that of a mode select stands in its @p data.
[[nodiscard]] CommandRange subjectOf(ByteView cdb, ByteView data);

} // namespace zib::drive
