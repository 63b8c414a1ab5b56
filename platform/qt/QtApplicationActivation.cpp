#include "platform/qt/QtApplicationActivation.h"

#include <QWidget>

namespace companion {

QtApplicationActivation::QtApplicationActivation(QWidget& mainWindow)
    : m_mainWindow(mainWindow)
{
}

void QtApplicationActivation::activateIgnoringOtherApps()
{
    m_mainWindow.setWindowState(m_mainWindow.windowState() & ~Qt::WindowMinimized);
    m_mainWindow.raise();
    m_mainWindow.activateWindow();
}

} // namespace companion
