#include "platform/FatalError.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace companion::testing {

using namespace std::chrono_literals;

namespace {

void say(const std::string& text)
{
    std::fprintf(stderr, "%s\n", text.c_str());
}

/// Two threads fail, the second one while the first one's last wish takes its time.
void failTwiceAtOnce()
{
    static std::atomic<bool> isFirstDying = false;
    setLastWish([](std::string_view what) {
        isFirstDying = true;
        std::this_thread::sleep_for(300ms);
        say("the last wish of " + std::string(what) + " is fulfilled");
    });
    std::thread second([] {
        while (!isFirstDying)
            std::this_thread::sleep_for(1ms);
        fatalError("the second");
    });
    fatalError("the first");
}

void failInTheLastWish()
{
    setLastWish([](std::string_view what) {
        say("wish for " + std::string(what));
        fatalError("the wish itself");
    });
    fatalError("the first");
}

} // namespace

TEST(FatalErrorDeathTest, TellsItsLastWishAndStandardErrorWhy)
{
    EXPECT_DEATH(fatalError("no panel address"), "^Fatal error: no panel address\n$");
    EXPECT_DEATH(
        {
            setLastWish([](std::string_view what) { say("wish for " + std::string(what)); });
            fatalError("no panel address");
        },
        "^wish for no panel address\nFatal error: no panel address\n$");
}

TEST(FatalErrorDeathTest, AnotherThreadThatFailsMeanwhileDoesNotCutTheLastWishShort)
{
    EXPECT_DEATH(failTwiceAtOnce(), "^the last wish of the first is fulfilled\nFatal error: the first\n$");
}

TEST(FatalErrorDeathTest, ALastWishThatFailsItselfIsTheEndAtOnce)
{
    EXPECT_DEATH(failInTheLastWish(), "^wish for the first\n$");
}

} // namespace companion::testing
