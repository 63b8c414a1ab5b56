#include "platform/avahi/AvahiServiceBrowser.h"

#include "tests/avahi/FakeAvahi.h"
#include "tests/avahi/ServiceBrowsing.h"

#include <gmock/gmock.h>

// The calls to the daemon and their order, against a stand-in whose replies the test chooses.

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
    daemon->foundBeforeReply = {"early", "bird"};
    browse();
    EXPECT_TRUE(waitFor("found bird"));
    EXPECT_THAT(transcript.lines(), Contains("found early"));
}

TEST_F(AvahiProtocolTest, ResolverIsFreedOnceItHasReported)
{
    browseAndFind("a");
    daemon->sendFound("/Resolver2");
    EXPECT_TRUE(waitFor("free /Resolver2"));
    EXPECT_TRUE(waitFor("resolved a"));
}

TEST_F(AvahiProtocolTest, ResolverIsFreedWhenTheServiceIsReleased)
{
    browseAndFind("a");
    list.services.clear();
    EXPECT_TRUE(waitFor("free /Resolver2"));
}

TEST_F(AvahiProtocolTest, ResolverIsFreedAtTheTimeOut)
{
    list.resolveTimeout = 700ms;
    browseAndFind("a");
    run(400ms);
    EXPECT_THAT(transcript.lines(), ElementsAre());
    EXPECT_TRUE(waitFor("free /Resolver2", 1s));
}

TEST_F(AvahiProtocolTest, ServiceIsResolvedAnewOneSecondAfterAFailure)
{
    browseAndFind("a");
    daemon->sendFailure("/Resolver2");
    run(900ms);
    EXPECT_THAT(transcript.lines(), ElementsAre("free /Resolver2"));
    EXPECT_TRUE(waitFor("resolve 1/0 a"));
    daemon->sendFound("/Resolver3");
    EXPECT_TRUE(waitFor("resolved a"));
}

TEST_F(AvahiProtocolTest, FailureIsNotRetriedAfterTheTimeOut)
{
    list.resolveTimeout = 500ms;
    browseAndFind("a");
    daemon->sendFailure("/Resolver2");
    run(1500ms);
    EXPECT_THAT(transcript.lines(), ElementsAre("free /Resolver2"));
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

TEST_F(AvahiProtocolTest, RefusedResolverIsRequestedAgainForTheNextInstance)
{
    browse();
    ASSERT_TRUE(waitFor("browse _airplay._tcp local"));
    daemon->refusalsToCome = 1;
    daemon->sendItemNew(1, 0, "a");
    daemon->sendItemNew(2, 1, "a");
    EXPECT_TRUE(waitFor("resolve 2/1 a"));
    EXPECT_THAT(transcript.lines(), Not(Contains("resolve 1/0 a")));
}

TEST_F(AvahiProtocolTest, RefusedResolverIsRequestedAgainForTheOnlyInstance)
{
    browse();
    ASSERT_TRUE(waitFor("browse _airplay._tcp local"));
    daemon->refusalsToCome = 2;
    daemon->sendItemNew(1, 0, "a");
    EXPECT_TRUE(waitFor("resolve 1/0 a"));
}

TEST_F(AvahiProtocolTest, AtMost32ResolversAreRequestedBeforeTheDaemonReplies)
{
    browse();
    ASSERT_TRUE(waitFor("browse _airplay._tcp local"));
    run(50ms); // the browser's own reply
    daemon->holdsReplies = true;
    for (int i = 0; i < 70; ++i)
        daemon->sendItemNew(1, 0, QString::number(i));
    ASSERT_TRUE(waitFor("resolve 1/0 31"));
    run(300ms);
    EXPECT_EQ(daemon->resolvers.size(), 32);
    daemon->sendHeldReplies();
    EXPECT_TRUE(waitFor("resolve 1/0 69")); // although no resolver has reported anything
}

TEST_F(AvahiProtocolTest, ResolverThatIsReleasedBeforeItsReplyIsFreedAfterIt)
{
    browse();
    ASSERT_TRUE(waitFor("browse _airplay._tcp local"));
    run(50ms);
    daemon->holdsReplies = true;
    daemon->sendItemNew(1, 0, "a");
    ASSERT_TRUE(waitFor("resolve 1/0 a"));
    list.services.clear();
    run(100ms);
    EXPECT_THAT(daemon->resolvers, ElementsAre("/Resolver2"));
    daemon->sendHeldReplies();
    EXPECT_TRUE(waitFor("free /Resolver2"));
}

TEST_F(AvahiProtocolTest, ServiceIsRemovedWithItsLastInstance)
{
    browseAndFind("a");
    daemon->sendItemNew(2, 1, "a");
    daemon->sendItemRemove(1, 0, "a");
    daemon->sendItemRemove(3, 0, "a");       // an instance that was never reported
    daemon->sendItemRemove(1, 0, "unknown"); // and such a service
    run(100ms);
    EXPECT_THAT(transcript.lines(), ElementsAre());
    daemon->sendItemRemove(2, 1, "a");
    EXPECT_TRUE(waitFor("removed a"));
    EXPECT_TRUE(waitFor("free /Resolver2"));
    EXPECT_THAT(transcript.lines(), Not(Contains("removed unknown")));
}

TEST_F(AvahiProtocolTest, BrowserThatFailsIsReplacedAfterTwoSecondsAndReportsOnlyChanges)
{
    browseAndFind("a");
    daemon->sendBrowserFailure();
    run(1700ms);
    EXPECT_THAT(transcript.lines(), ElementsAre("free /Browser1"));
    EXPECT_THAT(logLines.lines(),
        ElementsAre(
            "log mDNS: browsing failed and will be tried again: org.freedesktop.Avahi.NoNetworkError"));
    ASSERT_TRUE(waitFor("browse _airplay._tcp local"));
    daemon->sendItemNew(1, 0, "b");
    daemon->sendAllForNow();
    EXPECT_TRUE(waitFor("removed a"));
    EXPECT_THAT(transcript.lines(), Contains("found b"));
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
