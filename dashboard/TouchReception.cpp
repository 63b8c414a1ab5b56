#include "dashboard/TouchReception.h"

#include "touchback/TouchMessage.h"

namespace companion {

namespace {

constexpr double secondsBetweenShortRecordLines = 1;

} // namespace

TouchReception::TouchReception(const TouchDependencies& dependencies, DashboardView& view,
    MainQueue& mainQueue, SystemLog& log, Console& console, const PairedPanel& panel)
    : m_dependencies(dependencies)
    , m_log(log)
    , m_console(console)
    , m_panel(panel)
    , m_arrival(view, mainQueue, panel)
{
}

bool TouchReception::open()
{
    m_dependencies.mouseEventPoster.touchesEnd();
    const bool isOpen = receive();
    if (isOpen)
        m_dependencies.mouseEventPoster.touchesBegin();
    m_arrival.begin(isOpen);
    return isOpen;
}

bool TouchReception::receive()
{
    // The port is never shared: the old socket has to release it before the new one binds.
    m_socket.reset();
    m_socket = m_dependencies.sockets.makeSocket(*this, "client udp socket");
    if (const auto error = m_socket->enableBroadcast(true)) {
        m_log.log("Error enabling broadcasting: " + *error);
        return false;
    }
    if (m_socket->connectedPort() != port) {
        if (const auto error = m_socket->bindToPort(port)) {
            m_log.log("Error binding to port: " + *error);
            return false;
        }
    }
    if (const auto error = m_socket->beginReceiving()) {
        m_log.log("Error receiving: " + *error);
        return false;
    }
    m_log.log("Socket Ready");
    return true;
}

void TouchReception::close()
{
    if (m_socket)
        m_socket->close();
    touchesEnd();
}

void TouchReception::touchesEnd()
{
    m_dependencies.mouseEventPoster.touchesEnd();
    m_arrival.end();
}

void TouchReception::udpSocketDidReceiveData(
    AsyncUdpSocket& socket, std::string_view data, const UdpSender& from)
{
    if (isAccepted(from)) {
        if (!m_mouseSimulator)
            m_mouseSimulator.emplace(m_dependencies.clock, m_dependencies.screen, m_dependencies.pause,
                m_dependencies.mouseEventPoster, m_console);
        if (const std::optional<TouchMessage> touch = parseTouchMessage(data)) {
            m_mouseSimulator->initiateMouseEventWithEvent(
                touch->event, touch->xCoordinate, touch->yCoordinate, touch->timeStamp);
            m_arrival.touchArrived(from);
        } else {
            logShortRecord();
        }
    } else {
        m_arrival.touchIgnored(from);
    }
    socket.receiveOnce();
}

bool TouchReception::isAccepted(const UdpSender& sender) const
{
    return m_dependencies.source == TouchSource::any || sender.host == m_panel.ipAddress;
}

/// At most one line a second, as anybody on the network can send any number of such records.
void TouchReception::logShortRecord()
{
    const double now = m_dependencies.clock.secondsSince1970();
    const bool wasJustLogged = m_shortRecordLoggedAt && now >= *m_shortRecordLoggedAt
        && now - *m_shortRecordLoggedAt < secondsBetweenShortRecordLines;
    if (wasJustLogged)
        return;
    m_shortRecordLoggedAt = now;
    m_log.log("A touch record with fewer than four fields was dropped");
}

} // namespace companion
