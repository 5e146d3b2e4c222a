#pragma once

#include "engines/burn/mmc/DriveLine.h"

#include <QByteArray>

namespace zib {

/// The CD-TEXT packs in the lead-in of the disc in a drive, 18 bytes each, as READ TOC/PMA/ATIP gives them in
/// format 5 (MMC-5, 6.26.2.6).
/// @returns Unsupported when the drive does not read CD-TEXT; DeviceGone. A disc without packs gives none.
Outcome<QByteArray> textPacksOf(DriveLine& line);

} // namespace zib
