#include "platform/posix/DatagramQueue.h"

#include <arpa/inet.h>
#include <deque>
#include <gtest/gtest.h>
#include <thread>

namespace companion::testing {

namespace {

const std::vector<std::string> everything{""};
const std::vector<std::string> pressesAndReleases{"DOWN,", "UP,"};

DatagramSource sourceWithPort(std::uint16_t port)
{
    DatagramSource source;
    inet_pton(AF_INET6, "fd00::17", &source.address);
    source.port = port;
    return source;
}

std::string takeText(DatagramQueue& queue)
{
    const std::string text(queue.front().data);
    queue.pop();
    return text;
}

std::size_t pushUntilRefused(DatagramQueue& queue, const std::string& data)
{
    std::size_t count = 0;
    while (queue.push({}, data))
        ++count;
    return count;
}

} // namespace

TEST(DatagramQueueTest, GivesBackBytesAndSourceInOrder)
{
    DatagramQueue queue(everything);
    EXPECT_TRUE(queue.isEmpty());
    EXPECT_TRUE(queue.push(sourceWithPort(50001), "DOWN,1,2,3;"));
    EXPECT_TRUE(queue.push(sourceWithPort(50002), ""));
    EXPECT_TRUE(queue.push(sourceWithPort(50003), std::string("U\0P", 3)));

    const Datagram first = queue.front();
    EXPECT_EQ(first.data, "DOWN,1,2,3;");
    EXPECT_EQ(first.source.port, 50001);
    EXPECT_EQ(first.source.address.s6_addr[15], 0x17);
    queue.pop();
    EXPECT_EQ(queue.front().source.port, 50002);
    EXPECT_EQ(takeText(queue), "");
    EXPECT_EQ(takeText(queue), std::string("U\0P", 3));
    EXPECT_TRUE(queue.isEmpty());
}

TEST(DatagramQueueTest, Holds65536RecordsAndRefusesTheNextOne)
{
    DatagramQueue queue(everything);
    EXPECT_EQ(pushUntilRefused(queue, "DOWN,16383,16383,1712345678321;"), 65'536u);
    queue.pop();
    EXPECT_EQ(pushUntilRefused(queue, "UP"), 1u);
}

TEST(DatagramQueueTest, Holds4MebibytesOfLongRecordsAndRefusesTheNextOne)
{
    DatagramQueue queue(everything);
    const std::string longest(65'507, 'x');
    EXPECT_EQ(pushUntilRefused(queue, longest), (4u << 20) / (65'507 + 20 + 1));
    queue.pop();
    EXPECT_TRUE(queue.push({}, longest));
    EXPECT_FALSE(queue.push({}, longest));
}

TEST(DatagramQueueTest, RefusesMovesAfter57344RecordsAndKeepsPressesAndReleases)
{
    DatagramQueue queue(pressesAndReleases);
    EXPECT_EQ(pushUntilRefused(queue, "MOVE,1,2,3;"), 57'344u);
    EXPECT_EQ(pushUntilRefused(queue, "UP,1,2,3;"), 65'536u - 57'344u);
}

TEST(DatagramQueueTest, RubbishAfter57344RecordsLeavesRoomForAReleaseToo)
{
    DatagramQueue queue(pressesAndReleases);
    EXPECT_EQ(pushUntilRefused(queue, "xyzzy"), 57'344u);
    EXPECT_FALSE(queue.push({}, ""));
    EXPECT_FALSE(queue.push({}, "UPPER,1,2,3;"));
    EXPECT_TRUE(queue.push({}, "UP,1,2,3;"));
}

TEST(DatagramQueueTest, RefusesMovesAfterSevenEighthsOfTheBytesAndKeepsAPress)
{
    DatagramQueue queue(pressesAndReleases, {.records = 65'536, .bytes = 1024});
    const std::string move = "MOVE" + std::string(104, 'x'); // 128 bytes with its head
    EXPECT_EQ(pushUntilRefused(queue, move), 7u);
    EXPECT_TRUE(queue.push({}, "DOWN," + std::string(103, 'x')));
    EXPECT_FALSE(queue.push({}, ""));
}

TEST(DatagramQueueTest, ARefusedRecordLeavesNoTrace)
{
    DatagramQueue queue(everything, {.records = 2, .bytes = 256});
    EXPECT_TRUE(queue.push({}, "a"));
    EXPECT_TRUE(queue.push({}, "b"));
    EXPECT_FALSE(queue.push({}, "c"));
    EXPECT_EQ(takeText(queue), "a");
    EXPECT_TRUE(queue.push({}, "d"));
    EXPECT_EQ(takeText(queue), "b");
    EXPECT_EQ(takeText(queue), "d");
    EXPECT_TRUE(queue.isEmpty());
}

TEST(DatagramQueueTest, KeepsEveryByteWhenItsMemoryGoesRoundAThousandTimes)
{
    DatagramQueue queue(everything, {.records = 64, .bytes = 1024});
    std::deque<std::string> expected;
    unsigned random = 12345;
    for (int i = 0; i < 20'000; ++i) {
        random = random * 1664525 + 1013904223;
        std::string data((random >> 16) % 300, static_cast<char>(random >> 24));
        while (!queue.push({}, data)) {
            ASSERT_EQ(takeText(queue), expected.front());
            expected.pop_front();
        }
        expected.push_back(std::move(data));
    }
    for (; !expected.empty(); expected.pop_front())
        ASSERT_EQ(takeText(queue), expected.front());
    EXPECT_TRUE(queue.isEmpty());
}

TEST(DatagramQueueTest, TwoThreadsPass200000RecordsWithoutLossOrDisorder)
{
    constexpr std::uint32_t count = 200'000;
    DatagramQueue queue(everything, {.records = 512, .bytes = 8192});
    std::thread writer([&] {
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::string data = std::to_string(i) + std::string(i % 50, '.');
            while (!queue.push(sourceWithPort(static_cast<std::uint16_t>(i)), data))
                std::this_thread::yield();
        }
    });
    std::uint32_t wrong = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        while (queue.isEmpty())
            std::this_thread::yield();
        const Datagram datagram = queue.front();
        const bool isRight = datagram.source.port == static_cast<std::uint16_t>(i)
            && datagram.data == std::to_string(i) + std::string(i % 50, '.');
        wrong += isRight ? 0 : 1;
        queue.pop();
    }
    writer.join();
    EXPECT_EQ(wrong, 0u);
}

} // namespace companion::testing
