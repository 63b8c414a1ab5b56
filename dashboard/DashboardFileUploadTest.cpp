#include "dashboard/testing/DashboardTest.h"

namespace companion::testing {

namespace {

using namespace std::chrono_literals;

class DashboardFileUploadTest : public DashboardTest {
protected:
    DashboardFileUploadTest() { load(); }

    void pair(const std::string& name = "Room 204")
    {
        dashboard->didPickCastingDeviceWithIP("10.0.2.15", "0A00020F", name);
        transcript.clear();
    }

    FileUrl file(const std::string& path, const std::string& content = "content")
    {
        fileReader.files[path] = sharedBytes(content);
        return FileUrl::fromPath(path);
    }

    /// The file type of the upload of a file of this name.
    std::string typeOf(const std::string& fileName)
    {
        dashboard->uploadFileURL(file("/home/ada/" + fileName));
        queue.advance(500ms);
        return http.sent().back().request.headers.at(3).value;
    }

    std::string taken() { return transcript.take("; "); }
};

using DashboardFileUploadDeathTest = DashboardFileUploadTest;

constexpr auto cannotUpload = "alert Cannot upload";

} // namespace

TEST_F(DashboardFileUploadTest, LoadingFillsTheListsAndReadiesTheDropArea)
{
    EXPECT_EQ(dashboard->imageFileTypes(), panelFileTypes().imageFileTypes);
    EXPECT_EQ(dashboard->videoFileTypes(), panelFileTypes().videoFileTypes);
    EXPECT_EQ(dashboard->documentsFileTypes(), panelFileTypes().documentsFileTypes);
    EXPECT_EQ(view.fileUploadView().registeredDraggedTypes().size(), 4u);
    pair();
    view.fileUploadView().draggingEntered();
    EXPECT_EQ(taken(), "drop image fileUploadGridActive; arrow image uploadArrowActive");
}

TEST_F(DashboardFileUploadTest, TheHeldButtonIsReleasedBeforeTheFileIsRead)
{
    pair();
    dashboard->uploadFileURL(file("/home/ada/a.png"));
    EXPECT_EQ(poster.touchesEnded, 0);
    queue.advance(500ms);
    EXPECT_EQ(poster.touchesEnded, 1);
}

TEST_F(DashboardFileUploadTest, WithoutAPanelTheButtonShowsNoOpenPanel)
{
    dashboard->uploadFileAction();
    EXPECT_EQ(taken(), cannotUpload);
    EXPECT_EQ(alerts.shown.back().informativeText, "File upload feature is not available for your device.");
    EXPECT_TRUE(queue.isIdle());
}

TEST_F(DashboardFileUploadTest, APanelThatIsPairedWhileTheRefusalIsShownChangesNothing)
{
    alerts.whileShown = [this] { pair(); };
    dashboard->uploadFileAction();
    EXPECT_EQ(alerts.shown.size(), 1u);
    EXPECT_EQ(taken(), "") << "no open panel";
}

TEST_F(DashboardFileUploadTest, APanelThatTakesNoFilesRefusesTheButtonAndTheDrop)
{
    pair("Halcyon-X 75");
    dashboard->uploadFileAction();
    EXPECT_EQ(taken(), cannotUpload);
    dashboard->uploadFileURL(file("/home/ada/a.png"));
    EXPECT_EQ(taken(), cannotUpload);
    queue.advance(1s);
    EXPECT_EQ(taken(), "");
}

TEST_F(DashboardFileUploadTest, OpenPanelStartsInDownloadsWithTheEighteenTypes)
{
    pair();
    dashboard->uploadFileAction();
    EXPECT_EQ(taken(),
        "open panel in downloads: png jpg jpeg psd svg gof mp3 mov mp4 doc docx ppt pptx pdf key pps xls "
        "xlsx");
    EXPECT_TRUE(queue.isIdle()) << "a cancelled open panel leads to nothing";
}

TEST_F(DashboardFileUploadTest, ChosenFileIsReadAndSentHalfASecondLater)
{
    pair();
    fileChooser.choice = file("/home/ada/my plan.pdf", "%PDF");
    dashboard->uploadFileAction();
    transcript.clear();
    queue.advance(499ms);
    EXPECT_EQ(taken(), "");
    queue.advance(1ms);
    EXPECT_EQ(taken(),
        "log File name my plan.pdf; log File extension pdf; log File type document/pdf; show upload "
        "my plan.pdf; read /home/ada/my plan.pdf; send 10.0.2.15:5505/uploadfile");
    const HttpRequest& request = http.request(0);
    EXPECT_EQ(request.headers.at(1).value, "4");
    EXPECT_EQ(request.headers.at(2).value, "my plan.pdf");
    EXPECT_EQ(request.headers.at(3).value, "document/pdf");
    EXPECT_EQ(request.body->at(1), fileReader.files.at("/home/ada/my plan.pdf"));
}

TEST_F(DashboardFileUploadTest, UrlOfTheChosenFileIsLogged)
{
    pair();
    fileChooser.choice = file("/home/ada/my plan.pdf");
    dashboard->uploadFileAction();
    EXPECT_TRUE(taken().ends_with("; log file:///home/ada/my%20plan.pdf"));
}

TEST_F(DashboardFileUploadTest, DroppedFileIsReadAndSentHalfASecondLaterWithoutALineOfItsUrl)
{
    pair();
    dashboard->uploadFileURL(file("/home/ada/a.png"));
    queue.advance(499'999'999ns);
    EXPECT_EQ(taken(), "");
    queue.advance(1ns);
    EXPECT_EQ(taken(),
        "log File name a.png; log File extension png; log File type image/png; show upload a.png; "
        "read /home/ada/a.png; send 10.0.2.15:5505/uploadfile");
}

TEST_F(DashboardFileUploadTest, FileThatCannotBeReadIsToldAndNothingIsScheduled)
{
    pair();
    fileReader.problems["/home/ada/my plan.pdf"] = FileProblem::unreadable;
    const FileUrl url = FileUrl::fromPath("/home/ada/my plan.pdf");
    fileChooser.choice = url;
    dashboard->uploadFileAction();
    EXPECT_TRUE(taken().ends_with("; log file:///home/ada/my%20plan.pdf; alert Cannot upload"));
    EXPECT_EQ(alerts.shown.back().informativeText, "\"my plan.pdf\" cannot be read.");
    dashboard->uploadFileURL(url);
    EXPECT_EQ(taken(), cannotUpload);
    EXPECT_TRUE(queue.isIdle());
}

TEST_F(DashboardFileUploadTest, FileThatDoesNotFitIntoMemoryIsToldAndNothingIsScheduled)
{
    pair();
    fileReader.problems["/home/ada/a.mov"] = FileProblem::tooLarge;
    dashboard->uploadFileURL(FileUrl::fromPath("/home/ada/a.mov"));
    EXPECT_EQ(taken(), cannotUpload);
    EXPECT_EQ(
        alerts.shown.back().informativeText, "\"a.mov\" does not fit into the free memory of this computer.");
    EXPECT_TRUE(queue.isIdle());
}

TEST_F(DashboardFileUploadTest, PanelWithoutUploadsIsToldBeforeTheFileIsLookedAt)
{
    pair("Halcyon-X 75");
    fileReader.problems["/home/ada/a.mov"] = FileProblem::tooLarge;
    dashboard->uploadFileURL(FileUrl::fromPath("/home/ada/a.mov"));
    EXPECT_EQ(alerts.shown.size(), 1u);
    EXPECT_EQ(alerts.shown.back().informativeText, "File upload feature is not available for your device.");
}

TEST_F(DashboardFileUploadTest, DroppedFilesOfAnyTypeAreSent)
{
    pair();
    EXPECT_EQ(typeOf("photo.jpeg"), "image/jpeg");
    EXPECT_EQ(typeOf("clip.mp3"), "video/mp3");
    EXPECT_EQ(typeOf("photo.JPG"), "(null)/JPG");
    EXPECT_EQ(typeOf("archive.tar.gz"), "(null)/gz");
    EXPECT_EQ(typeOf("Makefile"), "(null)/Makefile");
    EXPECT_EQ(typeOf("name."), "(null)/");
}

TEST_F(DashboardFileUploadTest, UploadWithAUrlHasNoGate)
{
    pair("Halcyon-X 75");
    dashboard->uploadFileWithURL(file("/home/ada/a.png"));
    queue.advance(500ms);
    EXPECT_EQ(http.sent().size(), 1u);
}

TEST_F(DashboardFileUploadTest, PanelIsTheOneThatIsPairedHalfASecondLater)
{
    pair();
    dashboard->uploadFileURL(file("/home/ada/a.png"));
    queue.advance(300ms);
    dashboard->didPickCastingDeviceWithIP("10.0.2.99", "0A000263", "Room 205");
    queue.advance(200ms);
    EXPECT_EQ(http.request(0).url.text, "http://10.0.2.99:5505/uploadfile");
}

TEST_F(DashboardFileUploadDeathTest, PanelThatIsGoneHalfASecondLaterIsFatal)
{
    pair();
    dashboard->uploadFileURL(file("/home/ada/a.png"));
    queue.advance(499ms);
    takeLocalAddressAway();
    dashboard->deviceDisconnecetd();
    EXPECT_DEATH(queue.advance(1ms), "Fatal error: An upload has no panel address.");
}

TEST_F(DashboardFileUploadDeathTest, FileThatCannotBeReadHalfASecondLaterIsFatal)
{
    pair();
    dashboard->uploadFileURL(file("/home/ada/a.png"));
    fileReader.files.clear();
    EXPECT_DEATH(queue.advance(500ms), "Fatal error: An upload has no data.");
}

TEST_F(DashboardFileUploadTest, FileIsReadOnceAndOnlyWhenItIsSent)
{
    pair();
    dashboard->uploadFileURL(file("/home/ada/a.png", "old"));
    file("/home/ada/a.png", "newer");
    queue.advance(500ms);
    const std::string events = taken();
    EXPECT_EQ(events.find("read"), events.rfind("read"));
    EXPECT_EQ(http.request(0).headers.at(1).value, "5");
}

TEST_F(DashboardFileUploadTest, FileThatIsBeingReadIsShownSo)
{
    pair();
    dashboard->uploadFileURL(file("/home/ada/a.png"));
    int whenShown = 0;
    view.whenUploadIsShown = [&] { whenShown = view.uploads.back().lock()->percent; };
    queue.advance(500ms);
    EXPECT_EQ(whenShown, UploadUnderWay::fileIsBeingRead);
    EXPECT_EQ(view.uploads.back().lock()->percent, 0);
}

TEST_F(DashboardFileUploadTest, ProgressIsShownInWholePercentNeverBeyond100)
{
    pair();
    dashboard->uploadFileURL(file("/home/ada/a.png"));
    queue.advance(500ms);
    const auto upload = view.uploads.at(0).lock();
    const struct {
        std::uint64_t sent;
        std::uint64_t total;
        int percent;
    } cases[] = {{0, 0, 0}, {7, 0, 0}, {1, 100, 1}, {199, 10000, 1}, {999, 1000, 99}, {1000, 1000, 100},
        {1001, 1000, 100}, {5'000'000'000'000, 9'999'999'999'999, 50}};
    for (const auto& step : cases) {
        EXPECT_TRUE(http.request(0).progress(step.sent, step.total));
        EXPECT_EQ(upload->percent, step.percent) << step.sent << " of " << step.total;
    }
}

TEST_F(DashboardFileUploadTest, ProgressIsShownUntilTheUploadIsOverHoweverItEnds)
{
    pair();
    for (const std::size_t upload : {0u, 1u}) {
        dashboard->uploadFileURL(file("/home/ada/a.png"));
        queue.advance(500ms);
        EXPECT_FALSE(view.uploads.at(upload).expired());
        transcript.clear();
        if (upload == 0)
            http.completeWithHttp(upload, 200, "");
        else
            http.fail(upload, "Connection reset by peer");
        EXPECT_TRUE(view.uploads.at(upload).expired());
        queue.runPending();
        EXPECT_EQ(taken(), upload == 0 ? "alert Success" : "");
    }
}

TEST_F(DashboardFileUploadTest, AnUploadThatIsGivenUpEndsItsOwnRequestSilently)
{
    pair();
    for (const std::size_t upload : {0u, 1u}) {
        dashboard->uploadFileURL(file("/home/ada/" + std::to_string(upload) + ".png"));
        queue.advance(500ms);
    }
    transcript.clear();
    view.uploads.at(0).lock()->isGivenUp = true;
    EXPECT_FALSE(http.request(0).progress(1, 100));
    EXPECT_TRUE(http.request(1).progress(1, 100));
    http.fail(0, "given up");
    queue.runPending();
    EXPECT_EQ(taken(), "");
    EXPECT_TRUE(view.uploads.at(0).expired());
    EXPECT_FALSE(view.uploads.at(1).expired());
}

TEST_F(DashboardFileUploadTest, UrlThatIsNoneShowsNoProgressOnceTheFileIsRead)
{
    dashboard->didPickCastingDeviceWithIP("10.0 .2.15", "0A00020F", "Room 204");
    dashboard->uploadFileURL(file("/home/ada/a.png"));
    queue.advance(500ms);
    EXPECT_TRUE(taken().ends_with("; read /home/ada/a.png"));
    EXPECT_TRUE(http.sent().empty());
    EXPECT_TRUE(view.uploads.at(0).expired());
}

TEST_F(DashboardFileUploadTest, TenUploadsRunAtOnceAndEndOnTheirOwn)
{
    pair();
    for (int number = 0; number < 10; ++number)
        dashboard->uploadFileURL(
            file("/home/ada/" + std::to_string(number) + ".png", std::string(number, 'x')));
    queue.advance(500ms);
    ASSERT_EQ(http.sent().size(), 10u);
    for (std::size_t number = 0; number < 10; ++number) {
        EXPECT_EQ(http.request(number).headers.at(1).value, std::to_string(number));
        http.completeWithHttp(9 - number, number % 2 ? 200 : 404, "");
    }
    queue.runPending();
    EXPECT_EQ(alerts.shown.size(), 10u);
    for (const auto& upload : view.uploads)
        EXPECT_TRUE(upload.expired());
}

TEST_F(DashboardFileUploadTest, UploadThatWaitsIsSentEvenIfTheDashboardGoes)
{
    pair();
    dashboard->uploadFileURL(file("/home/ada/a.png"));
    dashboard.reset();
    queue.advance(500ms);
    EXPECT_EQ(http.sent().size(), 1u);
}

TEST_F(DashboardFileUploadTest, DragOverTheDropAreaLightsItUp)
{
    pair();
    dashboard->draggingBegin();
    EXPECT_EQ(taken(), "drop image fileUploadGridActive; arrow image uploadArrowActive");
    dashboard->draggingInprogress();
    EXPECT_EQ(taken(), "");
    dashboard->draggingFinished();
    EXPECT_EQ(taken(), "drop image fileUploadGrid; arrow image uploadArrow");
    queue.advance(499ms);
    EXPECT_EQ(taken(), "");
    queue.advance(1ms);
    EXPECT_EQ(taken(), "activate");
}

TEST_F(DashboardFileUploadTest, DragWithTheGateClosedChangesNothingAndActivatesNothing)
{
    dashboard->draggingBegin();
    dashboard->draggingInprogress();
    dashboard->draggingFinished();
    queue.advance(2s);
    EXPECT_EQ(taken(), "");
}

TEST_F(DashboardFileUploadTest, DragThatFinishesTwiceStaysAtRest)
{
    pair();
    dashboard->draggingBegin();
    dashboard->draggingFinished();
    dashboard->draggingFinished();
    transcript.clear();
    queue.advance(500ms);
    EXPECT_EQ(taken(), "activate; activate");
}

TEST_F(DashboardFileUploadTest, DropOnTheDropAreaUploadsTheFileAndBringsTheApplicationToTheFront)
{
    class FilePasteboard : public DragPasteboard {
        std::vector<DragType> types() const override { return {DragType::fileUrl}; }
        std::optional<std::string> dataForType(DragType) const override { return "file:///home/ada/a.png"; }
    };
    pair();
    file("/home/ada/a.png");
    view.fileUploadView().draggingEntered();
    EXPECT_TRUE(view.fileUploadView().performDragOperation(FilePasteboard()));
    view.fileUploadView().draggingEnded();
    EXPECT_EQ(taken(),
        "drop image fileUploadGridActive; arrow image uploadArrowActive; log draggingEnded; "
        "drop image fileUploadGrid; arrow image uploadArrow");
    queue.runPending();
    queue.advance(500ms);
    EXPECT_EQ(taken(),
        "activate; log File name a.png; log File extension png; log File type image/png; show "
        "upload a.png; read /home/ada/a.png; send 10.0.2.15:5505/uploadfile");
}

TEST_F(DashboardFileUploadTest, DropWithTheGateClosedIsAcceptedAndRefusedByAnAlert)
{
    class FilePasteboard : public DragPasteboard {
        std::vector<DragType> types() const override { return {DragType::fileUrl}; }
        std::optional<std::string> dataForType(DragType) const override { return "file:///home/ada/a.png"; }
    };
    EXPECT_TRUE(view.fileUploadView().performDragOperation(FilePasteboard()));
    EXPECT_EQ(taken(), "");
    queue.runPending();
    EXPECT_EQ(taken(), cannotUpload);
}

} // namespace companion::testing
