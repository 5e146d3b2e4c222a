#include "engines/audio/wav/WavReader.h"

#include "engines/audio/convert/SpeakerMix.h"
#include "engines/audio/wav/wavsamples.h"

#include <algorithm>

namespace zib {

namespace {

// Whether 16 bits hold every value the file can hold.
bool isNarrow(const WavHeader& header)
{
    return header.channels <= 2 &&
           (header.coding == WavHeader::Coding::ALaw || header.coding == WavHeader::Coding::MuLaw ||
            (header.coding == WavHeader::Coding::Integer && header.bytesPerSample <= 2));
}

} // namespace

WavReader::WavReader(std::shared_ptr<const SourceFile> file, const WavHeader& header)
    : m_file(std::move(file)), m_header(header), m_failed(header.frameBytes() == 0)
{
    if (header.channels > 2)
        speakerShares(header.channels, header.speakers, m_left, m_right);
}

WavReader::~WavReader() = default;

AudioBlock WavReader::read(qint64 frames)
{
    const auto raw = fetch(std::min(frames, length() - m_next));
    if (raw.empty())
        return {};
    if (isNarrow(m_header))
        return AudioBlock(narrowSamples(m_header, raw));
    QList<float> samples = wideSamples(m_header, raw);
    if (m_header.channels > 2)
        return AudioBlock(mixedDown({samples.constData(), static_cast<size_t>(samples.size())}));
    return AudioBlock(std::move(samples));
}

// Whole frames only, fewer when the file became shorter meanwhile.
std::span<const uchar> WavReader::fetch(qint64 frames)
{
    if (frames <= 0 || m_failed)
        return {};
    constexpr qint64 kMostBytes = 2 * 1024 * 1024; // however many channels there are
    const qint64 wanted = std::min(frames, kMostBytes / m_header.frameBytes()) * m_header.frameBytes();
    m_raw.resize(static_cast<size_t>(wanted));
    qint64 got = m_file->read(m_header.dataOffset + m_next * m_header.frameBytes(), m_raw);
    m_failed = got < wanted;
    got = std::max<qint64>(0, got / m_header.frameBytes() * m_header.frameBytes());
    m_next += got / m_header.frameBytes();
    return {m_raw.data(), static_cast<size_t>(got)};
}

QList<float> WavReader::mixedDown(std::span<const float> samples) const
{
    const auto channels = static_cast<size_t>(m_header.channels);
    const size_t frames = samples.size() / channels;
    QList<float> mixed(static_cast<qsizetype>(frames) * 2);
    float* out = mixed.data();
    for (size_t frame = 0; frame < frames; ++frame) {
        const float* in = samples.data() + frame * channels;
        float left = 0;
        float right = 0;
        for (size_t channel = 0; channel < channels; ++channel) {
            left += in[channel] * m_left[channel];
            right += in[channel] * m_right[channel];
        }
        out[2 * frame] = left;
        out[2 * frame + 1] = right;
    }
    return mixed;
}

} // namespace zib
