#include "platform/posix/SystemClock.h"

#include <thread>

namespace companion {

double SystemClock::secondsSince1970() const
{
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

void ThreadPause::pauseFor(std::chrono::microseconds duration)
{
    std::this_thread::sleep_for(duration);
}

} // namespace companion
