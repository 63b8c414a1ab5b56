#include "simulator/ControlInterface.h"

#include "simulator/CollectingExchange.h"
#include "simulator/HeldConnections.h"
#include "simulator/StateJson.h"
#include "simulator/Text.h"
#include "simulator/TouchControl.h"

#include <array>
#include <utility>

namespace companion::simulator {

namespace {

constexpr std::array<std::pair<std::string_view, PanelRequest>, panelRequestCount> requestNames{
    {{"heartbeat", PanelRequest::Heartbeat}, {"touchback", PanelRequest::Touchback},
        {"trigger", PanelRequest::Trigger}}};

class StateExchange : public CollectingExchange {
public:
    StateExchange(const Request& request, PanelState& state)
        : CollectingExchange(request)
        , m_state(state)
    {
    }

private:
    Outcome answer() override { return Answer{200, stateJson(m_state.snapshot()), "application/json"}; }

    PanelState& m_state;
};

class ReplyExchange : public CollectingExchange {
public:
    ReplyExchange(const Request& request, PanelState& state, HeldConnections& held, EventLog& log)
        : CollectingExchange(request)
        , m_state(state)
        , m_held(held)
        , m_log(log)
    {
    }

private:
    Outcome answer() override
    {
        std::string_view text = body();
        const auto [name, request] = takeRequestName(text);
        const auto mode = ReplyMode::parse(text);
        if (!mode)
            return lineAnswer(400, "unknown reply \"" + printable(cutAtCharacter(text, 60)) + "\"");
        m_state.setReply(request, *mode);
        m_held.wakeAll();
        const std::string line = std::string(name) + ": " + mode->description();
        m_log.write("replies from now on: " + line);
        return lineAnswer(200, printable(line));
    }

    /// A request's name in front of the mode; the heartbeat is meant when there is none.
    static std::pair<std::string_view, PanelRequest> takeRequestName(std::string_view& text)
    {
        for (const auto& [name, request] : requestNames)
            if (text.starts_with(std::string(name) + " ")) {
                text.remove_prefix(name.size() + 1);
                return {name, request};
            }
        return requestNames[0];
    }

    PanelState& m_state;
    HeldConnections& m_held;
    EventLog& m_log;
};

class UploadReplyExchange : public CollectingExchange {
public:
    UploadReplyExchange(const Request& request, PanelState& state, HeldConnections& held, EventLog& log)
        : CollectingExchange(request)
        , m_state(state)
        , m_held(held)
        , m_log(log)
    {
    }

private:
    Outcome answer() override
    {
        const auto mode = UploadMode::parse(body());
        if (!mode)
            return lineAnswer(400, "unknown upload reply \"" + printable(cutAtCharacter(body(), 60)) + "\"");
        m_state.setUploadReply(*mode);
        m_held.wakeAll();
        m_log.write("uploads from now on: " + mode->description());
        return lineAnswer(200, "upload: " + mode->description());
    }

    PanelState& m_state;
    HeldConnections& m_held;
    EventLog& m_log;
};

} // namespace

ControlInterface::ControlInterface(
    PanelState& state, TouchControl& touches, HeldConnections& held, EventLog& log)
    : m_state(state)
    , m_touches(touches)
    , m_held(held)
    , m_log(log)
{
}

std::unique_ptr<Exchange> ControlInterface::open(const Request& request)
{
    const std::string path = request.path().substr(std::string_view("/simulator/").size());
    const bool isTouch = path == "touch" || path == "stroke" || path == "replay";
    if (!isTouch && path != "state" && path != "reply" && path != "upload-reply")
        return unknownPath(request);
    if (const std::string allowed = path == "state" ? "GET" : "POST"; request.method() != allowed)
        return wrongMethod(allowed);
    if (path == "state")
        return std::make_unique<StateExchange>(request, m_state);
    if (isTouch)
        return m_touches.open(request, path);
    if (path == "reply")
        return std::make_unique<ReplyExchange>(request, m_state, m_held, m_log);
    return std::make_unique<UploadReplyExchange>(request, m_state, m_held, m_log);
}

} // namespace companion::simulator
