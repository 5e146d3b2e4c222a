#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

class QFile;
class QUrl;

/// File names are bytes, texts are Unicode. Here, and nowhere else, one becomes the other.
///
/// A byte that is no part of valid UTF-8 stands in a text as one of the letters U+EF80 to U+EFFF, its value
/// in the low eight bits; so every name survives lists, settings and projects. The toolkit's own file classes
/// do not know these letters: for paths that come from the user or the program's folder use what stands
/// below.
namespace zib {

/// The bytes of a text, without a look at any folder.
QByteArray nativeBytes(const QString& text);
/// The text of bytes. nativeBytes gives the same bytes back.
QString nativeText(const QByteArray& bytes);

/// The bytes by which the system knows @p path.
///
/// Texts that were made elsewhere may hold a replacement character where a byte was no UTF-8; the folder is
/// then searched for the one entry that reads like it.
QByteArray nativeName(const QString& path);

/// @returns the local path of an address, every byte of it kept; an empty text for other addresses.
QString pathOfUrl(const QUrl& url);

/// Whether @p path names something, its links followed.
bool pathExists(const QString& path);
/// Whether @p path names a regular file, its links followed.
bool isFile(const QString& path);
/// Whether @p path names a folder, its links followed.
bool isFolder(const QString& path);
/// @returns the bytes that an account may still put into a folder's file system, or -1.
qint64 freeBytes(const QString& folder);
/// @returns the bytes a file holds, or -1.
qint64 fileSize(const QString& path);
/// @returns the names in a folder, in no order, without "." and "..".
QStringList folderEntries(const QString& folder);
/// Makes one folder; its parent must be there.  @returns whether it was made.
bool makeOneFolder(const QString& folder);
/// Makes a folder with every missing parent.  @returns whether it is there now.
bool makeFolders(const QString& folder);
/// Folder of the running executable, links resolved, without a trailing separator (a root keeps it).
QString executableFolder();
bool removeFile(const QString& path);
/// Opens a regular file for reading.
bool openForReading(QFile& file, const QString& path);

} // namespace zib
