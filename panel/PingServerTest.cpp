#include "panel/PingServer.h"

#include "platform/testing/FakeHttpSession.h"
#include "platform/testing/FakeInterfaceAddresses.h"
#include "platform/testing/FakeLog.h"

#include <gtest/gtest.h>
#include <thread>

namespace companion::testing {

namespace {

constexpr auto panelAddress = "10.27.3.20";

} // namespace

/// Tells towards which address it was asked.
class RecordingInterfaceNameRule : public InterfaceNameRule {
public:
    std::string interfaceNameTowards(const std::optional<std::string>& address) const override
    {
        askedTowards.push_back(address);
        return name;
    }

    std::string name = "en0";
    mutable std::vector<std::optional<std::string>> askedTowards;
};

class PingServerTest : public ::testing::Test {
protected:
    /// The client is gone before the answer comes, as with its real users.
    void ping(const std::optional<std::string>& address = panelAddress)
    {
        PingServer({session, addresses, nameRule, console})
            .pingServerHeartbeat(address, [this](bool success, const std::string& reply) {
                handlerThread = std::this_thread::get_id();
                transcript.add(std::string("handler ") + (success ? "YES" : "NO") + " <" + reply + ">");
            });
    }

    /// What the handler heard after an answer of this status and body; "" when it was not called.
    std::string heardAfter(int statusCode, const std::string& body)
    {
        ping();
        transcript.clear();
        session.completeWithHttp(session.sent().size() - 1, statusCode, body);
        std::string heard;
        for (const std::string& line : transcript.lines()) {
            if (line.starts_with("handler "))
                heard += line.substr(8);
        }
        return heard;
    }

