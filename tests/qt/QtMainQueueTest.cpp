#include "platform/qt/QtMainQueue.h"
#include "tests/qt/EventLoop.h"

#include <algorithm>
#include <atomic>
#include <numeric>
#include <string>
#include <sys/eventfd.h>
#include <thread>
#include <unistd.h>
#include <utility>

#include <gmock/gmock.h>

#include <QAbstractEventDispatcher>
#include <QSocketNotifier>

namespace companion::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::Ge;

class QtMainQueueTest : public ::testing::Test {
protected:
    MainQueue::Job note(const std::string& word)
    {
        return [this, word] { m_words.push_back(word); };
    }

    bool spinUntilWords(std::size_t count)
    {
        return spinUntil([&] { return m_words.size() >= count; });
    }

    /// Of the event loop; `spinFor` alone makes 20.
    static int turnsIn100Milliseconds()
    {
        int turns = 0;
        const QMetaObject::Connection connection = QObject::connect(QCoreApplication::eventDispatcher(),
            &QAbstractEventDispatcher::aboutToBlock, QCoreApplication::instance(), [&] { ++turns; });
        spinFor(100ms);
        QObject::disconnect(connection);
        return turns;
    }

    QtMainQueue m_queue;
    std::vector<std::string> m_words;
};

TEST_F(QtMainQueueTest, JobsRunInTheOrderTheyWereHandedInAndNeverAtOnce)
{
    m_queue.async(note("first"));
    m_queue.async(note("second"));
    m_queue.async(note("third"));
    EXPECT_THAT(m_words, ElementsAre());
    ASSERT_TRUE(spinUntilWords(3));
    EXPECT_THAT(m_words, ElementsAre("first", "second", "third"));
}

TEST_F(QtMainQueueTest, AJobHandedInByAJobRunsBehindThoseThatWait)
{
    m_queue.async([this] {
        m_words.push_back("first");
        m_queue.async(note("third"));
    });
    m_queue.async(note("second"));
    ASSERT_TRUE(spinUntilWords(3));
    EXPECT_THAT(m_words, ElementsAre("first", "second", "third"));
}

TEST_F(QtMainQueueTest, FourThreadsWith25000JobsEachKeepTheirOwnOrderAndRunOnTheMainThread)
{
    constexpr int jobsOfEach = 25'000;
    const auto mainThread = std::this_thread::get_id();
    std::vector<std::vector<int>> seen(4);
    std::vector<std::jthread> threads;
    int elsewhere = 0;
    for (std::size_t thread = 0; thread < seen.size(); ++thread) {
        threads.emplace_back([&, thread] {
            for (int number = 0; number < jobsOfEach; ++number) {
                m_queue.async([&, thread, number] {
                    elsewhere += std::this_thread::get_id() != mainThread;
                    seen[thread].push_back(number);
                });
            }
        });
    }
    const auto isComplete = [&](const std::vector<int>& numbers) { return numbers.size() == jobsOfEach; };
    ASSERT_TRUE(spinUntil([&] { return std::all_of(seen.begin(), seen.end(), isComplete); }, 60s));

    std::vector<int> inOrder(jobsOfEach);
    std::iota(inOrder.begin(), inOrder.end(), 0);
    for (const std::vector<int>& numbers : seen)
        EXPECT_TRUE(numbers == inOrder);
    EXPECT_EQ(elsewhere, 0);
}

TEST_F(QtMainQueueTest, AJobThatSpinsANestedEventLoopIsNotReEntered)
{
    m_queue.async([this] {
        m_words.push_back("enter");
        m_queue.async(note("late"));
        spinFor(50ms);
        m_words.push_back("leave");
    });
    m_queue.async(note("next"));
    ASSERT_TRUE(spinUntilWords(4));
    EXPECT_THAT(m_words, ElementsAre("enter", "leave", "next", "late"));
}

TEST_F(QtMainQueueTest, JobsWaitWhileAJobThatSpinsForLongerThanASliceIsTheLastOfItsBatch)
{
    m_queue.async([this] {
        std::jthread([this] { m_queue.async(note("from another thread")); }).join();
        spinFor(20ms);
        m_words.push_back("leave");
    });
    ASSERT_TRUE(spinUntilWords(2));
    EXPECT_THAT(m_words, ElementsAre("leave", "from another thread"));
}

