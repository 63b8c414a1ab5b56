#include "cli/ObservedHttpSession.h"

#include "platform/testing/FakeHttpSession.h"

#include <gmock/gmock.h>

namespace companion::cli::testing {

using companion::testing::FakeHttpSession;
using ::testing::ElementsAre;
using namespace std::chrono_literals;

class ObservedHttpSessionTest : public ::testing::Test {
protected:
    void send(ObservedHttpSession& session)
    {
        session.setObserver([this](const Outcome& outcome) {
            heard.push_back("observer " + (outcome.status ? std::to_string(*outcome.status) : "-") + " "
                + outcome.error.value_or("-") + " " + outcome.body);
        });
        HttpRequest request;
        request.url = {"http://10.0.0.1:5000/"};
        session.send(std::move(request), [this](const HttpReply& reply) {
            heard.push_back("request " + reply.data.value_or("-") + " " + reply.error.value_or("-"));
        });
    }

    FakeHttpSession inner;
    std::vector<std::string> heard;
};

TEST_F(ObservedHttpSessionTest, AnswerReachesTheRequestAndThenTheObserver)
{
    ObservedHttpSession session(inner);
    send(session);
    EXPECT_EQ(session.sentRequests(), 1);
    inner.completeWithHttp(0, 500, "broken");
    EXPECT_THAT(heard, ElementsAre("request broken -", "observer 500 - broken"));
}

TEST_F(ObservedHttpSessionTest, ErrorIsObserved)
{
    ObservedHttpSession session(inner);
    send(session);
    inner.fail(0, "refused");
    EXPECT_THAT(heard, ElementsAre("request - refused", "observer - refused "));
}

TEST_F(ObservedHttpSessionTest, BodyMayBeAnything)
{
    ObservedHttpSession session(inner);
    send(session);
    inner.completeWithHttp(0, 200, "ok \xff");
    EXPECT_THAT(heard, ElementsAre("request ok \xff -", "observer 200 - ok \xff"));
}

TEST_F(ObservedHttpSessionTest, BodyOfStatus200ThatIsNotUtf8BecomesAnErrorWhereThatIsAskedFor)
{
    ObservedHttpSession session(inner);
    session.refuseUnreadableAnswers();
    send(session);
    inner.completeWithHttp(0, 200, "ok \xff");
    EXPECT_THAT(heard,
        ElementsAre("request - the text of its answer is not UTF-8",
            "observer 200 the text of its answer is not UTF-8 "));
}

TEST_F(ObservedHttpSessionTest, BodyOfAnotherStatusMayBeAnythingEvenThen)
{
    ObservedHttpSession session(inner);
    session.refuseUnreadableAnswers();
    send(session);
    inner.completeWithHttp(0, 404, "\xff");
    EXPECT_THAT(heard, ElementsAre("request \xff -", "observer 404 - \xff"));
}

TEST_F(ObservedHttpSessionTest, AnswerThatIsNotHttpIsAnErrorForTheObserverOnly)
{
    ObservedHttpSession session(inner);
    send(session);
    inner.complete(0, {"text", UrlResponse{{"http://10.0.0.1:5000/"}, std::nullopt, {}}, std::nullopt});
    EXPECT_THAT(heard, ElementsAre("request text -", "observer - its answer is not one of HTTP text"));
}

TEST_F(ObservedHttpSessionTest, TimeoutOfTheCommandLineReplacesThatOfTheRequest)
{
    ObservedHttpSession patient(inner);
    ObservedHttpSession hasty(inner, 250ms);
    send(patient);
    send(hasty);
    EXPECT_EQ(inner.request(0).timeout, 60s);
    EXPECT_EQ(inner.request(1).timeout, 250ms);
}

TEST_F(ObservedHttpSessionTest, LongTimeoutOfTheCommandLineIsNotCutOffByTheLongestDuration)
{
    for (const auto timeout : {250ms, 120'000ms}) {
        ObservedHttpSession session(inner, timeout);
        HttpRequest request;
        request.longestDuration = 60s;
        session.send(request, [](const HttpReply&) {});
    }
    EXPECT_EQ(inner.request(0).longestDuration, 60s);
    EXPECT_EQ(inner.request(1).longestDuration, 120s);
}

} // namespace companion::cli::testing
