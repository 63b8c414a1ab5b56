#pragma once

#include "dashboard/DashboardDependencies.h"
#include "dashboard/FilesToSend.h"
#include "panel/HDMITouchBack.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

namespace companion {

/// The dashboard's controller: which panel is paired, whether a session with it runs, and the heartbeat that watches
/// the session. Touches are received by `TouchReception`, files are sent by `FileUploads`.
///
/// Main thread only, except that a heartbeat's reply counts its failure where it arrives; what follows from it runs
/// on the main queue. A reply keeps the controller alive until it is dealt with, and the controller is destroyed
/// on the main thread, wherever its last reference goes.
class DashboardViewController : public DevicesListViewControllerDelegate,
                                public DragDropViewDelegate,
                                public std::enable_shared_from_this<DashboardViewController> {
public:
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
    void uploadFileAction() { m_fileUploads->uploadFileAction(); }

    /// wirelessTouchSwitchToggled:
    void wirelessTouchSwitchToggled();

    void didPickCastingDeviceWithIP(
        const std::string& ip, const std::string& hex, const std::string& name) override;
    void deviceDisconnecetd() override;

    void showDevicesList();

    /// Starts casting, or stops it when it runs or when no panel is paired.
    void beginScreenCast();

    /// Shows nothing and sends nothing. Every way in which casting stops ends here; `SessionEnd` lists them.
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

    void uploadFileURL(const FileUrl& url) override { m_fileUploads->uploadFileURL(url); }
    void draggingBegin() override { m_fileUploads->draggingBegin(); }
    void draggingInprogress() override { }

    /// The application comes to the front half a second later, as the drag's source had it until now.
    void draggingFinished() override { m_fileUploads->draggingFinished(); }

    /// uploadFileWithURL:
    /// Half a second later the file is read whole and sent to the panel that is paired then. It is a fatal error if
    /// no panel is paired by then, or if the file cannot be read.
    void uploadFileWithURL(const FileUrl& url) { m_fileUploads->uploadFileWithURL(url); }

    /// What another program hands over to be sent, as "file:" URLs. Without a panel the list opens, and they wait.
    void sendFiles(const std::vector<std::string>& urls);

    /// udpSocket:didReceiveData:fromAddress:withFilterContext:
    void udpSocketDidReceiveData(AsyncUdpSocket& socket, std::string_view data, const UdpSender& from)
    {
        m_touchReception.udpSocketDidReceiveData(socket, data, from);
    }

    /// Absent while no panel is paired; the other two are those of the panel paired last.
    const std::optional<std::string>& selectedDeviceIPAddress() const { return m_panel->ipAddress; }
    const std::optional<std::string>& selectedDeviceName() const { return m_panel->name; }
    const std::optional<std::string>& selectedDeviceHex() const { return m_panel->hex; }

    bool isCastingInProgress() const { return m_isCastingInProgress; }
    bool isTouchBackEnabled() const { return m_isTouchBackEnabled; }

    /// Whether the paired panel takes files; decided at a pick and when the switch is turned off.
    bool isFileUploadEnabled() const { return m_panel->isFileUploadEnabled; }

    const std::vector<std::string>& imageFileTypes() const
    {
        return m_fileUploads->fileTypes().imageFileTypes;
    }
    const std::vector<std::string>& videoFileTypes() const
    {
        return m_fileUploads->fileTypes().videoFileTypes;
    }
    const std::vector<std::string>& documentsFileTypes() const
    {
        return m_fileUploads->fileTypes().documentsFileTypes;
    }

    /// Any thread.
    int serverPingFailedCount() const { return m_serverPingFailedCount; }

private:
    struct AlertText;
    static const AlertText startAlert;
    static const AlertText stopAlert;
    static const AlertText networkAlert;
    static const AlertText busyAlert;

    /// Why casting stops; there is no other reason. Touch over HDMI stops for these and with its switch.
    enum class SessionEnd {
        castButton,       ///< The user pressed the cast button.
        disconnect,       ///< The user disconnected the panel.
        closeTouchBack,   ///< `closeTouchBack` was called, which no flow of the program does.
        castOffReply,     ///< The panel answered a heartbeat with "CAST_OFF",
        busyReply,        ///< or with "DEVICE_BUSY".
        failedHeartbeats, ///< The second heartbeat failed.
    };

    explicit DashboardViewController(DashboardDependencies dependencies);
    ~DashboardViewController() override = default;
    static void destroyOnMainThread(DashboardViewController* controller);

    void setupView();
    void startScreenCast();
    void applyFileUploadRule();
    void handleHeartbeatReply(bool success, const std::string& reply);
    void endSessionOnMainQueue(SessionEnd reason, const AlertText* alert = nullptr);
    void logSessionEnd(SessionEnd reason);
    bool showAlert(const AlertText& alert);

    const DashboardDependencies m_dependencies;
    DashboardView& m_view;
    const std::thread::id m_mainThread = std::this_thread::get_id();

    std::unique_ptr<DevicesListViewController> m_devicesListController;
    std::unique_ptr<RelaySettingsViewController> m_settingsController;

    const std::shared_ptr<PairedPanel> m_panel = std::make_shared<PairedPanel>();
    bool m_isCastingInProgress = false;
    bool m_isTouchBackEnabled = false;

    std::atomic<int> m_serverPingFailedCount = 0;
    std::unique_ptr<RepeatingTimer> m_pingTimer;

    std::unique_ptr<HDMITouchBack> m_hdmiTouchback;
    TouchReception m_touchReception;
    const std::shared_ptr<FileUploads> m_fileUploads;
    const std::shared_ptr<FilesToSend> m_filesToSend;
};

} // namespace companion
