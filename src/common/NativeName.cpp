#include "common/NativeName.h"

#include <QFile>
#include <QUrl>

#include <algorithm>
#include <climits>
#include <optional>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace zib {

namespace {

constexpr char16_t kEscapes = 0xEF00; // With a byte from 0x80 on in the low bits.
constexpr char16_t kByteOrderMark = 0xFEFF;

bool isEscape(QChar letter)
{
    return letter.unicode() >= (kEscapes | 0x80) && letter.unicode() <= (kEscapes | 0xFF);
}

qsizetype nextEscape(const QString& text, qsizetype from)
{
    while (from < text.size() && !isEscape(text[from]))
        ++from;
    return from;
}

/// The length of the UTF-8 letter at a place, 0 when there is none; letters that serve as escapes are none.
qsizetype letterAt(const QByteArray& bytes, qsizetype place)
{
    const auto first = static_cast<uchar>(bytes[place]);
    const qsizetype length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (bytes.size() - place < length)
        return 0;
    const QByteArrayView letter = QByteArrayView(bytes).sliced(place, length);
    if (!letter.isValidUtf8())
        return 0;
    const bool escape = first == 0xEE && static_cast<uchar>(letter[1]) >= 0xBE;
    return escape ? 0 : length;
}

std::optional<struct stat> statusOf(const QString& path)
{
    struct stat info = {};
    if (path.contains(QChar::Null) || ::stat(nativeName(path).constData(), &info) != 0)
        return std::nullopt;
    return info;
}

bool exists(const QByteArray& name)
{
    struct stat info = {};
    return ::lstat(name.constData(), &info) == 0;
}

QByteArrayList entriesOf(const QByteArray& folder)
{
    QByteArrayList names;
    DIR* entries = ::opendir(folder.isEmpty() ? "." : folder.constData());
    while (const dirent* entry = entries ? ::readdir(entries) : nullptr)
        names << entry->d_name;
    if (entries)
        ::closedir(entries);
    names.removeAll(".");
    names.removeAll("..");
    return names;
}

/// The one entry of a folder whose undecodable bytes read as the replacement characters of @p wanted.
QByteArray entryReading(const QByteArray& folder, const QString& wanted)
{
    QByteArray found;
    for (const QByteArray& name : entriesOf(folder)) {
        if (QString::fromUtf8(name) != wanted)
            continue;
        if (!found.isEmpty())
            return {};
        found = name;
    }
    return found;
}

/// The path whose replacement characters are looked up, part by part; @p plain when there is none.
QByteArray lookedUp(const QString& path, const QByteArray& plain)
{
    QByteArray resolved;
    const QStringList parts = path.split(u'/');
    for (qsizetype i = 0; i < parts.size(); ++i) {
        const QByteArray part = nativeBytes(parts[i]);
        const bool odd = parts[i].contains(QChar::ReplacementCharacter) && !exists(resolved + part);
        const QByteArray entry = odd ? entryReading(resolved, parts[i]) : part;
        if (entry.isEmpty() && odd)
            return plain;
        resolved += i + 1 < parts.size() ? entry + '/' : entry;
    }
    return resolved;
}

} // namespace

QByteArray nativeBytes(const QString& text)
{
    QByteArray bytes;
    for (qsizetype from = 0; from < text.size();) {
        const qsizetype escape = nextEscape(text, from);
        bytes += QStringView(text).mid(from, escape - from).toUtf8();
        if (escape < text.size())
            bytes += static_cast<char>(text[escape].unicode() & 0xFF);
        from = escape + 1;
    }
    return bytes;
}

QString nativeText(const QByteArray& bytes)
{
    if (bytes.isValidUtf8() && !bytes.contains('\xEE') && !bytes.startsWith("\xEF"))
        return QString::fromUtf8(bytes);
    QString text;
    for (qsizetype place = 0, from = 0; place < bytes.size(); from = place) {
        qsizetype length = 0;
        while (place < bytes.size() && (length = letterAt(bytes, place)) > 0)
            place += length;
        if (bytes.mid(from, 3) == "\xEF\xBB\xBF" && place > from)
            text += QChar(kByteOrderMark); // Which decoding takes for a mark and drops.
        text += QString::fromUtf8(QByteArrayView(bytes).sliced(from, place - from));
        if (place < bytes.size())
            text += QChar(static_cast<char16_t>(kEscapes | static_cast<uchar>(bytes[place++])));
    }
    return text;
}

QByteArray nativeName(const QString& path)
{
    const QByteArray plain = nativeBytes(path);
    const bool replaced = path.contains(QChar::ReplacementCharacter);
    const bool escaped = nextEscape(path, 0) < path.size();
    if ((!replaced && !escaped) || exists(plain))
        return plain;
    const QByteArray asLetters = path.toUtf8(); // A name that truly holds such letters, from a dialog.
    if (escaped && exists(asLetters))
        return asLetters;
    return replaced ? lookedUp(path, plain) : plain;
}

QString pathOfUrl(const QUrl& url)
{
    if (!url.isLocalFile())
        return {};
    return nativeText(QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()));
}

bool pathExists(const QString& path)
{
    return statusOf(path).has_value();
}

bool isFile(const QString& path)
{
    const auto info = statusOf(path);
    return info && S_ISREG(info->st_mode);
}

bool isFolder(const QString& path)
{
    const auto info = statusOf(path);
    return info && S_ISDIR(info->st_mode);
}

qint64 freeBytes(const QString& folder)
{
    struct statvfs info = {};
    if (::statvfs(nativeName(folder).constData(), &info) != 0)
        return -1;
    return static_cast<qint64>(info.f_bavail) * static_cast<qint64>(info.f_frsize);
}

qint64 fileSize(const QString& path)
{
    const auto info = statusOf(path);
    return info ? qint64{info->st_size} : -1;
}

QStringList folderEntries(const QString& folder)
{
    QStringList names;
    for (const QByteArray& name : entriesOf(nativeName(folder)))
        names << nativeText(name);
    return names;
}

bool makeOneFolder(const QString& folder)
{
    return !folder.contains(QChar::Null) && ::mkdir(nativeName(folder).constData(), 0777) == 0;
}

bool makeFolders(const QString& folder)
{
    if (isFolder(folder))
        return true;
    qsizetype end = folder.size();
    while (end > 1 && folder[end - 1] == u'/')
        --end;
    const qsizetype slash = folder.lastIndexOf(u'/', end - 1);
    if (slash > 0 && !makeFolders(folder.left(slash)))
        return false;
    return makeOneFolder(folder.left(end)) || isFolder(folder);
}

QString executableFolder()
{
    char path[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
    const QByteArray name(path, std::max<ssize_t>(length, 0));
    const qsizetype slash = name.lastIndexOf('/');
    return nativeText(slash > 0 ? name.left(slash) : QByteArray("/"));
}

bool removeFile(const QString& path)
{
    return !path.contains(QChar::Null) && ::unlink(nativeName(path).constData()) == 0;
}

bool openForReading(QFile& file, const QString& path)
{
    if (!isFile(path))
        return false;
    const int fd = ::open(nativeName(path).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    return fd >= 0 && file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
}

} // namespace zib
