#include "panel/PingServer.h"

#include "panel/LocalAddress.h"
#include "platform/FatalError.h"
#include "platform/Text.h"

#include <string_view>
#include <utility>

namespace companion {

namespace {

/// The panel says "Device is busy"; callers know it as "DEVICE_BUSY". Casting switched off outranks it.
std::string replyText(std::string_view body)
{
    if (body.find("CAST_OFF") != std::string_view::npos)
        return "CAST_OFF";
    if (body.find("Device is busy") != std::string_view::npos)
        return "DEVICE_BUSY";
    return "";
}

void handleHttpReply(
    int statusCode, std::string_view body, Console& console, const PanelReplyHandler& handler)
{
    console.print("statusCode: " + std::to_string(statusCode));
    if (statusCode != 200) {
        console.print("Ping failed2..");
        handler(false, "");
        return;
    }
    if (!isValidUtf8(body))
        fatalError("The panel's answer to a ping is not UTF-8.");
    console.print("Ping succeeded.." + std::string(body));
    handler(true, replyText(body));
}

} // namespace

PingServer::PingServer(const PanelRequestHost& host)
    : m_host(host)
{
}

void PingServer::pingServerHeartbeat(
    const std::optional<std::string>& selectedDeviceIP, PanelReplyHandler handler)
{
    const std::string localAddress = getLocalIPAddress(
        m_host.interfaceAddresses, m_host.interfaceNameRule.interfaceNameTowards(selectedDeviceIP));
    if (localAddress.empty()) {
        handler(false, "");
        return;
    }

    const PanelRequest request{selectedDeviceIP, "/pingServerWithIP?ip=" + localAddress + "&msg=ping"};
    sendPanelRequest(
        m_host, request, [&console = m_host.console, handler = std::move(handler)](const PanelReply& reply) {
            if (reply.response && reply.response->statusCode)
                handleHttpReply(*reply.response->statusCode, reply.body, console, handler);
            else
                handler(false, "");
        });
}

} // namespace companion
