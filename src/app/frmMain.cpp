#include "app/frmMain.h"

#include "ui_frmMain.h"

#include "app/ProjectFile.h"
#include "app/ToolbarLook.h"
#include "app/totals.h"
#include "common/Colors.h"
#include "common/FileDrop.h"
#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"
#include "common/Messages.h"
#include "common/Texts.h"
#include "common/Twips.h"
#include "common/Windows.h"
#include "components/Components.h"
#include "settings/OptionsFunc.h"

#include <QAction>
#include <QCloseEvent>
#include <QDateTime>
#include <QFileInfo>
#include <QHeaderView>
#include <QLocale>
#include <QScopedValueRollback>
#include <QShortcut>

using zib::CompilationModel;
using zib::FileDialogRequest;

namespace {

constexpr int kTipDelayMs = 200;
constexpr int kYieldMs = 40; ///< Longest stretch of adding files without a look at the window's events.
constexpr int kFileNameBuffer = 32767;
constexpr int kHintMs = 10000;
constexpr std::array<int, CompilationModel::ColumnCount> kColumnTwips{1129, 3598, 2540, 2540,
                                                                      1835, 1834, 2540};
constexpr std::array<int, 6> kPanelTwips{3598, 2540, 3950, 2822, 1834, 1482};

const QString kNotAudio = QStringLiteral("The following file could not be added, it is not audio file \n"
                                         "or the audio type is not supported.\n\n");
const QString kAddSomeFiles = QStringLiteral("There are no files in the list!\nPlease add some files first!");
const QString kAtTop =
    QStringLiteral("The current selected row is already at the top,\nCan not move up any more!");
const QString kAtBottom =
    QStringLiteral("The current selected row is already at the bottom,\nCan not move down any more!");
const QString kNothingToWrite = QStringLiteral("There are no files in the list to write!");
const QString kNothingToPlay = QStringLiteral("There are no files in the list to play.");
const QString kNothingToSave = QStringLiteral("There are no files in the list, need not to save.");
const QString kSaveProject = QStringLiteral("Would you like to save this project?");
const QString kNotWritten = QStringLiteral("The project could not be written. The file is as it was before.");
const QString kLeftOut = QStringLiteral("%1 of the files have names that a project cannot hold.");
const QString kProjectFilter = QStringLiteral("Project Files(*.zibp)|*.zibp|All Files(*.*)|*.*");

/// The number behind the last "_" of a control's name.
int indexOf(const QAction* item)
{
    return item->objectName().section(u'_', -1).toInt();
}

bool isFile(const QString& path)
{
    const QFileInfo file(path);
    return file.exists() && !file.isDir();
}

} // namespace

/// What a toolbar button and a menu item do.
struct frmMain::Command
{
    const char* key;  ///< Of the toolbar button; empty when there is none.
    const char* item; ///< Name of the menu item.
    Handler handler;
};

template <void (zib::Windows::*show)(QWidget*)>
void frmMain::open()
{
    (m_services.windows.*show)(this);
}

const std::array<frmMain::Command, 23> frmMain::kCommands{{
    {"add", "mnuFileSub_1", &frmMain::AddFilesDialog},
    {"write", "mnuFileSub_2", &frmMain::WriteFiles},
    {"", "mnuFileSub_4", &frmMain::NewProject},
    {"", "mnuFileSub_5", &frmMain::OpenProject},
    {"", "mnuFileSub_6", &frmMain::saveProjectCommand},
    {"", "mnuFileSub_7", &frmMain::saveProjectAsCommand},
    {"", "mnuFileSub_9", &frmMain::exitProgram},
    {"up", "mnuTracksSub_1", &frmMain::MoveSelectedUp},
    {"down", "mnuTracksSub_2", &frmMain::MoveSelectedDown},
    {"", "mnuTracksSub_4", &frmMain::tickAll},
    {"", "mnuTracksSub_5", &frmMain::untickAll},
    {"delete", "mnuTracksSub_7", &frmMain::RemoveCheckedTracks},
    {"", "mnuTracksSub_8", &frmMain::clearTracks},
    {"play", "mnuTracksSub_10", &frmMain::PlaySelected},
    {"ripper", "mnuToolsSub_1", &frmMain::open<&zib::Windows::showRip>},
    {"converter", "mnuToolsSub_2", &frmMain::open<&zib::Windows::showMP3ToWAV>},
    {"label", "mnuToolsSub_3", &frmMain::showLabelDesigner},
    {"player", "mnuToolsSub_4", &frmMain::open<&zib::Windows::showPlayer>},
    {"options", "mnuToolsSub_6", &frmMain::open<&zib::Windows::showOptions>},
    {"help", "mnuHelpSub_1", &frmMain::showHelp},
    {"", "mnuHelpSub_3", &frmMain::open<&zib::Windows::showTip>},
    {"", "mnuHelpSub_4", &frmMain::showHomePage},
    {"", "mnuHelpSub_6", &frmMain::open<&zib::Windows::showAbout>},
}};

