#include "platform/NameIcons.h"

#include <QFileInfo>
#include <QMimeDatabase>

namespace zib {

namespace {

QMimeType kindOf(const QFileInfo& info)
{
    return QMimeDatabase().mimeTypeForFile(info.fileName(), QMimeDatabase::MatchExtension);
}

} // namespace

QIcon NameIcons::icon(const QFileInfo& info) const
{
    if (info.isRoot() || info.isDir())
        return QFileIconProvider::icon(info.isRoot() ? Drive : Folder);
    const QMimeType kind = kindOf(info);
    const QIcon themed = QIcon::fromTheme(kind.iconName(), QIcon::fromTheme(kind.genericIconName()));
    return themed.isNull() ? QFileIconProvider::icon(File) : themed;
}

QString NameIcons::type(const QFileInfo& info) const
{
    if (info.isRoot() || info.isDir())
        return QFileIconProvider::type(info);
    const QMimeType kind = kindOf(info);
    return kind.isDefault() ? QFileInfo(info.fileName()).suffix() : kind.comment();
}

} // namespace zib
