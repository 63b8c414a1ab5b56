#include "platform/posix/StdoutConsole.h"

#include "tests/support/Pipe.h"

#include <array>
#include <chrono>
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

using namespace std::chrono_literals;

TEST(StdoutConsoleTest, ATerminalThatNobodyReadsHoldsUpNobody)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_EQ(grantpt(terminal), 0);
    ASSERT_EQ(unlockpt(terminal), 0);
    const int screen = open(ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(screen, 0);
    const auto start = std::chrono::steady_clock::now();
    {
        const Redirected redirected(STDOUT_FILENO, screen);
        StdoutConsole console;
        for (int i = 0; i < 400; ++i) { // 40 kB, twice what the terminal holds, a few at a time
            console.print(std::string(99, 'x'));
            if (i % 10 == 9)
                std::this_thread::sleep_for(11ms);
        }
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
    close(terminal); // lets the thread go that hangs in its write
    close(screen);
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

TEST(StdoutConsoleTest, APipeThatNobodyReadsHoldsUpNobody)
{
    Pipe pipe;
    {
        const Redirected redirected(STDOUT_FILENO, pipe.writer());
        StdoutConsole console;
        const std::string line(1000, 'x');
        for (int i = 0; i < 2000; ++i) // 2 MB: more than the pipe's 64 KiB and the buffer take
            console.print(line);
    }
    pipe.closeReader(); // lets the thread go that hangs in its write
}

TEST(StdoutConsoleTest, WhatASlowReaderHasNotLostComesInWholeLines)
{
    Pipe pipe;
    std::string text;
    std::thread reader;
    {
        const Redirected redirected(STDOUT_FILENO, pipe.writer());
        StdoutConsole console;
        for (int i = 0; i < 2000; ++i)
            console.print(std::string(999, 'x'));
        reader = std::thread([&] { text = pipe.readAll(); });
    }
    pipe.closeWriter();
    reader.join();
    std::istringstream lines(text);
    std::size_t come = 0;
    std::size_t lost = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line == std::string(999, 'x'))
            ++come;
        else
            lost += std::stoul(line.substr(1)); // "(N lines lost)"; a broken line is no number
    }
    EXPECT_GT(lost, 0u);
    EXPECT_EQ(come + lost, 2000u);
}

TEST(StdoutConsoleTest, AReaderThatWentAwayRaisesNoSignalAndNeitherDoesAClosedOutput)
{
    std::signal(SIGPIPE, SIG_DFL); // which would end the process
    Pipe pipe;
    pipe.closeReader();
    {
        const Redirected redirected(STDOUT_FILENO, pipe.writer());
        StdoutConsole console;
        console.print("nobody");
    }
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
}

TEST(StdoutConsoleTest, ANonBlockingOutputLosesNothingThatTheBufferHolds)
{
    Pipe pipe;
    fcntl(pipe.writer(), F_SETFL, O_NONBLOCK);
    std::string text;
    {
        const Redirected redirected(STDOUT_FILENO, pipe.writer());
        StdoutConsole console;
        for (int i = 0; i < 200; ++i) // 200 kB, three times what the pipe takes at once
            console.print(std::string(999, 'x'));
        std::thread([&] {
            while (text.size() < 200'000) {
                std::array<char, 4096> buffer{};
                const ssize_t count = read(pipe.reader(), buffer.data(), buffer.size());
                if (count <= 0)
                    return;
                text.append(buffer.data(), static_cast<std::size_t>(count));
            }
        }).join();
    }
    EXPECT_EQ(text.size(), 200'000u);
}

} // namespace
} // namespace companion::testing
