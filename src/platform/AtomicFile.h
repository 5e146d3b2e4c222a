#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace zib {

/// A regular file as it stood at one moment.
struct FileSnapshot
{
    bool exists = false;
    QByteArray bytes{};
    quint64 device = 0;
    quint64 inode = 0;
    qint64 changedNs = 0; ///< Of the contents, since 1970.
    qint64 size = 0;
    quint32 mode = 0; ///< Permission bits.
};

/// Holds other instances of this program off one file while this lives, by a lock on the file's folder.
/// Waits about two seconds at most, then goes on without.
class FolderLock
{
public:
    explicit FolderLock(const QString& file);
    ~FolderLock();
    Q_DISABLE_COPY_MOVE(FolderLock)

    /// Makes what was renamed into the folder last through a power cut.
    void sync() const;

private:
    int m_folder = -1;
};

/// @returns the file behind a path, with every symbolic link followed, dangling ones too; nothing for a loop.
std::optional<QString> followLinks(const QString& path);

/// Reads a whole file. A missing one is a snapshot that does not exist.
/// @returns nothing for what is unreadable, no regular file, or above 64 MiB.
std::optional<FileSnapshot> readSnapshot(const QString& path);

enum class Replaced
{
    Done,    ///< The new file stands, on the disk itself.
    Changed, ///< Somebody changed the file since the snapshot; nothing was done.
    Failed,  ///< It could not be written; the old file stands whole.
};

/// Replaces the file that @p before shows with new contents: written beside it, brought to the disk, renamed;
/// in a folder that takes no file of this account, written over. Permissions stay where the file system knows
/// them; a file that nobody may write, or that this account may not write, is left alone.
Replaced replaceFile(const QString& path, const QByteArray& bytes, const FileSnapshot& before,
                     const FolderLock& lock);

} // namespace zib
