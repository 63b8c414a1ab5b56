#include "panel/HDMITouchBack.h"

#include "platform/testing/FakeHttpSession.h"
#include "platform/testing/FakeInterfaceAddresses.h"
#include "platform/testing/FakeLog.h"

#include <gtest/gtest.h>

namespace companion::testing {

class HDMITouchBackTest : public ::testing::Test {
protected:
    static constexpr auto panelAddress = "10.27.3.20";
    static constexpr auto start = "http://10.27.3.20:5000/enableWifiTouchback?ip=192.168.1.5";

    void enable(bool enable, bool fromHDMI, const std::optional<std::string>& address = panelAddress)
    {
        touchback.enableHDMITouchback(enable, fromHDMI, address);
    }

    /// The query flags kept, as "enable hidemenu isHDMI".
    std::string flags() const
    {
        const HDMITouchBack& kept = touchback;
        return kept.enableHDMITouchback() + " " + kept.hideMenu() + " " + kept.isHDMI();
    }

    std::string sentUrl() const
    {
        return session.sent().empty() ? "" : session.sent().back().request.url.text;
    }

    Transcript transcript;
    FakeConsole console{transcript};
    FakeHttpSession session;
    FakeInterfaceAddresses addresses;
    FakeInterfaceNameRule nameRule;
    HDMITouchBack touchback{{session, addresses, nameRule, console}};
};

using HDMITouchBackDeathTest = HDMITouchBackTest;

TEST_F(HDMITouchBackTest, StartsWithAnEmptyAddressAndAllFlagsTrue)
{
    EXPECT_EQ(touchback.obtainedDeviceIP(), "");
    EXPECT_EQ(flags(), "true true true");
}

TEST_F(HDMITouchBackTest, RequestIsAGetWithoutABody)
{
    enable(/*enable=*/true, /*fromHDMI=*/true);
    ASSERT_EQ(session.sent().size(), 1u);
    const HttpRequest& request = session.request(0);
    EXPECT_EQ(request.method, HttpMethod::get);
    EXPECT_FALSE(request.body);
    EXPECT_EQ(request.headers,
        (std::vector<HttpHeader>{{"Content-Type", "application/json; charset=utf-8"},
            {"Accept", "application/json; charset=utf-8"}}));
    EXPECT_EQ(request.timeout, std::chrono::seconds(60));
}

TEST_F(HDMITouchBackTest, QueryTellsTheFourCombinations)
{
    enable(/*enable=*/true, /*fromHDMI=*/true);
    EXPECT_EQ(sentUrl(), start + std::string("&enable=true&hidemenu=false&isHDMI=true"));
    EXPECT_EQ(flags(), "true false true");
    enable(/*enable=*/true, /*fromHDMI=*/false);
    EXPECT_EQ(sentUrl(), start + std::string("&enable=true&hidemenu=false&isHDMI=false"));
    EXPECT_EQ(flags(), "true false false");
    enable(/*enable=*/false, /*fromHDMI=*/true);
    EXPECT_EQ(sentUrl(), start + std::string("&enable=false&hidemenu=true&isHDMI=true"));
    EXPECT_EQ(flags(), "false true true");
    enable(/*enable=*/false, /*fromHDMI=*/false);
    EXPECT_EQ(sentUrl(), start + std::string("&enable=false&hidemenu=true&isHDMI=false"));
    EXPECT_EQ(flags(), "false true false");
}

TEST_F(HDMITouchBackTest, CallingTwiceSendsTwoIdenticalRequests)
{
    enable(/*enable=*/true, /*fromHDMI=*/false);
    enable(/*enable=*/true, /*fromHDMI=*/false);
    ASSERT_EQ(session.sent().size(), 2u);
    EXPECT_EQ(session.request(0).url, session.request(1).url);
    EXPECT_EQ(session.request(0).headers, session.request(1).headers);
}

TEST_F(HDMITouchBackTest, LastAddressOfTheInterfaceIsSent)
{
    addresses.entries->push_back({"en0", NumericAddress{AddressFamily::ipv4, "169.254.7.7"}});
    enable(/*enable=*/true, /*fromHDMI=*/true);
    EXPECT_EQ(sentUrl(),
        "http://10.27.3.20:5000/enableWifiTouchback?ip=169.254.7.7&enable=true&hidemenu=false&isHDMI=true");
    EXPECT_EQ(touchback.getLocalIPAddress(), "169.254.7.7");
}

TEST_F(HDMITouchBackTest, WithAnAddressOnAnotherInterfaceOnlyNothingButThePanelAddressChanges)
{
    addresses.entries = {{{"en1", NumericAddress{AddressFamily::ipv4, "10.27.4.8"}}}};
    enable(/*enable=*/false, /*fromHDMI=*/false);
    EXPECT_EQ(session.sent().size(), 0u);
    EXPECT_EQ(touchback.obtainedDeviceIP(), panelAddress);
    EXPECT_EQ(flags(), "true true true");
    EXPECT_EQ(touchback.getLocalIPAddress(), "");
    EXPECT_EQ(transcript.take(), "");
}

TEST_F(HDMITouchBackTest, InterfaceIsTheOneThatLeadsToTheNewPanel)
{
    class TwoPanels : public InterfaceNameRule {
        std::string interfaceNameTowards(const std::optional<std::string>& address) const override
        {
            return address == "10.27.3.20" ? "en0" : "lo0";
        }
    };
    const TwoPanels rule;
    HDMITouchBack routed({session, addresses, rule, console});
    routed.enableHDMITouchback(/*enable=*/true, /*fromHDMI=*/true, panelAddress);
    EXPECT_EQ(sentUrl(), start + std::string("&enable=true&hidemenu=false&isHDMI=true"));
    EXPECT_EQ(routed.getLocalIPAddress(), "192.168.1.5");
}

TEST_F(HDMITouchBackTest, AbsentPanelAddressIsHarmlessWithoutALocalAddress)
{
    addresses.entries.reset();
    enable(/*enable=*/true, /*fromHDMI=*/true, std::nullopt);
    EXPECT_EQ(touchback.obtainedDeviceIP(), std::nullopt);
    EXPECT_EQ(session.sent().size(), 0u);
}

TEST_F(HDMITouchBackDeathTest, AbsentPanelAddressIsFatalWithALocalAddress)
{
    EXPECT_DEATH(enable(/*enable=*/false, /*fromHDMI=*/false, std::nullopt),
        "Fatal error: A panel request has no panel address.");
}

TEST_F(HDMITouchBackTest, PanelAddressThatMakesNoUrlSendsNothingButTheFlagsArePrepared)
{
    enable(/*enable=*/false, /*fromHDMI=*/false, "10.27.3 .20");
    EXPECT_EQ(session.sent().size(), 0u);
    EXPECT_EQ(touchback.obtainedDeviceIP(), "10.27.3 .20");
    EXPECT_EQ(flags(), "false true false");
}

TEST_F(HDMITouchBackTest, AnswerOfAnyStatusPrintsItsResponseAndNothingElse)
{
    enable(/*enable=*/true, /*fromHDMI=*/true);
    enable(/*enable=*/true, /*fromHDMI=*/true);
    session.completeWithHttp(0, 200, "\xFF");
    session.completeWithHttp(1, 500, "");
    EXPECT_EQ(transcript.take(),
        "print <Response http://10.27.3.20:5000/enableWifiTouchback?ip=192.168.1.5&enable=true&hidemenu=false"
        "&isHDMI=true> { Status Code: 200, Headers { } }\n"
        "print <Response http://10.27.3.20:5000/enableWifiTouchback?ip=192.168.1.5&enable=true&hidemenu=false"
        "&isHDMI=true> { Status Code: 500, Headers { } }");
}

TEST_F(HDMITouchBackTest, ErrorAndAnswerWithoutDataPrintNothing)
{
    enable(/*enable=*/true, /*fromHDMI=*/true);
    enable(/*enable=*/true, /*fromHDMI=*/true);
    session.fail(0, "Could not connect to the server.");
    session.complete(1, {std::nullopt, UrlResponse{session.request(1).url, 200, {}}, std::nullopt});
    EXPECT_EQ(transcript.take(), "");
}

TEST_F(HDMITouchBackTest, AnswerMayComeAfterTheObjectIsGone)
{
    HDMITouchBack({session, addresses, nameRule, console})
        .enableHDMITouchback(/*enable=*/false, /*fromHDMI=*/false, panelAddress);
    session.completeWithHttp(0, 200, "ok");
    EXPECT_EQ(transcript.lines().size(), 1u);
}

} // namespace companion::testing
