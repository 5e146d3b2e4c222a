#include "tools/Conversion.h"

#include "common/CdTime.h"
#include "common/Numbers.h"
#include "components/AudioFile.h"

#include <algorithm>

namespace zib {

namespace {
constexpr double kWhole = 100;
} // namespace

Conversion::Conversion(std::unique_ptr<AudioFile> reader, std::unique_ptr<AudioFile> writer)
    : m_FileR(std::move(reader)), m_FileW(std::move(writer))
{
    m_FileW->setSixteenBitBlocks(false);
    m_FileR->setSixteenBitBlocks(false);
    m_FileW->setRateAndChannels(kCdSampleRate, kCdChannels);
}

Conversion::~Conversion() = default;

Conversion::End Conversion::ConvertFile(const QString& source, const QString& target)
{
    SamplesDone = 0;
    ConvertPercent = 0;
    m_FileW->setOutputFormat(kCdSampleRate, kCdChannels, kCdBits);
    End end = End::NotOpened;
    if (m_FileR->open(source) >= 0 && m_FileW->create(target) >= 0)
        end = pump();
    m_FileR->close();
    return end;
}

Conversion::End Conversion::pump()
{
    const qint32 a = m_FileR->formatRate();
    const qint32 b = m_FileR->formatChannels();
    m_FileW->setInputFormat(a, b);
    const std::optional<qint32> request = product32(a, b);
    const End end = request ? pumpBlocks(*request) : End::Broken;
    if (end != End::Whole) {
        m_FileW->discard();
        return end;
    }
    m_FileW->close();
    return m_FileW->status() < 0 ? End::Broken : End::Whole;
}

Conversion::End Conversion::pumpBlocks(qint32 request)
{
    while (!m_stopped) {
        const AudioBlock block = m_FileR->readBlock(request);
        if (block.isEmpty())
            return m_FileR->status() >= 0 ? End::Whole : End::Broken;
        m_FileW->writeBlock(block);
        if (m_FileW->status() < 0)
            return End::Broken;
        count(block.sampleCount());
    }
    return End::Stopped;
}

void Conversion::count(qint64 blockSamples)
{
    const qint64 length = m_FileR->length();
    const double units = static_cast<double>(blockSamples) / m_FileR->samplesPerUnit();
    SamplesDone = std::min(roundHalfEven(units + static_cast<double>(SamplesDone)), length);
    const double part = length > 0 ? static_cast<double>(SamplesDone) / static_cast<double>(length) : 1;
    ConvertPercent = std::min(part * kWhole, kWhole);
}

} // namespace zib
