#pragma once

#include "platform/Clock.h"

namespace companion {

class SystemClock : public Clock {
public:
    double secondsSince1970() const override;
};

/// Lets the calling thread sleep.
class ThreadPause : public Pause {
public:
    void pauseFor(std::chrono::microseconds duration) override;
};

} // namespace companion
