#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace companion::testing {

/// A program run by a test, with its standard output and error captured. It is ended, by its process id, at the
/// latest when the object goes.
class ChildProcess {
public:
    /// `environment` is added to the test's own; `arguments[0]` is looked up in PATH.
    explicit ChildProcess(
        std::vector<std::string> arguments, const std::map<std::string, std::string>& environment = {});
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t pid() const { return m_pid; }

    /// Reads until the output so far (both streams, as they come) contains `text`; tells whether it came in time.
    bool waitForOutput(const std::string& text, std::chrono::milliseconds timeout = std::chrono::seconds(10));

    /// What has come so far.
    const std::string& output();

    /// Writes to the program's standard input.
    void write(const std::string& text);

    void sendSignal(int signal);

    /// The exit status, 128 + N for a death by signal N, or nothing if it still runs when the time is over.
    std::optional<int> waitForExit(std::chrono::milliseconds timeout = std::chrono::seconds(10));

    /// SIGTERM, then SIGKILL after two seconds; waits for the end.
    void end();

private:
    bool readSome(std::chrono::milliseconds timeout);

    pid_t m_pid = -1;
    int m_outputFd = -1;
    int m_inputFd = -1;
    std::string m_output;
    std::optional<int> m_status;
};

/// Whether a program of this name is in PATH; a test that needs one that is missing says so and is skipped.
bool isInstalled(const std::string& program);

} // namespace companion::testing
