#pragma once

#include "common/CdTime.h"
#include "common/FileStamp.h"
#include "common/Outcome.h"

#include <QString>

namespace zib {

class FileView;

/// One left and one right sample.
inline constexpr int kBytesPerPair = 4;

/// One track as a recorder takes it: where its samples stand in a file, in CD format.
struct BurnTrack
{
    QString path;          ///< What to open: the WAV file, or its local copy.
    QString name;          ///< What the user knows it by: the original's path.
    qint64 dataOffset = 0; ///< First byte of the samples.
    qint64 dataBytes = 0;  ///< Bytes of samples, without padding; whole sample pairs.
    CdTime length{};       ///< Frames on the disc, padding included; at least kShortestTrackFrames.
    FileStamp stamp{};     ///< The file as it was when the samples were found.
};

/// Looks into a WAV file of 44100 Hz, 16 bits, 2 channels: plain PCM, RIFF or RF64, extensible header
/// allowed, any other chunks skipped. A data chunk that claims more than the file holds is taken as far as it
/// goes.
/// @returns UnreadableFile when it is anything else, holds no sample, or is no regular file; NotFound.
Outcome<BurnTrack> findTrack(const QString& path);

/// @p track with its samples standing in the headerless copy @p path, padding included, and known by the same
/// name.
BurnTrack atCopy(const BurnTrack& track, const QString& path);

/// Reads the samples of one track as the disc takes them: little endian, padded with silence to its length.
/// Notices a file that was changed since the track was found. One thread at a time.
class TrackSource
{
public:
    TrackSource() = default;
    ~TrackSource();
    Q_DISABLE_COPY_MOVE(TrackSource)

    /// @returns UnreadableFile when the file is gone, changed or unreadable; the detail is the track's name.
    Outcome<> open(const BurnTrack& track);
    /// Fills @p buffer with the next bytes, samples first and then silence.
    /// @returns how many, 0 after the whole length; UnreadableFile when the file gives less than it held.
    Outcome<qint64> read(char* buffer, qint64 size);
    /// The next byte to be read, counted from the track's beginning; at most size().
    void seek(qint64 offset) { m_done = offset; }
    /// Shows so many bytes of the samples from @p offset of the track on, as they stand in the file and
    /// without a copy; the silence behind them is in no file.  @returns as FileView::show.
    bool show(FileView& view, qint64 offset, qint64 size) const;
    /// Whether the file's content is what it was when the track was found.
    bool isUnchanged() const;
    /// Bytes of the whole track on the disc.
    qint64 size() const { return m_track.length.bytes(); }

private:
    void close();

    BurnTrack m_track;
    int m_file = -1;
    qint64 m_done = 0;
};

} // namespace zib