    Transcript transcript;
    FakeConsole console{transcript};
    FakeHttpSession session;
    FakeInterfaceAddresses addresses;
    RecordingInterfaceNameRule nameRule;
    std::thread::id handlerThread;
};

using PingServerDeathTest = PingServerTest;

// The request

TEST_F(PingServerTest, RequestIsAGetThatNamesTheLocalAddress)
{
    ping();
    ASSERT_EQ(session.sent().size(), 1u);
    const HttpRequest& request = session.request(0);
    EXPECT_EQ(request.url.text, "http://10.27.3.20:5000/pingServerWithIP?ip=192.168.1.5&msg=ping");
    EXPECT_EQ(request.method, HttpMethod::get);
    EXPECT_FALSE(request.body);
    EXPECT_EQ(request.headers,
        (std::vector<HttpHeader>{{"Content-Type", "application/json; charset=utf-8"},
            {"Accept", "application/json; charset=utf-8"}}));
    EXPECT_EQ(request.timeout, std::chrono::seconds(60));
    EXPECT_EQ(transcript.take(), "") << "nothing is heard or printed before the answer";
}

TEST_F(PingServerTest, LocalAddressIsTheLastOneListed)
{
    addresses.entries->push_back({"en0", NumericAddress{AddressFamily::ipv4, "169.254.7.7"}});
    ping();
    EXPECT_EQ(session.request(0).url.text, "http://10.27.3.20:5000/pingServerWithIP?ip=169.254.7.7&msg=ping");
}

TEST_F(PingServerTest, InterfaceIsTheOneThatLeadsToThePanelAndAskedForAtEveryPing)
{
    ping();
    nameRule.name = "lo0";
    ping();
    EXPECT_EQ(session.request(1).url.text, "http://10.27.3.20:5000/pingServerWithIP?ip=127.0.0.1&msg=ping");
    EXPECT_EQ(nameRule.askedTowards, (std::vector<std::optional<std::string>>{panelAddress, panelAddress}));
}

// Before anything is sent

TEST_F(PingServerTest, WithoutAnAddressOnTheInterfaceTheHandlerHearsNoAtOnce)
{
    addresses.entries = {{{"en0", NumericAddress{AddressFamily::ipv6, "fe80::1"}},
        {"en1", NumericAddress{AddressFamily::ipv4, "10.27.4.8"}}}};
    ping();
    EXPECT_EQ(transcript.take(), "handler NO <>");
    EXPECT_EQ(handlerThread, std::this_thread::get_id());
    EXPECT_EQ(session.sent().size(), 0u);
}

TEST_F(PingServerTest, WithoutAnInterfaceListTheHandlerHearsNoAtOnce)
{
    addresses.entries.reset();
    ping();
    EXPECT_EQ(transcript.take(), "handler NO <>");
    EXPECT_EQ(session.sent().size(), 0u);
}

TEST_F(PingServerTest, AbsentPanelAddressIsHarmlessWithoutALocalAddress)
{
    addresses.entries.reset();
    ping(std::nullopt);
    EXPECT_EQ(transcript.take(), "handler NO <>");
}

TEST_F(PingServerDeathTest, AbsentPanelAddressIsFatalWithALocalAddress)
{
    EXPECT_DEATH(ping(std::nullopt), "Fatal error: A panel request has no panel address.");
}

TEST_F(PingServerDeathTest, InterfaceEntryWithoutAnAddressIsFatal)
{
    addresses.entries->push_back({"utun4", std::nullopt});
    EXPECT_DEATH(ping(), "Fatal error: An interface address entry has no address.");
}

TEST_F(PingServerTest, PanelAddressThatMakesNoUrlSendsAndCallsNothing)
{
    ping("10.27.3.20 ");
    EXPECT_EQ(session.sent().size(), 0u);
    EXPECT_EQ(transcript.take(), "");
}

// The answer

TEST_F(PingServerTest, TransportErrorCallsAndPrintsNothing)
{
    ping();
    session.fail(0, "The request timed out.");
    EXPECT_EQ(transcript.take(), "");
}

TEST_F(PingServerTest, AnswerWithoutBodyDataCallsAndPrintsNothing)
{
    ping();
    session.complete(0, {std::nullopt, UrlResponse{session.request(0).url, 200, {}}, std::nullopt});
    EXPECT_EQ(transcript.take(), "");
}

TEST_F(PingServerTest, SilentPanelNeverCallsTheHandler)
{
    ping();
    ping();
    EXPECT_EQ(transcript.take(), "");
    EXPECT_EQ(session.sent().size(), 2u) << "no retry, and no waiting for the ping before";
}

TEST_F(PingServerTest, AnswerOtherThanHttpIsANo)
{
    ping();
    session.complete(0, {"CAST_OFF", UrlResponse{session.request(0).url, std::nullopt, {}}, std::nullopt});
    EXPECT_EQ(transcript.take(" / "),
        "print <Response http://10.27.3.20:5000/pingServerWithIP?ip=192.168.1.5&msg=ping> / handler NO <>");
    ping();
    session.complete(1, {"CAST_OFF", std::nullopt, std::nullopt});
    EXPECT_EQ(transcript.take(" / "), "print no response / handler NO <>");
}

TEST_F(PingServerTest, StatusOtherThan200IsANoWhateverTheBody)
{
    for (const int statusCode : {100, 199, 201, 204, 206, 301, 302, 400, 404, 500, 503, 0, -200}) {
        EXPECT_EQ(heardAfter(statusCode, "CAST_OFF"), "NO <>") << statusCode;
        EXPECT_EQ(heardAfter(statusCode, ""), "NO <>") << statusCode;
        EXPECT_EQ(heardAfter(statusCode, "\xFF"), "NO <>") << statusCode;
    }
}

TEST_F(PingServerTest, BodyOfStatus200IsReported)
{
    EXPECT_EQ(heardAfter(200, "CAST_OFF"), "YES <CAST_OFF>");
    EXPECT_EQ(heardAfter(200, "Device is busy"), "YES <DEVICE_BUSY>");
    EXPECT_EQ(heardAfter(200, "{\"msg\":\"XCAST_OFFY\"}"), "YES <CAST_OFF>");
    EXPECT_EQ(heardAfter(200, "\xC3\xBC: Device is busy\xE2\x82\xAC"), "YES <DEVICE_BUSY>");
    EXPECT_EQ(heardAfter(200, std::string("a\0CAST_OFF", 10)), "YES <CAST_OFF>");
}

TEST_F(PingServerTest, CastingSwitchedOffOutranksBusyInEitherOrder)
{
    EXPECT_EQ(heardAfter(200, "Device is busy, CAST_OFF"), "YES <CAST_OFF>");
    EXPECT_EQ(heardAfter(200, "CAST_OFF, Device is busy"), "YES <CAST_OFF>");
}

TEST_F(PingServerTest, AnyOtherBodyIsASuccessWithNothingToReport)
{
    for (const char* body : {"", "ok", "DEVICE_BUSY", "cast_off", "Cast_Off", "CAST OFF", "CAST_OF",
             "device is busy", "Device Is Busy", "Device is  busy", "DEVICE IS BUSY", "\xE2\x82\xAC"})
        EXPECT_EQ(heardAfter(200, body), "YES <>") << body;
}

TEST_F(PingServerDeathTest, BodyThatIsNotUtf8IsFatalAtStatus200)
{
    const char* message = "Fatal error: The panel's answer to a ping is not UTF-8.";
    EXPECT_DEATH(heardAfter(200, "CAST_OFF\xFF"), message);
    EXPECT_DEATH(heardAfter(200, "\xED\xA0\x80"), message);
    EXPECT_DEATH(heardAfter(200, "\xE2\x82"), message);
}

TEST_F(PingServerTest, HandlerRunsOnTheDeliveryThread)
{
    ping();
    std::thread delivery([this] { session.completeWithHttp(0, 200, "ok"); });
    const std::thread::id deliveryThread = delivery.get_id();
    delivery.join();
    EXPECT_EQ(handlerThread, deliveryThread);
}

TEST_F(PingServerTest, PingsUnderWayDoNotDisturbEachOther)
{
    ping();
    ping();
    ping();
    session.completeWithHttp(2, 200, "CAST_OFF");
    session.fail(0, "The network connection was lost.");
    session.completeWithHttp(1, 500, "");
    std::string heard;
    for (const std::string& line : transcript.lines())
        heard += line.starts_with("handler ") ? line.substr(8) : "";
    EXPECT_EQ(heard, "YES <CAST_OFF>NO <>");
}

// The lines on the console

TEST_F(PingServerTest, SuccessIsPrintedWithItsTextBeforeTheHandlerHears)
{
    heardAfter(200, "Device is busy");
    EXPECT_EQ(transcript.take(" / "),
        "print <Response http://10.27.3.20:5000/pingServerWithIP?ip=192.168.1.5&msg=ping>"
        " { Status Code: 200, Headers { } } / "
        "print statusCode: 200 / print Ping succeeded..Device is busy / handler YES <DEVICE_BUSY>");
}

TEST_F(PingServerTest, FailureIsPrintedBeforeTheHandlerHears)
{
    heardAfter(302, "elsewhere");
    EXPECT_EQ(transcript.take(" / "),
        "print <Response http://10.27.3.20:5000/pingServerWithIP?ip=192.168.1.5&msg=ping>"
        " { Status Code: 302, Headers { } } / "
        "print statusCode: 302 / print Ping failed2.. / handler NO <>");
}

TEST_F(PingServerTest, BodyOf10MegabytesIsSearchedAndPrintedWhole)
{
    const std::string padding(10'000'000, 'x');
    EXPECT_EQ(heardAfter(200, padding + "CAST_OFF"), "YES <CAST_OFF>");
    EXPECT_TRUE(transcript.lines().at(2) == "print Ping succeeded.." + padding + "CAST_OFF");
    EXPECT_EQ(heardAfter(200, "Device is busy" + padding + "CAST_OFF"), "YES <CAST_OFF>");
    EXPECT_EQ(heardAfter(200, padding + "Device is busy"), "YES <DEVICE_BUSY>");
}

} // namespace companion::testing
