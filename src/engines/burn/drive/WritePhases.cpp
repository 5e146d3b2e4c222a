#include "engines/burn/drive/WritePhases.h"

#include <algorithm>

namespace zib {

WritePhases::WritePhases(const BurnJob& job, bool sessionAtOnce, BurnObserver& observer)
    : m_job(job), m_sessionAtOnce(sessionAtOnce), m_observer(observer)
{
}

void WritePhases::see(const LibraryView& view)
{
    if (m_phase >= Phase::ClosingDisc)
        return;
    if (view.closingSession) {
        // Where it says so before the last track, it has given up.
        if (view.begun >= count())
            closeDisc();
        return;
    }
    const int track = std::clamp(view.track, 1, count());
    const bool back = track < m_track || (track == m_track && m_phase == Phase::ClosingTrack);
    if (!view.atTrack || view.sectors <= 0 || back)
        return;
    readUpTo(track);
    m_phase = Phase::Writing;
    const qint64 size = m_job.tracks.at(track - 1).length.bytes();
    m_observer.progress(track, std::clamp<qint64>(qint64{view.sector} * kBytesPerFrame, 0, size), size);
    if (view.sector < view.sectors)
        return;
    m_lastIsOver = track == count();
    if (!m_sessionAtOnce)
        closeTrack();
    else if (m_lastIsOver)
        closeDisc();
}

void WritePhases::wroteAll()
{
    if (m_phase >= Phase::ClosingDisc)
        return;
    readUpTo(count());
    closeDisc();
}

void WritePhases::readBack()
{
    wroteAll();
    m_phase = Phase::ReadingBack;
    m_observer.readingBack();
}

/// Tells of each track once, in order, also of those that passed between two looks.
void WritePhases::readUpTo(int track)
{
    while (m_track < track)
        m_observer.readingTrack(++m_track);
}

void WritePhases::closeTrack()
{
    m_phase = Phase::ClosingTrack;
    m_observer.closingTrack(m_track);
}

void WritePhases::closeDisc()
{
    readUpTo(count());
    m_phase = Phase::ClosingDisc;
    m_observer.closingDisc();
}

} // namespace zib
