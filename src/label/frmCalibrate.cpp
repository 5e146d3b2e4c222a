#include "label/frmCalibrate.h"
#include "ui_frmCalibrate.h"

#include "common/GenralMacro.h"
#include "common/Messages.h"
#include "common/WaitPointer.h"
#include "components/Components.h"
#include "label/CalibrationPage.h"
#include "label/LabelPrint.h"
#include "label/LabelSettings.h"

frmCalibrate::frmCalibrate(const zib::Services& services, QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmCalibrate>()), m_services(services)
{
    ui->setupUi(this);
    connectControls();
    Form_Load();
}

frmCalibrate::~frmCalibrate() = default;

void frmCalibrate::connectControls()
{
    connect(ui->cmdTestPage, &QPushButton::clicked, this, &frmCalibrate::cmdTestPage_Click);
    connect(ui->cmdReset, &QPushButton::clicked, this, &frmCalibrate::cmdReset_Click);
    connect(ui->OKButton, &QPushButton::clicked, this, &frmCalibrate::OKButton_Click);
    connect(ui->CancelButton, &QPushButton::clicked, this, &frmCalibrate::CancelButton_Click);
}

void frmCalibrate::Form_Load()
{
    const zib::WaitPointer wait(parentWidget() ? parentWidget() : this);
    const zib::Outcome<Printer::Target> target = m_services.components.makePrinter()->target();
    if (!target) {
        m_loaded = target.error();
        return;
    }
    m_target = *target;
    ui->lblPrinter->setText(QStringLiteral("%1, %2 mm").arg(m_target.printer, m_target.paper));
    ui->lblHelp->setText(ui->lblHelp->text().arg(zib::kCrossMm).arg(zib::rulerMm(m_target.paperSize)));
    setNumbers(zib::calibrationFor(m_target.printer, m_target.paper));
}

void frmCalibrate::cmdTestPage_Click()
{
    const auto sent = zib::printLabelPage(m_services, this, {}, &zib::calibrationPage, numbers());
    ui->lblState->setText(sent ? QStringLiteral("Sent to %1").arg(*sent) : QString());
    if (!sent)
        m_services.messages.critical(this, sent.error().detail);
}

void frmCalibrate::cmdReset_Click()
{
    setNumbers({});
}

void frmCalibrate::OKButton_Click()
{
    if (store())
        accept();
}

void frmCalibrate::CancelButton_Click()
{
    reject();
}

void frmCalibrate::setNumbers(const zib::Calibration& calibration)
{
    ui->txtShiftAcross->setValue(calibration.shiftAcross);
    ui->txtShiftDown->setValue(calibration.shiftDown);
    ui->txtScaleAcross->setValue(calibration.scaleAcross);
    ui->txtScaleDown->setValue(calibration.scaleDown);
}

zib::Calibration frmCalibrate::numbers() const
{
    return {ui->txtShiftAcross->value(), ui->txtShiftDown->value(), ui->txtScaleAcross->value(),
            ui->txtScaleDown->value()};
}

/// @returns whether the settings file holds the numbers; if not, the user is told.
bool frmCalibrate::store()
{
    if (zib::storeCalibration(m_target.printer, m_target.paper, numbers()))
        return true;
    m_services.messages.critical(
        this, QStringLiteral("The numbers cannot be stored in the settings file\n%1").arg(gSettingsFile));
    return false;
}
