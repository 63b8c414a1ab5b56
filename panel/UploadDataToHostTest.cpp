#include "panel/UploadDataToHost.h"

#include "platform/testing/FakeAlerts.h"
#include "platform/testing/FakeHttpSession.h"
#include "platform/testing/FakeLog.h"
#include "platform/testing/FakeMainQueue.h"

#include <gtest/gtest.h>
#include <regex>

namespace companion::testing {

class UploadDataToHostTest : public ::testing::Test {
protected:
    static FileBytes bytes(const std::string& text) { return sharedBytes(text); }

    void prepare(const std::string& fileName = "a.png", const std::string& fileType = "image/png",
        const std::string& content = "\x89PN")
    {
        upload.initWith(fileType, bytes(content), fileName, "10.27.3.20");
    }

    /// The boundary as the header tells it.
    std::string boundary(std::size_t index = 0) const
    {
        const std::string value = session.request(index).headers.at(0).value;
        return value.substr(value.find('=') + 1);
    }

    std::string header(std::size_t position) const { return session.request(0).headers.at(position).value; }

    /// Uploads, has the request answered, and tells what came of it.
    std::string afterStatus(int status, const std::string& body = "")
    {
        prepare();
        upload.upload();
        transcript.clear();
        session.completeWithHttp(session.sent().size() - 1, status, body);
        return afterAnswer();
    }

    std::string afterReply(HttpReply reply)
    {
        prepare();
        upload.upload();
        transcript.clear();
        session.complete(0, std::move(reply));
        return afterAnswer();
    }

    std::string afterAnswer()
    {
        const std::size_t shownBefore = alerts.shown.size();
        transcript.add("--");
        queue.runPending();
        std::string text = transcript.take("\n");
        if (alerts.shown.size() > shownBefore)
            text += ": " + alerts.shown.back().informativeText;
        return text;
    }

    static std::string responseLine(int status)
    {
        return "print <Response http://10.27.3.20:5505/uploadfile> { Status Code: " + std::to_string(status)
            + ", Headers { } }\n";
    }

