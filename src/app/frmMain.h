#pragma once

#include "app/CompilationModel.h"
#include "common/CommonDialogs.h"
#include "common/DiscNames.h"
#include "common/Services.h"

#include <QElapsedTimer>
#include <QMainWindow>
#include <QTimer>

#include <array>
#include <functional>
#include <memory>

class AudioInformation;
class DVDWriterPro;
class QAction;
class QLabel;
class QShortcut;

namespace Ui {
class frmMain;
}

namespace zib {
class FileIntake;
struct FoundFile;
class ToolbarLook;
class Windows;
} // namespace zib

/// The main window and start-up object: the compilation, its project, the capacity gauge, and the commands
/// that open every other window.
class frmMain final : public QMainWindow
{
    Q_OBJECT
public:
    /// Loads the settings and shows the splash window before it returns. @p services outlive the window.
    explicit frmMain(const zib::Services& services, QWidget* parent = nullptr);
    ~frmMain() override;

    /// Applies the view settings of gOptions.
    void RefreshMain();
    /// Adds one file unless it is listed already; a file that is no audio is told in a box. Totals stay as
    /// they are. The window answers its user meanwhile.
    void AddOneFileToList(const QString& path);
    /// Prepares and writes the compilation.
    void WriteFiles();

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    using Handler = void (frmMain::*)();
    struct Command;
    static const std::array<Command, 23> kCommands;

    zib::DiscNames discNames() const;
    void setUpControls();
    void connectControls();
    void connectList();
    void Form_Load();
    void Timer1_Timer();
    void Toolbar1_ButtonClick(const QString& key);
    void mnuSub_Click(const QAction* item);
    void mnuViewSub_Click(const QAction* item);

    // The commands, in the order of the menus.
    void AddFilesDialog();
    void NewProject();
    void OpenProject();
    void saveProjectCommand();
    void saveProjectAsCommand();
    void exitProgram();
    void MoveSelectedUp();
    void MoveSelectedDown();
    void tickAll() { SetAllChecked(true); }
    void untickAll() { SetAllChecked(false); }
    void SetAllChecked(bool on);
    void RemoveCheckedTracks();
    void clearTracks();
    void PlaySelected();
    template <void (zib::Windows::*show)(QWidget*)>
    void open(); ///< Shows a window that needs nothing but its owner.
    void showLabelDesigner();
    void showHelp();
    void showHomePage();

    // Adding: frmMainFiles.cpp
    using Intake = std::function<void(zib::FileIntake&)>;
    bool IsFileInList(const QString& path) const;
    void addFiles(const QStringList& paths);
    void addDropped(const QStringList& paths);
    QList<zib::FoundFile> takeIn(const Intake& work, qsizetype all, bool tellEach);
    QList<zib::FoundFile> listFound(const QList<zib::FoundFile>& found, bool tellEach);
    void makeInformation();

    // Projects: frmMainProjects.cpp
    using ProjectWork = std::function<zib::Outcome<QStringList>()>;
    bool SaveProject();
    bool SaveProjectAs();
    QString writeProject();
    zib::Outcome<QStringList> openNamedProject(const QString& chosen);
    zib::Outcome<QStringList> projectAside(const QString& text, const QString& name, const ProjectWork& work);
    void forgetProject();
    void showProjectName();

    // The list: frmMainList.cpp
    void RefreshTotals();
    bool refuseEmptyList(const QString& text);
    void swapSelected(int from, int to);

    // The look: frmMainView.cpp
    void showToolbar(bool on);
    void setUpStatusbar();
    void showClock();
    static void setPanel(QLabel* panel, const QString& text);
    void showProgress(const QString& text);

    // Slow work beside which the window stays alive while its commands wait.
    void run(Handler command);
    void beginBusy();
    bool stayBusy(const QString& text);
    void endBusy();

    std::unique_ptr<Ui::frmMain> ui;
    const zib::Services m_services;
    std::shared_ptr<AudioInformation> m_information; ///< Used by the thread that adds files while one does.
    std::unique_ptr<DVDWriterPro> m_writer;
    zib::CompilationModel m_list;
    zib::ToolbarLook* m_look = nullptr;
    zib::FileDialogRequest m_filesRequest;
    zib::FileDialogRequest m_projectRequest;
    QTimer m_timer{this};
    QTimer m_clock;
    QShortcut* m_escape = nullptr; ///< Stops what is waited for.
    QElapsedTimer m_busySince;
    QString ProjectFileName;
    bool m_busy = false; ///< Commands wait until what runs is done.
    bool m_stopped = false;
    Handler m_next = nullptr; ///< Asked for while the project was being saved.
    bool m_saving = false;
    bool m_closed = false;
};