frmMain::frmMain(const zib::Services& services, QWidget* parent)
    : QMainWindow(parent), ui(std::make_unique<Ui::frmMain>()), m_services(services)
{
    ui->setupUi(this);
    setUpControls();
    connectControls();
    Form_Load();
}

frmMain::~frmMain() = default;

/// What a form file cannot say: the list's model and columns, the panels, keys of buttons, separators.
void frmMain::setUpControls()
{
    ui->ListView1->setModel(&m_list);
    for (int column = 0; column < CompilationModel::ColumnCount; ++column)
        ui->ListView1->setColumnWidth(column, zib::wholePixels(kColumnTwips.at(static_cast<size_t>(column))));
    ui->ListView1->horizontalHeader()->setSectionsClickable(false);
    ui->ListView1->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);

    const std::array<QLabel*, 6> panels{ui->StatusBar1_1, ui->StatusBar1_2, ui->StatusBar1_3,
                                        ui->StatusBar1_4, ui->StatusBar1_5, ui->StatusBar1_6};
    for (size_t i = 0; i < panels.size(); ++i)
        ui->StatusBar1->addWidget(panels.at(i), kPanelTwips.at(i));
    setPanel(ui->StatusBar1_4, zib::kHomePage);

    for (QAction* button : ui->Toolbar1->actions())
        button->setData(button->objectName().section(u'_', 1));
    for (QMenu* menu : ui->menubar->findChildren<QMenu*>())
        for (QAction* item : menu->actions())
            item->setSeparator(item->text().isEmpty());
    m_Timer1.setObjectName(QStringLiteral("Timer1"));
    m_Timer1.setParent(this);
}

void frmMain::connectControls()
{
    connect(ui->Toolbar1, &QToolBar::actionTriggered, this,
            [this](const QAction* button) { Toolbar1_ButtonClick(button->data().toString()); });
    connect(ui->mnuFile, &QMenu::triggered, this, &frmMain::mnuSub_Click);
    connect(ui->mnuView, &QMenu::triggered, this, &frmMain::mnuViewSub_Click);
    connect(ui->mnuTracks, &QMenu::triggered, this, &frmMain::mnuSub_Click);
    connect(ui->mnuTools, &QMenu::triggered, this, &frmMain::mnuSub_Click);
    connect(ui->mnuHelp, &QMenu::triggered, this, &frmMain::mnuSub_Click);
    connect(ui->ListView1, &QTableView::doubleClicked, this, [this] { run(&frmMain::PlaySelected); });
    connect(&m_Timer1, &QTimer::timeout, this, &frmMain::Timer1_Timer);
    connect(&m_clock, &QTimer::timeout, this, &frmMain::showClock);

    const auto listKey = [this](Qt::Key key, Handler handler) {
        auto* shortcut = new QShortcut(key, ui->ListView1);
        shortcut->setContext(Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this, [this, handler] { run(handler); });
    };
    new zib::FileDrop(
        this, [this] { return !m_adding; }, [this](const QStringList& paths) { addDropped(paths); });
    listKey(Qt::Key_Space, &frmMain::ListView1_Space);
    listKey(Qt::Key_Delete, &frmMain::RemoveCheckedTracks);
    listKey(Qt::Key_Return, &frmMain::PlaySelected);
    listKey(Qt::Key_Enter, &frmMain::PlaySelected);
}

void frmMain::Form_Load()
{
    zib::setSettingsFile(GeneralAPI::JoinPath(zib::applicationFolder(), QStringLiteral("settings.ini")));
    OptionsFunc::LoadSettings();
    m_look = new zib::ToolbarLook(ui->Toolbar1, this);
    if (m_services.components.makeInformation)
        m_AInfo = m_services.components.makeInformation();
    if (m_services.components.makeWriter)
        m_DVDWriterPro1 = m_services.components.makeWriter();
    if (gOptions.ShowSplashScreen)
        m_services.windows.showSplash(this);

    ui->picPanel->setFrameShape(QFrame::NoFrame);
    zib::setTotalMinutes(0);
    zib::setCurrentFile({});
    ProjectFileName.clear();
    RefreshMain();
    RefreshTotals();
    showClock();
    QCoreApplication::processEvents();

    m_Timer1.setInterval(kTipDelayMs);
    if (gOptions.ShowTipsOfDay)
        m_Timer1.start();
}

