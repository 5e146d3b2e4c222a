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
    qint64 changedNs = 0; ///< Time of the last change of its content; any program may set it back.
    qint64 touchedNs = 0; ///< Time of the last change of anything about it, which no program can set back.

    bool operator==(const FileStamp&) const = default;
    /// The same but for what tells no content from another, as its rights or the number of its names.
    bool sameContent(const FileStamp& other) const;
};

FileStamp stampOf(const struct stat& found);

/// The stamp of the file at @p path, links followed; nothing when there is none.
std::optional<FileStamp> stampOf(const QString& path);

} // namespace zib
