#include "platform/FatalError.h"

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <poll.h>
#include <string>
#include <thread>
#include <unistd.h>

namespace companion {

namespace {

constexpr int standardErrorTimeout = 500; // milliseconds
constexpr int maxTextBytes = 4000;        // a pipe that is writable takes 4,096 bytes without blocking

std::function<void(std::string_view)>& fatalErrorHandler()
{
    static std::function<void(std::string_view)> handler;
    return handler;
}

/// Neither allocates nor takes a lock, which the failing thread or one that blocks in standard error may hold.
void writeToStandardError(std::string_view what)
{
    std::array<char, maxTextBytes + 20> line{};
    const int length = std::snprintf(line.data(), line.size(), "Fatal error: %.*s\n",
        static_cast<int>(what.substr(0, maxTextBytes).size()), what.data());
    std::signal(SIGPIPE, SIG_IGN);
    pollfd standardError{STDERR_FILENO, POLLOUT, 0};
    if (poll(&standardError, 1, standardErrorTimeout) > 0) [[maybe_unused]]
        const ssize_t written = write(STDERR_FILENO, line.data(), static_cast<std::size_t>(length));
}

[[noreturn]] void waitForAbort()
{
    for (;;)
        std::this_thread::sleep_for(std::chrono::hours(1));
}

[[noreturn]] void failByUncaughtException()
{
    try {
        if (std::current_exception())
            throw;
    } catch (const std::exception& exception) {
        fatalError(std::string("An exception was not caught: ") + exception.what());
    } catch (...) {
    }
    fatalError("An exception was not caught");
}

} // namespace

void setFatalErrorHandler(std::function<void(std::string_view)> handler)
{
    fatalErrorHandler() = std::move(handler);
}

void fatalError(std::string_view what)
{
    static std::atomic<std::thread::id> failing;
    std::thread::id first;
    if (failing.compare_exchange_strong(first, std::this_thread::get_id())) {
        if (fatalErrorHandler())
            fatalErrorHandler()(what);
        writeToStandardError(what);
    } else if (first != std::this_thread::get_id()) {
        waitForAbort(); // aborting now would cut the first thread's handler short
    }
    std::abort(); // at once when the handler itself failed
}

void makeUncaughtExceptionsFatal()
{
    std::set_terminate(failByUncaughtException);
}

} // namespace companion
