#include "engines/audio/makers.h"

#include "engines/audio/AudioFileEngine.h"
#include "engines/audio/AudioInformationEngine.h"

namespace zib {

std::unique_ptr<AudioFile> makeAudioFile()
{
    return std::make_unique<AudioFileEngine>();
}

std::unique_ptr<AudioInformation> makeAudioInformation()
{
    return std::make_unique<AudioInformationEngine>();
}

} // namespace zib
