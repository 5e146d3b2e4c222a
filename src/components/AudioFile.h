#pragma once

#include "components/AudioBlock.h"
#include "components/AudioLoss.h"

#include <QObject>
#include <QString>

/// Reads one audio file, or writes one WAV file, block by block.
///
/// Reader: open, any number of readBlock and seek, close. Writer: setOutputFormat, create, setInputFormat,
/// any number of writeBlock, then close to keep the file or discard to leave none. An instance serves one
/// file at a time and can be used again after close. Blocks are exchanged on the thread that owns the object;
/// engines may decode ahead on threads of their own.
class AudioFile : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~AudioFile() override;

    /// Opens an MP3 or WAV file for reading.  @returns status().
    virtual int open(const QString& path) = 0;
    /// Begins a WAV file under a temporary name in the target's folder.  @returns status().
    virtual int create(const QString& path) = 0;
    /// 0 while all is well; negative from the first failure on: cannot open or create, not audio, damaged
    /// beyond reading, no sample at all, disc full.
    virtual int status() const = 0;

    /// Writer: the format of the file: Hz, channels (1 or 2), bits (16).
    virtual void setOutputFormat(int rateHz, int channels, int bits) = 0;
    /// Writer: rate and channels alone, at 16 bits.
    virtual void setRateAndChannels(int rateHz, int channels) = 0;
    /// Writer: the format of the blocks to come, as a reader's formatRate and formatChannels tell it.
    virtual void setInputFormat(int rateHz, int channels) = 0;

    /// Reader: Hz of the blocks it delivers.
    virtual int formatRate() const = 0;
    /// Reader: channels of the blocks it delivers.
    virtual int formatChannels() const = 0;
    /// Reader: length in sample frames (one sample of every channel), exact; 0 when nothing is open.
    virtual qint64 length() const = 0;
    /// Reader: samples of a block that make one unit of length: the channel count.
    virtual int samplesPerUnit() const = 0;

    /// Reader: blocks carry 16-bit samples only, rounded and dithered where the source is finer. Off at
    /// first.
    virtual void setSixteenBitBlocks(bool on) = 0;
    /// Reader: the next block of at most @p samples samples of all channels together, always whole frames;
    /// empty at the end or after a failure.
    virtual zib::AudioBlock readBlock(qint32 samples) = 0;
    /// Reader: makes sample frame @p frame (0 to length()) the next one.  @returns the position reached.
    virtual qint64 seek(qint64 frame) = 0;
    /// Reader: what of the file's sound is lost, as far as it is known: missing parts from open() on, parts
    /// that do not decode as they are read. Nothing when nothing is open.
    virtual zib::AudioLoss loss() const { return {}; }

    /// Writer: appends a block; a failure shows in status() at the latest at close().
    virtual void writeBlock(const zib::AudioBlock& block) = 0;
    /// Reader: closes. Writer: finishes the file, flushes it to the disc and only then gives it its name;
    /// after a failure no file of that name appears. Does nothing when nothing is open.
    virtual void close() = 0;
    /// Writer: drops what was written; no file appears.
    virtual void discard() = 0;
};
