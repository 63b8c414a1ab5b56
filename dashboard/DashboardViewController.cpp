#include "dashboard/DashboardViewController.h"

#include "panel/PingServer.h"

#include <chrono>
#include <utility>

namespace companion {

namespace {

constexpr std::chrono::seconds heartbeatInterval{4};
constexpr int failuresThatEndASession = 2;
constexpr double secondsBetweenShortRecordLines = 1;
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
    : m_use(std::move(dependencies))
    , m_view(m_use.view)
    , m_uploadProgress(m_use.mainQueue, m_view)
{
}

/// The job owns a bare pointer: a queue that ends without running it leaks the controller, which is better than
/// destroying it when what it works with may have gone.
void DashboardViewController::destroyOnMainThread(DashboardViewController* controller)
{
    if (std::this_thread::get_id() == controller->m_mainThread)
        delete controller;
    else
        controller->m_use.mainQueue.async([controller] { delete controller; });
}

void DashboardViewController::viewDidLoad()
{
    m_isCastingInProgress = false;
    m_isTouchBackEnabled = false;
    m_serverPingFailedCount = 0;
    m_hdmiTouchback = std::make_unique<HDMITouchBack>(m_use.panelRequestHost);
    setupView();
    m_fileTypes = panelFileTypes();
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
    m_view.fileUploadView().setMainQueue(m_use.mainQueue);
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
        m_devicesListController = m_use.makeDevicesListController();
        m_devicesListController->viewDidLoad();
    }
    m_devicesListController->setDelegate(weak_from_this());
    m_view.presentDevicesList(*m_devicesListController);
}

void DashboardViewController::settingsIconClicked()
{
    if (!m_settingsController) {
        m_settingsController = m_use.makeSettingsController();
        m_settingsController->viewDidLoad();
    }
    m_view.presentSettings(*m_settingsController);
}

void DashboardViewController::didPickCastingDeviceWithIP(
    const std::string& ip, const std::string& hex, const std::string& name)
{
    m_selectedDeviceIPAddress = ip;
    m_selectedDeviceName = name;
    m_selectedDeviceHex = hex;
    m_view.setDeviceStatus("Paired to " + hex);
    applyFileUploadRule();
    m_view.setHidden(Pane::fileUpload, false);
    m_view.setHidden(Pane::hdmiToggle, false);
    m_view.setHidden(Pane::castButton, false);
    m_view.setHidden(Pane::emptyStateImage, true);
}

void DashboardViewController::deviceDisconnecetd()
{
    if (m_isCastingInProgress) {
        stopScreenCast();
        if (!showScreenCastStoppedMessage())
            return;
    }
    // The panel is told while its address is still known.
    initiateHDMITouchbackEnabled(/*enabled=*/false, /*isHDMI=*/false);
    m_isCastingInProgress = false;
    m_selectedDeviceIPAddress.reset();
    m_view.setDeviceStatus("*No Device Connected");

    m_view.setHidden(Pane::hdmiToggle, true);
    m_view.setHidden(Pane::hdmiMessage, true);
    m_view.wirelessTouchSwitch().setChecked(false);
    m_view.setHidden(Pane::fileUpload, true);
    m_view.setHidden(Pane::castButton, true);
    m_view.setHidden(Pane::emptyStateImage, false);
}

/// The rule looks at the panel's own name, not at its model.
void DashboardViewController::applyFileUploadRule()
{
    m_isFileUploadEnabled =
        m_selectedDeviceName.value_or("").find(panelWithoutFileUpload) == std::string::npos;
}

void DashboardViewController::beginScreenCast()
{
    if (!m_isCastingInProgress && m_selectedDeviceIPAddress) {
        startScreenCast();
        return;
    }
    m_view.setHidden(Pane::hdmiToggle, false);
    initiateHDMITouchbackEnabled(/*enabled=*/false, /*isHDMI=*/false);
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
    if (m_sendUdpSocket)
        m_sendUdpSocket->close();
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
    return m_use.alerts.runModal(alert.message, alert.informativeText);
}

void DashboardViewController::startServerPing()
{
    if (m_pingTimer)
        return;
    m_use.log.log("Starting server ping...");
    m_pingTimer = m_use.mainQueue.repeat(heartbeatInterval, [this] { inititateServerPing(); });
}

void DashboardViewController::stopServerPing()
{
    if (!m_pingTimer)
        return;
    m_use.log.log("Stopping server ping...");
    m_pingTimer.reset();
    m_serverPingFailedCount = 0;
}

void DashboardViewController::inititateServerPing()
{
    m_use.log.log("Pinging...");
    if (m_serverPingFailedCount >= failuresThatEndASession)
        return;
    // Nothing holds the controller any more while it waits on the main queue for its destruction.
    const std::shared_ptr<DashboardViewController> self = weak_from_this().lock();
    if (!self)
        return;
    PingServer(m_use.panelRequestHost)
        .pingServerHeartbeat(m_selectedDeviceIPAddress,
            [self](bool success, const std::string& reply) { self->handleHeartbeatReply(success, reply); });
}

void DashboardViewController::handleHeartbeatReply(bool success, const std::string& reply)
{
    if (!success) {
        m_use.log.log("Ping failed");
        // Replies may arrive on several threads: only the one that makes it two ends the session.
        if (++m_serverPingFailedCount == failuresThatEndASession)
            endSessionOnMainQueue(&networkAlert);
        return;
    }
    if (reply == "CAST_OFF")
        endSessionOnMainQueue(nullptr);
    else if (reply == "DEVICE_BUSY")
        endSessionOnMainQueue(&busyAlert);
}

void DashboardViewController::endSessionOnMainQueue(const AlertText* alert)
{
    m_use.mainQueue.async([self = shared_from_this(), alert] {
        self->cleanUIAfterCastingOff();
        if (alert)
            self->showAlert(*alert);
    });
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
    m_hdmiTouchback->enableHDMITouchback(enabled, isHDMI, m_selectedDeviceIPAddress);
}

void DashboardViewController::initiateTouchBack()
{
    if (!m_view.wirelessTouchSwitch().checked() && !m_isCastingInProgress)
        return;
    // The port is shared with nobody, so the old socket has to be gone before the new one binds.
    m_sendUdpSocket.reset();
    m_sendUdpSocket = m_use.sockets.makeSocket(*this, "client udp socket");
    if (openTouchSocket())
        m_isTouchBackEnabled = true;
}

bool DashboardViewController::openTouchSocket()
{
    if (const auto error = m_sendUdpSocket->enableBroadcast(true)) {
        m_use.log.log("Error enabling broadcasting: " + *error);
        return false;
    }
    if (m_sendUdpSocket->connectedPort() != touchPort) {
        if (const auto error = m_sendUdpSocket->bindToPort(touchPort)) {
            m_use.log.log("Error binding to port: " + *error);
            return false;
        }
    }
    if (const auto error = m_sendUdpSocket->beginReceiving()) {
        m_use.log.log("Error receiving: " + *error);
        return false;
    }
    m_use.log.log("Socket Ready");
    return true;
}

void DashboardViewController::closeTouchBack()
{
    if (m_sendUdpSocket && !m_sendUdpSocket->isClosed())
        m_sendUdpSocket->close();
    stopScreenCast();
    showScreenCastStoppedMessage();
}

void DashboardViewController::udpSocketDidReceiveData(
    AsyncUdpSocket& socket, std::string_view data, const UdpSender& from)
{
    if (isListenedTo(from)) {
        if (const std::optional<TouchMessage> message = parseTouchMessage(data))
            simulateTouch(*message);
        else
            logShortRecord();
    }
    socket.receiveOnce();
}

bool DashboardViewController::isListenedTo(const UdpSender& sender) const
{
    return m_use.touchSource == TouchSource::any || sender.host == m_selectedDeviceIPAddress;
}

void DashboardViewController::simulateTouch(const TouchMessage& message)
{
    if (!m_mouseSimulator) {
        m_mouseSimulator = std::make_unique<MouseSimulate>(
            m_use.clock, m_use.screen, m_use.pause, m_use.mouseEventPoster, m_use.panelRequestHost.console);
    }
    m_mouseSimulator->initiateMouseEventWithEvent(
        message.event, message.xCoordinate, message.yCoordinate, message.timeStamp);
}

/// At most one line a second, as anybody on the network can send any number of such records.
void DashboardViewController::logShortRecord()
{
    const double now = m_use.clock.secondsSince1970();
    const bool wasJustLogged = m_shortRecordLoggedAt && now >= *m_shortRecordLoggedAt
        && now - *m_shortRecordLoggedAt < secondsBetweenShortRecordLines;
    if (wasJustLogged)
        return;
    m_shortRecordLoggedAt = now;
    m_use.log.log("A touch record with fewer than four fields was dropped");
}

} // namespace companion
