#include "tools/frmRip.h"
#include "ui_frmRip.h"

#include "common/GeneralAPI.h"
#include "components/CDRipperX.h"
#include "tools/RipProgress.h"
#include "tools/RipRows.h"

#include <QSignalBlocker>

// The ripping window's drives: their list, their speeds, and the disc that is in one.

void frmRip::cboDevices_Click()
{
    m_timer.stop();
    showDeviceHint();
    ui->lvwTracks->clear();
    m_selected = m_ripper->selectDevice(ui->cboDevices->currentIndex());
    if (m_selected) {
        LoadSpeeds();
        if (m_ripper->discPresent()) {
            DiscReloadPending = false;
            const int count = m_ripper->trackCount();
            m_ripper->discText(); // nothing shows it
            for (int track = 1; track <= count; ++track)
                zib::RipRows::add(ui->lvwTracks, *m_ripper, track);
        }
    } else {
        m_ripper->status();
    }
    m_timer.start();
}

/// Choosing the same drive again reads its disc again.
void frmRip::cboDevices_activated(int index)
{
    if (index == m_activated)
        cboDevices_Click();
    m_activated = index;
}

void frmRip::cboSpeeds_Click()
{
    m_ripper->setReadSpeed(GeneralAPI::GetComboItemData(ui->cboSpeeds).value_or(0));
}

void frmRip::Timer1_Timer()
{
    const int state = m_ripper->driveState();
    setProperty("driveState", zib::driveStateText(state));
    if (state == CDRipperX::kNoDisc) {
        if (m_selected && m_fastest == 0 && m_ripper->maxReadSpeed() > 0)
            LoadSpeeds(); // the drive has answered late, and no disc will tell
        ui->lvwTracks->clear();
        DiscReloadPending = true;
    } else if (state == CDRipperX::kDiscLoaded && DiscReloadPending) {
        cboDevices_Click();
    }
}

/// What was found late stands behind the rest, and what is wrong with a device may have changed.
void frmRip::CDRipperX1_DevicesChanged(int count)
{
    const bool wasEmpty = ui->cboDevices->count() == 0;
    showDevices(count);
    if (wasEmpty && count > 0)
        cboDevices_Click();
}

void frmRip::LoadDevices()
{
    const int count = m_ripper->deviceCount();
    showDevices(count);
    if (count > 0)
        cboDevices_Click();
}

void frmRip::showDevices(int count)
{
    const QSignalBlocker untilFilled(ui->cboDevices);
    for (int device = 0; device < count; ++device) {
        const QString text = m_ripper->deviceText1(device) + QStringLiteral(": ") +
                             m_ripper->deviceText2(device) + u' ' + m_ripper->deviceText3(device);
        if (device == ui->cboDevices->count())
            ui->cboDevices->addItem(text);
        else
            ui->cboDevices->setItemText(device, text);
        ui->cboDevices->setItemData(device, m_ripper->deviceHint(device), Qt::ToolTipRole);
    }
    showDeviceHint();
}

void frmRip::showDeviceHint()
{
    const QString hint = ui->cboDevices->currentData(Qt::ToolTipRole).toString();
    ui->cboDevices->setToolTip(hint.isEmpty() ? m_devicesToolTip : m_devicesToolTip + u'\n' + hint);
}

void frmRip::LoadSpeeds()
{
    QSignalBlocker untilFilled(ui->cboSpeeds);
    m_fastest = m_ripper->maxReadSpeed();
    zib::RipRows::fillSpeeds(ui->cboSpeeds, m_fastest);
    untilFilled.unblock();
    cboSpeeds_Click();
}
