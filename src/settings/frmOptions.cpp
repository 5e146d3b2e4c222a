#include "settings/frmOptions.h"

#include "ui_frmOptions.h"

#include "common/Colors.h"
#include "common/CommonDialogs.h"
#include "common/GeneralAPI.h"
#include "common/Twips.h"
#include "settings/OptionsFunc.h"

#include <QKeyEvent>
#include <QScreen>

using GeneralAPI::IniChangeOf;
using GeneralAPI::IsChecked;
using GeneralAPI::SetCheckValue;

namespace {

// The entries that the format lists select when a stored value matches none.
constexpr int kFrequency44100 = 3;
constexpr int kStereo = 1;
constexpr int k16Bits = 5;

constexpr int kShownPageTwips = 210;
constexpr int kHiddenPageTwips = -20000;
constexpr int kPageGap = 8; // Pixels between the tab strip's frame and a page, above and below.

QColor backColorOf(const QWidget* box)
{
    return box->palette().color(QPalette::Window);
}

void setColor(QWidget* box, QPalette::ColorRole role, const QColor& color)
{
    QPalette palette = box->palette();
    palette.setColor(role, color);
    box->setPalette(palette);
}

QString word(const QCheckBox* box)
{
    return IsChecked(box) ? QStringLiteral("True") : QStringLiteral("False");
}

QString colorText(const QWidget* box)
{
    return QString::number(zib::numberFromColor(backColorOf(box)));
}

/// The change that stores a list's selection; none when nothing is selected, so that the old value stays.
QList<zib::IniChange> selectionChange(const QString& key, const QComboBox* combo)
{
    const auto number = GeneralAPI::GetComboItemData(combo);
    if (!number)
        return {};
    return {IniChangeOf(QStringLiteral("Wave"), key, QString::number(*number))};
}

} // namespace

frmOptions::frmOptions(const zib::Services& services, QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmOptions>()), m_services(services)
{
    ui->setupUi(this);
    connectControls();
    Form_Load();
}

frmOptions::~frmOptions() = default;

void frmOptions::connectControls()
{
    connect(ui->tbsOptions, &QTabWidget::currentChanged, this, &frmOptions::tbsOptions_Click);
    connect(ui->chk3D, &QCheckBox::clicked, this, &frmOptions::chk3D_Click);
    connect(ui->chkFlat, &QCheckBox::clicked, this, &frmOptions::chkFlat_Click);
    connect(ui->cmdChangeBack, &QPushButton::clicked, this, &frmOptions::cmdChangeBack_Click);
    connect(ui->cmdChangeText, &QPushButton::clicked, this, &frmOptions::cmdChangeText_Click);
    connect(ui->cmdWAVInput, &QPushButton::clicked, this, &frmOptions::cmdWAVInput_Click);
    connect(ui->cmdWAVOutput, &QPushButton::clicked, this, &frmOptions::cmdWAVOutput_Click);
    connect(ui->cmdMP3Input, &QPushButton::clicked, this, &frmOptions::cmdMP3Input_Click);
    connect(ui->cmdTemp, &QPushButton::clicked, this, &frmOptions::cmdTemp_Click);
    connect(ui->cmdDefault, &QPushButton::clicked, this, &frmOptions::cmdDefault_Click);
    connect(ui->cmdOK, &QPushButton::clicked, this, &frmOptions::cmdOK_Click);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &frmOptions::cmdCancel_Click);
    connect(ui->cmdApply, &QPushButton::clicked, this, &frmOptions::cmdApply_Click);
    installEventFilter(this);
    for (QWidget* control : findChildren<QWidget*>())
        control->installEventFilter(this); // The form sees keys before its controls do.
}

void frmOptions::Form_Load()
{
    fitPages();
    adjustSize();
    centre();
    GeneralAPI::FillFrequencyList(ui->cboWAVFrequency, kFrequency44100);
    GeneralAPI::FillChannelsList(ui->cboWAVChannels, kStereo);
    GeneralAPI::FillBitsList(ui->cboWAVBits, k16Bits);
    OptionsFunc::SetDefaultSettings();
    OptionsFunc::LoadSettings();
    FillOptionControls();
    ui->tbsOptions->setCurrentIndex(0);
    tbsOptions_Click();
}

bool frmOptions::Form_KeyDown(const QKeyEvent& event)
{
    const bool tabKey = event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab;
    if (!tabKey || !event.modifiers().testFlag(Qt::ControlModifier))
        return false;
    if (event.modifiers() == Qt::ControlModifier)
        ui->tbsOptions->setCurrentIndex((ui->tbsOptions->currentIndex() + 1) % ui->tbsOptions->count());
    return true; // With Shift or Alt too: the tab strip's own keys would go backwards.
}

