#pragma once

#include "simulator/HttpServer.h"
#include "simulator/StrokeOrder.h"

#include <memory>
#include <string>

namespace companion::simulator {

class PanelState;
class Replay;
class TouchSender;

/// The part of the control interface that makes touches: whole gestures, strokes as they are drawn, recordings.
class TouchControl {
public:
    TouchControl(PanelState& state, TouchSender& touches, Replay& replay);

    /// On the server's thread; `name` is "touch", "stroke" or "replay".
    std::unique_ptr<Exchange> open(const Request& request, const std::string& name);

private:
    PanelState& m_state;
    TouchSender& m_touches;
    Replay& m_replay;
    StrokeOrder m_strokes;
};

} // namespace companion::simulator
