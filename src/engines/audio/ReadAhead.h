#pragma once

#include "engines/audio/BoundedQueue.h"
#include "engines/audio/SampleSource.h"

#include <memory>
#include <thread>

namespace zib {

/// Decodes ahead of the reader on a thread of its own, a few blocks deep.
class ReadAhead
{
public:
    explicit ReadAhead(std::unique_ptr<SampleSource> source);
    ~ReadAhead();

    const SampleSource& source() const { return *m_source; }
    /// The next samples, at most @p frames sample frames and, before the end, never far fewer.
    AudioBlock read(qint64 frames);
    /// Makes @p frame the next one.
    void seek(qint64 frame);
    /// Whether reading ended because the file could not be read; to be asked after an empty block.
    bool failed() const { return m_isOver && m_source->failed(); }

private:
    bool goOn();
    void begin(qint64 frames);
    void stop();
    void work(qint64 frames);
    qsizetype waiting() const { return m_block.sampleCount() - m_used; }

    std::unique_ptr<SampleSource> m_source; // the thread's while it runs
    std::unique_ptr<BoundedQueue<AudioBlock>> m_blocks;
    std::thread m_thread;
    AudioBlock m_block; // the one being handed out
    qsizetype m_used = 0;
    bool m_isOver = false;
};

} // namespace zib
