#include "platform/posix/StdoutConsole.h"
#include "platform/posix/SyslogLog.h"
#include "tests/support/Pipe.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <sstream>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

namespace companion::testing {
namespace {

/// More than the 64 KiB of a pipe and the writer's buffer hold together.
void printTwoMegabytes(Console& console)
{
    for (int i = 0; i < 2000; ++i)
        console.print(std::string(999, 'x'));
}

TEST(StdoutConsoleTest, PrintsLinesToStandardOutput)
{
    Pipe pipe;
    {
        const Redirected redirected(STDOUT_FILENO, pipe.writer());
        StdoutConsole console;
        console.print("::: Mouse Down");
        console.print("::: Mouse Up");
    }
    pipe.closeWriter();
    EXPECT_EQ(pipe.readAll(), "::: Mouse Down\n::: Mouse Up\n");
}

TEST(StdoutConsoleTest, ATerminalThatNobodyReadsBlocksNobody)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_EQ(grantpt(terminal), 0);
    ASSERT_EQ(unlockpt(terminal), 0);
    const int screen = open(ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(screen, 0);
    {
        const Redirected redirected(STDOUT_FILENO, screen);
        StdoutConsole console;
        printTwoMegabytes(console);
    }
    close(terminal); // ends the write that the thread blocks in
    close(screen);
}

TEST(StdoutConsoleTest, APipeThatNobodyReadsBlocksNobody)
{
    Pipe pipe;
    {
        const Redirected redirected(STDOUT_FILENO, pipe.writer());
        StdoutConsole console;
        printTwoMegabytes(console);
    }
    pipe.closeReader(); // ends the write that the thread blocks in
}

TEST(StdoutConsoleTest, ASlowReaderGetsWholeLinesAndTheNumberOfThoseDropped)
{
    Pipe pipe;
    std::string text;
    std::thread reader;
    {
        const Redirected redirected(STDOUT_FILENO, pipe.writer());
        StdoutConsole console;
        printTwoMegabytes(console);
        reader = std::thread([&] { text = pipe.readAll(); });
    }
    pipe.closeWriter();
    reader.join();
    std::istringstream lines(text);
    std::size_t written = 0;
    std::size_t dropped = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line == std::string(999, 'x'))
            ++written;
        else
            dropped += std::stoul(line.substr(1)); // "(N lines lost)"; throws for a broken line
    }
    EXPECT_GT(dropped, 0u);
    EXPECT_EQ(written + dropped, 2000u);
}

TEST(StdoutConsoleTest, AReaderThatHasGoneRaisesNoSignal)
{
    std::signal(SIGPIPE, SIG_DFL); // which would end the process
    Pipe pipe;
    pipe.closeReader();
    const Redirected redirected(STDOUT_FILENO, pipe.writer());
    StdoutConsole console;
    console.print("nobody");
}

TEST(StdoutConsoleTest, AClosedStandardOutputDropsLines)
{
    const int saved = dup(STDOUT_FILENO);
    close(STDOUT_FILENO);
    {
        StdoutConsole console;
        console.print("nowhere");
    }
    dup2(saved, STDOUT_FILENO);
    close(saved);
}

TEST(StdoutConsoleTest, AFileOpenedUnderTheNumberOfAClosedStandardOutputGetsNoLines)
{
    Pipe pipe;
    Pipe other;
    const int saved = dup(STDOUT_FILENO);
    {
        const Redirected redirected(STDOUT_FILENO, pipe.writer());
        StdoutConsole console;
        dup2(other.writer(), STDOUT_FILENO);
        console.print("for the pipe");
    }
    dup2(saved, STDOUT_FILENO);
    close(saved);
    pipe.closeWriter();
    other.closeWriter();
    EXPECT_EQ(pipe.readAll(), "for the pipe\n");
    EXPECT_EQ(other.readAll(), "");
}

TEST(StdoutConsoleTest, ANonBlockingPipeLosesNothingThatTheBufferHolds)
{
    Pipe pipe;
    fcntl(pipe.writer(), F_SETFL, O_NONBLOCK);
    std::string text;
    {
        const Redirected redirected(STDOUT_FILENO, pipe.writer());
        StdoutConsole console;
        for (int i = 0; i < 200; ++i) // 200 kB, three times what the pipe takes at once
            console.print(std::string(999, 'x'));
        std::array<char, 4096> buffer{};
        for (ssize_t count = 1; text.size() < 200'000 && count > 0;) {
            count = read(pipe.reader(), buffer.data(), buffer.size());
            text.append(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        }
    }
    EXPECT_EQ(text.size(), 200'000u);
}

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

TEST(SyslogLogTest, AStandardErrorThatNobodyReadsBlocksNobody)
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
