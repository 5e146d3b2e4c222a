#include "engines/rip/drive/DriveDetails.h"

#include "common/CdTime.h"
#include "engines/cdtext/CdText.h"
#include "engines/rip/drive/DriveQuestion.h"
#include "engines/rip/drive/GapSearch.h"

#include <algorithm>

namespace zib {

namespace {

constexpr int kTextHeaderBytes = 4;
constexpr int kMostTextBytes = kTextHeaderBytes + 2048 * kCdTextPackBytes;

int word(const QByteArray& reply)
{
    return static_cast<uchar>(reply[0]) << 8 | static_cast<uchar>(reply[1]);
}

} // namespace

/// The first answer may only tell of a change.
bool DriveDetails::readText(QByteArray& reply)
{
    const auto bytes = static_cast<std::size_t>(reply.size());
    const auto size = static_cast<int>(reply.size());
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (askDrive(m_drive, {0x43, 0, 5, 0, 0, 0, 0, size >> 8, size & 0xFF, 0},
                     reinterpret_cast<quint8*>(reply.data()), bytes))
            return true;
        if (const Sense sense = lastSense(m_drive); sense.key == 0 || isRefusal(sense))
            break;
    }
    return false;
}

/// Many drives have only as many bytes to give as they are asked for, so the length is asked for first.
QByteArray DriveDetails::textPacks()
{
    QByteArray reply(kTextHeaderBytes, '\0');
    if (!readText(reply))
        return {};
    const int told = word(reply) + 2;
    reply = QByteArray(std::clamp(told, kTextHeaderBytes, kMostTextBytes), '\0');
    if (reply.size() == kTextHeaderBytes || !readText(reply))
        return {};
    return reply.mid(kTextHeaderBytes);
}

DiscNames DriveDetails::names(const QList<TocTrack>& tracks)
{
    if (tracks.isEmpty())
        return {};
    if (!m_packs)
        m_packs = textPacks();
    return namesInPacks(*m_packs, tracks.first().number, static_cast<int>(tracks.size()))
        .value_or(DiscNames());
}

qint32 DriveDetails::gapBetween(const TocTrack& track, const TocTrack& next, const std::atomic<bool>& stopped)
{
    const bool meet = track.audio && next.audio && track.start + track.frames == next.start;
    if (!meet || m_refusesQ)
        return 0;
    GapSearch search([this, &next, &stopped](qint32 frame) {
        return stopped || m_refusesQ ? std::optional<bool>() : isGapOf(next.number, frame);
    });
    return search.lengthBefore(next.start, track.start);
}

/// READ CD with the frame and its formatted Q (MMC-5, 6.20): some drives give no Q without the frame.
std::optional<bool> DriveDetails::isGapOf(int track, qint32 frame)
{
    constexpr int kSound = 1 << 2;
    constexpr int kUserData = 0x10;
    constexpr int kFormattedQ = 2;
    const qint32 at = frame + m_missed;
    QByteArray reply(kBytesPerFrame + kQBytes, '\0');
    if (!askDrive(m_drive,
                  {0xBE, kSound, at >> 24 & 0xFF, at >> 16 & 0xFF, at >> 8 & 0xFF, at & 0xFF, 0, 0, 1,
                   kUserData, kFormattedQ, 0},
                  reinterpret_cast<quint8*>(reply.data()), static_cast<std::size_t>(reply.size()))) {
        m_refusesQ = isRefusal(lastSense(m_drive));
        return std::nullopt;
    }
    const auto place = placeIn(reply.right(kQBytes), frame);
    if (!place)
        return std::nullopt;
    m_missed += frame - place->frame;
    if (place->frame != frame || (place->track == track && place->index > 0))
        return std::nullopt;
    return place->track == track;
}

} // namespace zib
