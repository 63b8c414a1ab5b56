#include "panel/UploadDataToHost.h"
#include "platform/testing/FakeAlerts.h"
#include "platform/testing/FakeLog.h"
#include "tests/http/RawServer.h"
#include "tests/http/RedirectedSession.h"
#include "tests/support/ThreadMainQueue.h"

#include <atomic>
#include <gmock/gmock.h>
#include <mutex>
#include <set>

namespace companion::testing {

using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAreArray;

namespace {

std::string patternOf(std::size_t size)
{
    std::string bytes(size, '\0');
    for (std::size_t index = 0; index < size; ++index)
        bytes[index] = static_cast<char>(index * 31 + index / 251);
    return bytes;
}

std::string answer(int status)
{
    return "HTTP/1.1 " + std::to_string(status) + " Any\r\nContent-Length: 0\r\n\r\n";
}

/// What stands behind `name` in a header section.
std::string fieldOf(const std::string& head, const std::string& name)
{
    const std::size_t at = head.find("\r\n" + name + ": ");
    if (at == std::string::npos)
        return "no " + name;
    const std::size_t value = at + name.size() + 4;
    return head.substr(value, head.find("\r\n", value) - value);
}

/// A request as the server has read it.
struct Message {
    explicit Message(const std::string& bytes)
        : head(bytes.substr(0, bytes.find("\r\n\r\n") + 4))
        , body(bytes.substr(head.size()))
    {
    }

    std::string boundary() const
    {
        const std::string type = fieldOf(head, "Content-Type");
        return type.substr(type.find('=') + 1);
    }

    std::string head;
    std::string body;
};

std::string expectedBody(
    const std::string& boundary, const std::string& name, const std::string& type, const std::string& content)
{
    return "--" + boundary + "\r\nContent-Disposition: form-data; name=\"my-file\"; filename=\"" + name
        + "\"\r\nContent-Type: " + type + "\r\n\r\n" + content + "\r\n--" + boundary + "--\r\n";
}

} // namespace

class UploadTest : public ::testing::Test {
protected:
    void start(const RawServer& server, const std::string& name, const std::string& content)
    {
        start(server.port(), name, content);
    }

    void start(std::uint16_t port, const std::string& name, const std::string& content)
    {
        session.port = port;
        UploadDataToHost upload({session, console, queue, alerts});
        upload.initWith("image/png", sharedBytes(content), name, "127.0.0.1");
        // Dropped with the request, which is on the delivery thread.
        const std::shared_ptr<void> underWay(nullptr, [this](void*) { queue.async([this] { ++ended; }); });
        upload.upload([underWay](std::uint64_t, std::uint64_t) { return true; });
        ++started;
    }

    /// Waits for all uploads, and tells what the user was told in the end.
    std::string outcome()
    {
        if (!queue.runUntil([this] { return ended == started; }))
            return "NEVER ENDED";
        queue.runFor(20ms); // an alert follows at once
        return alerts.shown.empty() ? "silence" : alerts.shown.back().informativeText;
    }

    /// The outcome when the server does this.
    std::string outcomeOf(const RawServer::Handler& handler, const std::string& content = "content")
    {
        alerts.shown.clear();
        const RawServer server(handler);
        start(server, "a.png", content);
        return outcome();
    }

    std::string outcomeOfReply(const std::string& reply)
    {
        return outcomeOf([reply](RawConnection& connection) {
            connection.readRequest();
            connection.write(reply);
        });
    }

    /// What a server reads of an upload that it answers with 200, and whatever may come behind it.
    Message sent(const std::string& name, const std::string& content)
    {
        std::string bytes;
        std::string rest = "not read";
        {
            const RawServer server([&](RawConnection& connection) {
                bytes = connection.readRequest();
                rest = connection.readRest(50ms);
                connection.write(answer(200));
                rest += connection.readRest(50ms);
            });
            start(server, name, content);
            EXPECT_EQ(outcome(), "File Uploaded successfully.");
        }
        EXPECT_EQ(rest, "") << "nothing follows the message";
        return Message(bytes);
    }

