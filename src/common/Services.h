#pragma once

namespace zib {

class CommonDialogs;
class Messages;
class Windows;
struct Components;

/// What every window is given: the seams it speaks through and the makers of its components.
/// All of it outlives every window.
struct Services
{
    Messages& messages;
    CommonDialogs& dialogs;
    Windows& windows;
    const Components& components;
};

} // namespace zib
