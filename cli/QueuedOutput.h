#pragma once

#include "cli/Output.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace companion::cli {

/// Hands what is to be printed to another output on a thread of its own, in order, so that a slow terminal or pipe does
/// not hold up what is being measured. Any thread.
///
/// Nothing is lost: when too much is waiting, printing waits, too, and so does the end of the object, for all of it.
class QueuedOutput : public Output {
public:
    static constexpr std::size_t mostBytes = 16 << 20;

    /// `inner` must outlive it and is used on the thread, but for `progressWidth`.
    explicit QueuedOutput(Output& inner, std::size_t limit = mostBytes);
    ~QueuedOutput() override;
    QueuedOutput(const QueuedOutput&) = delete;
    QueuedOutput& operator=(const QueuedOutput&) = delete;

    void print(std::string_view line) override;
    void printCheck(Mark mark, std::string_view line) override;
    void complain(std::string_view line) override;
    std::optional<std::size_t> progressWidth() const override { return m_inner.progressWidth(); }
    void showProgress(std::string_view text) override;

    /// Waits until all is printed that was so far.
    void flush();

private:
    struct Job {
        std::size_t bytes;
        std::function<void()> print;
    };

    void add(std::string_view text, std::function<void(const std::string&)> print);
    void work();

    Output& m_inner;
    const std::size_t m_limit;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Job> m_jobs;
    std::size_t m_waitingBytes = 0;
    bool m_isEnding = false;
    std::thread m_thread;
};

} // namespace companion::cli
