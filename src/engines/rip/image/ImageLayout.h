#pragma once

#include "common/Outcome.h"
#include "engines/rip/Disc.h"
#include "engines/rip/sheets/DiscSheet.h"

#include <QList>

namespace zib {

/// Bytes of a disc that stand in a file, one after the other. What no run tells is silence.
struct DiscRun
{
    qint64 at = 0;    ///< On the disc, in bytes of frames.
    qint64 bytes = 0; ///< On the disc.
    int file = 0;
    qint64 offset = 0;      ///< In the file, or in its sound.
    int sectorBytes = 2352; ///< Of a frame in the file; the sound comes first.
    bool audio = true;
};

/// Where everything lies on the disc of an image.
struct ImageLayout
{
    QList<TocTrack> tracks{};
    QList<DiscRun> runs{}; ///< By their place on the disc.
    QString remark{};      ///< What is amiss although tracks can be read, in words.
};

/// Lays out the disc that a sheet tells. A track ends where the next one begins, or where the gap of a data
/// track does; a part of a frame at its end is filled up with silence.
/// @param fileBytes the lengths of the sheet's files, or of the sound in them.
/// @returns BadValue with the reason in words.
Outcome<ImageLayout> layOut(const DiscSheet& sheet, const QList<qint64>& fileBytes);

} // namespace zib
