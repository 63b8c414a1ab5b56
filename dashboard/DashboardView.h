#pragma once

#include "discovery/DevicesListViewController.h"
#include "views/DragDropView.h"
#include "views/ITSwitch.h"

#include <atomic>
#include <memory>
#include <string>

namespace companion {

class RelaySettingsViewController;

/// The parts of the dashboard that come and go as a whole.
enum class Pane { fileUpload, castButton, hdmiToggle, hdmiMessage, emptyStateImage };

/// What is known of touches while they are expected.
enum class TouchState {
    notExpected,
    noPort, ///< The touch port cannot be opened.
    awaited,
    missing, ///< None came for a while.
    ignored, ///< Some came, from a sender whose touches are dropped.
    works,
    worksFromElsewhere, ///< The first one came from another address than the panel's.
};

/// An upload as the view and the request share it. The delivery thread writes the one and reads the other.
struct UploadUnderWay {
    static constexpr int fileIsBeingRead = -1;

    std::atomic<int> percent = fileIsBeingRead; ///< How much has been sent, 0 to 100, or the above.
    std::atomic<bool> isGivenUp = false;
};

/// The dashboard's outlets, as far as its controller changes them. Main thread only.
///
/// Colours, fonts and corners are the view's own; the controller hides what is hidden at the start.
class DashboardView {
public:
    virtual ~DashboardView() = default;

    virtual void setHidden(Pane pane, bool hidden) = 0;

    /// The text of `deviceStatusLabel`.
    virtual void setDeviceStatus(const std::string& text) = 0;

    /// `sender` is an address, for `ignored` and `worksFromElsewhere`.
    virtual void setTouchState(TouchState state, const std::string& sender) = 0;

    /// "castingActive" or "castingInactive".
    virtual void setCastButtonImage(const std::string& imageName) = 0;

    /// "fileUploadGrid" at rest, "fileUploadGridActive" while a drag is over the drop area.
    virtual void setFileUploadViewImage(const std::string& imageName) = 0;

    /// "uploadArrow" at rest, which the view shows by itself at first, or "uploadArrowActive".
    virtual void setUploadArrowImage(const std::string& imageName) = 0;

    /// Shows an upload until it has expired or the user gives it up, which ends it silently. It is on the screen when this
    /// returns, since the main thread may be busy with the file then.
    virtual void showUpload(const std::string& fileName, std::weak_ptr<UploadUnderWay> upload) = 0;

    /// Says how many files wait for a panel to be paired; the name is that of the first. None at the start.
    virtual void setFilesWaiting(std::size_t count, const std::string& firstName) = 0;

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
