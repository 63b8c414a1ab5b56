#include "cli/Panelctl.h"

#include "cli/DiscoverCommand.h"
#include "cli/DoctorCommand.h"
#include "cli/Output.h"
#include "cli/RequestCommands.h"
#include "cli/StdioOutput.h"
#include "cli/SystemProbes.h"
#include "cli/TouchesCommand.h"
#include "cli/UploadCommand.h"
#include "platform/avahi/AvahiServiceBrowser.h"
#include "platform/curl/CurlHttpSession.h"
#include "platform/posix/PosixAsyncUdpSocket.h"
#include "platform/posix/PosixFileReader.h"
#include "platform/posix/PosixInterfaceAddresses.h"
#include "platform/posix/RoutedInterfaceName.h"
#include "platform/posix/SignalDescriptor.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/Version.h"

#include <csignal>
#include <QCoreApplication>
#include <QSocketNotifier>
#include <QSysInfo>
#include <unistd.h>

namespace companion::cli {

namespace {

/// The name and version that go into recordings and the report of `doctor`.
std::string programName()
{
    return "panelctl " + versionText();
}

class Panelctl {
public:
    explicit Panelctl(const Options& options);
    ~Panelctl();
    Panelctl(const Panelctl&) = delete;
    Panelctl& operator=(const Panelctl&) = delete;

    int run();
    bool hasLeftThread() const { return m_hasLeftThread; }

private:
    std::unique_ptr<Command> makeCommand();
    std::unique_ptr<Command> makeTouches();
    std::unique_ptr<Command> makeDoctor();
    PanelChoice choice() const { return {m_options.panelAddress, m_options.panelName}; }
    PanelSearch search() { return {m_browsers, m_probes, m_mainQueue}; }
    PanelRequestTools requestTools() { return {search(), m_observedSession}; }
    PanelRequestOptions requestOptions() const { return {choice(), m_options.timeout}; }
    PanelRequestHost host() { return {m_observedSession, m_interfaceAddresses, m_interfaceName, m_log}; }
    void takeSignals();
    int endStatus(int status) const;

    const Options m_options;
    StdioOutput m_output;
    VerboseLog m_log;
    QtMainQueue m_mainQueue;

    PosixInterfaceAddresses m_interfaceAddresses;
    RoutedInterfaceName m_interfaceName;
    bool m_hasLeftThread = false;
    const Probes m_probes{lookAtMdnsDaemon, [](std::uint16_t port) { return udpPortHolders(port); },
        connectToPorts, [this](auto time) { return lookAtDisplays(time, m_hasLeftThread); }};
    AvahiServiceBrowserFactory m_browsers{m_mainQueue, m_log};
    PosixAsyncUdpSocketFactory m_sockets{m_mainQueue, m_log};
    PosixFileReader m_fileReader;
    std::unique_ptr<CurlHttpSession> m_httpSession;
    ObservedHttpSession m_observedSession;

    std::unique_ptr<Command> m_command;
    std::optional<int> m_statusOfSignal; ///< While the command tidies up.
    SignalDescriptor m_signals;
    QSocketNotifier m_signalNotifier;
};

Panelctl::Panelctl(const Options& options)
    : m_options(options)
    , m_log(m_output, options.isVerbose)
    , m_interfaceName(options.interfaceName)
    , m_httpSession(std::make_unique<CurlHttpSession>(m_log))
    , m_observedSession(*m_httpSession, options.timeout)
    , m_command(makeCommand())
    , m_signalNotifier(m_signals.fd(), QSocketNotifier::Read)
{
    QObject::connect(&m_signalNotifier, &QSocketNotifier::activated, qApp, [this] { takeSignals(); });
}

/// Requests and jobs go first, since they know the command.
Panelctl::~Panelctl()
{
    m_httpSession.reset();
    m_mainQueue.dropAllJobs();
}

int Panelctl::run()
{
    int status = 0;
    m_mainQueue.async([this, &status] {
        m_command->start([this, &status](const Result& result) {
            if (m_statusOfSignal) {
                QCoreApplication::exit(*m_statusOfSignal);
                return;
            }
            status = static_cast<int>(result.status);
            report(result, nameText(m_options.command), m_options.isJson, m_output);
            QCoreApplication::quit();
        });
    });
    const int signal = QCoreApplication::exec();
    return endStatus(signal != 0 ? signal : status);
}

/// Results that nobody could read are no success.
int Panelctl::endStatus(int status) const
{
    const bool isLost = status == static_cast<int>(ExitStatus::done) && m_output.hasFailed();
    return isLost ? static_cast<int>(ExitStatus::badUsage) : status;
}

/// A command that has no end of its own ends as the signal would have ended it, and so does one that needs a moment for
/// that when a second signal comes.
void Panelctl::takeSignals()
{
    while (const auto signal = m_signals.take()) {
        const int status = 128 + *signal;
        const auto interruption = m_statusOfSignal ? Interruption::endAtOnce : m_command->interrupt();
        if (interruption == Interruption::endAtOnce)
            QCoreApplication::exit(status);
        else if (interruption == Interruption::endSoon)
            m_statusOfSignal = status;
    }
}

std::unique_ptr<Command> Panelctl::makeCommand()
{
    switch (m_options.command) {
    case CommandName::discover:
        return std::make_unique<DiscoverCommand>(search(), m_output,
            DiscoverCommand::Request{choice(),
                std::min(m_options.searchTime, m_options.timeout.value_or(m_options.searchTime)),
                m_options.isJson});
    case CommandName::ping:
        return std::make_unique<PingCommand>(requestTools(), requestOptions(), host());
    case CommandName::touchback:
        return std::make_unique<TouchbackCommand>(requestTools(), requestOptions(), host(),
            TouchbackCommand::Switch{m_options.switchesOn, m_options.isHDMI});
    case CommandName::trigger:
        return std::make_unique<TriggerCommand>(requestTools(), requestOptions(), host());
    case CommandName::upload:
        return std::make_unique<UploadCommand>(requestTools(), requestOptions(),
            UploadCommand::Tools{m_fileReader, m_log, m_output, whyNotReadable}, m_options.file);
    case CommandName::touches:
        return makeTouches();
    case CommandName::doctor:
        break;
    }
    return makeDoctor();
}

std::unique_ptr<Command> Panelctl::makeTouches()
{
    return std::make_unique<TouchesCommand>(TouchesCommand::Tools{search(), m_sockets, m_output},
        TouchesCommand::Request{choice(), m_options.timeout, m_options.recording,
            programName() + ", " + currentTimeText(), m_options.mostRecordedBytes, m_options.isJson});
}

std::unique_ptr<Command> Panelctl::makeDoctor()
{
    return std::make_unique<DoctorCommand>(DoctorCommand::Tools{search(), m_sockets, m_observedSession,
                                               host(), m_output, std::chrono::steady_clock::now},
        DoctorCommand::Request{choice(), m_options.interfaceName, m_options.timeout, m_options.awaitsTouches,
            m_options.isJson, firewallProfiles(), programName(),
            QSysInfo::prettyProductName().toStdString() + ", Linux "
                + QSysInfo::kernelVersion().toStdString()});
}

} // namespace

int runCommand(const Options& options)
{
    Panelctl panelctl(options);
    const int status = panelctl.run();
    if (panelctl.hasLeftThread())
        _exit(status);
    return status;
}

} // namespace companion::cli
