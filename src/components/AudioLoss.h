#pragma once

#include <QtGlobal>

#include <algorithm>

namespace zib {

/// What of a file's sound cannot be had, in sample frames of the file: it is silent or left out wherever the
/// file is played or converted.
struct AudioLoss
{
    qint64 first = 0;  ///< Where the first of it would sound, counted in what the file does give.
    qint64 frames = 0; ///< All of it together; 0 when the file is whole.

    bool isAny() const { return frames > 0; }
    /// Counts @p more frames lost at @p place.
    void add(qint64 place, qint64 more)
    {
        if (more <= 0)
            return;
        first = isAny() ? std::min(first, place) : place;
        frames += more;
    }

    bool operator==(const AudioLoss&) const = default;
};

} // namespace zib
