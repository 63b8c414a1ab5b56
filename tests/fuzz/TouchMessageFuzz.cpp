// Any datagram, from cutting it to posting events: nothing crashes, and what is cut out lies in the datagram.
#include "platform/testing/FakeClock.h"
#include "platform/testing/FakeLog.h"
#include "platform/testing/FakeMouseEventPoster.h"
#include "platform/testing/FakeScreen.h"
#include "tests/fuzz/Require.h"
#include "touchback/MouseSimulate.h"
#include "touchback/TouchMessage.h"

#include <cmath>

using namespace companion;
using namespace companion::testing;

namespace {

/// A mouse whose events must be numbers; everything else of it is real.
class Computer {
public:
    void touch(const TouchMessage& message)
    {
        m_clock.seconds += 0.3; // some releases are quick, some are late
        m_mouse.initiateMouseEventWithEvent(
            message.event, message.xCoordinate, message.yCoordinate, message.timeStamp);
        for (const MouseEvent& event : m_poster.posted)
            require(std::isfinite(event.at.x) && std::isfinite(event.at.y));
        m_poster.posted.clear();
        m_transcript.clear();
    }

private:
    Transcript m_transcript;
    FakeClock m_clock;
    FakeScreen m_screen;
    FakePause m_pause{m_transcript};
    FakeMouseEventPoster m_poster{m_transcript};
    FakeConsole m_console{m_transcript};
    MouseSimulate m_mouse{m_clock, m_screen, m_pause, m_poster, m_console};
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    static Computer computer;
    const std::string_view datagram(reinterpret_cast<const char*>(data), size);
    const auto message = parseTouchMessage(datagram);
    if (!message)
        return 0;
    for (const std::string_view field :
        {message->event, message->xCoordinate, message->yCoordinate, message->timeStamp}) {
        const bool liesInDatagram =
            field.data() >= datagram.data() && field.data() + field.size() <= datagram.data() + size;
        require(field.empty() || liesInDatagram);
        require(field.find_first_of(";,") == std::string_view::npos);
    }
    computer.touch(*message);
    return 0;
}