void frmOptions::tbsOptions_Click()
{
    placePages();
    const QList<QWidget*> all = pages();
    for (int i = 0; i < all.size(); ++i) {
        const bool shown = i == ui->tbsOptions->currentIndex();
        all[i]->raise();
        all[i]->move(zib::wholePixels(shown ? kShownPageTwips : kHiddenPageTwips), all[i]->y());
        all[i]->setEnabled(shown);
    }
}

void frmOptions::chk3D_Click()
{
    SetCheckValue(ui->chkFlat, !IsChecked(ui->chk3D));
}

void frmOptions::chkFlat_Click()
{
    SetCheckValue(ui->chk3D, !IsChecked(ui->chkFlat));
}

void frmOptions::cmdChangeBack_Click()
{
    PickColor(ui->picBack);
    showColors();
}

void frmOptions::cmdChangeText_Click()
{
    PickColor(ui->picText);
    showColors();
}

void frmOptions::cmdWAVInput_Click()
{
    PickFolder(ui->txtWAVIn);
}

void frmOptions::cmdWAVOutput_Click()
{
    PickFolder(ui->txtWAVOut);
}

void frmOptions::cmdMP3Input_Click()
{
    PickFolder(ui->txtMP3In);
}

void frmOptions::cmdTemp_Click()
{
    PickFolder(ui->txtTemp);
}

void frmOptions::cmdDefault_Click()
{
    const OptionsData inUse = gOptions;
    OptionsFunc::SetDefaultSettings();
    FillOptionControls();
    zib::setOptions(inUse); // Only the controls show the defaults until the user applies them.
}

void frmOptions::cmdOK_Click()
{
    cmdApply_Click();
    accept();
}

void frmOptions::cmdCancel_Click()
{
    reject();
}

void frmOptions::cmdApply_Click()
{
    SaveOptions();
    OptionsFunc::LoadSettings();
    emit applied();
}

void frmOptions::FillOptionControls()
{
    GeneralAPI::SelectComboItemData(ui->cboWAVFrequency, gOptions.WAVFrequency);
    GeneralAPI::SelectComboItemData(ui->cboWAVChannels, gOptions.WAVChannels);
    GeneralAPI::SelectComboItemData(ui->cboWAVBits, gOptions.WAVBits);
    SetCheckValue(ui->chkToolbar, gOptions.ShowToolBar);
    SetCheckValue(ui->chk3D, gOptions.ToolbarStyle3D);
    SetCheckValue(ui->chkFlat, gOptions.ToolbarStyleFlat);
    SetCheckValue(ui->chkTextTB, gOptions.ShowTextOnToolbar);
    SetCheckValue(ui->chkTipsTB, gOptions.ShowTipsOnToolbar);
    SetCheckValue(ui->chkStatusbar, gOptions.ShowStatusbar);
    SetCheckValue(ui->chkTipDay, gOptions.ShowTipsOfDay);
    SetCheckValue(ui->chkSplash, gOptions.ShowSplashScreen);
    SetCheckValue(ui->chkGridLines, gOptions.ShowGridLines);
    setColor(ui->picBack, QPalette::Window, zib::colorFromNumber(gOptions.GridBackColor));
    setColor(ui->picText, QPalette::Window, zib::colorFromNumber(gOptions.GridTextColor));
    showColors();
    ui->txtWAVIn->setText(gOptions.WAVInput.trimmed());
    ui->txtWAVOut->setText(gOptions.WAVOutput.trimmed());
    ui->txtMP3In->setText(gOptions.MP3Input.trimmed());
    ui->txtTemp->setText(gOptions.Temporary.trimmed());
    SetCheckValue(ui->chkCacheFiles, gOptions.CacheFilesLocally);
    SetCheckValue(ui->chkTestWrite, gOptions.TestMode);
    SetCheckValue(ui->chkUseBurnProof, gOptions.BufferProtection);
    SetCheckValue(ui->chkConvert, gOptions.ExploreAfterConverting);
    SetCheckValue(ui->chkRip, gOptions.ExploreAfterRipping);
}

/// Writes every key from the controls, in one replacement of the file. A file that cannot be written stays as
/// it is, and the load that follows brings its settings back.
void frmOptions::SaveOptions()
{
    if (zib::platform().ini)
        zib::platform().ini->writeAll(waveChanges() + folderChanges() + viewChanges() + miscChanges(),
                                      gSettingsFile);
}

QList<zib::IniChange> frmOptions::waveChanges() const
{
    return selectionChange(QStringLiteral("WAV Frequency"), ui->cboWAVFrequency) +
           selectionChange(QStringLiteral("WAV Channels"), ui->cboWAVChannels) +
           selectionChange(QStringLiteral("WAV Bits"), ui->cboWAVBits);
}

