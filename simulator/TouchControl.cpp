#include "simulator/TouchControl.h"

#include "simulator/EventLog.h"
#include "simulator/PanelState.h"
#include "simulator/Recording.h"
#include "simulator/Text.h"

#include <utility>

namespace companion::simulator {

namespace {

using namespace std::chrono_literals;

constexpr std::uint64_t maxPart = 1'000'000'000;
constexpr std::size_t maxStrokeName = 64;
constexpr auto missingPartTimeout = 2s;
constexpr auto orderCheckInterval = 10ms;
constexpr auto clientCheckInterval = 100ms;

Answer nobodyAsked()
{
    return lineAnswer(409, "nobody has asked for touches");
}

Answer recordingIsPlayed()
{
    return lineAnswer(409, "a recording is being played");
}

/// Blocks until the playback has ended or the client has disconnected.
Outcome outcomeOf(const Request& request, const Playback& playback)
{
    if (!playback.valid())
        return lineAnswer(503, "too many gestures are waiting");
    while (playback.wait_for(clientCheckInterval) != std::future_status::ready)
        if (!request.wait(0ms))
            return HangUp();
    const PlaybackResult& result = playback.get();
    const std::string sent = datagramCount(result.sent);
    if (result.problem.empty())
        return lineAnswer(200, "sent " + sent);
    return lineAnswer(result.isRefused ? 409 : 502, result.problem + " (after " + sent + ")");
}

bool hasFailed(const Playback& playback)
{
    return playback.valid() && playback.wait_for(0ms) == std::future_status::ready
        && !playback.get().problem.empty();
}

std::optional<Answer> refusalFor(StrokeOrder::Verdict verdict)
{
    using Verdict = StrokeOrder::Verdict;
    switch (verdict) {
    case Verdict::Played:
        return lineAnswer(200, "sent before");
    case Verdict::Busy:
        return lineAnswer(409, "another finger is on the panel");
    case Verdict::Unknown:
        return lineAnswer(409, "the stroke is over");
    case Verdict::Play:
    case Verdict::Early:
        break;
    }
    return std::nullopt;
}

} // namespace

TouchControl::TouchControl(
    PanelState& state, TouchSender& touches, EventLog& log, std::optional<Gesture> recording)
    : m_state(state)
    , m_touches(touches)
    , m_log(log)
    , m_recording(std::move(recording))
{
    if (m_recording)
        m_state.setReplay({m_recording->size(), /*isPlaying=*/false});
}

void TouchControl::touchbackTurnedOn()
{
    if (!m_recording)
        return;
    Gesture delayed = *m_recording;
    delayed.front().pause += headStart;
    startRecording(std::move(delayed));
}

Outcome TouchControl::playGesture(const Request& request, const std::string& body)
{
    auto gesture = parseGesture(body);
    if (const auto* problem = std::get_if<std::string>(&gesture))
        return lineAnswer(400, *problem);
    if (!m_state.touchReceiver())
        return nobodyAsked();
    return outcomeOf(request, m_touches.play(std::move(std::get<Gesture>(gesture))));
}

Outcome TouchControl::playRecording(const Request& request, const std::string& body)
{
    if (body.empty() && !m_recording)
        return lineAnswer(400, "there is no recording: send one, or start with --replay FILE");
    auto recording = body.empty() ? *m_recording : parseRecording(body);
    if (const auto* problem = std::get_if<std::string>(&recording))
        return lineAnswer(400, *problem);
    if (!m_state.touchReceiver())
        return nobodyAsked();
    const auto playback = startRecording(std::move(std::get<Gesture>(recording)));
    return playback ? outcomeOf(request, *playback) : recordingIsPlayed();
}

/// Nothing while another recording is being played.
std::optional<Playback> TouchControl::startRecording(Gesture recording)
{
    const std::lock_guard lock(m_startingRecording);
    if (m_state.isReplaying())
        return std::nullopt;
    const std::size_t size = recording.size();
    const auto ended = [&state = m_state, &log = m_log, size](const PlaybackResult& result) {
        state.setReplay({size, /*isPlaying=*/false});
        log.write("replay ended: " + datagramCount(result.sent) + " sent"
            + (result.problem.empty() ? "" : ", then " + result.problem));
    };
    // Set and logged first, since the sender's thread may report the end at once.
    m_state.setReplay({size, /*isPlaying=*/true});
    m_log.write("replay of " + datagramCount(size) + " begins");
    auto playback = m_touches.play(std::move(recording), ended);
    if (!playback.valid())
        ended({0, /*isRefused=*/true, "too many gestures are waiting"});
    return playback;
}

Outcome TouchControl::playStroke(const Request& request, const std::string& body)
{
    const std::string stroke = request.query("id").value_or("");
    const auto number = parseCount(request.query("part").value_or(""), maxPart);
    if (stroke.empty() || stroke.size() > maxStrokeName || !number)
        return lineAnswer(400, "id and part of the stroke are missing");
    auto gesture = parseGesture(body);
    if (const auto* problem = std::get_if<std::string>(&gesture))
        return lineAnswer(400, *problem);
    const StrokePart part{stroke, *number, std::move(std::get<Gesture>(gesture))};
    auto result = tryPart(part);
    for (; !result; result = tryPart(part))
        if (!request.wait(orderCheckInterval))
            return HangUp();
    if (const auto* answer = std::get_if<Answer>(&*result))
        return *answer;
    const auto& playback = std::get<Playback>(*result);
    Outcome outcome = outcomeOf(request, playback);
    if (hasFailed(playback)) {
        const std::lock_guard lock(m_mutex);
        m_strokes.abandon();
    }
    return outcome;
}

/// Nothing while parts before it are missing.
std::optional<std::variant<Playback, Answer>> TouchControl::tryPart(const StrokePart& part)
{
    if (m_state.isReplaying())
        return recordingIsPlayed();
    const std::lock_guard lock(m_mutex);
    if (!m_state.touchReceiver()) {
        m_strokes.abandon();
        return nobodyAsked();
    }
    const auto now = std::chrono::steady_clock::now();
    const auto verdict = m_strokes.judge(part.stroke, part.number, now);
    if (auto answer = refusalFor(verdict))
        return *answer;
    const bool isEarly = verdict == StrokeOrder::Verdict::Early;
    if (isEarly && now - part.arrived < missingPartTimeout)
        return std::nullopt;
    if (isEarly && !m_strokes.isUnderWay(part.stroke))
        return lineAnswer(409, "the beginning of the stroke is missing");
    return play(part);
}

Playback TouchControl::play(const StrokePart& part)
{
    Gesture gesture = part.gesture;
    if (auto lift = m_strokes.liftBefore(part.number))
        gesture.insert(gesture.begin(), std::move(*lift));
    auto playback = m_touches.play(gesture);
    if (playback.valid())
        m_strokes.played(part.stroke, part.number, gesture, std::chrono::steady_clock::now());
    return playback;
}

} // namespace companion::simulator
