#include "engines/audio/AudioFileEngine.h"

#include "engines/audio/ReadAhead.h"
#include "engines/audio/sources.h"

#include <QThread>

#include <algorithm>

namespace zib {

namespace {

constexpr int kCdRate = 44100;
constexpr int kHighestRate = 768'000;
constexpr int kMostWorkers = 4;

bool isUsable(const SoundFormat& format)
{
    return format.rateHz > 0 && format.rateHz <= kHighestRate &&
           (format.channels == 1 || format.channels == 2);
}

} // namespace

AudioFileEngine::AudioFileEngine() = default;
AudioFileEngine::~AudioFileEngine() = default;

int AudioFileEngine::open(const QString& path)
{
    forget();
    auto content = recognise(SourceFile::open(path));
    if (content)
        m_content = std::make_unique<AudioContent>(std::move(*content));
    m_status = content ? Well : CannotOpen;
    return m_status;
}

int AudioFileEngine::create(const QString& path)
{
    forget();
    if (!isUsable(m_output) || m_outputBits != 16)
        return m_status = BadFormat;
    m_file = std::make_unique<WavWriter>();
    if (!m_file->create(path, m_output.rateHz, m_output.channels)) {
        m_file.reset();
        m_status = CannotCreate;
    }
    m_input = m_output;
    return m_status;
}

int AudioFileEngine::status() const
{
    return m_status == Well && m_writer && m_writer->failed() ? CannotWrite : m_status;
}

void AudioFileEngine::setOutputFormat(int rateHz, int channels, int bits)
{
    m_output = {rateHz, channels};
    m_outputBits = bits;
}

void AudioFileEngine::setInputFormat(int rateHz, int channels)
{
    m_input = {rateHz, channels};
}

int AudioFileEngine::formatRate() const
{
    return reading() ? m_content->rateHz() : 0;
}

int AudioFileEngine::formatChannels() const
{
    return reading() ? std::min(m_content->channels(), 2) : 0;
}

qint64 AudioFileEngine::length() const
{
    return reading() ? m_content->length() : 0;
}

AudioBlock AudioFileEngine::readBlock(qint32 samples)
{
    if (!reading() || m_status != Well)
        return {};
    AudioBlock block = reader().read(samples / formatChannels());
    if (block.isEmpty() && m_reader->failed())
        m_status = CannotRead;
    return m_isSixteenBit ? sixteenBit(std::move(block)) : block;
}

qint64 AudioFileEngine::seek(qint64 frame)
{
    if (!reading() || m_status != Well)
        return 0;
    const qint64 reached = std::clamp<qint64>(frame, 0, length());
    reader().seek(reached);
    return reached;
}

AudioLoss AudioFileEngine::loss() const
{
    const AudioLoss decoded = m_reader ? m_reader->source().loss() : AudioLoss{};
    return decoded.isAny() || !reading() ? decoded : m_content->loss();
}

void AudioFileEngine::writeBlock(const AudioBlock& block)
{
    if (m_file) {
        if (!isUsable(m_input)) {
            m_status = BadFormat;
            m_file.reset();
            return;
        }
        m_writer = std::make_unique<WriteBehind>(std::move(m_file), m_input, m_output);
    }
    if (m_writer)
        m_writer->write(block);
}

void AudioFileEngine::close()
{
    bool good = true;
    if (m_file)
        good = m_file->finish();
    else if (m_writer)
        good = m_writer->finish();
    const int before = m_status;
    forget();
    m_status = before == Well && !good ? CannotWrite : before;
}

void AudioFileEngine::discard()
{
    if (m_file || m_writer)
        forget();
}

void AudioFileEngine::forget()
{
    m_reader.reset();
    m_content.reset();
    m_file.reset();
    m_writer.reset();
    m_ditherer.reset();
    m_status = Well;
}

ReadAhead& AudioFileEngine::reader()
{
    if (!m_reader) {
        const bool narrow = m_isSixteenBit || m_content->rateHz() == kCdRate;
        const int workers = m_isSixteenBit ? 1 : std::clamp(QThread::idealThreadCount(), 1, kMostWorkers);
        m_reader = std::make_unique<ReadAhead>(
            openSource(*m_content, narrow ? SampleKind::Narrow : SampleKind::Wide, workers));
    }
    return *m_reader;
}

AudioBlock AudioFileEngine::sixteenBit(AudioBlock block)
{
    const auto* wide = block.wide();
    if (wide == nullptr)
        return block;
    if (!m_ditherer)
        m_ditherer = std::make_unique<Ditherer>();
    return AudioBlock(m_ditherer->round({wide->constData(), static_cast<size_t>(wide->size())}));
}

} // namespace zib