TEST_F(QtMainQueueTest, ADelayedJobNeverRunsBeforeItsTime)
{
    const auto start = SteadyClock::now();
    std::vector<SteadyClock::duration> early;
    const std::vector<std::chrono::nanoseconds> delays{0ns, 1ns, 1500us, 20ms, 20ms + 1us};
    for (const auto delay : delays) {
        m_queue.after(delay, [&, delay] {
            early.push_back(std::max<SteadyClock::duration>(start + delay - SteadyClock::now(), 0ns));
        });
    }
    ASSERT_TRUE(spinUntil([&] { return early.size() == delays.size(); }));
    EXPECT_THAT(early, ElementsAre(0ns, 0ns, 0ns, 0ns, 0ns));
}

TEST_F(QtMainQueueTest, DelayedJobsRunInTheOrderOfTheirTimes)
{
    m_queue.after(30ms, note("30"));
    m_queue.after(10ms, note("10"));
    m_queue.after(20ms, note("20"));
    m_queue.after(0ms, note("0"));
    ASSERT_TRUE(spinUntilWords(4));
    EXPECT_THAT(m_words, ElementsAre("0", "10", "20", "30"));
}

TEST_F(QtMainQueueTest, ADelayedJobOfAnotherThreadRunsOnTheMainThread)
{
    std::thread::id ranOn;
    std::jthread([&] { m_queue.after(1ms, [&] { ranOn = std::this_thread::get_id(); }); }).join();
    ASSERT_TRUE(spinUntil([&] { return ranOn != std::thread::id(); }));
    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TEST_F(QtMainQueueTest, ADelayedJobHandedInByADelayedJobHasItsOwnTime)
{
    SteadyClock::duration took{};
    m_queue.after(1ms,
        [&] { m_queue.after(10ms, [&, start = SteadyClock::now()] { took = SteadyClock::now() - start; }); });
    ASSERT_TRUE(spinUntil([&] { return took != SteadyClock::duration::zero(); }));
    EXPECT_THAT(took, Ge(10ms));
}

TEST_F(QtMainQueueTest, JobsWaitForTheBlockerAndRunInOrderOnceItIsGone)
{
    m_queue.async(note("before"));
    {
        const QtMainQueue::Blocker blocker(m_queue);
        std::jthread([this] { m_queue.async(note("during")); }).join();
        spinFor(30ms);
        EXPECT_THAT(m_words, ElementsAre());
    }
    m_queue.async(note("after"));
    EXPECT_THAT(m_words, ElementsAre());
    ASSERT_TRUE(spinUntilWords(3));
    EXPECT_THAT(m_words, ElementsAre("before", "during", "after"));
}

TEST_F(QtMainQueueTest, TheFirstBlockerIsTold)
{
    int told = 0;
    m_queue.setWhenBlocked([&told] { ++told; });
    {
        const QtMainQueue::Blocker outer(m_queue);
        EXPECT_EQ(told, 1);
        const QtMainQueue::Blocker inner(m_queue);
        EXPECT_EQ(told, 1);
    }
    EXPECT_EQ(told, 1);
    const QtMainQueue::Blocker another(m_queue);
    EXPECT_EQ(told, 2);
}

TEST_F(QtMainQueueTest, OfTwoBlockersTheLastOneLetsTheJobsGo)
{
    auto outer = std::make_unique<QtMainQueue::Blocker>(m_queue);
    auto inner = std::make_unique<QtMainQueue::Blocker>(m_queue);
    m_queue.async(note("job"));
    outer.reset();
    spinFor(30ms);
    EXPECT_THAT(m_words, ElementsAre());
    inner.reset();
    EXPECT_TRUE(spinUntilWords(1));
}

TEST_F(QtMainQueueTest, ABlockerThatAJobLeavesBehindHoldsTheJobsBehindIt)
{
    std::unique_ptr<QtMainQueue::Blocker> blocker;
    m_queue.async([&] { blocker = std::make_unique<QtMainQueue::Blocker>(m_queue); });
    m_queue.async(note("next"));
    spinFor(30ms);
    EXPECT_THAT(m_words, ElementsAre());
    blocker.reset();
    EXPECT_TRUE(spinUntilWords(1));
}

TEST_F(QtMainQueueTest, ABlockerWithinAJobLetsTheJobFinishBeforeTheNext)
{
    m_queue.async([this] {
        {
            const QtMainQueue::Blocker blocker(m_queue);
            m_queue.async(note("next"));
            spinFor(20ms);
        }
        spinFor(20ms);
        m_words.push_back("finished");
    });
    ASSERT_TRUE(spinUntilWords(2));
    EXPECT_THAT(m_words, ElementsAre("finished", "next"));
}

TEST_F(QtMainQueueTest, ADelayedJobThatIsDueWhileBlockedRunsAfterwardsInItsTurn)
{
    {
        const QtMainQueue::Blocker blocker(m_queue);
        m_queue.async(note("before it is due"));
        m_queue.after(10ms, note("delayed"));
        spinFor(60ms);
        m_queue.async(note("after it is due"));
        spinFor(20ms);
        EXPECT_THAT(m_words, ElementsAre());
    }
    ASSERT_TRUE(spinUntilWords(3));
    EXPECT_THAT(m_words, ElementsAre("before it is due", "delayed", "after it is due"));
}

TEST_F(QtMainQueueTest, ABlockedQueueWithJobsDoesNotKeepTheEventLoopAwake)
{
    const QtMainQueue::Blocker blocker(m_queue);
    for (int i = 0; i < 10; ++i)
        m_queue.async([] {});
    EXPECT_LT(turnsIn100Milliseconds(), 100);
}

TEST_F(QtMainQueueTest, AQueueWhoseJobsHaveRunDoesNotKeepTheEventLoopAwake)
{
    m_queue.async(note("job"));
    ASSERT_TRUE(spinUntilWords(1));
    EXPECT_LT(turnsIn100Milliseconds(), 100);
}

TEST_F(QtMainQueueTest, EndlessJobsLeaveTurnsToTimersPostedEventsAndDescriptors)
{
    bool isOver = false;
    std::function<void()> again = [&] {
        beBusyFor(100us);
        if (!isOver)
            m_queue.async(again);
    };
    m_queue.async(again);

    int timeouts = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] { ++timeouts; });
    timer.start(1);
    int posted = 0;
    std::function<void()> postAgain = [&] {
        if (++posted < 1000)
            QMetaObject::invokeMethod(&timer, postAgain, Qt::QueuedConnection);
    };
    QMetaObject::invokeMethod(&timer, postAgain, Qt::QueuedConnection);
    const int readable = eventfd(1, EFD_CLOEXEC);
    int activations = 0;
    QSocketNotifier notifier(readable, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &timer, [&] { ++activations; });

    EXPECT_TRUE(spinUntil([&] { return timeouts >= 20 && posted >= 20 && activations >= 20; }))
        << timeouts << " timeouts, " << posted << " posted events, " << activations << " activations";
    isOver = true;
    spinFor(10ms);
    notifier.setEnabled(false);
    close(readable);
}