QList<zib::IniChange> frmOptions::folderChanges() const
{
    const auto section = QStringLiteral("Folders");
    return {IniChangeOf(section, QStringLiteral("WAV Input"), ui->txtWAVIn->text()),
            IniChangeOf(section, QStringLiteral("MP3 Input"), ui->txtMP3In->text()),
            IniChangeOf(section, QStringLiteral("WAV Output"), ui->txtWAVOut->text()),
            IniChangeOf(section, QStringLiteral("Temporary"), ui->txtTemp->text())};
}

QList<zib::IniChange> frmOptions::viewChanges() const
{
    const auto section = QStringLiteral("View");
    return {IniChangeOf(section, QStringLiteral("Show ToolBar"), word(ui->chkToolbar)),
            IniChangeOf(section, QStringLiteral("Toolbar Style 3D"), word(ui->chk3D)),
            IniChangeOf(section, QStringLiteral("Toolbar Style Flat"), word(ui->chkFlat)),
            IniChangeOf(section, QStringLiteral("Show Text On Toolbar"), word(ui->chkTextTB)),
            IniChangeOf(section, QStringLiteral("Show Tips On Toolbar"), word(ui->chkTipsTB)),
            IniChangeOf(section, QStringLiteral("Show Statusbar"), word(ui->chkStatusbar)),
            IniChangeOf(section, QStringLiteral("Show Tips Of Day"), word(ui->chkTipDay)),
            IniChangeOf(section, QStringLiteral("Show Splash Screen"), word(ui->chkSplash)),
            IniChangeOf(section, QStringLiteral("Show Grid Lines"), word(ui->chkGridLines)),
            IniChangeOf(section, QStringLiteral("Grid Back Color"), colorText(ui->picBack)),
            IniChangeOf(section, QStringLiteral("Grid Text Color"), colorText(ui->picText))};
}

QList<zib::IniChange> frmOptions::miscChanges() const
{
    const auto section = QStringLiteral("Misc");
    return {IniChangeOf(section, QStringLiteral("Cache Files Locally"), word(ui->chkCacheFiles)),
            IniChangeOf(section, QStringLiteral("Test Mode"), word(ui->chkTestWrite)),
            IniChangeOf(section, QStringLiteral("Buffer Protection"), word(ui->chkUseBurnProof)),
            IniChangeOf(section, QStringLiteral("Explore After Converting"), word(ui->chkConvert)),
            IniChangeOf(section, QStringLiteral("Explore After Ripping"), word(ui->chkRip))};
}

void frmOptions::PickColor(QFrame* box)
{
    if (const auto chosen = m_services.dialogs.chooseColor(this, {}, backColorOf(box)); chosen)
        setColor(box, QPalette::Window, *chosen);
}

void frmOptions::PickFolder(QLineEdit* box)
{
    if (const QString folder = GeneralAPI::BrowseForFolder(this).trimmed(); !folder.isEmpty())
        box->setText(folder);
}

/// The sample shows the two colours of the boxes.
void frmOptions::showColors()
{
    setColor(ui->picSample, QPalette::Window, backColorOf(ui->picBack));
    setColor(ui->lblSample, QPalette::WindowText, backColorOf(ui->picText));
}

bool frmOptions::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Resize && watched == ui->tbsOptions->currentWidget())
        placePages();
    if (event->type() == QEvent::KeyPress && Form_KeyDown(static_cast<const QKeyEvent&>(*event)))
        return true;
    return QDialog::eventFilter(watched, event);
}

void frmOptions::changeEvent(QEvent* event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        fitPages();
}

/// Gives the tab strip room for the largest page, whatever font and style are in use.
void frmOptions::fitPages()
{
    QSize largest;
    for (const QWidget* page : pages())
        largest = largest.expandedTo(page->sizeHint());
    const int sides = 2 * zib::wholePixels(kShownPageTwips) - layout()->contentsMargins().left() -
                      layout()->contentsMargins().right();
    const int tabs = ui->tbsOptions->sizeHint().height();
    ui->tbsOptions->setMinimumSize(largest + QSize(sides, tabs + 2 * kPageGap));
}

/// Lays the pages over the tab strip's frame; where they stand from left to right is tbsOptions_Click's.
void frmOptions::placePages()
{
    const QWidget* frame = ui->tbsOptions->currentWidget();
    const int top = frame->mapTo(this, QPoint(0, 0)).y() + kPageGap;
    const int sides = 2 * zib::wholePixels(kShownPageTwips);
    for (QWidget* page : pages())
        page->setGeometry(page->x(), top, width() - sides, frame->height() - 2 * kPageGap);
}

void frmOptions::centre()
{
    const QRect free = screen()->availableGeometry();
    move(free.center() - QPoint(width() / 2, height() / 2));
}

QList<QWidget*> frmOptions::pages() const
{
    return {ui->picOptions_0, ui->picOptions_1, ui->picOptions_2, ui->picOptions_3};
}
