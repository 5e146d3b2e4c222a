#pragma once

#include "components/AudioBlock.h"

#include <QObject>

/// Plays 16-bit samples on the desktop's default sound device.
///
/// Order of calls: setFormat, open, blocks, close; then open again. Sound starts with the first block. While
/// the device is open, its owner keeps blocks queued: it answers BufferDone with writeBlock, and once nothing
/// is queued or expected when control is back in the event loop, what was queued is played out, the device is
/// given back and PlaybackFinished follows. Calls and signals belong to the owner's thread.
class AudioPlayer : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~AudioPlayer() override;

    /// The format of the blocks to come: Hz and channels, as the reader tells them. Holds from the next open
    /// on.
    virtual void setFormat(int rateHz, int channels) = 0;
    /// Samples of all channels together that last @p milliseconds in the set format.
    virtual qint32 bufferSize(qint32 milliseconds) const = 0;
    /// Takes the sound device; one that is open is given back first. Waits three seconds at most.
    /// @returns status().
    virtual int open() = 0;
    /// 0 while all is well; negative when there is no device or it was lost, until the next open.
    virtual int status() const = 0;
    /// Queues a 16-bit block behind what is queued already. Without an open device, or with floating samples,
    /// it does nothing.
    virtual void writeBlock(const zib::AudioBlock& block) = 0;
    /// While on, an empty queue is a pause and not the end: the owner waits for a block itself. Off after
    /// open.
    virtual void setExpecting(bool on) = 0;
    /// Sample frames the device has really consumed since open or reset, whichever was later. After close it
    /// stays where the sound ended.
    virtual qint64 position() const = 0;
    /// Drops what is queued, at once; position starts at 0 again. Without an open device it does nothing.
    virtual void reset() = 0;
    /// Gives the device back, at once; no signal follows.
    virtual void close() = 0;

signals:
    /// A queued block was used up: queue the next one.
    void BufferDone();
    /// About ten times a second while playing.  @param frames as position() tells.
    void PositionChanged(qint64 frames);
    /// Once for each open, after the last queued sample was heard or when the device was lost.
    void PlaybackFinished();
};
