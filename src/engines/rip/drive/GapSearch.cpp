#include "engines/rip/drive/GapSearch.h"

#include "common/CdTime.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>

namespace zib {

namespace {

/// Drives give the sub-channel of a frame nearby at worst.
constexpr qint32 kFarthestMiss = 5;
constexpr int kLastIndex = 99;
constexpr int kPositionAdr = 1; ///< The kind of Q that tells a place (IEC 60908).
/// Looked at before the search goes on by halves, in frames before the gap's end: two seconds first.
constexpr std::initializer_list<qint32> kLikelyPlaces{kPregapFrames, kPregapFrames + 1, 600, 2400, 9600};

int fromBcd(int byte)
{
    return (byte >> 4) * 10 + (byte & 0xF);
}

QPlace placeBy(const QByteArray& q, int (*number)(int))
{
    const auto at = [&q, number](int i) { return number(static_cast<uchar>(q[i])); };
    return {(at(7) * 60 + at(8)) * kFramesPerSecond + at(9) - kPregapFrames, at(1), at(2)};
}

} // namespace

std::optional<QPlace> placeIn(const QByteArray& q, qint32 askedFrame)
{
    if (q.size() < kQBytes || (q[0] & 0xF) != kPositionAdr)
        return std::nullopt;
    for (const QPlace& place : {placeBy(q, fromBcd), placeBy(q, [](int byte) { return byte; })})
        if (std::abs(place.frame - askedFrame) <= kFarthestMiss && place.track <= kMostTracks &&
            place.index <= kLastIndex)
            return place;
    return std::nullopt;
}

qint32 GapSearch::lengthBefore(qint32 end, qint32 first)
{
    qint32 gap = end - 1; // the first frame known to lie in the gap
    qint32 before = first;
    if (gap <= before || !isGap(gap))
        return 0;
    for (const qint32 likely : kLikelyPlaces) {
        const qint32 frame = end - likely;
        if (frame <= before)
            break;
        if (isGap(frame))
            gap = std::min(gap, frame);
        else
            before = frame;
    }
    while (gap - before > 1 && !m_failed) {
        const qint32 middle = before + (gap - before) / 2;
        (isGap(middle) ? gap : before) = middle;
    }
    return m_failed ? 0 : end - gap;
}

/// Where a frame does not tell, the one before does: a gap goes on to its end.
bool GapSearch::isGap(qint32 frame)
{
    std::optional<bool> told = ask(frame);
    if (!told)
        told = ask(frame - 1);
    m_failed = m_failed || !told;
    return told.value_or(false);
}

std::optional<bool> GapSearch::ask(qint32 frame)
{
    if (m_failed || m_questions >= kMostQuestions)
        return std::nullopt;
    ++m_questions;
    return m_isGap(frame);
}

} // namespace zib
