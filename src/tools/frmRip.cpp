#include "tools/frmRip.h"
#include "ui_frmRip.h"

#include "common/BoxedRows.h"
#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"
#include "common/Messages.h"
#include "common/WaitPointer.h"
#include "common/Windows.h"
#include "components/Components.h"
#include "tools/RipProgress.h"
#include "tools/RipRows.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QSignalBlocker>

#include <exception>

namespace {

constexpr int kPollMs = 200;

const QString kUnread = QStringLiteral("Some tracks could not be copied, and no files were made of them:\n");

} // namespace

frmRip::frmRip(const zib::Services& services, QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmRip>()), m_services(services),
      m_ripper(services.components.makeRipper())
{
    ui->setupUi(this);
    Timer1.setObjectName(QStringLiteral("Timer1"));
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
    connect(&Timer1, &QTimer::timeout, this, &frmRip::Timer1_Timer);
}

void frmRip::connectRipper()
{
    const CDRipperX* ripper = m_ripper.get();
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

/// Escape must not end an extraction: only the close box and the buttons do.
void frmRip::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape && IsRipping)
        event->accept();
    else
        QDialog::keyPressEvent(event);
}

void frmRip::Form_Load()
{
    const zib::WaitPointer wait(this);
    Timer1.start(kPollMs);
    LoadDevices();
    EnableControls(true);
    IsRipping = false;
    ui->txtSaveTo->setText(GeneralAPI::SettingFolder(gOptions.WAVOutput));
    GeneralAPI::MakeFolderPath(ui->txtSaveTo->text());
    ui->lvwTracks->setFocus();
}

void frmRip::cboDevices_Click()
{
    Timer1.stop();
    ui->lvwTracks->clear();
    if (m_ripper->selectDevice(ui->cboDevices->currentIndex())) {
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
    Timer1.start();
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
    RipDone = 0;
    RipTotal = CountCheckedTracks();
    if (RipTotal < 1) {
        m_services.messages.information(this, QStringLiteral("Please check tracks to rip."));
        unsetCursor();
        return;
    }
    EnableControls(false);
    m_ripper->clearQueue();
    queueTracks();
    if (!startExtraction())
        m_services.messages.information(this, QStringLiteral("Extraction could not be started."));
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
        ui->lvwTracks->clear();
        DiscReloadPending = true;
    } else if (state == CDRipperX::kDiscLoaded && DiscReloadPending) {
        cboDevices_Click();
    }
}

void frmRip::CDRipperX1_ExtractionStarted()
{
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
    const QSignalBlocker untilFilled(ui->cboDevices);
    const int count = m_ripper->deviceCount();
    for (int device = 0; device < count; ++device)
        ui->cboDevices->addItem(m_ripper->deviceText1(device) + QStringLiteral(": ") +
                                m_ripper->deviceText2(device) + u' ' + m_ripper->deviceText3(device));
    if (count > 0)
        cboDevices_Click();
}

void frmRip::LoadSpeeds()
{
    QSignalBlocker untilFilled(ui->cboSpeeds);
    ui->cboSpeeds->clear();
    ui->cboSpeeds->addItem(QStringLiteral("AUTO"), 0);
    for (int factor = 1; factor <= m_ripper->maxReadSpeed(); factor += factor > 4 ? 4 : factor)
        ui->cboSpeeds->addItem(QStringLiteral("%1X").arg(factor), factor);
    ui->cboSpeeds->setCurrentIndex(0);
    untilFilled.unblock();
    cboSpeeds_Click();
}

void frmRip::EnableControls(bool enabled)
{
    if (!enabled)
        ui->cmdClose->setFocus(); // before the others lose it, so that it does not wander
    for (QWidget* control :
         QWidgetList{ui->cmdRip, ui->cboDevices, ui->lvwTracks, ui->cboSpeeds, ui->cmdOptions})
        control->setEnabled(enabled);
    ui->picFolder->setVisible(enabled);
    ui->pbRip->setVisible(!enabled);
    ui->lblRip->setVisible(!enabled);
    ui->pbRip->setValue(0);
}

qint16 frmRip::CountCheckedTracks() const
{
    return zib::RipRows::countTicked(ui->lvwTracks);
}

/// The list may be emptied while one of the boxes is open, when the disc is taken out.
void frmRip::queueTracks()
{
    for (int track = 1; track <= ui->lvwTracks->topLevelItemCount(); ++track)
        if (zib::RipRows::isTicked(ui->lvwTracks, track))
            queueTrack(track);
}

QString frmRip::outputPath(int track) const
{
    return GeneralAPI::JoinPath(ui->txtSaveTo->text(), zib::RipRows::fileName(ui->lvwTracks, track));
}

void frmRip::queueTrack(int track)
{
    ui->pbRip->setValue(0);
    ui->lblRip->setText(QStringLiteral("Progress:  0%"));
    if (!m_ripper->isAudioTrack(track))
        m_services.messages.information(
            this, zib::trackText(track, QStringLiteral("is a data track and cannot be extracted!")));
    else if (!m_ripper->addTrack(track, outputPath(track)))
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
