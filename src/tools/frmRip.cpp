#include "tools/frmRip.h"
#include "ui_frmRip.h"

#include "common/BoxedRows.h"
#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"
#include "common/Messages.h"
#include "common/Platform.h"
#include "common/WaitPointer.h"
#include "common/Windows.h"
#include "components/Components.h"
#include "tools/JobKeys.h"
#include "tools/RipProgress.h"
#include "tools/RipRows.h"

#include <QCoreApplication>
#include <QSignalBlocker>

#include <exception>

using zib::OutputPlace::Folder;

namespace {

constexpr int kPollMs = 200;

const QString kUnread = QStringLiteral("Some tracks could not be copied, and no files were made of them:\n");

} // namespace

frmRip::frmRip(const zib::Services& services, QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmRip>()), m_services(services),
      m_ripper(services.components.makeRipper())
{
    ui->setupUi(this);
    m_devicesToolTip = ui->cboDevices->toolTip();
    QSizePolicy keepsItsPlace = ui->picFolder->sizePolicy();
    keepsItsPlace.setRetainSizeWhenHidden(true);
    ui->picFolder->setSizePolicy(keepsItsPlace);
    ui->lblRip->setMinimumWidth(ui->lblRip->sizeHint().width() + 3 * fontMetrics().averageCharWidth());
    zib::RipRows::layOutColumns(ui->lvwTracks);
    EnableControls(true);
    connectControls();
    connectRipper();
}

frmRip::~frmRip() = default;

void frmRip::connectControls()
{
    connect(ui->cboDevices, &QComboBox::currentIndexChanged, this, &frmRip::cboDevices_Click);
    connect(ui->cboDevices, &QComboBox::activated, this, &frmRip::cboDevices_activated);
    new zib::BoxedRows(ui->lvwTracks, zib::BoxedRows::DoubleClick::Ticks);
    connect(ui->cboSpeeds, &QComboBox::currentIndexChanged, this, &frmRip::cboSpeeds_Click);
    connect(ui->cmdFolder, &QPushButton::clicked, this, &frmRip::cmdFolder_Click);
    connect(ui->cmdExplore, &QPushButton::clicked, this, &frmRip::cmdExplore_Click);
    connect(ui->cmdRip, &QPushButton::clicked, this, &frmRip::cmdRip_Click);
    connect(ui->cmdOptions, &QPushButton::clicked, this, &frmRip::cmdOptions_Click);
    connect(ui->cmdClose, &QPushButton::clicked, this, &frmRip::cmdClose_Click);
    m_timer.setObjectName(QStringLiteral("Timer1"));
    connect(&m_timer, &QTimer::timeout, this, &frmRip::Timer1_Timer);
}

void frmRip::connectRipper()
{
    const CDRipperX* ripper = m_ripper.get();
    connect(ripper, &CDRipperX::DevicesChanged, this, &frmRip::CDRipperX1_DevicesChanged);
    connect(ripper, &CDRipperX::ExtractionStarted, this, &frmRip::CDRipperX1_ExtractionStarted);
    connect(ripper, &CDRipperX::TrackStarted, this, &frmRip::CDRipperX1_TrackStarted);
    connect(ripper, &CDRipperX::ExtractionProgress, this, &frmRip::CDRipperX1_ExtractionProgress);
    connect(ripper, &CDRipperX::TrackFinished, this, &frmRip::CDRipperX1_TrackFinished);
    connect(ripper, &CDRipperX::ExtractionFinished, this, &frmRip::CDRipperX1_ExtractionFinished);
}

/// The window is painted before the drives are looked for.
void frmRip::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (!m_loaded)
        QTimer::singleShot(0, this, &frmRip::Form_Load);
    m_loaded = true;
}

/// Neither Escape nor Enter may end an extraction: only the close box and the button do.
void frmRip::keyPressEvent(QKeyEvent* event)
{
    if (!IsRipping || !zib::endsDialogs(*event))
        QDialog::keyPressEvent(event);
}

/// Nothing starts in a window that has closed.
void frmRip::done(int result)
{
    m_errands.forget();
    m_awake.reset();
    m_starting = false;
    QDialog::done(result);
}

void frmRip::Form_Load()
{
    const zib::WaitPointer wait(this);
    m_timer.start(kPollMs);
    LoadDevices();
    EnableControls(true);
    IsRipping = false;
    ui->txtSaveTo->setText(GeneralAPI::SettingFolder(gOptions.WAVOutput));
    zib::OutputPlace::makeFolder(m_errands, ui->txtSaveTo->text());
    ui->lvwTracks->setFocus();
}

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

void frmRip::cmdFolder_Click()
{
    if (const QString folder = GeneralAPI::BrowseForFolder(this, ui->txtSaveTo->text()).trimmed();
        !folder.isEmpty())
        ui->txtSaveTo->setText(folder);
}

void frmRip::cmdExplore_Click()
{
    GeneralAPI::ExploreFolder(ui->txtSaveTo->text());
}

void frmRip::cmdRip_Click()
{
    if (m_starting)
        return;
    RipDone = 0;
    RipTotal = CountCheckedTracks();
    if (RipTotal < 1) {
        m_services.messages.information(this, QStringLiteral("Please check tracks to rip."));
        unsetCursor();
        return;
    }
    m_starting = true;
    setCursor(Qt::WaitCursor);
    m_errands.ask<Folder>(
        [typed = ui->txtSaveTo->text(), names = zib::RipRows::namesToWrite(ui->lvwTracks)] {
            return zib::OutputPlace::lookAtFolder(typed, names);
        },
        [this](const Folder& folder) { startUnlessRefused(folder); });
}

