#pragma once

#include "engines/audio/SourceFile.h"

#include <QByteArray>

#include <optional>

namespace zib {

/// What the chunks of a RIFF, RF64 or BW64 WAVE file say; sizes are already brought down to what the file
/// holds.
struct WavHeader
{
    /// How samples stand in the file; Other is left to a library that knows more codecs.
    enum class Coding
    {
        Integer,
        Float,
        ALaw,
        MuLaw,
        Mpeg3,
        Other
    };

    Coding coding = Coding::Other;
    int rateHz = 0;
    int channels = 0;
    int bits = 0;           ///< Bits of a sample as the header tells them.
    int bytesPerSample = 0; ///< Of one sample of one channel; 0 for Mpeg3 and Other.
    quint32 speakers = 0;   ///< The channel mask of an extensible header, else 0.
    qint64 dataOffset = 0;
    qint64 dataBytes = 0;
    qint64 missingBytes = 0; ///< What the header tells of the data beyond the end of the file.
    QByteArray title;        ///< INAM of the INFO list, undecoded.
    QByteArray artist;       ///< IART.
    qint64 id3Offset = 0;    ///< Of an ID3v2 tag in a chunk of its own; 0 is none.
    qint64 id3Bytes = 0;

    qint64 frameBytes() const { return qint64{bytesPerSample} * channels; }
    /// Whole sample frames in the file; only for codings with a sample size.
    qint64 frames() const { return frameBytes() > 0 ? dataBytes / frameBytes() : 0; }
};

/// Reads the chunks of @p file.  @returns nothing when there is no usable format and no data.
std::optional<WavHeader> parseWav(const SourceFile& file);

} // namespace zib
