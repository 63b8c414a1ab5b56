#include "dashboard/testing/DashboardTest.h"

namespace companion::testing {

namespace {

using namespace std::chrono_literals;

class FilesToSendTest : public DashboardTest {
protected:
    FilesToSendTest() { load(); }

    /// The URL of a file that is there.
    std::string file(const std::string& path)
    {
        fileReader.files[path] = sharedBytes("content");
        return FileUrl::fromPath(path).text();
    }

    /// The names of the files sent so far.
    std::vector<std::string> sent() const
    {
        std::vector<std::string> names;
        for (const FakeHttpSession::Sent& request : http.sent())
            names.push_back(request.request.headers.at(2).value);
        return names;
    }

    using Names = std::vector<std::string>;
};

} // namespace

TEST_F(FilesToSendTest, TheNextOneIsSentWhenTheOneBeforeHasEnded)
{
    pickRoom204();
    dashboard->sendFiles({file("/home/ada/a.png"), file("/home/ada/b.pdf")});
    queue.advance(499ms);
    EXPECT_EQ(sent(), Names{});
    queue.advance(1h);
    EXPECT_EQ(sent(), Names{"a.png"});
    http.completeWithHttp(0, 200, "");
    queue.advance(500ms);
    EXPECT_EQ(sent(), (Names{"a.png", "b.pdf"}));
    EXPECT_EQ(alertMessages(), Names{"Success"});
    http.fail(1, "broken");
    queue.advance(1h);
    EXPECT_EQ(sent().size(), 2u);
}

TEST_F(FilesToSendTest, MoreComeBehindThoseThatWait)
{
    pickRoom204();
    dashboard->sendFiles({file("/home/ada/a.png"), file("/home/ada/b.pdf")});
    queue.advance(500ms);
    dashboard->sendFiles({file("/home/ada/c.mp4")});
    for (std::size_t index = 0; index < 2; ++index) {
        EXPECT_EQ(sent().size(), index + 1);
        http.completeWithHttp(index, 200, "");
        queue.advance(500ms);
    }
    EXPECT_EQ(sent(), (Names{"a.png", "b.pdf", "c.mp4"}));
}

TEST_F(FilesToSendTest, WithoutAPanelTheListOpensAndTheFilesWaitForAPick)
{
    dashboard->sendFiles({file("/home/ada/a.png"), file("/home/ada/b.pdf")});
    EXPECT_TRUE(view.devicesList);
    EXPECT_EQ(view.filesWaiting, "2 a.png");
    queue.advance(1h);
    EXPECT_EQ(sent(), Names{});
    EXPECT_TRUE(alerts.shown.empty());
    pickRoom204();
    EXPECT_EQ(view.filesWaiting, "");
    queue.advance(500ms);
    EXPECT_EQ(sent(), Names{"a.png"});
}

TEST_F(FilesToSendTest, WithAPanelTheListStaysClosed)
{
    pickRoom204();
    dashboard->sendFiles({file("/home/ada/a.png")});
    EXPECT_FALSE(view.devicesList);
    EXPECT_EQ(view.filesWaiting, "");
}

TEST_F(FilesToSendTest, RestWaitsForTheNextPanelAfterADisconnect)
{
    pickRoom204();
    dashboard->sendFiles({file("/home/ada/a.png"), file("/home/ada/b.pdf")});
    queue.advance(500ms);
    dashboard->deviceDisconnecetd();
    EXPECT_EQ(view.filesWaiting, "1 b.pdf");
    http.completeWithHttp(0, 200, "");
    queue.advance(1h);
    EXPECT_EQ(alertMessages(), Names{"Success"});
    pickRoom204();
    queue.advance(500ms);
    EXPECT_EQ(http.sent().back().request.headers.at(2).value, "b.pdf");
}

TEST_F(FilesToSendTest, FileThatCannotBeSentIsToldAndTheRestIsSent)
{
    pickRoom204();
    fileReader.problems["/home/ada/gone.png"] = FileProblem::unreadable;
    dashboard->sendFiles(
        {FileUrl::fromPath("/home/ada/gone.png").text(), "smb://server/plan.pdf", file("/home/ada/b.pdf")});
    queue.advance(500ms);
    ASSERT_EQ(alerts.shown.size(), 2u);
    EXPECT_EQ(alerts.shown[0].informativeText, "\"smb://server/plan.pdf\" is not a file on this computer.");
    EXPECT_EQ(alerts.shown[1].informativeText, "\"gone.png\" cannot be read.");
    EXPECT_EQ(sent(), Names{"b.pdf"});
}

TEST_F(FilesToSendTest, PanelThatTakesNoFilesIsToldOnceForAll)
{
    dashboard->didPickCastingDeviceWithIP("10.0.2.15", "0A00020F", "Halcyon-X 75");
    dashboard->sendFiles({file("/home/ada/a.png"), file("/home/ada/b.pdf")});
    queue.advance(1h);
    EXPECT_EQ(alertMessages(), Names{"Cannot upload"});
    EXPECT_EQ(sent(), Names{});
    pickRoom204();
    queue.advance(1h);
    EXPECT_EQ(sent(), Names{}) << "they are forgotten";
}

} // namespace companion::testing
