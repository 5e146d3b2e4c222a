#pragma once

#include <future>
#include <thread>
#include <type_traits>
#include <utility>

namespace zib {

/// Does @p work on a thread of its own and leaves it to it: whoever wants the answer waits for the future as
/// long as it likes, without its events, and goes on without one when the work hangs.
///
/// @p work owns all it touches, for it may outlive everything, and is let go of on its thread. For engines,
/// and for waits too short to be seen; a Worker does one thing after the other and lets events go on, Errands
/// answer a window later, runAside lets the user go on.
template <typename Work>
std::future<std::invoke_result_t<Work>> onOwnThread(Work work)
{
    std::promise<std::invoke_result_t<Work>> given;
    auto answer = given.get_future();
    std::thread([work = std::move(work), given = std::move(given)]() mutable {
        if constexpr (std::is_void_v<std::invoke_result_t<Work>>) {
            work();
            given.set_value();
        } else {
            given.set_value(work());
        }
    }).detach();
    return answer;
}

} // namespace zib
