#include "app/frmMain.h"

#include "ui_frmMain.h"

#include "app/Aside.h"
#include "app/ProjectFile.h"
#include "common/Messages.h"
#include "common/Texts.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

using zib::Failure;
using zib::FileDialogRequest;

// Project files: new, open, save.

namespace {

const QString kNothingToSave = QStringLiteral("There are no files in the list, need not to save.");
const QString kSaveProject = QStringLiteral("Would you like to save this project?");
const QString kProjectFilter = QStringLiteral("Project Files(*.zibp)|*.zibp|All Files(*.*)|*.*");
const QString kNotWritten = QStringLiteral("The project could not be written. The file is as it was before.");
const QString kNotKnown =
    QStringLiteral("The disk does not answer, so the project may not have been written.");
const QString kTooMany = QStringLiteral("The project was saved, but it cannot be opened again: "
                                        "it holds %1 files, and a project is opened with %2 at most.");
const QString kLeftOut =
    QStringLiteral("The project was saved, but %1 of the files have names that a project "
                   "cannot hold. They will be missing when it is opened.");

QString reasonOf(const Failure& failure)
{
    switch (failure.kind) {
    case Failure::Kind::NotFound:
        return QStringLiteral("Its folder does not exist.");
    case Failure::Kind::BadValue:
        return QStringLiteral("There is a folder of this name.");
    case Failure::Kind::NoPermission:
        return QStringLiteral("You may not write there.");
    case Failure::Kind::MediumTooSmall:
        return QStringLiteral("The disk is full.");
    default:
        return QStringLiteral("The disk refused it.");
    }
}

QString failureText(const Failure& failure)
{
    if (failure.kind == Failure::Kind::Cancelled)
        return kNotKnown + QStringLiteral("\n\n") + failure.detail;
    return kNotWritten + QStringLiteral("\n\n") + failure.detail + u'\n' + reasonOf(failure);
}

/// Without the blanks at its ends; other letters that show nothing belong to a name.
QString trimmed(const QString& name)
{
    const auto isBlank = [](QChar letter) { return letter == u' '; };
    const auto first = std::find_if_not(name.begin(), name.end(), isBlank);
    const auto last = std::find_if_not(name.rbegin(), std::make_reverse_iterator(first), isBlank).base();
    return QString(first, last - first);
}

/// What would be missing when the project is opened again; empty when nothing would be.
QString lossText(qsizetype files, qsizetype leftOut)
{
    if (files > zib::ProjectFile::kMostFiles)
        return kTooMany.arg(files).arg(zib::ProjectFile::kMostFiles);
    return leftOut > 0 ? kLeftOut.arg(leftOut) : QString();
}

} // namespace

/// A list that was to be saved and is not safe is kept.
void frmMain::NewProject()
{
    if (m_list.count() > 0) {
        const auto answer = m_services.messages.askYesNoCancel(this, kSaveProject);
        if (answer == zib::Messages::Answer::Cancel)
            return;
        if (answer == zib::Messages::Answer::Yes && !SaveProject())
            return;
    }
    forgetProject();
    m_list.clear();
    RefreshTotals();
}

void frmMain::OpenProject()
{
    m_projectRequest.title = QStringLiteral("Open Project");
    m_projectRequest.filter = kProjectFilter;
    m_projectRequest.flags = FileDialogRequest::PathMustExist | FileDialogRequest::FileMustExist |
                             FileDialogRequest::Explorer | FileDialogRequest::LongNames;
    const auto chosen = m_services.dialogs.openFile(this, m_projectRequest);
    if (chosen)
        static_cast<void>(openNamedProject(*chosen)); // A project that cannot be opened changes nothing.
}

/// @returns why the list was left as it is.
zib::Outcome<QStringList> frmMain::openNamedProject(const QString& chosen)
{
    const QString name = trimmed(chosen);
    if (name.isEmpty())
        return Failure{Failure::Kind::NotFound, name};
    const auto files = projectAside(QStringLiteral("Reading the project"), name,
                                    [name] { return zib::ProjectFile(name).read(); });
    const bool named = files || files.error().kind == Failure::Kind::BadValue;
    if (named)
        ProjectFileName = name;
    if (!files)
        return files;
    m_list.clear();
    addFiles(*files);
    if (m_stopped)
        forgetProject(); // Saving must not replace the project by a part of it.
    else if (m_list.count() > 0)
        showProjectName();
    RefreshTotals();
    return files;
}

void frmMain::saveProjectCommand()
{
    if (!refuseEmptyList(kNothingToSave))
        SaveProject();
}

void frmMain::saveProjectAsCommand()
{
    if (!refuseEmptyList(kNothingToSave))
        SaveProjectAs();
}

/// @returns whether the list can be had again from the project.
bool frmMain::SaveProject()
{
    ProjectFileName = trimmed(ProjectFileName);
    if (ProjectFileName.isEmpty())
        return SaveProjectAs(); // It comes back here with a name.
    m_saving = true;
    const QString trouble = writeProject();
    m_saving = false;
    if (!trouble.isEmpty())
        m_services.messages.critical(this, trouble);
    if (std::exchange(m_closed, false) && trouble.isEmpty())
        close(); // As the user wished meanwhile.
    return trouble.isEmpty();
}

/// @returns what the user has to know of it; empty when all is well.
QString frmMain::writeProject()
{
    QStringList paths;
    for (const zib::CompilationRow& row : m_list.rows())
        paths << row.path();
    const QString name = ProjectFileName;
    const auto left = projectAside(QStringLiteral("Saving the project"), name,
                                   [name, paths] { return zib::ProjectFile(name).write(paths); });
    return left ? lossText(paths.size(), left->size()) : failureText(left.error());
}

bool frmMain::SaveProjectAs()
{
    m_projectRequest.title = QStringLiteral("Save Project As");
    m_projectRequest.filter = kProjectFilter;
    m_projectRequest.flags =
        FileDialogRequest::PathMustExist | FileDialogRequest::Explorer | FileDialogRequest::LongNames;
    const auto chosen = m_services.dialogs.saveFile(this, m_projectRequest);
    const QString name = chosen ? trimmed(*chosen) : QString();
    if (name.isEmpty())
        return false;
    ProjectFileName = name;
    showProjectName();
    return SaveProject();
}

/// Reads or writes a project while the window answers its user.
/// @returns what @p work gives; Cancelled, with the name, when it is no longer waited for.
zib::Outcome<QStringList> frmMain::projectAside(const QString& text, const QString& name,
                                                const ProjectWork& work)
{
    const auto result = std::make_shared<std::optional<zib::Outcome<QStringList>>>();
    beginBusy();
    const bool ended =
        zib::runAside([result, work] { *result = work(); }, [this, text] { return stayBusy(text); });
    endBusy();
    if (!ended)
        return Failure{Failure::Kind::Cancelled, name};
    return **result;
}

void frmMain::forgetProject()
{
    ProjectFileName.clear();
    setWindowTitle(zib::kApplicationTitle);
}

void frmMain::showProjectName()
{
    QString name = ProjectFileName;
    name.replace(QStringLiteral("[*]"), QStringLiteral("[*][*]")); // Alone it marks a changed document.
    setWindowTitle(zib::kApplicationTitle + QStringLiteral(" - ") + name);
}
