#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace zib {

/// Asks what a hanging storage may never answer, on a thread of its own, and waits only so long.
class Within
{
public:
    explicit Within(std::chrono::milliseconds patience) : m_patience(patience) {}

    /// @param question owns all it touches, for it may outlive the caller.
    /// @returns nothing when the answer did not come in time.
    template <typename Answer>
    std::optional<Answer> answer(std::function<Answer()> question) const
    {
        struct Shared
        {
            std::mutex mutex;
            std::condition_variable given;
            std::optional<Answer> answer;
        };
        const auto shared = std::make_shared<Shared>();
        std::thread([shared, question = std::move(question)] {
            Answer answer = question();
            const std::lock_guard lock(shared->mutex);
            shared->answer = std::move(answer);
            shared->given.notify_all();
        }).detach();
        std::unique_lock lock(shared->mutex);
        shared->given.wait_for(lock, m_patience, [&shared] { return shared->answer.has_value(); });
        return shared->answer;
    }

private:
    std::chrono::milliseconds m_patience;
};

} // namespace zib
