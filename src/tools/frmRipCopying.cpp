#include "tools/frmRip.h"
#include "ui_frmRip.h"

#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"
#include "common/Messages.h"
#include "common/Platform.h"
#include "components/CDRipperX.h"
#include "tools/RipProgress.h"
#include "tools/RipRows.h"

#include <exception>

// Copying tracks, from the folder they go into to the extraction's last event.

using zib::OutputPlace::Folder;

namespace {

const QString kUnread = QStringLiteral("Some tracks could not be copied, and no files were made of them:\n");

} // namespace

void frmRip::cmdRip_Click()
{
    if (m_starting)
        return;
    RipDone = 0;
    RipTotal = CountCheckedTracks();
    if (RipTotal < 1) {
        m_services.messages.information(this, QStringLiteral("Please check tracks to rip."));
        unsetCursor();
        return;
    }
    m_starting = true;
    setCursor(Qt::WaitCursor);
    m_errands.ask<Folder>(
        [typed = ui->txtSaveTo->text(), names = zib::RipRows::namesToWrite(ui->lvwTracks)] {
            return zib::OutputPlace::lookAtFolder(typed, names);
        },
        [this](const Folder& folder) { startUnlessRefused(folder); });
}

/// A folder that is of no use is told before anything changes, and no file is replaced unasked.
void frmRip::startUnlessRefused(const Folder& folder)
{
    unsetCursor();
    if (!folder.reason.isEmpty()) {
        m_services.messages.information(this, zib::OutputPlace::refusal(folder));
    } else if (leaveTaken(folder)) {
        EnableControls(false);
        m_ripper->clearQueue();
        queueTracks(folder);
        if (!startExtraction())
            m_services.messages.information(this, QStringLiteral("Extraction could not be started."));
    }
    m_starting = false;
}

/// Takes the ticks from tracks whose files are there and are to stay.  @returns whether any is left to copy.
bool frmRip::leaveTaken(const Folder& folder)
{
    if (folder.taken.isEmpty())
        return CountCheckedTracks() > 0;
    const QString question = zib::OutputPlace::replaceQuestion(folder);
    switch (m_services.messages.askYesNoCancel(this, question, zib::Messages::Answer::No)) {
    case zib::Messages::Answer::Cancel:
        return false;
    case zib::Messages::Answer::No:
        zib::RipRows::untick(ui->lvwTracks, folder.taken);
        break;
    default:
        break;
    }
    RipTotal = CountCheckedTracks();
    return RipTotal > 0;
}

void frmRip::CDRipperX1_ExtractionStarted()
{
    m_awake = zib::stayAwake(QStringLiteral("Tracks of a disc are being copied"));
    setCursor(Qt::WaitCursor);
    IsRipping = true;
}

void frmRip::CDRipperX1_TrackStarted(const QString&, qint32 start, qint32 end, qint32)
{
    TrackStartPos = start;
    TrackEndPos = end;
}

void frmRip::CDRipperX1_ExtractionProgress(int kind, qint32 position)
{
    if (kind != CDRipperX::kPositionProgress || RipTotal < 1 || TrackEndPos == TrackStartPos)
        return;
    const double fraction = zib::fractionDone(TrackStartPos, TrackEndPos, position);
    ui->pbRip->setValue(zib::overallRipped(RipDone, fraction, RipTotal));
    ui->lblRip->setText(QStringLiteral("Progress:  %1%").arg(ui->pbRip->value()));
}

void frmRip::CDRipperX1_TrackFinished()
{
    RipDone = static_cast<qint16>(RipDone + 1);
    if (RipTotal > 0)
        ui->pbRip->setValue(static_cast<int>(zib::finishedRipped(RipDone, RipTotal)));
}

void frmRip::CDRipperX1_ExtractionFinished()
{
    IsRipping = false;
    m_awake.reset();
    unsetCursor();
    EnableControls(true);
    ui->lvwTracks->setFocus();
    m_services.messages.information(this, QStringLiteral("Audio Ripping Completed."));
    if (const QStringList unread = m_ripper->unreadTracks(); !unread.isEmpty())
        m_services.messages.information(this, kUnread + unread.join(u'\n'));
    if (gOptions.ExploreAfterRipping)
        GeneralAPI::ExploreFolder(ui->txtSaveTo->text());
}

qint16 frmRip::CountCheckedTracks() const
{
    return zib::RipRows::countTicked(ui->lvwTracks);
}

/// The list may be emptied while one of the boxes is open, when the disc is taken out.
void frmRip::queueTracks(const Folder& folder)
{
    for (int track = 1; track <= ui->lvwTracks->topLevelItemCount(); ++track)
        if (zib::RipRows::isTicked(ui->lvwTracks, track))
            queueTrack(track, folder);
}

void frmRip::queueTrack(int track, const Folder& folder)
{
    ui->pbRip->setValue(0);
    ui->lblRip->setText(QStringLiteral("Progress:  0%"));
    const QString name = zib::RipRows::fileName(ui->lvwTracks, track);
    const QString path = GeneralAPI::JoinPath(folder.path, name);
    if (!m_ripper->isAudioTrack(track))
        m_services.messages.information(
            this, zib::trackText(track, QStringLiteral("is a data track and cannot be extracted!")));
    else if (!m_ripper->addTrack(track, path, folder.seen.value(name)))
        m_services.messages.information(
            this, zib::trackText(track, QStringLiteral("could not be added for extraction!")));
}

/// An error raised by the component is trapped: it only gives the pointer back. Refused means false.
bool frmRip::startExtraction()
{
    try {
        return m_ripper->start();
    } catch (const std::exception&) {
        unsetCursor();
        return true;
    }
}
