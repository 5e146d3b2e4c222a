#pragma once

#include "engines/audio/mp3/Mp3Decoder.h"
#include "engines/audio/SampleSource.h"
#include "engines/audio/wav/WavHeader.h"

#include <memory>
#include <optional>

namespace zib {

/// What a file's content proves to be.
struct AudioContent
{
    std::shared_ptr<const SourceFile> file;
    std::optional<WavHeader> wav; ///< Of a WAV file, one with an MP3 stream inside included.
    std::optional<Mp3Layout> mp3; ///< Of every MP3 stream.
    qint64 packedFrames = 0;      ///< Sample frames of a WAV file whose coding is left to a library.

    int rateHz() const;
    int channels() const;  ///< As stored.
    qint64 length() const; ///< Sample frames, exact.
    /// What of it is lost as far as the headers tell.
    AudioLoss loss() const;
};

/// Looks into @p file.  @returns nothing when it is no MP3 or WAV file that gives at least one sample.
std::optional<AudioContent> recognise(std::shared_ptr<const SourceFile> file);

/// Begins to decode. MP3 streams are decoded to @p kind, the other sources decide by what they hold.
/// @param workers decoders that may share one long stream; 1 decodes in sequence.
std::unique_ptr<SampleSource> openSource(const AudioContent& content, SampleKind kind, int workers);

} // namespace zib
