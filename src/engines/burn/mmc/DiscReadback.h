#pragma once

#include "engines/burn/Recorder.h"

#include <QList>

namespace zib {

/// A disc's table of contents as its drive tells it.
struct DiscContents
{
    struct Track
    {
        qint64 start = 0; ///< Logical block address of index 1.
        bool audio = false;
    };

    QList<Track> tracks;
    qint64 leadOut = 0; ///< Logical block address.
};

/// Whether @p contents are what @p job asked for. Every length must be right to the frame; between tracks
/// written one at a time a drive adds its link and run-out blocks (MMC-5, 4.2.3.6.2), which @p trackAtOnce
/// allows for.
bool shows(const DiscContents& contents, const BurnJob& job, bool trackAtOnce);

} // namespace zib
