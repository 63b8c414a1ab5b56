#include "platform/portal/PointerCallQueue.h"

#include "platform/testing/Transcript.h"

#include <gtest/gtest.h>

namespace companion::testing {

class PointerCallQueueTest : public ::testing::Test {
protected:
    void moveTo(int x) { queue.add(Point{static_cast<double>(x), 7}); }
    void setButtonDown(bool isDown) { queue.add(PointerCallQueue::ButtonChange{isDown}); }

    /// Sends as many as may be unanswered.
    void fill()
    {
        for (std::size_t i = 0; i < PointerCallQueue::mostUnanswered; ++i)
            setButtonDown(true);
        sent.clear();
    }

    Transcript sent;
    PointerCallQueue queue{[this](const PointerCallQueue::Event& event) {
        if (const Point* const at = std::get_if<Point>(&event))
            sent.add(std::to_string(static_cast<int>(at->x)));
        else
            sent.add(std::get<PointerCallQueue::ButtonChange>(event).isDown ? "down" : "up");
    }};
};

TEST_F(PointerCallQueueTest, SixtyFourAreSentWithoutAnAnswerAndTheNextOneAfterIt)
{
    for (int i = 0; i < 64; ++i)
        moveTo(i);
    EXPECT_EQ(sent.lines().size(), 64U);
    moveTo(64);
    EXPECT_EQ(sent.lines().size(), 64U);
    queue.answered();
    EXPECT_EQ(sent.lines().back(), "64");
}

TEST_F(PointerCallQueueTest, MovesThatWaitBecomeTheNewestOne)
{
    fill();
    moveTo(1);
    moveTo(2);
    moveTo(3);
    queue.answered();
    queue.answered();
    EXPECT_EQ(sent.take(" "), "3");
}

TEST_F(PointerCallQueueTest, PressesAndReleasesKeepTheirPlaceBetweenMoves)
{
    fill();
    moveTo(1);
    moveTo(2);
    setButtonDown(true);
    moveTo(3);
    moveTo(4);
    setButtonDown(false);
    setButtonDown(true);
    for (int i = 0; i < 6; ++i)
        queue.answered();
    EXPECT_EQ(sent.take(" "), "2 down 4 up down");
}

} // namespace companion::testing
