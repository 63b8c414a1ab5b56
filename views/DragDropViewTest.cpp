#include "views/DragDropView.h"

#include "platform/testing/FakeAlerts.h"
#include "platform/testing/FakeLog.h"
#include "platform/testing/FakeMainQueue.h"

#include <gtest/gtest.h>
#include <utility>

namespace companion::testing {

namespace {

/// Offers what the test puts in, in that order; absent data is offered and not given.
class FakePasteboard : public DragPasteboard {
public:
    using Item = std::pair<DragType, std::optional<std::string>>;

    FakePasteboard(std::initializer_list<Item> items)
        : m_items(items)
    {
    }

    std::vector<DragType> types() const override
    {
        std::vector<DragType> types;
        for (const Item& item : m_items)
            types.push_back(item.first);
        return types;
    }

    std::optional<std::string> dataForType(DragType type) const override
    {
        for (const Item& item : m_items) {
            if (item.first == type)
                return item.second;
        }
        return std::nullopt;
    }

private:
    std::vector<Item> m_items;
};

class FakeDelegate : public DragDropViewDelegate {
public:
    explicit FakeDelegate(Transcript& transcript)
        : m_transcript(transcript)
    {
    }

    void uploadFileURL(const FileUrl& url) override { m_transcript.add("upload " + url.path()); }
    void draggingBegin() override { m_transcript.add("begin"); }
    void draggingInprogress() override { m_transcript.add("in progress"); }
    void draggingFinished() override { m_transcript.add("finished"); }

private:
    Transcript& m_transcript;
};

const FakePasteboard::Item png{DragType::pngImage, "\x89PNG"};
const FakePasteboard::Item pdf{DragType::pdf, "%PDF-1.7"};
const FakePasteboard::Item webUrl{DragType::url, "http://example.com/"};
const FakePasteboard::Item file{DragType::fileUrl, "file:///home/ada/my%20plan.pdf"};
const std::string pasteError = "not accepted; alert Paste Error";

} // namespace

class DragDropViewTest : public ::testing::Test {
protected:
    DragDropViewTest()
    {
        view.init();
        view.setDelegate(delegate);
    }

    /// The answer, and what happened before and after it.
    std::string drop(const FakePasteboard& pasteboard)
    {
        transcript.add(view.performDragOperation(pasteboard) ? "accepted" : "not accepted");
        queue.runPending();
        return transcript.take("; ");
    }

