#include "engines/audio/mp3/Mp3LossCount.h"

#include <algorithm>

namespace zib {

Mp3LossCount::Mp3LossCount(const Mp3Layout& layout) : m_layout(layout)
{
    for (const Mp3Loss& loss : m_layout.losses)
        for (qint64 frame = loss.frame; loss.isSilent && frame < loss.frame + loss.frames; ++frame)
            add(frame);
}

void Mp3LossCount::add(qint64 frame)
{
    const std::lock_guard lock(m_mutex);
    m_isSilent.resize(static_cast<size_t>(m_layout.frames()));
    if (frame >= 0 && frame < m_layout.frames())
        m_isSilent[static_cast<size_t>(frame)] = true;
}

AudioLoss Mp3LossCount::loss() const
{
    const std::lock_guard lock(m_mutex);
    AudioLoss all = missing();
    const auto begin = m_isSilent.cbegin();
    for (auto from = std::find(begin, m_isSilent.cend(), true); from != m_isSilent.cend();) {
        const auto until = std::find(from, m_isSilent.cend(), false);
        const qint64 frame = from - begin;
        all.add(placeOf(frame), samplesOf(frame, until - from));
        from = std::find(until, m_isSilent.cend(), true);
    }
    return all;
}

AudioLoss Mp3LossCount::missing() const
{
    AudioLoss all;
    for (const Mp3Loss& loss : m_layout.losses)
        if (!loss.isSilent)
            all.add(placeOf(loss.frame), samplesOf(loss.frame, loss.frames));
    return all;
}

// Where the frame begins in what is delivered.
qint64 Mp3LossCount::placeOf(qint64 frame) const
{
    qint64 samples = -m_layout.skip;
    for (const Mp3Run& run : m_layout.runs)
        samples +=
            samplesAtRate(std::clamp<qint64>(frame - run.firstFrame, 0, run.frames) * run.head.samples(),
                          run.head.rateHz, m_layout.rateHz);
    return std::clamp<qint64>(samples, 0, m_layout.length);
}

// As long as so many frames sound where that one stands; what is missing is like the run before it.
qint64 Mp3LossCount::samplesOf(qint64 frame, qint64 frames) const
{
    const Mp3Run* at = &m_layout.runs.first();
    for (const Mp3Run& run : m_layout.runs)
        if (run.firstFrame < frame)
            at = &run;
    return samplesAtRate(frames * at->head.samples(), at->head.rateHz, m_layout.rateHz);
}

} // namespace zib
