#include "ui/UploadProgressBars.h"
#include "ui/Theme.h"

#include "tests/ui/EventCounter.h"

#include <gtest/gtest.h>
#include <QAccessible>
#include <QApplication>
#include <QImage>
#include <QTest>
#include <QTimer>
#include <QToolButton>

namespace companion::testing {
namespace {

class UploadProgressBarsTest : public ::testing::Test {
protected:
    UploadProgressBarsTest()
    {
        m_window.resize(600, 300);
        const QMargins margins = m_bars->contentsMargins();
        m_bars->setGeometry(0, 0, 400 + besideTheBar + margins.left() + margins.right(), 10);
        m_window.show();
        QCoreApplication::processEvents();
    }

    /// Adds an upload, which lasts until `end`.
    void add(const std::string& fileName, int percent)
    {
        m_uploads.push_back(std::make_shared<UploadUnderWay>());
        m_uploads.back()->percent = percent;
        m_bars->add(QString::fromStdString(fileName), m_uploads.back());
    }

    void end(std::size_t upload)
    {
        m_uploads.erase(m_uploads.begin() + static_cast<std::ptrdiff_t>(upload));
        m_bars->refresh();
    }

    void endAll()
    {
        while (!m_uploads.empty())
            end(0);
    }

    /// The bars with what stands above them, 400 pixels wide.
    QImage shown(const std::vector<std::pair<std::string, int>>& uploads)
    {
        endAll();
        for (const auto& [fileName, percent] : uploads)
            add(fileName, percent);
        return shownInHeight(m_bars->sizeHint().height());
    }

    QImage shownInHeight(int height)
    {
        m_bars->resize(m_bars->width(), height);
        QImage image(m_bars->size(), QImage::Format_RGB32);
        image.fill(Qt::white);
        m_bars->render(&image);
        const bool isFromRight = m_bars->layoutDirection() == Qt::RightToLeft;
        return image.copy(m_bars->contentsRect().adjusted(
            isFromRight ? besideTheBar : 0, 0, isFromRight ? 0 : -besideTheBar, 0));
    }

    /// How many pixels of the line's bar are filled, and where they begin.
    static std::pair<int, int> filled(const QImage& image, int line, int lines)
    {
        const int top = image.height() * line / lines;
        const int bottom = image.height() * (line + 1) / lines;
        int best = 0;
        int first = -1;
        for (int y = top; y < bottom; ++y) {
            int count = 0;
            int start = -1;
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixelColor(x, y) != QColor(Theme::accent))
                    continue;
                if (start < 0)
                    start = x;
                ++count;
            }
            if (count > best) {
                best = count;
                first = start;
            }
        }
        return {best, first};
    }

    static bool hasInk(const QImage& image, const QRect& area)
    {
        for (int y = area.top(); y <= area.bottom(); ++y)
            for (int x = area.left(); x <= area.right(); ++x)
                if (image.pixelColor(x, y) != Qt::white)
                    return true;
        return false;
    }

    /// The progress bars that a screen reader finds: "photo.png 42 of 0 to 100; ...".
    std::string heard() const
    {
        QAccessibleInterface* all = QAccessible::queryAccessibleInterface(m_bars);
        std::string heard;
        for (int index = 0; index < all->childCount(); ++index) {
            QAccessibleInterface* bar = all->child(index);
            QAccessibleValueInterface* value = bar->valueInterface();
            if (bar->role() != QAccessible::ProgressBar || bar->state().invisible || !value)
                continue;
            heard += (heard.empty() ? "" : "; ") + bar->text(QAccessible::Name).toStdString() + " "
                + value->currentValue().toString().toStdString() + " of "
                + value->minimumValue().toString().toStdString() + " to "
                + value->maximumValue().toString().toStdString();
        }
        return heard;
    }

    QToolButton& button(std::size_t upload) const
    {
        return *m_bars->findChildren<QToolButton*>().at(static_cast<qsizetype>(upload));
    }

    static constexpr int besideTheBar = 32; ///< The button and its gap.
    QWidget m_window;
    UploadProgressBars* m_bars = new UploadProgressBars(&m_window);
    std::vector<std::shared_ptr<UploadUnderWay>> m_uploads;
};

TEST_F(UploadProgressBarsTest, NothingShowsWhileNothingIsOnItsWay)
{
    EXPECT_FALSE(m_bars->isVisible());
    add("a.png", 0);
    EXPECT_TRUE(m_bars->isVisible());
    end(0);
    EXPECT_FALSE(m_bars->isVisible());
}

TEST_F(UploadProgressBarsTest, EveryUploadHasALineOfTheSameHeight)
{
    add("a.png", 0);
    const int one = m_bars->sizeHint().height();
    add("b.png", 0);
    add("c.png", 0);
    EXPECT_GT(one, 0);
    EXPECT_EQ(m_bars->sizeHint().height(), 3 * one);
}

