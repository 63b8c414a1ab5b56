#include "tests/ui/EventCounter.h"
#include "tests/ui/ScreenTest.h"
#include "ui/ColoredView.h"
#include "ui/Theme.h"

#include <map>
#include <set>

#include <QLabel>
#include <QPaintEngine>
#include <QPainter>
#include <QPushButton>
#include <QSignalSpy>

namespace companion::testing {
namespace {

using DevicesListScreenTest = ScreenTest;

TEST_F(DevicesListScreenTest, AtStartThereAreNoRowsAndNoDisconnectButton)
{
    openList();
    EXPECT_EQ(table().model()->rowCount(), 0);
    EXPECT_EQ(find(list(), "disconnectButton").height() * find(list(), "disconnectButton").isVisible(), 0);
}

TEST_F(DevicesListScreenTest, ElementsHaveTheirStyles)
{
    openListOfThree();
    clickRow(0);
    auto& button = find<QPushButton>(list(), "disconnectButton");
    EXPECT_EQ(find<ColoredView>(list(), "listHeaderView").backgroundColor(), QColor(255, 255, 255));
    EXPECT_EQ(pixel(button, {40, 24}), QColor(204, 115, 77));
    EXPECT_EQ(button.font().pixelSize(), 16);
    EXPECT_EQ(button.font().weight(), QFont::Normal);
    EXPECT_EQ(find<QLabel>(list(), "headerMainLabel").font().pixelSize(), 20);
    EXPECT_EQ(find<QLabel>(list(), "headerMainLabel").font().weight(), QFont::ExtraLight);
    EXPECT_EQ(find<QLabel>(list(), "headerSubLabel").font().pixelSize(), 12);
    EXPECT_EQ(find<QLabel>(list(), "headerSubLabel").font().weight(), QFont::Normal);
    const QString family = Theme::font(Theme::FontFace::regular, 16).family();
    for (const char* name : {"disconnectButton", "headerMainLabel", "headerSubLabel"})
        EXPECT_EQ(find(list(), name).font().family(), family) << name;
}

/// Notes which texts are painted on it, and in which fonts.
class TextRecorder : public QPaintDevice {
public:
    explicit TextRecorder(QSize size)
        : m_size(size)
    {
    }

    QPaintEngine* paintEngine() const override { return &m_engine; }
    const std::map<QString, QFont>& fonts() const { return m_engine.fonts; }

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        switch (metric) {
        case PdmWidth:
            return m_size.width();
        case PdmHeight:
            return m_size.height();
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return 96;
        case PdmDepth:
            return 32;
        default:
            return QPaintDevice::metric(metric);
        }
    }

private:
    class Engine : public QPaintEngine {
    public:
        Engine()
            : QPaintEngine(AllFeatures)
        {
        }
        bool begin(QPaintDevice*) override { return true; }
        bool end() override { return true; }
        void updateState(const QPaintEngineState&) override { }
        void drawPixmap(const QRectF&, const QPixmap&, const QRectF&) override { }
        void drawPolygon(const QPointF*, int, PolygonDrawMode) override { }
        Type type() const override { return User; }
        void drawTextItem(const QPointF&, const QTextItem& item) override
        {
            fonts[item.text()] = item.font();
        }

        std::map<QString, QFont> fonts;
    };

