// Counts heap allocations by standing in for malloc, which sanitizers do as well: this test is left out under them.
#include "platform/x11/XTestMouseEventPoster.h"
#include "tests/support/XvfbServer.h"

#include <gtest/gtest.h>

#include <atomic>

namespace {

std::atomic<long> allocations = 0;

} // namespace

extern "C" {

void* __libc_malloc(std::size_t size);

void* malloc(std::size_t size)
{
    ++allocations;
    return __libc_malloc(size);
}
}

namespace companion::testing {

TEST(HeapUseTest, TenThousandDragsAllocateNothing)
{
    XvfbServer xvfb;
    std::string whyNot;
    auto poster = XTestMouseEventPoster::open(
        xvfb.display(), [] { return ScreenMapping{}; }, whyNot);
    poster->post(*poster->makeMouseEvent(MouseEventType::leftDown, {1, 2}));
    poster->post(*poster->makeMouseEvent(MouseEventType::leftDragged, {2, 2}));
    poster->sync(); // also takes in what the server says about the press

    const long before = allocations;
    for (int i = 0; i < 10'000; ++i) {
        poster->post(*poster->makeMouseEvent(MouseEventType::leftDragged, {double(i % 1200), 20}));
        poster->flush();
    }
    EXPECT_EQ(allocations - before, 0);
    EXPECT_GT(before, 0) << "malloc is not counted";
}

} // namespace companion::testing
