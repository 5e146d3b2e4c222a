#pragma once

#include <QString>

#include <optional>

struct stat;

namespace zib {

/// What tells one state of a file from another: a file that was replaced or rewritten has another stamp.
struct FileStamp
{
    quint64 device = 0;
    quint64 inode = 0;
    qint64 bytes = 0;
    qint64 changedNs = 0; ///< Time of the last change of its content.

    bool operator==(const FileStamp&) const = default;
};

FileStamp stampOf(const struct stat& found);

/// The stamp of the file at @p path, links followed; nothing when there is none.
std::optional<FileStamp> stampOf(const QString& path);

} // namespace zib
