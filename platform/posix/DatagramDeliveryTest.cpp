#include "platform/posix/DatagramDelivery.h"

#include "platform/testing/FakeAsyncUdpSocket.h"
#include "platform/testing/FakeMainQueue.h"

#include <arpa/inet.h>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>

namespace companion::testing {

using namespace std::chrono_literals;

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

    int jobs = 0;
};

void spin(std::chrono::steady_clock::duration duration)
{
    const auto end = std::chrono::steady_clock::now() + duration;
    while (std::chrono::steady_clock::now() < end) { }
}

} // namespace

class DatagramDeliveryTest : public ::testing::Test, public AsyncUdpSocketDelegate {
protected:
    void udpSocketDidReceiveData(AsyncUdpSocket&, std::string_view data, const UdpSender& from) override
    {
        m_transcript.add(std::string(data) + " from " + from.host + ":" + std::to_string(from.port));
        if (m_whileDelivering)
            m_whileDelivering();
    }

    void offer(std::string_view data) { ASSERT_TRUE(m_delivery.offer(m_source, data)); }

    /// Offers and wakes, as the receive thread does after each batch.
    void receive(std::string_view data)
    {
        offer(data);
        m_delivery.wake();
    }

    Transcript m_transcript;
    CountingMainQueue m_queue;
    FakeAsyncUdpSocketFactory m_factory{m_transcript};
    std::unique_ptr<AsyncUdpSocket> m_socket = m_factory.makeSocket(*this, "x");
    DatagramSource m_source = sourceFrom("::ffff:192.168.1.20", 50000);
    std::function<void()> m_whileDelivering;
    DatagramDelivery m_delivery{*m_socket, *this, m_queue, [this] { m_transcript.add("after slice"); }};

    void SetUp() override { m_transcript.clear(); }
};

TEST_F(DatagramDeliveryTest, DeliversInOrderAndThenEndsTheSlice)
{
    m_delivery.deliverAll();
    receive("DOWN");
    receive("MOVE");
    m_source = sourceFrom("fe80::1", 50001);
    receive("UP");
    EXPECT_EQ(m_transcript.take(), "");
    m_queue.runPending();
    EXPECT_EQ(m_transcript.take(),
        "DOWN from 192.168.1.20:50000\nMOVE from 192.168.1.20:50000\nUP from fe80::1:50001\nafter slice");
}

TEST_F(DatagramDeliveryTest, NeitherMovesNorRubbishPushOutAPressAndARelease)
{
    for (const std::string_view flood : {"MOVE,1,2,3;", "xyzzy", "UP"}) {
        while (m_delivery.offer(m_source, flood)) { }
    }
    offer("DOWN,1,2,3;");
    offer("UP,1,2,3;");
}

TEST_F(DatagramDeliveryTest, TenBatchesMakeOneWakeUp)
{
    m_delivery.deliverAll();
    m_queue.runPending();
    m_queue.jobs = 0;
    for (int i = 0; i < 10; ++i)
        receive("MOVE");
    EXPECT_EQ(m_queue.jobs, 1);
    m_queue.runPending();
    receive("UP");
    EXPECT_EQ(m_queue.jobs, 2);
}

TEST_F(DatagramDeliveryTest, WhatComesDuringASliceNeedsNoWakeUpOfItsOwn)
{
    m_delivery.deliverAll();
    m_whileDelivering = [this] {
        m_whileDelivering = nullptr;
        receive("second");
    };
    m_queue.runPending();
    m_queue.jobs = 0;
    receive("first");
    m_queue.runPending();
    EXPECT_EQ(m_queue.jobs, 1);
    EXPECT_EQ(
        m_transcript.take(), "first from 192.168.1.20:50000\nsecond from 192.168.1.20:50000\nafter slice");
}

TEST_F(DatagramDeliveryTest, AWakeUpWithNothingToDeliverEndsNoSlice)
{
    m_delivery.deliverAll();
    m_queue.runPending();
    EXPECT_EQ(m_transcript.take(), "");
}

