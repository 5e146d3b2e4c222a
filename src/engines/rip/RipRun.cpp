#include "engines/rip/RipRun.h"

#include "common/CdTime.h"
#include "components/CDRipperX.h"
#include "engines/rip/WavNames.h"

#include <algorithm>
#include <memory>

namespace zib {

namespace {

const QString kTaken =
    QStringLiteral("was not saved: a file of its name has been put there since the start was pressed");

/// What went wrong with a track, behind its number: with the place in the track.
QString sentence(const Failure& failure, const QString& place)
{
    switch (failure.kind) {
    case Failure::Kind::NoMedium:
        return QStringLiteral("could not be read at %1: the disc was taken out").arg(place);
    case Failure::Kind::WrongMedium:
        return QStringLiteral("could not be read at %1: the disc was changed").arg(place);
    case Failure::Kind::DeviceGone:
        return QStringLiteral("could not be read at %1: the drive does not answer any more").arg(place);
    case Failure::Kind::Busy:
        return QStringLiteral("could not be read at %1: another program uses the drive").arg(place);
    case Failure::Kind::Unsupported:
        return QStringLiteral("could not be read at %1: the drive refuses to read sound").arg(place);
    case Failure::Kind::WriteFailed:
        return QStringLiteral("could not be saved: check the folder and its free space");
    case Failure::Kind::NoPermission:
        return QStringLiteral("could not be saved: you may not write into the folder");
    default:
        return QStringLiteral("could not be read at %1").arg(place) +
               (failure.detail.isEmpty() ? QString() : QStringLiteral(": ") + failure.detail);
    }
}

/// Many discs tell their performer once, for all tracks.
TrackNames namesOfTrack(const DiscNames& disc, int track)
{
    TrackNames names = disc.tracks.value(track - 1);
    if (names.artist.isEmpty() && !names.title.isEmpty())
        names.artist = disc.artist;
    return names;
}

bool holdsForAllTracks(Failure::Kind kind)
{
    return kind == Failure::Kind::NoMedium || kind == Failure::Kind::WrongMedium ||
           kind == Failure::Kind::DeviceGone || kind == Failure::Kind::Busy;
}

} // namespace

void RipRun::run(const Disc* disc, const Outcome<>& why)
{
    m_events.push({.kind = RipEvent::Kind::Started});
    std::unique_ptr<FrameReader> reader;
    Outcome<> usable = why;
    if (disc) {
        reader = disc->makeReader(m_stopped, [this](int kind, qint32 frame) { tellPosition(kind, frame); });
        usable = reader->open();
    }
    const DiscNames names = usable ? disc->names() : DiscNames();
    for (RipTask task : m_tasks) {
        if (usable)
            task.toc.frames -= silentGap(*disc, *reader, task.toc);
        ripTrack(task, reader.get(), namesOfTrack(names, task.track), usable);
        if (m_stopped)
            break;
        m_events.push({.kind = RipEvent::Kind::TrackFinished});
    }
    m_file.drop();
    m_events.push({.kind = RipEvent::Kind::Finished});
}

void RipRun::ripTrack(const RipTask& task, FrameReader* reader, const TrackNames& names, Outcome<>& usable)
{
    m_events.push({.kind = RipEvent::Kind::TrackStarted,
                   .position = task.toc.start,
                   .end = task.toc.start + task.toc.frames,
                   .track = task.track,
                   .file = task.path});
    qint32 done = 0;
    const Outcome<> copied = usable ? copy(*reader, task, nameChunks(names), done) : usable;
    if (!m_stopped && !copied)
        noteUnread(task.track, copied.error(), done, usable);
}

void RipRun::noteUnread(int track, const Failure& why, qint32 frame, Outcome<>& usable)
{
    m_file.drop();
    const QString what = m_file.wasTaken() ? kTaken : sentence(why, CdTime::fromFrames(frame).toMsf());
    m_unread << QStringLiteral("Track %1 %2").arg(track).arg(what);
    if (holdsForAllTracks(why.kind)) {
        usable = why;
        m_lostDisc = true;
    }
    m_refusedSound = m_refusedSound || why.kind == Failure::Kind::Unsupported;
}

/// The frames at the end of a track that are no part of it: the next one's gap, if nothing sounds there. What
/// cannot be read may well sound.
qint32 RipRun::silentGap(const Disc& disc, FrameReader& reader, const TocTrack& track)
{
    const qint32 gap = disc.gapBehind(track, m_stopped);
    if (gap <= 0 || gap >= track.frames)
        return 0;
    TocTrack place = track;
    place.start = track.start + track.frames - gap;
    place.frames = gap;
    m_judging = true;
    reader.begin(place);
    bool silent = true;
    for (qint32 i = 0; i < gap && silent; ++i) {
        const auto frame = reader.next();
        silent = frame && std::all_of(*frame, *frame + kBytesPerFrame, [](char byte) { return byte == 0; });
    }
    m_judging = false;
    return silent ? gap : 0;
}

Outcome<> RipRun::copy(FrameReader& reader, const RipTask& task, const QByteArray& behind, qint32& done)
{
    if (auto begun = m_file.begin(task.path, task.toc.frames, behind, task.seen); !begun)
        return begun;
    reader.begin(task.toc);
    for (done = 0; done < task.toc.frames; ++done) {
        const auto frame = reader.next();
        if (!frame) {
            if (frame.error().kind == Failure::Kind::UnreadableFile)
                done = std::clamp(reader.badFrame() - task.toc.start, 0, task.toc.frames - 1);
            return frame.error();
        }
        if (auto written = m_file.write(*frame); !written)
            return written;
        tellPosition(CDRipperX::kPositionProgress, task.toc.start + done + 1);
    }
    return m_file.finish(m_stopped);
}

void RipRun::tellPosition(int kind, qint32 frame)
{
    if (!m_judging)
        m_events.push({.kind = RipEvent::Kind::Progress, .progress = kind, .position = frame});
}

void RipRun::abandon()
{
    stop();
    m_file.abandon();
}

} // namespace zib
