#include "cli/StdioOutput.h"

#include "cli/Checks.h"
#include "platform/Text.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace companion::cli {

namespace {

constexpr std::size_t longestLine = 1 << 20;
constexpr auto clearLine = "\r\x1b[K";

bool wantsColour()
{
    const char* noColour = std::getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) != 0 && !(noColour && *noColour);
}

std::string coloured(Mark mark, const std::string& text)
{
    const char* colour = mark == Mark::ok ? "32" : mark == Mark::warn ? "33" : "31";
    return std::string("\x1b[") + colour + "m" + text + "\x1b[0m";
}

} // namespace

StdioOutput::StdioOutput()
    : m_isColoured(wantsColour())
{
}

void StdioOutput::print(std::string_view line)
{
    const std::lock_guard lock(m_mutex);
    removeProgress();
    toStandardOutput(printable(line, longestLine) + "\n");
}

void StdioOutput::printCheck(Mark mark, std::string_view line)
{
    constexpr std::size_t longestMark = 4;
    const std::string text = markText(mark);
    const std::string blanks(longestMark + 2 - text.size(), ' ');
    const std::lock_guard lock(m_mutex);
    removeProgress();
    toStandardOutput(
        (m_isColoured ? coloured(mark, text) : text) + blanks + printable(line, longestLine) + "\n");
}

void StdioOutput::complain(std::string_view line)
{
    const std::lock_guard lock(m_mutex);
    removeProgress();
    write(STDERR_FILENO, printable(line, longestLine) + "\n");
}

std::optional<std::size_t> StdioOutput::progressWidth() const
{
    if (isatty(STDERR_FILENO) == 0)
        return std::nullopt;
    winsize size{};
    const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    return isKnown ? size.ws_col - 1U : 79U; // in the last column some terminals begin a new line
}

void StdioOutput::showProgress(std::string_view text)
{
    const std::lock_guard lock(m_mutex);
    write(STDERR_FILENO, clearLine + printable(text, longestLine));
    m_showsProgress = true;
}

void StdioOutput::removeProgress()
{
    if (m_showsProgress)
        write(STDERR_FILENO, clearLine);
    m_showsProgress = false;
}

void StdioOutput::printText(const std::string& text)
{
    const std::lock_guard lock(m_mutex);
    toStandardOutput(text);
}

void StdioOutput::toStandardOutput(const std::string& text)
{
    const int error = write(STDOUT_FILENO, text);
    if (error != 0 && !m_hasFailed.exchange(true))
        write(STDERR_FILENO, std::string("panelctl: standard output: ") + std::strerror(error) + "\n");
}

int StdioOutput::write(int descriptor, const std::string& text)
{
    std::string_view left = text;
    while (!left.empty()) {
        const ssize_t count = ::write(descriptor, left.data(), left.size());
        if (count > 0) {
            left.remove_prefix(static_cast<std::size_t>(count));
            continue;
        }
        pollfd waiting{descriptor, POLLOUT, 0};
        if (count < 0 && errno == EAGAIN)
            poll(&waiting, 1, -1); // somebody else made the terminal or pipe non-blocking
        else if (count < 0 && errno != EINTR)
            return errno;
    }
    return 0;
}

} // namespace companion::cli
