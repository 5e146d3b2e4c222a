#include "engines/burn/makers.h"

#include "engines/burn/DiscWriter.h"
#include "engines/burn/DriveRecorder.h"
#include "engines/burn/ImageRecorder.h"

namespace zib {

std::unique_ptr<DVDWriterPro> makeDiscWriter(const QString& imagesFolder)
{
    return std::make_unique<DiscWriter>([] { return findDrives(); },
                                        std::make_shared<ImageRecorder>(imagesFolder));
}

} // namespace zib
