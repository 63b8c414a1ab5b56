#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <optional>
#include <spawn.h>
#include <string>
#include <string_view>
#include <vector>

namespace companion {

/// Starts the program anew when a fatal error ends it, at most once a minute. The fresh run has the same arguments,
/// environment, folder and standard streams, and learns why the one before it had to stop.
class ProgramRestart {
public:
    using Now = std::chrono::steady_clock::time_point (*)();

    /// `arguments` are those of main, the program's name included, and outlive this object. `executable` is this program's
    /// own unless it is given. Main thread, before the program has others: it takes the reason out of the environment.
    explicit ProgramRestart(char* const* arguments, std::string executable = ownExecutable(),
        Now now = std::chrono::steady_clock::now);
    ~ProgramRestart();
    ProgramRestart(const ProgramRestart&) = delete;
    ProgramRestart& operator=(const ProgramRestart&) = delete;

    /// Why the run before this one had to stop; nothing unless this is a fresh run.
    const std::optional<std::string>& reason() const { return m_reason; }

    /// Starts the fresh run, unless this is one that is not yet a minute old. A text of more than 900 bytes is cut. Any
    /// thread in any state: it allocates nothing and takes no lock. What cannot be started is left at that.
    void start(std::string_view reason);

    /// Nothing is started any more, as the program ends by itself. Any thread.
    void cancel() { m_isCancelled = true; }

private:
    static std::string ownExecutable();

    const Now m_now;
    const std::chrono::steady_clock::time_point m_begin;
    const std::optional<std::string> m_reason;
    char* const* const m_arguments;
    const std::string m_executable;
    std::vector<std::string> m_environment;
    std::vector<char*> m_environmentPointers;
    std::array<char, 1000> m_reasonVariable{}; ///< The last one of the fresh run's environment.
    posix_spawn_file_actions_t m_fileActions{};
    posix_spawnattr_t m_attributes{};
    std::atomic<bool> m_isCancelled = false;
};

} // namespace companion
