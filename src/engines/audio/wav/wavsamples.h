#pragma once

#include "engines/audio/wav/WavHeader.h"

#include <QList>

#include <span>

namespace zib {

/// Samples of up to 16 bits (8- and 16-bit integers, A-law, mu-law) as they stand in a file.
QList<qint16> narrowSamples(const WavHeader& header, std::span<const uchar> raw);

/// Samples of any coding as floats of full scale 1.0; numbers that are none become silence.
QList<float> wideSamples(const WavHeader& header, std::span<const uchar> raw);

} // namespace zib