    Transcript transcript;
    FakeConsole console{transcript};
    FakeAlerts alerts{transcript};
    FakeMainQueue queue;
    FakeHttpSession session;
    UploadDataToHost upload{{session, console, queue, alerts}};
};

using UploadDataToHostDeathTest = UploadDataToHostTest;

TEST_F(UploadDataToHostTest, StartsWithFourAbsentValues)
{
    EXPECT_EQ(upload.fileType(), std::nullopt);
    EXPECT_EQ(upload.data(), nullptr);
    EXPECT_EQ(upload.fileName(), std::nullopt);
    EXPECT_EQ(upload.selectedDeviceIP(), std::nullopt);
}

TEST_F(UploadDataToHostTest, InitStoresItsFourValuesAndAbsenceToo)
{
    const FileBytes data = bytes("x");
    upload.initWith("video/mp4", data, "clip.mp4", "10.27.3.20");
    EXPECT_EQ(upload.fileType(), "video/mp4");
    EXPECT_EQ(upload.data(), data);
    EXPECT_EQ(upload.fileName(), "clip.mp4");
    EXPECT_EQ(upload.selectedDeviceIP(), "10.27.3.20");
    upload.initWith(std::nullopt, nullptr, std::nullopt, std::nullopt);
    EXPECT_EQ(upload.fileType(), std::nullopt);
    EXPECT_EQ(upload.data(), nullptr);
    EXPECT_EQ(upload.fileName(), std::nullopt);
    EXPECT_EQ(upload.selectedDeviceIP(), std::nullopt);
}

TEST_F(UploadDataToHostTest, PostsToPort5505WithFourHeaderFieldsInOrder)
{
    prepare("Report \"final\".pdf", "document/pdf", "12345");
    upload.upload();
    ASSERT_EQ(session.sent().size(), 1u);
    const HttpRequest& request = session.request(0);
    EXPECT_EQ(request.url.text, "http://10.27.3.20:5505/uploadfile");
    EXPECT_EQ(request.method, HttpMethod::post);
    EXPECT_EQ(request.timeout, std::chrono::seconds(60));
    EXPECT_EQ(request.headers,
        (std::vector<HttpHeader>{{"Content-Type", "multipart/form-data; boundary=" + boundary()},
            {"Content-Length", "5"}, {"srcfilename", "Report \"final\".pdf"}, {"filetype", "document/pdf"}}));
    EXPECT_EQ(header(0), "multipart/form-data; boundary=" + boundary());
}

TEST_F(UploadDataToHostTest, BoundaryIsAnUpperCaseVersion4UuidOfFortyFiveCharactersInAll)
{
    prepare();
    upload.upload();
    EXPECT_EQ(boundary().size(), 45u);
    EXPECT_TRUE(std::regex_match(boundary(),
        std::regex("Boundary-[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}")))
        << boundary();
}

TEST_F(UploadDataToHostTest, TwoUploadsOfTheSameFileCarryDifferentBoundaries)
{
    prepare();
    upload.upload();
    upload.upload();
    ASSERT_EQ(session.sent().size(), 2u);
    EXPECT_NE(boundary(0), boundary(1));
}

TEST_F(UploadDataToHostTest, BodyIsTheOneFileByteForByte)
{
    prepare();
    upload.upload();
    EXPECT_EQ(FakeHttpSession::bodyText(session.request(0)),
        "--" + boundary()
            + "\r\nContent-Disposition: form-data; name=\"my-file\"; filename=\"a.png\"\r\n"
              "Content-Type: image/png\r\n\r\n\x89PN\r\n--"
            + boundary() + "--\r\n");
}

TEST_F(UploadDataToHostTest, FileBytesAreNotCopied)
{
    prepare();
    upload.upload();
    EXPECT_EQ(session.request(0).body->at(1), upload.data());
}

TEST_F(UploadDataToHostTest, EmptyFileHasLength0AndAnEmptySection)
{
    prepare("empty.txt", "(null)/txt", "");
    upload.upload();
    EXPECT_EQ(header(1), "0");
    EXPECT_EQ(FakeHttpSession::bodyText(session.request(0)),
        "--" + boundary()
            + "\r\nContent-Disposition: form-data; name=\"my-file\"; filename=\"empty.txt\"\r\n"
              "Content-Type: (null)/txt\r\n\r\n\r\n--"
            + boundary() + "--\r\n");
}

TEST_F(UploadDataToHostTest, LinesBeforeTheRequestTellHeaderFieldsAndTheBodysLength)
{
    prepare();
    upload.upload();
    const std::size_t length = FakeHttpSession::bodyText(session.request(0)).size();
    EXPECT_EQ(transcript.take(),
        "print Uploading...\nprint request: { Content-Type = \"multipart/form-data; boundary=" + boundary()
            + "\"; Content-Length = \"3\"; srcfilename = \"a.png\"; filetype = \"image/png\" } "
            + std::to_string(length));
}

TEST_F(UploadDataToHostTest, RequestIsDescribedBeforeItIsSent)
{
    FakeHttpSession tracedSession{transcript};
    UploadDataToHost traced({tracedSession, console, queue, alerts});
    traced.initWith("image/png", bytes("x"), "a.png", "10.27.3.20");
    traced.upload();
    ASSERT_EQ(transcript.lines().size(), 3u);
    EXPECT_EQ(transcript.lines()[0], "print Uploading...");
    EXPECT_EQ(transcript.lines()[1].substr(0, 17), "print request: { ");
    EXPECT_EQ(transcript.lines()[2], "send http://10.27.3.20:5505/uploadfile");
}

TEST_F(UploadDataToHostTest, AddressThatMakesNoUrlSendsNothingAfterTheFirstLine)
{
    upload.initWith(std::nullopt, nullptr, std::nullopt, "10.27.3 .20");
    upload.upload();
    EXPECT_EQ(session.sent().size(), 0u);
    EXPECT_EQ(transcript.take(), "print Uploading...");
    EXPECT_TRUE(queue.isIdle());
}

TEST_F(UploadDataToHostDeathTest, EachAbsentValueIsFatal)
{
    upload.initWith("image/png", bytes(""), "a.png", std::nullopt);
    EXPECT_DEATH(upload.upload(), "Fatal error: An upload has no panel address.");
    upload.initWith("image/png", nullptr, "a.png", "10.27.3.20");
    EXPECT_DEATH(upload.upload(), "Fatal error: An upload has no data.");
    upload.initWith("image/png", bytes(""), std::nullopt, "10.27.3.20");
    EXPECT_DEATH(upload.upload(), "Fatal error: An upload has no file name.");
    upload.initWith(std::nullopt, bytes(""), "a.png", "10.27.3.20");
    EXPECT_DEATH(upload.upload(), "Fatal error: An upload has no file type.");
}

TEST_F(UploadDataToHostTest, Status200IsSuccessAndTheAlertComesFromTheMainQueue)
{
    EXPECT_EQ(afterStatus(200),
        responseLine(200) + "print Successfully uploaded\n--\nalert Success: File Uploaded successfully.");
}

TEST_F(UploadDataToHostTest, Status500IsAServerError)
{
    EXPECT_EQ(afterStatus(500),
        responseLine(500) + "--\nalert Failure: Server error while uploading. Please try again.");
}

TEST_F(UploadDataToHostTest, EveryOtherStatusIsAFailure)
{
    for (const int status : {100, 199, 201, 204, 206, 302, 400, 404, 413, 499, 501, 503, 507, 599})
        EXPECT_EQ(afterStatus(status), responseLine(status) + "--\nalert Failure: File Upload failed.")
            << status;
}

TEST_F(UploadDataToHostTest, TheReplysBodyIsNeverRead)
{
    EXPECT_EQ(afterStatus(200, "Failure \xFF"), afterStatus(200));
    EXPECT_EQ(afterStatus(400, "200 OK"), afterStatus(400));
}

TEST_F(UploadDataToHostTest, TransportErrorIsSilent)
{
    EXPECT_EQ(afterReply({std::nullopt, std::nullopt, "Connection refused"}), "--");
}

TEST_F(UploadDataToHostTest, ErrorBesideAWholeReplyIsSilent)
{
    EXPECT_EQ(
        afterReply({"", UrlResponse{Url{"http://10.27.3.20:5505/uploadfile"}, 200, {}}, "cut off"}), "--");
}

TEST_F(UploadDataToHostTest, ResponseWithoutBytesIsSilent)
{
    EXPECT_EQ(afterReply({std::nullopt, UrlResponse{Url{"http://10.27.3.20:5505/uploadfile"}, 200, {}},
                  std::nullopt}),
        "--");
}

TEST_F(UploadDataToHostTest, BytesWithoutAResponseArePrintedAndOtherwiseSilent)
{
    EXPECT_EQ(afterReply({"", std::nullopt, std::nullopt}), "print no response\n--");
}

TEST_F(UploadDataToHostTest, ResponseThatIsNoHttpIsPrintedAndOtherwiseSilent)
{
    EXPECT_EQ(afterReply({"", UrlResponse{Url{"data:"}, std::nullopt, {}}, std::nullopt}),
        "print <Response data:>\n--");
}

TEST_F(UploadDataToHostTest, OutcomeOfEachKindOfReply)
{
    const Url url{"http://10.27.3.20:5505/uploadfile"};
    EXPECT_EQ(uploadOutcome({"", UrlResponse{url, 200, {}}, std::nullopt}), UploadOutcome::uploaded);
    EXPECT_EQ(uploadOutcome({"", UrlResponse{url, 500, {}}, std::nullopt}), UploadOutcome::serverError);
    EXPECT_EQ(uploadOutcome({"", UrlResponse{url, 201, {}}, std::nullopt}), UploadOutcome::rejected);
    EXPECT_EQ(uploadOutcome({"", UrlResponse{url, std::nullopt, {}}, std::nullopt}), UploadOutcome::silent);
    EXPECT_EQ(uploadOutcome({std::nullopt, UrlResponse{url, 200, {}}, std::nullopt}), UploadOutcome::silent);
    EXPECT_EQ(uploadOutcome({"", UrlResponse{url, 200, {}}, "cut off"}), UploadOutcome::silent);
    EXPECT_EQ(uploadOutcome({"", std::nullopt, std::nullopt}), UploadOutcome::silent);
}

TEST_F(UploadDataToHostTest, RunningRequestDoesNotNeedTheObjectAnyMore)
{
    {
        UploadDataToHost passing({session, console, queue, alerts});
        passing.initWith("image/png", bytes("x"), "a.png", "10.27.3.20");
        passing.upload();
    }
    session.completeWithHttp(0, 200, "");
    queue.runPending();
    EXPECT_EQ(alerts.shown.size(), 1u);
}

TEST_F(UploadDataToHostTest, AlertsOfSeveralUploadsComeOneAfterTheOther)
{
    prepare();
    for (int count = 0; count < 3; ++count)
        upload.upload();
    session.completeWithHttp(2, 404, "");
    session.completeWithHttp(0, 200, "");
    session.completeWithHttp(1, 500, "");
    transcript.clear();
    queue.runPending();
    EXPECT_EQ(transcript.take(), "alert Failure\nalert Success\nalert Failure");
}

TEST_F(UploadDataToHostTest, ProgressIsToldUntilTheReplyAndThenDropped)
{
    auto progress = std::make_shared<std::string>();
    const std::weak_ptr<std::string> whileUnderWay = progress;
    prepare();
    upload.upload([progress = std::move(progress)](std::uint64_t sent, std::uint64_t total) {
        *progress = std::to_string(sent) + " of " + std::to_string(total);
        return true;
    });
    session.request(0).progress(7, 9);
    EXPECT_EQ(*whileUnderWay.lock(), "7 of 9");
    session.fail(0, "Connection refused");
    EXPECT_TRUE(whileUnderWay.expired());
}

TEST_F(UploadDataToHostTest, ProgressOfAnUploadThatIsNotSentIsDroppedAtOnce)
{
    auto progress = std::make_shared<int>();
    const std::weak_ptr<int> whileUnderWay = progress;
    prepare();
    upload.setSelectedDeviceIP("10.0 .2.15");
    upload.upload([progress = std::move(progress)](std::uint64_t, std::uint64_t) { return true; });
    EXPECT_TRUE(whileUnderWay.expired());
}

} // namespace companion::testing
