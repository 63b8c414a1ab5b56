#include "touchback/TouchMessage.h"

#include <gtest/gtest.h>
#include <ostream>
#include <string>

using namespace std::string_literals;
using namespace std::string_view_literals;

namespace companion {

void PrintTo(const TouchMessage& message, std::ostream* out)
{
    *out << '[' << message.event << '|' << message.xCoordinate << '|' << message.yCoordinate << '|'
         << message.timeStamp << ']';
}

} // namespace companion

namespace companion::testing {

TEST(TouchMessageTest, RecordIsCutAtItsCommas)
{
    EXPECT_EQ(parseTouchMessage("DOWN,16383,12041,1712345678321"),
        (TouchMessage{"DOWN", "16383", "12041", "1712345678321"}));
}

TEST(TouchMessageTest, SemicolonEndsTheRecord)
{
    const TouchMessage down{"DOWN", "100", "200", "5"};
    EXPECT_EQ(parseTouchMessage("DOWN,100,200,5"), down);
    EXPECT_EQ(parseTouchMessage("DOWN,100,200,5;"), down);
    EXPECT_EQ(parseTouchMessage("DOWN,100,200,5;MOVE,1,1,6"), down);
    EXPECT_EQ(parseTouchMessage("DOWN,100,200,5;;"), down);
}

TEST(TouchMessageTest, FieldsAfterTheFourthAreLeftAlone)
{
    const TouchMessage up{"UP", "100", "200", "5"};
    EXPECT_EQ(parseTouchMessage("UP,100,200,5,extra"), up);
    EXPECT_EQ(parseTouchMessage("UP,100,200,5,extra,more;"), up);
    EXPECT_EQ(parseTouchMessage("UP,100,200,5,"), up);
}

TEST(TouchMessageTest, RecordOfFewerThanFourFieldsIsNothing)
{
    for (const char* datagram : {"", ";", "DOWN", "DOWN,", "DOWN,1", "DOWN,1,2", "DOWN,1,2;3", "DOWN,1;2,3,4",
             ";DOWN,1,2,3", "abc", ",,"})
        EXPECT_EQ(parseTouchMessage(datagram), std::nullopt) << datagram;
    EXPECT_EQ(parseTouchMessage({}), std::nullopt);
}

TEST(TouchMessageTest, FourEmptyFieldsAreARecord)
{
    EXPECT_EQ(parseTouchMessage(",,,"), TouchMessage{});
    EXPECT_EQ(parseTouchMessage(",,,;"), TouchMessage{});
    EXPECT_EQ(parseTouchMessage("UP,1,2,"), (TouchMessage{"UP", "1", "2", ""}));
}

TEST(TouchMessageTest, FieldsAreNotTrimmed)
{
    EXPECT_EQ(parseTouchMessage(" UP , 1,2\t,\r\n"), (TouchMessage{" UP ", " 1", "2\t", "\r\n"}));
    EXPECT_EQ(parseTouchMessage("UP\0,1,2,3"s), (TouchMessage{"UP\0"sv, "1", "2", "3"}));
}

TEST(TouchMessageTest, FieldsMayHoldAnyUtf8)
{
    EXPECT_EQ(parseTouchMessage("\xC3\x9CP,\xE2\x82\xAC,\xF0\x9F\x98\x80,t"),
        (TouchMessage{"\xC3\x9CP", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "t"}));
}

TEST(TouchMessageTest, DatagramThatIsNotUtf8AnywhereIsFourEmptyFields)
{
    const char* const datagrams[] = {"\xFF", "UP,1,2,3\xFF", "UP,1,2,3;\xFF", "UP,1,2,3,extra;more\x80",
        "UP,1,2,3;\xC0\xAF", "UP,1,2,3;\xED\xA0\x80", "UP,1,2,3;\xF4\x90\x80\x80", "UP,1,2,3;\xE2\x82",
        "\xEF\xBB"};
    for (const char* datagram : datagrams)
        EXPECT_EQ(parseTouchMessage(datagram), TouchMessage{}) << ::testing::PrintToString(datagram);
}

TEST(TouchMessageTest, FieldsAreViewsIntoTheDatagram)
{
    const std::string datagram = "MOVE,16383,12041,1712345678321;";
    const auto message = parseTouchMessage(datagram);
    ASSERT_TRUE(message);
    EXPECT_EQ(message->event.data(), datagram.data());
    EXPECT_EQ(message->timeStamp.data(), datagram.data() + 17);
}

TEST(TouchMessageTest, LargestDatagramOfRubbishIsCutLikeAnyOther)
{
    EXPECT_EQ(parseTouchMessage(std::string(65507, ',')), TouchMessage{});
    EXPECT_EQ(parseTouchMessage(std::string(65507, ';')), std::nullopt);
    EXPECT_EQ(parseTouchMessage(std::string(65507, 'x')), std::nullopt);
}

} // namespace companion::testing
