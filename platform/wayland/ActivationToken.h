#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

class QSocketNotifier;
struct wl_display;
struct wl_registry;
struct xdg_activation_token_v1;
struct xdg_activation_v1;

namespace companion {

/// A token that lets a window ask for the focus (xdg-activation-v1), requested on a connection of its own. It names no
/// event of the person's, so compositors mark the window as demanding attention and leave the focus where it is. Qt 6.4
/// requests a token itself only while one of the program's windows has the focus. Main thread only; nothing waits.
class ActivationToken {
public:
    /// Called by the event loop, once at most, and not where the compositor has no such protocol. It must not destroy
    /// this object.
    using Granted = std::function<void(const std::string& token)>;

    explicit ActivationToken(Granted granted);
    ~ActivationToken();
    ActivationToken(const ActivationToken&) = delete;
    ActivationToken& operator=(const ActivationToken&) = delete;

private:
    struct Callbacks;

    void request(std::uint32_t registryNumber);
    void receive();

    Granted m_granted;
    wl_display* m_display = nullptr; ///< Nothing without a compositor.
    wl_registry* m_registry = nullptr;
    xdg_activation_v1* m_activation = nullptr;
    xdg_activation_token_v1* m_token = nullptr;
    std::unique_ptr<QSocketNotifier> m_readable;
};

} // namespace companion
