#include "platform/DesktopDialogs.h"

#include "platform/FileBox.h"

#include <QColorDialog>
#include <QDir>
#include <QFileInfo>
#include <QFontDialog>
#include <QFontInfo>

#include <algorithm>

namespace zib {

namespace {

/// @returns the innermost folder that all files lie in.
QDir commonFolder(const QStringList& files)
{
    QDir folder = QFileInfo(files.first()).absoluteDir();
    const auto isOutside = [&folder](const QString& file) {
        return folder.relativeFilePath(file).startsWith(QStringLiteral("../"));
    };
    while (std::any_of(files.begin(), files.end(), isOutside) && folder.cdUp()) {
    }
    return folder;
}

/// Several files as a folder and then their names below it, parted by NUL; one file as its path.
QString joined(const QStringList& files)
{
    if (files.size() == 1)
        return files.first();
    const QDir folder = commonFolder(files);
    QStringList parts{folder.absolutePath()};
    for (const QString& file : files)
        parts << folder.relativeFilePath(file);
    return parts.join(QChar::Null);
}

QFileDialog::FileMode openMode(quint32 flags)
{
    if (flags & FileDialogRequest::AllowMultiselect)
        return QFileDialog::ExistingFiles;
    return flags & FileDialogRequest::FileMustExist ? QFileDialog::ExistingFile : QFileDialog::AnyFile;
}

} // namespace

QString DesktopDialogs::startFolder(const FileDialogRequest& request) const
{
    return request.initialFolder.isEmpty() ? m_lastFolder : request.initialFolder;
}

Outcome<QString> DesktopDialogs::answer(const QStringList& files, const FileDialogRequest& request)
{
    if (files.isEmpty())
        return Failure{Failure::Kind::Cancelled};
    m_lastFolder = QFileInfo(files.first()).absolutePath();
    const QString text = joined(files);
    if (text.size() > request.maxFileSize)
        return Failure{Failure::Kind::BadValue, files.first()};
    return text;
}

Outcome<QString> DesktopDialogs::openFile(QWidget* owner, const FileDialogRequest& request)
{
    FileBox box(owner, request.title, startFolder(request));
    box.setAcceptMode(QFileDialog::AcceptOpen);
    box.setFileMode(openMode(request.flags));
    box.setFilter(request.filter);
    box.setPathMustExist(request.flags & FileDialogRequest::PathMustExist);
    if (box.exec() != QDialog::Accepted)
        return Failure{Failure::Kind::Cancelled};
    return answer(box.chosen(), request);
}

Outcome<QString> DesktopDialogs::saveFile(QWidget* owner, const FileDialogRequest& request)
{
    FileBox box(owner, request.title, startFolder(request));
    box.setAcceptMode(QFileDialog::AcceptSave);
    box.setFileMode(QFileDialog::AnyFile);
    box.setFilter(request.filter);
    box.setPathMustExist(request.flags & FileDialogRequest::PathMustExist);
    if (box.exec() != QDialog::Accepted)
        return Failure{Failure::Kind::Cancelled};
    return answer(box.chosen(), request);
}

Outcome<QColor> DesktopDialogs::chooseColor(QWidget* owner, const QString& title, const QColor& current)
{
    QColorDialog dialog(current, owner);
    dialog.setObjectName(QStringLiteral("zibColorBox"));
    dialog.setOption(QColorDialog::DontUseNativeDialog);
    if (!title.isEmpty())
        dialog.setWindowTitle(title);
    if (dialog.exec() != QDialog::Accepted)
        return Failure{Failure::Kind::Cancelled};
    return dialog.selectedColor();
}

Outcome<QFont> DesktopDialogs::chooseFont(QWidget* owner, const QString& title, const QFont& current)
{
    // A face that is not installed is in no list: the one that stands in for it is shown, and the face is
    // kept unless another is chosen.
    QFont shown = current;
    shown.setFamily(QFontInfo(current).family());
    QFontDialog dialog(shown, owner);
    dialog.setObjectName(QStringLiteral("zibFontBox"));
    dialog.setOption(QFontDialog::DontUseNativeDialog);
    if (!title.isEmpty())
        dialog.setWindowTitle(title);
    if (dialog.exec() != QDialog::Accepted)
        return Failure{Failure::Kind::Cancelled};
    QFont chosen = dialog.selectedFont();
    if (chosen.family() == shown.family())
        chosen.setFamily(current.family());
    return chosen;
}

} // namespace zib
