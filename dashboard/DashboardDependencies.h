#pragma once

#include "dashboard/FileUploads.h"
#include "dashboard/RelaySettingsViewController.h"
#include "dashboard/TouchReception.h"
#include "discovery/DevicesListViewController.h"
#include "panel/PanelService.h"

#include <functional>
#include <memory>

namespace companion {

/// What the dashboard works with. Everything outlives it; since unanswered requests hold the dashboard, the HTTP
/// session is the first of these to go, on the main thread.
struct DashboardDependencies {
    DashboardView& view;
    Alerts& alerts;
    MainQueue& mainQueue;
    SystemLog& log;
    PanelRequestHost panelRequestHost;
    TouchDependencies touch;
    FileUploadDependencies upload;

    /// Called at most once each, when a popover is opened for the first time; the view is not loaded yet.
    std::function<std::unique_ptr<DevicesListViewController>()> makeDevicesListController;
    std::function<std::unique_ptr<RelaySettingsViewController>()> makeSettingsController;
};

} // namespace companion
