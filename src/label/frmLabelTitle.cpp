#include "label/frmLabelTitle.h"
#include "ui_frmLabelTitle.h"

#include "common/CommonDialogs.h"
#include "label/LabelControls.h"
#include "label/LabelDialogs.h"
#include "label/LabelLayout.h"

using LabelMaker::LabelDocument;
using LabelMaker::SetupScrollBar;
using LabelMaker::ShowScrollBarValue;

frmLabelTitle::frmLabelTitle(const zib::Services& services, QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmLabelTitle>()), m_services(services)
{
    ui->setupUi(this);
    connectControls();
    Form_Load();
}

frmLabelTitle::~frmLabelTitle() = default;

void frmLabelTitle::connectControls()
{
    connect(ui->txtTitle, &QLineEdit::textChanged, this, &frmLabelTitle::txtTitle_Change);
    connect(ui->cmdFont, &QPushButton::clicked, this, &frmLabelTitle::cmdFont_Click);
    connect(ui->cmdColor, &QPushButton::clicked, this, &frmLabelTitle::cmdColor_Click);
    connect(ui->vsLeft, &QScrollBar::valueChanged, this, &frmLabelTitle::vsLeft_Change);
    connect(ui->vsTop, &QScrollBar::valueChanged, this, &frmLabelTitle::vsTop_Change);
    connect(ui->OKButton, &QPushButton::clicked, this, &frmLabelTitle::OKButton_Click);
    connect(ui->CancelButton, &QPushButton::clicked, this, &frmLabelTitle::CancelButton_Click);
    connect(ui->cmdApply, &QPushButton::clicked, this, &frmLabelTitle::cmdApply_Click);
}

void frmLabelTitle::Form_Load()
{
    const LabelMaker::Document& doc = LabelDocument;
    const QString text = doc.TitleText.trimmed();
    ui->cdTitle->setItem(
        {doc.TitleLeft, doc.TitleTop, text,
         zib::layout::labelFont(doc.TitleFontName.trimmed(), doc.TitleFontSize, doc.TitleFontBold,
                                doc.TitleFontItalic, doc.TitleFontUnderline),
         doc.TitleColor});
    ui->txtTitle->setText(text);
    SetupScrollBar(ui->vsLeft, ui->txtLeft, 0, 300, zib::wholePixels(doc.TitleLeft));
    SetupScrollBar(ui->vsTop, ui->txtTop, 0, 300, zib::wholePixels(doc.TitleTop));
    zib::setSampleGround(ui->picSample);
    zib::fitToScreen(this);
}

void frmLabelTitle::txtTitle_Change()
{
    ui->cdTitle->setCaption(ui->txtTitle->text());
}

void frmLabelTitle::cmdFont_Click()
{
    const auto font =
        m_services.dialogs.chooseFont(this, QStringLiteral("Choose a font"), ui->cdTitle->item().font);
    if (font)
        ui->cdTitle->setDesignFont(zib::layout::labelFont(*font));
}

void frmLabelTitle::cmdColor_Click()
{
    const auto color =
        m_services.dialogs.chooseColor(this, QStringLiteral("Choose a color"), ui->cdTitle->item().color);
    if (color)
        ui->cdTitle->setColor(*color);
}

void frmLabelTitle::vsLeft_Change()
{
    ShowScrollBarValue(ui->vsLeft, ui->txtLeft);
    ui->cdTitle->setLeft(zib::boxTwips(ui->txtLeft));
}

void frmLabelTitle::vsTop_Change()
{
    ShowScrollBarValue(ui->vsTop, ui->txtTop);
    ui->cdTitle->setTop(zib::boxTwips(ui->txtTop));
}

void frmLabelTitle::OKButton_Click()
{
    cmdApply_Click();
    accept();
}

void frmLabelTitle::CancelButton_Click()
{
    reject();
}

void frmLabelTitle::cmdApply_Click()
{
    const zib::LabelText& sample = ui->cdTitle->item();
    LabelMaker::Document document = LabelDocument;
    document.TitleFontBold = sample.font.bold();
    document.TitleFontItalic = sample.font.italic();
    document.TitleFontName = sample.font.family();
    document.TitleFontUnderline = sample.font.underline();
    document.TitleColor = sample.color;
    document.TitleFontSize = zib::wholePoints(sample.font);
    document.TitleLeft = zib::boxTwips(ui->txtLeft);
    document.TitleTop = zib::boxTwips(ui->txtTop);
    document.TitleText = sample.caption;
    LabelMaker::setLabelDocument(document);
    emit Applied();
}
