#include "tools/frmPlayer.h"
#include "ui_frmPlayer.h"

#include "common/BoxedRows.h"
#include "common/CommonDialogs.h"
#include "common/FileDrop.h"
#include "common/GenralMacro.h"
#include "common/Messages.h"
#include "common/Texts.h"
#include "common/WaitPointer.h"
#include "components/Components.h"
#include "tools/PlaylistReader.h"

#include <QHeaderView>
#include <QShortcut>
#include <QToolTip>

using zib::FileDialogRequest;
using zib::Playlist;

namespace {

constexpr int kListBuffer = 1024;
constexpr int kCollectMs = 50;
constexpr qsizetype kMostRows = 10'000; // at a time: more would hold the events up

const QString kFilter =
    QStringLiteral("Audio Files(*.wav;*.mp3)|*.wav;*.mp3|MP3 Files(*.mp3)|*.mp3|WAV Files(*.wav)|*.wav");

} // namespace

frmPlayer::frmPlayer(const zib::Services& services, QWidget* parent)
    : TransportWindow(services, parent), ui(std::make_unique<Ui::frmPlayer>()),
      m_reader(std::make_shared<zib::PlaylistReader>(services.components.makeInformation()))
{
    ui->setupUi(this);
    setUpList();
    connectControls();
    Form_Load();
}

frmPlayer::~frmPlayer()
{
    m_reader->stop();
}

bool frmPlayer::holdsWork() const
{
    return m_collecting.isActive() || m_list.rowCount() > 0;
}

void frmPlayer::setUpList()
{
    ui->ListView1->setModel(&m_list);
    ui->ListView1->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
    const int letter = fontMetrics().averageCharWidth();
    ui->ListView1->setColumnWidth(Playlist::FileName, 32 * letter);
    ui->ListView1->setColumnWidth(Playlist::Time, 11 * letter);
    ui->ListView1->setColumnWidth(Playlist::Title, 24 * letter);
}

void frmPlayer::connectControls()
{
    new zib::FileDrop(
        this, [this] { return !m_collecting.isActive(); },
        [this](const QStringList& paths) { addFiles(paths); });
    connectTransport({.cmdPlay = ui->cmdPlay,
                      .chkPause = ui->chkPause,
                      .cmdStop = ui->cmdStop,
                      .cmdTop = ui->cmdTop,
                      .cmdBackward = ui->cmdBackward,
                      .cmdForward = ui->cmdForward,
                      .cmdEnd = ui->cmdEnd,
                      .cmdVol = ui->cmdVol,
                      .Slider1 = ui->Slider1});
    connect(ui->cmdOpen, &QPushButton::clicked, this, &frmPlayer::cmdOpen_Click);
    connect(ui->cmdRemove, &QPushButton::clicked, this, &frmPlayer::cmdRemove_Click);
    connect(ui->chkDown, &QPushButton::toggled, this, &frmPlayer::chkDown_Click);
    m_collecting.setInterval(kCollectMs);
    connect(&m_collecting, &QTimer::timeout, this, &frmPlayer::showNewRows);
    connect(ui->ListView1, &QTableView::doubleClicked, this, &frmPlayer::cmdPlay_Click);

    new zib::BoxedRows(ui->ListView1, zib::BoxedRows::DoubleClick::IsTheOwners);
    const auto listKey = [this](Qt::Key key, void (frmPlayer::*handler)()) {
        auto* shortcut = new QShortcut(key, ui->ListView1);
        shortcut->setContext(Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this, handler);
    };
    listKey(Qt::Key_Return, &frmPlayer::cmdPlay_Click);
    listKey(Qt::Key_Enter, &frmPlayer::cmdPlay_Click);
    listKey(Qt::Key_Delete, &frmPlayer::cmdRemove_Click);
}

