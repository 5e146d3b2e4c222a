#pragma once

#include "Director.h"
#include "app/WindowBook.h"
#include "components/Components.h"
#include "platform/BoxMessages.h"
#include "platform/DesktopDialogs.h"
#include "platform/DesktopFolderPicker.h"
#include "platform/IniFile.h"
#include "platform/SystemRegistry.h"

#include <QString>
#include <QStringList>

#include <memory>

class frmMain;

namespace demo {

/// The program's windows, remembering which tracks the writing window was given.
class Book final : public zib::WindowBook
{
public:
    using WindowBook::WindowBook;
    void showWrite(QWidget* owner, const QStringList& files, const zib::DiscNames& names) override
    {
        trackFiles = files;
        WindowBook::showWrite(owner, files, names);
    }

    QStringList trackFiles;
};

/// A desktop that opens nothing, so that no browser or folder window comes up in the middle of the show.
class QuietShell final : public zib::Shell
{
public:
    bool ShellExecuteA(const QString&, const QString&, const QString&, const QString&) override
    {
        return true;
    }
};

/// The real program in a folder of its own, played by a director.
class Show
{
public:
    /// @param folder everything goes here: the pictures, and the program folder "ZibCDBurner" with the image.
    /// @param samples the files that are written.
    Show(const QString& folder, const QStringList& samples);
    ~Show();

    /// Starts the program, adds the samples, writes them, and opens every other window once.
    void play();
    /// The CUE sheet that was written; empty when there is not exactly one.
    QString cueSheet() const;
    const QStringList& trackFiles() const { return m_book.trackFiles; }
    const Director& director() const { return m_director; }

private:
    void setScenes();
    void chooseSamples(QWidget* dialog, int visit);
    void watchPreparation(QWidget* window, int visit);
    void write(QWidget* window, int visit);
    void visitOptions(QWidget* window, int visit);
    void visitDesigner(QWidget* window, int visit);
    void watchPreview(QWidget* window, int visit);
    void visitRipper(QWidget* window, int visit);
    void trigger(const QString& action);

    QString m_programFolder;
    QStringList m_samples;
    QString m_sheet; ///< Picture of the printed page.
    zib::IniFile m_ini;
    QuietShell m_shell;
    zib::DesktopFolderPicker m_folders;
    zib::SystemRegistry m_registry;
    zib::BoxMessages m_messages;
    zib::DesktopDialogs m_dialogs;
    zib::Components m_components;
    Book m_book;
    Director m_director;
    std::unique_ptr<frmMain> m_main;
    enum class Writing
    {
        NotYet,
        Starting, ///< The drive is being asked; looks go on meanwhile.
        Started
    } m_writing = Writing::NotYet;
};

} // namespace demo
