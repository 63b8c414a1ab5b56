// What one more panel costs the list: 1,000 panels come one after the other, with a turn of the event loop (and the
// painting that is due in it) after every panel, after every 16, and after all of them.
//
//     QT_QPA_PLATFORM=offscreen bench_list_growth [PANELS [ROUNDS]]
#include "discovery/DevicesListViewController.h"
#include "platform/testing/FakeServiceBrowser.h"
#include "ui/QtDevicesListView.h"
#include "ui/Theme.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <QAbstractItemView>
#include <QApplication>
#include <string>
#include <vector>

using namespace companion;
using SteadyClock = std::chrono::steady_clock;

namespace {

class QuietLog : public SystemLog {
public:
    void log(std::string_view) override { }
};

std::string panelName(int number)
{
    char name[64];
    std::snprintf(name, sizeof name, "Meridian 65|Room %d|0A%06X", number, number + 1);
    return name;
}

/// Microseconds a panel.
double grow(int panels, int panelsATurn)
{
    QtDevicesListView view;
    testing::Transcript transcript;
    testing::FakeServiceBrowserFactory browsers(transcript);
    QuietLog log;
    DevicesListViewController controller(view, browsers, log);
    view.setController(&controller);
    controller.viewDidLoad();
    view.show();
    QApplication::processEvents();

    const auto start = SteadyClock::now();
    for (int i = 0; i < panels; ++i) {
        browsers.findAndResolve(panelName(i));
        if (i % panelsATurn == 0)
            QApplication::processEvents();
    }
    while (view.findChild<QAbstractItemView*>()->model()->rowCount() < panels)
        QApplication::processEvents();
    const double spent = std::chrono::duration<double, std::micro>(SteadyClock::now() - start).count();
    view.setController(nullptr);
    return spent / panels;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    Theme::apply(application);
    const int panels = argc > 1 ? std::atoi(argv[1]) : 1000;
    const int rounds = argc > 2 ? std::atoi(argv[2]) : 5;
    for (const int panelsATurn : {1, 16, panels}) {
        std::vector<double> costs;
        for (int round = 0; round < rounds; ++round)
            costs.push_back(grow(panels, panelsATurn));
        std::printf("%4d panels a turn: %6.1f us a panel\n", panelsATurn, median(costs));
    }
}
