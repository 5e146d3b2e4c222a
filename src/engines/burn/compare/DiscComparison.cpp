#include "engines/burn/compare/DiscComparison.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace zib {

namespace {

constexpr int kFramesCompared = 24;
constexpr int kTriesOfAFrame = 4;
/// So many frames are read again; a disc with more wrong ones is wrong, and re-reading all would take hours.
constexpr int kMostRereadFrames = 300;
constexpr int kMostUnreadableFrames = 300;

qint64 framesDown(qint64 pairs)
{
    return pairs >= 0 ? pairs / kSamplesPerFrame : -((-pairs + kSamplesPerFrame - 1) / kSamplesPerFrame);
}

} // namespace

DiscComparison::DiscComparison(DiscSamples& disc, QList<DiscPiece> pieces, const std::atomic<bool>* cancelled,
                               Progress progress)
    : m_disc(disc), m_pieces(std::move(pieces)), m_cancelled(cancelled), m_progress(std::move(progress)),
      m_expected(kFramesCompared * kBytesPerFrame, '\0'), m_read((kFramesCompared + 1) * kBytesPerFrame, '\0')
{
}

Outcome<ComparisonResult> DiscComparison::run(int readOffset)
{
    m_result = {.readOffset = readOffset};
    m_rereadFrames = 0;
    for (const DiscPiece& piece : m_pieces)
        if (auto compared = comparePiece(piece); !compared)
            return compared.error();
        else if (m_result.givenUp)
            break;
    return m_result;
}

Outcome<> DiscComparison::comparePiece(const DiscPiece& piece)
{
    if (auto opened = m_source.open(piece); !opened)
        return opened;
    for (qint64 frame = 0; frame < piece.length.frames() && !m_result.givenUp; frame += kFramesCompared) {
        if (m_cancelled && m_cancelled->load())
            return Failure{Failure::Kind::Cancelled};
        const auto count = static_cast<int>(std::min<qint64>(kFramesCompared, piece.length.frames() - frame));
        if (auto compared = compareBlock(piece, frame, count); !compared)
            return compared;
        if (!piece.silent)
            m_progress(piece.track, piece.first + frame + count, piece.sound.length.frames());
    }
    return {};
}

Outcome<> DiscComparison::compareBlock(const DiscPiece& piece, qint64 frame, int count)
{
    if (auto read = m_source.read(frame * kBytesPerFrame, m_expected.data(), qint64{count} * kBytesPerFrame);
        !read)
        return read;
    m_result.comparedFrames += count;
    const auto same = readsAs(piece, frame, count, m_expected.constData());
    if (same && *same)
        return {};
    if (!same && same.error().kind != Failure::Kind::UnreadableFile)
        return same.error();
    for (int i = 0; i < count; ++i)
        if (auto told = compareFrame(piece, frame + i, m_expected.constData() + qint64{i} * kBytesPerFrame);
            !told)
            return told;
    m_result.givenUp = m_result.unreadableFrames > kMostUnreadableFrames;
    return {};
}

/// One frame of a block that did not come as expected, tried until it does.
Outcome<> DiscComparison::compareFrame(const DiscPiece& piece, qint64 frame, const char* expected)
{
    bool unreadable = false;
    for (int tried = 1; tried <= kTriesOfAFrame; ++tried) {
        if (m_cancelled && m_cancelled->load())
            return Failure{Failure::Kind::Cancelled};
        const auto same = readsAs(piece, frame, 1, expected);
        if (!same && same.error().kind != Failure::Kind::UnreadableFile)
            return same.error();
        if (same && *same)
            return {};
        unreadable = !same;
        if (tried == 1 && ++m_rereadFrames > kMostRereadFrames)
            break;
    }
    noteWrong(piece, frame, unreadable);
    return {};
}

/// Whether the disc holds these samples where the read offset puts them, as far as that is on the disc.
Outcome<bool> DiscComparison::readsAs(const DiscPiece& piece, qint64 frame, int count, const char* expected)
{
    if (piece.start + frame + count > m_disc.leadOut())
        return Failure{Failure::Kind::UnreadableFile};
    const qint64 firstPair = (piece.start + frame) * kSamplesPerFrame - m_result.readOffset;
    const qint64 endPair = firstPair + qint64{count} * kSamplesPerFrame;
    const qint64 from = std::clamp<qint64>(framesDown(firstPair), 0, m_disc.leadOut());
    const qint64 to = std::clamp<qint64>(framesDown(endPair + kSamplesPerFrame - 1), from, m_disc.leadOut());
    if (to == from)
        return true;
    if (auto read = m_disc.read(from, static_cast<int>(to - from), m_read.data()); !read)
        return read.error();
    const qint64 begin = std::max(firstPair, from * kSamplesPerFrame);
    const qint64 end = std::min(endPair, to * kSamplesPerFrame);
    return begin >= end || std::memcmp(m_read.constData() + (begin - from * kSamplesPerFrame) * kBytesPerPair,
                                       expected + (begin - firstPair) * kBytesPerPair,
                                       static_cast<size_t>((end - begin) * kBytesPerPair)) == 0;
}

void DiscComparison::noteWrong(const DiscPiece& piece, qint64 frame, bool unreadable)
{
    ++(unreadable ? m_result.unreadableFrames : m_result.differingFrames);
    if (m_result.firstTrack > 0)
        return;
    m_result.firstTrack = piece.track;
    m_result.firstPlace = CdTime::fromFrames(piece.first + frame);
    m_result.inPregap = piece.silent;
}

} // namespace zib
