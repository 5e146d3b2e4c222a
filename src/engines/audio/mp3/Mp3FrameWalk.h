#pragma once

#include "engines/audio/mp3/Mp3Header.h"
#include "engines/audio/SourceFile.h"

#include <QList>

#include <memory>
#include <optional>

namespace zib {

/// Frames that follow each other without a gap and decode to one format.
struct Mp3Run
{
    qint64 offset = 0; ///< Of its first frame in the file.
    qint64 bytes = 0;
    qint64 firstFrame = 0; ///< Frames of the file before it.
    qint64 frames = 0;
    Mp3Header head;    ///< The header of its first frame.
    int freeBytes = 0; ///< The unpadded frame size in free format.

    qint64 samples() const { return frames * head.samples(); }
};

/// A frame at which a decoder can be set down without its synthesis filter falling out of step: its number is
/// a multiple of eight, after which the filter's ring is in the same phase again.
struct Mp3Entry
{
    qint64 frame = 0;
    qint64 offset = 0;
};

/// Sound that a stream does not give.
struct Mp3Loss
{
    qint64 frame = 0;      ///< The first silent one, or the one before which something is missing.
    qint64 frames = 0;     ///< How many.
    bool isSilent = false; ///< They stand in the stream but decode to silence; else they are not there.
};

/// Everything about an MP3 file that its frame headers tell. Sample counts are those of the file's own rate.
struct Mp3Layout
{
    QList<Mp3Run> runs;
    QList<Mp3Entry> entries; ///< Of the first run, rising; the first one is its first frame.
    QList<Mp3Loss> losses;   ///< As far as headers tell, rising, apart from each other.
    int rateHz = 0;          ///< Of the first run; runs of other rates are converted to it.
    int channels = 0;        ///< 2 as soon as one run has two.
    qint64 skip = 0;         ///< Sample frames to drop at the start: what the encoder put before the sound.
    qint64 length = 0;       ///< Sample frames to deliver after that.
    bool isRegular = false;  ///< One run, nothing missing, nothing odd: any part decodes by itself.

    qint64 frames() const { return runs.isEmpty() ? 0 : runs.last().firstFrame + runs.last().frames; }
};

/// Sample frames of a run after conversion from its rate to @p rateHz.
qint64 samplesAtRate(qint64 samples, int fromHz, int rateHz);

/// Reads the frame headers from byte @p begin to @p end of @p file.
/// @returns nothing when this is no layer III stream with at least one whole frame.
std::optional<Mp3Layout> walkMp3(const std::shared_ptr<const SourceFile>& file, qint64 begin, qint64 end);

} // namespace zib
