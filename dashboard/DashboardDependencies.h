#pragma once

#include "dashboard/DashboardView.h"
#include "dashboard/RelaySettingsViewController.h"
#include "dashboard/TouchSource.h"
#include "discovery/DevicesListViewController.h"
#include "panel/PanelService.h"
#include "platform/Alerts.h"
#include "platform/Application.h"
#include "platform/AsyncUdpSocket.h"
#include "platform/Clock.h"
#include "platform/FileChooser.h"
#include "platform/FileReader.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/MouseEventPoster.h"
#include "platform/Screen.h"

#include <functional>
#include <memory>

namespace companion {

/// What file uploads need of the desktop.
struct FileUploadDependencies {
    FileChooser& fileChooser;
    FileReader& fileReader;
    Application& application;
};

/// What the dashboard works with. Everything outlives it; since unanswered requests hold the dashboard, the HTTP
/// session is the first of these to go, on the main thread.
struct DashboardDependencies {
    DashboardView& view;
    Alerts& alerts;
    MainQueue& mainQueue;
    SystemLog& log;
    PanelRequestHost panelRequestHost;
    AsyncUdpSocketFactory& sockets;
    Clock& clock;
    Pause& pause;
    Screen& screen;
    MouseEventPoster& mouseEventPoster;
    FileUploadDependencies upload;

    /// Called at most once each, when a popover is opened for the first time; the view is not loaded yet.
    std::function<std::unique_ptr<DevicesListViewController>()> makeDevicesListController;
    std::function<std::unique_ptr<RelaySettingsViewController>()> makeSettingsController;

    TouchSource touchSource = TouchSource::any;
};

} // namespace companion
