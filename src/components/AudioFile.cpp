#include "components/AudioFile.h"

AudioFile::~AudioFile() = default;
