#pragma once

// What the fuzz targets of sound files share: input as a file, and the promises that hold for every file.

#include "engines/audio/AudioInformationEngine.h"
#include "engines/audio/sources.h"
#include "input.h"
#include "rules.h"

#include <QString>

#include <algorithm>
#include <cstdint>

namespace zib::fuzz {

/// What is recognised gives exactly the samples that it announced, from the start and after a seek.
inline void checkSound(const AudioContent& content)
{
    constexpr qint64 kMostFrames = 3'000'000; // a short file can announce days
    check(content.length() > 0 && content.rateHz() > 0 && content.channels() > 0, "sound has a format");
    const auto source = openSource(content, SampleKind::Narrow, 1);
    check(source != nullptr && source->length() == content.length(), "a source has the announced length");
    if (content.length() > kMostFrames)
        return;
    const auto remaining = [&source] {
        qint64 frames = 0;
        for (AudioBlock block = source->read(50'000); !block.isEmpty(); block = source->read(50'000))
            frames += block.sampleCount() / source->channels();
        return frames;
    };
    check(remaining() == content.length() && !source->failed(), "every announced sample comes");
    const qint64 middle = content.length() / 2;
    source->seek(middle);
    check(remaining() == content.length() - middle && !source->failed(), "the rest comes after a seek");
}

/// The inspector agrees with the sound, and answers whatever the file is.
inline void checkInformation(const QString& path, const std::optional<AudioContent>& content)
{
    AudioInformationEngine information;
    check(information.open(path) == content.has_value(), "inspector and reader agree on what is audio");
    check(!content || information.durationMs() ==
                          std::min<qint64>(content->length() * 1000 / content->rateHz(), INT32_MAX),
          "the duration is that of the samples");
    check(information.title() == information.title().trimmed(), "titles are trimmed");
}

/// All of it.
inline int checkAll(const std::uint8_t* data, std::size_t size)
{
    const InputFile file(data, size);
    const auto content = recognise(SourceFile::open(file.path()));
    checkInformation(file.path(), content);
    if (content)
        checkSound(*content);
    return 0;
}

} // namespace zib::fuzz
