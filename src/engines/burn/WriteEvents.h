#pragma once

#include "engines/burn/Recorder.h"

#include <QString>

#include <deque>
#include <mutex>
#include <optional>

namespace zib {

/// One thing that a running write has to tell.
struct WriteEvent
{
    enum class Kind
    {
        Preparing,
        Caching,
        Reading,
        Progress,
        ClosingTrack,
        ClosingDisc,
        Ended
    };

    Kind kind;
    qint32 track = 0;
    qint32 done = 0;     ///< Percent for Caching, bytes for Progress.
    qint32 size = 0;     ///< Sectors for Reading, bytes for Progress.
    QString name{};      ///< The file's name for Reading.
    bool failed = false; ///< For Ended; error then says why.
    BurnError error{};
};

/// Events on their way from the worker to the owner's thread, in order. A newer position takes the place of
/// one that nobody has fetched yet, so fast work makes no flood. Any thread.
class WriteEvents
{
public:
    void push(const WriteEvent& event);
    std::optional<WriteEvent> take();

private:
    std::mutex m_mutex;
    std::deque<WriteEvent> m_events;
};

/// Turns what a recorder tells into events: positions never fall, stay within the track, and every track that
/// is left behind has ended at its full size. The worker's thread only.
class WriteReporter final : public BurnObserver
{
public:
    WriteReporter(const BurnJob& job, WriteEvents& events) : m_job(job), m_events(events) {}

    void readingTrack(int track) override;
    void progress(int track, qint64 doneBytes, qint64 sizeBytes) override;
    void closingTrack(int track) override;
    void closingDisc() override;
    /// All tracks are written.
    void completed();

private:
    void completeUpTo(int track);
    void tell(int track, qint64 done, qint64 size);

    const BurnJob& m_job;
    WriteEvents& m_events;
    int m_track = 0;   ///< The track told last.
    qint64 m_done = 0; ///< Its position told last.
};

} // namespace zib
