#include "app/SplashScreenViewController.h"

namespace companion {

using namespace std::chrono_literals;

SplashScreenViewController::SplashScreenViewController(
    MainQueue& mainQueue, std::function<void()> showDashboard)
    : m_mainQueue(mainQueue)
    , m_showDashboard(std::move(showDashboard))
{
}

void SplashScreenViewController::viewDidLoad()
{
    m_mainQueue.after(2s, [self = shared_from_this()] { self->m_showDashboard(); });
}

} // namespace companion
