#include "platform/portal/RestoreToken.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace companion {

namespace {

constexpr std::size_t longestToken = 4096;

std::string firstLine(const std::string& file)
{
    std::ifstream stream(file);
    std::string line;
    std::getline(stream, line);
    return line.size() <= longestToken ? line : "";
}

std::string errorOf(const std::string& file)
{
    return file + ": " + std::strerror(errno);
}

/// By a second file, so that the first one is never cut short, and never readable by others.
std::optional<std::string> replaceFile(const std::string& file, const std::string& text)
{
    const std::string next = file + ".new";
    std::error_code ignored;
    std::filesystem::create_directories(std::filesystem::path(file).parent_path(), ignored);
    const int fd = open(next.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (fd < 0)
        return errorOf(next);
    const bool isWritten =
        fchmod(fd, 0600) == 0 && write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    const bool isClosed = close(fd) == 0;
    if (!isWritten || !isClosed || rename(next.c_str(), file.c_str()) != 0)
        return errorOf(file);
    return std::nullopt;
}

} // namespace

RestoreToken::RestoreToken(std::optional<std::string> file)
    : m_file(std::move(file))
    , m_value(m_file ? firstLine(*m_file) : "")
{
}

std::string RestoreToken::defaultFile()
{
    const char* const state = std::getenv("XDG_STATE_HOME");
    const char* const home = std::getenv("HOME");
    const std::string folder =
        state && state[0] == '/' ? state : std::string(home ? home : "") + "/.local/state";
    return folder + "/panel-companion/screen-access";
}

std::optional<std::string> RestoreToken::set(const std::string& value)
{
    if (std::exchange(m_value, value) == value || !m_file)
        return std::nullopt;
    if (!value.empty())
        return replaceFile(*m_file, value + "\n");
    if (unlink(m_file->c_str()) != 0 && errno != ENOENT)
        return errorOf(*m_file);
    return std::nullopt;
}

} // namespace companion
