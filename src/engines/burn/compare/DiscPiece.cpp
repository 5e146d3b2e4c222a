#include "engines/burn/compare/DiscPiece.h"

#include <algorithm>
#include <cstring>

namespace zib {

namespace {

/// The stretch of a piece between two addresses in it.
DiscPiece cut(const DiscPiece& piece, qint64 from, qint64 to)
{
    DiscPiece part = piece;
    part.start = from;
    part.first += from - piece.start;
    part.length = CdTime::fromFrames(to - from);
    return part;
}

} // namespace

QList<DiscPiece> piecesOf(const QList<BurnTrack>& tracks)
{
    QList<qint64> starts;
    qint64 at = 0;
    for (const BurnTrack& track : tracks) {
        starts << at;
        at += track.length.frames() + kPregapFrames;
    }
    return piecesAt(tracks, starts);
}

QList<DiscPiece> piecesAt(const QList<BurnTrack>& tracks, const QList<qint64>& starts)
{
    QList<DiscPiece> pieces;
    for (qsizetype i = 0; i < tracks.size(); ++i) {
        const int number = static_cast<int>(i) + 1;
        const qint64 gap = starts[i] - kPregapFrames;
        if (i > 0 && pieces.last().end() == gap)
            pieces << DiscPiece{number, gap, CdTime::fromFrames(kPregapFrames), {}, true};
        pieces << DiscPiece{number, starts[i], tracks[i].length, tracks[i], false};
    }
    return pieces;
}

QList<DiscPiece> inParts(const QList<DiscPiece>& pieces, qint64 frames)
{
    QList<DiscPiece> parts;
    for (const DiscPiece& piece : pieces)
        for (qint64 from = piece.start; from < piece.end(); from += frames)
            parts << cut(piece, from, std::min(from + frames, piece.end()));
    return parts;
}

QList<DiscPiece> between(const QList<DiscPiece>& pieces, qint64 from, qint64 to)
{
    QList<DiscPiece> inside;
    for (const DiscPiece& piece : pieces)
        if (const qint64 first = std::max(from, piece.start), end = std::min(to, piece.end()); first < end)
            inside << cut(piece, first, end);
    return inside;
}

Outcome<> PieceSource::open(const DiscPiece& piece)
{
    m_firstByte = piece.first * kBytesPerFrame;
    m_silent = piece.silent;
    return m_silent ? Outcome<>() : m_source.open(piece.sound);
}

Outcome<> PieceSource::read(qint64 offset, char* buffer, qint64 size)
{
    if (m_silent) {
        std::memset(buffer, 0, static_cast<size_t>(size));
        return {};
    }
    m_source.seek(m_firstByte + offset);
    for (qint64 done = 0; done < size;) {
        const auto got = m_source.read(buffer + done, size - done);
        if (!got)
            return got.error();
        if (*got == 0)
            return Failure{Failure::Kind::UnreadableFile};
        done += *got;
    }
    return {};
}

} // namespace zib
