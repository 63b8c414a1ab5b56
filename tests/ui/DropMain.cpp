#include "tests/support/PrivateBus.h"
#include "ui/Accessibility.h"
#include "ui/Theme.h"

#include <gtest/gtest.h>

#include <QApplication>

// Qt finds the session bus once for each process, so there is one for all tests from the start.
int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    companion::testing::PrivateBus bus;
    bus.start();
    qputenv("DBUS_SESSION_BUS_ADDRESS", QByteArray::fromStdString(bus.address()));
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    companion::Theme::apply(application);
    companion::installAccessibility();
    return RUN_ALL_TESTS();
}
