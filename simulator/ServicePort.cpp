#include "simulator/ServicePort.h"

#include "simulator/CollectingExchange.h"
#include "simulator/ControlInterface.h"
#include "simulator/InstanceName.h"
#include "simulator/Page.h"
#include "simulator/Replay.h"
#include "simulator/RequestOrigin.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace companion::simulator {

namespace {

constexpr std::uint64_t megabyte = 1'000'000;
constexpr std::uint64_t cutPromise = 100;

Answer okAnswer(const std::string& body)
{
    return {200, body};
}

/// What a mode answers with once its delay is over.
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
    case Kind::Silence:
        return Wait();
    case Kind::Close:
        return HangUp();
    case Kind::Invalid:
        return okAnswer("OK \xC3\x28\xFF\xFE");
    case Kind::Cut:
        return Answer{200, GeneratedBody{cutPromise, cutPromise / 2}};
    case Kind::Huge:
        return Answer{200, GeneratedBody{mode.number * megabyte, mode.number * megabyte}};
    case Kind::Endless:
        return Answer{200, GeneratedBody{std::nullopt, std::nullopt}};
    }
    return HangUp();
}

/// A request of the panel service: checked and noted when it is complete, then answered as it was chosen.
class PanelExchange : public CollectingExchange {
public:
    PanelExchange(const Request& request, PanelState& state, EventLog& log, PanelRequest kind)
        : CollectingExchange(request)
        , m_state(state)
        , m_log(log)
        , m_kind(kind)
    {
    }

protected:
    PanelState& state() { return m_state; }
    EventLog& log() { return m_log; }

    /// Notes the request; one line when it is not as it should be.
    virtual std::optional<std::string> note() = 0;

    /// The value of a key that must be there, or a problem.
    std::optional<std::string> queryFlag(const char* name, bool& value) const
    {
        const auto text = request().query(name);
        value = text == "true";
        if (text == "true" || text == "false")
            return std::nullopt;
        return std::string(name) + " must be \"true\" or \"false\"";
    }

    std::optional<std::string> queryAddress(std::string& ip) const
    {
        ip = request().query("ip").value_or("");
        return hexAddress(ip) ? std::nullopt : std::optional<std::string>("ip must be an IPv4 address");
    }

private:
    Outcome answer() override
    {
        if (!m_isNoted) {
            if (const auto problem = note())
                return lineAnswer(400, *problem);
            m_isNoted = true;
            if (const auto delay = m_state.reply(m_kind).delay; delay.count() > 0)
                return Wait{delay};
        }
        // A silence that is over is followed by what has taken its place.
        return outcomeOf(m_state.reply(m_kind));
    }

    PanelState& m_state;
    EventLog& m_log;
    PanelRequest m_kind;
    bool m_isNoted = false;
};

class PingExchange : public PanelExchange {
    using PanelExchange::PanelExchange;

    std::optional<std::string> note() override
    {
        std::string ip;
        if (auto problem = queryAddress(ip))
            return problem;
        if (request().query("msg") != "ping")
            return "msg must be \"ping\"";
        state().recordPing(ip);
        log().write("ping from " + ip);
        return std::nullopt;
    }
};

class TouchbackExchange : public PanelExchange {
public:
    TouchbackExchange(const Request& request, PanelState& state, EventLog& log, Replay& replay)
        : PanelExchange(request, state, log, PanelRequest::Touchback)
        , m_replay(replay)
    {
    }

private:
    std::optional<std::string> note() override
    {
        TouchTarget target;
        if (auto problem = queryAddress(target.ip))
            return problem;
        if (auto problem = queryFlag("enable", target.enabled))
            return problem;
        if (auto problem = queryFlag("hidemenu", target.hidemenu))
            return problem;
        if (auto problem = queryFlag("isHDMI", target.isHDMI))
            return problem;
        const bool isNew = target.enabled && state().touchReceiver() != target.ip;
        state().setTouchTarget(target);
        log().write(std::string(target.enabled ? "touches go to " : "no more touches to ") + target.ip
            + (target.isHDMI ? " (cable)" : " (cast)"));
        if (isNew)
            m_replay.touchbackTurnedOn();
        return std::nullopt;
    }

    Replay& m_replay;
};

class TriggerExchange : public PanelExchange {
    using PanelExchange::PanelExchange;

    std::optional<std::string> note() override
    {
        const QByteArray bytes(body().data(), static_cast<qsizetype>(body().size()));
        const QJsonDocument document = QJsonDocument::fromJson(bytes);
        if (!document.isObject() || document.object().value("key").toString() != "ACTION_CAST")
            return "the body must be {\"key\":\"ACTION_CAST\"}";
        state().recordTrigger(request().peer());
        log().write("casting receiver opened by " + request().peer());
        return std::nullopt;
    }
};

} // namespace

ServicePort::ServicePort(
    PanelState& state, EventLog& log, ControlInterface& control, const Page& page, Replay& replay)
    : m_state(state)
    , m_log(log)
    , m_control(control)
    , m_page(page)
    , m_replay(replay)
{
}

std::unique_ptr<Exchange> ServicePort::open(const Request& request)
{
    const std::string& path = request.path();
    if (path == "/" || path.starts_with("/simulator/"))
        return openOwn(request);
    const bool isTrigger = path == "/ws";
    if (!isTrigger && path != "/pingServerWithIP" && path != "/enableWifiTouchback")
        return unknownPath(request);
    if (const std::string allowed = isTrigger ? "POST" : "GET"; request.method() != allowed)
        return wrongMethod(allowed);
    if (isTrigger)
        return std::make_unique<TriggerExchange>(request, m_state, m_log, PanelRequest::Trigger);
    if (path == "/pingServerWithIP")
        return std::make_unique<PingExchange>(request, m_state, m_log, PanelRequest::Heartbeat);
    return std::make_unique<TouchbackExchange>(request, m_state, m_log, m_replay);
}

/// What a real panel does not have. A browser is kept from using it for other pages than the panel's own.
std::unique_ptr<Exchange> ServicePort::openOwn(const Request& request)
{
    if (const auto problem = foreignOrigin(request.header("Host"), request.header("Origin")))
        return std::make_unique<FixedExchange>(lineAnswer(403, *problem));
    if (Page::hasPath(request.path()))
        return m_page.open(request);
    return m_control.open(request);
}

} // namespace companion::simulator
