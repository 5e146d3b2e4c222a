#pragma once

// What fuzz targets make of their input.

#include "rules.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <cstdint>

#include <sys/mman.h>
#include <unistd.h>

namespace zib::fuzz {

/// The input as a file in memory, reached by a name.
class InputFile
{
public:
    InputFile(const std::uint8_t* data, std::size_t size) : m_descriptor(::memfd_create("input", MFD_CLOEXEC))
    {
        check(m_descriptor >= 0 && ::write(m_descriptor, data, size) == static_cast<ssize_t>(size),
              "the input fits into memory");
    }
    ~InputFile() { ::close(m_descriptor); }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    QString path() const { return QStringLiteral("/proc/self/fd/%1").arg(m_descriptor); }

private:
    int m_descriptor;
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
