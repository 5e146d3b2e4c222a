#pragma once

#include "drive/burn/BurnBench.h"

namespace zib {

/// How the disc in the drive differs from @p tracks; empty when it is closed and holds them to the bit, each
/// behind its two seconds of silence.
inline QString difference(const EmulatedRecorder& recorder, const QList<QByteArray>& tracks, int gap = 150)
{
    const auto content = recorder.content();
    if (!content || !content->finalized)
        return "the disc is not closed";
    if (content->tracks.size() != tracks.size())
        return QString("%1 tracks").arg(content->tracks.size());
    for (qsizetype i = 0; i < tracks.size(); ++i) {
        const auto& track = content->tracks[i];
        if (recorder.frames(track.start, int(tracks[i].size() / 2352)) != tracks[i])
            return QString("track %1 differs").arg(i + 1);
        if (track.start - track.pregap != gap)
            return QString("the gap of track %1 is %2").arg(i + 1).arg(track.start - track.pregap);
        if (track.control & 4)
            return QString("track %1 is data").arg(i + 1);
    }
    return {};
}

/// A pair of tracks, one with a part-frame at its end, one shorter than a disc allows.
inline QList<QByteArray> addPair(BurnBench& bench)
{
    return {bench.addTrack(588 * 400 + 17, 1), bench.addTrack(588 * 10, 2)};
}

} // namespace zib
