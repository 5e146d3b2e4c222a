#include "engines/burn/compare/DiscCheck.h"

#include "engines/burn/compare/DiscComparison.h"

namespace zib {

namespace {

const QString kCannotBeRead = QStringLiteral("cannot be read");
const QString kGivenUp = QStringLiteral(" that were looked at before the comparing was given up");

QString frames(qint64 count, const QString& ofOne, const QString& ofMany)
{
    return count == 1 ? QStringLiteral("1 frame %1").arg(ofOne)
                      : QStringLiteral("%1 frames %2").arg(count).arg(ofMany);
}

/// What is wrong, from the first place on.
QString difference(const ComparisonResult& result)
{
    const QString place =
        (result.inPregap ? QStringLiteral("the pause before track %1") : QStringLiteral("track %1"))
            .arg(result.firstTrack);
    QStringList counts;
    if (result.differingFrames > 0)
        counts << frames(result.differingFrames, QStringLiteral("differs"), QStringLiteral("differ"));
    if (result.unreadableFrames > 0)
        counts << frames(result.unreadableFrames, kCannotBeRead, kCannotBeRead);
    return QStringLiteral(
               "The disc was written, but it is not what the files hold: the first difference is in %1 at "
               "%2 (minutes:seconds:frames); of %3 frames of 1/75 second%4, %5.")
        .arg(place, result.firstPlace.toMsf())
        .arg(result.comparedFrames)
        .arg(result.givenUp ? kGivenUp : QString(), counts.join(QStringLiteral(", ")));
}

/// Why there was nothing to compare with any more. The disc is written, so no word of writing it again.
QString reason(const Failure& failure)
{
    switch (failure.kind) {
    case Failure::Kind::NoMedium:
        return QStringLiteral("It was taken out of the drive.");
    case Failure::Kind::WrongMedium:
        return QStringLiteral("The disc in the drive was changed.");
    case Failure::Kind::DeviceGone:
        return QStringLiteral("The drive \"%1\" does not answer any more.").arg(failure.detail);
    case Failure::Kind::Unsupported:
        return QStringLiteral("The drive refuses to read sound.");
    case Failure::Kind::UnreadableFile:
        return QStringLiteral("\"%1\" cannot be read any more, or is not what it was.").arg(failure.detail);
    default:
        return BurnError::from(failure).description;
    }
}

std::optional<BurnError> unfinished(const Failure& failure)
{
    return BurnError{.error = BurnError::from(failure).error,
                     .description =
                         QStringLiteral("The disc was written, but it could not be compared with its "
                                        "files. %1 Listen to it before you throw it away.")
                             .arg(reason(failure))};
}

DiscComparison::Progress tellingTo(BurnObserver& observer)
{
    return [&observer](int track, qint64 done, qint64 of) { observer.comparing(track, done, of); };
}

std::optional<BurnError> verdict(const Outcome<ComparisonResult>& compared, BurnObserver& observer)
{
    if (!compared && compared.error().kind == Failure::Kind::Cancelled) {
        observer.remark(QStringLiteral("The disc was written, but not compared with its files."));
        return std::nullopt;
    }
    if (!compared)
        return unfinished(compared.error());
    if (compared->isIdentical())
        return std::nullopt;
    return BurnError{.error = BurnErrorCode::kVerify, .description = difference(*compared)};
}

} // namespace

std::optional<BurnError> compareWithFiles(DiscSamples& disc, const QList<DiscPiece>& pieces, int readOffset,
                                          const BurnJob& job, BurnObserver& observer)
{
    return verdict(DiscComparison(disc, pieces, job.cancelled, tellingTo(observer)).run(readOffset),
                   observer);
}

std::optional<BurnError> compareWithFiles(const QString& image, const QList<DiscPiece>& pieces, qint64 seen,
                                          const BurnJob& job, BurnObserver& observer)
{
    return verdict(compareImage(image, pieces, seen, job.cancelled, tellingTo(observer)), observer);
}

} // namespace zib
