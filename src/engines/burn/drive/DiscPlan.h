#pragma once

#include "engines/burn/drive/TrackFeed.h"
#include "engines/burn/mmc/ModeGate.h"
#include "engines/burn/Recorder.h"
#include "engines/cdtext/CdText.h"

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
    /// @param gate stands before every track; it outlives the plan.  @param text goes into the lead-in; none
    /// where it is empty.
    DiscPlan(const BurnJob& job, std::shared_ptr<ModeGate> gate, const CdTextTable& text);
    ~DiscPlan();
    Q_DISABLE_COPY_MOVE(DiscPlan)

    /// The first track file that cannot be opened or gave less than it promised; empty when none did.
    QString failedFile() const;
    burn::burn_disc* disc() const { return m_disc; }
    /// The packs of CD-TEXT that the library makes of the text, 18 bytes each.
    QByteArray textPacks() const;

private:
    void addTrack(const BurnTrack& plan);
    burn::burn_source* makeSource();
    void addText(const QList<QByteArray>& texts, const char* kind);

    std::shared_ptr<ModeGate> m_gate;
    burn::burn_disc* m_disc;
    burn::burn_session* m_session;
    std::vector<burn::burn_track*> m_tracks;
    std::vector<std::unique_ptr<TrackFeed>> m_feeds;
};

} // namespace zib
