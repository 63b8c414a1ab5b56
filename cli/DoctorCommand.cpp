#include "cli/DoctorCommand.h"

#include "cli/TouchesCommand.h"

#include <algorithm>
#include <utility>

namespace companion::cli {

namespace {

constexpr std::chrono::seconds timeOfStep{3};
constexpr std::chrono::seconds timeToTouch{15};
constexpr std::size_t mostPanelsAsked = 8;

} // namespace

DoctorCommand::DoctorCommand(const Tools& tools, Request request)
    : m_tools(tools)
    , m_request(std::move(request))
    , m_touchBack(tools.host)
{
}

void DoctorCommand::start(Finished finished)
{
    m_finished = std::move(finished);
    m_tools.httpSession.setObserver([this](const Outcome&) {
        m_tools.search.mainQueue.async([this] {
            --m_unansweredRequests;
            finishOnceAnswered();
        });
    });
    report(versionCheck(m_request.version, m_request.system));
    const MdnsDaemonFacts daemon = m_tools.search.probes.mdnsDaemon(stepTime());
    report(mdnsDaemonCheck(daemon));
    m_reasonForNoSearch = whyNoPanelCanBeFound(daemon);
    if (m_reasonForNoSearch.empty())
        searchForPanels();
    else
        later({}, &DoctorCommand::checkPorts);
}

void DoctorCommand::searchForPanels()
{
    m_isSearching = true;
    m_browse = std::make_unique<PanelBrowse>(m_tools.search.browsers);
    m_browse->start([this](const PanelName& panel) {
        // Other panels are of no interest now.
        if (m_request.choice.isMade() && m_request.choice.includes(panel))
            later({}, &DoctorCommand::finishSearch);
    });
    later(stepTime(), &DoctorCommand::finishSearch);
}

void DoctorCommand::finishSearch()
{
    if (std::exchange(m_isSearching, false))
        checkPorts();
}

void DoctorCommand::checkPorts()
{
    report(panelsCheck(m_browse ? m_browse->panels() : std::vector<PanelName>(),
        m_browse ? m_browse->otherServices() : 0, m_request.choice, m_reasonForNoSearch));
    report(interfaceCheck(m_tools.host.interfaceAddresses, m_tools.host.interfaceNameRule,
        m_request.interfaceName, onlyPanel()));
    const std::vector<std::string> addresses = panelAddresses();
    if (addresses.empty())
        report(noPortCheck());
    else
        for (const PortAnswer& answer : m_tools.search.probes.tcpPorts(addresses, {5000, 5505}, stepTime()))
            report(portCheck(answer));
    checkTouchPort();
}

void DoctorCommand::checkTouchPort()
{
    m_socket = m_tools.sockets.makeSocket(*this, "client udp socket");
    auto error = m_socket->bindToPort(touchPort);
    report(touchPortCheck(
        error, error ? m_tools.search.probes.udpPortHolders(touchPort) : std::vector<PortHolder>()));
    if (m_request.awaitsTouches && !error) {
        error = m_socket->beginReceiving();
        if (!error)
            return awaitTouches();
    }
    m_socket->close();
    if (m_request.awaitsTouches)
        report(noTouchesCheck(*error));
    checkDisplay();
}

void DoctorCommand::awaitTouches()
{
    m_isAwaitingTouches = true;
    m_waitBegan = m_tools.now();
    switchTouchback(/*isOn=*/true);
    m_tools.output.complain("touch the panel now");
    m_tools.search.mainQueue.after(touchTime(), [this] { finishTouches(std::nullopt, ""); });
}

void DoctorCommand::udpSocketDidReceiveData(
    AsyncUdpSocket& /*socket*/, std::string_view /*data*/, const UdpSender& from)
{
    if (m_askedPanel && *m_askedPanel != from.host)
        return;
    finishTouches(
        std::chrono::duration_cast<std::chrono::milliseconds>(m_tools.now() - m_waitBegan), from.host);
}

void DoctorCommand::finishTouches(
    const std::optional<std::chrono::milliseconds>& after, const std::string& sender)
{
    if (!std::exchange(m_isAwaitingTouches, false))
        return;
    m_socket->close();
    switchTouchback(/*isOn=*/false);
    report(touchesCheck(after, sender, touchTime(), m_request.firewallProfiles));
    checkDisplay();
}

Interruption DoctorCommand::interrupt()
{
    if (std::exchange(m_isAwaitingTouches, false)) {
        m_socket->close();
        switchTouchback(/*isOn=*/false);
        m_isComplete = true;
        later(stepTime(), &DoctorCommand::finish);
    }
    return m_unansweredRequests > 0 ? Interruption::endSoon : Interruption::endAtOnce;
}

void DoctorCommand::checkDisplay()
{
    report(displayCheck(m_tools.search.probes.displays(stepTime())));
    m_isComplete = true;
    finishOnceAnswered();
    later(stepTime(), &DoctorCommand::finish);
}

/// The program's end would cut off the request that switches touchback off.
void DoctorCommand::finishOnceAnswered()
{
    if (m_isComplete && m_unansweredRequests == 0)
        finish();
}

void DoctorCommand::report(const Check& check)
{
    m_checks.push_back(check);
    if (!m_request.isJson)
        m_tools.output.printCheck(check.mark, checkLine(check));
}

void DoctorCommand::finish()
{
    if (!m_finished)
        return;
    Json checks = Json::array();
    bool hasFailed = false;
    for (const Check& check : m_checks) {
        checks.push_back(checkJson(check));
        hasFailed |= check.mark == Mark::fail;
    }
    std::exchange(m_finished, nullptr)({hasFailed ? ExitStatus::refused : ExitStatus::done,
        summaryText(m_checks), {{"checks", std::move(checks)}}});
}

void DoctorCommand::later(std::chrono::milliseconds delay, void (DoctorCommand::*step)())
{
    m_tools.search.mainQueue.after(delay, [this, step] { (this->*step)(); });
}

std::chrono::milliseconds DoctorCommand::stepTime() const
{
    return m_request.timeout.value_or(timeOfStep);
}

std::chrono::milliseconds DoctorCommand::touchTime() const
{
    return m_request.timeout.value_or(timeToTouch);
}

std::vector<std::string> DoctorCommand::panelAddresses() const
{
    if (m_request.choice.address)
        return {*m_request.choice.address};
    std::vector<std::string> addresses;
    for (const PanelName& panel : m_browse ? m_browse->panels() : std::vector<PanelName>()) {
        if (m_request.choice.includes(panel) && addresses.size() < mostPanelsAsked)
            addresses.push_back(panel.ip);
    }
    return addresses;
}

std::optional<std::string> DoctorCommand::onlyPanel() const
{
    const std::vector<std::string> addresses = panelAddresses();
    return addresses.size() == 1 ? std::optional(addresses.front()) : std::nullopt;
}

/// A panel sends no touches to a computer that has not asked for them. Off is for the one that was asked, whatever panels
/// have come and gone meanwhile.
void DoctorCommand::switchTouchback(bool isOn)
{
    if (isOn)
        m_askedPanel = onlyPanel();
    if (!m_askedPanel)
        return;
    const int before = m_tools.httpSession.sentRequests();
    m_touchBack.enableHDMITouchback(isOn, /*fromHDMI=*/true, m_askedPanel);
    m_unansweredRequests += m_tools.httpSession.sentRequests() - before;
}

} // namespace companion::cli