/// A folder that is of no use is told before anything changes, and no file is replaced unasked.
void frmRip::startUnlessRefused(const Folder& folder)
{
    unsetCursor();
    if (!folder.reason.isEmpty()) {
        m_services.messages.information(this, zib::OutputPlace::refusal(folder));
    } else if (leaveTaken(folder)) {
        EnableControls(false);
        m_ripper->clearQueue();
        queueTracks(folder);
        if (!startExtraction())
            m_services.messages.information(this, QStringLiteral("Extraction could not be started."));
    }
    m_starting = false;
}

/// Takes the ticks from tracks whose files are there and are to stay.  @returns whether any is left to copy.
bool frmRip::leaveTaken(const Folder& folder)
{
    if (folder.taken.isEmpty())
        return CountCheckedTracks() > 0;
    const QString question = zib::OutputPlace::replaceQuestion(folder);
    switch (m_services.messages.askYesNoCancel(this, question, zib::Messages::Answer::No)) {
    case zib::Messages::Answer::Cancel:
        return false;
    case zib::Messages::Answer::No:
        zib::RipRows::untick(ui->lvwTracks, folder.taken);
        break;
    default:
        break;
    }
    RipTotal = CountCheckedTracks();
    return RipTotal > 0;
}

void frmRip::cmdOptions_Click()
{
    m_services.windows.showOptions(this);
}

void frmRip::cmdClose_Click()
{
    if (IsRipping) {
        m_ripper->abort();
        QCoreApplication::processEvents();
    }
    IsRipping = false;
    close();
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

void frmRip::CDRipperX1_ExtractionStarted()
{
    m_awake = zib::stayAwake(QStringLiteral("Tracks of a disc are being copied"));
    setCursor(Qt::WaitCursor);
    IsRipping = true;
}

void frmRip::CDRipperX1_TrackStarted(const QString&, qint32 start, qint32 end, qint32)
{
    TrackStartPos = start;
    TrackEndPos = end;
}

void frmRip::CDRipperX1_ExtractionProgress(int kind, qint32 position)
{
    if (kind != CDRipperX::kPositionProgress || RipTotal < 1 || TrackEndPos == TrackStartPos)
        return;
    const double fraction = zib::fractionDone(TrackStartPos, TrackEndPos, position);
    ui->pbRip->setValue(zib::overallRipped(RipDone, fraction, RipTotal));
    ui->lblRip->setText(QStringLiteral("Progress:  %1%").arg(ui->pbRip->value()));
}

void frmRip::CDRipperX1_TrackFinished()
{
    RipDone = static_cast<qint16>(RipDone + 1);
    if (RipTotal > 0)
        ui->pbRip->setValue(static_cast<int>(zib::finishedRipped(RipDone, RipTotal)));
}

void frmRip::CDRipperX1_ExtractionFinished()
{
    IsRipping = false;
    m_awake.reset();
    unsetCursor();
    EnableControls(true);
    ui->lvwTracks->setFocus();
    m_services.messages.information(this, QStringLiteral("Audio Ripping Completed."));
    if (const QStringList unread = m_ripper->unreadTracks(); !unread.isEmpty())
        m_services.messages.information(this, kUnread + unread.join(u'\n'));
    if (gOptions.ExploreAfterRipping)
        GeneralAPI::ExploreFolder(ui->txtSaveTo->text());
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

/// The bar takes the focus before the others lose it: nothing that ends the extraction may have it, and Enter
/// on it does nothing.
void frmRip::EnableControls(bool enabled)
{
    ui->picFolder->setVisible(enabled);
    ui->pbRip->setVisible(!enabled);
    ui->lblRip->setVisible(!enabled);
    ui->pbRip->setValue(0);
    if (!enabled)
        ui->pbRip->setFocus();
    for (QWidget* control :
         QWidgetList{ui->cmdRip, ui->cboDevices, ui->lvwTracks, ui->cboSpeeds, ui->cmdOptions})
        control->setEnabled(enabled);
    ui->cmdClose->setAutoDefault(enabled);
}

qint16 frmRip::CountCheckedTracks() const
{
    return zib::RipRows::countTicked(ui->lvwTracks);
}

/// The list may be emptied while one of the boxes is open, when the disc is taken out.
void frmRip::queueTracks(const Folder& folder)
{
    for (int track = 1; track <= ui->lvwTracks->topLevelItemCount(); ++track)
        if (zib::RipRows::isTicked(ui->lvwTracks, track))
            queueTrack(track, folder);
}

void frmRip::queueTrack(int track, const Folder& folder)
{
    ui->pbRip->setValue(0);
    ui->lblRip->setText(QStringLiteral("Progress:  0%"));
    const QString name = zib::RipRows::fileName(ui->lvwTracks, track);
    const QString path = GeneralAPI::JoinPath(folder.path, name);
    if (!m_ripper->isAudioTrack(track))
        m_services.messages.information(
            this, zib::trackText(track, QStringLiteral("is a data track and cannot be extracted!")));
    else if (!m_ripper->addTrack(track, path, folder.seen.value(name)))
        m_services.messages.information(
            this, zib::trackText(track, QStringLiteral("could not be added for extraction!")));
}

/// An error raised by the component is trapped: it only gives the pointer back. Refused means false.
bool frmRip::startExtraction()
{
    try {
        return m_ripper->start();
    } catch (const std::exception&) {
        unsetCursor();
        return true;
    }
}
