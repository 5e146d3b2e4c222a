#pragma once

#include "app/CompilationModel.h"
#include "common/CommonDialogs.h"
#include "common/Services.h"

#include <QElapsedTimer>
#include <QMainWindow>
#include <QTimer>

#include <array>
#include <memory>

class AudioInformation;
class DVDWriterPro;
class QAction;
class QLabel;

namespace Ui {
class frmMain;
}

namespace zib {
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
    /// they are.
    void AddOneFileToList(const QString& path);
    /// Prepares and writes the compilation.
    void WriteFiles();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    using Handler = void (frmMain::*)();
    struct Command;
    static const std::array<Command, 23> kCommands;

    void setUpControls();
    void connectControls();
    void Form_Load();
    void Timer1_Timer();
    void Toolbar1_ButtonClick(const QString& key);
    void mnuSub_Click(const QAction* item);
    void mnuViewSub_Click(const QAction* item);
    void ListView1_Space();

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

    void SaveProject();
    bool SaveProjectAs();
    void RefreshTotals();
    bool IsFileInList(const QString& path) const;
    void addFiles(const QStringList& paths);
    void addDropped(const QStringList& paths);
    void letWindowLive(qsizetype done, qsizetype all);
    void run(Handler command);
    bool refuseEmptyList(const QString& text);
    void swapSelected(int from, int to);
    int selectedRow() const;
    void selectRow(int row);
    void showProjectName();
    void showToolbar(bool on);
    void showClock();
    void showHint(const QString& text);
    static void setPanel(QLabel* panel, const QString& text);

    std::unique_ptr<Ui::frmMain> ui;
    zib::Services m_services;
    std::unique_ptr<AudioInformation> m_AInfo;
    std::unique_ptr<DVDWriterPro> m_DVDWriterPro1;
    zib::CompilationModel m_list;
    zib::ToolbarLook* m_look = nullptr;
    zib::FileDialogRequest m_dlgFile;
    zib::FileDialogRequest m_dlgProj;
    QTimer m_Timer1;
    QTimer m_clock;
    QElapsedTimer m_sinceYield;
    QString ProjectFileName;
    bool m_adding = false; ///< Files are being added: commands wait until that is done.
    bool m_closed = false;
};
