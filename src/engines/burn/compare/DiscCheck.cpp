#include "engines/burn/compare/DiscCheck.h"

#include "engines/burn/compare/DiscComparison.h"

namespace zib {

namespace {

QString frames(qint64 count, const QString& what)
{
    return count == 1 ? QStringLiteral("1 frame %1").arg(what)
                      : QStringLiteral("%1 frames %2").arg(count).arg(what);
}

/// What is wrong, from the first place on.
QString difference(const ComparisonResult& result)
{
    const QString place =
        (result.inPregap ? QStringLiteral("the pause before track %1") : QStringLiteral("track %1"))
            .arg(result.firstTrack);
    QStringList counts;
    if (result.differingFrames > 0)
        counts << frames(result.differingFrames, QStringLiteral("differ"));
    if (result.unreadableFrames > 0)
        counts << frames(result.unreadableFrames, QStringLiteral("cannot be read"));
    return QStringLiteral(
               "The disc was written, but it is not what the files hold: the first difference is in %1 at "
               "%2 (minutes:seconds:frames); of %3 frames of 1/75 second, %4. Write another disc, or write "
               "at a lower speed.")
        .arg(place, result.firstPlace.toMsf())
        .arg(result.comparedFrames)
        .arg(counts.join(QStringLiteral(", ")));
}

std::optional<BurnError> unfinished(const Failure& failure)
{
    BurnError error = BurnError::from(failure);
    error.description.prepend(
        QStringLiteral("The disc was written, but it could not be compared with its files. "));
    return error;
}

} // namespace

std::optional<BurnError> compareWithFiles(DiscSamples& disc, const QList<DiscPiece>& pieces, int readOffset,
                                          const BurnJob& job, BurnObserver& observer)
{
    const auto tell = [&observer](int track, qint64 done, qint64 of) { observer.comparing(track, done, of); };
    const auto compared = DiscComparison(disc, pieces, job.cancelled, tell).run(readOffset);
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

} // namespace zib
