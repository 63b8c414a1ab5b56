#include "platform/wayland/ActivationToken.h"

#include "platform/wayland/CompositorSocket.h"
#include "xdg-activation-protocol-client.h"

#include <QSocketNotifier>
#include <string_view>
#include <utility>
#include <wayland-client-core.h>
#include <wayland-client-protocol.h>

namespace companion {

/// What the compositor calls.
struct ActivationToken::Callbacks {
    static void global(void* data, wl_registry*, std::uint32_t number, const char* interface, std::uint32_t)
    {
        if (std::string_view(interface) == xdg_activation_v1_interface.name)
            static_cast<ActivationToken*>(data)->request(number);
    }

    static void globalRemove(void*, wl_registry*, std::uint32_t) { }

    static void done(void* data, xdg_activation_token_v1*, const char* token)
    {
        static_cast<ActivationToken*>(data)->m_granted(token);
    }

    static constexpr wl_registry_listener registryListener{global, globalRemove};
    static constexpr xdg_activation_token_v1_listener tokenListener{done};
};

ActivationToken::ActivationToken(Granted granted)
    : m_granted(std::move(granted))
{
    const int fd = connectToCompositor(sessionSocketPath());
    m_display = fd < 0 ? nullptr : wl_display_connect_to_fd(fd); // which owns it from now on
    if (!m_display)
        return;
    m_registry = wl_display_get_registry(m_display);
    wl_registry_add_listener(m_registry, &Callbacks::registryListener, this);
    m_readable = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Read);
    QObject::connect(m_readable.get(), &QSocketNotifier::activated, m_readable.get(), [this] { receive(); });
    wl_display_flush(m_display);
}

ActivationToken::~ActivationToken()
{
    m_readable.reset(); // before the socket is closed
    if (m_token)
        xdg_activation_token_v1_destroy(m_token);
    if (m_activation)
        xdg_activation_v1_destroy(m_activation);
    if (m_registry)
        wl_registry_destroy(m_registry);
    if (m_display)
        wl_display_disconnect(m_display);
}

void ActivationToken::request(std::uint32_t registryNumber)
{
    m_activation = static_cast<xdg_activation_v1*>(
        wl_registry_bind(m_registry, registryNumber, &xdg_activation_v1_interface, /*version=*/1));
    m_token = xdg_activation_v1_get_activation_token(m_activation);
    xdg_activation_token_v1_add_listener(m_token, &Callbacks::tokenListener, this);
    xdg_activation_token_v1_commit(m_token);
}

void ActivationToken::receive()
{
    while (wl_display_prepare_read(m_display) != 0)
        wl_display_dispatch_pending(m_display);
    wl_display_read_events(m_display); // what is there; it waits for nothing
    wl_display_dispatch_pending(m_display);
    wl_display_flush(m_display);
    if (wl_display_get_error(m_display) != 0)
        m_readable->setEnabled(false);
}

} // namespace companion
