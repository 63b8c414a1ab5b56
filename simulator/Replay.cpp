#include "simulator/Replay.h"

#include "simulator/EventLog.h"
#include "simulator/PanelState.h"

#include <string>
#include <utility>

namespace companion::simulator {

Replay::Replay(PanelState& state, TouchSender& touches, EventLog& log, std::optional<Gesture> recording)
    : m_state(state)
    , m_touches(touches)
    , m_log(log)
    , m_recording(std::move(recording))
{
    if (m_recording)
        m_state.setReplay({m_recording->size(), /*isPlaying=*/false});
}

void Replay::touchbackTurnedOn()
{
    if (!m_recording)
        return;
    Gesture delayed = *m_recording;
    delayed.front().pause += headStart;
    start(std::move(delayed));
}

std::optional<Playback> Replay::start(Gesture recording)
{
    const std::lock_guard lock(m_starting);
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

} // namespace companion::simulator