void frmMain::Timer1_Timer()
{
    m_Timer1.stop();
    if (gOptions.ShowTipsOfDay)
        m_services.windows.showTip(this);
}

void frmMain::closeEvent(QCloseEvent* event)
{
    m_closed = true;
    QMainWindow::closeEvent(event);
}

// View settings

void frmMain::RefreshMain()
{
    ui->mnuViewSub_1->setChecked(gOptions.ShowToolBar);
    ui->mnuViewSub_2->setChecked(gOptions.ToolbarStyleFlat);
    ui->mnuViewSub_3->setChecked(!gOptions.ToolbarStyleFlat);
    ui->mnuViewSub_4->setChecked(gOptions.ShowTipsOnToolbar); // Captions follow the setting of the tips.
    ui->mnuViewSub_5->setChecked(gOptions.ShowTipsOnToolbar);
    ui->mnuViewSub_7->setChecked(gOptions.ShowStatusbar);
    ui->mnuViewSub_9->setChecked(gOptions.ShowGridLines);

    showToolbar(ui->mnuViewSub_1->isChecked());
    m_look->ShowToolbarText(ui->mnuViewSub_4->isChecked());
    m_look->ShowToolbarTips(ui->mnuViewSub_5->isChecked());
    ui->StatusBar1->setVisible(ui->mnuViewSub_7->isChecked());
    ui->ListView1->setShowGrid(ui->mnuViewSub_9->isChecked());
    QPalette colors;
    colors.setColor(QPalette::Base, zib::colorFromNumber(gOptions.GridBackColor));
    colors.setColor(QPalette::Text, zib::colorFromNumber(gOptions.GridTextColor));
    ui->ListView1->setPalette(colors);
    m_look->setFlat(ui->mnuViewSub_2->isChecked());
}

void frmMain::mnuViewSub_Click(const QAction* item)
{
    const bool on = item->isChecked(); // The menu has inverted it already.
    switch (indexOf(item)) {
    case 1:
        showToolbar(on);
        break;
    case 2:
        ui->mnuViewSub_3->setChecked(!on);
        break;
    case 3:
        ui->mnuViewSub_2->setChecked(!on);
        break;
    case 4:
        m_look->ShowToolbarText(on);
        break;
    case 5:
        m_look->ShowToolbarTips(on);
        break;
    case 7:
        ui->StatusBar1->setVisible(on);
        break;
    case 9:
        ui->ListView1->setShowGrid(on);
        break;
    default:
        break;
    }
    m_look->setFlat(ui->mnuViewSub_2->isChecked());
}

void frmMain::showToolbar(bool on)
{
    ui->Toolbar1->setVisible(on);
    for (QAction* item : {ui->mnuViewSub_2, ui->mnuViewSub_3, ui->mnuViewSub_4, ui->mnuViewSub_5})
        item->setEnabled(on);
}

// Commands

void frmMain::Toolbar1_ButtonClick(const QString& key)
{
    for (const Command& command : kCommands)
        if (!key.isEmpty() && key == QLatin1StringView(command.key))
            return run(command.handler);
}

void frmMain::mnuSub_Click(const QAction* item)
{
    for (const Command& command : kCommands)
        if (item->objectName() == QLatin1StringView(command.item))
            return run(command.handler);
}

/// Files that are being added leave the window alive, so its commands wait until the list is whole again.
void frmMain::run(Handler command)
{
    if (!m_adding)
        (this->*command)();
}

void frmMain::WriteFiles()
{
    if (m_list.count() == 0) {
        m_services.messages.information(this, kNothingToWrite);
        return;
    }
    const QStringList tracks = m_services.windows.showPrepare(this, m_list.rows());
    m_services.windows.showWrite(this, tracks);
}

void frmMain::exitProgram()
{
    close(); // The program ends with its only top-level window.
}

void frmMain::showLabelDesigner()
{
    m_services.windows.showLabelDesigner(this, m_list.rows());
}

void frmMain::showHelp()
{
    GeneralAPI::OpenHelpFile();
}

void frmMain::showHomePage()
{
    GeneralAPI::OpenHomePage();
}

// Adding files

bool frmMain::IsFileInList(const QString& path) const
{
    return m_list.contains(path);
}

