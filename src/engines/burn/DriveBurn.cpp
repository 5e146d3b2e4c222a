#include "engines/burn/DriveBurn.h"

#include "engines/burn/DiscReadback.h"

#include <QThread>

#include <algorithm>
#include <utility>

#include <libburn/libburn.h>

namespace zib {

namespace {

constexpr int kLibraryBlock = 2048;

BurnError plainError(qint32 code, const QString& description)
{
    return {.error = code, .description = description};
}

BurnError senseError(const Sense& sense, const QString& description)
{
    BurnError error = BurnError::withSense(writerErrorCode(sense), sense.toText());
    error.description = description;
    return error;
}

BurnError unreadable(const QString& name)
{
    return BurnError::from({Failure::Kind::UnreadableFile, name});
}

} // namespace

CdTime capacityOf(burn::burn_drive* drive)
{
    int start = 0;
    int end = 0;
    if (burn::burn_drive_get_start_end_lba(drive, &start, &end, 0) == 1 && end > 0)
        return CdTime::fromFrames(end + kPregapFrames);
    // The library counts sectors of data even where sound is going to be written.
    const qint64 sectors = burn::burn_disc_available_space(drive, nullptr) / kLibraryBlock;
    return CdTime::fromFrames(sectors > 0 ? sectors + kPregapFrames : 0);
}

DriveBurn::DriveBurn(GrabbedDrive& grabbed, const DriveRecorder::Traits& traits,
                     const DrivePatience& patience, const BurnJob& job, BurnObserver& observer)
    : m_grabbed(grabbed), m_traits(traits), m_patience(patience), m_job(job),
      m_observer(observer), m_mode{.sessionAtOnce = traits.sessionAtOnce,
                                   .simulate = job.simulate,
                                   .bufferProtection = job.bufferProtection && traits.bufferProtection,
                                   .multiSession = !job.closeDisc}
{
}

std::optional<BurnError> DriveBurn::run()
{
    m_messages.clear();
    auto line = DriveLine::open(m_traits.path, DriveLine::Hold::Shared);
    if (!line)
        return BurnError::from(line.error());
    m_line = std::move(*line);
    m_gate = std::make_shared<ModeGate>(m_line, m_mode, m_grabbed.knife());
    const auto plan = std::make_shared<DiscPlan>(m_job, m_gate);
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
    if (const std::optional<PlanFault> fault = zib::plan(*m_line, m_mode))
        return planError(*fault);
    return std::nullopt;
}

std::optional<BurnError> DriveBurn::write(burn::burn_write_opts* options,
                                          const std::shared_ptr<DiscPlan>& plan)
{
    m_messages.clear();
    m_gate->arm();
    burn::burn_disc_write(options, plan->disc());
    watch(plan);
    if (const std::optional<PlanFault> fault = m_gate->fault())
        return planError(*fault);
    return judge(*plan);
}

BurnError DriveBurn::planError(const PlanFault& fault) const
{
    switch (fault.kind) {
    case PlanFault::Kind::Refused:
        return senseError(
            *fault.sense,
            m_job.simulate ? QStringLiteral("The drive refused the test mode, so nothing was begun.")
                           : QStringLiteral("The drive refused the way of writing, so nothing was begun."));
    case PlanFault::Kind::TestMode:
        return plainError(
            BurnErrorCode::kUnsupported,
            m_job.simulate
                ? QStringLiteral("The drive would write really although only a test was asked for, so "
                                 "it was stopped. This drive has no test mode that can be trusted.")
                : QStringLiteral("The drive would only simulate, so it was stopped. Switch it off and "
                                 "on again, then write again."));
    case PlanFault::Kind::BufferProtection:
        return plainError(
            BurnErrorCode::kUnsupported,
            m_mode.bufferProtection
                ? QStringLiteral("The drive does not switch on its buffer under-run protection. Uncheck "
                                 "it in the options and write again.")
                : QStringLiteral("The drive does not switch off its buffer under-run protection. Check "
                                 "it in the options and write again."));
    case PlanFault::Kind::WriteType:
    case PlanFault::Kind::Closing:
        return plainError(
            BurnErrorCode::kUnsupported,
            QStringLiteral("The drive would write in another way than planned, so it was stopped. "
                           "Switch it off and on again, then write again."));
    case PlanFault::Kind::Lost:
        break;
    }
    return BurnError::from({Failure::Kind::DeviceGone, m_traits.path});
}

std::optional<BurnError> DriveBurn::checkDisc()
{
    burn::burn_drive* drive = m_grabbed.drive();
    if (burn::burn_disc_get_status(drive) != burn::BURN_DISC_BLANK) {
        m_messages.collect();
        return driveError(QStringLiteral("There is no blank disc in the drive any more."));
    }
    const CdTime capacity = capacityOf(drive);
    if (capacity.frames() > 0 && m_job.totalLength() > capacity)
        return senseError({5, 0x21, 0}, QStringLiteral("The tracks need %1 of the disc's %2.")
                                            .arg(m_job.totalLength().toMsf(), capacity.toMsf()));
    return {};
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
    m_messages.collect();
    return driveError(QStringLiteral("Drive and disc do not allow this write: %1")
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
            break;
        // What a drive does after a failure or a cancel is no progress.
        if (!m_cancelSent && !m_messages.sense())
            report(progress, status);
        const bool wanted = m_job.isCancelled();
        m_cancelledByUser = m_cancelledByUser || (wanted && !m_cancelSent);
        m_stuck = m_stuck || (!m_cancelSent && stalled(progress, status));
        if (wanted || m_stuck || !plan->failedFile().isEmpty())
            stopDrive();
        if (m_cancelSent && m_sinceCancel.elapsed() > m_patience.cancelMs) {
            m_stuck = true;
            m_grabbed.leaveWriting(plan);
            return;
        }
        QThread::msleep(static_cast<unsigned long>(m_patience.pollMs));
    }
    m_wroteWell = burn::burn_drive_wrote_well(m_grabbed.drive()) == 1;
}

void DriveBurn::stopDrive()
{
    if (m_cancelSent)
        return;
    m_cancelSent = true;
    m_sinceCancel.start();
    burn::burn_drive_cancel(m_grabbed.drive());
}

/// Tells of each track once, in order, also of those that passed between two looks.
void DriveBurn::readUpTo(int track)
{
    while (m_track < track)
        m_observer.readingTrack(++m_track);
}

void DriveBurn::report(const burn::burn_progress& progress, int status)
{
    const int track = std::clamp(progress.track + 1, 1, static_cast<int>(m_job.tracks.size()));
    switch (status) {
    case burn::BURN_DRIVE_WRITING: {
        m_phase = Phase::Writing;
        readUpTo(track);
        m_trackClosing = false;
        const qint64 size = m_job.tracks.at(track - 1).length.bytes();
        m_observer.progress(track, std::clamp<qint64>(qint64{progress.sector} * kBytesPerFrame, 0, size),
                            size);
        break;
    }
    case burn::BURN_DRIVE_CLOSING_TRACK:
        if (!m_trackClosing)
            m_observer.closingTrack(track);
        m_trackClosing = true;
        break;
    case burn::BURN_DRIVE_WRITING_LEADOUT:
    case burn::BURN_DRIVE_CLOSING_SESSION:
        readUpTo(static_cast<int>(m_job.tracks.size()));
        if (m_phase != Phase::Closing)
            m_observer.closingDisc();
        m_phase = Phase::Closing;
        break;
    default:
        break;
    }
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

std::optional<BurnError> DriveBurn::judge(const DiscPlan& plan)
{
    if (const QString file = plan.failedFile(); !file.isEmpty())
        return unreadable(file);
    if (m_cancelledByUser)
        return BurnError::byUser();
    if (m_stuck) {
        BurnError error =
            driveError(QStringLiteral("The drive stopped answering. Switch it off and on again."));
        error.error = m_messages.sense() ? DVDWriterPro::kDriveError : BurnErrorCode::kStalled;
        return error;
    }
    if (!m_wroteWell)
        return driveError(m_phase == Phase::Closing ? QStringLiteral("The drive could not close the disc.")
                          : m_track > 0 ? QStringLiteral("The drive could not write track %1.").arg(m_track)
                                        : QStringLiteral("The drive could not begin to write."));
    if (m_job.simulate)
        return lookWhetherBlank();
    readUpTo(static_cast<int>(m_job.tracks.size()));
    if (m_phase != Phase::Closing)
        m_observer.closingDisc();
    return readBack();
}

/// After a simulation the disc must be what it was.
std::optional<BurnError> DriveBurn::lookWhetherBlank()
{
    m_messages.clear();
    const bool read = m_grabbed.reassess();
    m_messages.collect();
    if (!m_grabbed)
        return BurnError::from(m_grabbed.failure());
    const burn::burn_disc_status state = burn::burn_disc_get_status(m_grabbed.drive());
    if (read && state == burn::BURN_DISC_BLANK)
        return std::nullopt;
    if (read && (state == burn::BURN_DISC_APPENDABLE || state == burn::BURN_DISC_FULL))
        return plainError(
            BurnErrorCode::kVerify,
            QStringLiteral("The disc is no longer blank although only a test was asked for. Do not use "
                           "this disc; this drive has no test mode that can be trusted."));
    BurnError error =
        driveError(QStringLiteral("The test went through, but the disc could not be looked at afterwards."));
    return error;
}

BurnError DriveBurn::driveError(const QString& description) const
{
    if (m_messages.connectionLost() && !m_messages.sense())
        return BurnError::from({Failure::Kind::DeviceGone, m_traits.path});
    if (!m_messages.sense())
        return plainError(BurnErrorCode::kUnsupported, description);
    return senseError(*m_messages.sense(), description);
}

std::optional<BurnError> DriveBurn::readBack()
{
    m_messages.clear();
    const bool read = m_grabbed.reassess();
    m_messages.collect();
    if (!m_grabbed)
        return BurnError::from(m_grabbed.failure());
    burn::burn_drive* drive = m_grabbed.drive();
    const burn::burn_disc_status state = burn::burn_disc_get_status(drive);
    const bool closed =
        state == burn::BURN_DISC_FULL || (!m_job.closeDisc && state == burn::BURN_DISC_APPENDABLE);
    const std::optional<DiscContents> contents = read && closed ? contentsOf(drive) : std::nullopt;
    if (contents && shows(*contents, m_job, !m_traits.sessionAtOnce))
        return {};
    BurnError error = driveError(QStringLiteral(
        "The disc was written, but it does not show the tracks when it is read back. Do not use it."));
    if (error.error != DVDWriterPro::kDriveError)
        error.error = BurnErrorCode::kVerify;
    return error;
}

} // namespace zib
