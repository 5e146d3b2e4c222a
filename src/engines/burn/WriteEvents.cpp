#include "engines/burn/WriteEvents.h"

#include "common/Numbers.h"

#include <QFileInfo>

#include <algorithm>
#include <limits>

namespace zib {

namespace {

/// A number as the events carry it; what would not fit cannot be on a disc.
qint32 told(qint64 number)
{
    return narrowed<qint32>(number).value_or(std::numeric_limits<qint32>::max());
}

bool replaces(const WriteEvent& newer, const WriteEvent& older)
{
    const bool position = newer.kind == WriteEvent::Kind::Progress ||
                          newer.kind == WriteEvent::Kind::Caching ||
                          newer.kind == WriteEvent::Kind::Comparing;
    return position && newer.kind == older.kind && newer.track == older.track;
}

} // namespace

void WriteEvents::push(const WriteEvent& event)
{
    const std::lock_guard lock(m_mutex);
    if (!m_events.empty() && replaces(event, m_events.back()))
        m_events.back() = event;
    else
        m_events.push_back(event);
}

std::optional<WriteEvent> WriteEvents::take()
{
    const std::lock_guard lock(m_mutex);
    if (m_events.empty())
        return std::nullopt;
    WriteEvent event = std::move(m_events.front());
    m_events.pop_front();
    return event;
}

bool WriteReporter::reach(int rank)
{
    if (rank < m_rank)
        return false;
    m_rank = rank;
    return true;
}

void WriteReporter::readingTrack(int track)
{
    if (!reach(rankOf(track, 0)))
        return;
    completeUpTo(track - 1);
    const BurnTrack& read = m_job.tracks[track - 1];
    m_events.push({.kind = WriteEvent::Kind::Reading,
                   .track = track,
                   .size = told(read.length.frames()),
                   .name = QFileInfo(read.name).fileName()});
}

void WriteReporter::progress(int track, qint64 doneBytes, qint64 sizeBytes)
{
    if (track < m_track || sizeBytes <= 0 || !reach(rankOf(track, 1)))
        return;
    completeUpTo(track - 1);
    const qint64 floor = track == m_track ? m_done : 0;
    const qint64 done = std::clamp(doneBytes, std::min(floor, sizeBytes), sizeBytes);
    if (track != m_track || done != m_done) // Standing still is no news, and what is waited for stays told.
        tell(track, done, sizeBytes);
}

void WriteReporter::closingTrack(int track)
{
    if (!reach(rankOf(track, 2)))
        return;
    completeUpTo(track);
    m_events.push({.kind = WriteEvent::Kind::ClosingTrack, .track = track});
}

void WriteReporter::closingDisc()
{
    if (m_rank == lastRank() || !reach(lastRank()))
        return;
    completed();
    m_events.push({.kind = WriteEvent::Kind::ClosingDisc});
}

void WriteReporter::readingBack()
{
    if (!reach(lastRank() + 1))
        return;
    completed();
    waiting(QStringLiteral("Reading the disc back, please wait..."));
}

void WriteReporter::comparing(int track, qint64 doneFrames, qint64 frames)
{
    if (!reach(lastRank() + 1 + track))
        return;
    completed();
    m_events.push({.kind = WriteEvent::Kind::Comparing,
                   .track = track,
                   .done = told(doneFrames),
                   .size = told(frames)});
}

void WriteReporter::waiting(const QString& what)
{
    m_events.push({.kind = WriteEvent::Kind::Waiting, .name = what});
}

void WriteReporter::remark(const QString& text)
{
    m_remarks << text;
    m_events.push({.kind = WriteEvent::Kind::Remark, .name = m_remarks.join(u'\n')});
}

void WriteReporter::completed()
{
    completeUpTo(static_cast<int>(m_job.tracks.size()));
}

void WriteReporter::completeUpTo(int track)
{
    for (int next = std::max(m_track, 1); next <= track; ++next) {
        const qint64 size = m_job.tracks[next - 1].length.bytes();
        if (next != m_track || m_done < size)
            tell(next, size, size);
    }
}

void WriteReporter::tell(int track, qint64 done, qint64 size)
{
    m_track = track;
    m_done = done;
    m_events.push(
        {.kind = WriteEvent::Kind::Progress, .track = track, .done = told(done), .size = told(size)});
}

} // namespace zib
