#pragma once

#include "common/GenralMacro.h"

/// The settings record and its file. GUI thread only.
namespace OptionsFunc {

/// @returns the built-in defaults.
OptionsData defaults();

/// Fills the record with the built-in defaults; touches no file.
void SetDefaultSettings();

/// Fills the record from the settings file; a missing file or key gives the default and nothing is written.
/// A value that cannot be converted gives the default too, and one critical box afterwards names the file and
/// every such section, key and value. The file stays as it is.
void LoadSettings();

} // namespace OptionsFunc
