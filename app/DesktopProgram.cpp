#include "app/DesktopProgram.h"

#include "app/FilesGiven.h"
#include "app/HttpModule.h"
#include "app/InputCandidates.h"
#include "app/ListedPanels.h"
#include "app/SplashScreenViewController.h"
#include "app/StopReason.h"
#include "dashboard/DashboardViewController.h"
#include "platform/avahi/AvahiServiceBrowser.h"
#include "platform/FatalError.h"
#include "platform/posix/FatalErrorLog.h"
#include "platform/posix/PosixAsyncUdpSocket.h"
#include "platform/posix/PosixFileReader.h"
#include "platform/posix/PosixInterfaceAddresses.h"
#include "platform/posix/RoutedInterfaceName.h"
#include "platform/posix/StdoutConsole.h"
#include "platform/posix/SyslogLog.h"
#include "platform/posix/SystemClock.h"
#include "platform/qt/QtAlerts.h"
#include "platform/qt/QtApplicationActivation.h"
#include "platform/qt/QtFileChooser.h"
#include "platform/qt/QtScreen.h"
#include "platform/wayland/ActivationToken.h"
#include "ui/QtDashboardView.h"
#include "ui/QtDevicesListView.h"
#include "ui/QtSplashView.h"
#include "ui/Theme.h"

#include <cstdio>
#include <QApplication>
#include <QPointer>
#include <utility>

namespace companion {

namespace {

void logTheFatalError(std::string_view what)
{
    logFatalError(what);
}

std::string joined(const std::vector<std::string>& names)
{
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : ", ") + name;
    return text;
}

} // namespace

/// The dashboard and the adapters behind it. Made when the splash screen ends, so that the first paint waits for none
/// of it.
class DesktopProgram::Backend {
public:
    /// `restart` is called at the end of a fatal error, on the thread that fails.
    Backend(const Options& options, WidgetMainQueue& mainQueue, MainWindow& window,
        std::function<void(std::string_view)> restart);
    ~Backend();

    void showDashboard();
    void showStopReason(const std::string& fatalError);
    void sendFiles(std::vector<std::string> urls);
    void programEnds() { m_alerts.programEnds(); }

private:
    void logUnknownScreen();
    void tellTouchStatus(const std::string& sentence);
    void askForAttention();
    void connectView();
    DashboardDependencies dashboardDependencies(QtDashboardView& view);

    const Options& m_options;
    WidgetMainQueue& m_mainQueue;
    MainWindow& m_window;

    SyslogLog m_log{"panel-companion"};
    StdoutConsole m_console;
    SystemClock m_clock;
    ThreadPause m_pause;
    QtAlerts m_alerts{m_mainQueue, m_window, [this] { askForAttention(); }};
    std::unique_ptr<ActivationToken> m_activationToken; ///< Of the last alert.
    QtScreen m_screen;
    InputInjection m_poster;

    PosixInterfaceAddresses m_interfaceAddresses;
    RoutedInterfaceName m_interfaceName;
    AvahiServiceBrowserFactory m_announcedPanels{m_mainQueue, m_log};
    ListedPanels m_panels;
    PosixAsyncUdpSocketFactory m_sockets;
    PosixFileReader m_fileReader;
    QtFileChooser m_fileChooser{m_mainQueue, m_alerts, m_window};
    QtApplicationActivation m_application{m_window};
    std::unique_ptr<HttpSession> m_httpSession = httpSessionOfModule(m_log);
    QPointer<QtDashboardView> m_view;
    std::shared_ptr<DashboardViewController> m_dashboard;
};

DesktopProgram::Backend::Backend(const Options& options, WidgetMainQueue& mainQueue, MainWindow& window,
    std::function<void(std::string_view)> restart)
    : m_options(options)
    , m_mainQueue(mainQueue)
    , m_window(window)
    , m_screen(options.screenName)
    , m_poster(isWaylandSession(),
          inputCandidates(m_screen, m_log, options.remembersScreenAccess,
              [this](const std::string& sentence) { tellTouchStatus(sentence); }),
          m_log, [this](const std::string& sentence) { tellTouchStatus(sentence); })
    , m_interfaceName(options.interfaceName)
    , m_panels(options.panels, m_announcedPanels, m_mainQueue)
    , m_sockets(m_mainQueue, m_log, [this] { m_poster.flush(); })
{
    logUnknownScreen();
    setFatalErrorHandler([this, restart = std::move(restart)](std::string_view what) {
        logTheFatalError(what);
        m_poster.releaseHeldButton();
        restart(what);
    });
    // The "UP" of a finger that is down has to wait until an alert is closed, and X accepts no click of the real mouse
    // while the button is held.
    m_mainQueue.setWhenBlocked([this] { m_poster.touchesEnd(); });
}

/// Requests go first: a completion may hold the last reference to the dashboard, which needs the rest to be there.
DesktopProgram::Backend::~Backend()
{
    m_httpSession.reset();
    m_dashboard.reset();
    delete m_view; // the window, whose it is, outlives what it uses
    m_mainQueue.dropAllJobs();
    m_mainQueue.setWhenBlocked({});
    setFatalErrorHandler(logTheFatalError);
}

void DesktopProgram::Backend::logUnknownScreen()
{
    if (!m_screen.isFound())
        m_log.log("There is no screen \"" + *m_options.screenName + "\" among " + joined(QtScreen::names())
            + "; until it is there touches go to the primary one");
}

void DesktopProgram::Backend::tellTouchStatus(const std::string& sentence)
{
    m_log.log(sentence.empty() ? "The desktop lets touches control the pointer" : sentence);
    if (m_view)
        m_view->setTouchObstacle(sentence);
}

