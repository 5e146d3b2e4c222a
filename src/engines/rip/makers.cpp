#include "engines/rip/makers.h"

#include "engines/rip/CdioRipper.h"

#include <utility>

namespace zib {

std::unique_ptr<CDRipperX> makeRipper(const QString& imagesFolder,
                                      std::function<std::unique_ptr<AudioFile>()> makeSound)
{
    return std::make_unique<CdioRipper>(imagesFolder, std::move(makeSound));
}

} // namespace zib
