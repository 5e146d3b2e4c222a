#pragma once

#include "components/AudioBlock.h"

#include <QObject>

/// Plays 16-bit samples on the desktop's default sound device.
///
/// setFormat, open, then blocks; position counts from open or the last reset. Calls and signals belong to the
/// owner's thread.
class AudioPlayer : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~AudioPlayer() override;

    /// The format of the blocks to come: Hz and channels, as the reader tells them.
    virtual void setFormat(int rateHz, int channels) = 0;
    /// Samples of all channels together that last @p milliseconds in the set format.
    virtual qint32 bufferSize(qint32 milliseconds) const = 0;
    /// Takes the sound device.  @returns status().
    virtual int open() = 0;
    /// 0 while all is well; negative when there is no device or it was lost.
    virtual int status() const = 0;
    /// Queues a block behind what is queued already.
    virtual void writeBlock(const zib::AudioBlock& block) = 0;
    /// Sample frames the device has really consumed since open or reset.
    virtual qint64 position() const = 0;
    /// Drops what is queued, at once; position starts at 0 again.
    virtual void reset() = 0;
    /// Gives the device back, at once; no signal follows.
    virtual void close() = 0;

signals:
    /// A queued block was used up: queue the next one.
    void BufferDone();
    /// About ten times a second while playing.  @param frames as position() tells.
    void PositionChanged(qint64 frames);
    /// Once, after the last queued sample was heard, or when the device was lost.
    void PlaybackFinished();
};
