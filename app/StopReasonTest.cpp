#include "app/StopReason.h"

#include <gtest/gtest.h>

namespace companion::testing {

namespace {

constexpr auto goOn = "\n\nIt has been started again. Pick your panel to go on.";

} // namespace

TEST(StopReasonTest, AKnownErrorIsToldInAUsersWords)
{
    EXPECT_EQ(stopReason("An upload has no data."),
        std::string("The file to be sent could no longer be read.") + goOn);
    EXPECT_EQ(stopReason("An exception was not caught: std::bad_alloc"),
        std::string("This computer had no memory left.") + goOn);
}

TEST(StopReasonTest, AMissingPanelIsToldForUploadsAndForRequests)
{
    EXPECT_EQ(stopReason("An upload has no panel address."),
        std::string("A file was to be sent, but no panel was paired any more.") + goOn);
    EXPECT_EQ(stopReason("A panel request has no panel address."),
        std::string("A panel was needed, but none was paired.") + goOn);
}

TEST(StopReasonTest, AnyOtherErrorIsQuoted)
{
    EXPECT_EQ(stopReason("no such pane"), std::string("It met an error of its own: no such pane") + goOn);
}

} // namespace companion::testing
