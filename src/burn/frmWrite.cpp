#include "burn/frmWrite.h"

#include "ui_frmWrite.h"

#include "burn/WriteProgress.h"
#include "burn/WriteSetup.h"
#include "burn/WriteTexts.h"
#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"
#include "common/Messages.h"
#include "common/NativeName.h"
#include "common/Numbers.h"
#include "common/WaitPointer.h"
#include "common/Windows.h"
#include "components/Components.h"

#include <QCloseEvent>
#include <QFileInfo>
#include <QKeyEvent>
#include <QPointer>
#include <QScopedValueRollback>
#include <QSignalBlocker>

#include <initializer_list>

frmWrite::frmWrite(const zib::Services& services, const QStringList& trackFiles, const zib::DiscNames& names,
                   QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmWrite>()), m_services(services), m_trackFiles(trackFiles),
      m_names(names), m_writer(services.components.makeWriter())
{
    ui->setupUi(this);
    m_invitation = ui->lblStatus->text();
    m_closing.setObjectName(QStringLiteral("closing"));
    m_closing.setSingleShot(true);
    m_closing.setInterval(kClosingPatienceMs);
    connectControls();
    connectWriter();
}

frmWrite::~frmWrite() = default;

void frmWrite::connectControls()
{
    connect(ui->cboDevices, &QComboBox::currentIndexChanged, this, &frmWrite::cboDevices_Click);
    connect(ui->cboDevices, &QComboBox::activated, this, &frmWrite::cboDevices_activated);
    connect(ui->cboWriteSpeed, &QComboBox::currentIndexChanged, this, &frmWrite::cboWriteSpeed_Click);
    connect(ui->cmdWrite, &QPushButton::clicked, this, &frmWrite::cmdWrite_Click);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &frmWrite::cmdCancel_Click);
    connect(ui->cmdOptions, &QPushButton::clicked, this, &frmWrite::cmdOptions_Click);
    connect(ui->cmdExit, &QPushButton::clicked, this, &frmWrite::cmdExit_Click);
    connect(&m_closing, &QTimer::timeout, this, &QDialog::reject);
}

void frmWrite::connectWriter()
{
    const DVDWriterPro* writer = m_writer.get();
    connect(writer, &DVDWriterPro::PreparingToWrite, this, &frmWrite::DVDWriterPro1_PreparingToWrite);
    connect(writer, &DVDWriterPro::CachingProgress, this, &frmWrite::DVDWriterPro1_CachingProgress);
    connect(writer, &DVDWriterPro::ReadingTrack, this, &frmWrite::DVDWriterPro1_ReadingTrack);
    connect(writer, &DVDWriterPro::WritingProgress, this, &frmWrite::DVDWriterPro1_WritingProgress);
    connect(writer, &DVDWriterPro::ClosingTrack, this, &frmWrite::DVDWriterPro1_ClosingTrack);
    connect(writer, &DVDWriterPro::ClosingDisc, this, &frmWrite::DVDWriterPro1_ClosingDisc);
    connect(writer, &DVDWriterPro::WriteCompleted, this, &frmWrite::DVDWriterPro1_WriteCompleted);
    connect(writer, &DVDWriterPro::WriteCancelled, this, &frmWrite::DVDWriterPro1_WriteCancelled);
    connect(writer, &DVDWriterPro::WriteError, this, &frmWrite::DVDWriterPro1_WriteError);
}

/// The window is painted before the drives are looked for.
void frmWrite::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (!m_loaded)
        QTimer::singleShot(0, this, &frmWrite::Form_Load);
    m_loaded = true;
}

void frmWrite::closeEvent(QCloseEvent* event)
{
    if (IsIdle) {
        QDialog::closeEvent(event);
        return;
    }
    event->ignore();
    if (m_closing.isActive())
        return;
    m_closing.start();
    ui->cmdExit->setEnabled(false);
    cmdCancel_Click();
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
    ui->lblStatus->setText(WriteTexts::kLookingForDrives);
    const bool initialized = m_writer->initializeDrives(false);
    if (!self)
        return;
    ui->lblStatus->setText(m_invitation);
    if (!initialized)
        m_services.messages.plain(this, QStringLiteral("Your drives could not be initialized. "));
    ListDevices();
    AddTracks();
    EnableControls(true);
    ui->cmdWrite->setFocus();
}

void frmWrite::cboDevices_Click()
{
    const zib::WaitPointer wait(this);
    const auto drive = GeneralAPI::GetComboItemData(ui->cboDevices);
    m_drive = drive && m_writer->selectDrive(*drive) ? *drive : -1;
    DriveSupportsBufferProtection = m_drive >= 0 && m_writer->supportsBufferProtection();
    m_speedWasSet = false;
    ListWriteSpeeds();
}

/// Choosing the same drive again asks it again, for another disc allows other speeds.
void frmWrite::cboDevices_activated(int index)
{
    if (index == m_activated)
        cboDevices_Click();
    m_activated = index;
}

void frmWrite::cboWriteSpeed_Click()
{
    const auto speed = GeneralAPI::GetComboItemData(ui->cboWriteSpeed);
    if (ui->cboWriteSpeed->currentText() != WriteTexts::kDefaultSpeed && speed)
        m_writer->setWriteSpeed(*speed);
    else if (m_speedWasSet)
        m_writer->setWriteSpeed(0);
    m_speedWasSet = ui->cboWriteSpeed->currentText() != WriteTexts::kDefaultSpeed;
}

