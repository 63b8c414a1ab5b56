#pragma once

#include "platform/Application.h"

#include <string>

class QWidget;

namespace companion {

/// Restores the window if it is minimised, and brings it to the front, as far as the window manager lets it. Wayland
/// compositors want a token of xdg-activation-v1 for that.
void bringToFront(QWidget& window, const std::string& activationToken = {});

/// Brings the main window to the front.
class QtApplicationActivation : public Application {
public:
    /// The window must outlive the activation.
    explicit QtApplicationActivation(QWidget& mainWindow);

    void activateIgnoringOtherApps() override;

private:
    QWidget& m_mainWindow;
};

} // namespace companion
