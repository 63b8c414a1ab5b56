#include "platform/posix/ProgramRestart.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <unistd.h>

namespace companion {

namespace {

constexpr auto variable = "PANEL_COMPANION_STOPPED_BY";
constexpr std::size_t longestReason = 900;
constexpr std::chrono::minutes shortestLife{1};

std::optional<std::string> takeReason()
{
    const char* const value = std::getenv(variable);
    if (!value)
        return std::nullopt;
    std::string reason = value;
    unsetenv(variable); // no child of this run is a fresh run of it
    return reason;
}

std::vector<std::string> currentEnvironment()
{
    std::vector<std::string> copy;
    for (char** entry = environ; entry && *entry; ++entry)
        copy.emplace_back(*entry);
    return copy;
}

} // namespace

/// Not "/proc/self/exe" itself, since the system would take "exe" for the process's name.
std::string ProgramRestart::ownExecutable()
{
    std::error_code ignored; // nothing is started without a path
    return std::filesystem::read_symlink("/proc/self/exe", ignored);
}

ProgramRestart::ProgramRestart(char* const* arguments, std::string executable, Now now)
    : m_now(now)
    , m_begin(now())
    , m_reason(takeReason())
    , m_arguments(arguments)
    , m_executable(std::move(executable))
    , m_environment(currentEnvironment())
{
    for (std::string& entry : m_environment)
        m_environmentPointers.push_back(entry.data());
    m_environmentPointers.insert(m_environmentPointers.end(), {m_reasonVariable.data(), nullptr});

    posix_spawn_file_actions_init(&m_fileActions);
    posix_spawn_file_actions_addclosefrom_np(&m_fileActions, STDERR_FILENO + 1);
    // The failing thread may have all signals blocked, which a new program would inherit; and SIGPIPE is ignored by then.
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_init(&m_attributes);
    posix_spawnattr_setsigmask(&m_attributes, &blocked);
    posix_spawnattr_setsigdefault(&m_attributes, &defaults);
    posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
}

ProgramRestart::~ProgramRestart()
{
    posix_spawnattr_destroy(&m_attributes);
    posix_spawn_file_actions_destroy(&m_fileActions);
}

void ProgramRestart::start(std::string_view reason)
{
    if (m_isCancelled || (m_reason && m_now() - m_begin < shortestLife))
        return;
    std::snprintf(m_reasonVariable.data(), m_reasonVariable.size(), "%s=%.*s", variable,
        static_cast<int>(reason.substr(0, longestReason).size()), reason.data());
    pid_t unused = 0;
    posix_spawn(&unused, m_executable.c_str(), &m_fileActions, &m_attributes, m_arguments,
        m_environmentPointers.data());
}

} // namespace companion
