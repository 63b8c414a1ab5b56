#include "platform/FatalError.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace companion {

namespace {

std::function<void(std::string_view)>& lastWish()
{
    static std::function<void(std::string_view)> wish;
    return wish;
}

} // namespace

void setLastWish(std::function<void(std::string_view)> wish)
{
    lastWish() = std::move(wish);
}

void fatalError(std::string_view what)
{
    // A last wish that fails itself must not come round again.
    static std::atomic<bool> isDying = false;
    if (!isDying.exchange(true)) {
        if (lastWish())
            lastWish()(what);
        // Last, since a standard error that nobody reads may hold up its writer for good.
        std::fprintf(stderr, "Fatal error: %.*s\n", static_cast<int>(what.size()), what.data());
    }
    std::abort();
}

} // namespace companion