TEST_F(UploadProgressBarsTest, BarsAreFilledAsFarAsTheirUploadsAre)
{
    const QImage image = shown({{"a.png", 25}, {"b.png", 75}});
    EXPECT_NEAR(filled(image, 0, 2).first, 100, 4);
    EXPECT_NEAR(filled(image, 1, 2).first, 300, 4);
    EXPECT_EQ(filled(shown({{"a.png", 0}}), 0, 1).first, 0);
    EXPECT_NEAR(filled(shown({{"a.png", 100}}), 0, 1).first, 400, 4);
}

TEST_F(UploadProgressBarsTest, ManyUploadsMoveCloserWhereSpaceIsShort)
{
    for (int upload = 0; upload < 10; ++upload)
        add("a.png", 50);
    EXPECT_LT(m_bars->minimumSizeHint().height(), 100);
    const QImage image = shownInHeight(240);
    for (int line = 0; line < 10; ++line)
        EXPECT_NEAR(filled(image, line, 10).first, 200, 4) << line;
}

TEST_F(UploadProgressBarsTest, UploadsWithoutALineAreCountedInTheLastOne)
{
    for (int upload = 0; upload < 10; ++upload)
        add("a.png", 50);
    const QImage image = shownInHeight(120);
    for (int line = 0; line < 4; ++line)
        EXPECT_NEAR(filled(image, line, 5).first, 200, 4) << line;
    EXPECT_EQ(filled(image, 4, 5).first, 0);
    EXPECT_TRUE(hasInk(image, QRect(0, 96, 60, 20)));
    EXPECT_FALSE(hasInk(image, QRect(350, 96, 50, 20)));
}

TEST_F(UploadProgressBarsTest, BarsStayAwayFromTheBorderOfTheDropArea)
{
    EXPECT_GE(m_bars->contentsMargins().left(), 24);
    EXPECT_EQ(m_bars->contentsMargins().right(), m_bars->contentsMargins().left());
}

TEST_F(UploadProgressBarsTest, ALongNameLeavesThePercentageItsPlace)
{
    // The percentage's column begins 56 pixels from the right; a narrow gap before the digits of "1 %" stays free.
    const QImage image = shown({{std::string(255, 'W'), 1}});
    EXPECT_FALSE(hasInk(image, QRect(346, 0, 20, 20)));
    EXPECT_TRUE(hasInk(image, QRect(370, 0, 30, 20)));
    EXPECT_TRUE(hasInk(image, QRect(250, 0, 80, 20)));
}

TEST_F(UploadProgressBarsTest, TheEndOfALongNameIsSeen)
{
    const std::string begin(255, 'W');
    EXPECT_NE(shown({{begin + ".png", 1}}), shown({{begin + ".pdf", 1}}));
}

TEST_F(UploadProgressBarsTest, FromRightToLeftBarsGrowFromTheRightAndNamesStandThere)
{
    m_bars->setLayoutDirection(Qt::RightToLeft);
    const QImage image = shown({{"a", 25}});
    const auto [length, first] = filled(image, 0, 1);
    EXPECT_NEAR(length, 100, 4);
    EXPECT_NEAR(first, 300, 4);
    EXPECT_TRUE(hasInk(image, QRect(385, 0, 15, 20)));
    EXPECT_TRUE(hasInk(image, QRect(0, 0, 30, 20)));
    EXPECT_FALSE(hasInk(image, QRect(60, 0, 300, 20)));
}

TEST_F(UploadProgressBarsTest, ClicksOnABarGoThroughAndTheKeyboardPassesItBy)
{
    add("a.png", 50);
    m_bars->resize(m_bars->width(), 24);
    EventCounter clicks(m_window, QEvent::MouseButtonPress);
    QTest::mouseClick(m_bars->childAt(m_bars->contentsRect().center()), Qt::LeftButton);
    EXPECT_EQ(clicks.count, 1);
    QTest::mouseClick(&button(0), Qt::LeftButton);
    EXPECT_EQ(clicks.count, 1);
    EXPECT_EQ(m_bars->focusPolicy(), Qt::NoFocus);
    EXPECT_FALSE(m_bars->acceptDrops());
}

TEST_F(UploadProgressBarsTest, AScreenReaderHearsOfTheStartAndOfEveryQuarterOnce)
{
    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(m_bars);
    ASSERT_NE(accessible, nullptr);
    EXPECT_FALSE(accessible->state().focusable);
    add("a.png", 0);
    std::string said;
    for (const int percent : {0, 1, 24, 25, 26, 49, 60, 74, 75, 99, 100}) {
        m_uploads[0]->percent = percent;
        m_bars->refresh();
        const std::string name = accessible->text(QAccessible::Name).toStdString();
        if (!said.ends_with(name + "; "))
            said += name + "; ";
    }
    EXPECT_EQ(said, "Uploading a.png; a.png 25 %; a.png 60 %; a.png 75 %; a.png 100 %; ");
}

