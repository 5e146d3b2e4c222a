#pragma once

#include <string>

/// A folder that hangs: whatever touches a path with "/hangs/" in it, or a file opened there, waits in the
/// system call until it is let go.
///
/// The calls stand in the test program itself, before the C library's own, so Qt's and the engines' use of
/// them ends up here too. The main thread is kept for a second at most, so that a failing test ends.
namespace hangingplace {

/// From now on every call hangs.
void hang();
/// From the @p count -th call of @p function on.
void hangAt(const char* function, int count);
/// Ends all waiting, and lets everything through.
void letGo();
/// How many calls wait now.
int waiting();
/// The calls that kept the main thread, in order, parted by blanks; empty when there was none.
std::string onMainThread();
/// Begins to note them anew.
void forgetMainThread();

} // namespace hangingplace
