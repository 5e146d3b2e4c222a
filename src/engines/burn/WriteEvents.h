#pragma once

#include "engines/burn/Recorder.h"

#include <QString>
#include <QStringList>

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
        Comparing,
        Waiting,
        Remark,
        Ended
    };

    Kind kind;
    qint32 track = 0;
    qint32 done = 0;     ///< Percent for Caching, bytes for Progress, frames for Comparing.
    qint32 size = 0;     ///< Sectors for Reading, bytes for Progress, frames for Comparing.
    QString name{};      ///< The file's name for Reading, the words for Waiting and Remark.
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
/// is left behind has ended at its full size. A phase is never told after a later one: a track is read,
/// written and closed, then comes the next; after the last one the disc is closed, read back and compared.
/// The worker's thread only, but for waiting().
class WriteReporter final : public BurnObserver
{
public:
    WriteReporter(const BurnJob& job, WriteEvents& events) : m_job(job), m_events(events) {}

    void readingTrack(int track) override;
    void progress(int track, qint64 doneBytes, qint64 sizeBytes) override;
    void closingTrack(int track) override;
    void closingDisc() override;
    void readingBack() override;
    void comparing(int track, qint64 doneFrames, qint64 frames) override;
    void waiting(const QString& what) override;
    /// Remarks add up: each event holds all of them, a line each.
    void remark(const QString& text) override;
    /// All tracks are written.
    void completed();

private:
    /// The order of phases: two steps for a track, then the disc.  @returns whether this is not behind us.
    bool reach(int rank);
    int rankOf(int track, int step) const { return track * kSteps + step; }
    int lastRank() const { return rankOf(static_cast<int>(m_job.tracks.size()) + 1, 0); }
    void completeUpTo(int track);
    void tell(int track, qint64 done, qint64 size);

    const BurnJob& m_job;
    WriteEvents& m_events;
    static constexpr int kSteps = 3; ///< Reading, writing, closing.
    int m_rank = 0;                  ///< Of the phase told last.
    int m_track = 0;                 ///< The track told last.
    qint64 m_done = 0;               ///< Its position told last.
    QStringList m_remarks;
};

} // namespace zib
