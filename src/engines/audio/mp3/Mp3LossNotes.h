#pragma once

#include "engines/audio/mp3/Mp3FrameWalk.h"

#include <optional>

namespace zib {

/// What a walk over the frames of one file finds to be lost, noted in the order of the file.
class Mp3LossNotes
{
public:
    /// Frame @p frame cannot be decoded.
    void noteSilence(qint64 frame);
    /// Before frame @p frame so many seem to be missing; none is no loss.
    void noteGap(qint64 frame, qint64 frames);
    /// The file ends within what would be frame @p frame.
    void noteCutFrame(qint64 frame);

    /// All of it, once the file is walked through. The count in an information frame knows better: no more is
    /// missing than it tells, and what is not found between the frames was cut off at the end. A count is not
    /// believed when the bytes told with it are all there, nor for a single frame, since programs differ on
    /// whether their own one counts.
    /// @param info of the file, if any.  @param frames found.  @param bytes from the information frame to the
    /// end of the stream.
    QList<Mp3Loss> settled(const std::optional<Mp3InfoFrame>& info, qint64 frames, qint64 bytes) const;

private:
    QList<Mp3Loss> m_losses;
    bool m_endsCut = false;
};

} // namespace zib
