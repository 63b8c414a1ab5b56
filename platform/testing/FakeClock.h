#pragma once

#include "platform/Clock.h"
#include "platform/testing/Transcript.h"

namespace companion::testing {

/// Stands still until the test moves it; starts at a moment of 2024 that is no whole second.
class FakeClock : public Clock {
public:
    double secondsSince1970() const override { return seconds; }

    double seconds = 1'712'345'678.321;
};

/// Does not wait; writes "pause 1000us".
class FakePause : public Pause {
public:
    explicit FakePause(Transcript& transcript)
        : m_transcript(transcript)
    {
    }

    void pauseFor(std::chrono::microseconds duration) override
    {
        m_transcript.add("pause " + std::to_string(duration.count()) + "us");
    }

private:
    Transcript& m_transcript;
};

} // namespace companion::testing
