#pragma once

#include "common/CdTime.h"
#include "common/DiscNames.h"
#include "common/Outcome.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace zib {

/// Where a track stands in an image, in frames from the image's start: its gap and its sound.
struct CueTrack
{
    CdTime gap{};   ///< INDEX 00; equal to start when there is none.
    CdTime start{}; ///< INDEX 01.

    bool operator==(const CueTrack&) const = default;
};

/// The text of a cue sheet for audio tracks in one binary file. The gap before the first track is the two
/// seconds that every disc begins with and stands in no file. Every track may be copied.
/// @param names of the disc and of each track; those that are empty get no line.
QByteArray cueText(const QString& binName, const QList<CueTrack>& tracks, const DiscNames& names = {});
/// Names as a sheet can hold them: each on one line, and an entry for each track.
DiscNames sheetNames(const DiscNames& names, qsizetype trackCount);

/// What a cue sheet says.
struct CueContent
{
    QString binName{};
    QList<CueTrack> tracks{};
    DiscNames names{};
};

/// Reads a cue sheet as cueText writes them.  @returns BadValue when it is anything else.
Outcome<CueContent> parseCue(const QByteArray& text);

} // namespace zib