void frmPlayer::Form_Load()
{
    layout()->activate();
    const QRect list = ui->ListView1->geometry();
    const QRect button = ui->cmdBackward->geometry();
    ExpandedHeight = height();
    CollapsedHeight = height() - list.height() - (list.top() - (button.top() + button.height()));
}

void frmPlayer::cmdOpen_Click()
{
    const FileDialogRequest request{.title = tr("Open WAV Files"),
                                    .filter = kFilter,
                                    .flags = FileDialogRequest::AllowMultiselect |
                                             FileDialogRequest::Explorer | FileDialogRequest::FileMustExist |
                                             FileDialogRequest::LongNames,
                                    .maxFileSize = kListBuffer};
    const auto answer = m_services.dialogs.openFile(this, request);
    if (answer)
        addFiles(zib::chosenPaths(*answer));
    else if (answer.error().kind != zib::Failure::Kind::Cancelled)
        QToolTip::showText(ui->cmdOpen->mapToGlobal(ui->cmdOpen->rect().bottomLeft()), zib::kTooManyNames,
                           this);
}

void frmPlayer::cmdRemove_Click()
{
    if (m_list.rowCount() == 0)
        m_services.messages.information(this, zib::kNoFilesInList);
    else if (!m_list.removeTicked())
        m_services.messages.information(this, zib::kNothingChecked);
}

void frmPlayer::chkDown_Click()
{
    const bool down = ui->chkDown->isChecked();
    if (!down)
        ExpandedHeight = height(); // as the user has sized it meanwhile
    ui->ListView1->setVisible(down);
    layout()->activate();
    setMaximumHeight(down ? QWIDGETSIZE_MAX : CollapsedHeight);
    resize(width(), down ? ExpandedHeight : CollapsedHeight);
}

void frmPlayer::cmdPlay_Click()
{
    if (m_list.rowCount() == 0)
        return;
    if (const QModelIndex row = ui->ListView1->currentIndex(); row.isValid())
        zib::setCurrentFile(m_list.pathOf(row.row()));
    StopPlaying();
    if (!CurrentFile.isEmpty())
        PlayFile(CurrentFile);
}

void frmPlayer::playbackEnded()
{
    PlayNextTrack();
}

/// The files are read on a thread; the list shows them as they come.
void frmPlayer::addFiles(const QStringList& paths)
{
    QStringList fresh;
    for (const QString& path : paths)
        if (!m_list.contains(path))
            fresh << path;
    if (!m_wait)
        m_wait = std::make_unique<zib::WaitPointer>(ui->ListView1);
    m_collecting.start();
    m_errands.ask<bool>(
        [reader = m_reader, fresh] {
            reader->read(fresh);
            return true;
        },
        [this](bool) { showNewRows(); });
}

/// A list that was empty gets its first row selected, so that play has something to play.
void frmPlayer::showNewRows()
{
    const QList<zib::PlaylistRow> rows = m_reader->take(kMostRows);
    for (const zib::PlaylistRow& row : rows)
        AddFileToPlaylist(row);
    m_list.showWaiting();
    if (!ui->ListView1->currentIndex().isValid())
        selectRow(0);
    if (m_errands.isWaiting() || rows.size() == kMostRows)
        return;
    m_collecting.stop();
    m_wait.reset();
}

void frmPlayer::AddFileToPlaylist(const zib::PlaylistRow& row)
{
    if (!m_list.contains(row.path()))
        m_list.append(row);
}

void frmPlayer::PlayNextTrack()
{
    const int ended = m_list.rowOf(CurrentFile);
    if (ended < 0)
        return;
    const bool last = ended == m_list.rowCount() - 1;
    if (last && !ui->chkRpt->isChecked())
        return;
    const int next = last ? 0 : ended + 1;
    PlayFile(m_list.pathOf(next));
    selectRow(next);
}

void frmPlayer::selectRow(int row)
{
    ui->ListView1->setCurrentIndex(m_list.index(row, Playlist::FileName));
}
