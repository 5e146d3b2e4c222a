#include "engines/burn/drive/DiscVerdict.h"

namespace zib {

QString DiscVerdict::sentence() const
{
    switch (truth) {
    case Truth::Blank:
        return QStringLiteral("The disc is still blank and can be used.");
    case Truth::Whole:
        return QStringLiteral(
            "Read back, the disc is closed and shows every track in its full length. Listen to it "
            "before you throw it away.");
    case Truth::Begun:
        return QStringLiteral("The disc was begun and is not to be used.");
    case Truth::Unknown:
        break;
    }
    if (refusal.hasNoDisc())
        return QStringLiteral(
            "There is no disc in the drive any more. Look at it in another drive before you "
            "use it.");
    return QStringLiteral(
        "The drive does not tell what has become of the disc. Look at it in another drive before "
        "you use it.");
}

DiscVerdict judgeDisc(DriveLine& line, const BurnJob& job, bool trackAtOnce, int patienceMs,
                      const WhileWaiting& going)
{
    DiscVerdict verdict;
    verdict.refusal = awaitReady(line, patienceMs, going);
    const auto facts = factsOf(line, verdict.refusal);
    if (!facts)
        return verdict;
    verdict.truth = DiscVerdict::Truth::Begun;
    if (facts->status == DiscFacts::Status::Blank) {
        verdict.truth = DiscVerdict::Truth::Blank;
        return verdict;
    }
    const bool closed = facts->status == DiscFacts::Status::Complete ||
                        (!job.closeDisc && facts->status == DiscFacts::Status::Appendable);
    if (!closed)
        return verdict;
    const auto contents = contentsOf(line, verdict.refusal);
    if (!contents)
        verdict.truth = DiscVerdict::Truth::Unknown;
    else if (facts->sessions == 1 && shows(*contents, job, trackAtOnce))
        verdict.truth = DiscVerdict::Truth::Whole;
    return verdict;
}

} // namespace zib
