#include "platform/qt/ActiveWindow.h"

#include <QApplication>
#include <QWidget>

namespace companion {

QWidget* windowForDialogs()
{
    QWidget* window = QApplication::activeWindow();
    while (window && window->windowType() == Qt::Tool && window->parentWidget())
        window = window->parentWidget()->window();
    return window;
}

} // namespace companion
