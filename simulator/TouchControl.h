#pragma once

#include "simulator/HttpServer.h"
#include "simulator/StrokeOrder.h"
#include "simulator/TouchSender.h"

#include <chrono>
#include <mutex>
#include <optional>
#include <string>

namespace companion::simulator {

class EventLog;
class PanelState;

/// The requests of the control interface that send touches. Each is answered once its last datagram has been sent, so
/// that a script need not guess how long that takes. One recording is played at a time. Any thread.
class TouchControl {
public:
    /// How long a computer that has just asked for touches may take until it listens.
    static constexpr std::chrono::seconds headStart{1};

    /// `recording` is the panel's own. State and log must outlive the touch sender.
    TouchControl(PanelState& state, TouchSender& touches, EventLog& log, std::optional<Gesture> recording);

    /// Starts the panel's own recording, if it has one, after the head start, unless one is being played.
    void touchbackTurnedOn();

    Outcome playGesture(const Request& request, const std::string& body);

    /// A part of a stroke: sent when its turn has come, or when the parts before it are overdue.
    Outcome playStroke(const Request& request, const std::string& body);

    /// The recording in `body`, or the panel's own if that is empty.
    Outcome playRecording(const Request& request, const std::string& body);

private:
    struct StrokePart {
        std::string stroke;
        std::uint64_t number = 0;
        Gesture gesture;
        StrokeOrder::Time arrived = std::chrono::steady_clock::now();
    };

    std::optional<std::variant<Playback, Answer>> tryPart(const StrokePart& part);
    Playback play(const StrokePart& part);
    std::optional<Playback> startRecording(Gesture recording);

    PanelState& m_state;
    TouchSender& m_touches;
    EventLog& m_log;
    const std::optional<Gesture> m_recording;
    std::mutex m_startingRecording;
    std::mutex m_mutex; ///< guards `m_strokes`
    StrokeOrder m_strokes;
};

} // namespace companion::simulator