void DesktopProgram::Backend::askForAttention()
{
    if (!QGuiApplication::platformName().startsWith(QLatin1String("wayland")))
        return;
    m_activationToken = std::make_unique<ActivationToken>(
        [this](const std::string& token) { bringToFront(m_window, token); });
}

void DesktopProgram::Backend::showDashboard()
{
    m_view = new QtDashboardView(m_alerts, m_log, m_mainQueue);
    m_dashboard = DashboardViewController::make(dashboardDependencies(*m_view));
    m_dashboard->viewDidLoad();
    connectView();
    m_window.setContentView(m_view);
}

void DesktopProgram::Backend::showStopReason(const std::string& fatalError)
{
    m_mainQueue.async(
        [this, fatalError] { m_alerts.runModal("Panel Companion had to stop", stopReason(fatalError)); });
}

void DesktopProgram::Backend::sendFiles(std::vector<std::string> urls)
{
    m_mainQueue.async([this, urls = std::move(urls)] { m_dashboard->sendFiles(urls); });
}

void DesktopProgram::Backend::connectView()
{
    using View = QtDashboardView;
    const View* view = m_view;
    DashboardViewController& dashboard = *m_dashboard;
    QObject::connect(view, &View::devicesListIconClicked, view, [&] { dashboard.devicesListIconClicked(); });
    QObject::connect(view, &View::connectButtonClicked, view, [&] { dashboard.connectButtonClicked(); });
    QObject::connect(view, &View::settingsIconClicked, view, [&] { dashboard.settingsIconClicked(); });
    QObject::connect(view, &View::castButtonClicked, view, [&] { dashboard.castButtonClicked(); });
    QObject::connect(view, &View::uploadFileAction, view, [&] { dashboard.uploadFileAction(); });
}

DashboardDependencies DesktopProgram::Backend::dashboardDependencies(QtDashboardView& view)
{
    return {
        .view = view,
        .alerts = m_alerts,
        .mainQueue = m_mainQueue,
        .log = m_log,
        .panelRequestHost = {*m_httpSession, m_interfaceAddresses, m_interfaceName, m_console},
        .touch = {m_sockets, m_clock, m_pause, m_screen, m_poster, m_options.touchFrom},
        .upload = {m_fileChooser, m_fileReader, m_application, m_poster},
        .makeDevicesListController =
            [this, &view] {
                auto controller =
                    std::make_unique<DevicesListViewController>(view.devicesListView(), m_panels, m_log);
                view.devicesListView().setController(controller.get());
                return controller;
            },
        .makeSettingsController = [] { return std::make_unique<RelaySettingsViewController>(); },
    };
}

DesktopProgram::DesktopProgram(const Options& options, char* const* arguments)
    : m_options(options)
    , m_restart(arguments)
    , m_signalNotifier(m_signals.fd(), QSocketNotifier::Read)
    , m_instance([this](const auto& urls, const auto& token) { serve(urls, token); })
    , m_filesToSend(
          m_restart.reason() ? std::vector<std::string>{} : urlsOfFiles(m_options.files)) // were taken before
{
    if (m_options.hasNoRestart)
        m_restart.cancel();
    QObject::connect(&m_signalNotifier, &QSocketNotifier::activated, qApp, [this] { endOnSignal(); });
}

DesktopProgram::~DesktopProgram()
{
    m_restart.cancel();
}

std::optional<int> DesktopProgram::leaveToRunningProgram()
{
    if (m_options.isNewInstance)
        return std::nullopt;
    if (m_restart.reason()) { // what runs already is the program that failed, for a moment
        m_instance.claimAfterPredecessor();
        return std::nullopt;
    }
    switch (m_instance.claimOrHandOver(m_filesToSend)) {
    case SingleInstance::Claim::isTheOne:
        return std::nullopt;
    case SingleInstance::Claim::handedOver:
        if (m_options.hasOptions)
            std::fputs("panel-companion: it runs already, with the options that it was started with "
                       "(--new-instance starts another one)\n",
                stderr);
        return 0;
    case SingleInstance::Claim::unanswered:
        std::fputs(
            "panel-companion: it runs already, but does not answer (--new-instance starts another one)\n",
            stderr);
        return 1;
    }
    return std::nullopt;
}

/// What the desktop or a further start asks for.
void DesktopProgram::serve(const std::vector<std::string>& urls, const std::string& activationToken)
{
    m_filesToSend.insert(m_filesToSend.end(), urls.begin(), urls.end());
    bringToFront(m_window, activationToken);
    if (!m_window.isActiveWindow())
        QApplication::alert(&m_window); // where programs may not come to the front by themselves
    if (m_backend)
        sendFiles();
}

void DesktopProgram::sendFiles()
{
    if (!m_filesToSend.empty())
        m_backend->sendFiles(std::exchange(m_filesToSend, {}));
}

void DesktopProgram::start()
{
    m_window.setContentView(new QtSplashView);
    std::make_shared<SplashScreenViewController>(m_mainQueue, [this] { showDashboard(); })->viewDidLoad();
    m_window.show();
}

void DesktopProgram::showDashboard()
{
    Theme::applyBaseFont();
    m_backend = std::make_unique<Backend>(
        m_options, m_mainQueue, m_window, [this](std::string_view what) { restartAfter(what); });
    m_backend->showDashboard();
    m_preferences.emplace();
    if (m_restart.reason())
        m_backend->showStopReason(*m_restart.reason());
    sendFiles();
}

/// A signal may have asked for the end while the main thread was busy with what failed.
void DesktopProgram::restartAfter(std::string_view fatalError)
{
    if (!m_signals.isWaiting())
        m_restart.start(fatalError);
}

void DesktopProgram::endOnSignal()
{
    m_restart.cancel();
    while (m_signals.take()) {
        if (m_backend)
            m_backend->programEnds();
        QApplication::quit();
    }
}

} // namespace companion
