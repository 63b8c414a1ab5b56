#include "dashboard/TouchArrival.h"

#include <chrono>

namespace companion {

namespace {

constexpr std::chrono::seconds patience{15};

} // namespace

TouchArrival::TouchArrival(DashboardView& view, MainQueue& mainQueue, const PairedPanel& panel)
    : m_view(view)
    , m_mainQueue(mainQueue)
    , m_panel(panel)
{
}

void TouchArrival::begin(bool isPortOpen)
{
    m_wait.reset();
    show(isPortOpen ? TouchState::awaited : TouchState::noPort);
    if (!isPortOpen)
        return;
    m_wait = std::make_shared<const bool>();
    m_mainQueue.after(patience, [this, wait = std::weak_ptr(m_wait)] {
        if (!wait.expired() && m_state == TouchState::awaited)
            show(TouchState::missing);
    });
}

void TouchArrival::end()
{
    m_wait.reset();
    if (m_state != TouchState::notExpected)
        show(TouchState::notExpected);
}

void TouchArrival::touchWorks(const UdpSender& from)
{
    m_wait.reset();
    if (from.host == m_panel.ipAddress)
        show(TouchState::works);
    else
        show(TouchState::worksFromElsewhere, from.host);
}

void TouchArrival::show(TouchState state, const std::string& sender)
{
    m_state = state;
    m_view.setTouchState(state, sender);
}

} // namespace companion
