// What has become of the disc once the library has done its work.

#include "engines/burn/drive/DriveBurn.h"

#include "engines/burn/compare/DiscCheck.h"
#include "engines/burn/compare/DriveSound.h"
#include "engines/burn/compare/DriveText.h"
#include "engines/burn/compare/ReadOffset.h"
#include "engines/burn/drive/DriveWords.h"

#include <optional>

namespace zib {

DiscVerdict DriveBurn::look(int patienceMs)
{
    return judgeDisc(*m_line, m_job, !m_traits.sessionAtOnce, patienceMs, [this](const DriveAnswer& last) {
        m_observer.waiting(waitingWords(last));
        return true;
    });
}

/// Without a layout nothing is written, so a disc that was blank then and is not now is another one.
QString DriveBurn::whatBecameOfTheDisc(const DiscVerdict& verdict) const
{
    const bool nothingWritten = m_messages.step() == LibburnMessages::Step::Layout;
    if (nothingWritten && verdict.truth == DiscVerdict::Truth::Begun)
        return QStringLiteral(
            "Nothing was written: the disc in the drive is not the one that was there before. "
            "Insert an empty disc and write again.");
    return verdict.sentence();
}

std::optional<BurnError> DriveBurn::readBack()
{
    m_phases.readBack();
    const DiscVerdict verdict = look(m_patience.closeMs);
    if (verdict.truth == DiscVerdict::Truth::Whole)
        return {};
    if (verdict.truth == DiscVerdict::Truth::Unknown) {
        BurnError error =
            answerError(verdict.refusal, m_traits.path,
                        QStringLiteral("The disc was written and closed without an error, but it could "
                                       "not be read back. Listen to it before you throw it away."));
        error.error = error.senseData.isEmpty() ? BurnErrorCode::kVerify : error.error;
        return error;
    }
    if (verdict.truth == DiscVerdict::Truth::Blank)
        return plainError(
            BurnErrorCode::kVerify,
            QStringLiteral("The drive reported no error, but read back, the disc is still blank: nothing was "
                           "written. Try another disc or another drive."));
    return plainError(
        BurnErrorCode::kVerify,
        QStringLiteral("The disc was written, but it does not show the tracks when it is read back. "
                       "Do not use it; write again on another disc."));
}

/// A disc that was written to its end is closed and shows its tracks, carries its names and holds every
/// sample.
std::optional<BurnError> DriveBurn::check()
{
    if (auto error = readBack())
        return error;
    checkNames();
    return m_job.verify ? compare() : std::nullopt;
}

/// Names that are missing or garbled are no reason to throw a disc away, and drives that do not read CD-TEXT
/// are many.
void DriveBurn::checkNames()
{
    if (m_textPacks.isEmpty())
        return;
    const auto packs = textPacksOf(*m_line);
    if (packs && *packs != m_textPacks)
        m_observer.remark(
            QStringLiteral("The sound is on the disc, but the names of its tracks are not as they were "
                           "sent to the drive."));
}

std::optional<BurnError> DriveBurn::compare()
{
    m_observer.comparing(1, 0, m_job.tracks.first().length.frames());
    DriveAnswer refusal;
    const auto contents = contentsOf(*m_line, refusal);
    if (!contents || contents->tracks.size() != m_job.tracks.size())
        return answerError(
            refusal, m_traits.path,
            QStringLiteral("The disc was written, but it could not be compared with its files. "
                           "Listen to it before you throw it away."));
    QList<qint64> starts;
    for (const DiscContents::Track& track : contents->tracks)
        starts << track.start;
    const QList<DiscPiece> pieces = piecesAt(m_job.tracks, starts);
    DriveSound sound(m_line, contents->leadOut, m_job.cancelled, [this] {
        m_observer.waiting(QStringLiteral("Waiting for the drive to go on reading, please wait..."));
    });
    auto wrong = compareWithFiles(sound, pieces, readOffsetOf(sound, pieces), m_job, m_observer);
    if (wrong && wrong->error == BurnErrorCode::kVerify)
        wrong->description += QStringLiteral(" Write another disc, or write at a lower speed.");
    return wrong;
}

/// After a simulation the disc must be what it was.
std::optional<BurnError> DriveBurn::lookWhetherBlank()
{
    m_phases.readBack();
    const DiscVerdict verdict = look(m_patience.closeMs);
    if (verdict.truth == DiscVerdict::Truth::Blank)
        return std::nullopt;
    return notBlank(verdict, m_traits.path);
}

} // namespace zib
