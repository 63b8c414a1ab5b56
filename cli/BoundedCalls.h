#pragma once

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <thread>

namespace companion::cli {

/// Calls library functions that may block forever, each on its own thread. Used from one thread.
class BoundedCalls {
public:
    /// What `work` returns, or nothing if it takes longer than `time`. Its thread is then abandoned, so `work` must own
    /// what it uses.
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

    /// If so, the process must exit without destroying anything that such a thread may still use.
    bool hasLeftThreadsBehind() const { return m_leftBehind; }

private:
    bool m_leftBehind = false;
};

} // namespace companion::cli
