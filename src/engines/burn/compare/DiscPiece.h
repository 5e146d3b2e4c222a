#pragma once

#include "common/CdTime.h"
#include "engines/burn/tracks/TrackSource.h"

#include <QList>

namespace zib {

/// A stretch of a disc whose samples are known: the sound of a track, or the silence before it.
struct DiscPiece
{
    int track = 0;    ///< From 1; of a silence, the track that follows it.
    qint64 start = 0; ///< Logical block address of its first frame.
    CdTime length{};
    BurnTrack sound{}; ///< Unused for a silence.
    bool silent = false;
    qint64 first = 0; ///< Its first frame, counted from the beginning of the track or silence.

    qint64 end() const { return start + length.frames(); }
};

/// A disc of these tracks in session-at-once: the sound of each and the pregap before all but the first.
QList<DiscPiece> piecesOf(const QList<BurnTrack>& tracks);
/// A disc whose tracks begin at these addresses. What lies between two of them is known only where it is a
/// pregap and nothing else; track-at-once leaves blocks of its own there.
QList<DiscPiece> piecesAt(const QList<BurnTrack>& tracks, const QList<qint64>& starts);

/// The same stretches in parts of at most so many frames.
QList<DiscPiece> inParts(const QList<DiscPiece>& pieces, qint64 frames);
/// What of them lies between two logical block addresses, the second one not included.
QList<DiscPiece> between(const QList<DiscPiece>& pieces, qint64 from, qint64 to);

/// The samples of one piece. Offsets, from the piece's first frame, and sizes are bytes.
class PieceSource
{
public:
    /// @returns as TrackSource::open.
    Outcome<> open(const DiscPiece& piece);
    /// Any stretch of the piece, in any order.  @returns as TrackSource::read.
    Outcome<> read(qint64 offset, char* buffer, qint64 size);

private:
    TrackSource m_source;
    qint64 m_firstByte = 0;
    bool m_silent = false;
};

} // namespace zib
