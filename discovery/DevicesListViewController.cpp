#include "discovery/DevicesListViewController.h"

#include "discovery/PanelName.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace companion {

namespace {

constexpr std::chrono::seconds resolveTimeout{20};

constexpr auto pickedIcon = "connectedChain";
constexpr auto unpickedIcon = "radioIcon";

bool contains(const std::vector<std::string>& list, const std::string& text)
{
    return std::find(list.begin(), list.end(), text) != list.end();
}

/// The entry at `row`; nothing when the list is shorter or the row is none.
std::optional<std::string> entryAt(const std::vector<std::string>& list, std::int64_t row)
{
    if (row < 0 || row >= static_cast<std::int64_t>(list.size()))
        return std::nullopt;
    return list[static_cast<std::size_t>(row)];
}

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
    for (const auto& service : m_services)
        service->setDelegate(nullptr);
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
    m_browser->searchForServices(serviceType, serviceDomain);
}

std::int64_t DevicesListViewController::numberOfRows() const
{
    return static_cast<std::int64_t>(m_relayDeviceIPs.size());
}

DeviceRow DevicesListViewController::viewForRow(std::int64_t row) const
{
    return {entryAt(m_relayDeviceNames, row), entryAt(m_relayDeviceHex, row)};
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
    const std::optional<std::string> ip = entryAt(m_relayDeviceIPs, m_selectedRow);
    if (!ip)
        return;
    m_selectedRelayDeviceIP = ip;
    m_log.log("Selected device IP : " + *ip);
    m_view.setIconOfCell(m_selectedColumn, m_selectedRow, pickedIcon);

    // A row lacks its name after the removal of another panel of the same name.
    const std::optional<std::string> hex = entryAt(m_relayDeviceHex, m_selectedRow);
    const std::optional<std::string> name = entryAt(m_relayDeviceNames, m_selectedRow);
    if (!hex || !name)
        return;
    if (const auto delegate = m_delegate.lock())
        delegate->didPickCastingDeviceWithIP(*ip, *hex, *name);
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
    m_services.push_back(service);
    service->setDelegate(this);
    service->resolveWithTimeout(resolveTimeout);
}

void DevicesListViewController::netServiceDidResolveAddress(Service& service)
{
    const std::string serviceName = service.name();
    m_log.log("Resolved address for service " + serviceName);
    const std::optional<PanelName> panel = parsePanelName(serviceName);
    if (!panel || !namesSupportedModel(panel->model))
        return;

    if (!contains(m_relayDeviceIPs, panel->ip) && !contains(m_relayDeviceHex, panel->hex)) {
        m_relayDeviceNames.push_back(panel->name);
        m_relayDeviceHex.push_back(panel->hex);
        m_relayDeviceIPs.push_back(panel->ip);
        m_view.reloadData();
    }
    m_log.log("Resolved address for service " + panel->name + " : " + panel->hex);
}

void DevicesListViewController::netServiceBrowserDidRemoveService(
    std::shared_ptr<Service> service, bool /*moreComing*/)
{
    forgetService(*service);
    // Letter case counts when a panel is added and does not when it is removed.
    const std::optional<PanelName> panel = parsePanelName(service->name());
    if (!panel || !namesSupportedModelInAnyCase(panel->model))
        return;
    if (!contains(m_relayDeviceIPs, panel->ip) || !contains(m_relayDeviceHex, panel->hex))
        return;

    std::erase(m_relayDeviceNames, panel->name);
    std::erase(m_relayDeviceIPs, panel->ip);
    std::erase(m_relayDeviceHex, panel->hex);
    m_view.reloadData();
}

void DevicesListViewController::forgetService(const Service& service)
{
    std::erase_if(m_services, [&service](const std::shared_ptr<Service>& held) {
        if (!isSameService(*held, service))
            return false;
        held->setDelegate(nullptr);
        return true;
    });
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
