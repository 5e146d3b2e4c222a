#pragma once

#include <functional>

namespace zib {

/// Runs @p work on a thread of its own, and this thread's events, user's input included, until it ends.
///
/// For the long work of a command, while the others wait; questions that are soon answered are Errands.
///
/// @p turn is called on this thread about every 40 ms and says whether to go on waiting. Work that is no
/// longer waited for is left to end by itself, so it owns all it touches. GUI thread only.
/// @returns whether the work has ended.
bool runAside(std::function<void()> work, const std::function<bool()>& turn);

} // namespace zib
