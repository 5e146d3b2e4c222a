#pragma once

#include "common/DiscNames.h"
#include "common/Outcome.h"

#include <QList>

#include <atomic>
#include <functional>
#include <memory>

namespace zib {

/// A track as the table of contents tells it, or the sheet of an image.
struct TocTrack
{
    int number = 0;   ///< The disc's own number.
    qint32 start = 0; ///< First frame.
    qint32 frames = 0;
    bool audio = false;
    bool copyPermitted = false;
    bool preemphasis = false;
    qint32 gap = 0;     ///< Frames of its gap, which lie before its start; 0 where it is not known.
    TrackNames names{}; ///< As the sheet of an image tells them; a drive is asked for them by Disc::names().

    bool operator==(const TocTrack&) const = default;
};

/// Reads tracks of sound frame by frame. The worker's thread only.
class FrameReader
{
public:
    virtual ~FrameReader() = default;

    /// @returns why no track can be read.
    virtual Outcome<> open() = 0;
    virtual void begin(const TocTrack& track) = 0;
    /// The next frame of the track: 2352 bytes that last until the next call.
    /// @returns UnreadableFile when it cannot be read; NoMedium, WrongMedium, DeviceGone or Unsupported (it
    /// reads no sound) when none can; or Cancelled.
    virtual Outcome<const char*> next() = 0;
    /// Behind a frame that cannot be read: the frame that is to blame, which may lie a little ahead.
    virtual qint32 badFrame() const = 0;
};

/// A disc to be read, in a drive or as an image. One thread at a time.
class Disc
{
public:
    /// Told of the work as one of CDRipperX's kinds of progress, with the frame it is at.
    using Progress = std::function<void(int kind, qint32 frame)>;

    virtual ~Disc() = default;

    /// The tracks in disc order; empty when there is none.
    virtual QList<TocTrack> tracks() const = 0;
    /// What the disc and its tracks are called; empty where nothing tells. May take a drive seconds.
    virtual DiscNames names() const = 0;
    /// Frames at the end of a track that are the gap of the next one; 0 where there is none, or it is not
    /// found. Asks a drive for a few frames.  @param stopped ends the search when set by another thread.
    virtual qint32 gapBehind(const TocTrack& track, const std::atomic<bool>& stopped) const = 0;
    /// A reader that does not outlive the disc.  @param stopped ends its work when set by another thread.
    virtual std::unique_ptr<FrameReader> makeReader(const std::atomic<bool>& stopped,
                                                    Progress progress) const = 0;
};

} // namespace zib
