#include "cli/Json.h"
#include "cli/Command.h"
#include "cli/testing/FakeOutput.h"
#include "cli/Text.h"

#include <gmock/gmock.h>
#include <limits>

namespace companion::cli::testing {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace std::chrono_literals;

TEST(JsonTest, TextsAreQuotedAndStayOnOneLine)
{
    EXPECT_EQ(jsonText("Room \"204\" \\ Größe"), R"("Room \"204\" \\ Größe")");
    EXPECT_EQ(jsonText("a\nb\tc\rd\x1b[31m\x7f"), R"("a\nb\tc\rd\u001b[31m\u007f")");
    EXPECT_EQ(jsonText(std::string_view("\0", 1)), R"("\u0000")");
    EXPECT_EQ(jsonText("\xff!"), "\"\xEF\xBF\xBD!\"");
}

TEST(JsonTest, NumbersAreShortAndOnlyThoseThatJsonKnows)
{
    EXPECT_EQ(jsonText(jsonNumber(0)), "0");
    EXPECT_EQ(jsonText(jsonNumber(-41.5)), "-41.5");
    EXPECT_EQ(jsonText(jsonNumber(16.204)), "16.204");
    EXPECT_EQ(jsonText(jsonNumber(1'000'000)), "1000000");
    EXPECT_EQ(jsonText(jsonNumber(1'700'000'000'016)), "1700000000016");
    EXPECT_EQ(jsonText(jsonNumber(-0.000001)), "-1e-06");
    EXPECT_EQ(jsonText(jsonNumber(1e300)), "1e+300");
    EXPECT_EQ(jsonText(jsonNumber(std::numeric_limits<double>::infinity())), "null");
    EXPECT_EQ(jsonText(jsonNumber(std::numeric_limits<double>::quiet_NaN())), "null");
}

TEST(JsonTest, ObjectsKeepTheOrderOfTheirMembers)
{
    Json object = {{"b", "x"}};
    object.update({{"z", true}, {"a", nullptr}});
    EXPECT_EQ(jsonText(object), R"({"b":"x","z":true,"a":null})");
}

TEST(ReportTest, WhatWasDoneGoesToStandardOutput)
{
    FakeOutput output;
    report({ExitStatus::done, "done so", {{"n", 1}}}, "ping", /*isJson=*/false, output);
    EXPECT_THAT(output.lines, ElementsAre("out done so"));
    report({ExitStatus::done, "", {}}, "ping", /*isJson=*/false, output);
    EXPECT_THAT(output.lines, ElementsAre("out done so"));
}

TEST(ReportTest, FailureIsOneLineOnStandardErrorWithJsonToo)
{
    FakeOutput output;
    report({ExitStatus::network, "no answer", {{"address", "10.0.0.1"}}}, "ping",
        /*isJson=*/true, output);
    EXPECT_THAT(output.lines,
        ElementsAre(R"(out {"command":"ping","exitStatus":4,"error":"no answer","address":"10.0.0.1"})",
            "err panelctl: no answer"));
}

TEST(ReportTest, JsonOfSuccessStandsAlone)
{
    FakeOutput output;
    report({ExitStatus::done, "done so", {}}, "ping", /*isJson=*/true, output);
    EXPECT_THAT(output.lines, ElementsAre(R"(out {"command":"ping","exitStatus":0,"error":null})"));
}

TEST(SecondsTextTest, DecimalsAreAsManyAsNeeded)
{
    EXPECT_EQ(secondsText(5s), "5 s");
    EXPECT_EQ(secondsText(250ms), "0.25 s");
    EXPECT_EQ(secondsText(10'001ms), "10.001 s");
    EXPECT_EQ(secondsText(0ms), "0 s");
}

TEST(ProgressBarTest, BytesAreToldInUnitsOfThousand)
{
    EXPECT_EQ(byteText(1), "1 byte");
    EXPECT_EQ(byteText(999), "999 bytes");
    EXPECT_EQ(byteText(1000), "1.0 kB");
    EXPECT_EQ(byteText(999'999), "999.9 kB");
    EXPECT_EQ(byteText(1'000'000), "1.0 MB");
    EXPECT_EQ(byteText(2'549'999'999), "2.5 GB");
}

TEST(ProgressBarTest, BarGrowsWithWhatWasSentAndNeverBeyondTheWidth)
{
    EXPECT_EQ(progressBar(0, 2000, 50), "[>                      ]   0 %  0 bytes of 2.0 kB");
    EXPECT_EQ(progressBar(1000, 2000, 49), "[===========>           ]  50 %  1.0 kB of 2.0 kB");
    EXPECT_EQ(progressBar(2000, 2000, 40), "[==============] 100 %  2.0 kB of 2.0 kB");
    EXPECT_EQ(progressBar(1999, 2000, 300).size(), 50 + 3 + 23U);
    EXPECT_EQ(progressBar(3000, 2000, 40), "[==============] 100 %  3.0 kB of 2.0 kB");
    EXPECT_EQ(progressBar(0, 0, 40).find("100 %") != std::string::npos, true);
    for (std::size_t width = 0; width < 120; ++width)
        EXPECT_LE(progressBar(123'456, 987'654'321, width).size(), width);
}

TEST(ProgressBarTest, NarrowTerminalGetsTheNumbersOnly)
{
    EXPECT_EQ(progressBar(1000, 2000, 30), " 50 %  1.0 kB of 2.0 kB");
    EXPECT_EQ(progressBar(1000, 2000, 8), " 50 %  1");
}

} // namespace companion::cli::testing
