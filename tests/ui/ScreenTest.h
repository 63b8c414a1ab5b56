#pragma once

#include "tests/ui/DashboardOnFakes.h"
#include "ui/DevicesTableView.h"
#include "ui/ElidedLabel.h"
#include "ui/MainWindow.h"
#include "ui/Theme.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>

#include <QApplication>
#include <QHelpEvent>
#include <QTest>

namespace companion::testing {

/// The view of that name and type below `root`; a test that asks for one that is not there fails.
template <typename View = QWidget> View& find(QWidget& root, const char* name)
{
    auto* view = root.objectName() == QLatin1String(name) ? qobject_cast<View*>(&root)
                                                          : root.findChild<View*>(QString::fromLatin1(name));
    if (!view)
        throw std::runtime_error(std::string("there is no ") + name);
    return *view;
}

inline void click(QWidget& view)
{
    QTest::mouseClick(&view, Qt::LeftButton);
}

/// Texts of languages with longer words, and larger ones, need not fit into the smallest window...
inline bool areTextsLong()
{
    return Theme::scaled(100) > 100 || qgetenv("LANGUAGE") == "longer";
}

/// ...if they end in an ellipsis and show themselves whole in a tool tip.
inline bool isShortenedWithToolTip(QLabel& label)
{
    const auto* const elided = qobject_cast<ElidedLabel*>(&label);
    if (!elided || elided->shownText() == label.text())
        return false;
    QHelpEvent event(QEvent::ToolTip, {1, 1}, label.mapToGlobal(QPoint(1, 1)));
    QApplication::sendEvent(&label, &event);
    EXPECT_EQ(label.toolTip(), label.text());
    const QString lines = elided->shownText();
    const bool areAllLinesShown = QString(lines).replace('\n', ' ') == label.text();
    EXPECT_TRUE(areAllLinesShown || lines.contains(QChar(0x2026))) << lines.toStdString();
    EXPECT_GE(label.height(), label.fontMetrics().ascent()) << label.objectName().toStdString();
    return true;
}

/// What the keyboard works.
inline QWidget& focused()
{
    QWidget* view = QApplication::focusWidget();
    if (!view)
        throw std::runtime_error("the keyboard is nowhere");
    return *view;
}

/// As if Tab had led there.
inline void reachByKeyboard(QWidget& control)
{
    QTest::keyClick(&control, Qt::Key_F9);
    control.clearFocus();
    control.setFocus(Qt::TabFocusReason);
}

/// The names of what Tab goes through in so many steps, from where the keyboard is.
inline std::vector<std::string> tabOrder(int steps)
{
    std::vector<std::string> order;
    for (int i = 0; i < steps; ++i) {
        order.push_back(focused().objectName().toStdString());
        QTest::keyClick(&focused(), Qt::Key_Tab);
    }
    return order;
}

/// A colour as it appears on the screen.
inline QColor pixel(QWidget& view, QPoint at)
{
    return view.grab().toImage().pixelColor(at * view.devicePixelRatioF());
}

/// The dashboard in the main window, on the screen.
class ScreenTest : public ::testing::Test {
protected:
    ScreenTest()
    {
        m_window.setContentView(m_dashboard.view);
        m_window.resize(800, 560); // the offscreen platform's screen is no wider
        m_window.show();
        m_window.activateWindow();
        QCoreApplication::processEvents();
    }

    template <typename View = QWidget> View& outlet(const char* name)
    {
        return find<View>(*m_dashboard.view, name);
    }

    QtDevicesListView& list() { return m_dashboard.view->devicesListView(); }
    DevicesTableView& table() { return find<DevicesTableView>(list(), "devicesTableView"); }

    /// With "Room 204", the list closed.
    void pair()
    {
        openListOfThree();
        clickRow(0);
        click(outlet("devicesListIcon"));
        m_window.activateWindow();
        QTest::qWait(1); // the layout
    }

    void openList()
    {
        click(outlet("devicesListIcon"));
        QCoreApplication::processEvents();
    }

    void announce(const std::string& name)
    {
        m_dashboard.browsers.findAndResolve(name);
        QCoreApplication::processEvents();
    }

    /// "Room 204", "Hall" and "Physics lab", in an open list.
    void openListOfThree()
    {
        openList();
        announce("Meridian 65|Room 204|0A00020F");
        announce("Tandem 86|Hall|0A000210");
        announce("Meridian 65|Physics lab|0A000211");
    }

    void clickRow(int row)
    {
        const QPoint middle = table().visualRect(table().model()->index(row, 0)).center();
        QTest::mouseClick(table().viewport(), Qt::LeftButton, {}, middle);
    }

    /// In the list but below its rows.
    void clickBelowRows()
    {
        const QRect area = table().viewport()->rect();
        QTest::mouseClick(table().viewport(), Qt::LeftButton, {}, {area.center().x(), area.bottom() - 2});
    }

    std::string icons()
    {
        std::string icons;
        for (int row = 0; row < table().model()->rowCount(); ++row)
            icons += (row ? " " : "") + table().rowIcon(row).toStdString();
        return icons;
    }

    /// What the fakes were told since the last question.
    std::string taken() { return m_dashboard.transcript.take(); }

    MainWindow m_window; // owns the view, which the dashboard's end still needs
    DashboardOnFakes m_dashboard;
};

} // namespace companion::testing