    Transcript transcript;
    FakeAlerts alerts{transcript};
    FakeSystemLog log{transcript};
    FakeMainQueue queue;
    std::shared_ptr<FakeDelegate> delegate = std::make_shared<FakeDelegate>(transcript);
    DragDropView view{alerts, log, queue};
};

TEST_F(DragDropViewTest, OnlyInitRegistersTheFourTypesInOrder)
{
    DragDropView fresh(alerts, log, queue);
    EXPECT_TRUE(fresh.registeredDraggedTypes().empty());
    EXPECT_FALSE(fresh.takesDrag(FakePasteboard{png, pdf, webUrl, file}));
    const std::vector<DragType> registered{
        DragType::pngImage, DragType::pdf, DragType::url, DragType::fileUrl};
    fresh.init();
    EXPECT_EQ(fresh.registeredDraggedTypes(), registered);
    fresh.init();
    EXPECT_EQ(fresh.registeredDraggedTypes(), registered);
}

TEST_F(DragDropViewTest, TakesADragThatOffersOneOfTheTypes)
{
    for (const auto& item : {png, pdf, webUrl, file})
        EXPECT_TRUE(view.takesDrag(FakePasteboard{item}));
    EXPECT_FALSE(view.takesDrag(FakePasteboard{}));
}

TEST_F(DragDropViewTest, DragThatEntersMovesAndLeavesIsToldAndAllowedEverything)
{
    EXPECT_EQ(view.draggingEntered(), 0xFFFFFFFFu);
    EXPECT_EQ(view.draggingUpdated(), 0xFFFFFFFFu);
    view.draggingUpdated();
    view.draggingExited();
    EXPECT_EQ(transcript.take("; "), "begin; in progress; in progress; finished");
}

TEST_F(DragDropViewTest, EndOfADragIsLoggedAndTold)
{
    view.draggingEnded();
    EXPECT_EQ(transcript.take("; "), "log draggingEnded; finished");
}

TEST_F(DragDropViewTest, ExitAndEndOfOneDragAreBothTold)
{
    view.draggingEntered();
    view.draggingExited();
    view.draggingEnded();
    EXPECT_EQ(transcript.take("; "), "begin; finished; log draggingEnded; finished");
}

TEST_F(DragDropViewTest, FileIsUploadedOnce)
{
    EXPECT_EQ(drop({file}), "accepted; upload /home/ada/my plan.pdf");
    EXPECT_EQ(drop({webUrl, file}), "accepted; upload /home/ada/my plan.pdf");
}

TEST_F(DragDropViewTest, ImagePdfAndUrlAreLoggedAccepted)
{
    EXPECT_EQ(drop({png}), "log PNG image; accepted");
    EXPECT_EQ(drop({pdf}), "log PDF; accepted");
    EXPECT_EQ(drop({webUrl}), "log URL; accepted");
}

TEST_F(DragDropViewTest, ImageOutranksTheFileTheFileThePdfAndThePdfTheUrl)
{
    EXPECT_EQ(drop({file, webUrl, pdf, png}), "log PNG image; accepted");
    EXPECT_EQ(drop({pdf, webUrl, file}), "accepted; upload /home/ada/my plan.pdf");
    EXPECT_EQ(drop({webUrl, pdf}), "log PDF; accepted");
}

TEST_F(DragDropViewTest, NothingOfferedIsAPasteError)
{
    EXPECT_EQ(drop({}), pasteError);
    EXPECT_EQ(alerts.shown.back().informativeText, "Sorry, but the past operation failed");
}

TEST_F(DragDropViewTest, EmptyOrMissingDataOfTheFirstRegisteredTypeIsAPasteError)
{
    for (const DragType type : {DragType::pngImage, DragType::pdf, DragType::url, DragType::fileUrl}) {
        EXPECT_EQ(drop({{type, ""}}), pasteError);
        EXPECT_EQ(drop({{type, std::nullopt}}), pasteError);
    }
    EXPECT_EQ(drop({file, {DragType::pngImage, ""}}), pasteError);
    EXPECT_EQ(drop({file, {DragType::pdf, ""}}), pasteError);
    EXPECT_EQ(drop({file, {DragType::url, ""}}), pasteError);
    EXPECT_EQ(drop({webUrl, {DragType::pdf, std::nullopt}}), pasteError);
}

TEST_F(DragDropViewTest, EmptyDataOfAnotherTypeThanTheFirstRegisteredOneIsNone)
{
    EXPECT_EQ(drop({png, {DragType::fileUrl, ""}}), "log PNG image; accepted");
    EXPECT_EQ(drop({pdf, {DragType::url, ""}}), "log PDF; accepted");
}

TEST_F(DragDropViewTest, FileUrlThatNamesNoFileIsAcceptedAndUploadsNothing)
{
    EXPECT_EQ(drop({{DragType::fileUrl, "http://example.com/a"}}), "accepted");
    EXPECT_EQ(drop({webUrl, {DragType::fileUrl, ""}}), "accepted");
}

TEST_F(DragDropViewTest, WithoutADelegateTheAnswersStayAndNobodyIsTold)
{
    delegate.reset();
    EXPECT_EQ(view.draggingEntered(), DragDropView::everyDragOperation);
    EXPECT_EQ(view.draggingUpdated(), DragDropView::everyDragOperation);
    view.draggingExited();
    view.draggingEnded();
    EXPECT_EQ(drop({file}), "log draggingEnded; accepted");
}

TEST_F(DragDropViewTest, DropOfTypesThatAreNotRegisteredIsAPasteError)
{
    DragDropView unregistered(alerts, log, queue);
    EXPECT_FALSE(unregistered.performDragOperation(FakePasteboard{file}));
    queue.runPending();
    EXPECT_EQ(transcript.take("; "), "alert Paste Error");
}

TEST_F(DragDropViewTest, ReactionsWaitForTheirTurnOnTheMainQueue)
{
    queue.async([&] { transcript.add("earlier job"); });
    view.performDragOperation(FakePasteboard{file});
    view.performDragOperation(FakePasteboard{});
    EXPECT_EQ(transcript.take(), "");
    queue.runPending();
    EXPECT_EQ(transcript.take("; "), "earlier job; upload /home/ada/my plan.pdf; alert Paste Error");
}

TEST_F(DragDropViewTest, ADelegateThatIsGoneByThenIsNotTold)
{
    view.performDragOperation(FakePasteboard{file});
    delegate.reset();
    queue.runPending();
    EXPECT_EQ(transcript.take(), "");
}

} // namespace companion::testing
