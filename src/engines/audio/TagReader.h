#pragma once

#include "engines/audio/SourceFile.h"
#include "engines/audio/wav/WavHeader.h"

#include <QByteArray>
#include <QString>

namespace zib {

/// What one tag tells; trimmed.
struct Tag
{
    QString title;
    QString artist;
};

/// Text of a tag that does not say its encoding, or says Latin-1 as many do by mistake: UTF-8 when it is
/// valid UTF-8, else Windows-1252. Ends at the first zero byte.
QString plainTagText(const QByteArray& bytes);

/// The ID3v2 tag of the file's first bytes; empty when there is none.
Tag readId3v2(const SourceFile& file);
/// The ID3v1 tag of the file's last bytes; empty when there is none.
Tag readId3v1(const SourceFile& file);
/// The INFO list of a WAV file, completed by an ID3v2 tag in a chunk of its own.
Tag readWavTag(const SourceFile& file, const WavHeader& header);

} // namespace zib