TEST_F(DatagramDeliveryTest, ASliceEndsAfter5MillisecondsAndOtherJobsComeBetween)
{
    m_delivery.deliverAll();
    offer("first");
    offer("second");
    m_whileDelivering = [] { spin(6ms); };
    m_queue.async([this] { m_transcript.add("job"); });
    m_queue.runPending();
    EXPECT_EQ(m_transcript.take(),
        "first from 192.168.1.20:50000\nafter slice\njob\nsecond from 192.168.1.20:50000\nafter slice");
    EXPECT_FALSE(m_delivery.isWakePending());
}

TEST_F(DatagramDeliveryTest, ClosingDuringADeliveryDropsTheRest)
{
    m_delivery.deliverAll();
    offer("first");
    offer("second");
    m_whileDelivering = [this] { m_delivery.close(); };
    m_queue.runPending();
    EXPECT_EQ(m_transcript.take(), "first from 192.168.1.20:50000\nafter slice");
}

TEST_F(DatagramDeliveryTest, ClosingAtTheEndOfALongSliceQueuesNoFurtherOne)
{
    m_delivery.deliverAll();
    offer("first");
    offer("second");
    m_whileDelivering = [this] {
        spin(6ms);
        m_delivery.close();
    };
    m_queue.jobs = 0;
    m_queue.runPending();
    EXPECT_EQ(m_queue.jobs, 0);
}

TEST_F(DatagramDeliveryTest, DeliveringNowTakesNoWakeUp)
{
    m_delivery.deliverAll();
    m_queue.runPending();
    m_queue.jobs = 0;
    offer("first");
    offer("second");
    m_delivery.deliverNow();
    EXPECT_EQ(m_queue.jobs, 0);
    EXPECT_EQ(
        m_transcript.take(), "first from 192.168.1.20:50000\nsecond from 192.168.1.20:50000\nafter slice");
    EXPECT_TRUE(m_delivery.isEmpty());
    EXPECT_FALSE(m_delivery.isWakePending());
}

TEST_F(DatagramDeliveryTest, DeliveringNowLeavesItToAWakeUpThatIsPending)
{
    m_delivery.deliverAll();
    m_queue.runPending();
    receive("first");
    offer("second");
    m_delivery.deliverNow();
    EXPECT_EQ(m_transcript.take(), "");
    EXPECT_FALSE(m_delivery.isEmpty());
    m_queue.runPending();
    EXPECT_EQ(
        m_transcript.take(), "first from 192.168.1.20:50000\nsecond from 192.168.1.20:50000\nafter slice");
}

TEST_F(DatagramDeliveryTest, DeliveringNowEndsAfter5MillisecondsToo)
{
    m_delivery.deliverAll();
    m_queue.runPending();
    offer("first");
    offer("second");
    m_whileDelivering = [] { spin(6ms); };
    m_delivery.deliverNow();
    EXPECT_EQ(m_transcript.take(), "first from 192.168.1.20:50000\nafter slice");
    m_queue.runPending();
    EXPECT_EQ(m_transcript.take(), "second from 192.168.1.20:50000\nafter slice");
}

TEST_F(DatagramDeliveryTest, NothingIsDeliveredBeforeItIsAskedForAndOneForEachAsking)
{
    receive("first");
    receive("second");
    receive("third");
    m_queue.runPending();
    EXPECT_EQ(m_transcript.take(), "");

    m_delivery.deliverOne();
    m_queue.runPending();
    EXPECT_EQ(m_transcript.take(), "first from 192.168.1.20:50000\nafter slice");

    m_delivery.deliverOne();
    m_delivery.deliverAll();
    m_queue.runPending();
    EXPECT_EQ(
        m_transcript.take(), "second from 192.168.1.20:50000\nthird from 192.168.1.20:50000\nafter slice");
}

} // namespace companion::testing
