#pragma once

#include "dashboard/DashboardView.h"
#include "platform/Alerts.h"
#include "platform/Log.h"
#include "ui/ColoredView.h"
#include "ui/Popover.h"
#include "views/ITSwitch.h"

#include <memory>

namespace Ui {
class DashboardScene;
}

namespace companion {

class ImageView;
class QtDevicesListView;
class QtSettingsView;

/// The dashboard as it stands in the main window, with its two popovers. Main thread only.
class QtDashboardView : public ColoredView, public DashboardView {
    Q_OBJECT

public:
    QtDashboardView(Alerts& alerts, SystemLog& log, MainQueue& mainQueue, QWidget* parent = nullptr);
    ~QtDashboardView() override;

    /// The list that its controller works; it exists from the start, its popover from the first opening on.
    QtDevicesListView& devicesListView() { return *m_devicesListView; }

    void setHidden(Pane pane, bool hidden) override;
    void setDeviceStatus(const std::string& text) override;
    void setTouchState(TouchState state, const std::string& sender) override;

    /// Why touches that arrive come to nothing, in one sentence, which is shown instead of their state; "" when they do not.
    void setTouchObstacle(const std::string& sentence);
    void setCastButtonImage(const std::string& imageName) override;
    void setFileUploadViewImage(const std::string& imageName) override;
    void setUploadArrowImage(const std::string& imageName) override;
    DragDropView& fileUploadView() override { return m_fileUploadView; }
    ITSwitch& wirelessTouchSwitch() override { return m_wirelessTouchSwitch; }
    void presentDevicesList(DevicesListViewController& controller) override;
    void presentSettings(RelaySettingsViewController& controller) override;
    void setFilesWaiting(std::size_t count, const std::string& firstName) override;
    void showUpload(const std::string& fileName, std::weak_ptr<UploadUnderWay> upload) override;

protected:
    void resizeEvent(QResizeEvent* event) override;

Q_SIGNALS:
    void devicesListIconClicked();
    void settingsIconClicked();
    void connectButtonClicked();
    void castButtonClicked();
    void uploadFileAction();

private:
    void style();
    void setFonts();
    void fitMessage();
    void connectControls();
    static bool closeIfOpen(Popover* popover);
    void keepPlaceOfHdmiPane(bool isKept);
    void placeTouchState();
    void showCastState(const std::string& imageName);
    void changeDropArea(ImageView& image, const std::string& imageName);
    QWidget& paneView(Pane pane) const;
    static QString touchText(TouchState state, const QString& sender);
    void showTouchText();

    std::unique_ptr<Ui::DashboardScene> m_scene;
    TouchState m_touchState = TouchState::notExpected;
    QString m_touchSender;
    QString m_emptyStateText; ///< Of the scene, once it has been replaced.
    QString m_touchObstacle;
    ITSwitch m_wirelessTouchSwitch;
    DragDropView m_fileUploadView;
    QtDevicesListView* m_devicesListView = nullptr;
    QtSettingsView* m_settingsView = nullptr;
    Popover* m_devicesPopover = nullptr;
    Popover* m_settingsPopover = nullptr;
};

} // namespace companion
