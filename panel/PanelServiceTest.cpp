#include "panel/PanelService.h"

#include "platform/testing/FakeHttpSession.h"
#include "platform/testing/FakeInterfaceAddresses.h"
#include "platform/testing/FakeLog.h"

#include <gtest/gtest.h>

namespace companion::testing {

class PanelServiceTest : public ::testing::Test {
protected:
    bool send(const PanelRequest& request)
    {
        return sendPanelRequest({session, addresses, nameRule, console}, request,
            [this](const PanelReply& reply) { transcript.add("reply <" + reply.body + ">"); });
    }

    bool sendPing() { return send({"10.27.3.20", "/ping?a=b"}); }

    Transcript transcript;
    FakeConsole console{transcript};
    FakeHttpSession session;
    FakeInterfaceAddresses addresses;
    FakeInterfaceNameRule nameRule;
};

using PanelServiceDeathTest = PanelServiceTest;

TEST_F(PanelServiceTest, RequestHasTheFormThatThePanelExpects)
{
    EXPECT_TRUE(sendPing());
    ASSERT_EQ(session.sent().size(), 1u);
    const HttpRequest& request = session.request(0);
    EXPECT_EQ(request.url.text, "http://10.27.3.20:5000/ping?a=b");
    EXPECT_EQ(request.method, HttpMethod::get);
    EXPECT_EQ(request.headers,
        (std::vector<HttpHeader>{{"Content-Type", "application/json; charset=utf-8"},
            {"Accept", "application/json; charset=utf-8"}}));
    EXPECT_EQ(request.timeout, std::chrono::seconds(60));
    EXPECT_EQ(request.longestDuration, std::chrono::minutes(10));
    EXPECT_FALSE(request.body);
    EXPECT_FALSE(request.progress);
    EXPECT_EQ(transcript.take(), "");
}

TEST_F(PanelServiceTest, MethodAndBodyAreTheCallers)
{
    PanelRequest request{"10.27.3.20", "/ws"};
    request.method = HttpMethod::post;
    request.body = HttpBody{sharedBytes("{\"key\":1}")};
    EXPECT_TRUE(send(request));
    EXPECT_EQ(session.request(0).method, HttpMethod::post);
    EXPECT_EQ(FakeHttpSession::bodyText(session.request(0)), "{\"key\":1}");
}

TEST_F(PanelServiceTest, EmptyBodyIsNotAnAbsentOne)
{
    PanelRequest request{"10.27.3.20", "/ws"};
    request.body = HttpBody{};
    send(request);
    EXPECT_TRUE(session.request(0).body);
}

TEST_F(PanelServiceTest, NoHeaderFieldChangesTheProtocolsCachePolicy)
{
    sendPing();
    for (const HttpHeader& header : session.request(0).headers)
        EXPECT_TRUE(header.name == "Content-Type" || header.name == "Accept") << header.name;
}

TEST_F(PanelServiceTest, TextThatIsNoUrlSendsAndPrintsNothing)
{
    EXPECT_FALSE(send({"", "/ping"}));
    EXPECT_FALSE(send({"a%b&c", "/ping"}));
    EXPECT_FALSE(send({"10.27. 3.20", "/ping"}));
    EXPECT_FALSE(send({"10.27.3.20\n", "/ping"}));
    EXPECT_EQ(session.sent().size(), 0u);
    EXPECT_EQ(transcript.take(), "");
}

TEST_F(PanelServiceTest, AddressIsInsertedAsItIs)
{
    send({"10.-1.2.3", "/ping"});
    send({"10.27.3.20/a?b=", "/ping"});
    EXPECT_EQ(session.request(0).url.text, "http://10.-1.2.3:5000/ping");
    EXPECT_EQ(session.request(1).url.text, "http://10.27.3.20/a?b=:5000/ping");
}

TEST_F(PanelServiceTest, ResponseIsDescribedBeforeItIsHandled)
{
    sendPing();
    session.completeWithHttp(0, 404, "no");
    EXPECT_EQ(transcript.take(" / "),
        "print <Response http://10.27.3.20:5000/ping?a=b> { Status Code: 404, Headers { } } / reply <no>");
}

TEST_F(PanelServiceTest, EmptyBodyIsAnAnswer)
{
    sendPing();
    session.completeWithHttp(0, 204, "");
    EXPECT_EQ(transcript.lines().size(), 2u);
    EXPECT_EQ(transcript.lines().back(), "reply <>");
}

TEST_F(PanelServiceTest, NoBodyDataIsNoAnswer)
{
    sendPing();
    session.complete(0, {std::nullopt, UrlResponse{session.request(0).url, 200, {}}, std::nullopt});
    EXPECT_EQ(transcript.take(), "");
}

TEST_F(PanelServiceTest, ErrorIsNoAnswerEvenWithABody)
{
    sendPing();
    session.fail(0, "Connection refused");
    sendPing();
    session.complete(1, {"half", UrlResponse{session.request(1).url, 200, {}}, "cut off"});
    EXPECT_EQ(transcript.take(), "");
}

TEST_F(PanelServiceTest, AnswersOtherThanHttpAreHandledToo)
{
    sendPing();
    session.complete(0, {"text", UrlResponse{session.request(0).url, std::nullopt, {}}, std::nullopt});
    EXPECT_EQ(transcript.take(" / "), "print <Response http://10.27.3.20:5000/ping?a=b> / reply <text>");
    sendPing();
    session.complete(1, {"text", std::nullopt, std::nullopt});
    EXPECT_EQ(transcript.take(" / "), "print no response / reply <text>");
}

TEST_F(PanelServiceDeathTest, AbsentPanelAddressIsFatal)
{
    EXPECT_DEATH(send({std::nullopt, "/ping"}), "Fatal error: A panel request has no panel address.");
}

} // namespace companion::testing
