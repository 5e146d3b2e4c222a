#include "engines/burn/compare/DiscComparison.h"
#include "engines/burn/compare/ImageMatch.h"
#include "engines/burn/compare/ImageSound.h"

#include <QThread>

#include <algorithm>
#include <functional>
#include <future>
#include <vector>

namespace zib {

namespace {

/// A minute of sound: long enough to be worth a thread.
constexpr qint64 kPartFrames = qint64{60} * kFramesPerSecond;
/// More get no more out of the memory, and each holds some megabytes of the files.
constexpr int kMostAtOnce = 3;

using Part = QList<DiscPiece>;

int atOnce()
{
    return std::clamp(QThread::idealThreadCount(), 1, kMostAtOnce);
}

/// The stretches of a disc, in order, in parts of about the same length.
QList<Part> partsOf(const QList<DiscPiece>& pieces)
{
    QList<Part> parts;
    qint64 frames = kPartFrames;
    for (const DiscPiece& piece : inParts(pieces, kPartFrames)) {
        if (frames >= kPartFrames) {
            parts << Part();
            frames = 0;
        }
        parts.last() << piece;
        frames += piece.length.frames();
    }
    return parts;
}

/// Adds what a later part brought.
void add(ComparisonResult& whole, const ComparisonResult& part)
{
    whole.comparedFrames += part.comparedFrames;
    whole.differingFrames += part.differingFrames;
    whole.unreadableFrames += part.unreadableFrames;
    whole.givenUp = whole.givenUp || part.givenUp;
    if (whole.firstTrack > 0 || part.firstTrack == 0)
        return;
    whole.firstTrack = part.firstTrack;
    whole.firstPlace = part.firstPlace;
    whole.inPregap = part.inPregap;
}

/// Looks quickly for as long as all is well; from there on closely.
Outcome<ComparisonResult> comparePart(const QString& image, const Part& part,
                                      const std::atomic<bool>* cancelled,
                                      const DiscComparison::Progress& progress)
{
    ImageSound sound(image);
    ImageMatch match(sound.handle(), part);
    ComparisonResult result;
    for (qsizetype i = 0; i < part.size(); ++i) {
        const qint64 same = match.framesOf(part[i], cancelled, progress);
        result.comparedFrames += same;
        if (same == part[i].length.frames())
            continue;
        const Part rest = between(part, part[i].start + same, part.last().end());
        const auto compared = DiscComparison(sound, rest, cancelled, progress).run(0);
        if (!compared)
            return compared.error();
        add(result, *compared);
        break;
    }
    return result;
}

/// Which of the parts was the first to differ is told by their order.
Outcome<ComparisonResult> sumOf(const std::vector<Outcome<ComparisonResult>>& results, qint64 seen)
{
    ComparisonResult whole{.comparedFrames = seen};
    for (const auto& result : results) {
        if (!result)
            return result.error();
        add(whole, *result);
    }
    return whole;
}

void tellEnds(const Part& part, const DiscComparison::Progress& progress)
{
    for (const DiscPiece& piece : part)
        if (!piece.silent)
            progress(piece.track, piece.first + piece.length.frames(), piece.sound.length.frames());
}

} // namespace

/// Each processor takes the next part as soon as it is free; this one tells how far all are.
Outcome<ComparisonResult> compareImage(const QString& image, const QList<DiscPiece>& pieces, qint64 seen,
                                       const std::atomic<bool>* cancelled,
                                       const DiscComparison::Progress& progress)
{
    const QList<Part> parts = partsOf(between(pieces, seen, pieces.last().end()));
    std::vector<Outcome<ComparisonResult>> results(static_cast<size_t>(parts.size()), ComparisonResult{});
    std::atomic<qsizetype> next = 0;
    const auto work = [&](const std::function<void(qsizetype)>& begun, const DiscComparison::Progress& tell) {
        for (qsizetype mine = next++; mine < parts.size(); mine = next++) {
            begun(mine);
            auto& result = results[static_cast<size_t>(mine)];
            result = comparePart(image, parts[mine], cancelled, tell);
            if (!result)
                next = parts.size();
        }
    };
    std::vector<std::future<void>> others;
    for (qsizetype i = std::min<qsizetype>(parts.size(), atOnce()); i > 1; --i)
        others.push_back(std::async(
            std::launch::async, work, [](qsizetype) {}, [](int, qint64, qint64) {}));
    tellEnds(between(pieces, 0, seen), progress);
    qsizetype told = 0;
    const auto tellBefore = [&](qsizetype part) {
        for (; told < part; ++told)
            tellEnds(parts[told], progress);
        ++told; // that one tells itself
    };
    work(tellBefore, progress);
    others.clear(); // waits for them
    auto whole = sumOf(results, seen);
    if (whole)
        tellBefore(parts.size());
    return whole;
}

} // namespace zib
