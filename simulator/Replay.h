#pragma once

#include "simulator/Gesture.h"

#include <chrono>
#include <memory>
#include <optional>

namespace companion::simulator {

class EventLog;
class PanelState;
class Playback;
class TouchSender;

/// Plays recorded touches to the computer that asked for them, one recording at a time. The server's thread only.
/// State and log outlive the touch sender.
class Replay {
public:
    /// What a computer that has just asked for touches may take to listen.
    static constexpr std::chrono::seconds headStart{1};

    /// Without a recording of its own it plays only what it is given.
    Replay(PanelState& state, TouchSender& touches, EventLog& log, std::optional<Gesture> recording);

    /// A computer wants touches that had none before: its own recording begins, after the head start.
    void touchbackTurnedOn();

    bool hasRecording() const { return m_recording.has_value(); }
    const Gesture& recording() const { return *m_recording; }
    bool isPlaying() const;

    /// Begins at once; nothing when too many gestures are waiting. Not while it is playing.
    std::shared_ptr<Playback> start(Gesture recording);

private:
    PanelState& m_state;
    TouchSender& m_touches;
    EventLog& m_log;
    const std::optional<Gesture> m_recording;
    std::shared_ptr<Playback> m_playback;
};

} // namespace companion::simulator
