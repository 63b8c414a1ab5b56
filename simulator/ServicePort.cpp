#include "simulator/ServicePort.h"

#include "platform/Text.h"
#include "simulator/BrowserSafety.h"
#include "simulator/EventLog.h"
#include "simulator/InstanceName.h"
#include "simulator/Page.h"
#include "simulator/PanelState.h"
#include "simulator/StateJson.h"
#include "simulator/Text.h"
#include "simulator/TouchControl.h"

#include <array>
#include <functional>
#include <nlohmann/json.hpp>
#include <utility>

namespace companion::simulator {

namespace {

using namespace std::chrono_literals;

constexpr std::uint64_t megabyte = 1'000'000;
constexpr std::uint64_t cutPromise = 100;
constexpr auto modeCheckInterval = 50ms;

constexpr std::array<std::pair<std::string_view, PanelRequest>, panelRequestCount> requestNames{
    {{"heartbeat", PanelRequest::Heartbeat}, {"touchback", PanelRequest::Touchback},
        {"trigger", PanelRequest::Trigger}}};

Answer okAnswer(const std::string& body)
{
    return {200, body};
}

Outcome outcomeOf(const ReplyMode& mode)
{
    using Kind = ReplyMode::Kind;
    switch (mode.kind) {
    case Kind::Ok:
        return okAnswer("OK");
    case Kind::CastOff:
        return okAnswer("CAST_OFF");
    case Kind::Busy:
        return okAnswer("Device is busy");
    case Kind::Text:
        return okAnswer(mode.text);
    case Kind::Status:
        return Answer{static_cast<unsigned>(mode.number), mode.text};
    case Kind::Invalid:
        return okAnswer("OK \xC3\x28\xFF\xFE");
    case Kind::Cut:
        return Answer{200, GeneratedBody{cutPromise, cutPromise / 2}};
    case Kind::Huge:
        return Answer{200, GeneratedBody{mode.number * megabyte, mode.number * megabyte}};
    case Kind::Endless:
        return Answer{200, GeneratedBody{std::nullopt, std::nullopt}};
    case Kind::Silence:
    case Kind::Close:
        break;
    }
    return HangUp();
}

/// Answers a panel request in the mode that was chosen for its kind, once the delay is over and the silence, if any,
/// has been replaced by another mode.
Outcome chosenOutcome(const Request& request, const PanelState& state, PanelRequest kind)
{
    if (const auto delay = state.reply(kind).delay; delay > 0ms && !request.wait(delay))
        return HangUp();
    ReplyMode mode = state.reply(kind);
    for (; mode.kind == ReplyMode::Kind::Silence; mode = state.reply(kind))
        if (!request.wait(modeCheckInterval))
            return HangUp();
    return outcomeOf(mode);
}

std::optional<std::string> addressIn(const Request& request)
{
    auto ip = request.query("ip");
    return ip && hexAddress(*ip) ? ip : std::nullopt;
}

std::optional<bool> flagIn(const Request& request, const char* name)
{
    const auto text = request.query(name);
    return text == "true" || text == "false" ? std::optional(text == "true") : std::nullopt;
}

bool isCastRequest(const std::string& body)
{
    const auto json = nlohmann::json::parse(body, nullptr, /*allow_exceptions=*/false);
    return json.is_object() && json.contains("key") && json["key"] == "ACTION_CAST";
}

/// Removes the name of a request from the start of `text`. Without one, the heartbeat is meant.
std::pair<std::string_view, PanelRequest> takeRequestName(std::string_view& text)
{
    for (const auto& [name, request] : requestNames)
        if (text.starts_with(std::string(name) + " ")) {
            text.remove_prefix(name.size() + 1);
            return {name, request};
        }
    return requestNames[0];
}

std::string excerpt(std::string_view text)
{
    return "\"" + printable(text, 60) + "\"";
}

} // namespace

ServicePort::ServicePort(PanelState& state, EventLog& log, TouchControl& touches, std::string uploads)
    : m_state(state)
    , m_log(log)
    , m_touches(touches)
    , m_uploads(std::move(uploads))
    , m_routes{
          {"/pingServerWithIP", "GET", std::bind_front(&ServicePort::ping, this)},
          {"/enableWifiTouchback", "GET", std::bind_front(&ServicePort::switchTouchback, this)},
          {"/ws", "POST", std::bind_front(&ServicePort::trigger, this)},
          {"/simulator/state", "GET", std::bind_front(&ServicePort::state, this)},
          {"/simulator/touch", "POST", std::bind_front(&TouchControl::playGesture, &touches)},
          {"/simulator/stroke", "POST", std::bind_front(&TouchControl::playStroke, &touches)},
          {"/simulator/replay", "POST", std::bind_front(&TouchControl::playRecording, &touches)},
          {"/simulator/reply", "POST", std::bind_front(&ServicePort::setReply, this)},
          {"/simulator/upload-reply", "POST", std::bind_front(&ServicePort::setUploadReply, this)},
      }
{
}

Outcome ServicePort::answer(const Request& request, const std::string& body)
{
    // A real panel has none of these, so they are closed to pages of other sites.
    if (const std::string& path = request.path(); path == "/" || path.starts_with("/simulator/"))
        if (const auto problem = foreignOrigin(request.header("Host"), request.header("Origin")))
            return lineAnswer(403, *problem);
    for (const Route& route : m_routes)
        if (request.path() == route.path)
            return request.method() == route.method ? route.answer(request, body) : wrongMethod(route.method);
    return pageAnswer(request, m_state, m_uploads);
}

Outcome ServicePort::ping(const Request& request, const std::string&)
{
    const auto ip = addressIn(request);
    if (!ip)
        return lineAnswer(400, "ip must be an IPv4 address");
    if (request.query("msg") != "ping")
        return lineAnswer(400, "msg must be \"ping\"");
    m_state.recordPing(*ip);
    m_log.write("ping from " + *ip);
    return chosenOutcome(request, m_state, PanelRequest::Heartbeat);
}

Outcome ServicePort::switchTouchback(const Request& request, const std::string&)
{
    const auto ip = addressIn(request);
    if (!ip)
        return lineAnswer(400, "ip must be an IPv4 address");
    for (const char* name : {"enable", "hidemenu", "isHDMI"})
        if (!flagIn(request, name))
            return lineAnswer(400, std::string(name) + " must be \"true\" or \"false\"");
    const TouchTarget target{
        *ip, *flagIn(request, "enable"), *flagIn(request, "hidemenu"), *flagIn(request, "isHDMI")};
    const bool isNewReceiver = m_state.setTouchTarget(target);
    m_log.write((target.enabled ? "touches go to " : "no more touches to ") + *ip
        + (target.isHDMI ? " (cable)" : " (cast)"));
    if (isNewReceiver)
        m_touches.touchbackTurnedOn();
    return chosenOutcome(request, m_state, PanelRequest::Touchback);
}

Outcome ServicePort::trigger(const Request& request, const std::string& body)
{
    if (!isCastRequest(body))
        return lineAnswer(400, "the body must be {\"key\":\"ACTION_CAST\"}");
    m_state.recordTrigger(request.peer());
    m_log.write("casting receiver opened by " + request.peer());
    return chosenOutcome(request, m_state, PanelRequest::Trigger);
}

Outcome ServicePort::state(const Request&, const std::string&)
{
    return Answer{200, stateJson(m_state.snapshot()), "application/json"};
}

Outcome ServicePort::setReply(const Request&, const std::string& body)
{
    std::string_view text = body;
    const auto [name, request] = takeRequestName(text);
    const auto mode = ReplyMode::parse(text);
    if (!mode)
        return lineAnswer(400, "unknown reply " + excerpt(text));
    m_state.setReply(request, *mode);
    const std::string line = std::string(name) + ": " + mode->description;
    m_log.write("replies from now on: " + line);
    return lineAnswer(200, printable(line));
}

Outcome ServicePort::setUploadReply(const Request&, const std::string& body)
{
    const auto mode = UploadMode::parse(body);
    if (!mode)
        return lineAnswer(400, "unknown upload reply " + excerpt(body));
    m_state.setUploadReply(*mode);
    m_log.write("uploads from now on: " + mode->description);
    return lineAnswer(200, "upload: " + mode->description);
}

} // namespace companion::simulator
