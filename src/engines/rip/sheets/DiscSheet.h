#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace zib {

/// A file that a sheet names.
struct SheetFile
{
    enum class Kind
    {
        Raw,        ///< Sectors as they are; sound with the low byte first.
        RawSwapped, ///< Sound with the high byte first.
        Sound       ///< A file with a header or a coding of its own: WAVE, AIFF, MP3.
    };

    QString name{}; ///< As the sheet has it.
    Kind kind = Kind::Raw;

    bool operator==(const SheetFile&) const = default;
};

/// A stretch of a track: silence, or a part of a file.
struct SheetPiece
{
    static constexpr int kSilence = -1;

    int file = kSilence;
    qint64 offset = 0; ///< Bytes into the file, or into its sound.
    qint64 bytes = -1; ///< In the file; negative for all that is left of it.
    bool isGap = false;
    bool wholeFrames = true; ///< Filled up to a whole frame where the next piece begins.

    bool operator==(const SheetPiece&) const = default;
};

/// A track as a sheet has it.
struct SheetTrack
{
    int number = 0;
    bool audio = false;
    int sectorBytes = 2352; ///< Of its parts in files.
    bool copyPermitted = false;
    bool preemphasis = false;
    QString title{};
    QString performer{};
    std::optional<qint64> gapFrames{}; ///< The length of the gap where no piece is marked as one.
    QList<SheetPiece> pieces{};

    bool operator==(const SheetTrack&) const = default;
};

/// What the sheet of a disc image says: the tracks in order, each a row of pieces.
struct DiscSheet
{
    QString title{};
    QString performer{};
    QList<SheetFile> files{};
    QList<SheetTrack> tracks{};
};

} // namespace zib
