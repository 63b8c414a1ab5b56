#include "tests/ui/Contrast.h"
#include "tests/ui/ScreenTest.h"
#include "ui/DragDropViewWidget.h"
#include "ui/ImageView.h"
#include "ui/QtSplashView.h"
#include "ui/Theme.h"

#include <QComboBox>
#include <QHelpEvent>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QToolTip>

namespace companion::testing {
namespace {

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

    /// Every label has the room for its text, and nothing that is drawn by itself overlaps anything else.
    void expectNothingCutOff()
    {
        QTest::qWait(1); // the layout
        const QRect all = m_dashboard.view->rect();
        for (QLabel* label : m_dashboard.view->findChildren<QLabel*>()) {
            if (!label->isVisible() || label->isWindow() || label->objectName() == "deviceStatusLabel")
                continue;
            const QRect place(label->mapTo(m_dashboard.view, QPoint()), label->size());
            EXPECT_TRUE(all.contains(place)) << label->objectName().toStdString();
            if (areTextsLong() && isShortenedWithToolTip(*label))
                continue;
            const int needed = label->hasHeightForWidth() ? label->heightForWidth(label->width())
                                                          : label->sizeHint().height();
            EXPECT_GE(label->height(), needed) << label->objectName().toStdString();
            EXPECT_GE(label->width(), widthOfLongestWord(*label)) << label->objectName().toStdString();
        }
        std::vector<QWidget*> leaves;
        for (QWidget* view : m_dashboard.view->findChildren<QWidget*>()) {
            if (view->isVisible() && !view->isWindow()
                && (qobject_cast<QLabel*>(view) || qobject_cast<QAbstractButton*>(view)
                    || (qobject_cast<ImageView*>(view) && view->children().isEmpty())))
                leaves.push_back(view);
        }
        for (const QWidget* one : leaves) {
            const QRect place(one->mapTo(m_dashboard.view, QPoint()), one->size());
            for (const QWidget* other : leaves) {
                const QRect otherPlace(other->mapTo(m_dashboard.view, QPoint()), other->size());
                EXPECT_FALSE(one < other && place.intersects(otherPlace))
                    << one->objectName().toStdString() << " and " << other->objectName().toStdString();
            }
        }
    }

