#include "platform/FileBox.h"

#include "common/Texts.h"

#include <QDir>
#include <QFileInfo>
#include <QMessageBox>

namespace zib {

FileBox::FileBox(QWidget* owner, const QString& title, const QString& folder) : QFileDialog(owner, title)
{
    setObjectName(QStringLiteral("zibFileBox"));
    setOptions(DontUseNativeDialog | DontConfirmOverwrite | HideNameFilterDetails);
    setViewMode(Detail);
    setDirectory(!folder.isEmpty() && QFileInfo(folder).isDir() ? folder : QDir::homePath());
    resize(sizeHint().expandedTo(QSize(720, 460)));
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

void FileBox::accept()
{
    const QString missing = m_pathMustExist ? missingFolder() : QString();
    if (missing.isEmpty()) {
        QFileDialog::accept();
        return;
    }
    QMessageBox box(QMessageBox::Warning, zib::kApplicationTitle, QString(), QMessageBox::Ok, this);
    box.setTextFormat(Qt::PlainText);
    box.setText(tr("This folder does not exist:") + u'\n' + missing);
    box.exec();
}

} // namespace zib
