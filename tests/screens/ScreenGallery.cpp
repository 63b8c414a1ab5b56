// screen-gallery DIRECTORY: writes a picture of every state of the screens, as they look on the present platform.
#include "tests/screens/DashboardOnFakes.h"
#include "views/qt/Accessibility.h"
#include "views/qt/MainWindow.h"
#include "views/qt/QtSplashView.h"
#include "views/qt/Theme.h"

#include <cstdio>
#include <QApplication>
#include <QDir>
#include <QListView>
#include <QPainter>
#include <QPushButton>
#include <QTest>

using namespace companion;
using namespace companion::testing;

namespace {

class Gallery {
public:
    explicit Gallery(const QString& directory)
        : m_directory(directory)
    {
        QDir().mkpath(directory);
        m_window.setContentView(new QtSplashView);
        m_window.show();
    }

    /// The main window with whatever popover is open over it.
    void take(const QString& name)
    {
        QTest::qWait(600); // animations come to rest
        QPixmap picture = m_window.grab();
        QPainter painter(&picture);
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window != &m_window && window->isVisible())
                painter.drawPixmap(window->pos() - m_window.pos(), window->grab(), window->rect());
        }
        painter.end();
        if (!picture.save(m_directory.filePath(name + ".png")))
            m_failed = true;
    }

    MainWindow& window() { return m_window; }
    int status() const { return m_failed ? 1 : 0; }

private:
    QDir m_directory;
    MainWindow m_window;
    bool m_failed = false;
};

void press(QWidget& root, const char* name)
{
    if (auto* control = root.findChild<QWidget*>(name))
        QTest::mouseClick(control, Qt::LeftButton);
}

void clickRow(DashboardOnFakes& dashboard, int row)
{
    auto* table = dashboard.view->devicesListView().findChild<QListView*>("devicesTableView");
    QTest::mouseClick(
        table->viewport(), Qt::LeftButton, {}, table->visualRect(table->model()->index(row, 0)).center());
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fputs("usage: screen-gallery DIRECTORY\n", stderr);
        return 2;
    }
    QApplication application(argc, argv);
    Theme::apply(application);
    installAccessibility();

    Gallery gallery(QString::fromLocal8Bit(argv[1]));
    gallery.take("splash");

    DashboardOnFakes dashboard;
    QtDashboardView& view = *dashboard.view;
    gallery.window().setContentView(dashboard.view);
    gallery.take("empty");

    press(view, "devicesListIcon");
    gallery.take("list-empty");
    for (const char* name :
        {"Meridian 65|Room 204|0A00020F", "Halcyon-X|Hall|0A000210", "Tandem 86|Physics lab|0A000211"})
        dashboard.browsers.findAndResolve(name);
    gallery.take("list");
    clickRow(dashboard, 0);
    gallery.take("list-picked");

    press(view, "devicesListIcon"); // a second click closes the list
    gallery.take("paired");
    press(view, "castButtonView");
    gallery.take("casting");
    press(view, "castButtonView");
    press(view, "wirelessTouchSwitch");
    gallery.take("cable");
    press(view, "settingsIcon");
    gallery.take("settings");
    return gallery.status();
}
