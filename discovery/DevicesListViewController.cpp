#include "discovery/DevicesListViewController.h"

#include <utility>

namespace companion {

namespace {

constexpr auto pickedIcon = "connectedChain";
constexpr auto unpickedIcon = "radioIcon";

} // namespace

DevicesListViewController::DevicesListViewController(
    DevicesListView& view, ServiceBrowserFactory& browsers, SystemLog& log)
    : m_view(view)
    , m_browsers(browsers)
    , m_log(log)
{
}

DevicesListViewController::~DevicesListViewController()
{
    if (m_browser)
        m_browser->setDelegate(nullptr);
}

void DevicesListViewController::setDelegate(std::weak_ptr<DevicesListViewControllerDelegate> delegate)
{
    m_delegate = std::move(delegate);
}

void DevicesListViewController::viewDidLoad()
{
    m_title = "Homepage";
    m_selectedColumn = -1;
    m_selectedRow = -1;
    m_view.reloadData();
    setupUI();
    startDiscovery();
}

void DevicesListViewController::setupUI()
{
    m_view.setDisconnectButtonHeight(0);
}

void DevicesListViewController::startDiscovery()
{
    m_browser = m_browsers.makeServiceBrowser();
    m_browser->setDelegate(this);
    m_browser->searchForServices(PanelList::serviceType, PanelList::serviceDomain);
}

std::int64_t DevicesListViewController::numberOfRows() const
{
    return static_cast<std::int64_t>(m_list.panels().size());
}

DeviceRow DevicesListViewController::viewForRow(std::int64_t row) const
{
    const PanelName* panel = panelAt(row);
    return {nameAt(row), panel ? std::optional(panel->hex) : std::nullopt};
}

std::optional<std::string> DevicesListViewController::addressForRow(std::int64_t row) const
{
    const PanelName* panel = panelAt(row);
    return panel ? std::optional(panel->ip) : std::nullopt;
}

void DevicesListViewController::deviceClicked()
{
    const std::int64_t clickedRow = m_view.clickedRow();
    if (m_selectedRow == clickedRow)
        return;
    if (m_selectedRow != -1)
        m_view.setIconOfCell(0, m_selectedRow, unpickedIcon);
    m_selectedRow = clickedRow;
    m_selectedColumn = m_view.clickedColumn();

    // Below the rows there is no panel: the old one stays paired, but no row shows it any more.
    const PanelName* panel = panelAt(m_selectedRow);
    if (!panel)
        return;
    m_selectedRelayDeviceIP = panel->ip;
    m_log.log("Selected device IP : " + panel->ip);
    m_view.setIconOfCell(m_selectedColumn, m_selectedRow, pickedIcon);

    // A row lacks its name after the removal of another panel of the same name.
    const std::optional<std::string> name = nameAt(m_selectedRow);
    if (!name)
        return;
    // Copies: the delegate may let the list change.
    const std::string ip = panel->ip;
    const std::string hex = panel->hex;
    if (const auto delegate = m_delegate.lock())
        delegate->didPickCastingDeviceWithIP(ip, hex, *name);
    m_view.setDisconnectButtonHeight(shownDisconnectButtonHeight);
}

void DevicesListViewController::disconnectDevice()
{
    m_selectedRelayDeviceIP.reset();
    m_view.setDisconnectButtonHeight(0);
    m_view.setIconOfCell(0, m_selectedRow, unpickedIcon);
    m_selectedColumn = -1;
    m_selectedRow = -1;
    if (const auto delegate = m_delegate.lock())
        delegate->deviceDisconnecetd();
}

void DevicesListViewController::netServiceBrowserDidFindService(
    std::shared_ptr<Service> service, bool /*moreComing*/)
{
    m_list.addService(service, *this);
}

void DevicesListViewController::netServiceDidResolveAddress(Service& service)
{
    m_log.log("Resolved address for service " + service.name());
    const auto resolved = m_list.acceptService(service);
    if (!resolved)
        return;
    if (resolved->isNew)
        m_view.reloadData();
    m_log.log("Resolved address for service " + resolved->panel.name + " : " + resolved->panel.hex);
}

void DevicesListViewController::netServiceBrowserDidRemoveService(
    std::shared_ptr<Service> service, bool /*moreComing*/)
{
    if (m_list.removeService(*service))
        m_view.reloadData();
}

std::vector<std::string> DevicesListViewController::relayDeviceIPs() const
{
    std::vector<std::string> ips;
    for (const PanelName& panel : m_list.panels())
        ips.push_back(panel.ip);
    return ips;
}

std::vector<std::string> DevicesListViewController::relayDeviceHex() const
{
    std::vector<std::string> hex;
    for (const PanelName& panel : m_list.panels())
        hex.push_back(panel.hex);
    return hex;
}

const PanelName* DevicesListViewController::panelAt(std::int64_t row) const
{
    const auto& panels = m_list.panels();
    const bool isRow = row >= 0 && row < static_cast<std::int64_t>(panels.size());
    return isRow ? &panels[static_cast<std::size_t>(row)] : nullptr;
}

std::optional<std::string> DevicesListViewController::nameAt(std::int64_t row) const
{
    const auto& names = m_list.names();
    const bool isRow = row >= 0 && row < static_cast<std::int64_t>(names.size());
    return isRow ? std::optional(names[static_cast<std::size_t>(row)]) : std::nullopt;
}

bool DevicesListViewController::addressesComplete(
    const std::vector<std::string>& /*addresses*/, const std::string& /*serviceType*/) const
{
    return true;
}

void DevicesListViewController::handleError(int errorNumber, const Service& service)
{
    m_log.log("An error occurred with service " + service.name() + "." + service.type() + "."
        + service.domain() + ", error code = " + std::to_string(errorNumber));
}

} // namespace companion
