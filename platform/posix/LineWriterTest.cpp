#include "platform/posix/LineWriter.h"

#include "tests/support/Pipe.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace companion::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::EndsWith;
using ::testing::StartsWith;

/// A sink that hangs until it is let go.
struct Gate {
    std::promise<void> entered;
    std::promise<void> open;
    std::string taken;
    std::once_flag once;

    LineSink sink(std::shared_ptr<Gate> self)
    {
        return {[self = std::move(self)](std::string_view lines) {
            std::call_once(self->once, [&] {
                self->entered.set_value();
                self->open.get_future().wait();
            });
            self->taken += lines;
        }};
    }
};

TEST(LineWriterTest, LinesOfOneThreadComeOutInOrderBeforeTheWriterIsGone)
{
    std::string expected;
    const auto text = std::make_shared<std::string>();
    {
        LineWriter writer({[text](std::string_view lines) { *text += lines; }});
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
        LineWriter writer({[text](std::string_view lines) { *text += lines; }});
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
        LineWriter writer({[text](std::string_view lines) { *text += lines; }});
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

/// What was written in which way.
struct TwoWays {
    std::string atOnce;
    std::string byThread;
    std::thread::id thread;
    std::size_t mostBytes = std::string::npos;

    LineSink sink()
    {
        return {[this](std::string_view lines) { byThread += lines; },
            [this](std::string_view lines) {
                const std::string_view taken = lines.substr(0, mostBytes);
                atOnce += taken;
                thread = std::this_thread::get_id();
                return taken.size();
            }};
    }
};

TEST(LineWriterTest, ALineThatNeedsNoWaitingIsWrittenByWhoeverHasIt)
{
    TwoWays ways;
    LineWriter writer(ways.sink());
    writer.write("Pinging...");
    EXPECT_EQ(ways.atOnce, "Pinging...\n");
    EXPECT_EQ(ways.thread, std::this_thread::get_id());
}

TEST(LineWriterTest, Of100LinesInARowNoMoreThan16In10MillisecondsAreWrittenAtOnceAndAllInOrder)
{
    TwoWays ways;
    std::string expected;
    const auto start = std::chrono::steady_clock::now();
    {
        LineWriter writer(ways.sink());
        for (int i = 0; i < 100; ++i) {
            writer.write(std::to_string(i));
            expected += std::to_string(i) + "\n";
        }
    }
    const auto periods = (std::chrono::steady_clock::now() - start) / 10ms + 1;
    EXPECT_EQ(ways.atOnce.substr(0, 5), "0\n1\n2");
    EXPECT_LE(std::count(ways.atOnce.begin(), ways.atOnce.end(), '\n'), 16 * periods);
    EXPECT_EQ(ways.atOnce.size() + ways.byThread.size(), expected.size());
    if (periods == 1) {
        EXPECT_EQ(ways.atOnce + ways.byThread, expected);
    }
}

TEST(LineWriterTest, WhatDoesNotGoAtOnceFollowsByTheThread)
{
    TwoWays ways;
    ways.mostBytes = 4;
    {
        LineWriter writer(ways.sink());
        writer.write("Socket Ready");
    }
    EXPECT_EQ(ways.atOnce, "Sock");
    EXPECT_EQ(ways.byThread, "et Ready\n");
}

TEST(LineWriterTest, AFileIsNeverWrittenToAtOnceAndAPipeIs)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), std::fclose);
    Pipe pipe;
    EXPECT_FALSE(descriptorSink(fileno(file.get())).writeAtOnce);
    EXPECT_EQ(descriptorSink(pipe.writer()).writeAtOnce("Socket Ready\n"), 13u);
    pipe.closeWriter();
    EXPECT_EQ(pipe.readAll(), "Socket Ready\n");
}

TEST(LineWriterTest, NothingIsWrittenAtOnceToAFullPipeOrOneThatNobodyReads)
{
    Pipe pipe(O_CLOEXEC | O_NONBLOCK);
    const LineSink sink = descriptorSink(pipe.writer());
    while (write(pipe.writer(), "xxxx", 4) == 4) { }
    EXPECT_EQ(sink.writeAtOnce("no room\n"), 0u);
    pipe.closeReader();
    EXPECT_EQ(sink.writeAtOnce("nobody\n"), 0u);
}

TEST(LineWriterTest, NothingIsWrittenAtOnceToAFullSocketOrOneThatNobodyReads)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    const LineSink sink = descriptorSink(ends[0]);
    std::size_t written = 0;
    while (const std::size_t count = sink.writeAtOnce(std::string(99, 'x') + "\n"))
        written += count;
    EXPECT_GT(written, 1000u);
    close(ends[1]);
    EXPECT_EQ(sink.writeAtOnce("nobody\n"), 0u);
    close(ends[0]);
}

} // namespace
} // namespace companion::testing
