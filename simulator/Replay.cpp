#include "simulator/Replay.h"

#include "simulator/EventLog.h"
#include "simulator/PanelState.h"
#include "simulator/TouchSender.h"

#include <string>
#include <utility>

namespace companion::simulator {

namespace {

std::string datagrams(std::size_t count)
{
    return std::to_string(count) + (count == 1 ? " datagram" : " datagrams");
}

} // namespace

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
    if (!m_recording || isPlaying())
        return;
    Gesture delayed = *m_recording;
    delayed.front().pause += headStart;
    start(std::move(delayed));
}

bool Replay::isPlaying() const
{
    return m_playback && !m_playback->result();
}

std::shared_ptr<Playback> Replay::start(Gesture recording)
{
    const std::size_t size = recording.size();
    const auto ended = [&state = m_state, &log = m_log, size](const Playback::Result& result) {
        state.setReplay({size, /*isPlaying=*/false});
        log.write("replay ended: " + datagrams(result.sent) + " sent"
            + (result.problem.empty() ? "" : ", then " + result.problem));
    };
    // Said before it is so, since the end may come at once, on the sender's thread.
    m_state.setReplay({size, /*isPlaying=*/true});
    m_log.write("replay of " + datagrams(size) + " begins");
    m_playback = m_touches.play(std::move(recording), ended);
    if (!m_playback)
        ended({0, /*isRefused=*/true, "too many gestures are waiting"});
    return m_playback;
}

} // namespace companion::simulator
