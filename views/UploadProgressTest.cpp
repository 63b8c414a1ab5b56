#include "views/UploadProgress.h"

#include "platform/testing/FakeMainQueue.h"
#include "platform/testing/Transcript.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace companion::testing {

using namespace std::chrono_literals;

namespace {

/// Writes "[a.png 42 %, b.pdf 0 %]" and "say Uploading a.png".
class FakeUploadProgressView : public UploadProgressView {
public:
    explicit FakeUploadProgressView(Transcript& transcript)
        : m_transcript(transcript)
    {
    }

    void showUploads(const std::vector<UploadLine>& lines) override
    {
        std::string text;
        for (const UploadLine& line : lines)
            text += (text.empty() ? "" : ", ") + line.text();
        m_transcript.add("[" + text + "]");
        ++timesShown;
    }

    void announcePolitely(const std::string& text) override { m_transcript.add("say " + text); }

    int timesShown = 0;

private:
    Transcript& m_transcript;
};

} // namespace

class UploadProgressTest : public ::testing::Test {
protected:
    std::shared_ptr<UploadProgress::Report> begin(const std::string& fileName)
    {
        auto report = progress->begin(fileName);
        transcript.clear();
        return report;
    }

    /// What the view was told since the last time.
    std::string shown()
    {
        queue.runPending();
        return transcript.take("; ");
    }

    Transcript transcript;
    FakeMainQueue queue;
    FakeUploadProgressView view{transcript};
    UploadProgress::TimePoint now = UploadProgress::TimePoint(123456789ns);
    std::unique_ptr<UploadProgress> progress =
        std::make_unique<UploadProgress>(queue, view, [this] { return now; });
};

TEST_F(UploadProgressTest, UploadIsShownAtOnceWithItsNameAnd0Percent)
{
    const auto report = progress->begin("a.png");
    EXPECT_EQ(transcript.take("; "), "[a.png 0 %]; say Uploading a.png");
}

TEST_F(UploadProgressTest, PercentageIsRoundedDownAndNeverBeyond100)
{
    const struct {
        std::uint64_t bytes;
        std::uint64_t total;
        std::string percent;
    } cases[] = {{1, 100, "1"}, {199, 10000, "1"}, {999, 1000, "99"}, {1000, 1000, "100"},
        {1001, 1000, "100"}, {5'000'000'000'000, 9'999'999'999'999, "50"}};
    for (const auto& [bytes, total, percent] : cases) {
        const auto report = begin("a");
        now += 1s;
        report->sent(bytes, total);
        EXPECT_TRUE(shown().starts_with("[a " + percent + " %]")) << percent;
        report->end();
        shown();
    }
}

TEST_F(UploadProgressTest, NothingIsToldOnTheCallersThread)
{
    const auto report = begin("a.png");
    report->sent(10, 100);
    EXPECT_EQ(transcript.take(), "");
    EXPECT_EQ(shown(), "[a.png 10 %]");
}

TEST_F(UploadProgressTest, SamePercentageIsNoNews)
{
    const auto report = begin("a.png");
    report->sent(0, 100);
    EXPECT_TRUE(queue.isIdle());
    report->sent(1000, 100000);
    shown();
    now += 1s;
    report->sent(1999, 100000);
    EXPECT_TRUE(queue.isIdle());
}

TEST_F(UploadProgressTest, UnknownTotalStaysAt0Percent)
{
    begin("a.png")->sent(7, 0);
    queue.runPending();
    EXPECT_EQ(transcript.take("; "), "[]");
}

TEST_F(UploadProgressTest, NewsWithin100MillisecondsWaitForTheNextOnes)
{
    const auto report = begin("a.png");
    report->sent(1, 100);
    EXPECT_EQ(shown(), "[a.png 1 %]");
    now += 99ms;
    report->sent(2, 100);
    EXPECT_EQ(shown(), "");
    now += 1ms;
    report->sent(3, 100);
    EXPECT_EQ(shown(), "[a.png 3 %]");
}

TEST_F(UploadProgressTest, The100PercentAreShownAtOnce)
{
    const auto report = begin("a.png");
    report->sent(1, 100);
    shown();
    report->sent(100, 100);
    EXPECT_EQ(shown(), "[a.png 100 %]; say a.png 100 %");
}

