#pragma once

#include "components/AudioBlock.h"
#include "components/AudioLoss.h"

namespace zib {

/// A decoded sound: pulled from front to back by one thread at a time.
class SampleSource
{
public:
    virtual ~SampleSource() = default;

    virtual int rateHz() const = 0;
    /// 1 or 2: sources with more are mixed down already.
    virtual int channels() const = 0;
    /// Sample frames it will deliver from the very start; exact.
    virtual qint64 length() const = 0;
    /// The next samples, about @p frames sample frames; empty at the end or after a failure.
    virtual AudioBlock read(qint64 frames) = 0;
    /// Makes @p frame (0 to length()) the next one.
    virtual void seek(qint64 frame) = 0;
    /// Whether reading ended before the end because the file could not be read.
    virtual bool failed() const = 0;
    /// What of the sound is lost, as far as it was seen. Any thread.
    virtual AudioLoss loss() const { return {}; }
};

} // namespace zib
