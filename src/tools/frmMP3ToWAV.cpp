#include "tools/frmMP3ToWAV.h"
#include "ui_frmMP3ToWAV.h"

#include "common/CommonDialogs.h"
#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"
#include "common/Messages.h"
#include "common/Numbers.h"
#include "common/Platform.h"
#include "common/WaitPointer.h"
#include "common/Windows.h"
#include "components/Components.h"
#include "tools/JobKeys.h"

#include <QToolTip>

#include <optional>

using zib::Conversion;
using zib::FileDialogRequest;
using zib::OutputPlace::Target;

namespace {

constexpr int kFileNameBuffer = 1024;
constexpr int kProgressMs = 50;

const QString kNoSource = QStringLiteral("Please open an MP3 file for converting.");
const QString kNoTarget = QStringLiteral("Please set a WAV file for saving the converted MP3 file.");
const QString kSourceMissing = QStringLiteral("The following MP3 file does not exist.\n");
const QString kIsSource = QStringLiteral("The WAV file would replace the MP3 file itself. "
                                         "Please set another name for it.\n");
const QString kProtected =
    QStringLiteral("The following WAV file may not be written to, so it was left as it "
                   "is. Please set another name.\n");
const QString kBadFolder = QStringLiteral("The WAV file cannot be made in this folder: %1.\n%2");
const QString kReplace = QStringLiteral("The following WAV file exists already. Replace it?\n");
const QString kTooMany = QStringLiteral("So many names do not fit in one choice. Choose one file.");
const QString kNotConverted =
    QStringLiteral("The following MP3 file could not be converted whole, so no WAV file was made.\n");
const QString kCompleted = QStringLiteral("Converting Completed.");

} // namespace

frmMP3ToWAV::frmMP3ToWAV(const zib::Services& services, QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmMP3ToWAV>()), m_services(services),
      m_conversion(
          std::make_shared<Conversion>(services.components.makeFile(), services.components.makeFile()))
{
    ui->setupUi(this);
    connectControls();
    Form_Load();
}

frmMP3ToWAV::~frmMP3ToWAV()
{
    m_conversion->stop();
}

void frmMP3ToWAV::connectControls()
{
    connect(ui->cmdOpen, &QPushButton::clicked, this, &frmMP3ToWAV::cmdOpen_Click);
    connect(ui->cmdSave, &QPushButton::clicked, this, &frmMP3ToWAV::cmdSave_Click);
    connect(ui->cmdConvert, &QPushButton::clicked, this, &frmMP3ToWAV::cmdConvert_Click);
    connect(ui->cmdOptions, &QPushButton::clicked, this, &frmMP3ToWAV::cmdOptions_Click);
    connect(ui->CancelButton, &QPushButton::clicked, this, &frmMP3ToWAV::CancelButton_Click);
    connect(&m_progress, &QTimer::timeout, this, &frmMP3ToWAV::showProgress);
}

void frmMP3ToWAV::Form_Load()
{
    m_progress.setInterval(kProgressMs);
    IsConverting = false;
}

/// Neither Escape nor Enter may end a conversion: only the close box and the button do.
void frmMP3ToWAV::keyPressEvent(QKeyEvent* event)
{
    if (!IsConverting || !zib::endsDialogs(*event))
        QDialog::keyPressEvent(event);
}

void frmMP3ToWAV::cmdOpen_Click()
{
    const auto chosen = m_services.dialogs.openFile(
        this, requestFor(tr("Open an MP3 File"), tr("MP3 Files(*.mp3)|*.mp3"), gOptions.MP3Input));
    if (chosen) {
        ui->txtOpen->setText(
            zib::chosenPaths(*chosen).first()); // one file is converted, the first of several
        SuggestWavName();
    } else if (chosen.error().kind != zib::Failure::Kind::Cancelled) {
        QToolTip::showText(ui->cmdOpen->mapToGlobal(ui->cmdOpen->rect().bottomLeft()), kTooMany, this);
    }
}

void frmMP3ToWAV::SuggestWavName()
{
    QString name = ui->txtOpen->text().trimmed();
    const QString ending = QStringLiteral(".mp3");
    if (name.endsWith(ending, Qt::CaseInsensitive))
        name.chop(ending.size());
    ui->txtSave->setText(name + QStringLiteral(".wav"));
}

void frmMP3ToWAV::cmdSave_Click()
{
    const auto chosen = m_services.dialogs.saveFile(
        this, requestFor(tr("Save As WAV File"), tr("WAV Files(*.wav)|*.wav"), gOptions.WAVOutput));
    if (!chosen)
        return;
    m_chosenTarget = *chosen;
    ui->txtSave->setText(*chosen);
}

