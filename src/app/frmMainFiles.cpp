#include "app/frmMain.h"

#include "ui_frmMain.h"

#include "app/Aside.h"
#include "app/FileIntake.h"
#include "common/Messages.h"
#include "common/Texts.h"
#include "components/AudioInformation.h"
#include "components/Components.h"

#include <memory>

using zib::CompilationModel;
using zib::FileDialogRequest;
using zib::FoundFile;

// How files come into the list: from the dialog, by dropping, from a project.

namespace {

constexpr int kFileNameBuffer = 32767;

/// @param all 0 while nobody knows how many there are.
QString addingText(qsizetype done, qsizetype all)
{
    if (all == 0)
        return QStringLiteral("Adding files: %1").arg(done);
    return QStringLiteral("Adding files: %1 of %2").arg(done).arg(all);
}

} // namespace

bool frmMain::IsFileInList(const QString& path) const
{
    return m_list.contains(path);
}

void frmMain::AddOneFileToList(const QString& path)
{
    if (!m_busy && !IsFileInList(path))
        addFiles({path});
}

void frmMain::AddFilesDialog()
{
    m_filesRequest.flags |= FileDialogRequest::AllowMultiselect | FileDialogRequest::Explorer |
                            FileDialogRequest::FileMustExist | FileDialogRequest::LongNames;
    m_filesRequest.maxFileSize = kFileNameBuffer;
    m_filesRequest.title = QStringLiteral("Open Audio Files MP3 and WAV");
    m_filesRequest.filter =
        QStringLiteral("MP3 and WAV Files(*.mp3;*.wav)|*.wav;*.mp3|MP3 Files(*.mp3)|*.mp3|"
                       "WAV Files(*.wav)|*.wav|All Files(*.*)|*.*");
    const auto chosen = m_services.dialogs.openFile(this, m_filesRequest);
    if (chosen)
        addFiles(zib::chosenPaths(*chosen));
    else if (chosen.error().kind != zib::Failure::Kind::Cancelled)
        m_services.messages.information(this, zib::kTooManyNames);
    RefreshTotals();
}

/// Each file that is no audio is told in a box of its own.
void frmMain::addFiles(const QStringList& paths)
{
    takeIn([paths](zib::FileIntake& intake) { intake.readFiles(paths); }, paths.size(), true);
}

/// A project that was dropped alone is opened. Dropped among others its files join the list, for nothing that
/// was listed may be lost by the way. What could not be taken is told in one box.
void frmMain::addDropped(const QStringList& paths)
{
    if (m_busy)
        return;
    if (paths.size() == 1 && zib::isProjectName(paths.first())) {
        const auto opened = openNamedProject(paths.first());
        if (opened || opened.error().kind == zib::Failure::Kind::Cancelled)
            return;
    }
    const QList<FoundFile> refused =
        takeIn([paths](zib::FileIntake& intake) { intake.readDrop(paths); }, 0, false);
    RefreshTotals();
    if (!refused.isEmpty() && !m_closed)
        m_services.messages.critical(this, zib::refusalText(refused));
}

/// Lists what @p work finds while the window answers its user; Escape ends it and keeps what is listed.
/// @param all how many files there are, 0 when unknown.
/// @param tellEach whether a refused file is told at once.  @returns the refused ones that were not told.
QList<FoundFile> frmMain::takeIn(const Intake& work, qsizetype all, bool tellEach)
{
    const auto intake = std::make_shared<zib::FileIntake>(m_information);
    const CompilationModel::Batch batch(m_list);
    QList<FoundFile> refused;
    qsizetype done = 0;
    const auto turn = [&] {
        const QList<FoundFile> found = intake->take();
        done += found.size();
        refused << listFound(found, tellEach);
        const bool goOn = stayBusy(addingText(done, all));
        if (!goOn)
            intake->stop();
        return goOn;
    };
    beginBusy();
    if (!zib::runAside([intake, work] { work(*intake); }, turn))
        makeInformation(); // The other one still belongs to the thread that was left behind.
    turn();                // What was found last.
    endBusy();
    return refused;
}

QList<FoundFile> frmMain::listFound(const QList<FoundFile>& found, bool tellEach)
{
    QList<FoundFile> refused;
    for (const FoundFile& file : found) {
        if (IsFileInList(file.path))
            continue;
        if (file.kind == FoundFile::Kind::Track) {
            zib::CompilationRow row = file.row;
            row.number = QString::number(m_list.count() + 1);
            m_list.append(row);
        } else if (!tellEach) {
            refused << file;
        } else if (!m_stopped && !m_closed) {
            m_list.flush();
            m_services.messages.critical(this, zib::refusalText({file}));
        }
    }
    m_list.flush();
    return refused;
}

void frmMain::makeInformation()
{
    if (m_services.components.makeInformation)
        m_information = m_services.components.makeInformation();
}
