#pragma once

#include "engines/audio/makers.h"

#include <QString>

namespace zib::bench {

/// Converts a file to 44.1 kHz, 16 bits, stereo, as fast as blocks can be passed on.  @returns whether it is
/// there.
inline bool convertFile(const QString& source, const QString& target)
{
    const auto reader = makeAudioFile();
    const auto writer = makeAudioFile();
    writer->setOutputFormat(44100, 2, 16);
    if (reader->open(source) < 0 || writer->create(target) < 0)
        return false;
    writer->setInputFormat(reader->formatRate(), reader->formatChannels());
    const qint32 count = reader->formatRate() * reader->formatChannels();
    for (auto block = reader->readBlock(count); !block.isEmpty(); block = reader->readBlock(count))
        writer->writeBlock(block);
    writer->close();
    return reader->status() >= 0 && writer->status() >= 0;
}

} // namespace zib::bench
