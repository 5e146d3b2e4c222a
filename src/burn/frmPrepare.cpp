#include "burn/frmPrepare.h"

#include "ui_frmPrepare.h"

#include "burn/PreparedFiles.h"
#include "common/CdTime.h"
#include "common/GeneralAPI.h"
#include "common/NameBearer.h"
#include "common/NativeName.h"
#include "common/Numbers.h"
#include "common/Platform.h"
#include "common/WaitPointer.h"
#include "components/Components.h"

#include <QCoreApplication>

#include <algorithm>

namespace {
/// While formats are looked at, the window is served so often.
constexpr qint64 kBreathMs = 40;
constexpr int kFirstTickMs = 50;
} // namespace

frmPrepare::frmPrepare(const zib::Services& services, const QList<zib::CompilationRow>& rows, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint),
      ui(std::make_unique<Ui::frmPrepare>()), AInfo(services.components.makeInformation()),
      FileR(services.components.makeFile()), FileW(services.components.makeFile()), m_list(*AInfo, rows)
{
    ui->setupUi(this);
    connectControls();
    Form_Load();
}

frmPrepare::~frmPrepare() = default;

void frmPrepare::connectControls()
{
    connect(&Timer1, &QTimer::timeout, this, &frmPrepare::Timer1_Timer);
}

void frmPrepare::Form_Load()
{
    FileW->setOutputFormat(zib::kCdSampleRate, zib::kCdChannels, zib::kCdBits);
    Timer1.start(kFirstTickMs);
}

void frmPrepare::Timer1_Timer()
{
    Timer1.stop();
    PrepareTracks();
    m_done = true;
    accept();
}

void frmPrepare::reject()
{
    if (m_done)
        QDialog::reject();
}

void frmPrepare::PrepareTracks()
{
    m_sinceBreath.start();
    m_list.BuildTrackList([this] {
        if (m_sinceBreath.hasExpired(kBreathMs))
            breathe();
    });
    const auto conversions = m_list.CountConversions();
    if (!conversions)
        return;
    m_conversions = *conversions;
    const auto awake = zib::stayAwake(QStringLiteral("Tracks are being prepared for a disc"));
    for (qsizetype row = 0; row < m_list.size(); ++row) {
        if (m_list.needsConversion(row)) {
            ui->lblFile->setText(GeneralAPI::GetFileNameOfPath(m_list.source(row)));
            ui->lblFile->setToolTip(m_list.source(row).toHtmlEscaped());
            ConvertFile(m_list.source(row), m_list.entry(row));
            ++m_finished;
        }
        zib::PreparedFiles::note(m_list.entry(row));
    }
}

/// Converts one file, or leaves none: a source that cannot be read to its end gives no track that looks
/// whole.
void frmPrepare::ConvertFile(const QString& source, const QString& target)
{
    const zib::WaitPointer wait(this);
    m_list.makeFolder(GeneralAPI::GetFolderOfPath(target));
    FileR->open(source);
    if (FileR->status() >= 0) {
        FileW->create(target);
        // What bore the name before create would be replaced at the end; nobody was asked about it.
        if (FileW->status() >= 0 && !zib::bearerOf(zib::nativeName(target)).someone && convertBlocks())
            FileW->close();
        else
            FileW->discard();
    }
    FileR->close();
}

/// @returns whether the whole sound went from the one file into the other.
bool frmPrepare::convertBlocks()
{
    FileW->setInputFormat(FileR->formatRate(), FileR->formatChannels());
    const auto blockLength = zib::product32(FileR->formatRate(), FileR->formatChannels());
    if (!blockLength)
        return false;
    const qint64 length = FileR->length();
    const qint64 channels = std::max(FileR->samplesPerUnit(), 1);
    qint64 position = 0;
    for (;;) {
        const zib::AudioBlock block = FileR->readBlock(*blockLength);
        if (block.isEmpty())
            break;
        FileW->writeBlock(block);
        position = std::min(position + block.sampleCount() / channels, length);
        showProgress(length > 0 ? static_cast<double>(position) / static_cast<double>(length) : 1);
        breathe();
        if (FileW->status() < 0)
            return false;
    }
    return FileR->status() >= 0 && position > 0;
}

void frmPrepare::showProgress(double fraction)
{
    const auto percent =
        static_cast<int>(zib::roundHalfEven(zib::preparedPercent(m_finished, fraction, m_conversions)));
    ui->pbPer->setValue(percent);
    ui->lblPer->setText(QStringLiteral("%1%").arg(percent));
}

void frmPrepare::breathe()
{
    QCoreApplication::processEvents();
    m_sinceBreath.start();
}
