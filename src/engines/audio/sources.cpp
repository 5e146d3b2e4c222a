#include "engines/audio/sources.h"

#include "engines/audio/Mp3Reader.h"
#include "engines/audio/ParallelMp3Reader.h"
#include "engines/audio/WavReader.h"

namespace zib {

namespace {

std::optional<AudioContent> recogniseWav(std::shared_ptr<const SourceFile> file, const WavHeader& header)
{
    AudioContent content{std::move(file), header, std::nullopt};
    if (header.coding == WavHeader::Coding::Mpeg3)
        content.mp3 = walkMp3(content.file, header.dataOffset, header.dataOffset + header.dataBytes);
    if (content.length() <= 0)
        return std::nullopt;
    return content;
}

} // namespace

int AudioContent::rateHz() const
{
    return mp3 ? mp3->rateHz : wav->rateHz;
}

int AudioContent::channels() const
{
    return mp3 ? mp3->channels : wav->channels;
}

qint64 AudioContent::length() const
{
    return mp3 ? mp3->length : wav->frames();
}

std::optional<AudioContent> recognise(std::shared_ptr<const SourceFile> file)
{
    if (!file)
        return std::nullopt;
    if (const auto header = parseWav(*file))
        return recogniseWav(std::move(file), *header);
    AudioContent content{file, std::nullopt, walkMp3(file, 0, file->size())};
    if (!content.mp3 || content.length() <= 0)
        return std::nullopt;
    return content;
}

std::unique_ptr<SampleSource> openSource(const AudioContent& content, SampleKind kind, int workers)
{
    if (content.mp3 && ParallelMp3Reader::suits(*content.mp3, kind, workers))
        return std::make_unique<ParallelMp3Reader>(content.file, *content.mp3, kind, workers);
    if (content.mp3)
        return std::make_unique<Mp3Reader>(content.file, *content.mp3, kind);
    return std::make_unique<WavReader>(content.file, *content.wav);
}

} // namespace zib
