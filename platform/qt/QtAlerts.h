#pragma once

#include "platform/Alerts.h"
#include "platform/qt/WidgetMainQueue.h"

namespace companion {

/// Alerts as message boxes over the active window, or in the middle of the screen when there is none.
class QtAlerts : public Alerts {
public:
    /// `mainQueue` must outlive the alerts and stands still while one is open.
    explicit QtAlerts(WidgetMainQueue& mainQueue);

    bool runModal(const std::string& message, const std::string& informativeText) override;

    /// The program ends: the toolkit closes what is open, which counts as no answer.
    void programEnds() { m_doesProgramEnd = true; }

private:
    WidgetMainQueue& m_mainQueue;
    bool m_doesProgramEnd = false;
};

} // namespace companion
