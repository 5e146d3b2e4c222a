#include "tools/frmRip.h"
#include "ui_frmRip.h"

#include "common/BoxedRows.h"
#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"
#include "common/WaitPointer.h"
#include "common/Windows.h"
#include "components/Components.h"
#include "tools/JobKeys.h"
#include "tools/RipRows.h"

#include <QCoreApplication>

namespace {

constexpr int kPollMs = 200;

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
