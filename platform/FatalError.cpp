#include "platform/FatalError.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <thread>

namespace companion {

namespace {

std::function<void(std::string_view)>& lastWish()
{
    static std::function<void(std::string_view)> wish;
    return wish;
}

[[noreturn]] void waitForTheEnd()
{
    for (;;)
        std::this_thread::sleep_for(std::chrono::hours(1));
}

[[noreturn]] void dieOfUncaughtException()
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

void setLastWish(std::function<void(std::string_view)> wish)
{
    lastWish() = std::move(wish);
}

void fatalError(std::string_view what)
{
    static std::atomic<std::thread::id> dying;
    std::thread::id other;
    if (dying.compare_exchange_strong(other, std::this_thread::get_id())) {
        if (lastWish())
            lastWish()(what);
        // Last, since a standard error that nobody reads may hold up its writer for good.
        std::fprintf(stderr, "Fatal error: %.*s\n", static_cast<int>(what.size()), what.data());
    } else if (other != std::this_thread::get_id()) {
        waitForTheEnd(); // aborting now would cut the other thread's last wish short
    }
    std::abort(); // at once when the last wish failed itself: it must not come round again
}

void makeUncaughtExceptionsFatal()
{
    std::set_terminate(dieOfUncaughtException);
}

} // namespace companion