TEST_F(QtMainQueueTest, AThreadThatHandsInJobsWithoutEndLeavesTurnsToTheEventLoop)
{
    std::atomic<int> waiting = 0;
    std::jthread flood([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            if (waiting.load() < 1000) {
                ++waiting;
                m_queue.async([&] {
                    beBusyFor(20us);
                    --waiting;
                });
            }
        }
    });
    int timeouts = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] { ++timeouts; });
    timer.start(1);
    EXPECT_TRUE(spinUntil([&] { return timeouts >= 20; }));
    flood.request_stop();
    flood.join();
    EXPECT_TRUE(spinUntil([&] { return waiting.load() == 0; }));
}

TEST_F(QtMainQueueTest, Of40JobsOfAMillisecondNoMoreThanSixRunBetweenTwoTurnsOfTheEventLoop)
{
    int ran = 0;
    for (int i = 0; i < 40; ++i) {
        m_queue.async([&] {
            beBusyFor(1ms);
            ++ran;
        });
    }
    int ranAtLastTurn = 0;
    int mostAtOnce = 0;
    QTimer everyTurn;
    QObject::connect(&everyTurn, &QTimer::timeout, &everyTurn,
        [&] { mostAtOnce = std::max(mostAtOnce, ran - std::exchange(ranAtLastTurn, ran)); });
    everyTurn.start(0);
    ASSERT_TRUE(spinUntil([&] { return ranAtLastTurn == 40; }));
    EXPECT_LE(mostAtOnce, 6);
}

TEST(QtMainQueueEndTest, JobsThatHaveNotRunAreDroppedWithAllThatTheyHold)
{
    const auto held = std::make_shared<int>(1);
    bool hasRun = false;
    {
        QtMainQueue queue;
        queue.async([&, held] { hasRun = true; });
        queue.after(1h, [&, held] { hasRun = true; });
        EXPECT_EQ(held.use_count(), 3);
    }
    spinFor(10ms);
    EXPECT_FALSE(hasRun);
    EXPECT_EQ(held.use_count(), 1);
}

TEST(QtMainQueueEndTest, WhatADroppedJobHandsInAsItGoesIsDroppedToo)
{
    const auto held = std::make_shared<int>(1);
    {
        QtMainQueue queue;
        const std::shared_ptr<void> handsInAnother(nullptr, [&](void*) { queue.async([held] {}); });
        queue.async([handsInAnother] {});
    }
    EXPECT_EQ(held.use_count(), 1);
}

} // namespace
} // namespace companion::testing
