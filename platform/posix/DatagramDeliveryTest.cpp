#include "platform/posix/DatagramDelivery.h"

#include "platform/testing/FakeAsyncUdpSocket.h"
#include "platform/testing/FakeMainQueue.h"

#include <arpa/inet.h>
#include <atomic>
#include <deque>
#include <functional>
#include <gtest/gtest.h>
#include <thread>

namespace companion::testing {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

namespace {

DatagramSource sourceFrom(const std::string& ipv6Text, std::uint16_t port)
{
    DatagramSource source;
    inet_pton(AF_INET6, ipv6Text.c_str(), &source.address);
    source.port = port;
    return source;
}

/// Counts the jobs that are handed in.
class CountingMainQueue : public FakeMainQueue {
public:
    void async(Job job) override
    {
        ++jobs;
        FakeMainQueue::async(std::move(job));
    }

    std::atomic<int> jobs = 0;
};

void spin(std::chrono::steady_clock::duration duration)
{
    const auto end = SteadyClock::now() + duration;
    while (SteadyClock::now() < end) { }
}

} // namespace

class DatagramDeliveryTest : public ::testing::Test, public AsyncUdpSocketDelegate {
protected:
    void udpSocketDidReceiveData(AsyncUdpSocket&, std::string_view data, const UdpSender& from) override
    {
        m_received.emplace_back(data);
        m_transcript.add(std::string(data) + " from " + from.host + ":" + std::to_string(from.port));
        m_receivedAt = from.receivedAt;
        if (m_whileDelivering)
            m_whileDelivering();
    }

    void SetUp() override { m_transcript.clear(); }

    void deliverAllFromNowOn()
    {
        m_delivery->deliverAll();
        m_queue.runPending();
        m_queue.jobs = 0;
    }

    bool offer(std::string_view data) { return m_delivery->offer(m_source, data, {}); }

    std::size_t offerUntilRefused(std::string_view data)
    {
        std::size_t count = 0;
        while (offer(data))
            ++count;
        return count;
    }

    /// Offers and wakes, as the receive thread does with each batch.
    void receive(std::string_view data)
    {
        ASSERT_TRUE(offer(data));
        m_delivery->wake();
    }

    void deliverOne()
    {
        m_delivery->deliverOne();
        m_queue.runPending();
    }

