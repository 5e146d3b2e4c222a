#include "engines/rip/RipRun.h"

#include "common/CdTime.h"
#include "components/CDRipperX.h"

#include <algorithm>
#include <memory>

namespace zib {

namespace {

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
    for (const RipTask& task : m_tasks) {
        const qint32 end = task.toc.start + task.toc.frames;
        m_events.push({.kind = RipEvent::Kind::TrackStarted,
                       .position = task.toc.start,
                       .end = end,
                       .track = task.track,
                       .file = task.path});
        qint32 done = 0;
        const Outcome<> copied = usable ? copy(*reader, task, done) : usable;
        if (m_stopped)
            break;
        if (!copied) {
            m_file.drop();
            m_unread << QStringLiteral("Track %1 %2")
                            .arg(task.track)
                            .arg(sentence(copied.error(), CdTime::fromFrames(done).toMsf()));
            if (holdsForAllTracks(copied.error().kind)) {
                usable = copied;
                m_lostDisc = true;
            }
            m_refusedSound = m_refusedSound || copied.error().kind == Failure::Kind::Unsupported;
        }
        m_events.push({.kind = RipEvent::Kind::TrackFinished});
    }
    m_file.drop();
    m_events.push({.kind = RipEvent::Kind::Finished});
}

Outcome<> RipRun::copy(FrameReader& reader, const RipTask& task, qint32& done)
{
    if (auto begun = m_file.begin(task.path, task.toc.frames); !begun)
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
    return m_file.finish();
}

void RipRun::tellPosition(int kind, qint32 frame)
{
    m_events.push({.kind = RipEvent::Kind::Progress, .progress = kind, .position = frame});
}

void RipRun::abandon()
{
    stop();
    m_file.abandon();
}

} // namespace zib
