#include "burn/frmWrite.h"

#include "ui_frmWrite.h"

#include "burn/WriteProgress.h"
#include "burn/WriteSetup.h"
#include "burn/WriteTexts.h"
#include "common/GeneralAPI.h"
#include "common/WaitPointer.h"
#include "components/DVDWriterPro.h"

#include <QPointer>
#include <QSignalBlocker>

#include <utility>

// The writing window's drives: their list, their speeds, and what it shows while one of them is asked.

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
    const bool writeWasNext = ui->cmdWrite->hasFocus();
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
    if (writeWasNext)
        ui->cmdWrite->setFocus();
    ui->cboWriteSpeed->clear();
    ui->cboWriteSpeed->addItem(WriteTexts::kDefaultSpeed, 0);
    for (const zib::WriteSpeed& speed : speeds)
        ui->cboWriteSpeed->addItem(zib::speedText(speed.factor), speed.value);
    ui->cboWriteSpeed->setCurrentIndex(0);
}
