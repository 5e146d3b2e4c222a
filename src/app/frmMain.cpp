#include "app/frmMain.h"

#include "ui_frmMain.h"

#include "app/ToolbarLook.h"
#include "common/BoxedRows.h"
#include "common/FileDrop.h"
#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"
#include "common/Messages.h"
#include "common/NativeName.h"
#include "common/Texts.h"
#include "common/Twips.h"
#include "common/Windows.h"
#include "components/Components.h"
#include "settings/OptionsFunc.h"

#include <QAction>
#include <QCloseEvent>
#include <QFileInfo>
#include <QHeaderView>
#include <QShortcut>

#include <utility>

using zib::CompilationModel;

// The start of the main window, and where its commands lead. What they do stands in frmMainFiles.cpp,
// frmMainList.cpp, frmMainProjects.cpp and frmMainView.cpp.

namespace {

constexpr int kTipDelayMs = 200;
constexpr int kSaidMs = 200;    ///< What lasts longer is said.
constexpr int kMostTracks = 99; ///< Of an audio CD (IEC 60908).
constexpr std::array<int, CompilationModel::ColumnCount> kColumnTwips{1129, 3598, 2540, 2540,
                                                                      1835, 1834, 2540};

const QString kNothingToWrite = QStringLiteral("There are no files in the list to write!");
const QString kTooManyTracks =
    QStringLiteral("An audio CD holds %1 tracks at most, and there are %2 files in the list.\n"
                   "Only the first %1 can be written.");

/// A project's name as a disc's. Bytes of it that are no UTF-8 count as ISO 8859-1.
QString titleOf(const QString& project)
{
    const QByteArray name = zib::nativeBytes(QFileInfo(project).completeBaseName());
    return name.isValidUtf8() ? QString::fromUtf8(name) : QString::fromLatin1(name);
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
    connectList();
    Form_Load();
}

frmMain::~frmMain() = default;

/// What a form file cannot say: the list's model and columns, keys of buttons, separators.
void frmMain::setUpControls()
{
    ui->ListView1->setModel(&m_list);
    ui->ListView1->setNameColumn(CompilationModel::FileName);
    for (int column = 0; column < CompilationModel::ColumnCount; ++column)
        ui->ListView1->setColumnWidth(column, zib::wholePixels(kColumnTwips.at(static_cast<size_t>(column))));
    ui->ListView1->horizontalHeader()->setSectionsClickable(false);
    ui->ListView1->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
    setUpStatusbar();

    for (QAction* button : ui->Toolbar1->actions())
        button->setData(button->objectName().section(u'_', 1));
    for (QMenu* menu : ui->menubar->findChildren<QMenu*>())
        for (QAction* item : menu->actions())
            item->setSeparator(item->text().isEmpty());
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
    m_timer.setObjectName(QStringLiteral("Timer1"));
    connect(&m_timer, &QTimer::timeout, this, &frmMain::Timer1_Timer);
    connect(&m_clock, &QTimer::timeout, this, &frmMain::showClock);

    m_escape = new QShortcut(Qt::Key_Escape, this);
    m_escape->setEnabled(false);
    connect(m_escape, &QShortcut::activated, this, [this] { m_stopped = true; });
    new zib::FileDrop(
        this, [this] { return !m_busy; }, [this](const QStringList& paths) { addDropped(paths); });
}

void frmMain::connectList()
{
    new zib::BoxedRows(ui->ListView1, zib::BoxedRows::DoubleClick::IsTheOwners);
    connect(ui->ListView1, &QTableView::doubleClicked, this, [this] { run(&frmMain::PlaySelected); });
    const auto listKey = [this](Qt::Key key, Handler handler) {
        auto* shortcut = new QShortcut(key, ui->ListView1);
        shortcut->setContext(Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this, [this, handler] { run(handler); });
    };
    listKey(Qt::Key_Delete, &frmMain::RemoveCheckedTracks);
    listKey(Qt::Key_Return, &frmMain::PlaySelected);
    listKey(Qt::Key_Enter, &frmMain::PlaySelected);
}

void frmMain::Form_Load()
{
    zib::setSettingsFile(GeneralAPI::JoinPath(zib::applicationFolder(), QStringLiteral("settings.ini")));
    OptionsFunc::LoadSettings();
    m_look = new zib::ToolbarLook(ui->Toolbar1, this);
    makeInformation();
    if (m_services.components.makeWriter)
        m_writer = m_services.components.makeWriter();
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

    m_timer.setInterval(kTipDelayMs);
    if (gOptions.ShowTipsOfDay)
        m_timer.start();
}

void frmMain::Timer1_Timer()
{
    m_timer.stop();
    if (gOptions.ShowTipsOfDay)
        m_services.windows.showTip(this);
}

/// While the project is being saved the window stays, so that a failure can be told; it closes afterwards.
void frmMain::closeEvent(QCloseEvent* event)
{
    m_closed = true;
    if (m_saving)
        event->ignore();
    else
        QMainWindow::closeEvent(event);
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

/// Leaving is never refused. What is asked for while a save has not yet said that it lasts comes after it.
void frmMain::run(Handler command)
{
    if (m_busy && command != &frmMain::exitProgram) {
        if (m_saving && ui->menubar->isEnabled())
            m_next = command;
        return;
    }
    m_next = nullptr;
    (this->*command)();
    if (const Handler next = std::exchange(m_next, nullptr); next && !m_closed)
        run(next);
}

void frmMain::WriteFiles()
{
    if (m_list.count() == 0) {
        m_services.messages.information(this, kNothingToWrite);
        return;
    }
    if (m_list.count() > kMostTracks)
        m_services.messages.information(this, kTooManyTracks.arg(kMostTracks).arg(m_list.count()));
    if (m_closed) // behind the box, at the program's end
        return;
    const QStringList tracks = m_services.windows.showPrepare(this, m_list.rows());
    if (!m_closed)
        m_services.windows.showWrite(this, tracks, discNames());
}

/// What goes onto the disc beside the sound: the list's titles and artists, and the saved project's name.
zib::DiscNames frmMain::discNames() const
{
    QList<zib::TrackNames> tracks;
    for (const zib::CompilationRow& row : m_list.rows())
        tracks << zib::TrackNames{row.title, row.artist};
    return zib::namesOfDisc(titleOf(ProjectFileName), tracks);
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

// Slow work: the window answers its user, but its commands wait, so that nothing changes the list meanwhile.

void frmMain::beginBusy()
{
    m_busy = true;
    m_stopped = false;
    m_escape->setEnabled(true);
    m_busySince.start();
}

/// Says what is waited for once that lasts.  @returns whether to go on waiting.
bool frmMain::stayBusy(const QString& text)
{
    if (m_busySince.hasExpired(kSaidMs)) {
        ui->menubar->setEnabled(false);
        ui->Toolbar1->setEnabled(false);
        showProgress(text + QStringLiteral(" - press Esc to stop"));
    }
    return !m_stopped && (m_saving || !m_closed);
}

void frmMain::endBusy()
{
    m_busy = false;
    m_escape->setEnabled(false);
    ui->menubar->setEnabled(true);
    ui->Toolbar1->setEnabled(true);
    showProgress({});
}
