#include "engines/burn/compare/ImageMatch.h"

#include <algorithm>
#include <cstring>

namespace zib {

namespace {

/// A megabyte: a cancel is heard between two of them.
constexpr qint64 kFramesSeen = 450;

bool isSilent(const char* samples, qint64 size)
{
    return size <= 0 ||
           (samples[0] == 0 && std::memcmp(samples, samples + 1, static_cast<std::size_t>(size) - 1) == 0);
}

/// The samples of a piece as they stand in its file.
class PieceView
{
public:
    bool show(const DiscPiece& piece)
    {
        m_bytes = 0;
        if (piece.silent)
            return true;
        const qint64 first = piece.first * kBytesPerFrame;
        m_bytes = std::clamp<qint64>(piece.sound.dataBytes - first, 0, piece.length.bytes());
        return m_source.open(piece.sound) && (m_bytes == 0 || m_source.show(m_view, first, m_bytes));
    }
    /// Whether these are the samples from @p offset of the piece on, sound first and then silence.
    bool holds(qint64 offset, const char* samples, qint64 size)
    {
        const qint64 sound = std::clamp<qint64>(m_bytes - offset, 0, size);
        if (!isSilent(samples + sound, size - sound))
            return false;
        if (sound == 0)
            return true;
        const bool same = std::memcmp(m_view.at(offset), samples, static_cast<std::size_t>(sound)) == 0;
        m_view.forget(offset + sound);
        return same && m_view.isWhole() && m_source.isUnchanged();
    }

private:
    TrackSource m_source;
    FileView m_view;
    qint64 m_bytes = 0; ///< Of sound.
};

} // namespace

ImageMatch::ImageMatch(int image, const QList<DiscPiece>& pieces)
    : m_start(pieces.first().start),
      m_shown(m_image.show(image, m_start * kBytesPerFrame, (pieces.last().end() - m_start) * kBytesPerFrame))
{
}

qint64 ImageMatch::framesOf(const DiscPiece& piece, const std::atomic<bool>* cancelled,
                            const DiscComparison::Progress& progress)
{
    PieceView wanted;
    if (!m_shown || !wanted.show(piece))
        return 0;
    qint64 done = 0;
    while (done < piece.length.frames() && !(cancelled && cancelled->load())) {
        const qint64 next = std::min(done + kFramesSeen, piece.length.frames());
        const qint64 offset = done * kBytesPerFrame;
        const char* there = m_image.at((piece.start - m_start) * kBytesPerFrame + offset);
        if (!wanted.holds(offset, there, next * kBytesPerFrame - offset) || !m_image.isWhole())
            break;
        done = next;
        m_image.forget((piece.start - m_start + done) * kBytesPerFrame);
        if (!piece.silent)
            progress(piece.track, piece.first + done, piece.sound.length.frames());
    }
    return done;
}

} // namespace zib
