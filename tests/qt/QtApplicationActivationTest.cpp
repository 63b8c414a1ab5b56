#include "platform/qt/QtApplicationActivation.h"

#include "tests/qt/EventLoop.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QWidget>

namespace companion::testing {

TEST(QtApplicationActivationTest, WindowBehindAnotherOneBecomesTheActiveOne)
{
    QWidget window;
    window.show();
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(spinUntil([&] { return QApplication::activeWindow() == &other; }));
    QtApplicationActivation(window).activateIgnoringOtherApps();
    EXPECT_TRUE(spinUntil([&] { return QApplication::activeWindow() == &window; }));
}

TEST(QtApplicationActivationTest, MinimizedWindowComesBackAsItWas)
{
    QWidget window;
    window.showMaximized();
    window.setWindowState(window.windowState() | Qt::WindowMinimized);
    ASSERT_TRUE(window.isMinimized());
    QtApplicationActivation(window).activateIgnoringOtherApps();
    EXPECT_FALSE(window.isMinimized());
    EXPECT_TRUE(window.isMaximized());
}

} // namespace companion::testing
