#pragma once

#include "dashboard/DashboardViewController.h"
#include "platform/testing/FakeAlerts.h"
#include "platform/testing/FakeApplication.h"
#include "platform/testing/FakeAsyncUdpSocket.h"
#include "platform/testing/FakeClock.h"
#include "platform/testing/FakeFileChooser.h"
#include "platform/testing/FakeFileReader.h"
#include "platform/testing/FakeHttpSession.h"
#include "platform/testing/FakeInterfaceAddresses.h"
#include "platform/testing/FakeLog.h"
#include "platform/testing/FakeMainQueue.h"
#include "platform/testing/FakeMouseEventPoster.h"
#include "platform/testing/FakeScreen.h"
#include "platform/testing/FakeServiceBrowser.h"
#include "ui/QtDashboardView.h"
#include "ui/QtDevicesListView.h"

namespace companion::testing {

/// The real dashboard, its real widgets, and nothing of the outside world: what the screens are tested and shown with.
struct DashboardOnFakes {
    DashboardOnFakes()
    {
        const auto on = [this](auto signal, auto slot) {
            QObject::connect(view, signal, view, [this, slot] { (controller.get()->*slot)(); });
        };
        using Controller = DashboardViewController;
        on(&QtDashboardView::devicesListIconClicked, &Controller::devicesListIconClicked);
        on(&QtDashboardView::settingsIconClicked, &Controller::settingsIconClicked);
        on(&QtDashboardView::connectButtonClicked, &Controller::connectButtonClicked);
        on(&QtDashboardView::castButtonClicked, &Controller::castButtonClicked);
        controller->viewDidLoad();
    }
    ~DashboardOnFakes()
    {
        controller.reset();
        if (!view->parent())
            delete view;
    }
    DashboardOnFakes(const DashboardOnFakes&) = delete;
    DashboardOnFakes& operator=(const DashboardOnFakes&) = delete;

    DashboardDependencies dependencies()
    {
        return {
            .view = *view,
            .alerts = alerts,
            .mainQueue = mainQueue,
            .log = log,
            .panelRequestHost = {httpSession, interfaceAddresses, interfaceNameRule, console},
            .touch = {sockets, clock, pause, screen, poster},
            .upload = {fileChooser, fileReader, application, poster},
            .makeDevicesListController =
                [this] {
                    auto list =
                        std::make_unique<DevicesListViewController>(view->devicesListView(), browsers, log);
                    view->devicesListView().setController(list.get());
                    return list;
                },
            .makeSettingsController = [] { return std::make_unique<RelaySettingsViewController>(); },
        };
    }

    Transcript transcript;
    FakeAlerts alerts{transcript};
    FakeMainQueue mainQueue;
    FakeSystemLog log{transcript};
    FakeConsole console{transcript};
    FakeHttpSession httpSession;
    FakeInterfaceAddresses interfaceAddresses;
    FakeInterfaceNameRule interfaceNameRule;
    FakeAsyncUdpSocketFactory sockets{transcript};
    FakeClock clock;
    FakePause pause{transcript};
    FakeScreen screen;
    FakeMouseEventPoster poster{transcript};
    FakeFileChooser fileChooser{transcript};
    FakeFileReader fileReader{transcript};
    FakeApplication application{transcript};
    FakeServiceBrowserFactory browsers{transcript};
    QtDashboardView* const view =
        new QtDashboardView(alerts, log, mainQueue); ///< A window that it is put into owns it.
    std::shared_ptr<DashboardViewController> controller = DashboardViewController::make(dependencies());
};

} // namespace companion::testing
