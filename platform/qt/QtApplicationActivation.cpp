#include "platform/qt/QtApplicationActivation.h"

#include <QWidget>

namespace companion {

void bringToFront(QWidget& window, const std::string& activationToken)
{
    // Qt takes the token for the next activation from where a program's launcher would put it.
    if (!activationToken.empty())
        qputenv("XDG_ACTIVATION_TOKEN", activationToken.c_str());
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.raise();
    window.activateWindow();
    if (!activationToken.empty())
        qunsetenv("XDG_ACTIVATION_TOKEN");
}

QtApplicationActivation::QtApplicationActivation(QWidget& mainWindow)
    : m_mainWindow(mainWindow)
{
}

void QtApplicationActivation::activateIgnoringOtherApps()
{
    bringToFront(m_mainWindow);
}

} // namespace companion
