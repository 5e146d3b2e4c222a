#pragma once

#include <QString>

#include <deque>
#include <mutex>
#include <optional>

namespace zib {

/// One thing that a running extraction has to tell.
struct RipEvent
{
    enum class Kind
    {
        Started,
        TrackStarted,
        Progress,
        TrackFinished,
        Finished
    };

    Kind kind;
    int progress = 0;    ///< The kind of progress.
    qint32 position = 0; ///< Of Progress; the start for TrackStarted.
    qint32 end = 0;      ///< For TrackStarted.
    qint32 track = 0;    ///< For TrackStarted.
    QString file{};      ///< For TrackStarted.
};

/// Events on their way from the worker to the owner's thread, in order. A newer position takes the place of
/// one of the same kind that nobody has fetched yet, so fast work makes no flood. Any thread.
class RipEvents
{
public:
    void push(const RipEvent& event);
    std::optional<RipEvent> take();

private:
    std::mutex m_mutex;
    std::deque<RipEvent> m_events;
};

} // namespace zib
