#pragma once

#include "engines/burn/Recorder.h"
#include "engines/burn/TrackFeed.h"
#include "engines/burn/mmc/ModeGate.h"

#include <memory>
#include <vector>

namespace burn {
struct burn_disc;
struct burn_session;
struct burn_track;
} // namespace burn

namespace zib {

/// The disc as libburn is told of it: one session, one track for each file, two-second pregaps.
class DiscPlan
{
public:
    /// @param gate stands before every track; it outlives the plan.
    DiscPlan(const BurnJob& job, std::shared_ptr<ModeGate> gate);
    ~DiscPlan();
    Q_DISABLE_COPY_MOVE(DiscPlan)

    /// The first track file that cannot be opened or gave less than it promised; empty when none did.
    QString failedFile() const;
    burn::burn_disc* disc() const { return m_disc; }

private:
    void addTrack(const BurnTrack& track);
    burn::burn_source* makeSource();

    std::shared_ptr<ModeGate> m_gate;
    burn::burn_disc* m_disc;
    burn::burn_session* m_session;
    std::vector<burn::burn_track*> m_tracks;
    std::vector<std::unique_ptr<TrackFeed>> m_feeds;
};

} // namespace zib
