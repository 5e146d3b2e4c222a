#include "burn/frmWrite.h"

#include "ui_frmWrite.h"

#include "burn/PreparedFiles.h"
#include "burn/WriteSetup.h"
#include "burn/WriteTexts.h"
#include "common/GenralMacro.h"
#include "common/Messages.h"
#include "common/NativeName.h"
#include "common/Platform.h"
#include "common/WaitPointer.h"
#include "common/Windows.h"
#include "components/Components.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QPointer>
#include <QTimer>

#include <initializer_list>
#include <utility>

frmWrite::frmWrite(const zib::Services& services, const QStringList& trackFiles, const zib::DiscNames& names,
                   QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmWrite>()), m_services(services), m_trackFiles(trackFiles),
      m_names(names), m_writer(services.components.makeWriter())
{
    ui->setupUi(this);
    m_invitation = ui->lblStatus->text();
    ui->lblNote->hide();
    connectControls();
    connectWriter();
}

frmWrite::~frmWrite()
{
    m_closed = true;
    letGo();
}

void frmWrite::connectControls()
{
    connect(ui->cboDevices, &QComboBox::currentIndexChanged, this, &frmWrite::cboDevices_Click);
    connect(ui->cboDevices, &QComboBox::activated, this, &frmWrite::cboDevices_activated);
    connect(ui->cboWriteSpeed, &QComboBox::currentIndexChanged, this, &frmWrite::cboWriteSpeed_Click);
    connect(ui->cmdWrite, &QPushButton::clicked, this, &frmWrite::cmdWrite_Click);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &frmWrite::cmdCancel_Click);
    connect(ui->cmdOptions, &QPushButton::clicked, this, &frmWrite::cmdOptions_Click);
    connect(ui->cmdExit, &QPushButton::clicked, this, &frmWrite::cmdExit_Click);
}

/// The window is painted before the drives are looked for.
void frmWrite::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (!m_loaded)
        QTimer::singleShot(0, this, &frmWrite::Form_Load);
    m_loaded = true;
}

/// Closes at once, whatever a drive is doing.
void frmWrite::closeEvent(QCloseEvent* event)
{
    m_closed = true;
    letGo();
    QDialog::closeEvent(event);
}

/// What waits for a drive is given up; a write is cancelled, and its end is somebody else's to tell.
void frmWrite::letGo()
{
    if (!m_writer)
        return;
    m_writer->abandon();
    if (!m_writing)
        return;
    m_writing = false;
    disconnect(m_writer.get(), nullptr, this, nullptr);
    m_writer->cancel();
    m_services.windows.keepWriting(std::move(m_writer)); // which stays awake for the rest
    m_awake.reset();
}

/// Escape must not end a write: only the close box and the buttons do.
void frmWrite::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        event->accept();
    else
        QDialog::keyPressEvent(event);
}

void frmWrite::Form_Load()
{
    const zib::WaitPointer wait(this);
    const QPointer<frmWrite> self(this);
    beginAsking(WriteTexts::kLookingForDrives);
    const bool initialized = m_writer->initializeDrives(false);
    if (!self || !endAsking())
        return;
    if (!initialized)
        m_services.messages.plain(this, QStringLiteral("Your drives could not be initialized. "));
    ListDevices();
    if (!self || m_closed)
        return;
    AddTracks();
    EnableControls(true);
    ui->cmdWrite->setFocus();
}

void frmWrite::cmdWrite_Click()
{
    if (m_starting || m_asking || !IsIdle)
        return;
    const QPointer<frmWrite> self(this);
    m_starting = true;
    checkAndStart();
    if (self)
        m_starting = false;
}

void frmWrite::checkAndStart()
{
    const zib::WaitPointer wait(this);
    const QPointer<frmWrite> self(this);
    showNote({});
    beginAsking(WriteTexts::kAskingDrive);
    EnableControls(false);
    const QString refusal = zib::whyNotWritable(*m_writer, m_drive);
    if (!self || !endAsking())
        return;
    EnableControls(true);
    if (refusal.isEmpty())
        startWrite();
    else
        m_services.messages.information(this, refusal);
}

void frmWrite::startWrite()
{
    zib::configureWrite(*m_writer, gOptions, DriveSupportsBufferProtection);
    TrackCount = static_cast<qint16>(m_writer->trackCount());
    if (gOptions.TestMode)
        m_services.messages.information(this, WriteTexts::kTestMode);
    if (m_closed) // behind the box, at the end of the session
        return;
    m_cancelling = false;
    EnableControls(false);
    m_awake = zib::stayAwake(WriteTexts::kAwake);
    m_writing = m_writer->start();
    if (m_writing)
        return;
    m_awake.reset();
    if (TrackCount == 0)
        showNote(WriteTexts::kNoTracks);
    m_services.messages.critical(this, QStringLiteral("Write to disc failed."));
    EnableControls(true);
}

void frmWrite::cmdCancel_Click()
{
    if (m_asking) {
        m_givenUp = true;
        m_writer->abandon();
        return;
    }
    m_cancelling = true;
    ui->lblStatus->setText(WriteTexts::kCancelling);
    m_writer->cancel();
}

void frmWrite::cmdOptions_Click()
{
    m_services.windows.showOptions(this);
}

void frmWrite::cmdExit_Click()
{
    close();
}

/// Whatever had the focus, it goes to Cancel and never by itself to Exit, which would end a write by a key.
void frmWrite::EnableControls(bool enable)
{
    const bool cancelWasNext = ui->cmdCancel->hasFocus();
    const bool exitWasNext = ui->cmdExit->hasFocus();
    if (!enable)
        ui->cmdCancel->setEnabled(true); // before the others, so that it inherits their focus
    for (QWidget* control :
         std::initializer_list<QWidget*>{ui->cboDevices, ui->cboWriteSpeed, ui->cmdWrite, ui->cmdOptions})
        control->setEnabled(enable);
    if (enable && cancelWasNext)
        ui->cmdWrite->setFocus();
    if (!enable && !exitWasNext && ui->cmdExit->hasFocus())
        ui->cmdCancel->setFocus();
    ui->cmdCancel->setEnabled(!enable);
    IsIdle = enable;
}

void frmWrite::AddTracks()
{
    for (qsizetype i = 0; i < m_trackFiles.size(); ++i) {
        const QString& path = m_trackFiles[i];
        if (zib::PreparedFiles::wasChanged(path)) {
            m_services.messages.information(this, WriteTexts::kChanged + path);
            continue;
        }
        const bool there = zib::pathExists(path) && !IsFolder(path);
        if (there && m_writer->addAudioTrack(path))
            m_writer->nameTrack(m_writer->trackCount(), m_names.tracks.value(i));
        else
            m_services.messages.information(this, WriteTexts::kNotWritten + path,
                                            there ? QString() : zib::PreparedFiles::trouble(path));
    }
    m_writer->nameDisc(m_names.title);
}

bool frmWrite::IsFolder(const QString& path)
{
    return zib::isFolder(path);
}
