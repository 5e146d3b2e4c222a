#pragma once

#include "engines/burn/compare/DiscPiece.h"
#include "engines/burn/compare/DiscSamples.h"

#include <atomic>
#include <functional>

namespace zib {

/// What comparing a disc with its files brought.
struct ComparisonResult
{
    int readOffset = 0; ///< Sample pairs by which all sound stands early; negative when late.
    qint64 comparedFrames = 0;
    qint64 differingFrames = 0;  ///< Other samples than the file's, at every reading.
    qint64 unreadableFrames = 0; ///< Not to be read at any try.
    bool givenUp = false;        ///< Too many frames cannot be read; what lies behind was not looked at.
    int firstTrack = 0;          ///< Where the first wrong frame stands; 0 when there is none.
    CdTime firstPlace{};         ///< From the beginning of that track.
    bool inPregap = false;       ///< The first wrong frame stands in the pause before that track.

    bool isIdentical() const { return differingFrames == 0 && unreadableFrames == 0; }
};

/// Compares a disc, or an image, with the files it was made of, to the sample. A place that differs or cannot
/// be read is read again, which tells an error of reading from one of writing. A drive takes seconds over a
/// frame that it cannot read, so a disc with hundreds of them is given up. The samples that a read offset
/// moves beyond the ends of the disc are not asked for. Blocking; one thread.
class DiscComparison
{
public:
    /// Frames done of a track's frames; at most once a block.
    using Progress = std::function<void(int track, qint64 done, qint64 frames)>;

    /// @param cancelled set by another thread to end the comparing; may be missing.
    DiscComparison(DiscSamples& disc, QList<DiscPiece> pieces, const std::atomic<bool>* cancelled,
                   Progress progress);

    /// @param readOffset what readOffsetOf() found; 0 for an image.
    /// @returns Cancelled; UnreadableFile with the name of a track file that is not what it was; DeviceGone
    /// and whatever else ended the reading of the disc.
    Outcome<ComparisonResult> run(int readOffset);

private:
    Outcome<> comparePiece(const DiscPiece& piece);
    Outcome<> compareBlock(const DiscPiece& piece, qint64 frame, int count);
    Outcome<> compareFrame(const DiscPiece& piece, qint64 frame, const char* expected);
    Outcome<bool> readsAs(const DiscPiece& piece, qint64 frame, int count, const char* expected);
    void noteWrong(const DiscPiece& piece, qint64 frame, bool unreadable);

    DiscSamples& m_disc;
    const QList<DiscPiece> m_pieces;
    const std::atomic<bool>* m_cancelled;
    const Progress m_progress;
    PieceSource m_source;
    QByteArray m_expected;
    QByteArray m_read;
    int m_rereadFrames = 0;
    ComparisonResult m_result;
};

/// Compares an image with the files it was made of, as many parts at once as the machine has processors, up
/// to three: it all stands in memory yet, and is looked at there without a copy. From the first place of a
/// part that does not match, the part is read and compared frame by frame. Blocking.
/// @param image as ImageSound takes it.  @param seen so many frames from the first on are known to be right.
/// @returns as DiscComparison::run; UnreadableFile without a name where the image cannot be read.
Outcome<ComparisonResult> compareImage(const QString& image, const QList<DiscPiece>& pieces, qint64 seen,
                                       const std::atomic<bool>* cancelled,
                                       const DiscComparison::Progress& progress);

} // namespace zib
