#pragma once

#include "platform/qt/QtMainQueue.h"

namespace companion {

/// The main queue of a program with widgets: repeating timers skip their ticks while a dialog, a menu or a pop-up is open.
class WidgetMainQueue : public QtMainQueue {
protected:
    bool isTracking() const override;
};

} // namespace companion
