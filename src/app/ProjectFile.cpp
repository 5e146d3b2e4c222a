#include "app/ProjectFile.h"

#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"
#include "common/NativeName.h"
#include "common/Platform.h"

#include <QFileInfo>
#include <QUrl>

#include <sys/statvfs.h>
#include <unistd.h>

namespace zib {

namespace {

constexpr int kPathBytes = 32768;            // Eight times the longest path the system takes.
constexpr quint64 kSmallestRoom = 64 * 1024; // A project takes no more, unless its paths are very long.
const QString kGeneral = QStringLiteral("General");
const QString kFileCount = QStringLiteral("FileCount");
const QByteArray kFiles = "Files";

QByteArray fileKey(int number)
{
    return "File" + QByteArray::number(number);
}

bool holdsLineBreak(const QString& path)
{
    return path.contains(u'\n') || path.contains(u'\r');
}

bool canBeWritten(const QString& path)
{
    return !path.isEmpty() && !path.contains(QChar::Null) && path.isValidUtf16() &&
           (!holdsLineBreak(path) || path.startsWith(u'/'));
}

/// The value that reads back as this path: in quotes of its own where reading would take something away.
QByteArray valueOf(const QString& path)
{
    if (holdsLineBreak(path))
        return "file://" + nativeBytes(path).toPercentEncoding("/");
    const QByteArray text = nativeBytes(path);
    const auto blank = [](char letter) { return letter == ' ' || letter == '\t'; };
    const auto quote = [](char letter) { return letter == '"' || letter == '\''; };
    const bool loses = blank(text.front()) || blank(text.back()) ||
                       (text.size() > 1 && quote(text.front()) && text.front() == text.back());
    return loses ? '"' + text + '"' : text;
}

IniChange changeOf(int number, const QString& path)
{
    IniChange change{kFiles, fileKey(number), {}};
    if (canBeWritten(path))
        change.value = valueOf(path);
    return change;
}

/// @returns the file that a value names, a relative one from the application folder; an empty text when there
/// is none.
QString existingFile(const QByteArray& value)
{
    const QString path = nativeText(value);
    for (const QString& candidate : {path, path.trimmed(), pathOfUrl(QUrl::fromEncoded(value))}) {
        const bool whole = candidate.isEmpty() || candidate.startsWith(u'/');
        const QString file = whole ? candidate : GeneralAPI::JoinPath(applicationFolder(), candidate);
        if (!file.isEmpty() && isFile(file))
            return file;
    }
    return {};
}

/// Why a file could not be written, as far as the place tells.
Failure::Kind reasonOf(const QString& path)
{
    const QString folder = QFileInfo(path).path();
    const auto mayWrite = [](const QString& place) {
        return ::access(nativeName(place).constData(), W_OK) == 0;
    };
    if (!isFolder(folder))
        return Failure::Kind::NotFound;
    if (isFolder(path))
        return Failure::Kind::BadValue;
    if (!mayWrite(pathExists(path) ? path : folder))
        return Failure::Kind::NoPermission;
    struct statvfs room = {};
    const bool full = ::statvfs(nativeName(folder).constData(), &room) == 0 &&
                      room.f_bavail * room.f_frsize < kSmallestRoom;
    return full ? Failure::Kind::MediumTooSmall : Failure::Kind::WriteFailed;
}

} // namespace

Outcome<QStringList> ProjectFile::read() const
{
    const Failure refused{Failure::Kind::BadValue, m_path};
    if (!platform().ini)
        return refused;
    if (!pathExists(m_path) || isFolder(m_path))
        return Failure{Failure::Kind::NotFound, m_path};
    bool numeric = false;
    const int count =
        GeneralAPI::ReadIniString(kGeneral, kFileCount, QStringLiteral("0"), m_path).toInt(&numeric);
    if (!numeric || count < 1 || count > kMostFiles)
        return refused;
    QList<IniQuery> queries;
    for (int i = 1; i <= count; ++i)
        queries << IniQuery{kFiles, fileKey(i), {}, kPathBytes};
    QStringList files;
    for (const QByteArray& value : platform().ini->readAll(queries, m_path))
        if (const QString file = existingFile(value); !file.isEmpty())
            files << file;
    return files;
}

Outcome<QStringList> ProjectFile::write(const QStringList& paths) const
{
    QList<IniChange> changes{GeneralAPI::IniChangeOf(kGeneral, kFileCount, QString::number(paths.size()))};
    QStringList refused;
    for (const QString& path : paths) {
        changes << changeOf(static_cast<int>(changes.size()), path);
        if (!changes.last().value)
            refused << path;
    }
    if (!platform().ini || !platform().ini->writeAll(changes, m_path))
        return Failure{reasonOf(m_path), m_path};
    return refused;
}

} // namespace zib