    static int widthOfLongestWord(const QLabel& label)
    {
        int width = 0;
        for (const QString& part : label.wordWrap() ? label.text().split(' ') : QStringList{label.text()})
            width = std::max(width, label.fontMetrics().horizontalAdvance(part));
        return width;
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
    m_dashboard.view->setTouchState(TouchState::missing, "");
    EXPECT_GE(contrastOf(outlet("touchStateLabel")), enoughForText);
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
    expectNoOverlap({"toolbarView", "fileUploadView", "castButtonView", "castCaptionLabel", "castHintLabel",
        "hdmiToggleView"});
    m_dashboard.view->wirelessTouchSwitch().accessibilityPerformPress();
    expectNothingCutOff();
    expectNoOverlap({"deviceHDMIMainLabel", "deviceHDMISubLabel", "facingProblemLabel", "hdmiToggleView"});
}

TEST_F(LayoutTest, TextsAndRowsGrowAndShrinkWithTheDesktopsTextScaleWhileTheyAreShown)
{
    openListOfThree();
    const auto sizes = [this] {
        QTest::qWait(1); // the layout
        return std::vector<int>{outlet<QLabel>("deviceStatusLabel").font().pixelSize(),
            find<QLabel>(list(), "headerMainLabel").font().pixelSize(),
            table().visualRect(table().model()->index(0, 0)).height(), list().width(),
            outlet("connectButton").font().pixelSize()};
    };
    const std::vector<int> usual{16, 20, 60, 360, 14};
    EXPECT_EQ(sizes(), usual);
    Theme::setTextScale(1.5);
    EXPECT_EQ(sizes(), (std::vector<int>{24, 30, 90, 540, 21}));
    Theme::setTextScale(1);
    EXPECT_EQ(sizes(), usual);
}

TEST_F(LayoutTest, At800By560TheSentenceAboutFilesThatWaitForAPanelFits)
{
    m_window.resize(800, 560);
    const QString usual = outlet<QLabel>("emptyStateLabel").text();
    m_dashboard.view->setFilesWaiting(1, "<b>" + std::string(250, 'w') + "</b>.pdf");
    expectNothingCutOff();
    EXPECT_EQ(m_window.size(), QSize(800, 560));
    EXPECT_TRUE(outlet<QLabel>("emptyStateLabel").text().contains("<b>w"));
    EXPECT_EQ(outlet<QLabel>("emptyStateLabel").textFormat(), Qt::PlainText);
    m_dashboard.view->setFilesWaiting(3, "a.pdf");
    EXPECT_EQ(outlet<QLabel>("emptyStateLabel").text(),
        QtDashboardView::tr("%n files will be sent to the panel that you pick.", nullptr, 3));
    expectNothingCutOff();
    m_dashboard.view->setFilesWaiting(0, "");
    EXPECT_EQ(outlet<QLabel>("emptyStateLabel").text(), usual);
}

TEST_F(LayoutTest, At800By560TheLineAboutTouchesFitsBelowThePanes)
{
    m_window.resize(800, 560);
    pair();
    m_dashboard.view->wirelessTouchSwitch().accessibilityPerformPress();
    for (const TouchState state : {TouchState::noPort, TouchState::awaited, TouchState::missing,
             TouchState::ignored, TouchState::works, TouchState::worksFromElsewhere}) {
        m_dashboard.view->setTouchState(state, "192.168.100.200");
        expectNothingCutOff();
        expectNoOverlap({"facingProblemLabel", "touchStateLabel", "hdmiToggleView"});
    }
}

TEST_F(LayoutTest, At800By560ALongSentenceAboutTouchesIsWrapped)
{
    m_window.resize(800, 560);
    pair();
    m_dashboard.view->wirelessTouchSwitch().accessibilityPerformPress();
    m_dashboard.view->setTouchState(TouchState::works, "");
    m_dashboard.view->setTouchObstacle(
        "No touch: remote interaction was not allowed in the desktop's dialog; turn touch on again to be asked again");
    expectNothingCutOff();
    expectNoOverlap({"facingProblemLabel", "touchStateLabel", "hdmiToggleView"});
}

TEST_F(LayoutTest, WhileCastingALongSentenceAboutTouchesStandsInTheEmptyBar)
{
    m_window.resize(800, 560);
    pair();
    click(outlet("castButtonView"));
    m_dashboard.view->setTouchObstacle(
        "No touch: remote interaction was not allowed in the desktop's dialog; turn touch on again to be asked again");
    expectNothingCutOff();
    expectNoOverlap({"fileUploadView", "touchStateLabel"});
    expectNoOverlap({"castCardView", "touchStateLabel"});
    EXPECT_EQ(inWindow("touchStateLabel").bottom() + 1, 560);
    EXPECT_EQ(inWindow("touchStateLabel").height(), 72);
}

TEST_F(LayoutTest, At2560By1440TheContentIs1100WideInTheMiddle)
{
    m_window.resize(2560, 1440);
    pair();
    expectNothingCutOff();
    expectNoOverlap({"toolbarView", "fileUploadView", "castButtonView", "castCaptionLabel", "castHintLabel",
        "hdmiToggleView"});
    EXPECT_EQ(inWindow("fileUploadView").left(), (2560 - 1100) / 2);
    EXPECT_EQ(inWindow("castCardView").right() + 1, (2560 + 1100) / 2);
    EXPECT_EQ(inWindow("touchPlateView").right() + 1, (2560 + 1100) / 2);
    EXPECT_EQ(outlet("castCardView").height(), outlet("fileUploadView").height());
    EXPECT_EQ(outlet("castButtonView").size(), QSize(128, 128));
}

TEST_F(LayoutTest, EveryReachableCombinationOfPanesFitsFromTheMinimumSizeOn)
{
    openListOfThree();
    clickRow(0);
    click(outlet("devicesListIcon"));
    const auto repick = [this] {
        openList();
        clickRow(table().rowIcon(0) == "connectedChain" ? 1 : 0);
        click(outlet("devicesListIcon"));
    };
    const auto press = [this](const char* name) { click(outlet(name)); };
    const auto expectAtEverySize = [this](const char* state) {
        for (const QSize size :
            {QSize(800, 560), QSize(813, 977), QSize(960, 640), QSize(1366, 560), QSize(1920, 1080)}) {
            SCOPED_TRACE(::testing::Message() << state << " at " << size.width() << "x" << size.height());
            m_window.resize(size);
            QTest::qWait(1);
            EXPECT_EQ(m_window.size(), size);
            expectNothingCutOff();
        }
    };
    expectAtEverySize("paired");
    press("castButtonView");
    expectAtEverySize("casting");
    repick();
    expectAtEverySize("casting, another panel picked");
    press("wirelessTouchSwitch");
    expectAtEverySize("casting, with touch by the switch");
    repick();
    expectAtEverySize("casting, with touch by the switch, another panel picked");
    press("castButtonView");
    expectAtEverySize("touch by the switch, casting stopped");
    press("castButtonView");
    expectAtEverySize("touch by the switch, casting started");
    openList();
    click(find(list(), "disconnectButton"));
    click(outlet("devicesListIcon"));
    expectAtEverySize("disconnected");
}

TEST_F(LayoutTest, NothingMovesWhenUploadsStart)
{
    pair();
    const QRect before = inWindow("fileUploadButton");
    std::vector<std::shared_ptr<UploadUnderWay>> uploads;
    for (int number = 0; number < 5; ++number) {
        uploads.push_back(std::make_shared<UploadUnderWay>());
        m_dashboard.view->showUpload("Timetable.pdf", uploads.back());
        QTest::qWait(1); // the layout
        EXPECT_EQ(inWindow("fileUploadButton"), before) << number;
        EXPECT_TRUE(inWindow("fileUploadView").contains(inWindow("uploadProgressBars"))) << number;
    }
}

TEST_F(LayoutTest, ALongStatusEndsInAnEllipsisAndShowsItselfWholeInItsToolTip)
{
    auto& label = outlet<QLabel>("deviceStatusLabel");
    const auto toolTip = [&label] {
        QHelpEvent event(QEvent::ToolTip, {1, 1}, label.mapToGlobal(QPoint(1, 1)));
        QApplication::sendEvent(&label, &event);
        return label.toolTip().toStdString();
    };
    m_dashboard.view->setDeviceStatus("Paired to 0A00020F");
    EXPECT_EQ(toolTip(), "");
    const std::string whole = "Paired to 0A00020F" + std::string(200, 'F');
    m_dashboard.view->setDeviceStatus(whole);
    QTest::qWait(1); // the layout
    EXPECT_EQ(m_window.width(), 800);
    EXPECT_LT(inWindow("deviceStatusLabel").right(), inWindow("settingsIcon").left());
    EXPECT_EQ(toolTip(), whole);
}

TEST_F(LayoutTest, APanelsLongNameEndsInAnEllipsisAndShowsItselfWholeInItsToolTip)
{
    const auto toolTipOf = [this](int row) {
        QToolTip::hideText();
        const QPoint at = table().visualRect(table().model()->index(row, 0)).center();
        QHelpEvent event(QEvent::ToolTip, at, table().viewport()->mapToGlobal(at));
        QApplication::sendEvent(table().viewport(), &event);
        return QToolTip::text().toStdString();
    };
    openList();
    announce("Meridian 65|Room 204|0A00020F");
    announce("Tandem 86|Teachers' library <beside> the gymnasium, second floor|0A000212");
    EXPECT_EQ(toolTipOf(0), "");
    EXPECT_EQ(
        toolTipOf(1), "Teachers' library &lt;beside&gt; the gymnasium, second floor\n0A000212   10.0.2.18");
}

TEST_F(LayoutTest, AnUploadsLongNameIsShortenedAndShowsItselfWholeInItsToolTip)
{
    pair();
    const auto toolTipOf = [this](const std::string& fileName) {
        const auto upload = std::make_shared<UploadUnderWay>();
        m_dashboard.view->showUpload(fileName, upload);
        QTest::qWait(1); // the layout
        QWidget& bar = *outlet("uploadProgressBars").findChildren<QProgressBar*>().last();
        QHelpEvent event(QEvent::ToolTip, {9, 9}, bar.mapToGlobal(QPoint(9, 9)));
        QApplication::sendEvent(&bar, &event);
        return bar.toolTip().toStdString();
    };
    EXPECT_EQ(toolTipOf("Timetable.pdf"), "");
    const std::string whole = "Timetable" + std::string(200, 'e') + ".pdf";
    EXPECT_EQ(toolTipOf(whole), whole);
}

TEST_F(LayoutTest, TheLineAboutTouchesKeepsClearOfTheBarAndThePanes)
{
    m_window.resize(800, 560);
    pair();
    m_dashboard.view->wirelessTouchSwitch().accessibilityPerformPress();
    openList();
    clickRow(1); // which shows the drop area again
    click(outlet("devicesListIcon"));
    QTest::qWait(1); // the layout
    ASSERT_TRUE(outlet("fileUploadView").isVisible());
    EXPECT_EQ(inWindow("touchStateLabel").bottom() + 1, inWindow("hdmiToggleView").top());
    EXPECT_EQ(inWindow("touchStateLabel").top(), inWindow("fileUploadView").bottom() + 1);
    EXPECT_EQ(outlet("touchStateLabel").height(), 64); // around a line of 24
}

TEST_F(LayoutTest, APopUpsListHasTheButtonsCornersAndAGapOf4Points)
{
    click(outlet("settingsIcon"));
    auto& button = find<QComboBox>(m_window, "fpsButton");
    button.showPopup();
    QTest::qWait(1); // the layout
    QWidget& list = *button.view();
    EXPECT_EQ(list.mapToGlobal(QPoint()).y() - button.mapToGlobal(QPoint(0, button.height())).y(), 4);
    const QImage picture = list.window()->grab().toImage();
    const QPoint corner = list.mapTo(list.window(), QPoint()) * picture.devicePixelRatio();
    EXPECT_EQ(picture.pixelColor(corner).alpha(), 0);
    EXPECT_EQ(picture.pixelColor(corner + QPoint(2, list.height() / 2) * picture.devicePixelRatio()),
        QColor(Qt::white));
    button.hidePopup();
}

TEST_F(LayoutTest, TheSwitchStandsOutFromItsPlateOnAndOff)
{
    pair();
    for (const bool isOn : {false, true}) {
        m_dashboard.view->wirelessTouchSwitch().setChecked(isOn);
        QTest::qWait(600); // its animation
        EXPECT_GE(contrastOf(outlet("wirelessTouchSwitch")), enoughForShapes) << isOn;
        EXPECT_EQ(pixel(outlet("touchPlateView"), {30, 4}), QColor(Qt::white));
    }
}

/// Where something is drawn in a band of the window, from its first to its last column.
std::pair<int, int> inkIn(QWidget& window, QRect band)
{
    const QImage image = window.grab(band).toImage();
    const QColor background = image.pixelColor(0, 1);
    const auto isBlank = [&](int x) {
        for (int y = 0; y < image.height(); ++y) {
            if (image.pixelColor(x, y) != background)
                return false;
        }
        return true;
    };
    int first = 0;
    while (first < image.width() && isBlank(first))
        ++first;
    int last = image.width() - 1;
    while (last > first && isBlank(last))
        --last;
    const double ratio = image.devicePixelRatio();
    return {static_cast<int>(first / ratio), static_cast<int>(last / ratio)};
}

TEST_F(LayoutTest, EveryBandOfTheScreenBeginsAndEnds32PointsFromTheWindowsEdges)
{
    pair();
    m_dashboard.view->setFocus();
    for (const char* name : {"toolbarView", "panesView", "hdmiToggleView"}) {
        const QRect withoutHairline = inWindow(name).adjusted(0, 2, 0, -2);
        const auto [first, last] = inkIn(*m_dashboard.view, withoutHairline);
        EXPECT_NEAR(first, 32, 1) << name;
        EXPECT_NEAR(last, 800 - 32 - 1, 1) << name;
    }
}

TEST_F(LayoutTest, TextsBesideEachOtherStandOnOneLine)
{
    pair();
    const auto baseline = [this](QLabel& label) {
        return inWindow(label.objectName().toLatin1()).center().y() + QFontMetrics(label.font()).ascent()
            - QFontMetrics(label.font()).height() / 2;
    };
    EXPECT_EQ(
        baseline(outlet<QLabel>("enableHDMILabel")), baseline(outlet<QLabel>("wirelessTouchStatusLabel")));
}

TEST_F(LayoutTest, TheDropAreaHasNoSeamsAtAnySize)
{
    for (const QSize size : {QSize(441, 303), QSize(443, 307), QSize(577, 359)}) {
        DragDropViewWidget area;
        area.setImageName("fileUploadGrid");
        area.resize(size);
        const QImage image = area.grab().toImage();
        const int inset = qRound(6 * image.devicePixelRatio()); // within the dashes, and off the dots
        for (int x = inset; x < image.width() - inset; ++x)
            ASSERT_EQ(image.pixelColor(x, inset), QColor(0xf6, 0xf8, 0xfa)) << size.width() << " at " << x;
        for (int y = inset; y < image.height() - inset; ++y)
            ASSERT_EQ(image.pixelColor(inset, y), QColor(0xf6, 0xf8, 0xfa)) << size.height() << " at " << y;
    }
}

TEST_F(LayoutTest, NothingMovesWhenCastingStartsAndThePaneOfTheCableGoes)
{
    pair();
    const QRect button = inWindow("castButtonView");
    const QRect area = inWindow("fileUploadView");
    click(outlet("castButtonView"));
    QTest::qWait(1); // the layout
    EXPECT_FALSE(outlet("hdmiToggleView").isVisible());
    EXPECT_EQ(inWindow("castButtonView"), button);
    EXPECT_EQ(inWindow("fileUploadView"), area);
}

TEST_F(LayoutTest, TheEmptyStateHasTheWholeHeightAlsoAfterAPairing)
{
    EXPECT_EQ(inWindow("panesView").bottom(), m_dashboard.view->rect().bottom());
    pair();
    openList();
    click(find(list(), "disconnectButton"));
    QTest::qWait(1); // the layout
    EXPECT_EQ(inWindow("panesView").bottom(), m_dashboard.view->rect().bottom());
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
    const QColor background = picture.pixelColor(2, 2); // that of a row under the pointer, maybe
    const auto isBlank = [&](int x) {                   // from the row's start the icon comes first
        for (int y = 2; y < picture.height() - 4; ++y) {
            if (picture.pixelColor(x, y) != background)
                return false;
        }
        return true;
    };
    const int iconFromEdge = qRound(28 * picture.devicePixelRatio());
    EXPECT_FALSE(isBlank(picture.width() - iconFromEdge));
    EXPECT_TRUE(isBlank(iconFromEdge));
}

TEST_F(LayoutTest, TheDropAreasDashesKeepTheirLengthAtAnyProportions)
{
    const auto dashes = [](QSize size) { // how often the top edge changes between a dash and a gap
        DragDropViewWidget area;
        area.setImageName("fileUploadGrid");
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
    splash.show();
    EXPECT_TRUE(QTest::qWaitFor([&] { return find(splash, "subTitleLabel").isVisible(); }));
    EXPECT_EQ(find<QLabel>(splash, "mainTitleLabel").font().pixelSize(), 20);
    EXPECT_EQ(find<QLabel>(splash, "mainTitleLabel").font().weight(), QFont::Normal);
    EXPECT_EQ(find<QLabel>(splash, "subTitleLabel").font().pixelSize(), 20);
    EXPECT_EQ(find<QLabel>(splash, "subTitleLabel").font().weight(), QFont::ExtraLight);
    for (const char* name : {"mainTitleLabel", "subTitleLabel"})
        EXPECT_GE(contrastOf(find(splash, name)), enoughForText) << name;
}

TEST_F(LayoutTest, TheSplashScreensPictureStaysWhereItIsWhenItsTitlesCome)
{
    QtSplashView splash;
    splash.resize(960, 640);
    splash.show();
    const QRect before = find(splash, "splashImage").geometry();
    EXPECT_FALSE(find(splash, "mainTitleLabel").isVisible());
    EXPECT_TRUE(QTest::qWaitFor([&] { return find(splash, "mainTitleLabel").isVisible(); }));
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(find(splash, "splashImage").geometry(), before);
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
    EXPECT_TRUE(QTest::qWaitFor([&] { return !window.windowIcon().isNull(); }));
}

} // namespace
} // namespace companion::testing
