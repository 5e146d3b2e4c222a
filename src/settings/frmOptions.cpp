#include "settings/frmOptions.h"

#include "ui_frmOptions.h"

#include "common/Colors.h"
#include "common/CommonDialogs.h"
#include "common/GeneralAPI.h"
#include "common/Platform.h"
#include "settings/OptionsFunc.h"

#include <QKeyEvent>
#include <QRegularExpression>
#include <QScreen>

using GeneralAPI::IniChangeOf;
using GeneralAPI::IsChecked;
using GeneralAPI::SetCheckValue;

namespace {

// The entries that the format lists select when a stored value matches none.
constexpr int kFrequency44100 = 3;
constexpr int kStereo = 1;
constexpr int k16Bits = 5;

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

const QRegularExpression& lineBreaks()
{
    static const QRegularExpression breaks(QStringLiteral("[\n\r\u2028\u2029]"));
    return breaks;
}

/// Whether a line of the file can hold a folder.
bool isStorable(const QString& folder)
{
    static const QRegularExpression lineEnds(QStringLiteral("[\n\r]"));
    return !folder.trimmed().contains(lineEnds) && folder.isValidUtf16();
}

} // namespace

frmOptions::frmOptions(const zib::Services& services, QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmOptions>()), m_services(services)
{
    ui->setupUi(this);
    m_pages = {ui->tbsOptions, {ui->picOptions_0, ui->picOptions_1, ui->picOptions_2, ui->picOptions_3}};
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
    connect(m_saver.get(), &zib::SettingsSaver::applied, this, &frmOptions::applied);
    connect(m_saver.get(), &zib::SettingsSaver::takenBack, this, &frmOptions::FillOptionControls);
    connect(m_saver.get(), &zib::SettingsSaver::refused, this, &frmOptions::refused);
    for (const Folder& folder : folders())
        connect(folder.box, &QLineEdit::textEdited, this, [this, box = folder.box] { keepOneLine(box); });
    installEventFilter(this);
    for (QWidget* control : findChildren<QWidget*>())
        control->installEventFilter(this); // The form sees keys before its controls do.
}

void frmOptions::Form_Load()
{
    m_pages.fit();
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
    m_pages.show();
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
    const QStringList leftOut = unstorable();
    const bool saved = SaveOptions();
    accept();
    m_saver->tell(saved, leftOut); // The window is gone by then: it is the main window's to say.
}

void frmOptions::cmdCancel_Click()
{
    reject();
}

void frmOptions::cmdApply_Click()
{
    const QStringList leftOut = unstorable();
    const bool saved = SaveOptions();
    if (!saved || !leftOut.isEmpty())
        FillOptionControls(); // They show what is in force.
    m_saver->tell(saved, leftOut);
}

/// Every check box with its setting, in the order of the pages.
QList<frmOptions::Check> frmOptions::checks() const
{
    const auto view = QStringLiteral("View");
    const auto misc = QStringLiteral("Misc");
    return {
        {view, QStringLiteral("Show ToolBar"), ui->chkToolbar, &OptionsData::ShowToolBar},
        {view, QStringLiteral("Toolbar Style 3D"), ui->chk3D, &OptionsData::ToolbarStyle3D},
        {view, QStringLiteral("Toolbar Style Flat"), ui->chkFlat, &OptionsData::ToolbarStyleFlat},
        {view, QStringLiteral("Show Text On Toolbar"), ui->chkTextTB, &OptionsData::ShowTextOnToolbar},
        {view, QStringLiteral("Show Tips On Toolbar"), ui->chkTipsTB, &OptionsData::ShowTipsOnToolbar},
        {view, QStringLiteral("Show Statusbar"), ui->chkStatusbar, &OptionsData::ShowStatusbar},
        {view, QStringLiteral("Show Tips Of Day"), ui->chkTipDay, &OptionsData::ShowTipsOfDay},
        {view, QStringLiteral("Show Splash Screen"), ui->chkSplash, &OptionsData::ShowSplashScreen},
        {view, QStringLiteral("Show Grid Lines"), ui->chkGridLines, &OptionsData::ShowGridLines},
        {misc, QStringLiteral("Cache Files Locally"), ui->chkCacheFiles, &OptionsData::CacheFilesLocally},
        {misc, QStringLiteral("Test Mode"), ui->chkTestWrite, &OptionsData::TestMode},
        {misc, QStringLiteral("Buffer Protection"), ui->chkUseBurnProof, &OptionsData::BufferProtection},
        {misc, QStringLiteral("Explore After Converting"), ui->chkConvert,
         &OptionsData::ExploreAfterConverting},
        {misc, QStringLiteral("Explore After Ripping"), ui->chkRip, &OptionsData::ExploreAfterRipping},
        {misc, QStringLiteral("Verify After Writing"), ui->chkVerify, &OptionsData::VerifyAfterWriting},
    };
}

