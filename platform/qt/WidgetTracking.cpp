#include "platform/qt/WidgetTracking.h"

#include <QApplication>

namespace companion {

bool isTrackingWidgets()
{
    return QApplication::activeModalWidget() || QApplication::activePopupWidget();
}

} // namespace companion
