#pragma once

#include "platform/qt/QtAlerts.h"
#include "platform/qt/WidgetMainQueue.h"
#include "tests/ui/DashboardOnFakes.h"
#include "ui/MainWindow.h"
#include "ui/QtSplashView.h"
#include "ui/Theme.h"

#include <stdexcept>

#include <QAbstractAnimation>
#include <QApplication>
#include <QComboBox>
#include <QListView>
#include <QMessageBox>
#include <QPainter>
#include <QTest>
#include <QTimer>

namespace companion::testing {

/// Works the screens through every state that they have, from the splash screen on.
class ScreenStates {
public:
    /// `visit` is called in each state, when nothing moves any more, with the state's name.
    explicit ScreenStates(std::function<void(const QString& state)> visit)
        : m_visit(std::move(visit))
    {
    }

    MainWindow& window() { return m_window; }

    void run()
    {
        m_window.setContentView(new QtSplashView);
        m_window.show();
        m_window.activateWindow();
        visit("splash");
        m_window.setContentView(m_dashboard.view);
        m_dashboard.alerts.whileShown = [this] { showAlert(); };
        findPanels();
        pair();
        upload();
        cast();
        useCable();
        findMany();
    }

    /// The main window with whatever is open over it.
    QImage picture()
    {
        QPixmap picture = m_window.grab();
        QPainter painter(&picture);
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window != &m_window && window->isVisible())
                drawOver(painter, *window);
        }
        painter.end();
        return picture.toImage();
    }

    /// The layout is done, and nothing moves.
    void comeToRest()
    {
        QTest::mouseMove(&m_window, {1, m_window.height() - 1}); // where it is over nothing
        QTest::qWait(30);                                        // the list is filled at most once a frame
        const auto isStill = [this] {
            const auto animations = m_window.findChildren<QAbstractAnimation*>();
            return std::none_of(animations.begin(), animations.end(),
                [](const auto* one) { return one->state() == QAbstractAnimation::Running; });
        };
        if (!QTest::qWaitFor(isStill))
            throw std::runtime_error("the screen does not come to rest");
    }

private:
    void visit(const char* state)
    {
        comeToRest();
        m_visit(state);
    }

    void findPanels()
    {
        visit("empty");
        press("devicesListIcon");
        visit("list-searching");
        const QString searching = table().accessibleDescription();
        if (!QTest::qWaitFor([&] { return table().accessibleDescription() != searching; }, 8000))
            throw std::runtime_error("the list does not tell that no panel is found");
        visit("list-empty");
        announce("Meridian 65|Room 204|0A00020F");
        announce("Tandem 86|Physics lab|0A000211");
        announce("Halcyon-X|Hall|0A000210");
        visit("list");
    }

    void pair()
    {
        pick(0);
        visit("list-picked");
        press("devicesListIcon"); // a second click closes the list
        visit("paired");
    }

    void upload()
    {
        m_dashboard.view->fileUploadView().draggingEntered();
        visit("dropping");
        m_dashboard.view->fileUploadView().draggingExited();
        auto first = std::make_shared<UploadUnderWay>();
        auto second = std::make_shared<UploadUnderWay>();
        first->percent = 62;
        second->percent = 8;
        m_dashboard.view->showUpload("Field trip.mp4", first);
        m_dashboard.view->showUpload("Timetable.pdf", second);
        visit("uploading");
        first->isGivenUp = second->isGivenUp = true;
        auto* const bars = m_dashboard.view->findChild<QWidget*>("uploadProgressBars");
        if (!QTest::qWaitFor([bars] { return bars->isHidden(); }))
            throw std::runtime_error("the uploads do not go");
    }

    void cast()
    {
        m_isAlertShown = true;
        press("castButtonView");
        m_isAlertShown = false;
        visit("casting");
        m_dashboard.view->setTouchObstacle(
            "No touch: remote interaction was not allowed in the desktop's dialog; "
            "turn touch on again to be asked again");
        visit("casting-no-touch");
        m_dashboard.view->setTouchObstacle("");
        press("castButtonView");
    }

    void useCable()
    {
        press("wirelessTouchSwitch");
        visit("hdmi");
        press("devicesListIcon");
        pick(1);
        press("devicesListIcon");
        visit("hdmi-repicked");
        press("wirelessTouchSwitch");
        press("settingsIcon");
        visit("settings");
        auto* const rate = m_dashboard.view->findChild<QComboBox*>("fpsButton");
        rate->showPopup();
        visit("settings-choice");
        rate->hidePopup();
        press("settingsIcon");
    }

    /// More than the list has the room for, some with names that it has no room for, either.
    void findMany()
    {
        announce("Tandem 86|Teachers' library beside the gymnasium, second floor|0A000212");
        announce("Meridian 65|Music|0A000213");
        announce("Meridian 65|Art|0A000214");
        announce("Halcyon-X|Chemistry|0A000215");
        press("devicesListIcon");
        visit("list-many");
        press("devicesListIcon");
    }

    void announce(const char* name) { m_dashboard.browsers.findAndResolve(name); }

    QListView& table()
    {
        return *m_dashboard.view->devicesListView().findChild<QListView*>("devicesTableView");
    }

    void pick(int row)
    {
        QTest::qWait(1); // the rows appear
        const QPoint middle = table().visualRect(table().model()->index(row, 0)).center();
        QTest::mouseClick(table().viewport(), Qt::LeftButton, {}, middle);
    }

    void press(const char* name)
    {
        QTest::mouseClick(m_dashboard.view->findChild<QWidget*>(name), Qt::LeftButton);
    }

    /// What the fake was asked to show, by the real thing.
    void showAlert()
    {
        if (!m_isAlertShown)
            return;
        WidgetMainQueue queue;
        QTimer::singleShot(0, &m_window, [this] {
            visit("alert");
            QApplication::activeModalWidget()->close();
        });
        const auto [message, informativeText] = m_dashboard.alerts.shown.back();
        QtAlerts(queue, m_window).runModal(message, informativeText);
    }

    /// The offscreen platform shows neither shapes of windows nor a window manager's frame around an alert.
    void drawOver(QPainter& painter, QWidget& window)
    {
        const bool isAlert = qobject_cast<QMessageBox*>(&window);
        const QPoint place = isAlert ? m_window.rect().center() - window.rect().center()
                                     : m_window.mapFromGlobal(window.mapToGlobal(QPoint()));
        window.render(&painter, place);
        if (isAlert) {
            painter.setPen(QColor(Theme::outline));
            painter.drawRect(window.rect().translated(place).adjusted(-1, -1, 0, 0));
        }
    }

    std::function<void(const QString& state)> m_visit;
    MainWindow m_window; // owns the view, which the dashboard's end still needs
    DashboardOnFakes m_dashboard;
    bool m_isAlertShown = false;
};

} // namespace companion::testing
