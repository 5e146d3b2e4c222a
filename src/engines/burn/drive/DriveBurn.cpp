#include "engines/burn/drive/DriveBurn.h"

#include "engines/burn/drive/DriveWords.h"

#include <QThread>

#include <algorithm>
#include <utility>

#include <libburn/libburn.h>

namespace zib {

namespace {

BurnError unreadable(const QString& name)
{
    return BurnError::from({Failure::Kind::UnreadableFile, name});
}

LibraryView viewOf(const burn::burn_progress& progress, int status, int tracksBegun)
{
    return {.begun = tracksBegun,
            .atTrack = status == burn::BURN_DRIVE_WRITING,
            .closingSession =
                status == burn::BURN_DRIVE_CLOSING_SESSION || status == burn::BURN_DRIVE_WRITING_LEADOUT,
            .track = progress.track + 1,
            .sector = progress.sector,
            .sectors = progress.sectors};
}

} // namespace

DriveBurn::DriveBurn(GrabbedDrive& grabbed, const DriveRecorder::Traits& traits,
                     const DrivePatience& patience, const BurnJob& job, BurnObserver& observer)
    : m_grabbed(grabbed), m_traits(traits), m_patience(patience), m_job(job),
      m_observer(observer), m_mode{.sessionAtOnce = traits.sessionAtOnce,
                                   .simulate = job.simulate,
                                   .bufferProtection = job.bufferProtection && traits.bufferProtection,
                                   .multiSession = !job.closeDisc},
      m_phases(job, traits.sessionAtOnce, observer)
{
}

std::optional<BurnError> DriveBurn::run()
{
    m_messages.clear();
    const auto line = DriveLine::open(m_traits.path, DriveLine::Hold::Shared);
    if (!line)
        return BurnError::from(line.error());
    m_line = *line;
    m_gate = std::make_shared<ModeGate>(m_line, m_mode, m_grabbed.knife());
    const auto plan = std::make_shared<DiscPlan>(m_job, m_gate, cdTextOf(m_job.names));
    m_textPacks = plan->textPacks();
    if (const QString missing = plan->failedFile(); !missing.isEmpty())
        return unreadable(missing);
    if (auto error = checkDisc())
        return error;
    burn::burn_write_opts* options = burn::burn_write_opts_new(m_grabbed.drive());
    auto error = configure(options, plan->disc());
    if (!error)
        error = setMode();
    if (!error)
        error = write(options, plan);
    burn::burn_write_opts_free(options);
    return error;
}

/// The drive is told how to write before the library tells it again, and proves that it took it.
std::optional<BurnError> DriveBurn::setMode()
{
    if (m_job.speed > 0)
        burn::burn_drive_set_speed(m_grabbed.drive(), 0, m_job.speed);
    if (const std::optional<PlanFault> fault = zib::plan(*m_line, m_mode)) {
        BurnError error = planError(*fault, m_mode, m_traits.path);
        error.description += QStringLiteral(" Nothing was written.");
        return error;
    }
    return std::nullopt;
}

std::optional<BurnError> DriveBurn::write(burn::burn_write_opts* options,
                                          const std::shared_ptr<DiscPlan>& plan)
{
    m_messages.clear();
    m_gate->arm();
    m_thread.start([options, &plan] { burn::burn_disc_write(options, plan->disc()); });
    watch(plan);
    return judge(*plan);
}

/// Looked at under our own hands: what stood in the drive before may have been changed since.
std::optional<BurnError> DriveBurn::checkDisc()
{
    DriveAnswer refusal;
    const auto facts = factsOf(*m_line, refusal);
    if (!facts && refusal.hasNoDisc())
        return senseError(refusal.sense, QStringLiteral("The disc was taken out of the drive, so nothing was "
                                                        "written. Insert an empty disc and write again."));
    if (!facts)
        return answerError(
            refusal, m_traits.path,
            QStringLiteral("The drive did not tell what disc it holds, so nothing was written. Switch "
                           "it off and on again, or try another drive."));
    if (facts->status != DiscFacts::Status::Blank)
        return BurnError::from({Failure::Kind::WrongMedium, m_traits.path});
    if (facts->capacity.frames() > 0 && m_job.totalLength() > facts->capacity)
        return tooLong(m_job.totalLength(), facts->capacity);
    return m_traits.sessionAtOnce ? std::nullopt : checkPlace();
}

/// A library that is not told where a track is to begin would write somewhere else.
std::optional<BurnError> DriveBurn::checkPlace()
{
    const DriveAnswer place = nextTrackOf(*m_line);
    constexpr int kAddressEnd = 12; // Of the track's start (MMC-5, 6.27.3).
    if (place.good() && place.data.size() >= kAddressEnd)
        return std::nullopt;
    return answerError(place, m_traits.path,
                       QStringLiteral("The drive does not tell where the first track is to begin, so nothing "
                                      "was written. Switch it off and on again, or try another drive."));
}

std::optional<BurnError> DriveBurn::configure(burn::burn_write_opts* options, burn::burn_disc* disc)
{
    const bool simulates =
        !m_job.simulate || (burn::burn_write_opts_set_simulate(options, 1) == 1 && m_traits.simulates);
    if (!simulates)
        return plainError(BurnErrorCode::kUnsupported,
                          QStringLiteral("This drive has no test mode. Uncheck it in the options."));
    burn::burn_write_opts_set_underrun_proof(options, m_job.bufferProtection ? 1 : 0);
    burn::burn_write_opts_set_multi(options, m_job.closeDisc ? 0 : 1);
    burn::burn_write_opts_set_perform_opc(options, 0);
    if (m_traits.sessionAtOnce)
        burn::burn_write_opts_set_write_type(options, burn::BURN_WRITE_SAO, burn::BURN_BLOCK_SAO);
    else
        burn::burn_write_opts_set_write_type(options, burn::BURN_WRITE_TAO, burn::BURN_BLOCK_MODE1);
    char reasons[BURN_REASONS_LEN] = {};
    if (burn::burn_precheck_write(options, disc, reasons, 1) > 0)
        return {};
    return plainError(
        BurnErrorCode::kUnsupported,
        QStringLiteral("Drive and disc do not allow this write: %1 Try another disc or another drive.")
            .arg(QString::fromLatin1(reasons).simplified()));
}

void DriveBurn::watch(const std::shared_ptr<DiscPlan>& plan)
{
    m_sinceSign.start();
    for (;;) {
        burn::burn_progress progress = {};
        const int status = burn::burn_drive_get_status(m_grabbed.drive(), &progress);
        m_messages.collect();
        if (status == burn::BURN_DRIVE_IDLE)
            return m_thread.endsWithin(m_patience.cancelMs) ? takeEnd() : leave(plan);
        follow(progress, status);
        if (m_stuck || !plan->failedFile().isEmpty() || mayStillCancel())
            stopDrive();
        if (m_cancelSent && m_sinceCancel.elapsed() > m_patience.cancelMs)
            return leave(plan);
        seeToTheDoor();
        tellWait();
        QThread::msleep(static_cast<unsigned long>(m_patience.pollMs));
    }
}

/// What a drive does after a failure or a cancel is no progress.
void DriveBurn::follow(const burn::burn_progress& progress, int status)
{
    if (!m_cancelSent && !m_messages.failed())
        m_phases.see(viewOf(progress, status, m_gate->tracksBegun()));
    m_stuck = m_stuck || (!m_cancelSent && stalled(progress, status));
}

void DriveBurn::takeEnd()
{
    m_messages.collect();
    m_wroteWell = burn::burn_drive_wrote_well(m_grabbed.drive()) == 1;
}

void DriveBurn::leave(const std::shared_ptr<DiscPlan>& plan)
{
    m_stuck = true;
    m_grabbed.leaveWriting(m_thread, plan);
}

/// A write that was stopped and does not end soon may hang: whoever waits for the disc should get it.
void DriveBurn::seeToTheDoor()
{
    constexpr qint64 kSoonMs = 2000;
    if (m_cancelSent && m_sinceCancel.elapsed() > kSoonMs && !std::exchange(m_doorTried, true))
        m_grabbed.unlockAside();
}

/// A wait that nothing on the screen explains is said, once until the drive goes on.
void DriveBurn::tellWait()
{
    constexpr qint64 kSoonMs = 1500;
    const bool explained = m_cancelSent || m_phases.phase() > WritePhases::Phase::Writing;
    const bool waiting = !explained && m_sinceSign.elapsed() > kSoonMs;
    if (waiting && !m_waitTold)
        m_observer.waiting(waitingWords(m_phases.phase()));
    m_waitTold = waiting;
}

/// A disc that lacks nothing but its closing is finished: stopping it now would only spoil it.
bool DriveBurn::mayStillCancel() const
{
    return m_job.isCancelled() && !m_phases.handedOver();
}

void DriveBurn::stopDrive()
{
    if (std::exchange(m_cancelSent, true))
        return;
    m_failedFirst = m_messages.failed() && m_phases.phase() != WritePhases::Phase::Preparing;
    m_sinceCancel.start();
    burn::burn_drive_cancel(m_grabbed.drive());
}

bool DriveBurn::stalled(const burn::burn_progress& progress, int status)
{
    const qint64 sign = (qint64{status} << 56) + (qint64{progress.track} << 40) + progress.sector;
    if (sign != m_lastSign) {
        m_lastSign = sign;
        m_sinceSign.restart();
        return false;
    }
    const bool writing =
        status == burn::BURN_DRIVE_WRITING && progress.sector > 0 && progress.sector < progress.sectors;
    return m_sinceSign.elapsed() > (writing ? m_patience.writeMs : m_patience.closeMs);
}

bool DriveBurn::failedOverNames() const
{
    return !m_textPacks.isEmpty() && m_phases.phase() == WritePhases::Phase::Preparing &&
           !m_job.isCancelled() && !m_stuck && !m_gate->fault() && m_grabbed &&
           m_truth == DiscVerdict::Truth::Blank;
}

/// The end is what has become of the disc, whatever came first.
std::optional<BurnError> DriveBurn::judge(const DiscPlan& plan)
{
    if (m_wroteWell && !m_cancelSent && !m_gate->fault())
        return m_job.simulate ? lookWhetherBlank() : check();
    BurnError error = failure(plan);
    m_observer.waiting(QStringLiteral("Asking the drive about its disc, please wait..."));
    const DiscVerdict verdict = m_grabbed ? look(m_patience.readyMs) : DiscVerdict{};
    m_truth = verdict.truth;
    const bool blankAsItMustBe = m_job.simulate && verdict.truth == DiscVerdict::Truth::Blank;
    if (error.cancelled) {
        if (verdict.truth == DiscVerdict::Truth::Whole && !m_job.simulate) {
            m_phases.readBack();
            return std::nullopt;
        }
        m_observer.remark(verdict.sentence());
    } else if (!blankAsItMustBe) {
        error.description += u' ' + whatBecameOfTheDisc(verdict);
    }
    return error;
}

/// Why the library did not come to its end, by what the drive said first.
BurnError DriveBurn::failure(const DiscPlan& plan) const
{
    if (const std::optional<PlanFault> fault = m_gate->fault())
        return planError(*fault, m_mode, m_traits.path);
    if (const QString file = plan.failedFile(); !file.isEmpty())
        return unreadable(file);
    if (m_cancelSent && !m_stuck && !m_failedFirst)
        return BurnError::byUser();
    const bool addressed = m_mode.sessionAtOnce && m_messages.step() == LibburnMessages::Step::Write;
    const int track =
        addressed ? trackAt(m_messages.address(), m_job) : std::max(m_phases.track(), m_messages.track());
    const bool isNext = track > m_phases.track() && m_phases.phase() == WritePhases::Phase::ClosingTrack;
    const QString step = failedStep(m_messages, isNext ? WritePhases::Phase::Writing : m_phases.phase(),
                                    track, m_mode.sessionAtOnce);
    if (m_stuck && !m_messages.sense())
        return plainError(BurnErrorCode::kStalled,
                          step + QStringLiteral(" The drive stopped answering. Switch it off and on again."));
    return driveError(step);
}

BurnError DriveBurn::driveError(const QString& description) const
{
    if (m_messages.sense())
        return senseError(*m_messages.sense(), description + adviceOn(*m_messages.sense()));
    if (!m_messages.connectionLost() && !m_messages.transportFailed())
        return withoutSense(description, m_messages.reason());
    return answerError({}, m_traits.path, description);
}

} // namespace zib
