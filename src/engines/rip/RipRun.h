#pragma once

#include "engines/rip/Disc.h"
#include "engines/rip/RipEvents.h"
#include "engines/rip/RipFile.h"

#include <QList>
#include <QStringList>

#include <atomic>
#include <optional>

namespace zib {

/// One track to be copied.
struct RipTask
{
    int track = 0; ///< As the component counts, from 1.
    QString path{};
    TocTrack toc{};
    std::optional<NameBearer> seen{}; ///< Who may be replaced.
};

/// One extraction: the tracks one after the other. A track that cannot be copied whole leaves no file, and
/// the others go on.
class RipRun
{
public:
    explicit RipRun(QList<RipTask> tasks) : m_tasks(std::move(tasks)) {}

    /// Does it all, on the worker's thread.  @param disc none when it cannot be had, for the reason @p why.
    void run(const Disc* disc, const Outcome<>& why = Failure{Failure::Kind::DeviceGone});
    /// Behind run(): whether the disc or its drive was lost on the way.
    bool lostDisc() const { return m_lostDisc; }
    /// Behind run(): whether the drive refused to read sound.
    bool refusedSound() const { return m_refusedSound; }
    /// Asks a running extraction to end; any thread.
    void stop() { m_stopped = true; }
    /// Takes the unfinished file away, even while the worker hangs in a drive; any thread. Waits where the
    /// storage of the file hangs.
    void abandon();

    RipEvents& events() { return m_events; }
    /// A line for each track without a file; complete once the Finished event was taken.
    const QStringList& unread() const { return m_unread; }

private:
    void ripTrack(const RipTask& task, FrameReader* reader, const TrackNames& names, Outcome<>& usable);
    void noteUnread(int track, const Failure& why, qint32 frame, Outcome<>& usable);
    qint32 silentGap(const Disc& disc, FrameReader& reader, const TocTrack& track);
    Outcome<> copy(FrameReader& reader, const RipTask& task, const QByteArray& behind, qint32& done);
    void tellPosition(int kind, qint32 frame);

    const QList<RipTask> m_tasks;
    RipEvents m_events;
    RipFile m_file;
    QStringList m_unread;
    std::atomic<bool> m_stopped = false;
    bool m_lostDisc = false; ///< The worker's own, as the next one.
    bool m_refusedSound = false;
    bool m_judging = false; ///< A gap is read, which nobody is told of.
};

} // namespace zib
