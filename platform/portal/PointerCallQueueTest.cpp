#include "platform/portal/PointerCallQueue.h"

#include "platform/testing/Transcript.h"

#include <gtest/gtest.h>

namespace companion::testing {

class PointerCallQueueTest : public ::testing::Test {
protected:
    void moveTo(int x) { queue.add(Point{static_cast<double>(x), 7}); }
    void setButtonDown(bool isDown) { queue.add(PointerCallQueue::ButtonChange{isDown}); }

    void answerAll()
    {
        for (std::size_t i = 0; i < 200; ++i)
            queue.answered();
    }

    Transcript sent;
    PointerCallQueue queue{[this](const PointerCallQueue::Event& event) {
        if (const Point* const at = std::get_if<Point>(&event))
            sent.add(std::to_string(static_cast<int>(at->x)));
        else
            sent.add(std::get<PointerCallQueue::ButtonChange>(event).isDown ? "down" : "up");
    }};
};

TEST_F(PointerCallQueueTest, EachEventWaitsForTheAnswerToTheOneBefore)
{
    moveTo(1);
    setButtonDown(true);
    moveTo(2);
    EXPECT_EQ(sent.take(" "), "1");
    queue.answered();
    EXPECT_EQ(sent.take(" "), "down");
    queue.answered();
    queue.answered();
    setButtonDown(false);
    EXPECT_EQ(sent.take(" "), "2 up");
}

TEST_F(PointerCallQueueTest, The65thUnansweredMoveReplacesThe64th)
{
    for (int i = 1; i <= 64; ++i)
        moveTo(i);
    answerAll();
    EXPECT_EQ(sent.lines().size(), 64U);
    sent.clear();
    for (int i = 1; i <= 66; ++i)
        moveTo(i);
    answerAll();
    EXPECT_EQ(sent.lines().size(), 64U);
    EXPECT_EQ(sent.lines()[62], "63");
    EXPECT_EQ(sent.lines()[63], "66");
}

TEST_F(PointerCallQueueTest, PressesAndReleasesKeepTheirPlaceBetweenMergedMoves)
{
    for (int i = 0; i < 64; ++i)
        setButtonDown(true);
    moveTo(1);
    moveTo(2);
    setButtonDown(true);
    moveTo(3);
    moveTo(4);
    setButtonDown(false);
    answerAll();
    const std::vector<std::string> last(sent.lines().end() - 4, sent.lines().end());
    EXPECT_EQ(last, (std::vector<std::string>{"2", "down", "4", "up"}));
}

} // namespace companion::testing
