#pragma once

// What fuzz targets make of their input.

#include "answers/MemoryFile.h"
#include "rules.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <cstdint>

namespace zib::fuzz {

/// The input as a file in memory, reached by a name.
class InputFile : public answers::MemoryFile
{
public:
    InputFile(const std::uint8_t* data, std::size_t size)
        : MemoryFile(
              QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)))
    {
    }
};

/// Takes values off the input, one after the other; zeros behind its end.
class Input
{
public:
    Input(const std::uint8_t* data, std::size_t size)
        : m_bytes(QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)))
    {
    }

    bool isEmpty() const { return m_bytes.isEmpty(); }
    QByteArray bytes(qsizetype most)
    {
        const QByteArray taken(m_bytes.constData(), std::clamp<qsizetype>(most, 0, m_bytes.size()));
        m_bytes = m_bytes.sliced(taken.size());
        return taken;
    }
    int byte()
    {
        const QByteArray one = bytes(1);
        return one.isEmpty() ? 0 : static_cast<uchar>(one.front());
    }
    int word()
    {
        const int high = byte();
        return high << 8 | byte();
    }

private:
    QByteArray m_bytes;
};

} // namespace zib::fuzz