void frmMain::AddOneFileToList(const QString& path)
{
    if (IsFileInList(path))
        return;
    if (!m_AInfo || !m_AInfo->isAudioFile(path)) {
        m_list.flush();
        m_services.messages.critical(this, kNotAudio + path);
        m_sinceYield.start();
        return;
    }
    m_AInfo->open(path); // A file that went away meanwhile is listed without title and time.
    zib::CompilationRow row;
    row.number = QString::number(m_list.count() + 1);
    row.fileName = GeneralAPI::GetFileNameOfPath(path);
    row.title = m_AInfo->title();
    row.artist = m_AInfo->artist();
    row.time = GeneralAPI::FormatDuration(m_AInfo->durationMs());
    row.fileSize = zib::fileSizeText(m_AInfo->fileBytes().value_or(QFileInfo(path).size()));
    row.location = GeneralAPI::GetFolderOfPath(path);
    m_list.append(row);
}

void frmMain::AddFilesDialog()
{
    m_dlgFile.flags |= FileDialogRequest::AllowMultiselect | FileDialogRequest::Explorer |
                       FileDialogRequest::FileMustExist | FileDialogRequest::LongNames;
    m_dlgFile.maxFileSize = kFileNameBuffer;
    m_dlgFile.title = QStringLiteral("Open Audio Files MP3 and WAV");
    m_dlgFile.filter = QStringLiteral("MP3 and WAV Files(*.mp3;*.wav)|*.wav;*.mp3|MP3 Files(*.mp3)|*.mp3|"
                                      "WAV Files(*.wav)|*.wav|All Files(*.*)|*.*");
    const auto chosen = m_services.dialogs.openFile(this, m_dlgFile);
    if (chosen)
        addFiles(zib::chosenPaths(*chosen));
    else if (chosen.error().kind != zib::Failure::Kind::Cancelled)
        showHint(zib::kTooManyNames);
    RefreshTotals();
}

void frmMain::addFiles(const QStringList& paths)
{
    const QScopedValueRollback adding(m_adding, true);
    const CompilationModel::Batch batch(m_list);
    m_sinceYield.start();
    for (qsizetype i = 0; i < paths.size() && !m_closed; ++i) {
        AddOneFileToList(paths.at(i));
        if (m_sinceYield.hasExpired(kYieldMs))
            letWindowLive(i + 1, paths.size());
    }
    ui->menubar->setEnabled(true);
    ui->Toolbar1->setEnabled(true);
    ui->StatusBar1->clearMessage();
}

/// Shows how far adding has come and answers what the user does meanwhile: scrolling, resizing, closing.
void frmMain::letWindowLive(qsizetype done, qsizetype all)
{
    m_list.flush();
    ui->menubar->setEnabled(false);
    ui->Toolbar1->setEnabled(false);
    ui->StatusBar1->showMessage(QStringLiteral("Adding files: %1 of %2").arg(done).arg(all));
    QCoreApplication::processEvents();
    m_sinceYield.start();
}

void frmMain::addDropped(const QStringList& paths)
{
    if (m_adding)
        return;
    addFiles(paths);
    RefreshTotals();
}

// The list

void frmMain::RefreshTotals()
{
    m_list.renumber();
    double minutes = m_list.count() * zib::kGapSeconds / 60.0;
    for (const zib::CompilationRow& row : m_list.rows())
        minutes += DurationTextToMinutes(row.time).value_or(0);
    zib::setTotalMinutes(minutes);
    setPanel(ui->StatusBar1_1, QStringLiteral("Total Time: ") + zib::totalTimeText(TotalMinutes));
    setPanel(ui->StatusBar1_2, QStringLiteral("Total Files: %1").arg(m_list.count()));
    ui->picPanel->update();
}

bool frmMain::refuseEmptyList(const QString& text)
{
    if (m_list.count() > 0)
        return false;
    m_services.messages.information(this, text);
    return true;
}

void frmMain::MoveSelectedUp()
{
    if (refuseEmptyList(kAddSomeFiles))
        return;
    const int row = selectedRow();
    if (row < 1)
        m_services.messages.information(this, kAtTop);
    else
        swapSelected(row, row - 1);
}

void frmMain::MoveSelectedDown()
{
    if (refuseEmptyList(kAddSomeFiles))
        return;
    const int row = selectedRow();
    if (row == m_list.count() - 1)
        m_services.messages.information(this, kAtBottom);
    else if (row >= 0)
        swapSelected(row, row + 1);
}

void frmMain::swapSelected(int from, int to)
{
    m_list.swapFiles(from, to);
    selectRow(to);
}

void frmMain::SetAllChecked(bool on)
{
    m_list.setAllChecked(on);
}

