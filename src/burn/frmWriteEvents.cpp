#include "burn/frmWrite.h"

#include "ui_frmWrite.h"

#include "burn/WriteProgress.h"
#include "burn/WriteTexts.h"
#include "common/Messages.h"
#include "common/Numbers.h"
#include "components/DVDWriterPro.h"

// The writing window's events: what the writer tells of a write, and how it ended.

void frmWrite::connectWriter()
{
    const DVDWriterPro* writer = m_writer.get();
    connect(writer, &DVDWriterPro::PreparingToWrite, this, &frmWrite::DVDWriterPro1_PreparingToWrite);
    connect(writer, &DVDWriterPro::CachingProgress, this, &frmWrite::DVDWriterPro1_CachingProgress);
    connect(writer, &DVDWriterPro::ReadingTrack, this, &frmWrite::DVDWriterPro1_ReadingTrack);
    connect(writer, &DVDWriterPro::WritingProgress, this, &frmWrite::DVDWriterPro1_WritingProgress);
    connect(writer, &DVDWriterPro::ClosingTrack, this, &frmWrite::DVDWriterPro1_ClosingTrack);
    connect(writer, &DVDWriterPro::ClosingDisc, this, &frmWrite::DVDWriterPro1_ClosingDisc);
    connect(writer, &DVDWriterPro::Waiting, this, &frmWrite::DVDWriterPro1_Waiting);
    connect(writer, &DVDWriterPro::ComparingTrack, this, &frmWrite::DVDWriterPro1_ComparingTrack);
    connect(writer, &DVDWriterPro::Remark, this, &frmWrite::DVDWriterPro1_Remark);
    connect(writer, &DVDWriterPro::WriteCompleted, this, &frmWrite::DVDWriterPro1_WriteCompleted);
    connect(writer, &DVDWriterPro::WriteCancelled, this, &frmWrite::DVDWriterPro1_WriteCancelled);
    connect(writer, &DVDWriterPro::WriteError, this, &frmWrite::DVDWriterPro1_WriteError);
}

void frmWrite::DVDWriterPro1_PreparingToWrite()
{
    showPhase(QStringLiteral("Preparing to Write Disc...."));
    ui->pbPer->setValue(0);
    ui->lblPer->setText(QStringLiteral("Percent:   0%"));
    EnableControls(false);
}

void frmWrite::DVDWriterPro1_CachingProgress(qint16 percent)
{
    showPhase(QStringLiteral("Caching - %1%").arg(percent));
}

void frmWrite::DVDWriterPro1_ReadingTrack(const QString& fileName, qint32 number, qint32 track)
{
    CurrentTrack = zib::narrowed<qint16>(track).value_or(CurrentTrack);
    showPhase(WriteTexts::reading(track, number, fileName));
}

void frmWrite::DVDWriterPro1_WritingProgress(qint32 track, qint32 done, qint32 size)
{
    if (showPercent(track, done, size))
        showPhase(QStringLiteral("Writing Track #%1 ... ").arg(track));
}

void frmWrite::DVDWriterPro1_ClosingTrack(qint32 track)
{
    showPhase(WriteTexts::closingTrack(track));
}

void frmWrite::DVDWriterPro1_ClosingDisc()
{
    showPhase(WriteTexts::kClosingDisc);
}

/// The bar runs a second time: comparing takes as long as writing.
void frmWrite::DVDWriterPro1_ComparingTrack(qint32 track, qint32 done, qint32 size)
{
    if (showPercent(track, done, size))
        showPhase(QStringLiteral("Comparing Track #%1 ... ").arg(track));
}

void frmWrite::DVDWriterPro1_Waiting(const QString& what)
{
    showPhase(what);
}

void frmWrite::DVDWriterPro1_Remark(const QString& text)
{
    showNote(text);
}

void frmWrite::DVDWriterPro1_WriteCompleted()
{
    writeEnded();
    ui->lblStatus->setText(QStringLiteral("Writing Completed."));
    m_services.messages.information(this, WriteTexts::kCompleted);
    if (!m_writer->testWrite())
        m_writer->finish(false);
    EnableControls(true);
}

void frmWrite::DVDWriterPro1_WriteCancelled()
{
    writeEnded();
    ui->lblStatus->setText(WriteTexts::kCancelled);
    EnableControls(true);
}

void frmWrite::DVDWriterPro1_WriteError(qint32 error, qint32 sense, const QString& description,
                                        const QString& senseData)
{
    writeEnded();
    m_services.messages.critical(this, WriteTexts::error(error, sense, description, senseData));
    ui->lblStatus->setText(m_invitation);
    EnableControls(true);
}

/// @returns whether the numbers make a percentage; if not, everything stays as it was.
bool frmWrite::showPercent(qint32 track, qint32 done, qint32 size)
{
    const auto percent = zib::overallPercent(track, done, size, TrackCount);
    if (!percent)
        return false;
    ui->lblPer->setText(QStringLiteral("Percent:   %1%").arg(*percent));
    ui->pbPer->setValue(*percent);
    return true;
}

/// A box that stands overnight keeps no system awake.
void frmWrite::writeEnded()
{
    m_writing = false;
    m_awake.reset();
}

/// Once Cancel was pressed, what still goes on is no news.
void frmWrite::showPhase(const QString& text)
{
    if (!m_cancelling)
        ui->lblStatus->setText(text);
}

void frmWrite::showNote(const QString& text)
{
    ui->lblNote->setText(text);
    ui->lblNote->setVisible(!text.isEmpty());
}
