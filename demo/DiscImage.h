#pragma once

#include "common/Outcome.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <memory>

struct _CdIo;

namespace demo {

/// A track as the reader of the disc tells it, in frames of 1/75 second.
struct DiscTrack
{
    qint64 start = 0;
    qint64 frames = 0; ///< Up to the gap before the next track, or to the end of the disc.
    qint64 gapBehind = 0;
};

/// A disc image on its CUE sheet, read by libcdio.
class DiscImage
{
public:
    static zib::Outcome<DiscImage> open(const QString& cue);
    /// The tracks in disc order; fails when one of them is no sound.
    zib::Outcome<QList<DiscTrack>> tracks() const;
    /// Frames as they stand on the disc, 2352 bytes each, little-endian stereo.  @returns nothing on a
    /// failure.
    QByteArray read(qint64 first, qint64 count) const;

private:
    struct Close
    {
        void operator()(_CdIo* disc) const;
    };
    explicit DiscImage(std::shared_ptr<_CdIo> disc) : m_disc(std::move(disc)) {}

    std::shared_ptr<_CdIo> m_disc;
};

} // namespace demo
