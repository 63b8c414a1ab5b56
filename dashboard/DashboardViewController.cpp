#include "dashboard/DashboardViewController.h"

#include "panel/PingServer.h"

#include <chrono>
#include <utility>

namespace companion {

namespace {

constexpr std::chrono::seconds heartbeatInterval{4};
constexpr int failuresThatEndASession = 2;
constexpr std::string_view panelWithoutFileUpload = "Halcyon-X";

} // namespace

struct DashboardViewController::AlertText {
    const char* message;
    const char* informativeText;
};

const DashboardViewController::AlertText DashboardViewController::startAlert{"Touchback is enabled now.",
    "To mirror the screen, please go to the AirPlay option on the top menu bar and select the required "
    "AirPlay display device.\n\nNOTE: Make sure the screen calibration is done and your mac and device are on "
    "the same network."};
const DashboardViewController::AlertText DashboardViewController::stopAlert{"Touchback is disabled now.",
    "If screen mirroring is ON and you don't need it anymore, please go to the AirPlay option on the top menu "
    "bar and select 'Stop AirPlay'."};
const DashboardViewController::AlertText DashboardViewController::networkAlert{
    "Network error", "Touchback is disabled. Please check your network connection and then retry."};
const DashboardViewController::AlertText DashboardViewController::busyAlert{
    "Device busy", "Device is currently busy. Please try again."};

std::shared_ptr<DashboardViewController> DashboardViewController::make(DashboardDependencies dependencies)
{
    return {new DashboardViewController(std::move(dependencies)), destroyOnMainThread};
}

DashboardViewController::DashboardViewController(DashboardDependencies dependencies)
    : m_dependencies(std::move(dependencies))
    , m_view(m_dependencies.view)
    , m_touchReception(m_dependencies.touch, m_view, m_dependencies.mainQueue, m_dependencies.log,
          m_dependencies.panelRequestHost.console, *m_panel)
    , m_fileUploads(std::make_shared<FileUploads>(m_dependencies.upload,
          UploadHost{m_dependencies.panelRequestHost.httpSession, m_dependencies.panelRequestHost.console,
              m_dependencies.mainQueue, m_dependencies.alerts},
          m_dependencies.log, m_view, m_panel))
    , m_filesToSend(std::make_shared<FilesToSend>(*m_fileUploads, m_dependencies.alerts, m_view, *m_panel))
{
}

/// The job owns a bare pointer: a queue that ends without running it leaks the controller, which is better than
/// destroying it when what it works with may have gone.
void DashboardViewController::destroyOnMainThread(DashboardViewController* controller)
{
    if (std::this_thread::get_id() == controller->m_mainThread)
        delete controller;
    else
        controller->m_dependencies.mainQueue.async([controller] { delete controller; });
}

void DashboardViewController::viewDidLoad()
{
    m_isCastingInProgress = false;
    m_isTouchBackEnabled = false;
    m_serverPingFailedCount = 0;
    m_hdmiTouchback = std::make_unique<HDMITouchBack>(m_dependencies.panelRequestHost);
    setupView();
    m_fileUploads->setFileTypes(panelFileTypes());
}

void DashboardViewController::setupView()
{
    m_view.setCastButtonImage("castingInactive");
    m_view.setFileUploadViewImage("fileUploadGrid");
    ITSwitch& touchSwitch = m_view.wirelessTouchSwitch();
    touchSwitch.setAction([weakSelf = weak_from_this()](ITSwitch&) {
        if (const auto self = weakSelf.lock())
            self->wirelessTouchSwitchToggled();
    });
    touchSwitch.setChecked(false);
    m_view.fileUploadView().init();
    m_view.fileUploadView().setDelegate(weak_from_this());
    m_view.setHidden(Pane::hdmiToggle, true);
    m_view.setHidden(Pane::fileUpload, true);
    m_view.setHidden(Pane::castButton, true);
    m_view.setHidden(Pane::hdmiMessage, true);
}

void DashboardViewController::castButtonClicked()
{
    beginScreenCast();
}

void DashboardViewController::connectButtonClicked()
{
    showDevicesList();
}

void DashboardViewController::devicesListIconClicked()
{
    showDevicesList();
}

void DashboardViewController::showDevicesList()
{
    if (!m_devicesListController) {
        m_devicesListController = m_dependencies.makeDevicesListController();
        m_devicesListController->viewDidLoad();
    }
    m_devicesListController->setDelegate(weak_from_this());
    m_view.presentDevicesList(*m_devicesListController);
}

void DashboardViewController::settingsIconClicked()
{
    if (!m_settingsController) {
        m_settingsController = m_dependencies.makeSettingsController();
        m_settingsController->viewDidLoad();
    }
    m_view.presentSettings(*m_settingsController);
}

void DashboardViewController::didPickCastingDeviceWithIP(
    const std::string& ip, const std::string& hex, const std::string& name)
{
    m_panel->ipAddress = ip;
    m_panel->name = name;
    m_panel->hex = hex;
    m_view.setDeviceStatus("Paired to " + hex);
    applyFileUploadRule();
    m_view.setHidden(Pane::fileUpload, false);
    m_view.setHidden(Pane::hdmiToggle, false);
    m_view.setHidden(Pane::castButton, false);
    m_view.setHidden(Pane::emptyStateImage, true);
    m_filesToSend->sendNext();
}

void DashboardViewController::sendFiles(const std::vector<std::string>& urls)
{
    m_filesToSend->add(urls);
    if (m_filesToSend->waitsForPanel())
        showDevicesList();
}

void DashboardViewController::deviceDisconnecetd()
{
    if (m_isCastingInProgress) {
        logSessionEnd(SessionEnd::disconnect);
        stopScreenCast();
        if (!showScreenCastStoppedMessage())
            return;
    }
    // The panel is told while its address is still known.
    initiateHDMITouchbackEnabled(/*enabled=*/false, /*isHDMI=*/false);
    m_isCastingInProgress = false;
    m_panel->ipAddress.reset();
    m_view.setDeviceStatus("*No Device Connected");

    m_view.setHidden(Pane::hdmiToggle, true);
    m_view.setHidden(Pane::hdmiMessage, true);
    m_view.wirelessTouchSwitch().setChecked(false);
    m_view.setHidden(Pane::fileUpload, true);
    m_view.setHidden(Pane::castButton, true);
    m_view.setHidden(Pane::emptyStateImage, false);
    m_filesToSend->showWhatWaits();
}

/// The rule looks at the panel's own name, not at its model.
void DashboardViewController::applyFileUploadRule()
{
    m_panel->isFileUploadEnabled =
        m_panel->name.value_or("").find(panelWithoutFileUpload) == std::string::npos;
}

void DashboardViewController::beginScreenCast()
{
    if (!m_isCastingInProgress && m_panel->ipAddress) {
        startScreenCast();
        return;
    }
    m_view.setHidden(Pane::hdmiToggle, false);
    initiateHDMITouchbackEnabled(/*enabled=*/false, /*isHDMI=*/false);
    logSessionEnd(SessionEnd::castButton);
    stopScreenCast();
    showScreenCastStoppedMessage();
}

void DashboardViewController::startScreenCast()
{
    if (!showAlert(startAlert))
        return;
    m_isCastingInProgress = true; // the touch port opens only while casting
    initiateHDMITouchbackEnabled(/*enabled=*/true, /*isHDMI=*/false);
    startServerPing();
    m_view.setHidden(Pane::hdmiToggle, true);
    m_view.setCastButtonImage("castingActive");
}

void DashboardViewController::stopScreenCast()
{
    stopServerPing();
    m_touchReception.close();
    m_isCastingInProgress = false;
    m_view.setCastButtonImage("castingInactive");
}

bool DashboardViewController::showScreenCastStoppedMessage()
{
    return showAlert(stopAlert);
}

/// False when the program ends with the alert open.
bool DashboardViewController::showAlert(const AlertText& alert)
{
    return m_dependencies.alerts.runModal(alert.message, alert.informativeText);
}

void DashboardViewController::startServerPing()
{
    if (m_pingTimer)
        return;
    m_dependencies.log.log("Starting server ping...");
    m_pingTimer = m_dependencies.mainQueue.repeat(heartbeatInterval, [this] { inititateServerPing(); });
}

void DashboardViewController::stopServerPing()
{
    if (!m_pingTimer)
        return;
    m_dependencies.log.log("Stopping server ping...");
    m_pingTimer.reset();
    m_serverPingFailedCount = 0;
}

void DashboardViewController::inititateServerPing()
{
    m_dependencies.log.log("Pinging...");
    if (m_serverPingFailedCount >= failuresThatEndASession)
        return;
    // Nothing holds the controller any more while it waits on the main queue for its destruction.
    const std::shared_ptr<DashboardViewController> self = weak_from_this().lock();
    if (!self)
        return;
    PingServer(m_dependencies.panelRequestHost)
        .pingServerHeartbeat(m_panel->ipAddress,
            [self](bool success, const std::string& reply) { self->handleHeartbeatReply(success, reply); });
}

void DashboardViewController::handleHeartbeatReply(bool success, const std::string& reply)
{
    if (!success) {
        m_dependencies.log.log("Ping failed");
        // Replies may arrive on several threads: only the one that makes it two ends the session.
        if (++m_serverPingFailedCount == failuresThatEndASession)
            endSessionOnMainQueue(SessionEnd::failedHeartbeats, &networkAlert);
        return;
    }
    if (reply == "CAST_OFF")
        endSessionOnMainQueue(SessionEnd::castOffReply);
    else if (reply == "DEVICE_BUSY")
        endSessionOnMainQueue(SessionEnd::busyReply, &busyAlert);
}

void DashboardViewController::endSessionOnMainQueue(SessionEnd reason, const AlertText* alert)
{
    m_dependencies.mainQueue.async([self = shared_from_this(), reason, alert] {
        self->logSessionEnd(reason);
        self->cleanUIAfterCastingOff();
        if (alert)
            self->showAlert(*alert);
    });
}

/// Silent when nothing runs: replies may come late.
void DashboardViewController::logSessionEnd(SessionEnd reason)
{
    static constexpr const char* reasons[] = {"the cast button was pressed", "the panel was disconnected",
        "touchback was closed", "the panel reported CAST_OFF", "the panel is busy", "two heartbeats failed"};
    const char* const what = m_isCastingInProgress ? "Casting" : "Touch over HDMI";
    if (m_isCastingInProgress || m_pingTimer)
        m_dependencies.log.log(std::string(what) + " stopped: " + reasons[static_cast<std::size_t>(reason)]);
}

void DashboardViewController::cleanUIAfterCastingOff()
{
    stopScreenCast();
    m_view.setHidden(Pane::hdmiToggle, false);
    m_view.setHidden(Pane::fileUpload, false);
    m_view.setHidden(Pane::castButton, false);
    m_view.setHidden(Pane::emptyStateImage, true);
    m_view.setHidden(Pane::hdmiMessage, true);
    m_view.wirelessTouchSwitch().setChecked(false);
}

void DashboardViewController::wirelessTouchSwitchToggled()
{
    const bool isOn = m_view.wirelessTouchSwitch().checked();
    initiateHDMITouchbackEnabled(/*enabled=*/isOn, /*isHDMI=*/true);
    if (isOn) {
        startServerPing();
    } else {
        stopServerPing();
        applyFileUploadRule();
    }
    m_view.setHidden(Pane::fileUpload, isOn);
    m_view.setHidden(Pane::castButton, isOn);
    m_view.setHidden(Pane::emptyStateImage, true);
    m_view.setHidden(Pane::hdmiMessage, !isOn);
}

void DashboardViewController::initiateHDMITouchbackEnabled(bool enabled, bool isHDMI)
{
    if (enabled)
        initiateTouchBack();
    else
        m_touchReception.touchesEnd();
    m_hdmiTouchback->enableHDMITouchback(enabled, isHDMI, m_panel->ipAddress);
}

void DashboardViewController::initiateTouchBack()
{
    if (!m_view.wirelessTouchSwitch().checked() && !m_isCastingInProgress)
        return;
    if (m_touchReception.open())
        m_isTouchBackEnabled = true;
}

void DashboardViewController::closeTouchBack()
{
    if (m_touchReception.isOpen())
        m_touchReception.close();
    logSessionEnd(SessionEnd::closeTouchBack);
    stopScreenCast();
    showScreenCastStoppedMessage();
}

} // namespace companion
