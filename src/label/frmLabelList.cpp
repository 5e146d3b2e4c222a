#include "label/frmLabelList.h"
#include "ui_frmLabelList.h"

#include "common/CommonDialogs.h"
#include "common/GeneralAPI.h"
#include "label/LabelControls.h"
#include "label/LabelDialogs.h"
#include "label/LabelLayout.h"

#include <QSignalBlocker>

#include <optional>

using LabelMaker::LabelDocument;
using LabelMaker::SetupScrollBar;
using LabelMaker::ShowScrollBarValue;
using zib::boxNumber;
using zib::boxTwips;
using zib::wholePixels;

namespace {

constexpr int kNewColumnPixels = 100;
constexpr int kNarrowestColumn = 10;
constexpr int kWidestColumn = 300;
const QString kChooseColor = QStringLiteral("Choose a color");
const QString kChooseFont = QStringLiteral("Choose a font");

} // namespace

frmLabelList::frmLabelList(const zib::Services& services, QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmLabelList>()), m_services(services)
{
    ui->setupUi(this);
    connectControls();
    Form_Load();
}

frmLabelList::~frmLabelList() = default;

void frmLabelList::connectControls()
{
    connect(ui->vsLeft, &QScrollBar::valueChanged, this, &frmLabelList::vsLeft_Change);
    connect(ui->vsTop, &QScrollBar::valueChanged, this, &frmLabelList::vsTop_Change);
    connect(ui->vsCols, &QScrollBar::valueChanged, this, &frmLabelList::vsCols_Change);
    connect(ui->vsRows, &QScrollBar::valueChanged, this, &frmLabelList::vsRows_Change);
    connect(ui->cboCols, &QComboBox::currentIndexChanged, this, &frmLabelList::cboCols_Click);
    connect(ui->vsColWidth, &QScrollBar::valueChanged, this, &frmLabelList::vsColWidth_Change);
    connect(ui->vsRowHeight, &QScrollBar::valueChanged, this, &frmLabelList::vsRowHeight_Change);
    connect(ui->vsLineWidth, &QScrollBar::valueChanged, this, &frmLabelList::vsLineWidth_Change);
    connect(ui->cmdLineColor, &QPushButton::clicked, this, &frmLabelList::cmdLineColor_Click);
    connect(ui->cmdTextFont, &QPushButton::clicked, this, &frmLabelList::cmdTextFont_Click);
    connect(ui->cmdTextColor, &QPushButton::clicked, this, &frmLabelList::cmdTextColor_Click);
    connect(ui->vsPaddingLeft, &QScrollBar::valueChanged, this, &frmLabelList::vsPaddingLeft_Change);
    connect(ui->vsPaddingTop, &QScrollBar::valueChanged, this, &frmLabelList::vsPaddingTop_Change);
    connect(ui->OKButton, &QPushButton::clicked, this, &frmLabelList::OKButton_Click);
    connect(ui->CancelButton, &QPushButton::clicked, this, &frmLabelList::CancelButton_Click);
    connect(ui->cmdApply, &QPushButton::clicked, this, &frmLabelList::cmdApply_Click);
}

void frmLabelList::Form_Load()
{
    loadList();
    loadLines();
    loadText();
}

void frmLabelList::vsLeft_Change()
{
    ShowScrollBarValue(ui->vsLeft, ui->txtLeft);
}

void frmLabelList::vsTop_Change()
{
    ShowScrollBarValue(ui->vsTop, ui->txtTop);
}

void frmLabelList::vsCols_Change()
{
    ShowScrollBarValue(ui->vsCols, ui->txtCols);
    fillColumns(QStringLiteral("Col%1"), boxNumber(ui->txtCols));
}

void frmLabelList::vsRows_Change()
{
    ShowScrollBarValue(ui->vsRows, ui->txtRows);
    m_rowsChosen = true;
    showRowsInUse();
}

void frmLabelList::cboCols_Click()
{
    if (const std::optional<int> width = GeneralAPI::GetComboItemData(ui->cboCols))
        SetupScrollBar(ui->vsColWidth, ui->txtColWidth, kNarrowestColumn, kWidestColumn, *width);
}

void frmLabelList::vsColWidth_Change()
{
    ShowScrollBarValue(ui->vsColWidth, ui->txtColWidth);
    ui->cboCols->setItemData(ui->cboCols->currentIndex(), boxNumber(ui->txtColWidth));
}

void frmLabelList::vsRowHeight_Change()
{
    ShowScrollBarValue(ui->vsRowHeight, ui->txtRowHeight);
}

void frmLabelList::vsLineWidth_Change()
{
    ShowScrollBarValue(ui->vsLineWidth, ui->txtLineWidth);
    for (zib::LineControl* line : m_lineSample)
        line->setBorderWidth(boxNumber(ui->txtLineWidth));
}

void frmLabelList::cmdLineColor_Click()
{
    const auto color = m_services.dialogs.chooseColor(this, kChooseColor, m_lineSample[0]->borderColor());
    if (!color)
        return;
    for (zib::LineControl* line : m_lineSample)
        line->setBorderColor(*color);
}

void frmLabelList::cmdTextFont_Click()
{
    const auto font = m_services.dialogs.chooseFont(this, kChooseFont, ui->lblSample->item().font);
    if (font)
        ui->lblSample->setDesignFont(zib::layout::labelFont(*font));
}

void frmLabelList::cmdTextColor_Click()
{
    const auto color = m_services.dialogs.chooseColor(this, kChooseColor, ui->lblSample->item().color);
    if (color)
        ui->lblSample->setColor(*color);
}

