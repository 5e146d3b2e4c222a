#include "engines/burn/DiscReadback.h"

#include <libburn/libburn.h>

namespace zib {

namespace {

constexpr int kControlData = 0x04;
/// Run-out and link blocks that track-at-once leaves behind a track, at the most.
constexpr int kMostLinkBlocks = 9;

qint64 addressOf(const burn::burn_toc_entry& entry)
{
    if (entry.extensions_valid & 1)
        return entry.start_lba;
    return burn::burn_msf_to_lba(entry.pmin, entry.psec, entry.pframe);
}

DiscContents contentsOfSession(burn::burn_session* session)
{
    DiscContents contents;
    int count = 0;
    burn::burn_track** tracks = burn::burn_session_get_tracks(session, &count);
    for (int i = 0; i < count; ++i) {
        burn::burn_toc_entry entry = {};
        burn::burn_track_get_entry(tracks[i], &entry);
        contents.tracks << DiscContents::Track{addressOf(entry), (entry.control & kControlData) == 0};
    }
    burn::burn_toc_entry leadOut = {};
    burn::burn_session_get_leadout_entry(session, &leadOut);
    contents.leadOut = addressOf(leadOut);
    return contents;
}

} // namespace

std::optional<DiscContents> contentsOf(burn::burn_drive* drive)
{
    burn::burn_disc* disc = burn::burn_drive_get_disc(drive);
    if (!disc)
        return std::nullopt;
    int sessions = 0;
    burn::burn_session** list = burn::burn_disc_get_sessions(disc, &sessions);
    std::optional<DiscContents> contents;
    if (list && sessions == 1)
        contents = contentsOfSession(list[0]);
    burn::burn_disc_free(disc);
    return contents;
}

bool shows(const DiscContents& contents, const BurnJob& job, bool trackAtOnce)
{
    if (contents.tracks.size() != job.tracks.size())
        return false;
    const qint64 slack = trackAtOnce ? kMostLinkBlocks : 0;
    for (qsizetype i = 0; i < job.tracks.size(); ++i) {
        const bool last = i + 1 == job.tracks.size();
        const qint64 end = last ? contents.leadOut : contents.tracks.at(i + 1).start - kPregapFrames;
        const qint64 surplus = end - contents.tracks.at(i).start - job.tracks.at(i).length.frames();
        if (!contents.tracks.at(i).audio || surplus < 0 || surplus > slack)
            return false;
    }
    return true;
}

} // namespace zib
