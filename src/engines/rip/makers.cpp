#include "engines/rip/makers.h"

#include "engines/rip/CdioRipper.h"

namespace zib {

std::unique_ptr<CDRipperX> makeRipper(const QString& imagesFolder)
{
    return std::make_unique<CdioRipper>(imagesFolder);
}

} // namespace zib
