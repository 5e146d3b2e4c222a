#pragma once

#include "common/Outcome.h"
#include "engines/rip/drive/CdioDisc.h"

#include <QByteArray>
#include <QElapsedTimer>

#include <atomic>
#include <optional>

struct cdrom_drive_s;
struct cdrom_paranoia_s;

namespace zib {

/// Reads tracks of sound securely: every frame is read more than once, pieces are joined where they agree,
/// and a place that no reading agrees on is a failure. The worker's thread only.
class TrackReader final : public FrameReader
{
public:
    /// So long one frame may take with all its repeated readings.
    static constexpr qint64 kFramePatienceMs = 30'000;

    /// All arguments outlive the reader.  @param stopped ends the work when set by another thread.
    TrackReader(const CdioDisc& disc, const std::atomic<bool>& stopped, Disc::Progress progress,
                qint64 framePatienceMs = kFramePatienceMs);
    ~TrackReader() override;
    Q_DISABLE_COPY_MOVE(TrackReader)

    Outcome<> open() override;
    void begin(const TocTrack& track) override;
    Outcome<const char*> next() override;
    qint32 badFrame() const override { return m_badFrame; }

private:
    static long readGuarded(cdrom_drive_s* drive, void* data, int first, long count);
    long read(char* data, qint32 first, qint32 count);
    Outcome<> readOnce(char* data, qint32 first, qint32 count);
    Failure whyClosed() const;
    bool endsEverything(Failure::Kind kind, qint32 frame) const;
    void told(long words, int what);
    void closeTrack();

    const CdioDisc& m_disc;
    const std::atomic<bool>& m_stopped;
    Disc::Progress m_progress;
    const qint64 m_patienceMs;
    QByteArray m_unwanted; ///< Where frames go that are read only to empty the drive's memory.
    cdrom_drive_s* m_drive = nullptr;
    cdrom_paranoia_s* m_reading = nullptr;
    TocTrack m_track;
    QElapsedTimer m_frameTime;
    qint32 m_badFrame = 0;
    bool m_unreadable = false;        ///< A single frame was refused while the present one was worked on.
    bool m_skipped = false;           ///< The frame was given up.
    std::optional<Failure> m_failure; ///< Nothing more can be read.
};

} // namespace zib
