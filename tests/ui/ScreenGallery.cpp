// screen-gallery DIRECTORY [WIDTHxHEIGHT] [NAME...]: writes a picture of every state of the screens, or of those named, as
// they look on the present platform, in the language of LANGUAGE.
#include "platform/qt/QtAlerts.h"
#include "platform/qt/WidgetMainQueue.h"
#include "tests/ui/DashboardOnFakes.h"
#include "translations/Language.h"
#include "ui/Accessibility.h"
#include "ui/FocusRing.h"
#include "ui/MainWindow.h"
#include "ui/QtSplashView.h"
#include "ui/Theme.h"

#include <cstdio>
#include <QApplication>
#include <QDir>
#include <QListView>
#include <QMessageBox>
#include <QPainter>
#include <QTest>
#include <QTimer>

using namespace companion;
using namespace companion::testing;

namespace {

class Gallery {
public:
    Gallery(const QString& directory, QSize size, const QStringList& names)
        : m_directory(directory)
        , m_names(names)
    {
        QDir().mkpath(directory);
        m_window.resize(size);
        m_window.setContentView(new QtSplashView);
        m_window.show();
    }

    /// The main window with whatever is open over it.
    void take(const QString& name)
    {
        QTest::qWait(600); // animations come to rest, also before the next state
        if (!m_names.isEmpty() && !m_names.contains(name))
            return;
        QPixmap picture = m_window.grab();
        QPainter painter(&picture);
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window != &m_window && window->isVisible())
                drawOver(painter, *window);
        }
        painter.end();
        m_failed |= !picture.save(m_directory.filePath(name + ".png"));
    }

    /// A picture that is not of what it says is worse than none.
    void expect(bool condition, const char* what)
    {
        if (!condition)
            std::fprintf(stderr, "%s\n", what);
        m_failed |= !condition;
    }

    MainWindow& window() { return m_window; }
    int status() const { return m_failed ? 1 : 0; }

private:
    /// The offscreen platform shows neither shapes of windows nor a window manager's frame around an alert.
    void drawOver(QPainter& painter, QWidget& window)
    {
        const bool isAlert = qobject_cast<QMessageBox*>(&window);
        const QPoint place = isAlert ? m_window.rect().center() - window.rect().center()
                                     : m_window.mapFromGlobal(window.mapToGlobal(QPoint()));
        const QRegion shape = window.mask().isEmpty() ? QRegion(window.rect()) : window.mask();
        painter.setClipRegion(shape.translated(place));
        painter.drawPixmap(place, window.grab());
        painter.setClipping(false);
        if (isAlert) {
            painter.setPen(QColor(Theme::outline));
            painter.drawRect(window.rect().translated(place).adjusted(-1, -1, 0, 0));
        }
    }

    QDir m_directory;
    QStringList m_names;
    MainWindow m_window;
    bool m_failed = false;
};

/// Works the dashboard from one state to the next.
class User {
public:
    explicit User(Gallery& gallery)
        : m_gallery(gallery)
    {
        gallery.window().setContentView(m_dashboard.view);
        m_dashboard.alerts.whileShown = [this] { showAlert(); };
    }

    void findPanels()
    {
        m_gallery.take("empty");
        press("devicesListIcon");
        m_gallery.take("list-searching");
        QTest::qWait(4000);
        m_gallery.take("list-empty");
        for (const char* name :
            {"Meridian 65|Room 204|0A00020F", "Tandem 86|Physics lab|0A000211", "Halcyon-X|Hall|0A000210"})
            m_dashboard.browsers.findAndResolve(name);
        m_gallery.take("list");
    }

    void pair()
    {
        pick(0);
        m_gallery.take("list-picked");
        press("devicesListIcon"); // a second click closes the list
        m_gallery.expect(!m_dashboard.view->devicesListView().isVisible(), "the list is still open");
        m_gallery.take("paired");
    }

    void upload()
    {
        m_dashboard.view->fileUploadView().draggingEntered();
        m_gallery.take("dropping");
        m_dashboard.view->fileUploadView().draggingExited();
        const auto first = std::make_shared<UploadUnderWay>();
        const auto second = std::make_shared<UploadUnderWay>();
        first->percent = 62;
        second->percent = 8;
        m_dashboard.view->showUpload("Field trip.mp4", first);
        m_dashboard.view->showUpload("Timetable.pdf", second);
        m_gallery.take("uploading");
    }

    void cast()
    {
        m_alertName = "alert";
        press("castButtonView");
        m_alertName.clear();
        m_gallery.take("casting");
        press("castButtonView");
    }

    void useCable()
    {
        press("wirelessTouchSwitch");
        m_gallery.take("hdmi");
        press("devicesListIcon");
        pick(1);
        press("devicesListIcon");
        m_gallery.take("hdmi-repicked");
        press("wirelessTouchSwitch");
        press("wirelessTouchSwitch");
        press("settingsIcon");
        m_gallery.take("settings");
        press("settingsIcon");
        press("wirelessTouchSwitch");
    }

private:
    void pick(int row)
    {
        auto* table = m_dashboard.view->devicesListView().findChild<QListView*>("devicesTableView");
        QTest::qWait(1); // the rows appear
        const QPoint middle = table->visualRect(table->model()->index(row, 0)).center();
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, middle);
    }

    void press(const char* name)
    {
        QTest::mouseClick(m_dashboard.view->findChild<QWidget*>(name), Qt::LeftButton);
    }

    /// What the fake was asked to show, by the real thing.
    void showAlert()
    {
        if (m_alertName.isEmpty())
            return;
        WidgetMainQueue queue;
        QTimer::singleShot(100, [this] {
            m_gallery.take(m_alertName);
            QApplication::activeModalWidget()->close();
        });
        const auto [message, informativeText] = m_dashboard.alerts.shown.back();
        QtAlerts(queue, m_gallery.window()).runModal(message, informativeText);
    }

    Gallery& m_gallery;
    DashboardOnFakes m_dashboard;
    QString m_alertName;
};

QSize takeSize(QStringList& arguments)
{
    const QStringList parts = arguments.value(0).split('x');
    const QSize size(parts.value(0).toInt(), parts.value(1).toInt());
    if (size.isEmpty())
        return {800, 560};
    arguments.removeFirst();
    return size;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QStringList arguments = QApplication::arguments().mid(1);
    if (arguments.isEmpty()) {
        std::fputs("usage: screen-gallery DIRECTORY [WIDTHxHEIGHT] [NAME...]\n", stderr);
        return 2;
    }
    QApplication::setApplicationDisplayName(QStringLiteral("Panel Companion"));
    useDesktopLanguage(application);
    Theme::apply(application);
    installAccessibility();
    installFocusRing();

    const QString directory = arguments.takeFirst();
    Gallery gallery(directory, takeSize(arguments), arguments);
    gallery.take("splash");
    User user(gallery);
    user.findPanels();
    user.pair();
    user.upload();
    user.cast();
    user.useCable();
    return gallery.status();
}
