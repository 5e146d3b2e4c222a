#pragma once

#include <QDir>

namespace zib {

/// How many files, folders and sockets this process has open: what was opened must not stay so.
inline qsizetype openFiles()
{
    return QDir(QStringLiteral("/proc/self/fd"))
        .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
        .size();
}

} // namespace zib
