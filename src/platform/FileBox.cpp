#include "platform/FileBox.h"

#include "common/Texts.h"
#include "platform/Box.h"

#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QLineEdit>
#include <QListView>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTreeView>
#include <QUrl>

namespace zib {

namespace {

QList<QUrl> places()
{
    QList<QUrl> urls;
    for (const auto place : {QStandardPaths::HomeLocation, QStandardPaths::DesktopLocation,
                             QStandardPaths::MusicLocation, QStandardPaths::DownloadLocation})
        if (const QUrl url = QUrl::fromLocalFile(QStandardPaths::writableLocation(place));
            QFileInfo(url.toLocalFile()).isDir() && !urls.contains(url))
            urls << url;
    urls << QUrl::fromLocalFile(QDir::rootPath());
    return urls;
}

/// A folder, or the nearest of its parents that is there.
QString nearestFolder(const QString& folder)
{
    for (QString path = folder; path.startsWith(u'/'); path = path.left(path.lastIndexOf(u'/')))
        if (QFileInfo(path).isDir())
            return path;
    return QDir::homePath();
}

/// @returns how many names a text gives, each in quotes; 0 where it is no such list.
qsizetype countQuotedNames(const QString& text)
{
    static const QRegularExpression list(QStringLiteral("^\\s*\"[^\"]+\"(\\s+\"[^\"]+\")*\\s*$"));
    return list.match(text).hasMatch() ? text.count(u'"') / 2 : 0;
}

} // namespace

FileBox::FileBox(QWidget* owner, const QString& title, const QString& folder) : QFileDialog(owner, title)
{
    setObjectName(QStringLiteral("zibFileBox"));
    setOptions(DontUseNativeDialog | DontConfirmOverwrite | HideNameFilterDetails |
               DontUseCustomDirectoryIcons);
    setIconProvider(&m_icons);
    setViewMode(Detail);
    setDirectory(nearestFolder(folder));
    setSidebarUrls(places());
    showWholeColumns();
    resize(sizeHint().expandedTo(QSize(720, 460)));
}

/// Names take the room that size, type and date leave.
void FileBox::showWholeColumns()
{
    const auto* list = findChild<QTreeView*>(QStringLiteral("treeView"));
    if (!list)
        return;
    list->header()->setResizeContentsPrecision(0); // The visible rows; folders may hold thousands.
    list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
}

void FileBox::setFilter(const QString& filter)
{
    if (const QStringList filters = nameFiltersOf(filter); !filters.isEmpty())
        setNameFilters(filters);
}

QStringList FileBox::nameFiltersOf(const QString& filter)
{
    QStringList filters;
    const QStringList parts = filter.split(u'|');
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QStringList patterns = parts[i + 1].split(u';', Qt::SkipEmptyParts);
        for (QString& pattern : patterns)
            pattern = pattern.trimmed() == QStringLiteral("*.*") ? QStringLiteral("*") : pattern.trimmed();
        filters << parts[i] + QStringLiteral(" (") + patterns.join(u' ') + u')';
    }
    return filters;
}

/// @returns the folder of the first chosen file that is not there.
QString FileBox::missingFolder() const
{
    for (const QString& file : selectedFiles())
        if (const QString folder = QFileInfo(file).absolutePath(); !QFileInfo(folder).isDir())
            return folder;
    return {};
}

/// While names are typed the toolkit marks those that it happens to know and in the end takes these alone.
/// Without marks it takes, and looks for, every name as it stands in the field.
void FileBox::takeEveryTypedName()
{
    const auto* field = findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    const auto* list = findChild<QListView*>(QStringLiteral("listView"));
    if (field && list && countQuotedNames(field->text()) > selectedFiles().size())
        list->selectionModel()->clearSelection();
}

void FileBox::accept()
{
    takeEveryTypedName();
    const QString missing = m_pathMustExist ? missingFolder() : QString();
    if (missing.isEmpty()) {
        QFileDialog::accept();
        return;
    }
    showBox(this, QMessageBox::Information, kApplicationTitle,
            tr("This folder does not exist:") + u'\n' + missing);
}

} // namespace zib
