#pragma once

#include "Config.h"
#include "Disc.h"

namespace zib::drive {

/// Opens the disc that @p config names; a disc that does not exist yet is made, with the content of the
/// recipe.
/// @returns false when its files cannot be made or the recipe makes no sense.
[[nodiscard]] bool openWithRecipe(Disc& disc, const DriveConfig& config);

} // namespace zib::drive
