#include "panel/TriggerCastingApp.h"

#include "platform/Text.h"

#include <utility>

namespace companion {

std::shared_ptr<TriggerCastingApp> TriggerCastingApp::make(const PanelRequestHost& host)
{
    return std::shared_ptr<TriggerCastingApp>(new TriggerCastingApp(host));
}

TriggerCastingApp::TriggerCastingApp(const PanelRequestHost& host)
    : m_host(host)
{
}

void TriggerCastingApp::triggerCastService(const std::optional<std::string>& selectedDeviceIP)
{
    setObtainedDeviceIP(selectedDeviceIP);

    const auto body = sharedBytes(R"({"key":"ACTION_CAST"})");
    const PanelRequest request{selectedDeviceIP, "/ws", HttpMethod::post, HttpBody{body}};
    const bool isSent =
        sendPanelRequest(m_host, request, [self = shared_from_this()](const PanelReply& reply) {
            self->setObtainedDeviceIP(lenientUtf8(reply.body));
        });
    if (isSent)
        m_host.console.print(std::to_string(body->size()) + " bytes");
}

std::optional<std::string> TriggerCastingApp::obtainedDeviceIP() const
{
    const std::lock_guard lock(m_mutex);
    return m_obtainedDeviceIP;
}

void TriggerCastingApp::setObtainedDeviceIP(std::optional<std::string> text)
{
    const std::lock_guard lock(m_mutex);
    m_obtainedDeviceIP = std::move(text);
}

} // namespace companion
