#pragma once

#include "engines/burn/compare/DiscComparison.h"
#include "engines/burn/tracks/FileView.h"

namespace zib {

/// The quick look at an image: both it and the files are seen as they stand in memory, without a copy. It
/// only finds out what is right for sure; about anything else DiscComparison knows. One thread.
class ImageMatch
{
public:
    /// @param image its open file, frames from the first byte on.  @param pieces one behind the other.
    ImageMatch(int image, const QList<DiscPiece>& pieces);

    /// How many frames of one of the pieces, from its first on, the image holds for sure.
    /// @param cancelled and @param progress as DiscComparison takes them.
    qint64 framesOf(const DiscPiece& piece, const std::atomic<bool>* cancelled,
                    const DiscComparison::Progress& progress);

private:
    FileView m_image;
    qint64 m_start = 0; ///< The first frame that is shown of the image.
    bool m_shown = false;
};

} // namespace zib
