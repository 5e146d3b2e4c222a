#pragma once

#include <QByteArray>

namespace zib {

/// Who bears a name in a folder at a certain moment: nobody, or one certain file (links are not followed).
///
/// The road for every file that is to get its final name: look with bearerOf when the name is chosen or the
/// user is asked whether a file may be replaced; write under another name; then giveName, which refuses when
/// another program was there in the meantime. So nothing is ever replaced that nobody was asked about.
struct NameBearer
{
    bool someone = false;
    quint64 device = 0;
    quint64 inode = 0;

    bool operator==(const NameBearer&) const = default;
};

/// @param path as the system knows it (nativeName).
NameBearer bearerOf(const QByteArray& path);
/// An open file, as who bears its name.
NameBearer bearerOf(int file);

/// Where a file lies that was opened as @p opened: its folder may have been moved since, and another file may
/// bear the old name.  @returns nothing where it has no name any more.
QByteArray nameOfOpenFile(int file, const QByteArray& opened);

/// Moves the file @p from to the name @p to, in one step that fails when its bearer is not @p seen any more:
/// a name that was free is never taken from another file, and only the file that was seen is replaced.
/// @returns false with errno set, EEXIST for another bearer; then @p from is still there.
bool giveName(const QByteArray& from, const QByteArray& to, const NameBearer& seen = {});

} // namespace zib
