#include "label/frmLabelBack.h"
#include "ui_frmLabelBack.h"

#include "common/CommonDialogs.h"
#include "common/GeneralAPI.h"
#include "label/LabelDialogs.h"

using LabelMaker::LabelDocument;
using LabelMaker::SetupScrollBar;
using LabelMaker::ShowScrollBarValue;
using zib::FileDialogRequest;

namespace {

const QString kImageFilter =
    QStringLiteral("All Supported Image Files(*.jpg;*.jpeg;*.gif;*.bmp)|*.jpg;*.jpeg;*.gif;*.bmp|"
                   "BMP Files(*.bmp)|*.bmp|JPEG Files(*.jpg;*.jpeg)|*.jpg;*.jpeg|GIF Files(*.gif)|*.gif|"
                   "All Files(*.*)|*.*");

} // namespace

frmLabelBack::frmLabelBack(const zib::Services& services, QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmLabelBack>()), m_services(services)
{
    ui->setupUi(this);
    connectControls();
    Form_Load();
}

frmLabelBack::~frmLabelBack() = default;

void frmLabelBack::connectControls()
{
    connect(ui->chkBackImage, &QCheckBox::toggled, this, &frmLabelBack::EnableBackControls);
    connect(ui->cmdOpen, &QPushButton::clicked, this, &frmLabelBack::cmdOpen_Click);
    connect(ui->optImage_0, &QRadioButton::toggled, this, &frmLabelBack::EnableBackControls);
    connect(ui->optImage_1, &QRadioButton::toggled, this, &frmLabelBack::EnableBackControls);
    connect(ui->vsLeft, &QScrollBar::valueChanged, this, &frmLabelBack::vsLeft_Change);
    connect(ui->vsTop, &QScrollBar::valueChanged, this, &frmLabelBack::vsTop_Change);
    connect(ui->chkBackColor, &QCheckBox::toggled, this, &frmLabelBack::EnableBackControls);
    connect(ui->cmdBackColor, &QPushButton::clicked, this, &frmLabelBack::cmdBackColor_Click);
    connect(ui->OKButton, &QPushButton::clicked, this, &frmLabelBack::OKButton_Click);
    connect(ui->CancelButton, &QPushButton::clicked, this, &frmLabelBack::CancelButton_Click);
    connect(ui->cmdApply, &QPushButton::clicked, this, &frmLabelBack::cmdApply_Click);
}

void frmLabelBack::Form_Load()
{
    const LabelMaker::Document& doc = LabelDocument;
    GeneralAPI::SetCheckValue(ui->chkBackImage, doc.UseBackImage);
    ui->txtOpen->setText(doc.BackImagePath.trimmed());
    (doc.BackImageStretch ? ui->optImage_0 : ui->optImage_1)->setChecked(true);
    SetupScrollBar(ui->vsLeft, ui->txtLeft, 0, 300, zib::wholePixels(doc.BackImageLeft));
    SetupScrollBar(ui->vsTop, ui->txtTop, 0, 300, zib::wholePixels(doc.BackImageTop));
    GeneralAPI::SetCheckValue(ui->chkBackColor, doc.UseBackColor);
    zib::setSwatch(ui->picBackColor, doc.BackColor);
    EnableBackControls();
}

void frmLabelBack::cmdOpen_Click()
{
    const FileDialogRequest request{
        .title = QStringLiteral("Open an Image file"),
        .filter = kImageFilter,
        .flags = FileDialogRequest::FileMustExist | FileDialogRequest::PathMustExist,
        .initialFolder = GeneralAPI::GetFolderOfPath(ui->txtOpen->text().trimmed()),
        .maxFileSize = static_cast<int>(LabelMaker::kPathLength)};
    if (const auto file = m_services.dialogs.openFile(this, request))
        ui->txtOpen->setText(*file);
}

void frmLabelBack::vsLeft_Change()
{
    ShowScrollBarValue(ui->vsLeft, ui->txtLeft);
}

void frmLabelBack::vsTop_Change()
{
    ShowScrollBarValue(ui->vsTop, ui->txtTop);
}

void frmLabelBack::cmdBackColor_Click()
{
    const QColor current = ui->picBackColor->palette().color(QPalette::Window);
    if (const auto color = m_services.dialogs.chooseColor(this, QStringLiteral("Choose a color"), current))
        zib::setSwatch(ui->picBackColor, *color);
}

void frmLabelBack::OKButton_Click()
{
    cmdApply_Click();
    accept();
}

void frmLabelBack::CancelButton_Click()
{
    reject();
}

void frmLabelBack::cmdApply_Click()
{
    LabelMaker::Document document = LabelDocument;
    document.UseBackColor = GeneralAPI::IsChecked(ui->chkBackColor);
    document.UseBackImage = GeneralAPI::IsChecked(ui->chkBackImage);
    document.BackImageStretch = ui->optImage_0->isChecked();
    document.BackImageOriginalSize = ui->optImage_1->isChecked();
    document.BackColor = ui->picBackColor->palette().color(QPalette::Window);
    document.BackImageLeft = zib::boxTwips(ui->txtLeft);
    document.BackImageTop = zib::boxTwips(ui->txtTop);
    document.BackImagePath = ui->txtOpen->text();
    LabelMaker::setLabelDocument(document);
    emit Applied();
}

void frmLabelBack::EnableBackControls()
{
    const bool image = GeneralAPI::IsChecked(ui->chkBackImage);
    const bool color = GeneralAPI::IsChecked(ui->chkBackColor);
    for (QWidget* control : QList<QWidget*>{ui->txtOpen, ui->cmdOpen, ui->optImage_0, ui->optImage_1})
        control->setEnabled(image);
    const bool ownSize = image && ui->optImage_1->isChecked();
    for (QWidget* control :
         QList<QWidget*>{ui->lblLeft, ui->txtLeft, ui->vsLeft, ui->lblTop, ui->txtTop, ui->vsTop})
        control->setEnabled(ownSize);
    ui->cmdBackColor->setEnabled(color);
    ui->picBackColor->setEnabled(color);
}
