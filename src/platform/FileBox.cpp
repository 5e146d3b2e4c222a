#include "platform/FileBox.h"

#include "common/NativeName.h"
#include "common/Texts.h"
#include "platform/Box.h"

#include <QDir>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QHeaderView>
#include <QLineEdit>
#include <QListView>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTreeView>
#include <QUrl>

#include <unistd.h>

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

constexpr QChar kQuote = u'"';

/// @returns how many names a text gives, each in quotes; 0 where it is no such list.
qsizetype countQuotedNames(const QString& text)
{
    static const QRegularExpression list(QStringLiteral("^\\s*\"[^\"]+\"(\\s*\"[^\"]+\")*\\s*$"));
    return list.match(text).hasMatch() ? text.count(kQuote) / 2 : 0;
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

QString FileBox::typedText() const
{
    const auto* field = findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    return field ? field->text() : QString();
}

/// @returns the names that are marked in the list.
QStringList FileBox::markedNames() const
{
    QStringList names;
    if (const auto* list = findChild<QListView*>(QStringLiteral("listView")))
        for (const QModelIndex& row : list->selectionModel()->selectedRows())
            names << row.data(QFileSystemModel::FileNameRole).toString();
    return names;
}

/// @returns whether a text is what the toolkit writes into the field for the files that are marked.
bool FileBox::marksGive(QString text) const
{
    const QStringList names = markedNames();
    if (names.size() == 1 && text == names.first())
        return true;
    for (const QString& name : names) {
        const QString quoted = kQuote + name + kQuote;
        const qsizetype place = text.indexOf(quoted);
        if (place < 0)
            return false;
        text.remove(place, quoted.size());
    }
    return text.trimmed().isEmpty();
}

/// @returns whether the quotes in a text belong to a name.
bool FileBox::isOneName(const QString& text) const
{
    if (acceptMode() == AcceptSave)
        return countQuotedNames(text) != 1;
    const QFileInfo there(directory().absoluteFilePath(text));
    return there.exists() && there.isDir() == (fileMode() == Directory);
}

/// While names are typed the toolkit marks those that it happens to know and in the end takes these alone.
/// Without marks it takes, and looks for, every name in quotes as it stands in the field, but nothing
/// else there.  @returns why a text with quotes gives no names; empty when it does.
QString FileBox::takeQuotedText(const QString& text)
{
    if (marksGive(text))
        return {};
    if (const auto* list = findChild<QListView*>(QStringLiteral("listView")))
        list->selectionModel()->clearSelection();
    if (isOneName(text))
        m_named = directory().absoluteFilePath(text);
    else if (countQuotedNames(text) == 0)
        return tr("These names cannot be told apart. Please put each of them in quotes:") + u'\n' + text;
    return {};
}

QStringList FileBox::chosen() const
{
    return m_named.isEmpty() ? selectedFiles() : QStringList(m_named);
}

/// @returns the folder of the first chosen file that is not there.
QString FileBox::missingFolder() const
{
    for (const QString& file : chosen())
        if (const QString folder = QFileInfo(file).absolutePath(); !QFileInfo(folder).isDir())
            return folder;
    return {};
}

/// @returns the name of the first chosen file that its folder cannot take for its length.
QString FileBox::longName() const
{
    for (const QString& file : chosen()) {
        const QFileInfo info(file);
        const long most = ::pathconf(nativeName(info.absolutePath()).constData(), _PC_NAME_MAX);
        if (most > 0 && nativeName(info.fileName()).size() > most)
            return info.fileName();
    }
    return {};
}

/// @returns why what stands in the field cannot be taken; empty when it can.
QString FileBox::refusal()
{
    m_named.clear();
    if (const QString text = typedText(); text.contains(kQuote))
        if (const QString trouble = takeQuotedText(text); !trouble.isEmpty())
            return trouble;
    if (const QString missing = m_pathMustExist ? missingFolder() : QString(); !missing.isEmpty())
        return tr("This folder does not exist:") + u'\n' + missing;
    if (const QString name = longName(); !name.isEmpty())
        return tr("This name is too long:") + u'\n' + name;
    return {};
}

void FileBox::accept()
{
    if (const QString trouble = refusal(); !trouble.isEmpty())
        showBox(this, QMessageBox::Information, kApplicationTitle, trouble);
    else if (m_named.isEmpty())
        QFileDialog::accept();
    else
        QDialog::accept(); // NOLINT(bugprone-parent-virtual-call): the quoted name is taken as it stands
}

} // namespace zib
