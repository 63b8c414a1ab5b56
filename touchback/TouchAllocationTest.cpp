#include "touchback/MouseSimulate.h"
#include "touchback/TouchMessage.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <new>
#include <string>

namespace {

std::size_t allocations = 0;

} // namespace

// Not inlined, or else the compiler takes malloc and free here for a mismatch with new and delete.
[[gnu::noinline]] void* operator new(std::size_t size)
{
    ++allocations;
    if (void* memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace companion::testing {

/// Everything that a touch needs of the world, taking note without memory of its own.
class FrugalWorld : public Clock, public Screen, public Pause, public MouseEventPoster, public Console {
public:
    double secondsSince1970() const override { return 1'712'345'678.321; }
    std::optional<Size> mainScreenSize() const override { return Size{1366, 768}; }
    void pauseFor(std::chrono::microseconds) override { }
    std::optional<MouseEvent> makeMouseEvent(MouseEventType type, Point at) override
    {
        return MouseEvent{type, at, 0};
    }
    std::optional<KeyEvent> makeKeyEvent(std::uint16_t keyCode, bool isDown) override
    {
        return KeyEvent{keyCode, isDown, 0};
    }
    void post(const MouseEvent& event) override
    {
        ++posted;
        last = event;
    }
    void post(const KeyEvent&) override { }
    void flush() override { }
    void touchesBegin() override { }
    void touchesEnd() override { }
    void releaseHeldButton() override { }
    void print(std::string_view) override { }

    int posted = 0;
    MouseEvent last;
};

class TouchAllocationTest : public ::testing::Test {
protected:
    void handle(std::string_view datagram)
    {
        if (const auto message = parseTouchMessage(datagram))
            mouse.initiateMouseEventWithEvent(
                message->event, message->xCoordinate, message->yCoordinate, message->timeStamp);
    }

    std::size_t allocationsOf(std::string_view datagram)
    {
        const std::size_t before = allocations;
        for (int repeat = 0; repeat < 1000; ++repeat)
            handle(datagram);
        return allocations - before;
    }

    FrugalWorld world;
    MouseSimulate mouse{world, world, world, world, world};
};

TEST_F(TouchAllocationTest, AllocationsAreCounted)
{
    const std::size_t before = allocations;
    EXPECT_EQ(std::string(100, 'x').size(), 100u);
    EXPECT_GT(allocations, before);
}

TEST_F(TouchAllocationTest, TouchesFromTheDatagramToThePostedEventAllocateNothing)
{
    EXPECT_EQ(allocationsOf("MOVE,16383,12041,1712345678321;"), 0u);
    EXPECT_EQ(allocationsOf("DOWN,16383.25,-0.125,1712345678321;"), 0u);
    EXPECT_EQ(allocationsOf("UP,16383,12041,1712345678321;"), 0u);
    EXPECT_EQ(world.posted, 1000 + 1000 + 500 + 4 * 500);
    EXPECT_DOUBLE_EQ(world.last.at.x, 682.9791558580279);
}

TEST_F(TouchAllocationTest, RubbishAllocatesNothing)
{
    EXPECT_EQ(allocationsOf("MOVE,16383"), 0u);
    EXPECT_EQ(allocationsOf("MOVE,16383,\xFF,5"), 0u);
    EXPECT_EQ(allocationsOf("MOVE,123456789012345678901234567890,0.33333333333333333333333,5"), 0u);
    EXPECT_EQ(world.posted, 1000);
}

} // namespace companion::testing