void frmLabelList::vsPaddingLeft_Change()
{
    ShowScrollBarValue(ui->vsPaddingLeft, ui->txtPaddingLeft);
    ui->lblSample->setLeft(boxTwips(ui->txtPaddingLeft));
}

void frmLabelList::vsPaddingTop_Change()
{
    ShowScrollBarValue(ui->vsPaddingTop, ui->txtPaddingTop);
    ui->lblSample->setTop(boxTwips(ui->txtPaddingTop));
}

void frmLabelList::OKButton_Click()
{
    cmdApply_Click();
    accept();
}

void frmLabelList::CancelButton_Click()
{
    reject();
}

void frmLabelList::cmdApply_Click()
{
    const zib::LabelText& sample = ui->lblSample->item();
    LabelMaker::Document document = LabelDocument;
    document.TextFontBold = sample.font.bold();
    document.TextFontItalic = sample.font.italic();
    document.TextFontUnderline = sample.font.underline();
    document.ShowTableText = GeneralAPI::IsChecked(ui->chkText);
    document.ShowTableLines = GeneralAPI::IsChecked(ui->chkLines);
    document.TextColor = sample.color;
    document.TableCols = static_cast<qint16>(boxNumber(ui->txtCols));
    document.TextFontSize = zib::wholePoints(sample.font);
    document.LineColor = m_lineSample[0]->borderColor();
    document.LineWidth = static_cast<qint16>(boxNumber(ui->txtLineWidth));
    document.TableLeft = boxTwips(ui->txtLeft);
    document.TableTop = boxTwips(ui->txtTop);
    document.PaddingLeft = sample.left;
    document.PaddingTop = sample.top;
    document.RowHeight = boxTwips(ui->txtRowHeight);
    if (m_rowsChosen)
        document.TableRows = static_cast<qint16>(boxNumber(ui->txtRows));
    document.TextFontName = sample.font.family().trimmed();
    document.ColWidths = {0};
    for (int i = 0; i < document.TableCols; ++i)
        document.ColWidths << zib::twipsFromPixels(ui->cboCols->itemData(i).toInt());
    LabelMaker::setLabelDocument(document);
    emit Applied();
}

void frmLabelList::loadList()
{
    const LabelMaker::Document& doc = LabelDocument;
    SetupScrollBar(ui->vsLeft, ui->txtLeft, 0, 300, wholePixels(doc.TableLeft));
    SetupScrollBar(ui->vsTop, ui->txtTop, 0, 300, wholePixels(doc.TableTop));
    SetupScrollBar(ui->vsCols, ui->txtCols, 1, 10, doc.TableCols);
    SetupScrollBar(ui->vsRows, ui->txtRows, 1, 30, doc.TableRows);
    SetupScrollBar(ui->vsRowHeight, ui->txtRowHeight, 10, 100, wholePixels(doc.RowHeight));
    fillColumns(QStringLiteral("Cols%1"), doc.TableCols);
    showRowsInUse();
}

/// A long list has more rows than the bar can choose; they stay until it is moved.
void frmLabelList::showRowsInUse()
{
    const int rows = LabelDocument.TableRows;
    ui->lblRowsInUse->setText(QStringLiteral("(%1 now)").arg(rows));
    ui->lblRowsInUse->setVisible(!m_rowsChosen && rows > ui->vsRows->maximum());
}

void frmLabelList::loadLines()
{
    for (int n = 0; auto* line = findChild<zib::LineControl*>(QStringLiteral("lineSample_%1").arg(n)); ++n) {
        line->setBorderColor(LabelDocument.LineColor);
        line->setBorderWidth(LabelDocument.LineWidth);
        m_lineSample << line;
    }
    GeneralAPI::SetCheckValue(ui->chkLines, LabelDocument.ShowTableLines);
    SetupScrollBar(ui->vsLineWidth, ui->txtLineWidth, 1, 10, LabelDocument.LineWidth);
    zib::setSampleGround(ui->picLines);
}

void frmLabelList::loadText()
{
    const LabelMaker::Document& doc = LabelDocument;
    GeneralAPI::SetCheckValue(ui->chkText, doc.ShowTableText);
    SetupScrollBar(ui->vsPaddingLeft, ui->txtPaddingLeft, 0, 100, wholePixels(doc.PaddingLeft));
    SetupScrollBar(ui->vsPaddingTop, ui->txtPaddingTop, 0, 20, wholePixels(doc.PaddingTop));
    ui->lblSample->setItem(
        {doc.PaddingLeft, doc.PaddingTop, ui->lblSample->text(),
         zib::layout::labelFont(doc.TextFontName.trimmed(), doc.TextFontSize, doc.TextFontBold,
                                doc.TextFontItalic, doc.TextFontUnderline),
         doc.TextColor});
    zib::setSampleGround(ui->picSample);
}

/// One entry for each column with its width in pixels; a column the document does not have is 100 wide.
void frmLabelList::fillColumns(const QString& text, int columns)
{
    {
        const QSignalBlocker quiet(ui->cboCols);
        ui->cboCols->clear();
        for (int col = 1; col <= columns; ++col) {
            const bool known = col < LabelDocument.ColWidths.size();
            ui->cboCols->addItem(text.arg(col),
                                 known ? wholePixels(LabelDocument.ColWidths[col]) : kNewColumnPixels);
        }
        ui->cboCols->setCurrentIndex(0);
    }
    cboCols_Click();
}
