#include "simulator/TouchControl.h"

#include "simulator/CollectingExchange.h"
#include "simulator/PanelState.h"
#include "simulator/Recording.h"
#include "simulator/Replay.h"
#include "simulator/Text.h"
#include "simulator/TouchSender.h"

#include <utility>

namespace companion::simulator {

namespace {

using namespace std::chrono_literals;

constexpr std::uint64_t maxPart = 1'000'000'000;
constexpr std::size_t maxStrokeName = 64;
constexpr auto patienceForMissingParts = 2s;
constexpr auto lookAgain = 10ms;

/// Starts something that is played, and answers once it is over, so that a script need not guess how long it takes.
class PlayExchange : public CollectingExchange {
public:
    PlayExchange(const Request& request, PanelState& state)
        : CollectingExchange(request)
        , m_state(state)
    {
    }

protected:
    bool isWanted() const { return m_state.touchReceiver().has_value(); }

    static Answer unwanted() { return lineAnswer(409, "nobody has asked for touches"); }

    /// What is played from now on, or what is answered or waited for instead.
    virtual std::variant<std::shared_ptr<Playback>, Outcome> start() = 0;

    /// It was not played to its end.
    virtual void failed() { }

private:
    Outcome answer() override
    {
        if (!m_playback) {
            auto started = start();
            if (auto* outcome = std::get_if<Outcome>(&started))
                return std::move(*outcome);
            m_playback = std::get<std::shared_ptr<Playback>>(started);
        }
        if (!m_playback)
            return lineAnswer(503, "too many gestures are waiting");
        const auto result = m_playback->result();
        if (!result)
            return Wait();
        if (!result->problem.empty())
            failed();
        return answerTo(*result);
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
    std::shared_ptr<Playback> m_playback;
};

class TouchExchange : public PlayExchange {
public:
    TouchExchange(const Request& request, PanelState& state, TouchSender& touches)
        : PlayExchange(request, state)
        , m_touches(touches)
    {
    }

private:
    std::variant<std::shared_ptr<Playback>, Outcome> start() override
    {
        auto gesture = parseGesture(body());
        if (const auto* problem = std::get_if<std::string>(&gesture))
            return lineAnswer(400, *problem);
        if (!isWanted())
            return unwanted();
        return m_touches.play(std::move(std::get<Gesture>(gesture)));
    }

    TouchSender& m_touches;
};

/// A part of a stroke: played when its turn has come, or when the parts before it do not come any more.
class StrokeExchange : public PlayExchange {
public:
    StrokeExchange(const Request& request, PanelState& state, TouchSender& touches, const Replay& replay,
        StrokeOrder& order)
        : PlayExchange(request, state)
        , m_touches(touches)
        , m_replay(replay)
        , m_order(order)
    {
    }

private:
    using Verdict = StrokeOrder::Verdict;

    std::variant<std::shared_ptr<Playback>, Outcome> start() override
    {
        m_stroke = request().query("id").value_or("");
        const auto part = parseCount(request().query("part").value_or(""), maxPart);
        if (m_stroke.empty() || m_stroke.size() > maxStrokeName || !part)
            return lineAnswer(400, "id and part of the stroke are missing");
        auto gesture = parseGesture(body());
        if (const auto* problem = std::get_if<std::string>(&gesture))
            return lineAnswer(400, *problem);
        if (auto refusal = refusalNow())
            return *refusal;
        if (auto outcome = outcomeOf(m_order.judge(m_stroke, *part, std::chrono::steady_clock::now())))
            return *outcome;
        return play(*part, std::move(std::get<Gesture>(gesture)));
    }

    void failed() override { m_order.abandon(); }

    std::optional<Answer> refusalNow()
    {
        if (m_replay.isPlaying())
            return lineAnswer(409, "a recording is being played");
        if (isWanted())
            return std::nullopt;
        m_order.abandon();
        return unwanted();
    }

    /// Nothing when the part is to be played now.
    std::optional<Outcome> outcomeOf(Verdict verdict)
    {
        switch (verdict) {
        case Verdict::Play:
            return std::nullopt;
        case Verdict::Played:
            return lineAnswer(200, "sent before");
        case Verdict::Busy:
            return lineAnswer(409, "another finger is on the panel");
        case Verdict::Unknown:
            return lineAnswer(409, "the stroke is over");
        case Verdict::Early:
            break;
        }
        if (std::chrono::steady_clock::now() - m_begin < patienceForMissingParts)
            return Wait{lookAgain};
        if (!m_order.isUnderWay(m_stroke))
            return lineAnswer(409, "the beginning of the stroke is missing");
        return std::nullopt; // what is missing is passed over
    }

    std::shared_ptr<Playback> play(std::uint64_t part, Gesture gesture)
    {
        if (auto lift = m_order.liftBefore(part))
            gesture.insert(gesture.begin(), std::move(*lift));
        auto playback = m_touches.play(gesture);
        if (playback)
            m_order.played(m_stroke, part, gesture, std::chrono::steady_clock::now());
        return playback;
    }

    TouchSender& m_touches;
    const Replay& m_replay;
    StrokeOrder& m_order;
    std::string m_stroke;
    const StrokeOrder::Time m_begin = std::chrono::steady_clock::now();
};

/// A recording: that of the body, or the one that the panel was started with.
class ReplayExchange : public PlayExchange {
public:
    ReplayExchange(const Request& request, PanelState& state, Replay& replay)
        : PlayExchange(request, state)
        , m_replay(replay)
    {
    }

private:
    std::variant<std::shared_ptr<Playback>, Outcome> start() override
    {
        if (body().empty() && !m_replay.hasRecording())
            return lineAnswer(400, "there is no recording: send one, or start with --replay FILE");
        auto recording = body().empty() ? m_replay.recording() : parseRecording(body());
        if (const auto* problem = std::get_if<std::string>(&recording))
            return lineAnswer(400, *problem);
        if (!isWanted())
            return unwanted();
        if (m_replay.isPlaying())
            return lineAnswer(409, "a recording is being played");
        return m_replay.start(std::move(std::get<Gesture>(recording)));
    }

    Replay& m_replay;
};

} // namespace

TouchControl::TouchControl(PanelState& state, TouchSender& touches, Replay& replay)
    : m_state(state)
    , m_touches(touches)
    , m_replay(replay)
{
}

std::unique_ptr<Exchange> TouchControl::open(const Request& request, const std::string& name)
{
    if (name == "replay")
        return std::make_unique<ReplayExchange>(request, m_state, m_replay);
    if (name == "stroke")
        return std::make_unique<StrokeExchange>(request, m_state, m_touches, m_replay, m_strokes);
    return std::make_unique<TouchExchange>(request, m_state, m_touches);
}

} // namespace companion::simulator
