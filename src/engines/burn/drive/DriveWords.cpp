#include "engines/burn/drive/DriveWords.h"

#include <algorithm>

namespace zib {

BurnError plainError(qint32 code, const QString& description)
{
    return {.error = code, .description = description};
}

BurnError withoutSense(const QString& what, const QString& reason)
{
    return plainError(BurnErrorCode::kUnsupported,
                      what +
                          (reason.isEmpty() ? QStringLiteral(" It gave no reason.")
                                            : QStringLiteral(" The writing library says: %1.").arg(reason)) +
                          QStringLiteral(" Switch it off and on again, or try another drive."));
}

/// By the sense key (SPC-3, 4.5.6), which tells whether the disc, the drive or the command is at fault.
QString adviceOn(const Sense& sense)
{
    constexpr int kNoMedium = 0x3A;
    switch (sense.key) {
    case 2:
        return sense.asc == kNoMedium
                   ? QStringLiteral(" Put an empty disc in and write again.")
                   : QStringLiteral(" Switch the drive off and on again, then write again.");
    case 3:
        return QStringLiteral(" Try a disc of another make, or a lower speed.");
    case 4:
        return QStringLiteral(" Switch the drive off and on again, or try another drive.");
    case 5:
        return QStringLiteral(" Try another disc, or another drive.");
    default:
        return {};
    }
}

BurnError senseError(const Sense& sense, const QString& description)
{
    BurnError error = BurnError::withSense(writerErrorCode(sense), sense.toText());
    error.description = description;
    return error;
}

BurnError answerError(const DriveAnswer& answer, const QString& path, const QString& what)
{
    if (answer.kind == DriveAnswer::Kind::Refused)
        return senseError(answer.sense, what);
    if (answer.good())
        return plainError(BurnErrorCode::kUnsupported, what);
    BurnError error = BurnError::from({Failure::Kind::DeviceGone, path});
    error.description = what + u' ' + error.description;
    return error;
}

BurnError notBlank(const DiscVerdict& verdict, const QString& path)
{
    if (verdict.truth == DiscVerdict::Truth::Unknown)
        return answerError(
            verdict.refusal, path,
            QStringLiteral(
                "The test went through, but the drive did not tell whether the disc is still blank. "
                "Look at it in another drive before you use it."));
    return plainError(
        BurnErrorCode::kVerify,
        QStringLiteral("The disc is no longer blank although only a test was asked for. Do not use "
                       "this disc; this drive has no test mode that can be trusted."));
}

BurnError tooLong(const CdTime& needed, const CdTime& there)
{
    constexpr Sense kPastTheEnd{5, 0x21, 0}; // SPC: logical block address out of range
    return senseError(kPastTheEnd,
                      QStringLiteral("The tracks need %1 with their gaps, the disc holds %2. Take tracks off "
                                     "the list, or insert a disc that holds more.")
                          .arg(needed.toMsf(), there.toMsf()));
}

namespace {

/// What a drive that would write otherwise than planned leaves the user to do.
QString planWords(PlanFault::Kind kind, const WritePlan& wanted)
{
    switch (kind) {
    case PlanFault::Kind::Refused:
        return wanted.simulate
                   ? QStringLiteral(
                         "The drive refused the test mode, so it was stopped. Uncheck the test mode "
                         "in the options, or try another drive.")
                   : QStringLiteral("The drive refused the way of writing, so it was stopped. Switch it off "
                                    "and on again, or try another drive.");
    case PlanFault::Kind::TestMode:
        return wanted.simulate
                   ? QStringLiteral("The drive would write really although only a test was asked for, so "
                                    "it was stopped. This drive has no test mode that can be trusted.")
                   : QStringLiteral("The drive would only simulate, so it was stopped. Switch it off and "
                                    "on again, then write again.");
    case PlanFault::Kind::BufferProtection:
        return wanted.bufferProtection
                   ? QStringLiteral("The drive does not switch on its buffer under-run protection. Uncheck "
                                    "it in the options and write again.")
                   : QStringLiteral("The drive does not switch off its buffer under-run protection. Check "
                                    "it in the options and write again.");
    case PlanFault::Kind::WriteType:
    case PlanFault::Kind::Closing:
        return QStringLiteral("The drive would write in another way than planned, so it was stopped. "
                              "Switch it off and on again, then write again.");
    case PlanFault::Kind::Untold:
        return QStringLiteral("The drive does not tell in what way it would write, so it was stopped. Switch "
                              "it off and on again, or try another drive.");
    case PlanFault::Kind::Lost:
        break;
    }
    return {};
}

} // namespace

BurnError planError(const PlanFault& fault, const WritePlan& wanted, const QString& path)
{
    if (fault.kind == PlanFault::Kind::Lost)
        return BurnError::from({Failure::Kind::DeviceGone, path});
    const QString words = planWords(fault.kind, wanted);
    return fault.kind == PlanFault::Kind::Refused ? senseError(*fault.sense, words)
                                                  : plainError(BurnErrorCode::kUnsupported, words);
}

QString failedStep(const LibburnMessages& messages, WritePhases::Phase phase, int track, bool sessionAtOnce)
{
    const QString closingDisc = QStringLiteral("The drive could not close the disc.");
    switch (messages.step()) {
    case LibburnMessages::Step::Layout:
        return QStringLiteral("The drive refused the layout of the disc.");
    case LibburnMessages::Step::Place:
        return QStringLiteral("The drive did not tell where track %1 is to begin.").arg(messages.track());
    case LibburnMessages::Step::Write:
        return QStringLiteral("The drive could not write track %1.").arg(std::max(track, 1));
    case LibburnMessages::Step::Flush:
        if (sessionAtOnce || phase >= WritePhases::Phase::ClosingDisc)
            return closingDisc;
        return QStringLiteral("The drive could not finish track %1.").arg(std::max(track, 1));
    case LibburnMessages::Step::Close:
        return closingDisc;
    case LibburnMessages::Step::Other:
        break;
    }
    switch (phase) {
    case WritePhases::Phase::Preparing:
        return QStringLiteral("The drive could not begin to write.");
    case WritePhases::Phase::Writing:
        return QStringLiteral("The drive could not write track %1.").arg(track);
    case WritePhases::Phase::ClosingTrack:
        return QStringLiteral("The drive could not finish track %1.").arg(track);
    case WritePhases::Phase::ClosingDisc:
    case WritePhases::Phase::ReadingBack:
        break;
    }
    return closingDisc;
}

int trackAt(int address, const BurnJob& job)
{
    qint64 end = -kPregapFrames;
    for (int track = 1; track <= job.tracks.size(); ++track) {
        end += kPregapFrames + job.tracks.at(track - 1).length.frames();
        if (address < end)
            return track;
    }
    return static_cast<int>(job.tracks.size());
}

QString waitingWords(WritePhases::Phase phase)
{
    if (phase == WritePhases::Phase::Preparing)
        return QStringLiteral("Waiting for the drive to begin to write, please wait...");
    return QStringLiteral("Waiting for the drive to go on writing, please wait...");
}

QString waitingWords(const DriveAnswer& answer)
{
    if (answer.kind != DriveAnswer::Kind::Refused)
        return QStringLiteral("Waiting for the drive to answer, please wait...");
    if (answer.sense.asc == 0x04 && answer.sense.ascq == 0x01)
        return QStringLiteral("Waiting for the drive to become ready, please wait... ") +
               answer.sense.toText();
    return QStringLiteral("Waiting for the drive, please wait... ") + answer.sense.toText();
}

} // namespace zib
