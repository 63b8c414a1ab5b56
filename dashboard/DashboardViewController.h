#pragma once

#include "dashboard/DashboardDependencies.h"
#include "panel/FileTypes.h"
#include "panel/HDMITouchBack.h"
#include "touchback/MouseSimulate.h"
#include "touchback/TouchMessage.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

namespace companion {

/// The dashboard's controller: which panel is paired, whether a session with it runs, the heartbeat that watches the
/// session, the touches that come from the panel, and the files that go to it.
///
/// Main thread only, except that a heartbeat's reply counts its failure where it arrives; what follows from it runs
/// on the main queue. A reply keeps the controller alive until it is dealt with, and the controller is destroyed
/// on the main thread, wherever its last reference goes.
class DashboardViewController : public DevicesListViewControllerDelegate,
                                public AsyncUdpSocketDelegate,
                                public DragDropViewDelegate,
                                public std::enable_shared_from_this<DashboardViewController> {
public:
    static constexpr std::uint16_t touchPort = 41863;

    /// The thread that calls is the main thread.
    static std::shared_ptr<DashboardViewController> make(DashboardDependencies dependencies);

    DashboardViewController(const DashboardViewController&) = delete;
    DashboardViewController& operator=(const DashboardViewController&) = delete;

    /// viewDidLoad
    void viewDidLoad();

    // What the buttons do.
    void castButtonClicked();
    void connectButtonClicked();
    void devicesListIconClicked();
    void settingsIconClicked();

    /// uploadFileAction:
    /// Lets the user choose a file, unless the panel takes none.
    void uploadFileAction();

    /// wirelessTouchSwitchToggled:
    void wirelessTouchSwitchToggled();

    void didPickCastingDeviceWithIP(
        const std::string& ip, const std::string& hex, const std::string& name) override;
    void deviceDisconnecetd() override;

    void showDevicesList();

    /// Starts casting, or stops it when it runs or when no panel is paired.
    void beginScreenCast();

    /// Shows nothing and tells the panel nothing.
    void stopScreenCast();
    bool showScreenCastStoppedMessage(); ///< False when the program ends meanwhile.
    void cleanUIAfterCastingOff();

    /// The first heartbeat comes 4.0 s after the start. A running heartbeat is left as it is.
    void startServerPing();

    /// Forgets the failures counted, unless no heartbeat runs.
    void stopServerPing();

    /// inititateServerPing:
    /// One heartbeat.
    void inititateServerPing();

    /// Opens the touch port while casting or with the switch on. A failure is logged.
    void initiateTouchBack();

    /// Closes the touch port, then stops casting and says so in any case.
    void closeTouchBack();

    /// initiateHDMITouchbackEnabled:isHDMI:
    /// Opens the touch port if `enabled`, and asks the panel for its touches or to keep them.
    void initiateHDMITouchbackEnabled(bool enabled, bool isHDMI);

    void uploadFileURL(const FileUrl& url) override;
    void draggingBegin() override;
    void draggingInprogress() override;

    /// The application comes to the front half a second later, as the drag's source had it until now.
    void draggingFinished() override;

    /// uploadFileWithURL:
    /// Half a second later the file is read whole and sent to the panel that is paired then. By that time there
    /// has to be a panel, and a file that can be read: their lack is a fatal error.
    void uploadFileWithURL(const FileUrl& url);

    void udpSocketDidReceiveData(
        AsyncUdpSocket& socket, std::string_view data, const UdpSender& from) override;

    /// Absent while no panel is paired; the other two are those of the panel paired last.
    const std::optional<std::string>& selectedDeviceIPAddress() const { return m_selectedDeviceIPAddress; }
    const std::optional<std::string>& selectedDeviceName() const { return m_selectedDeviceName; }
    const std::optional<std::string>& selectedDeviceHex() const { return m_selectedDeviceHex; }

    bool isCastingInProgress() const { return m_isCastingInProgress; }
    bool isTouchBackEnabled() const { return m_isTouchBackEnabled; }

    /// Whether the paired panel takes files; decided at a pick and when the switch is turned off.
    bool isFileUploadEnabled() const { return m_isFileUploadEnabled; }

    const std::vector<std::string>& imageFileTypes() const { return m_fileTypes.imageFileTypes; }
    const std::vector<std::string>& videoFileTypes() const { return m_fileTypes.videoFileTypes; }
    const std::vector<std::string>& documentsFileTypes() const { return m_fileTypes.documentsFileTypes; }

    /// Any thread.
    int serverPingFailedCount() const { return m_serverPingFailedCount; }

private:
    struct AlertText;
    static const AlertText startAlert;
    static const AlertText stopAlert;
    static const AlertText networkAlert;
    static const AlertText busyAlert;

    explicit DashboardViewController(DashboardDependencies dependencies);
    ~DashboardViewController() override = default;
    static void destroyOnMainThread(DashboardViewController* controller);

    void setupView();
    void startScreenCast();
    void applyFileUploadRule();
    void handleHeartbeatReply(bool success, const std::string& reply);
    void endSessionOnMainQueue(const AlertText* alert);
    bool showAlert(const AlertText& alert);

    bool passesUploadGate();
    void classifyUploadFile(const FileUrl& url);

    bool openTouchSocket();
    bool isListenedTo(const UdpSender& sender) const;
    void simulateTouch(const TouchMessage& message);
    void logShortRecord();

    const DashboardDependencies m_use;
    DashboardView& m_view;
    const std::thread::id m_mainThread = std::this_thread::get_id();

    std::unique_ptr<DevicesListViewController> m_devicesListController;
    std::unique_ptr<RelaySettingsViewController> m_settingsController;

    std::optional<std::string> m_selectedDeviceIPAddress;
    std::optional<std::string> m_selectedDeviceName;
    std::optional<std::string> m_selectedDeviceHex;
    bool m_isCastingInProgress = false;
    bool m_isTouchBackEnabled = false;
    bool m_isFileUploadEnabled = false;

    std::atomic<int> m_serverPingFailedCount = 0;
    std::unique_ptr<RepeatingTimer> m_pingTimer;

    std::unique_ptr<HDMITouchBack> m_hdmiTouchback;
    std::unique_ptr<AsyncUdpSocket> m_sendUdpSocket; // receives only
    std::unique_ptr<MouseSimulate> m_mouseSimulator;
    std::optional<double> m_shortRecordLoggedAt; // seconds since 1970

    FileTypeLists m_fileTypes;
    UploadProgress m_uploadProgress;
};

} // namespace companion
