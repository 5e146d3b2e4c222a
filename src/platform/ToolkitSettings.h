#pragma once

namespace zib {

/// Keeps the toolkit's dialogs from reading and writing the settings that they share with every other program
/// of this toolkit: bookmarks, view mode, colours. What our dialogs remember lasts as long as the program.
/// Called before the first dialog.
void keepToolkitSettingsApart();

} // namespace zib
