#include "tests/screens/ScreenTest.h"
#include "views/qt/ImageView.h"
#include "views/qt/QtSplashView.h"
#include "views/qt/Theme.h"

#include <cmath>

#include <QLabel>
#include <QPushButton>

namespace companion::testing {
namespace {

double luminance(const QColor& color)
{
    const auto linear = [](double channel) {
        return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

/// As WCAG 2.1 defines it, from 1 to 21.
double contrast(const QColor& one, const QColor& other)
{
    // A list: of two temporaries it would give references that dangle.
    const auto [dark, light] = std::minmax({luminance(one), luminance(other)});
    return (light + 0.05) / (dark + 0.05);
}

constexpr double enoughForText = 4.5;
constexpr double enoughForShapes = 3;

class LayoutTest : public ScreenTest {
protected:
    ~LayoutTest() override { QApplication::setLayoutDirection(Qt::LeftToRight); }

    QRect inWindow(const char* name)
    {
        QWidget& view = outlet(name);
        return {view.mapTo(m_dashboard.view, QPoint()), view.size()};
    }

    /// The text's colour against what it stands on, as painted: the most frequent colour of the label.
    double contrastOf(QWidget& label)
    {
        QWidget* window = label.window();
        const QImage image = window->grab(QRect(label.mapTo(window, QPoint()), label.size())).toImage();
        std::map<QRgb, int> counts;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                ++counts[image.pixel(x, y)];
        }
        const auto most = std::max_element(
            counts.begin(), counts.end(), [](const auto& a, const auto& b) { return a.second < b.second; });
        double strongest = 1;
        for (const auto& [color, count] : counts)
            strongest = std::max(strongest, contrast(QColor(color), QColor(most->first)));
        return strongest;
    }

    void expectNothingCutOff()
    {
        QTest::qWait(1);
        const QRect all = m_dashboard.view->rect();
        for (QLabel* label : m_dashboard.view->findChildren<QLabel*>()) {
            if (!label->isVisible() || label->window() != &m_window)
                continue;
            const QRect place(label->mapTo(m_dashboard.view, QPoint()), label->size());
            EXPECT_TRUE(all.contains(place)) << label->objectName().toStdString();
            const int needed = label->hasHeightForWidth() ? label->heightForWidth(label->width())
                                                          : label->sizeHint().height();
            EXPECT_GE(label->height(), needed) << label->objectName().toStdString();
        }
    }

    void expectNoOverlap(std::initializer_list<const char*> names)
    {
        for (auto one = names.begin(); one != names.end(); ++one) {
            for (auto other = one + 1; other != names.end(); ++other)
                EXPECT_FALSE(inWindow(*one).intersects(inWindow(*other))) << *one << " and " << *other;
        }
    }
};

TEST_F(LayoutTest, TextsStandOutFromWhatTheyStandOn)
{
    for (const char* name : {"deviceStatusLabel", "emptyStateLabel", "connectButton"})
        EXPECT_GE(contrastOf(outlet(name)), enoughForText) << name;
    pair();
    for (const char* name : {"dragAndDropLabel", "fileUploadButton", "castCaptionLabel", "enableHDMILabel",
             "wirelessTouchStatusLabel"})
        EXPECT_GE(contrastOf(outlet(name)), enoughForText) << name;
    m_dashboard.view->setHidden(Pane::hdmiMessage, false);
    for (const char* name : {"deviceHDMIMainLabel", "deviceHDMISubLabel", "facingProblemLabel"})
        EXPECT_GE(contrastOf(outlet(name)), enoughForText) << name;
    openList();
    for (const char* name : {"headerMainLabel", "headerSubLabel", "disconnectButton"})
        EXPECT_GE(contrastOf(find(list(), name)), enoughForText) << name;
    EXPECT_GE(contrastOf(*table().viewport()), enoughForText);
}

TEST_F(LayoutTest, ThePaletteIsReadableThroughout)
{
    const QPalette palette = QApplication::palette();
    EXPECT_GE(contrast(palette.color(QPalette::WindowText), palette.color(QPalette::Window)), enoughForText);
    EXPECT_GE(contrast(palette.color(QPalette::Text), palette.color(QPalette::Base)), enoughForText);
    EXPECT_GE(contrast(palette.color(QPalette::ButtonText), palette.color(QPalette::Button)), enoughForText);
    EXPECT_GE(contrast(palette.color(QPalette::HighlightedText), palette.color(QPalette::Highlight)),
        enoughForText);
    EXPECT_GE(
        contrast(palette.color(QPalette::ToolTipText), palette.color(QPalette::ToolTipBase)), enoughForText);
    EXPECT_GE(contrast(QColor(Theme::secondaryText), palette.color(QPalette::Base)), enoughForText);
    EXPECT_GE(contrast(QColor(Theme::accent), Qt::white), enoughForShapes);
    EXPECT_GE(contrast(QColor(Theme::accent), QColor(200, 200, 200)), enoughForShapes);
    EXPECT_GE(contrast(QColor(Theme::outline), Qt::white), enoughForShapes);
}

TEST_F(LayoutTest, TheSchemeIsLightAlthoughTheDesktopsIsDark)
{
    EXPECT_GT(luminance(QApplication::palette().color(QPalette::Window)), 0.8);
    EXPECT_LT(luminance(QApplication::palette().color(QPalette::WindowText)), 0.1);
    EXPECT_LT(luminance(outlet("deviceStatusLabel").palette().color(QPalette::WindowText)), 0.1);
    EXPECT_EQ(pixel(*m_dashboard.view, {5, 300}), QColor(Qt::white));
}

TEST_F(LayoutTest, At800By560NothingIsCutOffOrOverlaps)
{
    m_window.resize(800, 560);
    expectNothingCutOff();
    pair();
    EXPECT_EQ(m_window.size(), QSize(800, 560));
    expectNothingCutOff();
    expectNoOverlap(
        {"toolbarView", "fileUploadView", "castButtonView", "castCaptionLabel", "hdmiToggleView"});
    m_dashboard.view->wirelessTouchSwitch().accessibilityPerformPress();
    expectNothingCutOff();
    expectNoOverlap({"deviceHDMIMainLabel", "deviceHDMISubLabel", "facingProblemLabel", "hdmiToggleView"});
}

TEST_F(LayoutTest, At2560By1440NothingIsCutOffAndTheDropAreaTakesTheRoom)
{
    m_window.resize(2560, 1440);
    pair();
    expectNothingCutOff();
    expectNoOverlap(
        {"toolbarView", "fileUploadView", "castButtonView", "castCaptionLabel", "hdmiToggleView"});
    EXPECT_GT(outlet("fileUploadView").width(), 2000);
    EXPECT_EQ(outlet("castButtonView").size(), QSize(128, 128));
}

TEST_F(LayoutTest, FromRightToLeftTheScreenIsMirrored)
{
    const int iconLeft = inWindow("devicesListIcon").left();
    QApplication::setLayoutDirection(Qt::RightToLeft);
    pair();
    expectNothingCutOff();
    EXPECT_EQ(m_dashboard.view->width() - inWindow("devicesListIcon").right() - 1, iconLeft);
    EXPECT_LT(inWindow("castButtonView").right(), inWindow("fileUploadView").left());
    EXPECT_LT(inWindow("wirelessTouchSwitch").right(), inWindow("wirelessTouchStatusLabel").left());
    openList();
    const QRect row = table().visualRect(table().model()->index(0, 0));
    const QImage picture = table().viewport()->grab(row).toImage();
    const auto isBlank = [&picture](int x) { // from the row's start the icon comes first
        for (int y = 2; y < picture.height() - 2; ++y) {
            if (picture.pixelColor(x, y) != QColor(Qt::white))
                return false;
        }
        return true;
    };
    EXPECT_FALSE(isBlank(picture.width() - 28));
    EXPECT_TRUE(isBlank(28));
}

TEST_F(LayoutTest, TheDropAreasPatternKeepsItsSizeAtAnyProportions)
{
    const auto dashes = [](QSize size) { // how often the top edge changes between a dash and a gap
        ImageView area;
        area.setImageName("fileUploadGrid");
        area.setTiled(true);
        area.resize(size);
        const QImage image = area.grab().toImage();
        int changes = 0;
        for (int x = 21; x < image.width() - 20; ++x)
            changes +=
                (image.pixel(x, 1) == image.pixel(30, 1)) != (image.pixel(x - 1, 1) == image.pixel(30, 1));
        return changes;
    };
    EXPECT_NEAR(dashes({440, 300}), 440 / 10, 6);
    EXPECT_NEAR(dashes({1440, 300}), 1440 / 10, 6);
}

TEST_F(LayoutTest, TheSplashScreensTitlesHaveTheirFonts)
{
    QtSplashView splash;
    EXPECT_EQ(find<QLabel>(splash, "mainTitleLabel").font().pixelSize(), 20);
    EXPECT_EQ(find<QLabel>(splash, "mainTitleLabel").font().weight(), QFont::Normal);
    EXPECT_EQ(find<QLabel>(splash, "subTitleLabel").font().pixelSize(), 20);
    EXPECT_EQ(find<QLabel>(splash, "subTitleLabel").font().weight(), QFont::ExtraLight);
    splash.show();
    for (const char* name : {"mainTitleLabel", "subTitleLabel"})
        EXPECT_GE(contrastOf(find(splash, name)), enoughForText) << name;
}

TEST_F(LayoutTest, TheWindowsContentsAreReplacedInPlace)
{
    MainWindow window;
    auto* splash = new QtSplashView;
    window.setContentView(splash);
    window.show();
    const WId id = window.winId();
    const QRect place = window.geometry();
    QPointer<QWidget> gone = splash;
    window.setContentView(new QtSplashView);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(gone.isNull());
    EXPECT_EQ(window.winId(), id);
    EXPECT_EQ(window.geometry(), place);
    EXPECT_EQ(window.windowTitle(), "Panel Companion");
    EXPECT_FALSE(window.windowIcon().isNull());
}

} // namespace
} // namespace companion::testing
