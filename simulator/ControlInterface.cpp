#include "simulator/ControlInterface.h"

#include "simulator/CollectingExchange.h"
#include "simulator/HeldConnections.h"
#include "simulator/StateJson.h"
#include "simulator/Text.h"

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

/// Answers once the gesture is over, so that a script need not guess how long it takes.
class TouchExchange : public CollectingExchange {
public:
    TouchExchange(const Request& request, PanelState& state, TouchSender& touches)
        : CollectingExchange(request)
        , m_state(state)
        , m_touches(touches)
    {
    }

private:
    Outcome answer() override
    {
        if (!m_playback)
            if (auto refusal = start())
                return *refusal;
        const auto result = m_playback->result();
        return result ? Outcome(answerTo(*result)) : Outcome(Wait());
    }

    std::optional<Answer> start()
    {
        auto gesture = parseGesture(body());
        if (const auto* problem = std::get_if<std::string>(&gesture))
            return lineAnswer(400, *problem);
        if (!m_state.touchReceiver())
            return lineAnswer(409, "nobody has asked for touches");
        m_playback = m_touches.play(std::move(std::get<Gesture>(gesture)));
        if (!m_playback)
            return lineAnswer(503, "too many gestures are waiting");
        return std::nullopt;
    }

    static Answer answerTo(const Playback::Result& result)
    {
        const std::string sent =
            std::to_string(result.sent) + (result.sent == 1 ? " datagram" : " datagrams");
        if (result.problem.empty())
            return lineAnswer(200, "sent " + sent);
        return lineAnswer(result.isRefused ? 409 : 502, result.problem + " (after " + sent + ")");
    }

    PanelState& m_state;
    TouchSender& m_touches;
    std::shared_ptr<Playback> m_playback;
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
    PanelState& state, TouchSender& touches, HeldConnections& held, EventLog& log)
    : m_state(state)
    , m_touches(touches)
    , m_held(held)
    , m_log(log)
{
}

std::unique_ptr<Exchange> ControlInterface::open(const Request& request)
{
    const std::string path = request.path().substr(std::string_view("/simulator/").size());
    if (path != "state" && path != "touch" && path != "reply" && path != "upload-reply")
        return unknownPath(request);
    if (const std::string allowed = path == "state" ? "GET" : "POST"; request.method() != allowed)
        return wrongMethod(allowed);
    if (path == "state")
        return std::make_unique<StateExchange>(request, m_state);
    if (path == "touch")
        return std::make_unique<TouchExchange>(request, m_state, m_touches);
    if (path == "reply")
        return std::make_unique<ReplyExchange>(request, m_state, m_held, m_log);
    return std::make_unique<UploadReplyExchange>(request, m_state, m_held, m_log);
}

} // namespace companion::simulator