    Transcript m_transcript;
    CountingMainQueue m_queue;
    FakeAsyncUdpSocketFactory m_factory{m_transcript};
    std::unique_ptr<AsyncUdpSocket> m_socket = m_factory.makeSocket(*this, "x");
    DatagramSource m_source = sourceFrom("::ffff:192.168.1.20", 50000);
    std::function<void()> m_whileDelivering;
    std::deque<std::string> m_received;
    SteadyClock::time_point m_receivedAt;
    std::shared_ptr<DatagramDelivery> m_delivery = std::make_shared<DatagramDelivery>(
        *m_socket, *this, m_queue, [this] { m_transcript.add("after slice"); });
};

TEST_F(DatagramDeliveryTest, DeliversInOrderWithEachSenderAndThenEndsTheSlice)
{
    deliverAllFromNowOn();
    receive("DOWN");
    receive("MOVE");
    m_source = sourceFrom("fe80::1", 50001);
    receive("UP");
    EXPECT_EQ(m_transcript.take(), "");
    m_queue.runPending();
    EXPECT_EQ(m_transcript.take(),
        "DOWN from 192.168.1.20:50000\nMOVE from 192.168.1.20:50000\nUP from fe80::1:50001\nafter slice");
}

TEST_F(DatagramDeliveryTest, ReportsTheTimeAtWhichADatagramWasReceived)
{
    deliverAllFromNowOn();
    const SteadyClock::time_point longAgo(17ms);
    ASSERT_TRUE(m_delivery->offer(m_source, "UP", longAgo));
    m_delivery->wake();
    m_queue.runPending();
    EXPECT_EQ(m_receivedAt, longAgo);
}

TEST_F(DatagramDeliveryTest, ChangesNoByteOfEmptyBinaryAndLongestDatagrams)
{
    deliverAllFromNowOn();
    const std::deque<std::string> sent{"", std::string("U\0P", 3), std::string(65'507, 'x'), ""};
    for (const std::string& data : sent)
        receive(data);
    m_queue.runPending();
    EXPECT_EQ(m_received, sent);
}

TEST_F(DatagramDeliveryTest, Holds65536ReleasesAndRefusesTheNextOne)
{
    EXPECT_EQ(offerUntilRefused("UP,16383,16383,1712345678321;"), 65'536u);
    deliverOne();
    EXPECT_EQ(offerUntilRefused("UP,1,2,3;"), 1u);
}

TEST_F(DatagramDeliveryTest, Holds4MebibytesOfLongRecordsAndRefusesTheNextOne)
{
    const std::string longest = "UP," + std::string(65'504, 'x');
    EXPECT_EQ(offerUntilRefused(longest), (4u << 20) / (65'507 + 32));
    deliverOne();
    EXPECT_EQ(offerUntilRefused(longest), 1u);
}

TEST_F(DatagramDeliveryTest, RefusesMovesAfter57344RecordsAndKeepsPressesAndReleases)
{
    EXPECT_EQ(offerUntilRefused("MOVE,1,2,3;"), 57'344u);
    EXPECT_EQ(offerUntilRefused("DOWN,1,2,3;"), 65'536u - 57'344u);
    deliverOne();
    EXPECT_FALSE(offer("MOVE,1,2,3;"));
    EXPECT_TRUE(offer("UP,1,2,3;"));
}

TEST_F(DatagramDeliveryTest, RefusesRubbishAfter57344RecordsToo)
{
    EXPECT_EQ(offerUntilRefused("xyzzy"), 57'344u);
    EXPECT_FALSE(offer(""));
    EXPECT_FALSE(offer("UPPER,1,2,3;"));
    EXPECT_TRUE(offer("UP,1,2,3;"));
}

TEST_F(DatagramDeliveryTest, RefusesMovesAfterSevenEighthsOfTheBytesAndKeepsPresses)
{
    const std::string move = "MOVE" + std::string(4096 - 32 - 4, 'x'); // 4096 with what is kept about it
    EXPECT_EQ(offerUntilRefused(move), 896u);
    EXPECT_EQ(offerUntilRefused("DOWN," + std::string(4096 - 32 - 5, 'x')), 128u);
}

TEST_F(DatagramDeliveryTest, KeepsEveryByteWhenItsMemoryGoesRound)
{
    std::deque<std::string> expected;
    unsigned random = 12345;
    for (int i = 0; i < 2'000; ++i) { // 12 MB, with about 800 kB waiting
        random = random * 1664525 + 1013904223;
        expected.emplace_back((random >> 16) % 12'000, static_cast<char>(random >> 24));
        ASSERT_TRUE(offer(expected.back()));
        if (i < 133)
            continue;
        deliverOne();
        ASSERT_TRUE(m_received.front() == expected.front()) << i;
        m_received.clear();
        expected.pop_front();
    }
}

TEST_F(DatagramDeliveryTest, TenBatchesMakeOneWakeUp)
{
    deliverAllFromNowOn();
    for (int i = 0; i < 10; ++i)
        receive("MOVE");
    EXPECT_EQ(m_queue.jobs, 1);
    m_queue.runPending();
    receive("UP");
    EXPECT_EQ(m_queue.jobs, 2);
}

TEST_F(DatagramDeliveryTest, ADatagramThatComesDuringASliceNeedsNoWakeUpOfItsOwn)
{
    deliverAllFromNowOn();
    m_whileDelivering = [this] {
        m_whileDelivering = nullptr;
        receive("second");
    };
    receive("first");
    m_queue.runPending();
    EXPECT_EQ(m_queue.jobs, 1);
    EXPECT_EQ(
        m_transcript.take(), "first from 192.168.1.20:50000\nsecond from 192.168.1.20:50000\nafter slice");
}

TEST_F(DatagramDeliveryTest, AWakeUpWithNothingToDeliverEndsNoSlice)
{
    m_delivery->deliverAll();
    m_queue.runPending();
    EXPECT_EQ(m_transcript.take(), "");
}

TEST_F(DatagramDeliveryTest, ASliceEndsAfter5MillisecondsAndOtherJobsComeBetween)
{
    deliverAllFromNowOn();
    receive("first");
    receive("second");
    m_whileDelivering = [] { spin(6ms); };
    m_queue.async([this] { m_transcript.add("job"); });
    m_queue.runPending();
    EXPECT_EQ(m_transcript.take(),
        "first from 192.168.1.20:50000\nafter slice\njob\nsecond from 192.168.1.20:50000\nafter slice");
    m_queue.jobs = 0;
    receive("third");
    EXPECT_EQ(m_queue.jobs, 1);
}

TEST_F(DatagramDeliveryTest, ClosingDuringADeliveryDropsTheRest)
{
    deliverAllFromNowOn();
    receive("first");
    receive("second");
    m_whileDelivering = [this] { m_delivery->close(); };
    m_queue.runPending();
    EXPECT_EQ(m_transcript.take(), "first from 192.168.1.20:50000\nafter slice");
}

TEST_F(DatagramDeliveryTest, ClosingAtTheEndOfALongSliceQueuesNoFurtherOne)
{
    deliverAllFromNowOn();
    receive("first");
    receive("second");
    m_whileDelivering = [this] {
        spin(6ms);
        m_delivery->close();
    };
    m_queue.jobs = 0;
    m_queue.runPending();
    EXPECT_EQ(m_queue.jobs, 0);
}

TEST_F(DatagramDeliveryTest, APendingWakeUpOutlivesItsOwnerAndDeliversNothing)
{
    deliverAllFromNowOn();
    receive("first");
    const std::weak_ptr<DatagramDelivery> watched = m_delivery;
    m_delivery->close();
    m_delivery.reset();
    m_socket.reset();
    m_transcript.clear();
    EXPECT_FALSE(watched.expired());
    m_queue.runPending();
    EXPECT_EQ(m_transcript.take(), "");
    EXPECT_TRUE(watched.expired());
}

TEST_F(DatagramDeliveryTest, DeliversNothingUnaskedAndOneForEachRequest)
{
    receive("first");
    receive("second");
    receive("third");
    m_queue.runPending();
    EXPECT_EQ(m_transcript.take(), "");

    deliverOne();
    EXPECT_EQ(m_transcript.take(), "first from 192.168.1.20:50000\nafter slice");

    m_delivery->deliverOne();
    m_delivery->deliverAll();
    m_queue.runPending();
    EXPECT_EQ(
        m_transcript.take(), "second from 192.168.1.20:50000\nthird from 192.168.1.20:50000\nafter slice");
}

TEST_F(DatagramDeliveryTest, AThreadPasses50000DatagramsWithoutLossOrDisorder)
{
    constexpr std::size_t count = 50'000;
    deliverAllFromNowOn();
    std::thread writer([&] {
        for (std::size_t i = 0; i < count; ++i) {
            const std::string data = std::to_string(i) + std::string(i % 50, '.');
            while (!offer(data))
                std::this_thread::yield();
            m_delivery->wake();
        }
    });
    while (m_received.size() < count)
        m_queue.runPending();
    writer.join();
    std::size_t wrong = 0;
    for (std::size_t i = 0; i < count; ++i)
        wrong += m_received[i] == std::to_string(i) + std::string(i % 50, '.') ? 0 : 1;
    EXPECT_EQ(wrong, 0u);
}

} // namespace companion::testing
