#pragma once

#include "platform/x11/XTestMouseEventPoster.h"
#include "tests/support/XRecorder.h"
#include "tests/support/XvfbServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace companion::testing {

using namespace std::chrono_literals;
using enum MouseEventType;

// One server for the whole program; each test reads only what it posted itself.
inline XvfbServer& server()
{
    static XvfbServer xvfb("1366x768");
    return xvfb;
}

inline std::unique_ptr<XTestMouseEventPoster> openPoster(
    const std::string& display, XTestMouseEventPoster::Mapping mapping,
    XTestMouseEventPoster::Now now = std::chrono::steady_clock::now,
    XTestMouseEventPoster::Rules rules = [] { return ClickRules(); })
{
    std::string whyNot;
    auto poster =
        XTestMouseEventPoster::open(display, std::move(mapping), whyNot, std::move(rules), std::move(now));
    if (!poster)
        throw std::runtime_error(whyNot);
    return poster;
}

/// A poster on a server of 1366 x 768 pixels, with its own clock, and what the server recorded of it.
class PosterTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        post(leftDragged, {3, 4}); // a known place for the pointer
        recorded();
    }

    void TearDown() override
    {
        poster.reset();
        EXPECT_THAT(recorder.take(), ::testing::IsEmpty()) << "something was still held";
    }

    void post(MouseEventType type, Point at, std::int64_t clickState = 0)
    {
        poster->post(MouseEvent{type, at, clickState});
    }

    void tap(Point at)
    {
        post(leftDown, at);
        post(leftUp, at);
    }

    void doubleClick(Point at)
    {
        post(leftDown, at, 1);
        post(leftUp, at, 1);
        post(leftDown, at, 2);
        post(leftUp, at, 2);
    }

    std::string recorded()
    {
        poster->sync();
        return recorder.takeText();
    }

    std::string requestedMotions()
    {
        poster->sync();
        return recorder.takeRequestedMotions();
    }

    std::optional<ScreenMapping> mapping = ScreenMapping{.size = {1366, 768}};
    ClickSeries::TimePoint now{71h};
    ClickRules rules;
    XRecorder recorder{server().display()};
    std::unique_ptr<XTestMouseEventPoster> poster = openPoster(
        server().display(), [this] { return mapping; }, [this] { return now; }, [this] { return rules; });
};

} // namespace companion::testing
