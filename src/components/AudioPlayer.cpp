#include "components/AudioPlayer.h"

AudioPlayer::~AudioPlayer() = default;
