#pragma once

#include "faces/Properties.h"

namespace zib {

/// What a list, a table, a tree, a box with a list, a strip of tabs, a menu, a bar of buttons or a status bar
/// holds.
WordPairs itemWords(QWidget* widget);

} // namespace zib
