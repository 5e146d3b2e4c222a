#pragma once

#include <QtGlobal>

#include <vector>

namespace zib {

/// The share of each of @p channels channels in a stereo mix, by ITU-R BS.775.
/// @param speakers the channel mask of an extensible WAV header, 0 for the usual order of that many channels.
/// @param left, right get one factor for each channel; neither adds up to more than 1.
void speakerShares(int channels, quint32 speakers, std::vector<float>& left, std::vector<float>& right);

} // namespace zib
