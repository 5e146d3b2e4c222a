#pragma once

#include <QByteArray>
#include <QString>

#include <sys/mman.h>
#include <unistd.h>

namespace zib::answers {

/// Bytes as a file in memory, reached by a name as long as this object lives.
class MemoryFile
{
public:
    explicit MemoryFile(const QByteArray& bytes) : m_descriptor(::memfd_create("input", MFD_CLOEXEC))
    {
        if (m_descriptor < 0 || ::write(m_descriptor, bytes.constData(), static_cast<size_t>(bytes.size())) !=
                                    static_cast<ssize_t>(bytes.size()))
            qFatal("no room for %lld bytes", static_cast<long long>(bytes.size()));
    }
    ~MemoryFile() { ::close(m_descriptor); }
    Q_DISABLE_COPY_MOVE(MemoryFile)

    QString path() const { return QStringLiteral("/proc/self/fd/%1").arg(m_descriptor); }

private:
    int m_descriptor;
};

} // namespace zib::answers
