#include "platform/qt/QtApplicationActivation.h"

#include <QWidget>

namespace companion {

void bringToFront(QWidget& window)
{
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.raise();
    window.activateWindow();
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
