#include "burn/frmWrite.h"

#include "ui_frmWrite.h"

#include "burn/PreparedFiles.h"
#include "burn/WriteProgress.h"
#include "burn/WriteSetup.h"
#include "burn/WriteTexts.h"
#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"
#include "common/Messages.h"
#include "common/NativeName.h"
#include "common/Numbers.h"
#include "common/Platform.h"
#include "common/WaitPointer.h"
#include "common/Windows.h"
#include "components/Components.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QPointer>
#include <QSignalBlocker>
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

void frmWrite::connectWriter()
{
    const DVDWriterPro* writer = m_writer.get();
    connect(writer, &DVDWriterPro::PreparingToWrite, this, &frmWrite::DVDWriterPro1_PreparingToWrite);
    connect(writer, &DVDWriterPro::CachingProgress, this, &frmWrite::DVDWriterPro1_CachingProgress);
    connect(writer, &DVDWriterPro::ReadingTrack, this, &frmWrite::DVDWriterPro1_ReadingTrack);
    connect(writer, &DVDWriterPro::WritingProgress, this, &frmWrite::DVDWriterPro1_WritingProgress);
    connect(writer, &DVDWriterPro::ClosingTrack, this, &frmWrite::DVDWriterPro1_ClosingTrack);
    connect(writer, &DVDWriterPro::ClosingDisc, this, &frmWrite::DVDWriterPro1_ClosingDisc);
    connect(writer, &DVDWriterPro::Waiting, this, &frmWrite::DVDWriterPro1_Waiting);
    connect(writer, &DVDWriterPro::ComparingTrack, this, &frmWrite::DVDWriterPro1_ComparingTrack);
    connect(writer, &DVDWriterPro::Remark, this, &frmWrite::DVDWriterPro1_Remark);
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

void frmWrite::cboDevices_Click()
{
    if (m_asking) {
        m_askAgain = true;
        m_writer->abandon();
        return;
    }
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
    m_cancelling = false;
    EnableControls(false);
    m_awake = zib::stayAwake(WriteTexts::kAwake);
    m_writing = m_writer->start();
    if (m_writing)
        return;
    m_awake.reset();
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

void frmWrite::DVDWriterPro1_PreparingToWrite()
{
    showPhase(QStringLiteral("Preparing to Write Disc...."));
    ui->pbPer->setValue(0);
    ui->lblPer->setText(QStringLiteral("Percent:   0%"));
    EnableControls(false);
}

void frmWrite::DVDWriterPro1_CachingProgress(qint16 percent)
{
    showPhase(QStringLiteral("Caching - %1%").arg(percent));
}

void frmWrite::DVDWriterPro1_ReadingTrack(const QString& fileName, qint32 number, qint32 track)
{
    CurrentTrack = zib::narrowed<qint16>(track).value_or(CurrentTrack);
    showPhase(WriteTexts::reading(track, number, fileName));
}

void frmWrite::DVDWriterPro1_WritingProgress(qint32 track, qint32 done, qint32 size)
{
    if (showPercent(track, done, size))
        showPhase(QStringLiteral("Writing Track #%1 ... ").arg(track));
}

void frmWrite::DVDWriterPro1_ClosingTrack(qint32 track)
{
    showPhase(WriteTexts::closingTrack(track));
}

void frmWrite::DVDWriterPro1_ClosingDisc()
{
    showPhase(WriteTexts::kClosingDisc);
}

/// The bar runs a second time: comparing takes as long as writing.
void frmWrite::DVDWriterPro1_ComparingTrack(qint32 track, qint32 done, qint32 size)
{
    if (showPercent(track, done, size))
        showPhase(QStringLiteral("Comparing Track #%1 ... ").arg(track));
}

void frmWrite::DVDWriterPro1_Waiting(const QString& what)
{
    showPhase(what);
}

void frmWrite::DVDWriterPro1_Remark(const QString& text)
{
    showNote(text);
}

void frmWrite::DVDWriterPro1_WriteCompleted()
{
    writeEnded();
    ui->lblStatus->setText(QStringLiteral("Writing Completed."));
    m_services.messages.information(this, WriteTexts::kCompleted);
    if (!m_writer->testWrite())
        m_writer->finish(false);
    EnableControls(true);
}

void frmWrite::DVDWriterPro1_WriteCancelled()
{
    writeEnded();
    ui->lblStatus->setText(WriteTexts::kCancelled);
    EnableControls(true);
}

void frmWrite::DVDWriterPro1_WriteError(qint32 error, qint32 sense, const QString& description,
                                        const QString& senseData)
{
    writeEnded();
    m_services.messages.critical(this, WriteTexts::error(error, sense, description, senseData));
    ui->lblStatus->setText(m_invitation);
    EnableControls(true);
}

/// @returns whether the numbers make a percentage; if not, everything stays as it was.
bool frmWrite::showPercent(qint32 track, qint32 done, qint32 size)
{
    const auto percent = zib::overallPercent(track, done, size, TrackCount);
    if (!percent)
        return false;
    ui->lblPer->setText(QStringLiteral("Percent:   %1%").arg(*percent));
    ui->pbPer->setValue(*percent);
    return true;
}

/// A box that stands overnight keeps no system awake.
void frmWrite::writeEnded()
{
    m_writing = false;
    m_awake.reset();
}

/// Once Cancel was pressed, what still goes on is no news.
void frmWrite::showPhase(const QString& text)
{
    if (!m_cancelling)
        ui->lblStatus->setText(text);
}

void frmWrite::showNote(const QString& text)
{
    ui->lblNote->setText(text);
    ui->lblNote->setVisible(!text.isEmpty());
}

void frmWrite::beginAsking(const QString& what)
{
    m_asking = true;
    m_givenUp = m_askAgain = m_cancelling = false;
    ui->lblStatus->setText(what);
}

bool frmWrite::endAsking()
{
    m_asking = false;
    if (m_closed)
        return false;
    ui->lblStatus->setText(m_invitation);
    if (m_givenUp)
        EnableControls(true);
    return !m_givenUp;
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
    const QPointer<frmWrite> self(this);
    beginAsking(WriteTexts::kAskingDrive);
    ui->cmdWrite->setEnabled(false);
    ui->cboWriteSpeed->setEnabled(false);
    const auto speeds = m_writer->writeSpeeds();
    if (!self || !endAsking())
        return;
    if (std::exchange(m_askAgain, false))
        return cboDevices_Click();
    ui->cmdWrite->setEnabled(ui->cboDevices->isEnabled());
    ui->cboWriteSpeed->setEnabled(ui->cboDevices->isEnabled());
    ui->cboWriteSpeed->clear();
    ui->cboWriteSpeed->addItem(WriteTexts::kDefaultSpeed, 0);
    for (const zib::WriteSpeed& speed : speeds)
        ui->cboWriteSpeed->addItem(zib::speedText(speed.factor), speed.value);
    ui->cboWriteSpeed->setCurrentIndex(0);
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
            m_services.messages.information(this, WriteTexts::kNotWritten + path);
    }
    m_writer->nameDisc(m_names.title);
}

bool frmWrite::IsFolder(const QString& path)
{
    return zib::isFolder(path);
}
