#include "platform/avahi/AvahiServiceBrowser.h"

#include "tests/avahi/FakeAvahi.h"
#include "tests/avahi/ServiceBrowsing.h"

#include <gmock/gmock.h>

// What is said to the daemon, and when, against a stand-in whose answers the test chooses.

namespace companion::testing {

using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

class AvahiProtocolTest : public ServiceBrowsing {
protected:
    void SetUp() override
    {
        ServiceBrowsing::SetUp();
        if (!IsSkipped())
            daemon = std::make_unique<FakeAvahi>(*computerBus, transcript);
    }

    void TearDown() override
    {
        daemon.reset();
        ServiceBrowsing::TearDown();
    }

    void browseAndFind(const QString& name)
    {
        browse();
        ASSERT_TRUE(waitFor("browse _airplay._tcp local"));
        daemon->sendItemNew(1, 0, name);
        ASSERT_TRUE(waitFor("resolve 1/0 " + name.toStdString()));
        transcript.clear();
    }

    std::unique_ptr<FakeAvahi> daemon;
};

TEST_F(AvahiProtocolTest, SignalsThatComeBeforeTheBrowsersPathAreNotLost)
{
    daemon->foundBeforeAnswer = {"early", "bird"};
    browse();
    EXPECT_TRUE(waitFor("found bird"));
    EXPECT_THAT(transcript.lines(), Contains("found early"));
}

TEST_F(AvahiProtocolTest, ResolverIsFreedOnceItHasAnswered)
{
    browseAndFind("a");
    daemon->sendFound("/Resolver2");
    EXPECT_TRUE(waitFor("free /Resolver2"));
    EXPECT_TRUE(waitFor("resolved a"));
}

TEST_F(AvahiProtocolTest, ResolverIsFreedWhenTheServiceIsLetGo)
{
    browseAndFind("a");
    list.services.clear();
    EXPECT_TRUE(waitFor("free /Resolver2"));
}

TEST_F(AvahiProtocolTest, ResolverIsFreedWhenTheTimeIsOver)
{
    list.resolveTimeout = 700ms;
    browseAndFind("a");
    run(400ms);
    EXPECT_THAT(transcript.lines(), ElementsAre());
    EXPECT_TRUE(waitFor("free /Resolver2", 1s));
}

TEST_F(AvahiProtocolTest, ResolverIsKeptAfterTheDaemonReportsAFailure)
{
    browseAndFind("a");
    daemon->sendFailure("/Resolver2");
    run(700ms);
    EXPECT_THAT(transcript.lines(), ElementsAre());
    daemon->sendFound("/Resolver2");
    EXPECT_TRUE(waitFor("resolved a"));
}

TEST_F(AvahiProtocolTest, NextInstanceIsTriedOnceTheFirstHasFailed)
{
    browseAndFind("a");
    daemon->sendItemNew(1, 1, "a");
    daemon->sendItemNew(2, 0, "a");
    run(100ms);
    EXPECT_THAT(transcript.lines(), ElementsAre());

    daemon->sendFailure("/Resolver2");
    EXPECT_TRUE(waitFor("resolve 1/1 a"));
    daemon->sendFound("/Resolver3");
    EXPECT_TRUE(waitFor("resolved a"));
    EXPECT_TRUE(waitUntil([&] { return daemon->resolvers.isEmpty(); }));
    EXPECT_THAT(transcript.lines(), Not(Contains("resolve 2/0 a")));
}

TEST_F(AvahiProtocolTest, InstanceThatComesAfterTheFailureOfAllOthersIsTried)
{
    browseAndFind("a");
    daemon->sendFailure("/Resolver2");
    run(50ms);
    daemon->sendItemNew(2, 0, "a");
    EXPECT_TRUE(waitFor("resolve 2/0 a"));
}

TEST_F(AvahiProtocolTest, RefusedResolverIsAFailureOfItsInstance)
{
    browse();
    ASSERT_TRUE(waitFor("browse _airplay._tcp local"));
    daemon->refusalsToCome = 1;
    daemon->sendItemNew(1, 0, "a");
    daemon->sendItemNew(2, 1, "a");
    EXPECT_TRUE(waitFor("resolve 2/1 a"));
    EXPECT_THAT(transcript.lines(), Not(Contains("resolve 1/0 a")));
}

TEST_F(AvahiProtocolTest, SixteenAreResolvedAtATimeAndSilentOnesStepAsideAfterHalfASecond)
{
    browse();
    ASSERT_TRUE(waitFor("browse _airplay._tcp local"));
    for (int i = 0; i < 40; ++i)
        daemon->sendItemNew(1, 0, QString::number(i));
    ASSERT_TRUE(waitFor("resolve 1/0 15"));
    run(300ms);
    EXPECT_EQ(daemon->resolversAtMost, 16);
    run(400ms);
    EXPECT_EQ(daemon->resolversAtMost, 32);
    EXPECT_THAT(transcript.lines(), Not(Contains("free /Resolver2")));
}

TEST_F(AvahiProtocolTest, RefusedBrowseIsTriedAgainAndLoggedOnce)
{
    daemon->refusalsToCome = 2;
    browse();
    EXPECT_FALSE(waitFor("browse _airplay._tcp local", 3s));
    EXPECT_TRUE(waitFor("browse _airplay._tcp local", 5s));
    EXPECT_THAT(logLines.lines(),
        ElementsAre("log mDNS: browsing failed and will be tried again: org.freedesktop.Avahi.Refused"));
}

TEST_F(AvahiProtocolTest, KnownServicesAreKeptUntilTheNewDaemonHasLookedAround)
{
    browseAndFind("a");
    daemon.reset();
    EXPECT_TRUE(waitUntil([&] { return logLines.lines().size() == 1; }));
    daemon = std::make_unique<FakeAvahi>(*computerBus, transcript);
    ASSERT_TRUE(waitFor("browse _airplay._tcp local"));
    transcript.clear();
    daemon->sendItemNew(1, 0, "b");
    EXPECT_TRUE(waitFor("found b"));
    EXPECT_THAT(transcript.lines(), Not(Contains("removed a")));
    daemon->sendAllForNow();
    EXPECT_TRUE(waitFor("removed a"));
    EXPECT_THAT(transcript.lines(), Not(Contains("removed b")));
}

TEST_F(AvahiProtocolTest, SignalsFromAnybodyElseOnTheBusAreIgnored)
{
    browse();
    ASSERT_TRUE(waitFor("browse _airplay._tcp local"));
    run(50ms); // the path is known now
    ChildProcess stranger({"dbus-send", "--system", "--type=signal", "/Browser1",
        "org.freedesktop.Avahi.ServiceBrowser.ItemNew", "int32:1", "int32:0", "string:forged",
        "string:_airplay._tcp", "string:local", "uint32:0"});
    ASSERT_EQ(stranger.waitForExit(), 0);
    daemon->sendItemNew(1, 0, "genuine");
    EXPECT_TRUE(waitFor("found genuine"));
    EXPECT_THAT(transcript.lines(), Not(Contains("found forged")));
}

} // namespace companion::testing
