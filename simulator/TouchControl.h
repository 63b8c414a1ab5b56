#pragma once

#include "simulator/HttpServer.h"
#include "simulator/StrokeOrder.h"
#include "simulator/TouchSender.h"

#include <mutex>
#include <string>

namespace companion::simulator {

class PanelState;
class Replay;

/// The requests of the control interface that send touches. Each is answered once its last datagram has been sent, so
/// that a script need not guess how long that takes. Any thread.
class TouchControl {
public:
    TouchControl(PanelState& state, TouchSender& touches, Replay& replay);

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

    PanelState& m_state;
    TouchSender& m_touches;
    Replay& m_replay;
    std::mutex m_mutex; ///< guards `m_strokes`
    StrokeOrder m_strokes;
};

} // namespace companion::simulator
