#pragma once

#include "discovery/DevicesListViewController.h"
#include "views/DragDropView.h"
#include "views/ITSwitch.h"
#include "views/UploadProgress.h"

#include <string>

namespace companion {

class RelaySettingsViewController;

/// The parts of the dashboard that come and go as a whole.
enum class Pane { fileUpload, castButton, hdmiToggle, hdmiMessage, emptyStateImage };

/// The dashboard's outlets, as far as its controller works them. Main thread only.
///
/// Colours, fonts and corners are the view's own; what is hidden at the start is told by the controller.
class DashboardView : public UploadProgressView {
public:
    virtual void setHidden(Pane pane, bool hidden) = 0;

    /// The text of `deviceStatusLabel`.
    virtual void setDeviceStatus(const std::string& text) = 0;

    /// "castingActive" or "castingInactive".
    virtual void setCastButtonImage(const std::string& imageName) = 0;

    /// "fileUploadGrid" at rest, "fileUploadGridActive" while a drag is over the drop area.
    virtual void setFileUploadViewImage(const std::string& imageName) = 0;

    /// "uploadArrow" at rest, which the view shows by itself at first, or "uploadArrowActive".
    virtual void setUploadArrowImage(const std::string& imageName) = 0;

    /// The drop area lives as long as the view; the controller has it register its types and is its delegate.
    virtual DragDropView& fileUploadView() = 0;

    /// The switch lives as long as the view; its action is set by the controller.
    virtual ITSwitch& wirelessTouchSwitch() = 0;

    /// Opens a popover below `devicesListIcon`, or brings the open one to the front; it closes when the dashboard's
    /// window is used. The controller is the same one every time.
    virtual void presentDevicesList(DevicesListViewController& controller) = 0;

    /// The same below `settingsIcon`.
    virtual void presentSettings(RelaySettingsViewController& controller) = 0;
};

} // namespace companion
