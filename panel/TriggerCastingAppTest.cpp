#include "panel/TriggerCastingApp.h"

#include "platform/testing/FakeHttpSession.h"
#include "platform/testing/FakeInterfaceAddresses.h"
#include "platform/testing/FakeLog.h"

#include <gtest/gtest.h>
#include <thread>

namespace companion::testing {

class TriggerCastingAppTest : public ::testing::Test {
protected:
    Transcript transcript;
    FakeConsole console{transcript};
    FakeHttpSession session;
    FakeInterfaceAddresses addresses;
    FakeInterfaceNameRule nameRule;
    std::shared_ptr<TriggerCastingApp> app = TriggerCastingApp::make({session, addresses, nameRule, console});
};

using TriggerCastingAppDeathTest = TriggerCastingAppTest;

TEST_F(TriggerCastingAppTest, StartsWithAnEmptyText)
{
    EXPECT_EQ(app->obtainedDeviceIP(), "");
}

TEST_F(TriggerCastingAppTest, ThePropertyCanBeWrittenAndBeAbsent)
{
    app->setObtainedDeviceIP("10.27.3.20");
    EXPECT_EQ(app->obtainedDeviceIP(), "10.27.3.20");
    app->setObtainedDeviceIP(std::nullopt);
    EXPECT_EQ(app->obtainedDeviceIP(), std::nullopt);
}

TEST_F(TriggerCastingAppTest, PostsTwentyOneBytesOfJson)
{
    app->triggerCastService("192.168.1.20");
    ASSERT_EQ(session.sent().size(), 1u);
    const HttpRequest& request = session.request(0);
    EXPECT_EQ(request.url.text, "http://192.168.1.20:5000/ws");
    EXPECT_EQ(request.method, HttpMethod::post);
    EXPECT_EQ(request.headers,
        (std::vector<HttpHeader>{{"Content-Type", "application/json; charset=utf-8"},
            {"Accept", "application/json; charset=utf-8"}}));
    EXPECT_EQ(FakeHttpSession::bodyText(request), "{\"key\":\"ACTION_CAST\"}");
    EXPECT_EQ(request.timeout, std::chrono::seconds(60));
    EXPECT_EQ(transcript.take(), "print 21 bytes");
    EXPECT_EQ(app->obtainedDeviceIP(), "192.168.1.20");
}

TEST_F(TriggerCastingAppTest, BodyIsDescribedAfterTheRequestIsSent)
{
    FakeHttpSession tracedSession{transcript};
    TriggerCastingApp::make({tracedSession, addresses, nameRule, console})
        ->triggerCastService("192.168.1.20");
    EXPECT_EQ(transcript.take(" / "), "send http://192.168.1.20:5000/ws / print 21 bytes");
}

TEST_F(TriggerCastingAppTest, NeedsNoLocalAddress)
{
    addresses.entries.reset();
    app->triggerCastService("192.168.1.20");
    EXPECT_EQ(session.sent().size(), 1u);
}

TEST_F(TriggerCastingAppTest, AnswerOfAnyStatusReplacesTheAddress)
{
    for (const int status : {200, 204, 302, 404, 500}) {
        app->triggerCastService("192.168.1.20");
        transcript.clear();
        session.completeWithHttp(session.sent().size() - 1, status, "busy " + std::to_string(status));
        EXPECT_EQ(app->obtainedDeviceIP(), "busy " + std::to_string(status));
        EXPECT_EQ(transcript.take(),
            "print <Response http://192.168.1.20:5000/ws> { Status Code: " + std::to_string(status)
                + ", Headers { } }");
    }
}

TEST_F(TriggerCastingAppTest, AnswerThatIsNoHttpIsTakenAsWell)
{
    app->triggerCastService("192.168.1.20");
    session.complete(0, {"text", std::nullopt, std::nullopt});
    EXPECT_EQ(app->obtainedDeviceIP(), "text");
}

TEST_F(TriggerCastingAppTest, EmptyBodyIsAnEmptyText)
{
    app->triggerCastService("192.168.1.20");
    session.completeWithHttp(0, 200, "");
    EXPECT_EQ(app->obtainedDeviceIP(), "");
}

TEST_F(TriggerCastingAppTest, InvalidUtf8IsStoredWithReplacementCharacters)
{
    app->triggerCastService("192.168.1.20");
    session.completeWithHttp(0, 200, "a\xFF\xE2\x82z");
    EXPECT_EQ(app->obtainedDeviceIP(), "a\xEF\xBF\xBD\xEF\xBF\xBDz");
}

TEST_F(TriggerCastingAppTest, ErrorAndSilenceLeaveTheAddress)
{
    app->triggerCastService("192.168.1.20");
    EXPECT_EQ(app->obtainedDeviceIP(), "192.168.1.20");
    transcript.clear();
    session.fail(0, "Connection refused");
    EXPECT_EQ(app->obtainedDeviceIP(), "192.168.1.20");
    app->triggerCastService("192.168.1.21");
    session.complete(1, {"half", UrlResponse{session.request(1).url, 200, {}}, "cut off"});
    EXPECT_EQ(app->obtainedDeviceIP(), "192.168.1.21");
    EXPECT_EQ(transcript.take(), "print 21 bytes");
}

TEST_F(TriggerCastingAppTest, AddressThatMakesNoUrlIsKeptAndNothingIsSentOrPrinted)
{
    app->triggerCastService("192.168.1. 20");
    EXPECT_EQ(app->obtainedDeviceIP(), "192.168.1. 20");
    EXPECT_EQ(session.sent().size(), 0u);
    EXPECT_EQ(transcript.take(), "");
}

TEST_F(TriggerCastingAppDeathTest, AbsentAddressIsFatal)
{
    EXPECT_DEATH(app->triggerCastService(std::nullopt), "Fatal error: A panel request has no panel address.");
}

TEST_F(TriggerCastingAppTest, OfTwoTriggersTheAnswerThatComesLastHolds)
{
    app->triggerCastService("192.168.1.20");
    app->triggerCastService("192.168.1.21");
    session.completeWithHttp(1, 200, "second");
    session.completeWithHttp(0, 200, "first");
    EXPECT_EQ(app->obtainedDeviceIP(), "first");
    app->triggerCastService("192.168.1.22");
    EXPECT_EQ(app->obtainedDeviceIP(), "192.168.1.22");
}

TEST_F(TriggerCastingAppTest, LivesUntilItsAnswerHasCome)
{
    app->triggerCastService("192.168.1.20");
    const std::weak_ptr<TriggerCastingApp> observer = app;
    app.reset();
    EXPECT_FALSE(observer.expired());
    session.completeWithHttp(0, 200, "done");
    EXPECT_TRUE(observer.expired());
}

TEST_F(TriggerCastingAppTest, IsReadByOneThreadWhileAnotherBringsAnswers)
{
    constexpr std::size_t triggers = 200;
    for (std::size_t count = 0; count < triggers; ++count)
        app->triggerCastService("192.168.1.20");
    std::jthread delivery([this] {
        for (std::size_t index = 0; index < triggers; ++index)
            session.completeWithHttp(index, 200, std::string(100, index % 2 ? 'a' : 'b'));
    });
    for (int count = 0; count < 2000; ++count) {
        const std::string text = app->obtainedDeviceIP().value_or("");
        ASSERT_TRUE(text == "192.168.1.20" || text == std::string(100, text[0])) << text;
    }
}

} // namespace companion::testing
