#pragma once

#include "DiscImage.h"

#include <QStringList>

#include <optional>

namespace demo {

/// How one track of the disc compares with the sound it should hold.
struct TrackVerdict
{
    qint64 frames = 0;  ///< On the disc.
    qint64 samples = 0; ///< Sample pairs of the sound.
    qint64 different =
        0; ///< Sample pairs of the track that are not those of the sound, or not silence behind it.
    bool lengthRight = false;

    bool right() const { return lengthRight && different == 0; }
};

/// Sample pairs of a WAV file of 44100 Hz, 16 bits, 2 channels, as bytes in the disc's order; read by
/// libsndfile.
std::optional<QByteArray> soundOf(const QString& wav);

/// Compares every track with its sound: the samples, the silence that fills the last frame or a short track,
/// and the two seconds of silence behind it. A disc with another number of tracks gives nothing.
std::optional<QList<TrackVerdict>> compare(const DiscImage& disc, const QList<QByteArray>& sounds);

} // namespace demo
