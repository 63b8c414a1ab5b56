#include "platform/qt/WidgetMainQueue.h"

#include <QApplication>

namespace companion {

bool WidgetMainQueue::isTracking() const
{
    return QApplication::activeModalWidget() || QApplication::activePopupWidget();
}

} // namespace companion
