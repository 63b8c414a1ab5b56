#include "dashboard/RelaySettingsViewController.h"

namespace companion {

void RelaySettingsViewController::viewDidLoad()
{
    initUI();
}

void RelaySettingsViewController::initUI()
{
    m_fpsButton = {{"15", "25", "30", "60"}};
    m_sessionPresentButton = {{"1080P", "720P"}};
}

} // namespace companion