void frmMain::ListView1_Space()
{
    if (const int row = selectedRow(); row >= 0)
        m_list.setData(m_list.index(row, CompilationModel::Number),
                       m_list.isChecked(row) ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
}

void frmMain::RemoveCheckedTracks()
{
    if (refuseEmptyList(zib::kNoFilesInList))
        return;
    const int row = selectedRow();
    if (m_list.removeChecked() == 0)
        m_services.messages.information(this, zib::kNothingChecked);
    else if (row >= 0 && selectedRow() < 0 && m_list.count() > 0)
        selectRow(std::min(row, m_list.count() - 1));
    RefreshTotals();
}

/// Totals and gauge keep showing the old list until its next change.
void frmMain::clearTracks()
{
    m_list.clear();
}

void frmMain::PlaySelected()
{
    if (refuseEmptyList(kNothingToPlay))
        return;
    const int row = selectedRow();
    if (row < 0)
        return;
    zib::setCurrentFile(m_list.rows().at(row).path());
    m_services.windows.showPlay(this);
}

int frmMain::selectedRow() const
{
    const QModelIndexList rows = ui->ListView1->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

void frmMain::selectRow(int row)
{
    ui->ListView1->selectRow(row);
    ui->ListView1->scrollTo(m_list.index(row, CompilationModel::Number));
}

// Projects

void frmMain::NewProject()
{
    if (m_list.count() > 0) {
        const auto answer = m_services.messages.askYesNoCancel(this, kSaveProject);
        if (answer == zib::Messages::Answer::Cancel)
            return;
        if (answer == zib::Messages::Answer::Yes)
            SaveProject();
    }
    ProjectFileName.clear();
    m_list.clear();
    setWindowTitle(zib::kApplicationTitle);
    RefreshTotals();
}

void frmMain::OpenProject()
{
    m_dlgProj.title = QStringLiteral("Open Project");
    m_dlgProj.filter = kProjectFilter;
    m_dlgProj.flags = FileDialogRequest::PathMustExist | FileDialogRequest::FileMustExist |
                      FileDialogRequest::Explorer | FileDialogRequest::LongNames;
    const auto chosen = m_services.dialogs.openFile(this, m_dlgProj);
    const QString name = chosen ? chosen->trimmed() : QString();
    if (name.isEmpty() || !isFile(name))
        return;
    ProjectFileName = name;
    const auto files = zib::ProjectFile(name).read();
    if (!files)
        return;
    m_list.clear();
    addFiles(*files);
    if (m_list.count() > 0)
        showProjectName();
    RefreshTotals();
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

void frmMain::SaveProject()
{
    ProjectFileName = ProjectFileName.trimmed();
    if (ProjectFileName.isEmpty()) {
        SaveProjectAs(); // It comes back here with a name.
        return;
    }
    QStringList paths;
    for (const zib::CompilationRow& row : m_list.rows())
        paths << row.path();
    const auto left = zib::ProjectFile(ProjectFileName).write(paths);
    if (!left)
        showHint(kNotWritten);
    else if (!left->isEmpty())
        showHint(kLeftOut.arg(left->size()));
}

bool frmMain::SaveProjectAs()
{
    m_dlgProj.title = QStringLiteral("Save Project As");
    m_dlgProj.filter = kProjectFilter;
    m_dlgProj.flags =
        FileDialogRequest::PathMustExist | FileDialogRequest::Explorer | FileDialogRequest::LongNames;
    const auto chosen = m_services.dialogs.saveFile(this, m_dlgProj);
    const QString name = chosen ? chosen->trimmed() : QString();
    if (name.isEmpty())
        return false;
    ProjectFileName = name;
    showProjectName();
    SaveProject();
    return true;
}

void frmMain::showProjectName()
{
    QString name = ProjectFileName;
    name.replace(QStringLiteral("[*]"), QStringLiteral("[*][*]")); // Alone it marks a changed document.
    setWindowTitle(zib::kApplicationTitle + QStringLiteral(" - ") + name);
}

// Status bar

void frmMain::setPanel(QLabel* panel, const QString& text)
{
    panel->setText(text);
    panel->setToolTip(text);
}

/// What went wrong without a box of its own; the panels come back after a while.
void frmMain::showHint(const QString& text)
{
    ui->StatusBar1->showMessage(text, kHintMs);
}

/// Date and time of the system; wakes at the next full minute.
void frmMain::showClock()
{
    const QDateTime now = QDateTime::currentDateTime();
    ui->StatusBar1_5->setText(QLocale().toString(now.date(), QLocale::ShortFormat));
    QString format = QLocale().timeFormat(QLocale::ShortFormat);
    ui->StatusBar1_6->setText(QLocale().toString(now.time(), format.remove(QStringLiteral(":ss"))));
    m_clock.start(std::chrono::minutes(1) -
                  std::chrono::milliseconds(now.time().msecsSinceStartOfDay() % 60000));
}
