#include "platform/curl/ReplyCollector.h"

#include <gtest/gtest.h>

namespace companion::testing {

TEST(ReplyCollectorTest, TheFinalResponseIsCompleteWithTheEmptyLine)
{
    ReplyCollector reply;
    EXPECT_TRUE(reply.takeHeaderLine("HTTP/1.1 200 OK\r\n"));
    EXPECT_TRUE(reply.takeHeaderLine("X-A:  b c \r\n"));
    EXPECT_FALSE(reply.hasFinalHeaders());
    EXPECT_TRUE(reply.takeHeaderLine("\r\n"));
    EXPECT_TRUE(reply.hasFinalHeaders());
    EXPECT_EQ(reply.statusCode(), 200);
    EXPECT_EQ(reply.headers(), (std::vector<HttpHeader>{{"X-A", "b c"}}));
}

TEST(ReplyCollectorTest, InterimResponsesAndTrailersLeaveNothing)
{
    ReplyCollector reply;
    for (const char* line : {"HTTP/1.1 103 Early Hints\r\n", "X-A: 1\r\n", "\r\n"})
        reply.takeHeaderLine(line);
    EXPECT_FALSE(reply.hasFinalHeaders());
    for (const char* line : {"HTTP/1.1 413 Too Large\r\n", "X-B: 2\r\n", "\r\n", "X-Trailer: 3\r\n"})
        reply.takeHeaderLine(line);
    EXPECT_EQ(reply.statusCode(), 413);
    EXPECT_EQ(reply.headers(), (std::vector<HttpHeader>{{"X-B", "2"}}));
}

TEST(ReplyCollectorTest, Status101IsFinal)
{
    ReplyCollector reply;
    reply.takeHeaderLine("HTTP/1.1 101 Switching Protocols\r\n");
    EXPECT_FALSE(reply.hasFinalHeaders());
    reply.takeHeaderLine("\r\n");
    EXPECT_TRUE(reply.hasFinalHeaders());
    EXPECT_EQ(reply.statusCode(), 101);
}

TEST(ReplyCollectorTest, AFoldedLineContinuesTheOneBefore)
{
    ReplyCollector reply;
    for (const char* line : {"HTTP/1.1 200 OK\r\n", "X-A: 1\r\n", "\t2\r\n", "\r\n"})
        reply.takeHeaderLine(line);
    EXPECT_EQ(reply.headers(), (std::vector<HttpHeader>{{"X-A", "1 2"}}));
}

TEST(ReplyCollectorTest, MoreThan256KibibytesOfFieldsAreRefused)
{
    ReplyCollector reply;
    EXPECT_TRUE(reply.takeHeaderLine("HTTP/1.1 200 OK\r\n"));
    EXPECT_TRUE(reply.takeHeaderLine(std::string(ReplyCollector::maximumHeaders - 17, 'x')));
    EXPECT_FALSE(reply.takeHeaderLine("\n"));
}

TEST(ReplyCollectorTest, MoreThan16MebibytesOfBodyAreRefused)
{
    ReplyCollector reply;
    EXPECT_TRUE(reply.takeBody(std::string(ReplyCollector::maximumBody - 1, 'x')));
    EXPECT_TRUE(reply.takeBody("y"));
    EXPECT_TRUE(reply.takeBody(""));
    EXPECT_FALSE(reply.takeBody("z"));
}

} // namespace companion::testing
