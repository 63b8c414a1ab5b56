#pragma once

#include "discovery/DevicesListView.h"
#include "discovery/PanelList.h"
#include "platform/Log.h"
#include "platform/ServiceBrowser.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace companion {

/// Hears of the user's choice. Main thread.
class DevicesListViewControllerDelegate {
public:
    virtual ~DevicesListViewControllerDelegate() = default;

    /// didPickCastingDeviceWithIP:hex:andName:
    /// A row other than the picked one was clicked. `hex` is the address as announced, at least eight characters.
    virtual void didPickCastingDeviceWithIP(
        const std::string& ip, const std::string& hex, const std::string& name) = 0;

    /// deviceDisconnecetd
    virtual void deviceDisconnecetd() = 0;
};

/// The labels of one row; an absent text leaves its label empty.
struct DeviceRow {
    std::optional<std::string> deviceNameLabel;
    std::optional<std::string> deviceIPLabel; ///< The address as announced, in hexadecimal.

    bool operator==(const DeviceRow&) const = default;
};

/// Finds panels with Bonjour and lets the user pick one of them. Main thread only.
///
/// Discovery starts when the view is loaded and goes on until this object is destroyed, whether or not the list is
/// shown. Nothing that is announced on the network can do more than be ignored.
class DevicesListViewController : public ServiceBrowserDelegate, public ServiceDelegate {
public:
    static constexpr double rowHeight = 60; ///< Points.
    static constexpr double shownDisconnectButtonHeight = 48;

    /// All of them must outlive this object.
    DevicesListViewController(DevicesListView& view, ServiceBrowserFactory& browsers, SystemLog& log);
    ~DevicesListViewController() override;
    DevicesListViewController(const DevicesListViewController&) = delete;
    DevicesListViewController& operator=(const DevicesListViewController&) = delete;

    /// The delegate may go at any time; nobody is told then.
    void setDelegate(std::weak_ptr<DevicesListViewControllerDelegate> delegate);

    /// viewDidLoad
    /// Called once, when the list is opened for the first time.
    void viewDidLoad();

    const std::string& title() const { return m_title; }

    /// numberOfRowsInTableView:
    std::int64_t numberOfRows() const;

    /// tableView:viewForTableColumn:row:
    /// A text that is missing for the row is absent.
    DeviceRow viewForRow(std::int64_t row) const;

    /// The dotted address of a row's panel.
    std::optional<std::string> addressForRow(std::int64_t row) const;

    /// deviceClicked:
    /// A click in the table, at the view's clicked row and column.
    void deviceClicked();

    /// disconnectDevice:
    void disconnectDevice();

    void netServiceBrowserDidFindService(std::shared_ptr<Service> service, bool moreComing) override;
    void netServiceBrowserDidRemoveService(std::shared_ptr<Service> service, bool moreComing) override;
    void netServiceDidResolveAddress(Service& service) override;

    /// addressesComplete:forServiceType:
    /// Always true.
    bool addressesComplete(const std::vector<std::string>& addresses, const std::string& serviceType) const;

    /// handleError:withService:
    /// One line to the log.
    void handleError(int errorNumber, const Service& service);

    std::vector<std::shared_ptr<Service>> services() const { return m_list.services(); }
    const std::vector<std::string>& relayDeviceNames() const { return m_list.names(); }
    std::vector<std::string> relayDeviceIPs() const;
    std::vector<std::string> relayDeviceHex() const;

    /// -1 when no row is picked.
    std::int64_t selectedRow() const { return m_selectedRow; }
    std::int64_t selectedColumn() const { return m_selectedColumn; }
    const std::optional<std::string>& selectedRelayDeviceIP() const { return m_selectedRelayDeviceIP; }

private:
    void setupUI();
    void startDiscovery();
    const PanelName* panelAt(std::int64_t row) const;
    std::optional<std::string> nameAt(std::int64_t row) const;

    DevicesListView& m_view;
    ServiceBrowserFactory& m_browsers;
    SystemLog& m_log;
    std::weak_ptr<DevicesListViewControllerDelegate> m_delegate;
    std::string m_title;

    std::unique_ptr<ServiceBrowser> m_browser;
    PanelList m_list;

    std::int64_t m_selectedRow = -1;
    std::int64_t m_selectedColumn = -1;
    std::optional<std::string> m_selectedRelayDeviceIP;
};

} // namespace companion
