#pragma once

#include "platform/Alerts.h"
#include "platform/qt/QtMainQueue.h"

namespace companion {

/// Alerts as message boxes over the active window, or in the middle of the screen when there is none.
class QtAlerts : public Alerts {
public:
    /// `mainQueue` must outlive the alerts and stands still while one is open.
    explicit QtAlerts(QtMainQueue& mainQueue);

    void runModal(const std::string& message, const std::string& informativeText) override;

private:
    QtMainQueue& m_mainQueue;
};

} // namespace companion