void frmWrite::cmdWrite_Click()
{
    if (m_starting || !IsIdle)
        return;
    const QScopedValueRollback<bool> starting(m_starting, true);
    const zib::WaitPointer wait(this);
    if (const QString refusal = zib::whyNotWritable(*m_writer, m_drive); !refusal.isEmpty()) {
        m_services.messages.information(this, refusal);
        return;
    }
    zib::configureWrite(*m_writer, gOptions, DriveSupportsBufferProtection);
    TrackCount = static_cast<qint16>(m_writer->trackCount());
    if (gOptions.TestMode)
        m_services.messages.information(this, WriteTexts::kTestMode);
    EnableControls(false);
    if (m_writer->start())
        return;
    m_services.messages.critical(this, QStringLiteral("Write to disc failed."));
    EnableControls(true);
}

void frmWrite::cmdCancel_Click()
{
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

void frmWrite::DVDWriterPro1_PreparingToWrite()
{
    ui->lblStatus->setText(QStringLiteral("Preparing to Write Disc...."));
    ui->pbPer->setValue(0);
    ui->lblPer->setText(QStringLiteral("Percent:   0%"));
    EnableControls(false);
}

void frmWrite::DVDWriterPro1_CachingProgress(qint16 percent)
{
    ui->lblStatus->setText(QStringLiteral("Caching - %1%").arg(percent));
}

void frmWrite::DVDWriterPro1_ReadingTrack(const QString& fileName, qint32 number, qint32 track)
{
    CurrentTrack = zib::narrowed<qint16>(track).value_or(CurrentTrack);
    ui->lblStatus->setText(WriteTexts::reading(track, number, fileName));
}

void frmWrite::DVDWriterPro1_WritingProgress(qint32 track, qint32 done, qint32 size)
{
    const auto percent = zib::overallPercent(track, done, size, TrackCount);
    if (!percent)
        return;
    ui->lblPer->setText(QStringLiteral("Percent:   %1%").arg(*percent));
    ui->pbPer->setValue(*percent);
    ui->lblStatus->setText(QStringLiteral("Writing Track #%1 ... ").arg(track));
}

void frmWrite::DVDWriterPro1_ClosingTrack(qint32 track)
{
    ui->lblStatus->setText(WriteTexts::closingTrack(track));
}

void frmWrite::DVDWriterPro1_ClosingDisc()
{
    ui->lblStatus->setText(WriteTexts::kClosingDisc);
}

void frmWrite::DVDWriterPro1_WriteCompleted()
{
    ui->lblStatus->setText(QStringLiteral("Writing Completed."));
    m_services.messages.information(this, QStringLiteral("Writing is completed."));
    if (!m_writer->testWrite())
        m_writer->finish(false);
    EnableControls(true);
    closeWhenEnded();
}

void frmWrite::DVDWriterPro1_WriteCancelled()
{
    ui->lblStatus->setText(QStringLiteral("Writing Cancelled."));
    EnableControls(true);
    closeWhenEnded();
}

void frmWrite::DVDWriterPro1_WriteError(qint32 error, qint32 sense, const QString& description,
                                        const QString& senseData)
{
    m_services.messages.critical(this, WriteTexts::error(error, sense, description, senseData));
    ui->lblStatus->setText(m_invitation);
    EnableControls(true);
    closeWhenEnded();
}

void frmWrite::EnableControls(bool enable)
{
    const bool cancelWasNext = ui->cmdCancel->hasFocus();
    if (!enable)
        ui->cmdCancel->setEnabled(true); // before the others, so that it inherits their focus and not Exit
    for (QWidget* control :
         std::initializer_list<QWidget*>{ui->cboDevices, ui->cboWriteSpeed, ui->cmdWrite, ui->cmdOptions})
        control->setEnabled(enable);
    if (enable && cancelWasNext)
        ui->cmdWrite->setFocus();
    ui->cmdCancel->setEnabled(!enable);
    IsIdle = enable;
}

void frmWrite::ListDevices()
{
    m_drive = -1;
    const QSignalBlocker untilFilled(ui->cboDevices);
    ui->cboDevices->clear();
    for (const zib::DriveEntry& entry : zib::usableDrives(*m_writer))
        ui->cboDevices->addItem(entry.text, entry.drive);
    if (ui->cboDevices->count() > 0)
        cboDevices_Click();
}

void frmWrite::ListWriteSpeeds()
{
    const auto speeds = m_writer->writeSpeeds();
    ui->cboWriteSpeed->clear();
    ui->cboWriteSpeed->addItem(WriteTexts::kDefaultSpeed, 0);
    for (const zib::WriteSpeed& speed : speeds)
        ui->cboWriteSpeed->addItem(zib::speedText(speed.factor), speed.value);
    ui->cboWriteSpeed->setCurrentIndex(0);
}

void frmWrite::AddTracks()
{
    for (const QString& path : m_trackFiles) {
        const bool there = zib::pathExists(path) && !IsFolder(path);
        if (!there || !m_writer->addAudioTrack(path))
            m_services.messages.information(this, WriteTexts::kNotWritten + path);
    }
}

bool frmWrite::IsFolder(const QString& path)
{
    return QFileInfo(path).isDir();
}

/// A window that was to close closes now.
void frmWrite::closeWhenEnded()
{
    if (m_closing.isActive())
        reject();
}
