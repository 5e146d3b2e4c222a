#pragma once

#include "common/Outcome.h"
#include "engines/rip/CdioDisc.h"

#include <QByteArray>
#include <QElapsedTimer>

#include <atomic>
#include <functional>
#include <optional>

struct cdrom_drive_s;
struct cdrom_paranoia_s;

namespace zib {

/// Reads tracks of sound securely: every frame is read more than once, pieces are joined where they agree,
/// and a place that no reading agrees on is a failure. The worker's thread only.
class TrackReader
{
public:
    /// Told of the work as one of CDRipperX's kinds of progress, with the frame it is at.
    using Progress = std::function<void(int kind, qint32 frame)>;

    /// So long one frame may take with all its repeated readings.
    static constexpr qint64 kFramePatienceMs = 30'000;

    /// All arguments outlive the reader.  @param stopped ends the work when set by another thread.
    TrackReader(const CdioDisc& disc, const std::atomic<bool>& stopped, Progress progress,
                qint64 framePatienceMs = kFramePatienceMs);
    ~TrackReader();
    Q_DISABLE_COPY_MOVE(TrackReader)

    Outcome<> open();
    void begin(const TocTrack& track);
    /// The next frame of the track: 2352 bytes that last until the next call.
    /// @returns UnreadableFile when it cannot be read; NoMedium, WrongMedium or DeviceGone when none can; or
    /// Cancelled.
    Outcome<const char*> next();
    /// Behind a frame that cannot be read: the frame that is to blame, which may lie a little ahead.
    qint32 badFrame() const { return m_badFrame; }

private:
    static long readGuarded(cdrom_drive_s* drive, void* data, int first, long count);
    long read(char* data, qint32 first, qint32 count);
    Outcome<> readOnce(char* data, qint32 first, qint32 count);
    void told(long words, int what);
    void closeTrack();

    const CdioDisc& m_disc;
    const std::atomic<bool>& m_stopped;
    Progress m_progress;
    const qint64 m_patienceMs;
    QByteArray m_unwanted; ///< Where frames go that are read only to empty the drive's memory.
    cdrom_drive_s* m_drive = nullptr;
    cdrom_paranoia_s* m_reading = nullptr;
    QElapsedTimer m_frameTime;
    qint32 m_badFrame = 0;
    bool m_unreadable = false;        ///< A single frame was refused while the present one was worked on.
    bool m_skipped = false;           ///< The frame was given up.
    std::optional<Failure> m_failure; ///< Nothing more can be read.
};

} // namespace zib
