#pragma once

#include "platform/MainQueue.h"

#include <functional>
#include <memory>

namespace companion {

/// Shows the splash screen for two seconds and then hands its window over to the dashboard. Main thread only.
class SplashScreenViewController : public std::enable_shared_from_this<SplashScreenViewController> {
public:
    /// `showDashboard` makes the dashboard the contents of the window that shows the splash screen.
    SplashScreenViewController(MainQueue& mainQueue, std::function<void()> showDashboard);

    /// Starts the two seconds; the controller lives until they are over, whoever lets go of it.
    void viewDidLoad();

private:
    MainQueue& m_mainQueue;
    std::function<void()> m_showDashboard;
};

} // namespace companion
