#include "engines/audio/convert/RateConverter.h"

#include "engines/audio/BoundedQueue.h"
#include "engines/audio/unsetsamples.h"

#include <soxr.h>

#include <algorithm>
#include <atomic>
#include <thread>

namespace zib {

namespace {

constexpr qsizetype kFewFrames = 2048; // not worth a thread
constexpr int kBlocksAhead = 2;        // of the channels before the one that takes from them

struct Deleter
{
    void operator()(soxr* handle) const { soxr_delete(handle); }
};
using Handle = std::unique_ptr<soxr, Deleter>;

Handle made(int fromHz, int toHz)
{
    const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
    const soxr_runtime_spec_t runtime = soxr_runtime_spec(1);
    soxr_error_t error = nullptr;
    return Handle(soxr_create(fromHz, toHz, 1, &error, &io, &quality, &runtime));
}

} // namespace

/// One channel on its way through the library. Every block given comes back as one block, in order.
class RateConverter::Channel
{
public:
    Channel(int fromHz, int toHz) : m_fromHz(fromHz), m_toHz(toHz), m_handle(made(fromHz, toHz)) {}
    ~Channel()
    {
        m_in.abandon();
        m_out.abandon();
        if (m_thread.joinable())
            m_thread.join();
    }
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

    void give(QList<float> samples)
    {
        if (!m_thread.joinable() && samples.size() > kFewFrames)
            m_thread = std::thread([this] { work(); });
        if (m_thread.joinable())
            m_in.push(std::move(samples));
        else
            m_out.push(processed(samples));
    }
    void take() { m_out.pop(m_ready); }
    const QList<float>& ready() const { return m_ready; }
    bool failed() const { return m_failed; }

private:
    void work()
    {
        for (QList<float> samples; m_in.pop(samples);)
            m_out.push(processed(samples));
    }
    // Without samples the library gives what it still holds.
    QList<float> processed(const QList<float>& samples)
    {
        const auto frames = static_cast<size_t>(samples.size());
        const size_t room = frames * static_cast<size_t>(m_toHz) / static_cast<size_t>(m_fromHz) + 4096;
        QList<float> out = unsetSamples<float>(static_cast<qsizetype>(room));
        size_t used = 0;
        size_t given = 0;
        m_failed = m_failed || !m_handle ||
                   soxr_process(m_handle.get(), frames > 0 ? samples.constData() : nullptr, frames, &used,
                                out.data(), room, &given) != nullptr ||
                   used != frames;
        out.resize(m_failed ? 0 : static_cast<qsizetype>(given));
        return out;
    }

    int m_fromHz;
    int m_toHz;
    Handle m_handle;
    std::atomic<bool> m_failed = false;
    QList<float> m_ready;
    BoundedQueue<QList<float>> m_in{kBlocksAhead + 1};
    BoundedQueue<QList<float>> m_out{kBlocksAhead + 1};
    std::thread m_thread; // last: it uses everything above
};

RateConverter::RateConverter(int fromHz, int toHz, int channels) : m_fromHz(fromHz), m_toHz(toHz)
{
    for (int i = 0; i < channels; ++i)
        m_channels.push_back(std::make_unique<Channel>(fromHz, toHz));
}

RateConverter::~RateConverter() = default;

QList<float> RateConverter::convert(std::span<const float> samples)
{
    m_taken += static_cast<qint64>(samples.size() / m_channels.size());
    const bool isLong = samples.size() > kFewFrames * m_channels.size();
    give(samples);
    return m_waiting > (isLong ? kBlocksAhead : 0) ? taken() : QList<float>();
}

QList<float> RateConverter::finish()
{
    const qint64 whole = (m_taken * m_toHz + m_fromHz / 2) / m_fromHz;
    QList<float> rest;
    while (m_waiting > 0)
        rest += taken();
    while (m_given < whole) {
        give({});
        const QList<float> more = taken();
        if (more.isEmpty())
            break;
        rest += more;
    }
    // silence where the library gives less, a cut where it gives more
    const qint64 surplus = (m_given - whole) * static_cast<qint64>(m_channels.size());
    rest.resize(std::max<qint64>(0, rest.size() - surplus));
    m_given = whole;
    return rest;
}

bool RateConverter::failed() const
{
    return std::any_of(m_channels.begin(), m_channels.end(),
                       [](const auto& channel) { return channel->failed(); });
}

// Strides known to the compiler make loops of vectors.
void RateConverter::give(std::span<const float> samples)
{
    const auto frames = static_cast<qsizetype>(samples.size() / m_channels.size());
    QList<float> first = unsetSamples<float>(frames);
    QList<float> second = unsetSamples<float>(m_channels.size() > 1 ? frames : 0);
    const float* from = samples.data();
    float* left = first.data();
    float* right = second.data();
    if (second.isEmpty())
        std::copy_n(from, frames, left);
    else
        for (qsizetype i = 0; i < frames; ++i) {
            left[i] = from[2 * i];
            right[i] = from[2 * i + 1];
        }
    m_channels.front()->give(std::move(first));
    if (m_channels.size() > 1)
        m_channels.back()->give(std::move(second));
    ++m_waiting;
}

// Waits for the block that was given first.
QList<float> RateConverter::taken()
{
    for (const auto& channel : m_channels)
        channel->take();
    --m_waiting;
    QList<float> samples = joined();
    m_given += samples.size() / static_cast<qint64>(m_channels.size());
    return samples;
}

// Both channels give the same count, unless the library refused one of them.
QList<float> RateConverter::joined() const
{
    const QList<float>& first = m_channels.front()->ready();
    if (m_channels.size() == 1)
        return first;
    const QList<float>& second = m_channels.back()->ready();
    const qsizetype frames = std::min(first.size(), second.size());
    QList<float> samples = unsetSamples<float>(frames * 2);
    const float* left = first.constData();
    const float* right = second.constData();
    float* to = samples.data();
    for (qsizetype i = 0; i < frames; ++i) {
        to[2 * i] = left[i];
        to[2 * i + 1] = right[i];
    }
    return samples;
}

} // namespace zib
