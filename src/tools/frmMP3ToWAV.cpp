#include "tools/frmMP3ToWAV.h"
#include "ui_frmMP3ToWAV.h"

#include "common/CdTime.h"
#include "common/CommonDialogs.h"
#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"
#include "common/Messages.h"
#include "common/Numbers.h"
#include "common/WaitPointer.h"
#include "common/Windows.h"
#include "components/Components.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <algorithm>

using zib::FileDialogRequest;

namespace {

constexpr int kFileNameBuffer = 1024;
constexpr double kWhole = 100;

const QString kNoSource = QStringLiteral("Please open an MP3 file for converting.");
const QString kNoTarget = QStringLiteral("Please set a WAV file for saving the converted MP3 file.");
const QString kSourceMissing = QStringLiteral("The following MP3 file does not exist.\n");
const QString kNotConverted =
    QStringLiteral("The following MP3 file could not be converted whole, so no WAV file was made.\n");
const QString kCompleted = QStringLiteral("Converting Completed.");

/// A file dialog that starts in a folder of the settings, which is made if it is missing.
FileDialogRequest requestFor(const QString& title, const QString& filter, const QString& folderSetting)
{
    const QString folder = GeneralAPI::SettingFolder(folderSetting);
    GeneralAPI::MakeFolderPath(folder);
    return {.title = title,
            .filter = filter,
            .flags = FileDialogRequest::AllowMultiselect | FileDialogRequest::FileMustExist |
                     FileDialogRequest::Explorer | FileDialogRequest::LongNames,
            .initialFolder = folder,
            .maxFileSize = kFileNameBuffer};
}

} // namespace

frmMP3ToWAV::frmMP3ToWAV(const zib::Services& services, QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmMP3ToWAV>()), m_services(services),
      m_FileR(services.components.makeFile()), m_FileW(services.components.makeFile())
{
    ui->setupUi(this);
    connectControls();
    Form_Load();
}

frmMP3ToWAV::~frmMP3ToWAV() = default;

void frmMP3ToWAV::connectControls()
{
    connect(ui->cmdOpen, &QPushButton::clicked, this, &frmMP3ToWAV::cmdOpen_Click);
    connect(ui->cmdSave, &QPushButton::clicked, this, &frmMP3ToWAV::cmdSave_Click);
    connect(ui->cmdConvert, &QPushButton::clicked, this, &frmMP3ToWAV::cmdConvert_Click);
    connect(ui->cmdOptions, &QPushButton::clicked, this, &frmMP3ToWAV::cmdOptions_Click);
    connect(ui->CancelButton, &QPushButton::clicked, this, &frmMP3ToWAV::CancelButton_Click);
}

void frmMP3ToWAV::Form_Load()
{
    IsConverting = false;
    m_FileW->setSixteenBitBlocks(false);
    m_FileR->setSixteenBitBlocks(false);
    m_FileW->setRateAndChannels(zib::kCdSampleRate, zib::kCdChannels);
}

void frmMP3ToWAV::cmdOpen_Click()
{
    const auto chosen = m_services.dialogs.openFile(
        this, requestFor(tr("Open an MP3 File"), tr("MP3 Files(*.mp3)|*.mp3"), gOptions.MP3Input));
    if (!chosen)
        return;
    const QStringList paths = zib::chosenPaths(*chosen);
    ui->txtOpen->setText(paths.first()); // one file is converted, the first of several
    SuggestWavName();
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
    if (chosen)
        ui->txtSave->setText(*chosen);
}

void frmMP3ToWAV::cmdConvert_Click()
{
    const QString source = ui->txtOpen->text();
    const QString target = ui->txtSave->text();
    if (source.trimmed().isEmpty())
        return m_services.messages.information(this, kNoSource);
    if (target.trimmed().isEmpty())
        return m_services.messages.information(this, kNoTarget);
    if (!QFileInfo(source).isFile())
        return m_services.messages.critical(this, kSourceMissing + source);

    m_FileW->setOutputFormat(zib::kCdSampleRate, zib::kCdChannels, zib::kCdBits);
    setConverting(true);
    QCoreApplication::processEvents();
    ConvertFile(source, target);
    QCoreApplication::processEvents();
    setConverting(false);
    if (m_unloaded)
        return;
    m_services.messages.information(this, kCompleted);
    if (gOptions.ExploreAfterConverting)
        GeneralAPI::ExploreFolder(GeneralAPI::GetFolderOfPath(ui->txtSave->text()));
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
    m_unloaded = m_unloaded || IsConverting;
    IsConverting = false;
    QDialog::done(result);
}

void frmMP3ToWAV::ConvertFile(const QString& source, const QString& target)
{
    GeneralAPI::MakeFolderPath(GeneralAPI::GetFolderOfPath(target));
    const zib::WaitPointer wait(this);
    if (m_FileR->open(source) >= 0 && m_FileW->create(target) >= 0) {
        const qint32 a = m_FileR->formatRate();
        const qint32 b = m_FileR->formatChannels();
        m_FileW->setInputFormat(a, b);
        const std::optional<qint32> request = zib::product32(a, b);
        const bool whole = request && pump(*request);
        if (whole)
            m_FileW->close();
        else
            m_FileW->discard();
        if (!m_unloaded && (!whole || m_FileW->status() < 0))
            m_services.messages.critical(this, kNotConverted + source);
    }
    m_FileR->close();
}

bool frmMP3ToWAV::pump(qint32 request)
{
    SamplesDone = 0;
    while (IsConverting) {
        const zib::AudioBlock block = m_FileR->readBlock(request);
        if (block.isEmpty())
            return m_FileR->status() >= 0;
        m_FileW->writeBlock(block);
        if (m_FileW->status() < 0)
            return false;
        showProgress(block.sampleCount());
        QCoreApplication::processEvents();
    }
    return false;
}

void frmMP3ToWAV::showProgress(qint64 blockSamples)
{
    const qint64 length = m_FileR->length();
    const double units = static_cast<double>(blockSamples) / m_FileR->samplesPerUnit();
    SamplesDone = std::min(zib::roundHalfEven(units + static_cast<double>(SamplesDone)), length);
    const double part = length > 0 ? static_cast<double>(SamplesDone) / static_cast<double>(length) : 1;
    ConvertPercent = std::min(part * kWhole, kWhole);
    const auto percent = static_cast<qint16>(zib::roundHalfEven(ConvertPercent));
    ui->pbPer->setValue(percent);
    const QString caption = QStringLiteral("Progress  -  %1%").arg(percent);
    if (ui->frmPer->title() != caption) // a box lays itself out anew for every caption, equal or not
        ui->frmPer->setTitle(caption);
}

void frmMP3ToWAV::setConverting(bool on)
{
    IsConverting = on;
    m_unloaded = m_unloaded && !on;
    ui->cmdConvert->setEnabled(!on);
}