TEST_F(UploadProgressTest, BlockedMainQueueGetsOneUpdateWithTheLatest)
{
    const auto report = begin("a.png");
    for (int percent = 1; percent <= 20; ++percent) {
        now += 150ms;
        report->sent(percent, 100);
    }
    EXPECT_EQ(shown(), "[a.png 20 %]");
}

TEST_F(UploadProgressTest, TwoUploadsHaveALineEachAndShareTheUpdates)
{
    const auto first = begin("a.png");
    const auto second = begin("b.pdf");
    first->sent(10, 100);
    EXPECT_EQ(shown(), "[a.png 10 %, b.pdf 0 %]");
    second->sent(7, 100);
    EXPECT_EQ(shown(), "");
    now += 100ms;
    first->sent(11, 100);
    EXPECT_EQ(shown(), "[a.png 11 %, b.pdf 7 %]");
}

TEST_F(UploadProgressTest, EndTakesItsOwnLineAwayOnTheMainQueueWhateverTheTime)
{
    const auto first = begin("same.png");
    const auto second = begin("same.png");
    second->sent(10, 100);
    shown();
    first->end();
    EXPECT_EQ(transcript.take(), "");
    EXPECT_EQ(shown(), "[same.png 10 %]");
    second->end();
    EXPECT_EQ(shown(), "[]");
}

TEST_F(UploadProgressTest, ReportThatIsGoneHasEndedAndEndsOnce)
{
    auto report = begin("a.png");
    report->end();
    report->end();
    report.reset();
    EXPECT_EQ(shown(), "[]");
    begin("b.png").reset();
    EXPECT_EQ(shown(), "[]");
}

TEST_F(UploadProgressTest, NewsOfAnUploadThatHasEndedChangeNothing)
{
    const auto report = begin("a.png");
    report->end();
    shown();
    now += 1s;
    report->sent(30, 100);
    EXPECT_EQ(shown(), "[]");
}

TEST_F(UploadProgressTest, AScreenReaderHearsOfEveryQuarterOnce)
{
    const auto report = begin("a.png");
    std::string said;
    for (const int percent : {1, 24, 25, 26, 49, 60, 74, 75, 99, 100}) {
        now += 100ms;
        report->sent(percent, 100);
        const std::string text = shown();
        if (text.find("say") != std::string::npos)
            said += text.substr(text.find("say")) + "; ";
    }
    EXPECT_EQ(said, "say a.png 25 %; say a.png 60 %; say a.png 75 %; say a.png 100 %; ");
}

TEST_F(UploadProgressTest, TenUploadsAtFullSpeedChangeTheViewAtMostTenTimesASecond)
{
    std::vector<std::shared_ptr<UploadProgress::Report>> reports;
    for (int count = 0; count < 10; ++count)
        reports.push_back(begin("file"));
    view.timesShown = 0;
    for (int millisecond = 0; millisecond < 1000; ++millisecond) {
        now += 1ms;
        for (const auto& report : reports)
            report->sent(static_cast<std::uint64_t>(millisecond), 1100);
        queue.runPending();
    }
    EXPECT_LE(view.timesShown, 10);
    EXPECT_GE(view.timesShown, 9);
}

TEST_F(UploadProgressTest, ReportMayOutliveTheProgress)
{
    const auto report = begin("a.png");
    report->sent(10, 100);
    progress.reset();
    EXPECT_EQ(shown(), "");
    report->sent(20, 100);
    report->end();
    EXPECT_EQ(shown(), "");
}

TEST_F(UploadProgressTest, ViewIsLeftAloneEvenWhileAReportStillHoldsTheLines)
{
    bool isOver = false;
    progress = std::make_unique<UploadProgress>(queue, view, [&] {
        if (isOver) { // in the middle of a report
            progress.reset();
            queue.runPending();
        }
        return now;
    });
    const auto report = begin("a.png");
    report->sent(10, 100);
    isOver = true;
    report->sent(20, 100);
    EXPECT_EQ(shown(), "");
}

TEST_F(UploadProgressTest, ReportsComeFromAnotherThread)
{
    const auto first = begin("a.png");
    std::atomic<bool> isDone = false;
    std::jthread delivery([&] {
        for (std::uint64_t bytes = 0; bytes <= 5000; ++bytes)
            first->sent(bytes, 5000);
        first->end();
        isDone = true;
    });
    while (!isDone)
        queue.runPending();
    EXPECT_TRUE(shown().ends_with("[]"));
}

} // namespace companion::testing
