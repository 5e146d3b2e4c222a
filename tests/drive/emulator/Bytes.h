#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zib::drive {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

/// Reads @p count big-endian bytes at @p at; bytes beyond the end read as zero.
[[nodiscard]] inline std::uint32_t bigEndian(ByteView bytes, std::size_t at, std::size_t count)
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i) {
        value = value << 8U | (at + i < bytes.size() ? bytes[at + i] : 0U);
    }
    return value;
}

/// Stores the low @p count bytes of @p value big-endian at @p at, which must lie inside.
inline void putBigEndian(Bytes& bytes, std::size_t at, std::size_t count, std::uint32_t value)
{
    for (std::size_t i = 0; i < count; ++i) {
        bytes.at(at + count - 1 - i) = static_cast<std::uint8_t>(value >> (8U * i));
    }
}

/// Appends the low @p count bytes of @p value big-endian.
inline void appendBigEndian(Bytes& bytes, std::size_t count, std::uint32_t value)
{
    bytes.resize(bytes.size() + count);
    putBigEndian(bytes, bytes.size() - count, count, value);
}

/// A signed disc address from a CDB field.
[[nodiscard]] inline std::int32_t addressAt(ByteView bytes, std::size_t at)
{
    return static_cast<std::int32_t>(bigEndian(bytes, at, 4));
}

} // namespace zib::drive
