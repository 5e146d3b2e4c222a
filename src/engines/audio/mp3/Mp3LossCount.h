#pragma once

#include "components/AudioLoss.h"
#include "engines/audio/mp3/Mp3FrameWalk.h"

#include <mutex>
#include <vector>

namespace zib {

/// Counts what one MP3 stream does not give: what its layout tells, and frames that turn out not to decode.
/// Any thread.
class Mp3LossCount
{
public:
    explicit Mp3LossCount(const Mp3Layout& layout);

    /// Frame @p frame of the file gave silence; told twice it counts once.
    void add(qint64 frame);
    /// All of it at the layout's rate.
    AudioLoss loss() const;

private:
    AudioLoss missing() const;
    qint64 placeOf(qint64 frame) const;
    qint64 samplesOf(qint64 frame, qint64 frames) const;

    const Mp3Layout m_layout;
    mutable std::mutex m_mutex;
    std::vector<bool> m_isSilent; // by frame; empty while none is
};

} // namespace zib
