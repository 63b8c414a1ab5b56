#pragma once

#include "platform/Alerts.h"
#include "platform/qt/WidgetMainQueue.h"

#include <functional>

class QWidget;

namespace companion {

/// Alerts as message boxes over the main window. Touches and everything else wait for the answer, so the window comes to
/// the front with its alert; where the desktop forbids that, it asks for attention.
class QtAlerts : public Alerts {
public:
    /// Both must outlive the alerts; `mainQueue` is blocked while one is open. `askForAttention` does for the window what
    /// the toolkit cannot do on this desktop.
    QtAlerts(
        WidgetMainQueue& mainQueue, QWidget& mainWindow, std::function<void()> askForAttention = [] {});

    bool runModal(const std::string& message, const std::string& informativeText) override;

    /// The program ends: the toolkit closes what is open, which counts as no answer.
    void programEnds() { m_doesProgramEnd = true; }

private:
    WidgetMainQueue& m_mainQueue;
    QWidget& m_mainWindow;
    const std::function<void()> m_askForAttention;
    bool m_doesProgramEnd = false;
};

} // namespace companion