/// A file dialog that starts in a folder of the settings, which is made if it is missing. A folder that does
/// not answer is left alone; the dialog then starts where the last one was.
FileDialogRequest frmMP3ToWAV::requestFor(const QString& title, const QString& filter,
                                          const QString& folderSetting)
{
    const QString folder = GeneralAPI::SettingFolder(folderSetting);
    std::optional<bool> made;
    zib::Errands errand;
    errand.ask<bool>([folder] { return GeneralAPI::EnsureFolderPath(folder); },
                     [&made](bool is) { made = is; });
    if (made == false)
        GeneralAPI::TellFolderNotMade(folder);
    return {.title = title,
            .filter = filter,
            .flags = FileDialogRequest::AllowMultiselect | FileDialogRequest::FileMustExist |
                     FileDialogRequest::Explorer | FileDialogRequest::LongNames,
            .initialFolder = made ? folder : QString(),
            .maxFileSize = kFileNameBuffer};
}

void frmMP3ToWAV::cmdConvert_Click()
{
    const QString source = ui->txtOpen->text();
    const QString target = ui->txtSave->text();
    if (source.trimmed().isEmpty())
        return m_services.messages.information(this, kNoSource);
    if (target.trimmed().isEmpty())
        return m_services.messages.information(this, kNoTarget);
    setConverting(true);
    m_errands.ask<Target>([source, target] { return zib::OutputPlace::lookAtTarget(source, target); },
                          [this](const Target& place) { beginUnlessRefused(place); });
}

void frmMP3ToWAV::beginUnlessRefused(const Target& place)
{
    const QString reason = refusal(place);
    if (!reason.isEmpty() || (place.kind == Target::Kind::Taken && !mayReplace(place.path)))
        setConverting(false);
    if (IsConverting)
        ConvertFile(place.source, place.path);
    else if (place.kind == Target::Kind::NoSource || place.kind == Target::Kind::NoFolder)
        m_services.messages.critical(this, reason);
    else if (!reason.isEmpty())
        m_services.messages.information(this, reason);
}

QString frmMP3ToWAV::refusal(const Target& place) const
{
    switch (place.kind) {
    case Target::Kind::NoSource:
        return kSourceMissing + ui->txtOpen->text();
    case Target::Kind::IsSource:
        return kIsSource + place.path;
    case Target::Kind::Protected:
        return kProtected + place.path;
    case Target::Kind::NoFolder:
        return kBadFolder.arg(place.reason, GeneralAPI::GetFolderOfPath(place.path));
    default:
        return {};
    }
}

bool frmMP3ToWAV::mayReplace(const QString& path)
{
    return ui->txtSave->text() == m_chosenTarget ||
           m_services.messages.askYesNoCancel(this, kReplace + path, zib::Messages::Answer::No) ==
               zib::Messages::Answer::Yes;
}

void frmMP3ToWAV::cmdOptions_Click()
{
    m_services.windows.showOptions(this);
}

void frmMP3ToWAV::CancelButton_Click()
{
    close();
}

void frmMP3ToWAV::done(int result)
{
    m_conversion->stop();
    m_errands.forget();
    setConverting(false);
    QDialog::done(result);
}

void frmMP3ToWAV::ConvertFile(const QString& source, const QString& target)
{
    m_awake = zib::stayAwake(QStringLiteral("An MP3 file is being converted"));
    m_progress.start();
    m_errands.ask<Conversion::End>(
        [conversion = m_conversion, source, target] { return conversion->ConvertFile(source, target); },
        [this, source](Conversion::End end) { conversionEnded(end, source); });
}

void frmMP3ToWAV::conversionEnded(Conversion::End end, const QString& source)
{
    if (end != Conversion::End::NotOpened)
        showProgress();
    setConverting(false);
    if (end == Conversion::End::Broken)
        m_services.messages.critical(this, kNotConverted + source);
    m_services.messages.information(this, kCompleted);
    if (gOptions.ExploreAfterConverting)
        GeneralAPI::ExploreFolder(GeneralAPI::GetFolderOfPath(ui->txtSave->text().trimmed()));
}

void frmMP3ToWAV::showProgress()
{
    const auto percent = static_cast<qint16>(zib::roundHalfEven(m_conversion->percent()));
    ui->pbPer->setValue(percent);
    const QString caption = QStringLiteral("Progress  -  %1%").arg(percent);
    if (ui->frmPer->title() != caption) // a box lays itself out anew for every caption, equal or not
        ui->frmPer->setTitle(caption);
}

/// While a conversion runs, the bar has the focus: Enter on it does nothing.
void frmMP3ToWAV::setConverting(bool on)
{
    if (on == IsConverting)
        return;
    IsConverting = on;
    if (on) {
        ui->pbPer->setValue(0);
        ui->frmPer->setTitle(tr("Progress"));
        ui->pbPer->setFocus();
        m_wait = std::make_unique<zib::WaitPointer>(this);
    } else {
        m_progress.stop();
        m_awake.reset();
        m_wait.reset();
    }
    ui->CancelButton->setAutoDefault(!on);
    ui->cmdOptions->setAutoDefault(!on);
    ui->cmdConvert->setEnabled(!on);
    if (!on)
        ui->cmdConvert->setFocus();
}
