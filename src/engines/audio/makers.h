#pragma once

#include "components/AudioFile.h"
#include "components/AudioInformation.h"

#include <memory>

namespace zib {

/// A reader and writer of audio files.
std::unique_ptr<AudioFile> makeAudioFile();
/// An inspector of audio files.
std::unique_ptr<AudioInformation> makeAudioInformation();

} // namespace zib
