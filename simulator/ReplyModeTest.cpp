#include "simulator/ReplyMode.h"

#include <gtest/gtest.h>

namespace companion::simulator {
namespace {

using namespace std::chrono_literals;
using Kind = ReplyMode::Kind;

TEST(ReplyModeTest, EveryModeReadsItsOwnDescription)
{
    for (const char* text :
        {"ok", "cast-off", "busy", "text CAST_OFF and  more", "status 404", "status 500 not today", "silence",
            "close", "invalid", "cut", "huge 10", "endless", "delay 250 ok", "delay 1 text Device is busy"}) {
        const auto mode = ReplyMode::parse(text);
        ASSERT_TRUE(mode) << text;
        EXPECT_EQ(mode->description, text);
    }
}

TEST(ReplyModeTest, DelayAloneIsADelayedOk)
{
    const auto mode = ReplyMode::parse("delay 250");
    ASSERT_TRUE(mode);
    EXPECT_EQ(mode->kind, Kind::Ok);
    EXPECT_EQ(mode->delay, 250ms);
}

TEST(ReplyModeTest, SurroundingBlanksAndLineEndsAreIgnored)
{
    const auto mode = ReplyMode::parse(" busy\r\n");
    ASSERT_TRUE(mode);
    EXPECT_EQ(mode->kind, Kind::Busy);
    EXPECT_EQ(mode->description, "busy");
}

TEST(ReplyModeTest, StatusGoesFrom200To599)
{
    EXPECT_TRUE(ReplyMode::parse("status 200"));
    EXPECT_TRUE(ReplyMode::parse("status 599"));
    EXPECT_FALSE(ReplyMode::parse("status 199"));
    EXPECT_FALSE(ReplyMode::parse("status 600"));
}

TEST(ReplyModeTest, AnythingElseIsRefused)
{
    for (const char* text : {"", "OK", "ok ok", "status", "status x", "huge", "huge -1", "huge 1000001",
             "delay", "delay x", "delay 3600001", "delay 1 delay 2", "text", "cast off"})
        EXPECT_FALSE(ReplyMode::parse(text)) << text;
}

TEST(UploadModeTest, EveryModeReadsItsOwnDescription)
{
    for (const char* text :
        {"ok", "status 500", "status 413 early", "reset", "cut", "silence", "slow", "disk-full"}) {
        const auto mode = UploadMode::parse(text);
        ASSERT_TRUE(mode) << text;
        EXPECT_EQ(mode->description, text);
    }
}

TEST(UploadModeTest, AnythingElseIsRefused)
{
    for (const char* text : {"", "status", "status 100", "status 413 late", "early", "slow 1"})
        EXPECT_FALSE(UploadMode::parse(text)) << text;
}

} // namespace
} // namespace companion::simulator
