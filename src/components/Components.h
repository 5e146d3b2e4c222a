#pragma once

#include "components/AudioFile.h"
#include "components/AudioInformation.h"
#include "components/AudioPlayer.h"
#include "components/CDRipperX.h"
#include "components/DVDWriterPro.h"
#include "components/Printer.h"

#include <functional>
#include <memory>

namespace zib {

/// Makes components for windows; each call gives a new one that its window owns. main fills it with engines,
/// tests with fakes.
struct Components
{
    std::function<std::unique_ptr<AudioInformation>()> makeInformation;
    std::function<std::unique_ptr<AudioFile>()> makeFile;
    std::function<std::unique_ptr<AudioPlayer>()> makePlayer;
    std::function<std::unique_ptr<DVDWriterPro>()> makeWriter;
    std::function<std::unique_ptr<CDRipperX>()> makeRipper;
    std::function<std::unique_ptr<Printer>()> makePrinter;
};

} // namespace zib
