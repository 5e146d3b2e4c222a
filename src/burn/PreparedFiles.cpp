#include "burn/PreparedFiles.h"

#include <QHash>

namespace zib::PreparedFiles {

namespace {

QHash<QString, FileStamp>& stamps()
{
    static QHash<QString, FileStamp> kept;
    return kept;
}

QHash<QString, QString>& troubles()
{
    static QHash<QString, QString> kept;
    return kept;
}

} // namespace

void note(const QString& path)
{
    note(path, stampOf(path));
}

void note(const QString& path, const std::optional<FileStamp>& stamp)
{
    if (stamp)
        stamps().insert(path, *stamp);
    else
        stamps().remove(path);
}

bool wasChanged(const QString& path)
{
    const auto noted = stamps().constFind(path);
    const auto now = stampOf(path);
    return noted != stamps().cend() && now && *now != *noted;
}

void noteTrouble(const QString& path, const QString& trouble)
{
    if (trouble.isEmpty())
        troubles().remove(path);
    else
        troubles().insert(path, trouble);
}

QString trouble(const QString& path)
{
    return troubles().value(path);
}

} // namespace zib::PreparedFiles
