#include "app/Composition.h"

#include "app/ListedPanels.h"
#include "app/SplashScreenViewController.h"
#include "app/UnavailableMouseEventPoster.h"
#include "dashboard/DashboardViewController.h"
#include "platform/avahi/AvahiServiceBrowser.h"
#include "platform/curl/CurlHttpSession.h"
#include "platform/FatalError.h"
#include "platform/posix/FatalErrorLog.h"
#include "platform/posix/PosixAsyncUdpSocketFactory.h"
#include "platform/posix/PosixFileReader.h"
#include "platform/posix/PosixInterfaceAddresses.h"
#include "platform/posix/RoutedInterfaceName.h"
#include "platform/posix/SignalDescriptor.h"
#include "platform/posix/StdoutConsole.h"
#include "platform/posix/SyslogLog.h"
#include "platform/posix/SystemClock.h"
#include "platform/qt/QtAlerts.h"
#include "platform/qt/QtApplicationActivation.h"
#include "platform/qt/QtFileChooser.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/QtScreen.h"
#include "platform/qt/WidgetTracking.h"
#include "platform/x11/FlushingPause.h"
#include "platform/x11/XTestMouseEventPoster.h"
#include "views/qt/MainWindow.h"
#include "views/qt/QtDashboardView.h"
#include "views/qt/QtDevicesListView.h"
#include "views/qt/QtSplashView.h"

#include <chrono>
#include <QApplication>
#include <QSocketNotifier>
#include <QStyleHints>

namespace companion {

namespace {

/// When X programs take two presses for a double click, as far as this desktop tells.
ClickRules desktopClickRules()
{
    ClickRules rules;
    rules.interval = std::chrono::milliseconds(QGuiApplication::styleHints()->mouseDoubleClickInterval());
    rules.distance = QGuiApplication::styleHints()->mouseDoubleClickDistance();
    return rules;
}

} // namespace

class Composition::Parts {
public:
    explicit Parts(const Options& options);
    ~Parts();

    void start();

private:
    void openPoster();
    void showDashboard();
    DashboardDependencies dashboardDependencies(QtDashboardView& view);
    void endOnSignal();

    const Options m_options;
    SyslogLog m_log{"panel-companion"};
    StdoutConsole m_console;
    SystemClock m_clock;
    ThreadPause m_threadPause;
    QtMainQueue m_mainQueue{isTrackingWidgets};
    QtAlerts m_alerts{m_mainQueue};
    QtScreen m_screen;

    std::unique_ptr<XTestMouseEventPoster> m_xtestPoster;
    std::unique_ptr<FlushingPause> m_flushingPause;
    std::unique_ptr<UnavailableMouseEventPoster> m_unavailablePoster;

    PosixInterfaceAddresses m_interfaceAddresses;
    RoutedInterfaceName m_interfaceName;
    AvahiServiceBrowserFactory m_announcedPanels{m_mainQueue, m_log};
    ListedPanels m_panels;
    PosixAsyncUdpSocketFactory m_sockets;
    PosixFileReader m_fileReader;
    QtFileChooser m_fileChooser{m_mainQueue, m_log};

    MainWindow m_window;
    QtApplicationActivation m_application{m_window};
    std::unique_ptr<CurlHttpSession> m_httpSession = std::make_unique<CurlHttpSession>(m_log);
    std::shared_ptr<DashboardViewController> m_dashboard;

    SignalDescriptor m_signals;
    QSocketNotifier m_signalNotifier;
};

Composition::Parts::Parts(const Options& options)
    : m_options(options)
    , m_screen(options.screenName)
    , m_interfaceName(options.interfaceName)
    , m_panels(options.panels, m_announcedPanels, m_mainQueue)
    , m_sockets(m_mainQueue, m_log,
          [this] {
              if (m_xtestPoster)
                  m_xtestPoster->flush();
          })
    , m_signalNotifier(m_signals.fd(), QSocketNotifier::Read)
{
    openPoster();
    setLastWish([this](std::string_view what) {
        if (m_xtestPoster)
            m_xtestPoster->releaseHeldButton();
        logFatalError(what);
    });
    QObject::connect(&m_signalNotifier, &QSocketNotifier::activated, qApp, [this] { endOnSignal(); });
}

/// Requests go first: a completion may hold the last reference to the dashboard, which needs the rest to be there.
Composition::Parts::~Parts()
{
    m_httpSession.reset();
    m_dashboard.reset();
    m_mainQueue.dropAllJobs();
    setLastWish({});
}

void Composition::Parts::openPoster()
{
    std::string whyNot;
    m_xtestPoster = XTestMouseEventPoster::open(
        "", [this] { return m_screen.mapping(); }, whyNot, desktopClickRules());
    if (m_xtestPoster)
        m_flushingPause = std::make_unique<FlushingPause>(m_threadPause, *m_xtestPoster);
    else
        m_unavailablePoster = std::make_unique<UnavailableMouseEventPoster>(m_log, whyNot);
}

void Composition::Parts::start()
{
    m_window.setContentView(new QtSplashView);
    std::make_shared<SplashScreenViewController>(m_mainQueue, [this] { showDashboard(); })->viewDidLoad();
    m_window.show();
}

void Composition::Parts::showDashboard()
{
    auto* view = new QtDashboardView(m_alerts, m_log);
    m_dashboard = DashboardViewController::make(dashboardDependencies(*view));
    m_dashboard->viewDidLoad();

    DashboardViewController& dashboard = *m_dashboard;
    QObject::connect(
        view, &QtDashboardView::devicesListIconClicked, view, [&] { dashboard.devicesListIconClicked(); });
    QObject::connect(
        view, &QtDashboardView::connectButtonClicked, view, [&] { dashboard.connectButtonClicked(); });
    QObject::connect(
        view, &QtDashboardView::settingsIconClicked, view, [&] { dashboard.settingsIconClicked(); });
    QObject::connect(view, &QtDashboardView::castButtonClicked, view, [&] { dashboard.castButtonClicked(); });
    QObject::connect(view, &QtDashboardView::uploadFileAction, view, [&] { dashboard.uploadFileAction(); });
    m_window.setContentView(view);
}

DashboardDependencies Composition::Parts::dashboardDependencies(QtDashboardView& view)
{
    Pause& pause = m_flushingPause ? static_cast<Pause&>(*m_flushingPause) : m_threadPause;
    MouseEventPoster& poster =
        m_xtestPoster ? static_cast<MouseEventPoster&>(*m_xtestPoster) : *m_unavailablePoster;
    return {
        .view = view,
        .alerts = m_alerts,
        .mainQueue = m_mainQueue,
        .log = m_log,
        .panelRequestHost = {*m_httpSession, m_interfaceAddresses, m_interfaceName, m_console},
        .sockets = m_sockets,
        .clock = m_clock,
        .pause = pause,
        .screen = m_screen,
        .mouseEventPoster = poster,
        .upload = {m_fileChooser, m_fileReader, m_application},
        .makeDevicesListController =
            [this, &view] {
                auto controller =
                    std::make_unique<DevicesListViewController>(view.devicesListView(), m_panels, m_log);
                view.devicesListView().setController(controller.get());
                return controller;
            },
        .makeSettingsController = [] { return std::make_unique<RelaySettingsViewController>(); },
        .touchSource = m_options.touchFrom,
    };
}

void Composition::Parts::endOnSignal()
{
    while (m_signals.take())
        QApplication::quit();
}

Composition::Composition(const Options& options)
    : m_parts(std::make_unique<Parts>(options))
{
}

Composition::~Composition() = default;

void Composition::start()
{
    m_parts->start();
}

} // namespace companion
