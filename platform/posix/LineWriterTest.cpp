#include "platform/posix/LineWriter.h"

#include "platform/posix/StdoutConsole.h"
#include "platform/posix/SyslogLog.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <future>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include <fcntl.h>
#include <unistd.h>

namespace companion::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::EndsWith;
using ::testing::StartsWith;

class Pipe {
public:
    explicit Pipe(int flags = O_CLOEXEC)
    {
        if (pipe2(m_ends.data(), flags) != 0)
            m_ends = {-1, -1};
    }
    ~Pipe()
    {
        closeReader();
        closeWriter();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int reader() const { return m_ends[0]; }
    int writer() const { return m_ends[1]; }
    void closeReader() { closeEnd(0); }
    void closeWriter() { closeEnd(1); }

    /// All that comes until the last writer is gone.
    std::string readAll() const
    {
        std::string text;
        std::array<char, 65536> buffer{};
        for (ssize_t count = 1; count > 0;) {
            count = read(reader(), buffer.data(), buffer.size());
            if (count > 0)
                text.append(buffer.data(), static_cast<std::size_t>(count));
        }
        return text;
    }

private:
    void closeEnd(std::size_t end)
    {
        if (m_ends[end] >= 0)
            close(m_ends[end]);
        m_ends[end] = -1;
    }

    std::array<int, 2> m_ends{};
};

/// Another descriptor in the place of standard output or standard error.
class Redirected {
public:
    Redirected(int standard, int replacement)
        : m_standard(standard)
        , m_saved(dup(standard))
    {
        std::fflush(nullptr);
        dup2(replacement, standard);
    }
    ~Redirected()
    {
        dup2(m_saved, m_standard);
        close(m_saved);
    }
    Redirected(const Redirected&) = delete;
    Redirected& operator=(const Redirected&) = delete;

private:
    int m_standard;
    int m_saved;
};

/// A sink that hangs until it is let go.
struct Gate {
    std::promise<void> entered;
    std::promise<void> open;
    std::string taken;
    std::once_flag once;

    LineWriter::Sink sink(std::shared_ptr<Gate> self)
    {
        return [self = std::move(self)](std::string_view lines) {
            std::call_once(self->once, [&] {
                self->entered.set_value();
                self->open.get_future().wait();
            });
            self->taken += lines;
        };
    }
};

TEST(LineWriterTest, LinesOfOneThreadComeOutInOrderBeforeTheWriterIsGone)
{
    std::string expected;
    const auto text = std::make_shared<std::string>();
    {
        LineWriter writer([text](std::string_view lines) { *text += lines; });
        for (int i = 0; i < 1000; ++i) {
            writer.write("line " + std::to_string(i));
            expected += "line " + std::to_string(i) + "\n";
        }
    }
    EXPECT_EQ(*text, expected);
}

TEST(LineWriterTest, FourThreadsDoNotBreakEachOthersLines)
{
    const auto text = std::make_shared<std::string>();
    {
        LineWriter writer([text](std::string_view lines) { *text += lines; });
        std::vector<std::jthread> threads;
        for (const char letter : {'a', 'b', 'c', 'd'}) {
            threads.emplace_back([&writer, letter] {
                for (int i = 0; i < 500; ++i)
                    writer.write(std::string(20, letter));
            });
        }
    }
    EXPECT_EQ(text->size(), 4u * 500u * 21u);
    for (std::size_t at = 0; at + 21 <= text->size(); at += 21)
        EXPECT_EQ(text->substr(at, 21), std::string(20, (*text)[at]) + "\n");
}

TEST(LineWriterTest, ALineWithALineBreakIsOneLineAndOneOf100000BytesIsCutOff)
{
    const auto text = std::make_shared<std::string>();
    {
        LineWriter writer([text](std::string_view lines) { *text += lines; });
        writer.write("one\ntwo");
        writer.write(std::string(100'000, 'x'));
    }
    EXPECT_THAT(*text, StartsWith("one\\ntwo\nxxx"));
    EXPECT_EQ(text->size(), std::string("one\\ntwo\n").size() + 8 * 1024 + 4);
}

TEST(LineWriterTest, WhileTheSinkHangs256KiBWaitAndTheRestIsLostAndTold)
{
    const auto gate = std::make_shared<Gate>();
    {
        LineWriter writer(gate->sink(gate));
        writer.write("first");
        gate->entered.get_future().wait();
        const std::string line(1023, 'x');
        for (int i = 0; i < 300; ++i)
            writer.write(line);
        gate->open.set_value();
    }
    EXPECT_EQ(gate->taken.substr(0, 6), "first\n");
    EXPECT_THAT(gate->taken, EndsWith("x\n(44 lines lost)\n"));
    EXPECT_EQ(gate->taken.size(), 6 + 256 * 1024 + std::string("(44 lines lost)\n").size());
}

TEST(LineWriterTest, AWriterWhoseSinkHangsGoesAllTheSame)
{
    const auto gate = std::make_shared<Gate>();
    const auto start = std::chrono::steady_clock::now();
    {
        LineWriter writer(gate->sink(gate));
        writer.write("first");
        gate->entered.get_future().wait();
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
    gate->open.set_value();
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
