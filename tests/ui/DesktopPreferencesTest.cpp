#include "ui/DesktopMotion.h"
#include "ui/Fade.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVirtualObject>
#include <QProxyStyle>
#include <QTest>

namespace companion::testing {
namespace {

using Groups = QMap<QString, QVariantMap>;

/// org.freedesktop.portal.Settings, on a connection of its own.
class SettingsPortal : public QDBusVirtualObject {
public:
    explicit SettingsPortal(Groups groups)
        : m_groups(std::move(groups))
    {
        qDBusRegisterMetaType<Groups>();
        m_bus.registerVirtualObject(path, this);
        m_bus.registerService("org.freedesktop.portal.Desktop");
    }
    ~SettingsPortal() override
    {
        m_bus.unregisterService("org.freedesktop.portal.Desktop");
        m_bus.unregisterObject(path);
        QDBusConnection::disconnectFromBus("portal");
    }

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& call, const QDBusConnection& bus) override
    {
        if (call.member() != "ReadAll")
            return false;
        bus.send(call.createReply(QVariant::fromValue(m_groups)));
        ++asked;
        return true;
    }

    int asked = 0;

private:
    const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
    Groups m_groups;
    QDBusConnection m_bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "portal");
};

/// The platform of the tests has no theme, and so no hint of its own.
class HintingStyle : public QProxyStyle {
public:
    explicit HintingStyle(int duration)
        : m_duration(duration)
    {
    }
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
        QStyleHintReturn* data) const override
    {
        return hint == SH_Widget_Animation_Duration ? m_duration
                                                    : QProxyStyle::styleHint(hint, option, widget, data);
    }

private:
    const int m_duration;
};

class DesktopMotionTest : public ::testing::Test {
protected:
    DesktopMotionTest()
    {
        allowMotion(false);
        QApplication::setStyle(new HintingStyle(200));
    }
    ~DesktopMotionTest() override
    {
        allowMotion(false);
        QApplication::setStyle("Fusion");
    }

    static bool becomes(bool isAllowed)
    {
        return QTest::qWaitFor([isAllowed] { return isMotionAllowed() == isAllowed; });
    }
};

TEST_F(DesktopMotionTest, WithoutAPortalTheToolkitsHintDecides)
{
    {
        const DesktopMotion motion;
        EXPECT_TRUE(becomes(true));
    }
    QApplication::setStyle(new HintingStyle(0));
    const DesktopMotion motion;
    EXPECT_TRUE(becomes(false));
}

TEST_F(DesktopMotionTest, GnomesSwitchTurnsItOff)
{
    SettingsPortal portal({{"org.gnome.desktop.interface", {{"enable-animations", false}}}});
    allowMotion(true);
    const DesktopMotion motion;
    EXPECT_TRUE(becomes(false));
}

TEST_F(DesktopMotionTest, ReducedMotionOfTheAppearanceTurnsItOff)
{
    SettingsPortal portal({{"org.freedesktop.appearance", {{"reduced-motion", 1U}}},
        {"org.gnome.desktop.interface", {{"enable-animations", true}}}});
    allowMotion(true);
    const DesktopMotion motion;
    EXPECT_TRUE(becomes(false));
}

TEST_F(DesktopMotionTest, OtherSettingsChangeNothing)
{
    SettingsPortal portal({{"org.freedesktop.appearance", {{"color-scheme", 1U}}}});
    const DesktopMotion motion;
    EXPECT_TRUE(becomes(true));
    EXPECT_EQ(portal.asked, 1);
}

TEST_F(DesktopMotionTest, APortalThatComesLaterIsAskedThen)
{
    const DesktopMotion motion;
    EXPECT_TRUE(becomes(true));
    SettingsPortal portal({{"org.gnome.desktop.interface", {{"enable-animations", false}}}});
    EXPECT_TRUE(becomes(false));
}

} // namespace
} // namespace companion::testing
