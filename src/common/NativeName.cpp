#include "common/NativeName.h"

#include <QFile>
#include <QStringList>

#include <dirent.h>
#include <sys/stat.h>

namespace zib {

namespace {

bool exists(const QByteArray& name)
{
    struct stat info = {};
    return ::lstat(name.constData(), &info) == 0;
}

// The entry of a folder whose undecodable bytes read as the replacement characters of @p wanted.
QByteArray entryReading(const QByteArray& folder, const QString& wanted)
{
    DIR* entries = ::opendir(folder.isEmpty() ? "." : folder.constData());
    if (entries == nullptr)
        return {};
    QByteArray found;
    while (const dirent* entry = ::readdir(entries)) {
        if (QFile::decodeName(entry->d_name) == wanted) {
            found = entry->d_name;
            break;
        }
    }
    ::closedir(entries);
    return found;
}

} // namespace

QByteArray nativeName(const QString& path)
{
    QByteArray plain = QFile::encodeName(path);
    if (!path.contains(QChar::ReplacementCharacter) || exists(plain))
        return plain;
    QByteArray resolved;
    const QStringList parts = path.split(QLatin1Char('/'));
    for (qsizetype i = 0; i < parts.size(); ++i) {
        const QByteArray part = QFile::encodeName(parts[i]);
        const bool odd = parts[i].contains(QChar::ReplacementCharacter) && !exists(resolved + part);
        const QByteArray entry = odd ? entryReading(resolved, parts[i]) : part;
        if (entry.isEmpty() && odd)
            return plain;
        resolved += i + 1 < parts.size() ? entry + '/' : entry;
    }
    return resolved;
}

bool pathExists(const QString& path)
{
    struct stat info = {};
    return !path.contains(QChar::Null) && ::stat(nativeName(path).constData(), &info) == 0;
}

} // namespace zib
