#include "simulator/RequestOrigin.h"

#include <gtest/gtest.h>

namespace companion::simulator {
namespace {

constexpr auto noHeader = std::nullopt;
const std::string ownPageOnly = "only the panel's own page may ask for this";
const std::string addressOnly = "open the panel by its address, not by a name of the Internet";

TEST(RequestOriginTest, ScriptsSendNoOriginAndMayAsk)
{
    EXPECT_EQ(foreignOrigin("192.168.1.20:5000", noHeader), std::nullopt);
    EXPECT_EQ(foreignOrigin(noHeader, noHeader), std::nullopt);
}

TEST(RequestOriginTest, OwnPageMayAskByAddressOrByANameOfTheLocalNetwork)
{
    for (const std::string host :
        {"192.168.1.20:5000", "192.168.1.20", "localhost:5000", "panel", "panel-7.local:5000", "p.localhost"})
        EXPECT_EQ(foreignOrigin(host, "http://" + host), std::nullopt) << host;
    EXPECT_EQ(foreignOrigin("Panel.LOCAL:5000", "http://panel.local:5000"), std::nullopt);
}

TEST(RequestOriginTest, OtherPagesMayNot)
{
    for (const std::string origin :
        {"http://example.org", "http://192.168.1.21:5000", "http://192.168.1.20", "http://192.168.1.20:50000",
            "https://192.168.1.20:5000", "http://192.168.1.20:5000.example.org", "null", ""})
        EXPECT_EQ(foreignOrigin("192.168.1.20:5000", origin), ownPageOnly) << origin;
    EXPECT_EQ(foreignOrigin(noHeader, "http://192.168.1.20:5000"), ownPageOnly);
}

TEST(RequestOriginTest, NameOfTheInternetThatPointsHereIsNotThePanelsOwn)
{
    for (const std::string host : {"rebound.example.org:5000", "example.org", "local.example.org",
             "192.168.1.20.example.org", "notlocal.org", "1.2.3", "256.1.1.1"}) {
        EXPECT_EQ(foreignOrigin(host, "http://" + host), addressOnly) << host;
        EXPECT_EQ(foreignOrigin(host, noHeader), addressOnly) << host;
    }
}

} // namespace
} // namespace companion::simulator
