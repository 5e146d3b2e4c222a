#include "engines/burn/compare/ReadOffset.h"

#include <QByteArray>
#include <QSet>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <optional>

namespace zib {

namespace {

/// Tracks that are looked at, each at two places.
constexpr int kMostTracksLookedAt = 8;
/// How far into a track its first sound is looked for.
constexpr qint64 kFramesSearched = 30 * kFramesPerSecond;
constexpr qint64 kFramesLookedAt = 2;
constexpr qint64 kMarginFrames = kMostReadOffset / kSamplesPerFrame;

/// What a place of the disc should sound like.
struct Look
{
    qint64 frame = 0; ///< Its first frame on the disc.
    QByteArray expected;
};

bool isFlat(const QByteArray& sound)
{
    return std::memcmp(sound.constData(), sound.constData() + kBytesPerPair,
                       static_cast<size_t>(sound.size() - kBytesPerPair)) == 0;
}

/// The frames from @p frame of a piece on, when they hold anything that tells one place from another. The
/// frame before the piece, -1, is the pause before a track.
std::optional<Look> lookAt(PieceSource& source, const DiscPiece& piece, qint64 frame)
{
    const int silent = frame < 0 ? kBytesPerFrame : 0;
    Look look{piece.start + frame, QByteArray(kFramesLookedAt * kBytesPerFrame, '\0')};
    const auto read = source.read(std::max<qint64>(frame, 0) * kBytesPerFrame, look.expected.data() + silent,
                                  look.expected.size() - silent);
    if (!read || isFlat(look.expected))
        return std::nullopt;
    return look;
}

/// The place where a track's first sound begins, which tells where a steady tone begins, and one in its
/// middle, which stands clear of the ends of the disc.
QList<Look> looksAt(const DiscPiece& piece)
{
    QList<Look> looks;
    PieceSource source;
    if (!source.open(piece))
        return looks;
    const qint64 searched = std::min(kFramesSearched, piece.length.frames() - kFramesLookedAt);
    for (qint64 frame = -1; frame < searched && looks.isEmpty(); ++frame)
        if (const auto look = lookAt(source, piece, frame))
            looks << *look;
    if (const auto look = lookAt(source, piece, piece.length.frames() / 2))
        looks << *look;
    return looks;
}

/// Whether a disc that is off by any offset shows the look's place in whole.
bool isClearOfTheEnds(const Look& look, qint64 leadOut)
{
    return look.frame >= kMarginFrames && look.frame + kFramesLookedAt + kMarginFrames <= leadOut;
}

/// All offsets at which the disc holds what a look expects.
QSet<int> offsetsOf(DiscSamples& disc, const Look& look)
{
    constexpr qint64 kFrames = kFramesLookedAt + 2 * kMarginFrames;
    constexpr qint64 kPlace = kMarginFrames * kBytesPerFrame;
    QByteArray sound(kFrames * kBytesPerFrame, '\0');
    QSet<int> offsets;
    if (!disc.read(look.frame - kMarginFrames, static_cast<int>(kFrames), sound.data()))
        return offsets;
    for (qint64 at = 0; at <= 2 * kPlace; at += kBytesPerPair)
        if (std::memcmp(sound.constData() + at, look.expected.constData(),
                        static_cast<size_t>(look.expected.size())) == 0)
            offsets << static_cast<int>((kPlace - at) / kBytesPerPair);
    return offsets;
}

QList<Look> looksAt(const QList<DiscPiece>& pieces, qint64 leadOut)
{
    QList<Look> looks;
    int tracks = 0;
    for (const DiscPiece& piece : pieces) {
        if (piece.silent || ++tracks > kMostTracksLookedAt)
            continue;
        for (const Look& look : looksAt(piece))
            if (isClearOfTheEnds(look, leadOut))
                looks << look;
    }
    return looks;
}

/// One end of the disc, as it reads and as it should sound.
struct DiscEnd
{
    QByteArray read;
    QByteArray expected;

    /// Whether both agree at an offset, as far as both go.
    bool agreesAt(int offset) const
    {
        const qsizetype skippedRead = qsizetype{std::max(0, -offset)} * kBytesPerPair;
        const qsizetype skippedExpected = qsizetype{std::max(0, offset)} * kBytesPerPair;
        const qsizetype size = read.size() - std::max(skippedRead, skippedExpected);
        return std::memcmp(read.constData() + skippedRead, expected.constData() + skippedExpected,
                           static_cast<size_t>(size)) == 0;
    }
};

/// The end that begins so far within a piece; nothing when it cannot be read.
std::optional<DiscEnd> endAt(DiscSamples& disc, const DiscPiece& piece, qint64 frame)
{
    constexpr qint64 kFrames = kFramesLookedAt + kMarginFrames;
    DiscEnd end{QByteArray(kFrames * kBytesPerFrame, '\0'), QByteArray(kFrames * kBytesPerFrame, '\0')};
    PieceSource source;
    if (!source.open(piece) || !disc.read(piece.start + frame, static_cast<int>(kFrames), end.read.data()) ||
        !source.read(frame * kBytesPerFrame, end.expected.data(), end.expected.size()))
        return std::nullopt;
    return end;
}

/// Of several offsets those at which both ends of the disc agree too, where there are such.
QSet<int> fittingAtTheEnds(DiscSamples& disc, const QList<DiscPiece>& pieces, const QSet<int>& offsets)
{
    const DiscPiece& last = pieces.last();
    const auto head = endAt(disc, pieces.first(), 0);
    const auto tail = endAt(disc, last, last.length.frames() - kFramesLookedAt - kMarginFrames);
    QSet<int> agreeing;
    for (const int offset : offsets)
        if (head && tail && head->agreesAt(offset) && tail->agreesAt(offset))
            agreeing << offset;
    return agreeing.isEmpty() ? offsets : agreeing;
}

} // namespace

/// A steady tone fits at many offsets, so those of one look are narrowed by the next ones. Where a look
/// leaves none of them, the disc is not off by a constant number there, and the beginning of the disc counts.
int readOffsetOf(DiscSamples& disc, const QList<DiscPiece>& pieces)
{
    QSet<int> fitting;
    for (const Look& look : looksAt(pieces, disc.leadOut())) {
        const QSet<int> offsets = offsetsOf(disc, look);
        if (fitting.isEmpty())
            fitting = offsets;
        else if (!offsets.isEmpty() && !fitting.intersects(offsets))
            break;
        else if (!offsets.isEmpty())
            fitting.intersect(offsets);
    }
    if (fitting.size() > 1)
        fitting = fittingAtTheEnds(disc, pieces, fitting);
    const auto smaller = [](int a, int b) { return std::abs(a) < std::abs(b) || (a == -b && a > b); };
    const auto best = std::min_element(fitting.cbegin(), fitting.cend(), smaller);
    return best == fitting.cend() ? 0 : *best;
}

} // namespace zib
