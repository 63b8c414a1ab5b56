#include "platform/posix/SyslogLog.h"

#include "tests/support/Pipe.h"

#include <string>

#include <gtest/gtest.h>

#include <unistd.h>

namespace companion::testing {
namespace {

TEST(SyslogLogTest, WritesItsLinesToStandardErrorToo)
{
    Pipe pipe;
    {
        const Redirected redirected(STDERR_FILENO, pipe.writer());
        SyslogLog log;
        log.log("Socket Ready");
        log.log("100% %s %n\x1b[2J");
    }
    pipe.closeWriter();
    EXPECT_EQ(pipe.readAll(), "Socket Ready\n100% %s %n\\x1b[2J\n");
}

TEST(SyslogLogTest, AStandardErrorThatNobodyReadsHoldsUpNobody)
{
    Pipe pipe;
    {
        const Redirected redirected(STDERR_FILENO, pipe.writer());
        SyslogLog log;
        for (int i = 0; i < 2000; ++i)
            log.log(std::string(1000, 'x'));
    }
    pipe.closeReader();
}

} // namespace
} // namespace companion::testing
