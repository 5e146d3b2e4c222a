#pragma once

#include <QString>

namespace zib {

/// Names in one folder that are kept for this program while the files that are to bear them are still being
/// made: no other instance is given them. Nothing stands under the names themselves. They are kept by locks
/// on a hidden file of the folder, which goes with its last user; a program that was killed keeps nothing.
class ReservedNames
{
public:
    /// Of the names taken, so many are kept: ten times what a disc has room for. Every lock costs the system
    /// a look at all the others.
    static constexpr int kMostKept = 1000;

    explicit ReservedNames(QString folder);
    ~ReservedNames();
    Q_DISABLE_COPY_MOVE(ReservedNames)

    /// Takes @p name, in one step against every other instance.  @returns false when a file (or a link to
    /// nothing) bears it or another instance keeps it. Where nothing can be locked (no folder, no right, a
    /// storage without locks) a free name is given all the same; then the naming of the file decides.
    bool take(const QString& name);

private:
    enum class Lock
    {
        Ours,
        Others,
        Impossible
    };
    Lock lock(const QString& name);
    bool open();
    void close();

    QString m_folder;
    QByteArray m_path;
    int m_kept = 0;
    int m_file = -1;
};

} // namespace zib
