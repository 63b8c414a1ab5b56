#pragma once

#include "discovery/DevicesListViewController.h"
#include "views/ITSwitch.h"

#include <string>

namespace companion {

class RelaySettingsViewController;

/// The parts of the dashboard that come and go as a whole.
enum class Pane { fileUpload, castButton, hdmiToggle, hdmiMessage, emptyStateImage };

/// The dashboard's outlets, as far as its controller works them. Main thread only.
///
/// Colours, fonts and corners are the view's own; what is hidden at the start is told by the controller.
class DashboardView {
public:
    virtual ~DashboardView() = default;

    virtual void setHidden(Pane pane, bool hidden) = 0;

    /// The text of `deviceStatusLabel`.
    virtual void setDeviceStatus(const std::string& text) = 0;

    /// "castingActive" or "castingInactive".
    virtual void setCastButtonImage(const std::string& imageName) = 0;

    /// The switch lives as long as the view; its action is set by the controller.
    virtual ITSwitch& wirelessTouchSwitch() = 0;

    /// Opens a popover below `devicesListIcon`, or brings the open one to the front; it closes when the dashboard's
    /// window is used. The controller is the same one every time.
    virtual void presentDevicesList(DevicesListViewController& controller) = 0;

    /// The same below `settingsIcon`.
    virtual void presentSettings(RelaySettingsViewController& controller) = 0;
};

} // namespace companion
