#include "burn/frmPrepare.h"

#include "ui_frmPrepare.h"

#include "burn/BlockPump.h"
#include "burn/PreparedFiles.h"
#include "common/CdTime.h"
#include "common/GeneralAPI.h"
#include "common/Messages.h"
#include "common/NameBearer.h"
#include "common/NativeName.h"
#include "common/Numbers.h"
#include "common/Platform.h"
#include "common/WaitPointer.h"
#include "components/Components.h"

#include <QCoreApplication>

#include <algorithm>
#include <functional>
#include <optional>

namespace {
constexpr int kFirstTickMs = 50;
} // namespace

frmPrepare::frmPrepare(const zib::Services& services, const QList<zib::CompilationRow>& rows, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint),
      ui(std::make_unique<Ui::frmPrepare>()), m_services(services),
      m_information(services.components.makeInformation()), m_fileReader(services.components.makeFile()),
      m_fileWriter(services.components.makeFile()), m_list(m_information, rows)
{
    ui->setupUi(this);
    connectControls();
    Form_Load();
}

frmPrepare::~frmPrepare() = default;

void frmPrepare::connectControls()
{
    m_timer.setObjectName(QStringLiteral("Timer1"));
    connect(&m_timer, &QTimer::timeout, this, &frmPrepare::Timer1_Timer);
}

void frmPrepare::Form_Load()
{
    m_fileWriter->setOutputFormat(zib::kCdSampleRate, zib::kCdChannels, zib::kCdBits);
    m_timer.start(kFirstTickMs);
}

void frmPrepare::Timer1_Timer()
{
    m_timer.stop();
    PrepareTracks();
    if (const QString damage = m_damaged.text(); !damage.isEmpty() && !m_abandoned)
        m_services.messages.information(this, damage);
    m_done = true;
    if (!m_abandoned)
        accept();
}

void frmPrepare::abandon()
{
    m_abandoned = true;
    m_timer.stop();
    close();
}

void frmPrepare::reject()
{
    if (m_done || m_abandoned)
        QDialog::reject();
}

void frmPrepare::PrepareTracks()
{
    using Look = zib::TrackList::Look;
    m_list.BuildTrackList([this](const std::function<Look()>& question) { return ask<Look>(question); });
    const auto conversions = m_list.CountConversions();
    if (!conversions)
        return;
    m_conversions = *conversions;
    const auto awake = zib::stayAwake(QStringLiteral("Tracks are being prepared for a disc"));
    for (qsizetype row = 0; row < m_list.size() && !m_abandoned; ++row)
        prepareRow(row);
}

void frmPrepare::prepareRow(qsizetype row)
{
    const QString source = m_list.source(row);
    const QString entry = m_list.entry(row);
    m_damaged.add(source, m_list.loss(row), zib::kCdSampleRate);
    if (m_list.needsConversion(row)) {
        ui->lblFile->setText(GeneralAPI::GetFileNameOfPath(source));
        ui->lblFile->setToolTip(source.toHtmlEscaped());
        ConvertFile(source, entry);
        ++m_finished;
    }
    using Stamp = std::optional<zib::FileStamp>;
    zib::PreparedFiles::note(entry, ask<Stamp>([entry] { return zib::stampOf(entry); }));
}

/// Converts one file, or leaves none: a source that cannot be read to its end gives no track that looks
/// whole.
void frmPrepare::ConvertFile(const QString& source, const QString& target)
{
    const zib::WaitPointer wait(this);
    m_list.makeFolder(GeneralAPI::GetFolderOfPath(target));
    const bool isBegun = beginConversion(source, target);
    const bool isWhole = isBegun && convertBlocks();
    if (isWhole)
        m_damaged.add(source, m_fileReader->loss(), m_fileReader->formatRate());
    const QString trouble = troubleWith(source);
    if (isBegun)
        ask<bool>([writer = m_fileWriter, isWhole] {
            isWhole ? writer->close() : writer->discard();
            return true;
        });
    zib::PreparedFiles::noteTrouble(target, isWhole ? troubleWith(source) : trouble);
    ask<bool>([reader = m_fileReader] {
        reader->close();
        return true;
    });
}

/// @returns what is known to keep the track of a source from being made; empty when nothing does.
QString frmPrepare::troubleWith(const QString& source) const
{
    if (m_abandoned) // The thread may still be using the files.
        return {};
    if (m_fileReader->status() < 0)
        return tr("This file cannot be read:") + u'\n' + source;
    if (m_fileWriter->status() < 0)
        return tr("The track of this file cannot be stored, perhaps the disk is full:") + u'\n' + source;
    return {};
}

/// @returns whether there is a source to read, and a target that was begun and must be ended.
bool frmPrepare::beginConversion(const QString& source, const QString& target)
{
    return ask<bool>([=, reader = m_fileReader, writer = m_fileWriter] {
        reader->open(source);
        if (reader->status() < 0)
            return false;
        writer->create(target);
        // What bore the name before create would be replaced at the end; nobody was asked about it.
        const bool isFree = writer->status() >= 0 && !zib::bearerOf(zib::nativeName(target)).someone;
        if (!isFree)
            writer->discard();
        return isFree;
    });
}

/// @returns whether the whole sound went from the one file into the other.
bool frmPrepare::convertBlocks()
{
    m_fileWriter->setInputFormat(m_fileReader->formatRate(), m_fileReader->formatChannels());
    const auto blockLength = zib::product32(m_fileReader->formatRate(), m_fileReader->formatChannels());
    if (!blockLength)
        return false;
    const qint64 length = m_fileReader->length();
    const qint64 channels = std::max(m_fileReader->samplesPerUnit(), 1);
    zib::BlockPump pump(m_worker, m_fileReader, m_fileWriter, *blockLength);
    qint64 position = 0;
    while (const qint64 samples = pump.next(this, [this] { return !m_abandoned; })) {
        position = std::min(position + samples / channels, length);
        showProgress(length > 0 ? static_cast<double>(position) / static_cast<double>(length) : 1);
        QCoreApplication::processEvents();
    }
    return !m_abandoned && m_fileReader->status() >= 0 && m_fileWriter->status() >= 0 && position > 0;
}

void frmPrepare::showProgress(double fraction)
{
    const auto percent =
        static_cast<int>(zib::roundHalfEven(zib::preparedPercent(m_finished, fraction, m_conversions)));
    ui->pbPer->setValue(percent);
    ui->lblPer->setText(QStringLiteral("%1%").arg(percent));
}

/// Asks on the thread and serves the window meanwhile.  @param question owns what it uses.  @returns an empty
/// answer once the window was abandoned.
template <typename Answer, typename Question>
Answer frmPrepare::ask(Question question)
{
    return m_worker.askOpenly<Answer>(this, std::move(question), [this] { return !m_abandoned; })
        .value_or(Answer{});
}
