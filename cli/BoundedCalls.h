#pragma once

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <thread>

namespace companion::cli {

/// Calls of libraries that may never come back, each on a thread of its own. One thread.
class BoundedCalls {
public:
    /// What `work` returns, or nothing when it is not over within `time`: its thread is left to itself then, so
    /// `work` must own what it uses.
    template <typename Work>
    auto call(std::chrono::milliseconds time, Work work) -> std::optional<decltype(work())>
    {
        auto promise = std::make_shared<std::promise<decltype(work())>>();
        auto future = promise->get_future();
        std::thread([promise, work = std::move(work)]() mutable { promise->set_value(work()); }).detach();
        if (future.wait_for(time) == std::future_status::ready)
            return future.get();
        m_leftBehind = true;
        return std::nullopt;
    }

    /// Then the process must end without tidying up: what a thread uses that is left behind may not go.
    bool hasLeftThreadsBehind() const { return m_leftBehind; }

private:
    bool m_leftBehind = false;
};

} // namespace companion::cli
