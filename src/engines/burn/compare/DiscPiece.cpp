#include "engines/burn/compare/DiscPiece.h"

#include <cstring>

namespace zib {

QList<DiscPiece> piecesOf(const QList<BurnTrack>& tracks)
{
    QList<DiscPiece> pieces;
    qint64 at = 0;
    int number = 0;
    for (const BurnTrack& track : tracks) {
        if (++number > 1) {
            pieces << DiscPiece{number, at, CdTime::fromFrames(kPregapFrames), {}, true};
            at = pieces.last().end();
        }
        pieces << DiscPiece{number, at, track.length, track, false};
        at = pieces.last().end();
    }
    return pieces;
}

Outcome<> PieceSource::open(const DiscPiece& piece)
{
    m_silent = piece.silent;
    return m_silent ? Outcome<>() : m_source.open(piece.sound);
}

Outcome<> PieceSource::read(qint64 offset, char* buffer, qint64 size)
{
    if (m_silent) {
        std::memset(buffer, 0, static_cast<size_t>(size));
        return {};
    }
    m_source.seek(offset);
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
