#pragma once

namespace companion {

/// A descriptor that becomes readable when it is rung, so that a thread which waits for events wakes up.
class WakeUp {
public:
    /// Throws std::system_error when no descriptor is left.
    WakeUp();
    ~WakeUp();
    WakeUp(const WakeUp&) = delete;
    WakeUp& operator=(const WakeUp&) = delete;

    int descriptor() const { return m_descriptor; }

    /// Makes the descriptor readable; ringing twice is ringing once. Any thread.
    void ring();

    /// Makes it unreadable again.
    void quiet();

private:
    int m_descriptor;
};

} // namespace companion
