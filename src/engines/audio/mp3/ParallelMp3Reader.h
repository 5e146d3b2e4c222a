#pragma once

#include "engines/audio/mp3/Mp3Decoder.h"
#include "engines/audio/mp3/Mp3LossCount.h"
#include "engines/audio/SampleSource.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace zib {

class Mp3Reader;

/// A regular MP3 stream decoded on several cores, sample for sample as one decoder would.
///
/// The stream is cut into segments. Each is decoded from a frame that needs nothing before it and leaves the
/// synthesis filter in its phase, some frames early, so that nothing of the cut remains in the samples kept.
/// A few segments at most are in memory. After a seek one decoder goes on alone.
class ParallelMp3Reader final : public SampleSource
{
public:
    /// Whether @p layout is worth it and allows it on @p workers cores.
    static bool suits(const Mp3Layout& layout, SampleKind kind, int workers);

    /// @p layout must suit.
    ParallelMp3Reader(std::shared_ptr<const SourceFile> file, Mp3Layout layout, SampleKind kind, int workers);
    ~ParallelMp3Reader() override;

    int rateHz() const override { return m_layout.rateHz; }
    int channels() const override { return m_layout.channels; }
    qint64 length() const override { return m_layout.length; }
    AudioBlock read(qint64 frames) override;
    void seek(qint64 frame) override;
    bool failed() const override;
    AudioLoss loss() const override;

private:
    struct Segment
    {
        Mp3Entry entry;                  // where decoding begins
        qint64 first = 0;                // the first frame kept
        qint64 frames = 0;               // frames kept
        std::deque<AudioBlock> blocks{}; // decoded, not yet delivered
        bool isDone = false;
    };

    static std::vector<Segment> plan(const Mp3Layout& layout, SampleKind kind, int workers);
    void begin(qint64 blockFrames);
    void stop();
    void work(qint64 blockFrames);
    Segment* take();
    void decode(Mp3Decoder& decoder, Segment& segment, qint64 blockFrames);
    AudioBlock nextBlock();
    AudioBlock trimmed(AudioBlock block);

    std::shared_ptr<const SourceFile> m_file;
    const Mp3Layout m_layout; // constant: shared lists are copied at the first touch otherwise
    SampleKind m_kind;
    int m_workers;
    std::vector<Segment> m_segments;
    size_t m_taken = 0;   // segments given to workers
    size_t m_current = 0; // the segment being delivered
    qint64 m_raw = 0;     // sample frames that came out of the segments
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::atomic<bool> m_isStopped = false;
    std::atomic<bool> m_failed = false;
    std::vector<std::thread> m_threads;
    std::unique_ptr<Mp3Reader> m_alone; // after a seek
    Mp3LossCount m_losses;
};

} // namespace zib
