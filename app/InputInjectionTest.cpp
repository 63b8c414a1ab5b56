#include "app/InputInjection.h"

#include "platform/testing/FakeLog.h"
#include "platform/testing/FakeMouseEventPoster.h"

#include <gtest/gtest.h>

namespace companion::testing {

namespace {

const MouseEvent press{MouseEventType::leftDown, {1103, 207}, 0};

} // namespace

class InputInjectionTest : public ::testing::Test {
protected:
    InputCandidate working(InputWay way)
    {
        return {way, [this](const auto& opened) { opened(makePoster(), ""); }};
    }

    static InputCandidate refused(InputWay way, const std::string& whyNot)
    {
        return {way, [whyNot](const auto& opened) { opened(nullptr, whyNot); }};
    }

    InputCandidate late(InputWay way)
    {
        return {way, [this](auto opened) { answer = std::move(opened); }};
    }

    std::unique_ptr<FakeMouseEventPoster> makePoster()
    {
        auto made = std::make_unique<FakeMouseEventPoster>(transcript);
        poster = made.get();
        return made;
    }

    InputInjection& inject(std::vector<InputCandidate> candidates)
    {
        return injection.emplace(/*isWaylandSession=*/true, std::move(candidates), log,
            [this](const std::string& sentence) { transcript.add("status " + sentence); });
    }

    Transcript transcript;
    FakeSystemLog log{transcript};
    FakeMouseEventPoster* poster = nullptr;
    InputCandidate::Opened answer;
    std::optional<InputInjection> injection;
};

TEST_F(InputInjectionTest, TheFirstCandidateThatOpensIsPickedAndNoOtherTried)
{
    inject({refused(InputWay::virtualPointer, "no virtual pointer"), working(InputWay::xtest),
               {InputWay::xtest, [](const auto&) { FAIL(); }}})
        .post(press);
    EXPECT_EQ(transcript.take(),
        "log On Wayland touches reach X11 programs only; an X11 session has no such limit (no virtual pointer)\ndown");
}

TEST_F(InputInjectionTest, TouchesAreDroppedUntilTheChoiceIsMade)
{
    InputInjection& injecting = inject({late(InputWay::xtest)});
    injecting.touchesBegin();
    injecting.post(press);
    EXPECT_EQ(transcript.take(), "");
    answer(makePoster(), "");
    EXPECT_EQ(poster->touchesBegan, 1);
    transcript.clear();
    injecting.post(press);
    EXPECT_EQ(transcript.take(), "down");
}

TEST_F(InputInjectionTest, ALateChoiceBeginsNoTouchesThatHaveEnded)
{
    InputInjection& injecting = inject({late(InputWay::xtest)});
    injecting.touchesBegin();
    injecting.touchesEnd();
    answer(makePoster(), "");
    EXPECT_EQ(poster->touchesBegan, 0);
}

TEST_F(InputInjectionTest, AnAnswerAfterTheEndIsIgnored)
{
    inject({late(InputWay::xtest)});
    injection.reset();
    answer(makePoster(), "");
    EXPECT_EQ(transcript.take(), "");
}

TEST_F(InputInjectionTest, WithoutAWayTheReasonsAreToldAndTriedAgainWheneverTouchesBegin)
{
    bool isThere = false;
    InputInjection& injecting = inject({{InputWay::portal,
        [&](const auto& opened) { isThere ? opened(makePoster(), "") : opened(nullptr, "no portal"); }}});
    injecting.post(press);
    EXPECT_EQ(transcript.take(), "");
    ASSERT_TRUE(injecting.makeMouseEvent(MouseEventType::leftDown, {1, 2}));
    injecting.touchesBegin();
    EXPECT_EQ(transcript.take(),
        "status Cannot inject input: no portal; install xdg-desktop-portal and its backend for this desktop");
    isThere = true;
    injecting.touchesBegin();
    ASSERT_TRUE(poster);
    EXPECT_EQ(poster->touchesBegan, 1);
}

TEST_F(InputInjectionTest, WhereOnlyX11ProgramsAreReachedTheNextTouchOnTriesThePortalAgain)
{
    InputInjection& injecting = inject({late(InputWay::portal), working(InputWay::xtest)});
    answer(nullptr, "no portal");
    transcript.clear();
    injecting.touchesBegin();
    injecting.post(press);
    EXPECT_EQ(transcript.take(), "down");
    answer(nullptr, "no portal");
    EXPECT_EQ(transcript.take(),
        "status On Wayland touches reach X11 programs only; an X11 session has no such limit (no portal)");
    injecting.touchesBegin();
    answer(makePoster(), "");
    EXPECT_EQ(poster->touchesBegan, 1);
    EXPECT_NE(transcript.take().find("RemoteDesktop portal"), std::string::npos);
    answer = nullptr;
    injecting.touchesBegin();
    EXPECT_FALSE(answer);
}

TEST_F(InputInjectionTest, AWayThatIsFoundLaterTakesTheObstacleBackButForThePortalWhichHasItsOwn)
{
    for (const InputWay way : {InputWay::virtualPointer, InputWay::portal}) {
        InputInjection& injecting = inject({late(way)});
        injecting.touchesBegin();
        answer(nullptr, "nobody there");
        injecting.touchesBegin();
        transcript.clear();
        answer(makePoster(), "");
        const std::string told = transcript.take();
        EXPECT_TRUE(told.starts_with("log Touches are injected ")) << told;
        EXPECT_EQ(told.ends_with("\nstatus "), way == InputWay::virtualPointer) << told;
    }
}

} // namespace companion::testing