    const QSize m_size;
    mutable Engine m_engine;
};

TEST_F(DevicesListScreenTest, ARowsTextsArePaintedInTheirFonts)
{
    const DeviceTableCellView cell{"radioIcon", "Room 204", "0A00020F", ""};
    TextRecorder recorder({360, 60});
    QPainter painter(&recorder);
    cell.paint(painter, {0, 0, 360, 60}, /*isHovered=*/false);
    painter.end();
    const auto expectFont = [&](const char* text, QFont::Weight weight, int points) {
        const QFont font = recorder.fonts().at(text);
        EXPECT_EQ(font.family(), Theme::font(Theme::FontFace::regular, points).family()) << text;
        EXPECT_EQ(font.pixelSize(), points) << text;
        EXPECT_EQ(font.weight(), weight) << text;
    };
    ASSERT_EQ(recorder.fonts().size(), 2U);
    expectFont("Room 204", QFont::Normal, 16);
    expectFont("0A00020F", QFont::Medium, 12);
}

TEST_F(DevicesListScreenTest, OneThousandPanelsInATurnEachAreShownWholeWithFewerThan300Reloads)
{
    openList();
    QSignalSpy reloads(table().model(), &QAbstractItemModel::rowsInserted);
    for (int number = 1; number <= 1000; ++number)
        announce("Meridian 65|Room|0A01" + QByteArray::number(number).rightJustified(4, '0').toStdString());
    EXPECT_TRUE(QTest::qWaitFor([&] { return table().model()->rowCount() == 1000; }));
    EXPECT_LT(reloads.count(), 300);
}

TEST_F(DevicesListScreenTest, RowsAre60PointsHighAndNeverPaintASelection)
{
    openListOfThree();
    for (int row = 0; row < 3; ++row)
        EXPECT_EQ(table().visualRect(table().model()->index(row, 0)).height(), 60);
    EXPECT_EQ(table().selectionMode(), QAbstractItemView::NoSelection);
}

TEST_F(DevicesListScreenTest, ARowShowsThePanelsNameAndItsAddressInHexadecimal)
{
    openListOfThree();
    EXPECT_EQ(table().model()->index(0, 0).data(Qt::AccessibleTextRole), "Room 204, 0A00020F");
    EXPECT_EQ(table().cell(0).deviceNameLabel, "Room 204");
    EXPECT_EQ(table().cell(0).deviceIPLabel, "0A00020F");
    EXPECT_EQ(table().cell(0).conectedImageView, "radioIcon");
}

TEST_F(DevicesListScreenTest, AClickPicksTheRow)
{
    openListOfThree();
    taken();
    clickRow(0);
    EXPECT_EQ(icons(), "connectedChain radioIcon radioIcon");
    EXPECT_EQ(find<QLabel>(*m_dashboard.view, "deviceStatusLabel").text(), "Paired to 0A00020F");
    EXPECT_EQ(find(list(), "disconnectButton").height(), 48);
    EXPECT_TRUE(find(list(), "disconnectButton").isVisible());
    EXPECT_THAT(taken(), ::testing::HasSubstr("log Selected device IP : 10.0.2.15"));
}

TEST_F(DevicesListScreenTest, AClickOnThePickedRowDoesNothing)
{
    openListOfThree();
    clickRow(0);
    taken();
    clickRow(0);
    EXPECT_EQ(taken(), "");
    EXPECT_EQ(icons(), "connectedChain radioIcon radioIcon");
}

TEST_F(DevicesListScreenTest, APickOfAnotherRowMovesTheChainWithoutADisconnect)
{
    openListOfThree();
    clickRow(0);
    taken();
    clickRow(1);
    EXPECT_EQ(icons(), "radioIcon connectedChain radioIcon");
    EXPECT_EQ(taken(), "log Selected device IP : 10.0.2.16");
    EXPECT_EQ(find<QLabel>(*m_dashboard.view, "deviceStatusLabel").text(), "Paired to 0A000210");
}

TEST_F(DevicesListScreenTest, DisconnectHidesItselfAndTheSameRowCanBePickedAgain)
{
    openListOfThree();
    clickRow(0);
    click(find(list(), "disconnectButton"));
    EXPECT_EQ(icons(), "radioIcon radioIcon radioIcon");
    EXPECT_FALSE(find(list(), "disconnectButton").isVisible());
    EXPECT_EQ(find<QLabel>(*m_dashboard.view, "deviceStatusLabel").text(), "*No Device Connected");
    clickRow(0);
    EXPECT_EQ(icons(), "connectedChain radioIcon radioIcon");
}

TEST_F(DevicesListScreenTest, AClickBelowTheRowsTakesTheChainAwayAndLeavesThePairing)
{
    openListOfThree();
    clickRow(0);
    taken();
    clickBelowRows();
    EXPECT_EQ(taken(), "");
    EXPECT_EQ(icons(), "radioIcon radioIcon radioIcon");
    EXPECT_EQ(find<QLabel>(*m_dashboard.view, "deviceStatusLabel").text(), "Paired to 0A00020F");
    EXPECT_TRUE(find(list(), "disconnectButton").isVisible());
}

TEST_F(DevicesListScreenTest, AClickBelowTheRowsWithNothingPickedDoesNothing)
{
    openListOfThree();
    taken();
    clickBelowRows();
    EXPECT_EQ(taken(), "");
    EXPECT_FALSE(find(list(), "disconnectButton").isVisible());
}

TEST_F(DevicesListScreenTest, TheChainStaysWithTheRowNumberWhenAPanelAboveItGoes)
{
    openListOfThree();
    clickRow(1);
    m_dashboard.browsers.remove("Meridian 65|Room 204|0A00020F");
    QCoreApplication::processEvents();
    EXPECT_EQ(table().model()->rowCount(), 2);
    EXPECT_EQ(table().cell(1).deviceNameLabel, "Physics lab");
    EXPECT_EQ(icons(), "radioIcon connectedChain");
    taken();
    clickRow(1); // another panel now, but the row that is picked
    EXPECT_EQ(taken(), "");
}

TEST_F(DevicesListScreenTest, ARowThatWasLeftWhileItWasGoneComesBackWithoutTheChain)
{
    openListOfThree();
    clickRow(2);
    m_dashboard.browsers.remove("Meridian 65|Room 204|0A00020F");
    QTest::qWait(20);
    ASSERT_EQ(table().model()->rowCount(), 2);
    clickRow(0);
    announce("Meridian 65|Library|0A000212");
    QTest::qWait(20);
    EXPECT_EQ(icons(), "connectedChain radioIcon radioIcon");
}

TEST_F(DevicesListScreenTest, TheChainIsWithItsRowWhereverTheListIsScrolled)
{
    openList();
    for (int number = 10; number < 30; ++number)
        announce("Meridian 65|Room " + std::to_string(number) + "|0A0002" + std::to_string(number));
    ASSERT_TRUE(QTest::qWaitFor([&] { return table().model()->rowCount() == 20; }));
    const auto iconOnScreen = [this](int row) {
        const QRect cell = table().visualRect(table().model()->index(row, 0));
        return table().viewport()->grab(QRect(cell.left() + 16, cell.top() + 18, 24, 24)).toImage();
    };
    const QImage unpicked = iconOnScreen(0);
    clickRow(0);
    const QImage picked = iconOnScreen(0);
    ASSERT_NE(picked, unpicked);

    table().scrollToBottom();
    ASSERT_FALSE(table().viewport()->rect().intersects(table().visualRect(table().model()->index(0, 0))));
    EXPECT_EQ(iconOnScreen(19), unpicked);
    table().scrollToTop();
    EXPECT_EQ(iconOnScreen(0), picked);

    table().scrollToBottom();
    click(find(list(), "disconnectButton"));
    table().scrollToTop();
    EXPECT_EQ(iconOnScreen(0), unpicked);
}

TEST_F(DevicesListScreenTest, OnlyAPressAndAReleaseOnOneRowPickIt)
{
    openListOfThree();
    const auto middleOf = [this](int row) {
        return table().visualRect(table().model()->index(row, 0)).center();
    };
    const QPoint below(middleOf(0).x(), table().viewport()->rect().bottom() - 2);
    QTest::mousePress(table().viewport(), Qt::LeftButton, {}, middleOf(0));
    QTest::mouseRelease(table().viewport(), Qt::LeftButton, {}, middleOf(1));
    EXPECT_EQ(icons(), "radioIcon radioIcon radioIcon");

    clickRow(1);
    QTest::mousePress(table().viewport(), Qt::LeftButton, {}, middleOf(1));
    QTest::mouseRelease(table().viewport(), Qt::LeftButton, {}, below);
    QTest::mousePress(table().viewport(), Qt::LeftButton, {}, below);
    QTest::mouseRelease(table().viewport(), Qt::LeftButton, {}, middleOf(0));
    EXPECT_EQ(icons(), "radioIcon connectedChain radioIcon");
}

TEST_F(DevicesListScreenTest, ThePressThatMakesADoubleClickCountsAsOne)
{
    openListOfThree();
    clickRow(0);
    const QPoint middle = table().visualRect(table().model()->index(1, 0)).center();
    QTest::mouseDClick(table().viewport(), Qt::LeftButton, {}, middle); // the second press alone
    QTest::mouseRelease(table().viewport(), Qt::LeftButton, {}, middle);
    EXPECT_EQ(icons(), "radioIcon connectedChain radioIcon");
}

TEST_F(DevicesListScreenTest, ARowWithoutANameShowsItsAddressAndSurvives)
{
    openList();
    announce("Meridian 65|Room 204|0A00020F");
    announce("Meridian 65|Room 204|0A000210");
    announce("Meridian 65|Room 204|0A000211");
    m_dashboard.browsers.remove("Meridian 65|Room 204|0A00020F"); // takes every name that is like its own
    QCoreApplication::processEvents();
    ASSERT_EQ(table().model()->rowCount(), 2);
    EXPECT_EQ(table().cell(1).deviceNameLabel, "");
    EXPECT_EQ(table().model()->index(1, 0).data(Qt::AccessibleTextRole), "0A000211");
    clickRow(1);
    EXPECT_EQ(find<QLabel>(*m_dashboard.view, "deviceStatusLabel").text(), "*No Device Connected");
}

TEST_F(DevicesListScreenTest, ThousandPanelsInOneTurnOfTheEventLoopAreOneReloadAndOnePaint)
{
    openList();
    QTest::qWait(1); // the list is painted
    const QSignalSpy insertions(table().model(), &QAbstractItemModel::rowsInserted);
    const EventCounter paints(*table().viewport(), QEvent::Paint);
    for (int i = 0; i < 1000; ++i) {
        char name[64];
        std::snprintf(name, sizeof name, "Meridian 65|Panel %d|0A%06X", i, i);
        m_dashboard.browsers.findAndResolve(name);
    }
    EXPECT_EQ(table().model()->rowCount(), 0);
    QTest::qWait(50);
    EXPECT_EQ(table().model()->rowCount(), 1000);
    EXPECT_EQ(insertions.count(), 1);
    EXPECT_GE(paints.count, 1);
    EXPECT_LE(paints.count, 2); // the scroll bar appears
}

TEST_F(DevicesListScreenTest, PaintingAsksOnlyForTheRowsOnScreen)
{
    DevicesTableView view;
    view.resize(360, 300);
    int asked = 0;
    view.setDataSource([] { return 1000; }, [&asked](int, DeviceTableCellView&) { ++asked; });
    QTest::qWait(1);
    asked = 0;
    view.grab();
    EXPECT_GE(asked, 5);
    EXPECT_LE(asked, 6);
}

TEST_F(DevicesListScreenTest, OneMoreRowThan1000AsksOnlyForTheRowsOnScreen)
{
    DevicesTableView view;
    view.resize(360, 300);
    view.show();
    int rows = 1000;
    std::set<int> asked;
    view.setDataSource(
        [&rows] { return rows; }, [&asked](int row, DeviceTableCellView&) { asked.insert(row); });
    ASSERT_TRUE(QTest::qWaitFor([&] { return view.model()->rowCount() == 1000 && !asked.empty(); }));
    QTest::qWait(50);
    asked.clear();
    rows = 1001;
    view.reloadData();
    ASSERT_TRUE(QTest::qWaitFor([&] { return view.model()->rowCount() == 1001; }));
    QTest::qWait(50);
    EXPECT_LE(asked.size(), 6U);
}

TEST_F(DevicesListScreenTest, OneMoreRowThan1000RepaintsNothingAroundTheList)
{
    openList();
    for (int i = 0; i < 1000; ++i)
        m_dashboard.browsers.findAndResolve("Meridian 65|Panel|0A" + std::to_string(100000 + i));
    ASSERT_TRUE(QTest::qWaitFor([&] { return table().model()->rowCount() == 1000; }));
    QTest::qWait(300); // the list has faded in
    const EventCounter rows(*table().viewport(), QEvent::Paint);
    const EventCounter popover(*list().parentWidget(), QEvent::Paint);
    const EventCounter dashboard(*m_dashboard.view, QEvent::Paint);
    announce("Meridian 65|Panel|0B000001");
    ASSERT_TRUE(QTest::qWaitFor([&] { return rows.count > 0; }));
    QTest::qWait(50);
    EXPECT_EQ(popover.count, 0);
    EXPECT_EQ(dashboard.count, 0);
}

TEST_F(DevicesListScreenTest, TheListIsAsHighAsItsRowsAndAPlaceToClickBelowThemUpToFive)
{
    openList();
    std::string heights;
    for (int panels = 1; panels <= 7; ++panels) {
        announce("Meridian 65|Room|0A00021" + std::to_string(panels));
        ASSERT_TRUE(QTest::qWaitFor([&] { return table().model()->rowCount() == panels; }, 30000));
        heights += std::to_string(table().height()) + " ";
        EXPECT_LE(list().mapTo(&m_window, QPoint(0, list().height())).y(), m_window.height());
    }
    EXPECT_EQ(heights, "196 196 196 256 316 316 316 ");
}

TEST_F(DevicesListScreenTest, SeparatorsAreInsetAndThereIsNoneBelowTheLastRow)
{
    openListOfThree();
    const auto below = [this](int row, int x) {
        return pixel(*table().viewport(), {x, table().visualRect(table().model()->index(row, 0)).bottom()});
    };
    for (const int row : {0, 1}) {
        EXPECT_EQ(below(row, 200), QColor(Theme::line)) << row;
        EXPECT_EQ(below(row, 40), QColor(Qt::white)) << row;
    }
    EXPECT_EQ(below(2, 200), QColor(Qt::white));
}

TEST_F(DevicesListScreenTest, ThePickedRowHasAColourOfItsOwnAndTheDottedAddressStandsBesideTheHexadecimalOne)
{
    openListOfThree();
    clickRow(1);
    EXPECT_EQ(pixel(*table().viewport(), {4, 90}), QColor(Theme::pickedRow));
    EXPECT_EQ(table().cell(1).deviceIPLabel, "0A000210");
    EXPECT_EQ(table().cell(1).dottedAddress, "10.0.2.16");
}

TEST_F(DevicesListScreenTest, AnEmptyListTellsWhatToCheck)
{
    openList();
    const QImage empty = table().viewport()->grab().toImage();
    QImage blank(empty.size(), empty.format());
    blank.fill(Qt::white);
    blank.setDevicePixelRatio(empty.devicePixelRatio());
    EXPECT_NE(empty, blank);
    EXPECT_EQ(table().placeholder(), "Looking for panels…");
    EXPECT_EQ(table().accessibleDescription(), table().placeholder());
    EXPECT_TRUE(QTest::qWaitFor([this] { return table().placeholder().contains("No panel"); }, 30000));
    EXPECT_THAT(table().placeholder().toStdString(),
        ::testing::AllOf(::testing::HasSubstr("No panel found yet"), ::testing::HasSubstr("same network"),
            ::testing::HasSubstr("panelctl doctor")));
    EXPECT_EQ(table().accessibleDescription(), table().placeholder());
    announce("Meridian 65|Room 204|0A00020F");
    EXPECT_EQ(table().accessibleDescription(), "");
}

TEST_F(DevicesListScreenTest, KeysMoveToARowAndReturnPicksIt)
{
    openListOfThree();
    QTest::keyClick(&focused(), Qt::Key_Down);
    QTest::keyClick(&focused(), Qt::Key_Down);
    QTest::keyClick(&focused(), Qt::Key_Return);
    EXPECT_EQ(icons(), "radioIcon connectedChain radioIcon");
}

TEST_F(DevicesListScreenTest, TheRowOfTheKeyboardIsMarkedForKeysAndNotForTheMouse)
{
    openListOfThree();
    clickRow(0);
    const QImage byMouse = table().viewport()->grab().toImage();
    table().setFocus(Qt::TabFocusReason);
    QTest::keyClick(&table(), Qt::Key_Down);
    QTest::keyClick(&table(), Qt::Key_Up);
    EXPECT_NE(table().viewport()->grab().toImage(), byMouse);
}

TEST_F(DevicesListScreenTest, TabGoesFromTheListToTheDisconnectButtonAndBack)
{
    openListOfThree();
    clickRow(0);
    EXPECT_EQ(&focused(), &table());
    QTest::keyClick(&table(), Qt::Key_Tab);
    EXPECT_EQ(&focused(), &find(list(), "disconnectButton"));
    QTest::keyClick(&focused(), Qt::Key_Tab);
    EXPECT_EQ(&focused(), &table());
}

} // namespace
} // namespace companion::testing
