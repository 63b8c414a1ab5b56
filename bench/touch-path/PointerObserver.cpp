#include "bench/touch-path/PointerObserver.h"

#include <algorithm>
#include <ctime>
#include <poll.h>

namespace companion::bench {

bool PointerObserver::waitReadable(int fd, TimePoint deadline)
{
    const auto left =
        std::chrono::duration_cast<std::chrono::nanoseconds>(deadline - std::chrono::steady_clock::now());
    const long nanoseconds = std::max(left.count(), 0L);
    const timespec timeout{nanoseconds / 1'000'000'000, nanoseconds % 1'000'000'000};
    pollfd waiting{fd, POLLIN, 0};
    return ppoll(&waiting, 1, &timeout, nullptr) > 0;
}

} // namespace companion::bench
