#pragma once

#include "engines/burn/Recorder.h"

namespace zib {

/// What the library shows of its work at one look.
struct LibraryView
{
    int begun = 0;               ///< Tracks of which it has asked for sound.
    bool atTrack = false;        ///< Sectors of a track are being written, or were.
    bool closingSession = false; ///< It says so itself.
    int track = 0;               ///< From 1.
    int sector = 0;              ///< Of the track, handed over so far.
    int sectors = 0;             ///< Of the track.
};

/// Makes of the library's looks one sequence of phases that never falls back: each track is read, written
/// and, where tracks are closed one by one, closed; then the disc is closed. Where the library does not say
/// that it closes, it is known from what was handed over to it: behind the last sector of a track there is
/// nothing left but to close.
class WritePhases
{
public:
    enum class Phase
    {
        Preparing,
        Writing,
        ClosingTrack,
        ClosingDisc,
        ReadingBack
    };

    WritePhases(const BurnJob& job, bool sessionAtOnce, BurnObserver& observer);

    void see(const LibraryView& view);
    /// The library has ended well: what it did not show was done.
    void wroteAll();
    void readBack();

    Phase phase() const { return m_phase; }
    int track() const { return m_track; } ///< From 1; 0 before the first.
    /// Whether all that the tracks hold has been handed over, so that there is nothing left to stop.
    bool handedOver() const { return m_phase >= Phase::ClosingDisc || m_lastIsOver; }

private:
    void readUpTo(int track);
    void closeTrack();
    void closeDisc();
    int count() const { return static_cast<int>(m_job.tracks.size()); }

    const BurnJob& m_job;
    const bool m_sessionAtOnce;
    BurnObserver& m_observer;
    Phase m_phase = Phase::Preparing;
    int m_track = 0;
    bool m_lastIsOver = false;
};

} // namespace zib
