#pragma once

#include "platform/Clock.h"
#include "platform/MouseEventPoster.h"

namespace companion {

/// A pause between posted events that begins when the window server has processed those before it: what waits in the
/// buffer would otherwise come after the pause, and two presses stamped with the same millisecond are no double
/// click to Qt programs. Main thread only.
class FlushingPause : public Pause {
public:
    /// Both must outlive this object.
    FlushingPause(Pause& pause, MouseEventPoster& poster)
        : m_pause(pause)
        , m_poster(poster)
    {
    }

    void pauseFor(std::chrono::microseconds duration) override
    {
        m_poster.sync();
        m_pause.pauseFor(duration);
    }

private:
    Pause& m_pause;
    MouseEventPoster& m_poster;
};

} // namespace companion
