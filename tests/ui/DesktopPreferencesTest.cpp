#include "ui/DesktopPreferences.h"
#include "ui/Fade.h"
#include "ui/Theme.h"

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

    /// As the desktop's settings do when its user changes one.
    void change(Groups groups)
    {
        m_groups = std::move(groups);
        QDBusMessage signal =
            QDBusMessage::createSignal(path, "org.freedesktop.portal.Settings", "SettingChanged");
        signal << "org.gnome.desktop.interface"
               << "some-key" << QVariant::fromValue(QDBusVariant(0));
        m_bus.send(signal);
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

class DesktopPreferencesTest : public ::testing::Test {
protected:
    DesktopPreferencesTest()
    {
        allowMotion(false);
        QApplication::setStyle(new HintingStyle(200));
    }
    ~DesktopPreferencesTest() override
    {
        allowMotion(false);
        Theme::setTextScale(1);
        QApplication::setStyle("Fusion");
    }

    static bool becomes(bool isAllowed)
    {
        return QTest::qWaitFor([isAllowed] { return isMotionAllowed() == isAllowed; });
    }
};

TEST_F(DesktopPreferencesTest, WithoutAPortalTheToolkitsHintDecides)
{
    {
        const DesktopPreferences motion;
        EXPECT_TRUE(becomes(true));
    }
    QApplication::setStyle(new HintingStyle(0));
    const DesktopPreferences motion;
    EXPECT_TRUE(becomes(false));
}

TEST_F(DesktopPreferencesTest, GnomesSwitchTurnsItOff)
{
    SettingsPortal portal({{"org.gnome.desktop.interface", {{"enable-animations", false}}}});
    allowMotion(true);
    const DesktopPreferences motion;
    EXPECT_TRUE(becomes(false));
}

TEST_F(DesktopPreferencesTest, ReducedMotionOfTheAppearanceTurnsItOff)
{
    SettingsPortal portal({{"org.freedesktop.appearance", {{"reduced-motion", 1U}}},
        {"org.gnome.desktop.interface", {{"enable-animations", true}}}});
    allowMotion(true);
    const DesktopPreferences motion;
    EXPECT_TRUE(becomes(false));
}

TEST_F(DesktopPreferencesTest, OtherSettingsChangeNothing)
{
    SettingsPortal portal({{"org.freedesktop.appearance", {{"color-scheme", 1U}}}});
    const DesktopPreferences motion;
    EXPECT_TRUE(becomes(true));
    EXPECT_EQ(portal.asked, 1);
}

TEST_F(DesktopPreferencesTest, APortalThatComesLaterIsAskedThen)
{
    const DesktopPreferences motion;
    EXPECT_TRUE(becomes(true));
    SettingsPortal portal({{"org.gnome.desktop.interface", {{"enable-animations", false}}}});
    EXPECT_TRUE(becomes(false));
}

TEST_F(DesktopPreferencesTest, ASettingThatChangesIsFollowed)
{
    SettingsPortal portal({{"org.gnome.desktop.interface", {{"enable-animations", false}}}});
    allowMotion(true);
    const DesktopPreferences preferences;
    ASSERT_TRUE(becomes(false));
    portal.change({{"org.gnome.desktop.interface", {{"enable-animations", true}}}});
    EXPECT_TRUE(becomes(true));
}

TEST_F(DesktopPreferencesTest, GnomesTextScaleMakesTextsLargerUpToOneAndAHalfTimes)
{
    SettingsPortal portal({{"org.gnome.desktop.interface", {{"text-scaling-factor", 1.25}}}});
    const auto size = [] { return Theme::font(Theme::FontFace::regular, 16).pixelSize(); };
    EXPECT_EQ(size(), 16);
    const DesktopPreferences preferences;
    EXPECT_TRUE(QTest::qWaitFor([&] { return size() == 20; }));
    portal.change({{"org.gnome.desktop.interface", {{"text-scaling-factor", 2.0}}}});
    EXPECT_TRUE(QTest::qWaitFor([&] { return size() == 24; }));
    portal.change({{"org.gnome.desktop.interface", {{"text-scaling-factor", 0.8}}}});
    EXPECT_TRUE(QTest::qWaitFor([&] { return size() == 16; }));
}

} // namespace
} // namespace companion::testing
