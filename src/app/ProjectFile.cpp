#include "app/ProjectFile.h"

#include "common/GeneralAPI.h"
#include "common/Platform.h"

#include <QFileInfo>
#include <QStorageInfo>

namespace zib {

namespace {

constexpr int kPathBytes = 32768;           // Eight times the longest path the system takes.
constexpr qint64 kSmallestRoom = 64 * 1024; // A project takes no more, unless its paths are very long.
const QString kGeneral = QStringLiteral("General");
const QString kFileCount = QStringLiteral("FileCount");
const QByteArray kFiles = "Files";

QByteArray fileKey(int number)
{
    return "File" + QByteArray::number(number);
}

bool fitsALine(const QString& path)
{
    const QByteArray text = path.toUtf8();
    return !path.contains(u'\n') && !path.contains(u'\r') && !path.contains(QChar::Null) &&
           QString::fromUtf8(text) == path;
}

/// The value that reads back as this path: in quotes of its own where reading would take something away.
QByteArray valueOf(const QString& path)
{
    const QByteArray text = path.toUtf8();
    const auto blank = [](char letter) { return letter == ' ' || letter == '\t'; };
    const auto quote = [](char letter) { return letter == '"' || letter == '\''; };
    const bool loses = blank(text.front()) || blank(text.back()) ||
                       (text.size() > 1 && quote(text.front()) && text.front() == text.back());
    return loses ? '"' + text + '"' : text;
}

IniChange changeOf(int number, const QString& path)
{
    IniChange change{kFiles, fileKey(number), {}};
    if (!path.isEmpty() && fitsALine(path))
        change.value = valueOf(path);
    return change;
}

/// Why a file could not be written, as far as the place tells.
Failure::Kind reasonOf(const QString& path)
{
    const QFileInfo file(path);
    const QFileInfo folder(file.path());
    if (!folder.isDir())
        return Failure::Kind::NotFound;
    if (file.isDir())
        return Failure::Kind::BadValue;
    if (!folder.isWritable() || (file.exists() && !file.isWritable()))
        return Failure::Kind::NoPermission;
    const bool full = QStorageInfo(folder.filePath()).bytesAvailable() < kSmallestRoom;
    return full ? Failure::Kind::MediumTooSmall : Failure::Kind::WriteFailed;
}

} // namespace

/// @returns the path of a track, or an empty text when there is none or no such file.
QString ProjectFile::existingFile(int number) const
{
    const QString path = QString::fromUtf8(
        platform().ini->GetPrivateProfileStringA(kFiles, fileKey(number), {}, kPathBytes, m_path));
    for (const QString& candidate : {path, path.trimmed()})
        if (!candidate.isEmpty() && QFileInfo(candidate).isFile())
            return candidate;
    return {};
}

Outcome<QStringList> ProjectFile::read() const
{
    const Failure refused{Failure::Kind::BadValue, m_path};
    if (!platform().ini)
        return refused;
    if (const QFileInfo file(m_path); !file.exists() || file.isDir())
        return Failure{Failure::Kind::NotFound, m_path};
    bool numeric = false;
    const int count =
        GeneralAPI::ReadIniString(kGeneral, kFileCount, QStringLiteral("0"), m_path).toInt(&numeric);
    if (!numeric || count < 1 || count > kMostFiles)
        return refused;
    QStringList files;
    for (int i = 1; i <= count; ++i)
        if (const QString file = existingFile(i); !file.isEmpty())
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
