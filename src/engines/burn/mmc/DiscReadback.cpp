#include "engines/burn/mmc/DiscReadback.h"

namespace zib {

namespace {

/// Run-out and link blocks that track-at-once leaves behind a track, at the most.
constexpr int kMostLinkBlocks = 9;

} // namespace

bool shows(const DiscContents& contents, const BurnJob& job, bool trackAtOnce)
{
    if (contents.tracks.size() != job.tracks.size())
        return false;
    const qint64 slack = trackAtOnce ? kMostLinkBlocks : 0;
    for (qsizetype i = 0; i < job.tracks.size(); ++i) {
        const bool last = i + 1 == job.tracks.size();
        const qint64 end = last ? contents.leadOut : contents.tracks.at(i + 1).start - kPregapFrames;
        const qint64 surplus = end - contents.tracks.at(i).start - job.tracks.at(i).length.frames();
        if (!contents.tracks.at(i).audio || surplus < 0 || surplus > slack)
            return false;
    }
    return true;
}

} // namespace zib
