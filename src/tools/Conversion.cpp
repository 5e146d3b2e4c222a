#include "tools/Conversion.h"

#include "common/CdTime.h"
#include "common/Numbers.h"
#include "components/AudioFile.h"

#include <algorithm>
#include <optional>

namespace zib {

namespace {
constexpr double kWhole = 100;
} // namespace

Conversion::Conversion(std::unique_ptr<AudioFile> reader, std::unique_ptr<AudioFile> writer)
    : m_fileReader(std::move(reader)), m_fileWriter(std::move(writer))
{
    m_fileWriter->setSixteenBitBlocks(false);
    m_fileReader->setSixteenBitBlocks(false);
    m_fileWriter->setRateAndChannels(kCdSampleRate, kCdChannels);
}

Conversion::~Conversion() = default;

Conversion::End Conversion::ConvertFile(const QString& source, const QString& target)
{
    SamplesDone = 0;
    ConvertPercent = 0;
    m_fileWriter->setOutputFormat(kCdSampleRate, kCdChannels, kCdBits);
    End end = End::NotOpened;
    if (m_fileReader->open(source) >= 0 && m_fileWriter->create(target) >= 0)
        end = pump();
    m_fileReader->close();
    return end;
}

Conversion::End Conversion::pump()
{
    const qint32 a = m_fileReader->formatRate();
    const qint32 b = m_fileReader->formatChannels();
    m_fileWriter->setInputFormat(a, b);
    const std::optional<qint32> request = product32(a, b);
    const End end = request ? pumpBlocks(*request) : End::Broken;
    if (end != End::Whole) {
        m_fileWriter->discard();
        return end;
    }
    m_fileWriter->close();
    return m_fileWriter->status() < 0 ? End::Broken : End::Whole;
}

Conversion::End Conversion::pumpBlocks(qint32 request)
{
    while (!m_stopped) {
        const AudioBlock block = m_fileReader->readBlock(request);
        if (block.isEmpty())
            return m_fileReader->status() >= 0 ? End::Whole : End::Broken;
        m_fileWriter->writeBlock(block);
        if (m_fileWriter->status() < 0)
            return End::Broken;
        count(block.sampleCount());
    }
    return End::Stopped;
}

void Conversion::count(qint64 blockSamples)
{
    const qint64 length = m_fileReader->length();
    const double units = static_cast<double>(blockSamples) / m_fileReader->samplesPerUnit();
    SamplesDone = std::min(roundHalfEven(units + static_cast<double>(SamplesDone)), length);
    const double part = length > 0 ? static_cast<double>(SamplesDone) / static_cast<double>(length) : 1;
    ConvertPercent = std::min(part * kWhole, kWhole);
}

} // namespace zib
