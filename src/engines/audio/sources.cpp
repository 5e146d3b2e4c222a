#include "engines/audio/sources.h"

#include "engines/audio/mp3/Mp3LossCount.h"
#include "engines/audio/mp3/Mp3Reader.h"
#include "engines/audio/mp3/ParallelMp3Reader.h"
#include "engines/audio/wav/SndfileReader.h"
#include "engines/audio/wav/WavReader.h"

namespace zib {

namespace {

// The library must read the header as we do.
template <typename... Length>
std::unique_ptr<SndfileReader> openPacked(const AudioContent& content, Length... length)
{
    auto reader = SndfileReader::open(content.file, length...);
    const bool agrees =
        reader && reader->rateHz() == content.wav->rateHz && reader->channels() == content.wav->channels;
    return agrees ? std::move(reader) : nullptr;
}

std::optional<AudioContent> recogniseWav(std::shared_ptr<const SourceFile> file, const WavHeader& header)
{
    AudioContent content{std::move(file), header, std::nullopt};
    if (header.coding == WavHeader::Coding::Other)
        if (const auto reader = openPacked(content))
            content.packedFrames = reader->measure();
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
    if (mp3)
        return mp3->length;
    return wav->coding == WavHeader::Coding::Other ? packedFrames : wav->frames();
}

AudioLoss AudioContent::loss() const
{
    AudioLoss loss = mp3 ? Mp3LossCount(*mp3).loss() : AudioLoss{};
    if (loss.isAny() || !wav || wav->missingBytes == 0)
        return loss;
    // sound that is packed: as much as the bytes that are there give
    const double perByte = static_cast<double>(length()) / static_cast<double>(wav->dataBytes);
    loss.add(length(), wav->frameBytes() > 0
                           ? (wav->dataBytes + wav->missingBytes) / wav->frameBytes() - length()
                           : qRound64(perByte * static_cast<double>(wav->missingBytes)));
    return loss;
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
    if (content.wav->coding == WavHeader::Coding::Other)
        if (auto reader = openPacked(content, content.packedFrames))
            return reader;
    return std::make_unique<WavReader>(content.file, *content.wav);
}

} // namespace zib
