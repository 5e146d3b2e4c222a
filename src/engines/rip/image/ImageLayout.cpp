#include "engines/rip/image/ImageLayout.h"

#include "common/CdTime.h"

namespace zib {

namespace {

/// More than a hundred hours; positions stay far inside 32 bits.
constexpr qint64 kMostFrames = 30'000'000;

constexpr qint64 frameCount(qint64 bytes, int sectorBytes)
{
    return (bytes + sectorBytes - 1) / sectorBytes;
}

/// Bytes in a file as bytes on the disc: raw sound may end anywhere, other sectors are whole.
constexpr qint64 onDisc(qint64 bytes, int sectorBytes)
{
    return sectorBytes == kBytesPerFrame ? bytes : frameCount(bytes, sectorBytes) * kBytesPerFrame;
}

constexpr qint64 wholeFrames(qint64 bytes)
{
    return frameCount(bytes, kBytesPerFrame) * kBytesPerFrame;
}

class Layouter
{
public:
    Layouter(const DiscSheet& sheet, const QList<qint64>& fileBytes) : m_sheet(sheet), m_fileBytes(fileBytes)
    {
    }
    Outcome<ImageLayout> layOut();

private:
    void addTrack(const SheetTrack& track);
    void addPiece(const SheetTrack& track, const SheetPiece& piece);
    qint64 bytesOf(const SheetPiece& piece);
    Outcome<> setLengths();

    const DiscSheet& m_sheet;
    const QList<qint64>& m_fileBytes;
    qint64 m_at = 0;
    ImageLayout m_layout;
};

Outcome<ImageLayout> Layouter::layOut()
{
    for (const SheetTrack& track : m_sheet.tracks) {
        addTrack(track);
        if (m_at > kMostFrames * kBytesPerFrame)
            return Failure{Failure::Kind::BadValue, QStringLiteral("the sheet is longer than any disc")};
    }
    if (auto done = setLengths(); !done)
        return done.error();
    return m_layout;
}

void Layouter::addTrack(const SheetTrack& track)
{
    m_at = wholeFrames(m_at);
    const qint64 begin = m_at;
    qint64 start = begin;
    for (const SheetPiece& piece : track.pieces) {
        addPiece(track, piece);
        if (piece.isGap)
            start = m_at = wholeFrames(m_at);
    }
    if (track.gapFrames)
        start = begin + qMin(*track.gapFrames, kMostFrames) * kBytesPerFrame;
    m_layout.tracks << TocTrack{.number = track.number,
                                .start = static_cast<qint32>(start / kBytesPerFrame),
                                .audio = track.audio,
                                .copyPermitted = track.copyPermitted,
                                .preemphasis = track.preemphasis,
                                .gap = static_cast<qint32>((start - begin) / kBytesPerFrame),
                                .names = {track.title, track.performer}};
}

void Layouter::addPiece(const SheetTrack& track, const SheetPiece& piece)
{
    if (piece.wholeFrames)
        m_at = wholeFrames(m_at);
    const qint64 bytes = qMin(onDisc(bytesOf(piece), track.sectorBytes), (kMostFrames + 1) * kBytesPerFrame);
    if (piece.file != SheetPiece::kSilence && bytes > 0)
        m_layout.runs << DiscRun{.at = m_at,
                                 .bytes = bytes,
                                 .file = piece.file,
                                 .offset = piece.offset,
                                 .sectorBytes = track.sectorBytes,
                                 .audio = track.audio};
    m_at += bytes;
}

qint64 Layouter::bytesOf(const SheetPiece& piece)
{
    if (piece.file == SheetPiece::kSilence)
        return qMax<qint64>(piece.bytes, 0);
    const qint64 left = m_fileBytes[piece.file] - piece.offset;
    const bool isEmpty = piece.bytes < 0 && left == 0 && !piece.isGap;
    if ((left < qMax<qint64>(piece.bytes, 0) || isEmpty) && m_layout.remark.isEmpty())
        m_layout.remark = QStringLiteral("the file %1 is too short").arg(m_sheet.files[piece.file].name);
    return piece.bytes < 0 ? qMax<qint64>(left, 0) : piece.bytes;
}

/// A track without length is a mistake of the sheet, unless its file ends before.
Outcome<> Layouter::setLengths()
{
    QList<TocTrack>& tracks = m_layout.tracks;
    for (qsizetype i = 0; i < tracks.size(); ++i) {
        auto end = static_cast<qint32>(frameCount(m_at, kBytesPerFrame));
        if (i + 1 < tracks.size())
            end = tracks[i + 1].start - (tracks[i + 1].audio ? 0 : tracks[i + 1].gap);
        tracks[i].frames = qMax(end - tracks[i].start, 0);
        if (tracks[i].frames == 0 && m_layout.remark.isEmpty())
            return Failure{Failure::Kind::BadValue,
                           QStringLiteral("track %1 is empty").arg(tracks[i].number)};
    }
    return {};
}

} // namespace

Outcome<ImageLayout> layOut(const DiscSheet& sheet, const QList<qint64>& fileBytes)
{
    return Layouter(sheet, fileBytes).layOut();
}

} // namespace zib
