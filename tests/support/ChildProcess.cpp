#include "tests/support/ChildProcess.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace companion::testing {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

ChildProcess::ChildProcess(
    std::vector<std::string> arguments, const std::map<std::string, std::string>& environment)
{
    int output[2];
    int input[2];
    if (pipe2(output, O_CLOEXEC) != 0 || pipe2(input, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");

    std::vector<char*> argv;
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);

    const pid_t parent = getpid();
    m_pid = fork();
    if (m_pid < 0)
        throw std::runtime_error("cannot fork");
    if (m_pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (getppid() != parent)
            _exit(127);
        dup2(input[0], STDIN_FILENO);
        dup2(output[1], STDOUT_FILENO);
        dup2(output[1], STDERR_FILENO);
        for (const auto& [name, value] : environment)
            setenv(name.c_str(), value.c_str(), 1);
        execvp(argv[0], argv.data());
        _exit(127);
    }
    close(output[1]);
    close(input[0]);
    m_outputFd = output[0];
    m_inputFd = input[1];
    fcntl(m_outputFd, F_SETFL, O_NONBLOCK);
}

ChildProcess::~ChildProcess()
{
    end();
    close(m_outputFd);
    close(m_inputFd);
}

bool ChildProcess::waitForOutput(const std::string& text, std::chrono::milliseconds timeout)
{
    const auto deadline = SteadyClock::now() + timeout;
    while (m_output.find(text) == std::string::npos) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - SteadyClock::now());
        if (left <= 0ms)
            return false;
        if (!readSome(left))
            return m_output.find(text) != std::string::npos;
    }
    return true;
}

const std::string& ChildProcess::output()
{
    while (readSome(0ms)) { }
    return m_output;
}

void ChildProcess::write(const std::string& text)
{
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(m_inputFd, text.data() + written, text.size() - written);
        if (count < 0 && errno != EINTR)
            throw std::runtime_error("the program reads no more");
        if (count > 0)
            written += static_cast<std::size_t>(count);
    }
}

void ChildProcess::sendSignal(int signal)
{
    if (!m_status)
        kill(m_pid, signal);
}

std::optional<int> ChildProcess::waitForExit(std::chrono::milliseconds timeout)
{
    const auto deadline = SteadyClock::now() + timeout;
    while (!m_status) {
        readSome(0ms); // a full pipe must not hold the program up
        int status = 0;
        if (waitpid(m_pid, &status, WNOHANG) == m_pid) {
            m_status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
            break;
        }
        if (SteadyClock::now() >= deadline)
            return std::nullopt;
        std::this_thread::sleep_for(2ms);
    }
    return m_status;
}

void ChildProcess::end()
{
    sendSignal(SIGTERM);
    if (waitForExit(2s))
        return;
    sendSignal(SIGKILL);
    waitForExit(10s);
}

bool ChildProcess::readSome(std::chrono::milliseconds timeout)
{
    pollfd waiting{m_outputFd, POLLIN, 0};
    if (poll(&waiting, 1, static_cast<int>(timeout.count())) <= 0)
        return false;
    char buffer[65536];
    const ssize_t count = read(m_outputFd, buffer, sizeof buffer);
    if (count <= 0)
        return false;
    m_output.append(buffer, static_cast<std::size_t>(count));
    return true;
}

bool isInstalled(const std::string& program)
{
    return std::system(("command -v " + program + " >/dev/null 2>&1").c_str()) == 0;
}

} // namespace companion::testing
