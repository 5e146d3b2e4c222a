#include "components/AudioInformation.h"

AudioInformation::~AudioInformation() = default;