QList<frmOptions::Folder> frmOptions::folders() const
{
    return {
        {QStringLiteral("WAV Input"), ui->lblWAVIn, ui->txtWAVIn, &OptionsData::WAVInput},
        {QStringLiteral("MP3 Input"), ui->lblMP3In, ui->txtMP3In, &OptionsData::MP3Input},
        {QStringLiteral("WAV Output"), ui->lblWAVOut, ui->txtWAVOut, &OptionsData::WAVOutput},
        {QStringLiteral("Temporary"), ui->lblTemp, ui->txtTemp, &OptionsData::Temporary},
    };
}

void frmOptions::FillOptionControls()
{
    GeneralAPI::SelectComboItemData(ui->cboWAVFrequency, gOptions.WAVFrequency);
    GeneralAPI::SelectComboItemData(ui->cboWAVChannels, gOptions.WAVChannels);
    GeneralAPI::SelectComboItemData(ui->cboWAVBits, gOptions.WAVBits);
    for (const Check& check : checks())
        SetCheckValue(check.box, gOptions.*check.field);
    for (const Folder& folder : folders())
        folder.box->setText((gOptions.*folder.field).trimmed());
    setColor(ui->picBack, QPalette::Window, zib::colorFromNumber(gOptions.GridBackColor));
    setColor(ui->picText, QPalette::Window, zib::colorFromNumber(gOptions.GridTextColor));
    showColors();
}

/// Writes every key from the controls, in one replacement of the file, and loads the record from it.
/// @returns false when the file could not be written and stays as it is.
bool frmOptions::SaveOptions()
{
    QList<zib::IniChange> changes = selectionChange(QStringLiteral("WAV Frequency"), ui->cboWAVFrequency) +
                                    selectionChange(QStringLiteral("WAV Channels"), ui->cboWAVChannels) +
                                    selectionChange(QStringLiteral("WAV Bits"), ui->cboWAVBits);
    for (const Folder& folder : folders())
        changes << changeOf(folder);
    for (const Check& check : checks())
        changes << IniChangeOf(check.section, check.key, word(check.box));
    changes << IniChangeOf(QStringLiteral("View"), QStringLiteral("Grid Back Color"), colorText(ui->picBack))
            << IniChangeOf(QStringLiteral("View"), QStringLiteral("Grid Text Color"), colorText(ui->picText));
    return m_saver->save(changes);
}

/// The change that stores a folder. One that no line can hold, but is the default, is stored by its absence;
/// another such one is left out, so that the old value stays.
QList<zib::IniChange> frmOptions::changeOf(const Folder& folder) const
{
    const QString text = folder.box->text();
    const bool isDefault = text.trimmed() == (OptionsFunc::defaults().*folder.field).trimmed();
    if (!isStorable(text) && !isDefault)
        return {};
    return {IniChangeOf(QStringLiteral("Folders"), folder.key, isStorable(text) ? text : QString())};
}

/// The names of the folders that cannot be stored.
QStringList frmOptions::unstorable() const
{
    QStringList names;
    for (const Folder& folder : folders())
        if (changeOf(folder).isEmpty())
            names << folder.label->text().remove(u':');
    return names;
}

/// Of what was pasted the first line counts that holds anything.
void frmOptions::keepOneLine(QLineEdit* box)
{
    const QStringList lines = box->text().split(lineBreaks(), Qt::SkipEmptyParts);
    if (lines.size() != 1 || lines.first() != box->text())
        if (!box->text().isEmpty())
            box->setText(lines.isEmpty() ? QString() : lines.first());
}

void frmOptions::PickColor(QFrame* box)
{
    if (const auto chosen = m_services.dialogs.chooseColor(this, {}, backColorOf(box)); chosen)
        setColor(box, QPalette::Window, *chosen);
}

void frmOptions::PickFolder(QLineEdit* box)
{
    const QString folder = GeneralAPI::BrowseForFolder(this, box->text()).trimmed();
    if (!folder.isEmpty())
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
        m_pages.place();
    if (event->type() == QEvent::KeyPress && Form_KeyDown(static_cast<const QKeyEvent&>(*event)))
        return true;
    return QDialog::eventFilter(watched, event);
}

void frmOptions::changeEvent(QEvent* event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        m_pages.fit();
}

void frmOptions::centre()
{
    const QRect free = screen()->availableGeometry();
    move(free.center() - QPoint(width() / 2, height() / 2));
}
