#pragma once

#include <QByteArray>
#include <QFile>

namespace zib::bench {

/// One figure of this process in megabytes.
/// @param name as /proc/self/status has it: "VmRSS:" is what it holds now, "VmHWM:" the most it ever held.
inline double megabytes(const QByteArray& name)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(name))
            return line.mid(name.size()).simplified().split(' ').first().toDouble() / 1024;
    return 0;
}

} // namespace zib::bench
