#include "engines/burn/drive/DiscPlan.h"

#include <cstdlib>
#include <utility>

#include <libburn/libburn.h>

namespace zib {

namespace {
constexpr int kFifoFrames = 1500; ///< Twenty seconds of sound at single speed.
} // namespace

DiscPlan::DiscPlan(const BurnJob& job, std::shared_ptr<ModeGate> gate, const CdTextTable& text)
    : m_gate(std::move(gate)), m_disc(burn::burn_disc_create()), m_session(burn::burn_session_create())
{
    burn::burn_disc_add_session(m_disc, m_session, BURN_POS_END);
    for (const BurnTrack& track : job.tracks)
        addTrack(track);
    addText(text.titles, "TITLE");
    addText(text.performers, "PERFORMER");
}

DiscPlan::~DiscPlan()
{
    for (burn::burn_track* track : m_tracks)
        burn::burn_track_free(track);
    burn::burn_session_free(m_session);
    burn::burn_disc_free(m_disc);
}

void DiscPlan::addTrack(const BurnTrack& plan)
{
    m_feeds.push_back(std::make_unique<TrackFeed>(plan));
    burn::burn_track* track = burn::burn_track_create();
    m_tracks.push_back(track);
    burn::burn_track_define_data(track, 0, 0, 1, BURN_AUDIO);
    burn::burn_track_set_pregap_size(track, kPregapFrames, 0);
    burn::burn_source* source = makeSource();
    burn::burn_track_set_source(track, source);
    burn::burn_source_free(source);
    burn::burn_session_add_track(m_session, track, BURN_POS_END);
}

/// The file, read ahead, behind the gate.
burn::burn_source* DiscPlan::makeSource()
{
    burn::burn_source* file = m_feeds.back()->makeSource();
    burn::burn_source* fifo = burn::burn_fifo_source_new(file, kBytesPerFrame, kFifoFrames, 0);
    burn::burn_source* guarded = m_gate->guard(fifo ? fifo : file);
    burn::burn_source_free(file);
    if (fifo)
        burn::burn_source_free(fifo);
    return guarded;
}

/// @param texts the disc's own and then one for each track, or none at all.
void DiscPlan::addText(const QList<QByteArray>& texts, const char* kind)
{
    auto* name = const_cast<char*>(kind);
    for (qsizetype i = 0; i < texts.size(); ++i) {
        auto* bytes = reinterpret_cast<unsigned char*>(const_cast<char*>(texts[i].constData()));
        const int length = static_cast<int>(texts[i].size()) + 1;
        if (i == 0)
            burn::burn_session_set_cdtext(m_session, 0, 0, name, bytes, length, 0);
        else
            burn::burn_track_set_cdtext(m_tracks[static_cast<size_t>(i) - 1], 0, 0, name, bytes, length, 0);
    }
}

QByteArray DiscPlan::textPacks() const
{
    unsigned char* packs = nullptr;
    int count = 0;
    if (burn::burn_cdtext_from_session(m_session, &packs, &count, 0) <= 0)
        return {};
    const QByteArray bytes(reinterpret_cast<const char*>(packs), qsizetype{count} * kCdTextPackBytes);
    std::free(packs);
    return bytes;
}

QString DiscPlan::failedFile() const
{
    for (const auto& feed : m_feeds)
        if (feed->failed())
            return feed->name();
    return {};
}

} // namespace zib