    Transcript consoleTranscript;
    FakeConsole console{consoleTranscript};
    Transcript logTranscript;
    FakeSystemLog log{logTranscript};
    Transcript alertTranscript;
    FakeAlerts alerts{alertTranscript};
    ThreadMainQueue queue;
    int ended = 0; ///< Changed by the main queue.
    int started = 0;
    RedirectedSession session{log, "5505"};
};

TEST_F(UploadTest, MessageIsFramedByItsRealLengthAndHeaderFieldsComeInOrder)
{
    const std::string content = patternOf(100000);
    const Message message = sent("a.png", content);
    EXPECT_EQ(message.body, expectedBody(message.boundary(), "a.png", "image/png", content));
    EXPECT_EQ(message.head,
        "POST /uploadfile HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(session.port)
            + "\r\nContent-Type: multipart/form-data; boundary=" + message.boundary() + "\r\nContent-Length: "
            + std::to_string(message.body.size()) + "\r\nsrcfilename: a.png\r\nfiletype: image/png\r\n\r\n");
}

TEST_F(UploadTest, FilesOf0BytesTo20MebibytesArriveWhole)
{
    for (const std::size_t size : {0u, 1u, 65536u, 20u << 20}) {
        const std::string content = patternOf(size);
        const Message message = sent("a.png", content);
        EXPECT_TRUE(message.body == expectedBody(message.boundary(), "a.png", "image/png", content)) << size;
        EXPECT_EQ(fieldOf(message.head, "Content-Length"), std::to_string(message.body.size()));
    }
}

TEST_F(UploadTest, FileThatHoldsTheBoundarysLookAndLineBreaksArrivesUnchanged)
{
    const std::string content = "\r\n--Boundary-\r\n\r\n--\r\n";
    const Message message = sent("a.png", content);
    EXPECT_EQ(message.body, expectedBody(message.boundary(), "a.png", "image/png", content));
}

TEST_F(UploadTest, NamesWithQuotesUmlautsBarsAnd255BytesGoOutAsTheyAre)
{
    for (const std::string& name : {std::string("my \"best\" photo.png"),
             std::string("Gr\xC3\xBC\xC3\x9F"
                         "e \xE2\x82\xAC.png"),
             std::string("a|b;c=d\\e%22.png"), std::string(251, 'n') + ".png"}) {
        const Message message = sent(name, "x");
        EXPECT_EQ(fieldOf(message.head, "srcfilename"), name);
        EXPECT_EQ(message.body, expectedBody(message.boundary(), name, "image/png", "x"));
    }
}

TEST_F(UploadTest, LineBreaksAndNulsInANameInjectNothingButFailSilentlyWithALogLine)
{
    const RawServer server([](RawConnection& connection) { connection.readRequest(); });
    for (const std::string& name : {std::string("a\r\nX-Injected: 1.png"), std::string("a\nb.png"),
             std::string("a\rb.png"), std::string("a\0b.png", 7)}) {
        logTranscript.clear();
        start(server, name, "x");
        EXPECT_EQ(outcome(), "silence");
        EXPECT_THAT(logTranscript.take(), HasSubstr("srcfilename"));
    }
    EXPECT_EQ(server.connections(), 0);
}

TEST_F(UploadTest, StatusDecidesTheOutcome)
{
    const std::string failed = "File Upload failed.";
    EXPECT_EQ(outcomeOfReply(answer(200)), "File Uploaded successfully.");
    EXPECT_EQ(outcomeOfReply(answer(500)), "Server error while uploading. Please try again.");
    for (const int status : {201, 302, 404, 501, 507})
        EXPECT_EQ(outcomeOfReply(answer(status)), failed) << status;
    EXPECT_EQ(outcomeOfReply("HTTP/1.1 204 No Content\r\n\r\n"), failed);
    EXPECT_EQ(outcomeOfReply("HTTP/1.1 100 Continue\r\n\r\n" + answer(404)), failed);
    EXPECT_EQ(outcomeOfReply("HTTP/1.1 101 Switching Protocols\r\nUpgrade: x\r\n\r\n"), failed);
}

TEST_F(UploadTest, StatusThatComesBeforeTheBodyIsReadIsTheOutcome)
{
    EXPECT_EQ(outcomeOf(
                  [](RawConnection& connection) {
                      connection.readHead();
                      connection.write(
                          "HTTP/1.1 413 Too Large\r\nConnection: close\r\nContent-Length: 0\r\n\r\n");
                      connection.waitForClose();
                  },
                  patternOf(20 << 20)),
        "File Upload failed.");
}

TEST_F(UploadTest, ConnectionThatIsResetBeforeAReplyIsSilent)
{
    EXPECT_EQ(outcomeOf([](RawConnection& connection) { connection.reset(); }), "silence");
    EXPECT_EQ(outcomeOf(
                  [](RawConnection& connection) {
                      connection.readHead();
                      connection.reset();
                  },
                  patternOf(20 << 20)),
        "silence");
    EXPECT_EQ(outcomeOf([](RawConnection& connection) {
        connection.readRequest();
        connection.reset();
    }),
        "silence");
}

TEST_F(UploadTest, ReplyThatIsCutOffIsSilent)
{
    EXPECT_EQ(outcomeOfReply("HTTP/1.1 200 OK\r\nContent-Length: 7\r\n\r\nhal"), "silence");
    EXPECT_EQ(outcomeOfReply("HTTP/1.1 200 OK\r\nContent-Le"), "silence");
    EXPECT_EQ(outcomeOfReply(""), "silence");
}

TEST_F(UploadTest, PortThatRefusesIsSilent)
{
    std::uint16_t freePort = 0;
    {
        const RawServer server([](RawConnection&) {});
        freePort = server.port();
    }
    start(freePort, "a.png", "x");
    EXPECT_EQ(outcome(), "silence");
}

TEST_F(UploadTest, PanelThatNeverAnswersIsSilentAfterTheIdleTime)
{
    session.timeout = 200ms;
    EXPECT_EQ(outcomeOf([](RawConnection& connection) {
        connection.readRequest();
        connection.waitForClose();
    }),
        "silence");
}

TEST_F(UploadTest, TenUploadsAtOnceArriveEachOnItsOwn)
{
    std::mutex mutex;
    std::set<std::string> boundaries;
    std::vector<std::string> bodies;
    std::atomic<int> arrived = 0;
    const RawServer server([&](RawConnection& connection) {
        const Message message(connection.readRequest());
        {
            const std::lock_guard lock(mutex);
            boundaries.insert(message.boundary());
            const std::size_t start = message.body.find("\r\n\r\n") + 4;
            bodies.push_back(message.body.substr(start, message.body.rfind("\r\n--Boundary-") - start));
        }
        for (++arrived; arrived < 10;) // nobody is answered before all are there
            std::this_thread::sleep_for(1ms);
        connection.write(answer(200));
    });
    std::vector<std::string> contents;
    for (std::size_t number = 0; number < 10; ++number)
        contents.push_back(patternOf(100000 + number));
    for (const std::string& content : contents)
        start(server, "a.png", content);
    EXPECT_EQ(outcome(), "File Uploaded successfully.");
    EXPECT_EQ(alerts.shown.size(), 10u);
    EXPECT_EQ(boundaries.size(), 10u);
    EXPECT_THAT(bodies, UnorderedElementsAreArray(contents));
}

TEST_F(UploadTest, LinesAreThoseOfAnUploadInOrder)
{
    EXPECT_EQ(outcomeOfReply(answer(200)), "File Uploaded successfully.");
    const std::vector<std::string> lines = consoleTranscript.lines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0], "print Uploading...");
    EXPECT_THAT(lines[1], ::testing::StartsWith("print request: { Content-Type = "));
    EXPECT_THAT(lines[2], HasSubstr("Status Code: 200"));
    EXPECT_EQ(lines[3], "print Successfully uploaded");
}

} // namespace companion::testing