TEST_F(UploadProgressBarsTest, AFileThatIsBeingReadIsShownSoBeforeAnythingElseHappens)
{
    EventCounter paints(*m_bars, QEvent::Paint);
    add("a.png", UploadUnderWay::fileIsBeingRead);
    EXPECT_EQ(paints.count, 1);
    EXPECT_EQ(heard(), "a.png 0 of 0 to 100");
    EXPECT_NE(shown({{"a.png", UploadUnderWay::fileIsBeingRead}}), shown({{"a.png", 0}}));
    EXPECT_EQ(shown({{"Reading a.png", 0}}).copy(0, 0, 300, 20),
        shown({{"a.png", UploadUnderWay::fileIsBeingRead}}).copy(0, 0, 300, 20));
}

TEST_F(UploadProgressBarsTest, AScreenReaderHearsWhenAFileIsReadAndWhenItIsSent)
{
    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(m_bars);
    add("a.png", UploadUnderWay::fileIsBeingRead);
    EXPECT_EQ(accessible->text(QAccessible::Name), "Reading a.png");
    m_bars->refresh();
    EXPECT_EQ(accessible->text(QAccessible::Name), "Reading a.png");
    m_uploads[0]->percent = 0;
    m_bars->refresh();
    EXPECT_EQ(accessible->text(QAccessible::Name), "Uploading a.png");
}

TEST_F(UploadProgressBarsTest, EveryUploadIsAProgressBarToAScreenReader)
{
    m_bars->resize(400, 200);
    add("a.png", 25);
    add("b.png", 75);
    EXPECT_EQ(heard(), "a.png 25 of 0 to 100; b.png 75 of 0 to 100");
    m_uploads[1]->percent = 80;
    end(0);
    EXPECT_EQ(heard(), "b.png 80 of 0 to 100");
    EXPECT_EQ(QAccessible::queryAccessibleInterface(m_bars)->role(), QAccessible::Grouping);
}

TEST_F(UploadProgressBarsTest, AnUploadKeepsItsProgressBarWhenAnotherEnds)
{
    add("a.png", 25);
    add("b.png", 75);
    const QObject* bar = QAccessible::queryAccessibleInterface(m_bars)->child(1)->object();
    end(0);
    add("c.png", 0);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(m_bars)->child(0)->object(), bar);
}

TEST_F(UploadProgressBarsTest, EveryBarHasAButtonThatGivesUpItsOwnUpload)
{
    add("a.png", 25);
    add("b.png", 75);
    EXPECT_EQ(button(0).accessibleName(), "Stop uploading a.png");
    EXPECT_EQ(button(1).accessibleName(), "Stop uploading b.png");
    button(1).click();
    EXPECT_FALSE(m_uploads[0]->isGivenUp);
    EXPECT_TRUE(m_uploads[1]->isGivenUp);
}

TEST_F(UploadProgressBarsTest, AnUploadThatIsGivenUpLosesItsBarBeforeItsRequestHasEnded)
{
    m_bars->resize(m_bars->width(), 200);
    add("a.png", 25);
    add("b.png", 75);
    button(0).click();
    m_bars->refresh();
    EXPECT_EQ(heard(), "b.png 75 of 0 to 100");
    button(0).click();
    m_bars->refresh();
    EXPECT_FALSE(m_bars->isVisible());
}

TEST_F(UploadProgressBarsTest, TheButtonStandsAtTheEndOfItsLineAndIsLargeEnough)
{
    m_bars->resize(m_bars->width(), 24);
    for (const Qt::LayoutDirection direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        m_bars->setLayoutDirection(direction);
        endAll();
        add("a.png", 50);
        const QRect place(button(0).mapTo(m_bars, QPoint()), button(0).size());
        EXPECT_EQ(place.size(), QSize(24, 24));
        EXPECT_TRUE(m_bars->contentsRect().contains(place));
        EXPECT_EQ(place.center().x() > m_bars->width() / 2, direction == Qt::LeftToRight);
    }
}

TEST_F(UploadProgressBarsTest, TheKeyboardReachesTheButtonAndPressesIt)
{
    add("a.png", 50);
    EXPECT_TRUE(button(0).focusPolicy() & Qt::TabFocus);
    QTest::keyClick(&button(0), Qt::Key_Space);
    EXPECT_TRUE(m_uploads[0]->isGivenUp);
}

TEST_F(UploadProgressBarsTest, BarsAreRefreshedTenTimesASecondWhileThereAreAny)
{
    const auto* timer = m_bars->findChild<QTimer*>();
    ASSERT_NE(timer, nullptr);
    EXPECT_EQ(timer->interval(), 100);
    EXPECT_FALSE(timer->isActive());
    add("a.png", 0);
    EXPECT_TRUE(timer->isActive());
    end(0);
    EXPECT_FALSE(timer->isActive());
}

} // namespace
} // namespace companion::testing
