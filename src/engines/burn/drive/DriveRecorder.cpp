#include "engines/burn/drive/DriveRecorder.h"

#include "engines/burn/drive/DriveBurn.h"
#include "engines/burn/drive/DriveLedger.h"
#include "engines/burn/drive/DriveWords.h"
#include "engines/burn/drive/GrabbedDrive.h"
#include "engines/burn/drive/LibburnSession.h"
#include "engines/burn/mmc/DiscLook.h"

#include <QDeadlineTimer>
#include <QThread>

#include <memory>
#include <utility>

namespace zib {

namespace {

BurnError doesNotComeBack(const QString& path)
{
    return plainError(BurnErrorCode::kStalled,
                      QStringLiteral("\"%1\" has not come back from an earlier command. Wait for it, or "
                                     "switch it off and on again.")
                          .arg(path));
}

/// Why a drive cannot be asked, when it is we who have it.
std::optional<BurnError> whyInUse(const QString& path)
{
    switch (DriveLedger::useOf(path)) {
    case DriveLedger::Use::Hanging:
        return doesNotComeBack(path);
    case DriveLedger::Use::Writing:
        return plainError(
            BurnErrorCode::kBusy,
            QStringLiteral("\"%1\" is still finishing the disc of the window that was closed. Wait until "
                           "its end is told.")
                .arg(path));
    case DriveLedger::Use::Asked:
    case DriveLedger::Use::None:
        break;
    }
    return std::nullopt;
}

/// Why no drive at all can be written with: the library waits for one of them.
std::optional<BurnError> whyBlocked()
{
    const QString other = DriveLedger::hanging();
    if (other.isEmpty())
        return std::nullopt;
    return plainError(BurnErrorCode::kStalled,
                      QStringLiteral("\"%1\" has not come back from an earlier command, and until it does no "
                                     "drive can write. Wait for it, or switch it off and on again.")
                          .arg(other));
}

/// A drive that an earlier question still has is waited for, when nobody else waits for its answer any more.
std::unique_ptr<DriveLedger::Entry> askedAlone(const QString& path, int patienceMs,
                                               const InspectionTalk& talk)
{
    constexpr unsigned long kPauseMs = 50;
    const QDeadlineTimer deadline(patienceMs);
    auto entry = DriveLedger::enterIfFree(path, DriveLedger::Use::Asked);
    while (!entry && DriveLedger::useOf(path) <= DriveLedger::Use::Asked && !deadline.hasExpired() &&
           !talk.isCancelled()) {
        talk.say(waitingWords({}));
        QThread::msleep(kPauseMs);
        entry = DriveLedger::enterIfFree(path, DriveLedger::Use::Asked);
    }
    return entry;
}

/// What the disc's kind allows, told apart as the writing window asks.
int statusOf(const DiscFacts& facts)
{
    const bool rewritable = facts.profile == DiscFacts::kCdRw;
    if (!rewritable && facts.profile != DiscFacts::kCdR)
        return DVDWriterPro::kUnusableDisc;
    if (facts.status == DiscFacts::Status::Blank)
        return DVDWriterPro::kBlankDisc;
    if (facts.status == DiscFacts::Status::Appendable)
        return DVDWriterPro::kAppendableDisc;
    // A rewritable disc that is full could be used again once erased; it is told as holding data.
    if (facts.status == DiscFacts::Status::Complete && rewritable)
        return DVDWriterPro::kAppendableDisc;
    return DVDWriterPro::kUnusableDisc;
}

Medium troubled(const BurnError& error)
{
    Medium medium{.status = DVDWriterPro::kBlankDisc};
    medium.trouble = error;
    return medium;
}

/// The disc in a drive that nobody else has.
Medium mediumIn(DriveLine& line, const DrivePatience& patience, const InspectionTalk& talk)
{
    const DriveAnswer ready = awaitReady(line, patience.readyMs, [&talk](const DriveAnswer& last) {
        talk.say(waitingWords(last));
        return !talk.isCancelled();
    });
    if (ready.hasNoDisc())
        return {};
    DriveAnswer refusal = ready;
    const auto facts = ready.passing() ? std::nullopt : factsOf(line, refusal);
    if (!facts || !facts->profile)
        return troubled(answerError(
            refusal, line.path(),
            ready.passing() ? QStringLiteral("The drive does not become ready with this disc. Take it out "
                                             "and put it in again, or try another disc.")
                            : QStringLiteral("The drive does not tell what disc it holds. Switch it off "
                                             "and on again, or try another drive.")));
    return {.status = statusOf(*facts),
            .holdsData = facts->status == DiscFacts::Status::Complete ||
                         facts->status == DiscFacts::Status::Appendable,
            .capacity = facts->status == DiscFacts::Status::Blank ? facts->capacity : CdTime(),
            .speeds = speedsOf(line)};
}

} // namespace

std::optional<DriveRecorder::Traits> DriveRecorder::traitsOf(DriveLine& line)
{
    const auto abilities = abilitiesOf(line);
    if (!abilities)
        return std::nullopt;
    return Traits{.path = line.path(),
                  .maker = abilities->maker,
                  .model = abilities->model,
                  .writesCdR = abilities->isDisc && abilities->writesCdR,
                  .writesCdRw = abilities->isDisc && abilities->writesCdRw,
                  .sessionAtOnce = abilities->sessionAtOnce,
                  .trackAtOnce = abilities->trackAtOnce,
                  .simulates = abilities->simulates,
                  .bufferProtection = abilities->bufferProtection,
                  .told = true};
}

DriveRecorder::DriveRecorder(Traits traits, DrivePatience patience)
    : m_traits(std::move(traits)), m_patience(patience)
{
}

Outcome<Medium> DriveRecorder::inspect(const InspectionTalk& talk)
{
    const auto asking = askedAlone(path(), m_patience.readyMs, talk);
    if (!asking)
        return troubled(whyInUse(path()).value_or(doesNotComeBack(path())));
    const auto line = DriveLine::open(path(), DriveLine::Hold::Exclusive);
    if (!line)
        return line.error();
    return mediumIn(**line, m_patience, talk);
}

std::optional<BurnError> DriveRecorder::write(const BurnJob& job, BurnObserver& observer)
{
    if (const auto error = whyInUse(path()))
        return error;
    const DriveLedger::Entry writing(path(), DriveLedger::Use::Writing);
    bool told = false;
    LibburnSession session([&] {
        if (!std::exchange(told, true))
            observer.waiting(
                QStringLiteral("Waiting until the other drive has finished its disc, please wait..."));
        return !job.isCancelled();
    });
    if (!session)
        return BurnError::byUser();
    std::optional<BurnError> error = writeGrabbed(session, job, observer);
    if (DriveLedger::useOf(path()) != DriveLedger::Use::Hanging)
        if (const auto line = DriveLine::open(path(), DriveLine::Hold::Shared); line)
            unlockDoor(**line);
    return error;
}

std::optional<BurnError> DriveRecorder::writeGrabbed(LibburnSession& session, const BurnJob& job,
                                                     BurnObserver& observer)
{
    if (const auto error = whyBlocked())
        return error;
    observer.waiting(QStringLiteral("Making the drive ready, please wait..."));
    const Traits traits = currentTraits();
    GrabbedDrive grabbed(session, path(), m_patience.callMs, job.cancelled);
    if (job.isCancelled())
        return BurnError::byUser();
    if (!grabbed)
        return whyBlocked().value_or(BurnError::from(grabbed.failure()));
    return writeNamed(grabbed, traits, job, observer);
}

/// A drive that was busy when it was looked for is asked before it is written with.
DriveRecorder::Traits DriveRecorder::currentTraits() const
{
    if (m_traits.told)
        return m_traits;
    const auto line = DriveLine::open(path(), DriveLine::Hold::Exclusive);
    const auto traits = line ? traitsOf(**line) : std::nullopt;
    return traits.value_or(m_traits);
}

/// Names stand in the lead-in, which is written with the session at once. No drive says for sure whether it
/// takes them, so they are tried; one that does not gets the disc without them.
std::optional<BurnError> DriveRecorder::writeNamed(GrabbedDrive& grabbed, const Traits& traits,
                                                   const BurnJob& job, BurnObserver& observer)
{
    BurnJob nameless = job;
    nameless.names = {};
    if (!job.names.haveTracksNames())
        return DriveBurn(grabbed, traits, m_patience, job, observer).run();
    if (traits.sessionAtOnce) {
        DriveBurn burning(grabbed, traits, m_patience, job, observer);
        auto error = burning.run();
        if (!error || !burning.failedOverNames())
            return error;
    }
    auto error = DriveBurn(grabbed, traits, m_patience, nameless, observer).run();
    if (!error && !job.simulate)
        observer.remark(QStringLiteral("The disc carries no names: the drive did not take them."));
    return error;
}

void DriveRecorder::eject()
{
    constexpr int kEject = 2; // MMC-5, 6.42
    const auto asking = DriveLedger::enterIfFree(path(), DriveLedger::Use::Asked);
    const auto line = DriveLine::open(path(), DriveLine::Hold::Exclusive);
    if (!asking || !line)
        return;
    unlockDoor(**line);
    (*line)->send({0x1B, 0, 0, 0, kEject, 0}, {}, DriveLine::kLongMs);
}

} // namespace zib
