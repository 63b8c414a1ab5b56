#pragma once

#include "simulator/TouchSender.h"

#include <chrono>
#include <mutex>
#include <optional>

namespace companion::simulator {

class EventLog;
class PanelState;

/// Plays recorded touches to the computer that asked for them, one recording at a time. Any thread. State and log
/// must outlive the touch sender.
class Replay {
public:
    /// How long a computer that has just asked for touches may take until it listens.
    static constexpr std::chrono::seconds headStart{1};

    /// Without a recording of its own it plays only those that it is given.
    Replay(PanelState& state, TouchSender& touches, EventLog& log, std::optional<Gesture> recording);

    /// Starts the panel's own recording after the head start, unless one is being played.
    void touchbackTurnedOn();

    bool hasRecording() const { return m_recording.has_value(); }
    const Gesture& recording() const { return *m_recording; }

    /// Starts at once; nothing while another recording is being played.
    std::optional<Playback> start(Gesture recording);

private:
    PanelState& m_state;
    TouchSender& m_touches;
    EventLog& m_log;
    const std::optional<Gesture> m_recording;
    std::mutex m_starting;
};

} // namespace companion::simulator
