#pragma once

#include "components/AudioPlayer.h"

#include <memory>

namespace zib {

/// A player on the desktop's default sound device; it takes the device only while it is open.
std::unique_ptr<AudioPlayer> makeAudioPlayer();

} // namespace zib
