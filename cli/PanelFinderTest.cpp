#include "cli/DiscoverCommand.h"
#include "cli/testing/CommandTest.h"

namespace companion::cli::testing {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PanelFinderTest : public CommandTest {
protected:
    void find(PanelFinder& finder)
    {
        finder.find([this](const PanelFinder::Found& found) {
            told.push_back(found.address.value_or("none: " + found.whyNot));
        });
    }

    std::vector<std::string> told;
};

TEST_F(PanelFinderTest, AddressIsTakenAsItIsAndNobodyIsAsked)
{
    daemon.state = MdnsDaemonState::noBus;
    PanelFinder finder(search(), {"10.0.2.15", std::nullopt}, 5s);
    find(finder);
    EXPECT_THAT(told, ElementsAre("10.0.2.15"));
    EXPECT_EQ(transcript.take(), "");
}

TEST_F(PanelFinderTest, NameIsFoundOnceItsServiceResolvesAndNamesakesHad300Milliseconds)
{
    PanelFinder finder(search(), {std::nullopt, "Room"}, 5s);
    find(finder);
    browsers.findAndResolve("Meridian 65|Other|0A000001");
    const auto service = browsers.find("Meridian 65|Room|0A00020F");
    queue.advance(1s);
    EXPECT_THAT(told, IsEmpty());
    service->resolve();
    queue.advance(299ms);
    EXPECT_THAT(told, IsEmpty());
    queue.advance(1ms);
    EXPECT_THAT(told, ElementsAre("10.0.2.15"));
    queue.advance(10s);
    EXPECT_EQ(told.size(), 1U);
}

TEST_F(PanelFinderTest, NameThatNobodyHasIsGivenUpWhenTheTimeIsOver)
{
    PanelFinder finder(search(), {std::nullopt, "Room"}, 2500ms);
    find(finder);
    browsers.findAndResolve("Meridian 65|room|0A00020F");
    browsers.findAndResolve("Kitchen radio|Room|0A000210");
    queue.advance(2499ms);
    EXPECT_THAT(told, IsEmpty());
    queue.advance(1ms);
    EXPECT_THAT(told, ElementsAre("none: no panel called \"Room\" announced itself within 2.5 s"));
}

TEST_F(PanelFinderTest, NameOfSeveralPanelsIsNobodys)
{
    PanelFinder finder(search(), {std::nullopt, "Room"}, 5s);
    find(finder);
    browsers.findAndResolve("Meridian 65|Room|0A00020F");
    browsers.findAndResolve("Tandem|Room|0A000210");
    queue.advance(300ms);
    EXPECT_THAT(told,
        ElementsAre("none: several panels are called \"Room\" (10.0.2.15, 10.0.2.16): use --panel-address"));
}

TEST_F(PanelFinderTest, WithoutADaemonNothingIsWaitedFor)
{
    daemon = {MdnsDaemonState::noDaemon, ""};
    PanelFinder finder(search(), {std::nullopt, "Room"}, 5s);
    find(finder);
    EXPECT_THAT(told, ElementsAre("none: no mDNS daemon runs (avahi-daemon)"));
}

class PanelBrowseTest : public CommandTest { };

TEST_F(PanelBrowseTest, PanelsAreThoseOfKnownModelsWithAddressesOfTheirOwn)
{
    PanelBrowse browse(browsers);
    browse.start();
    EXPECT_EQ(transcript.take(), "browse _airplay._tcp local.");
    browsers.findAndResolve("Meridian 65|Room|0A00020F");
    browsers.findAndResolve("Meridian 65|Second name|0A00020F");
    browsers.findAndResolve("Television|Room|0A000210");
    browsers.findAndResolve("no panel at all");
    browsers.find("Tandem|Silent|0A000211");
    ASSERT_EQ(browse.panels().size(), 1U);
    EXPECT_EQ(browse.panels().front().name, "Room");
    EXPECT_EQ(browse.otherServices(), 2U);
    browsers.remove("no panel at all");
    EXPECT_EQ(browse.otherServices(), 1U);
    browsers.remove("Meridian 65|Room|0A00020F");
    EXPECT_THAT(browse.panels(), IsEmpty());
}

TEST_F(PanelBrowseTest, ServiceThatResolvesAfterItsRemovalIsNotListed)
{
    PanelBrowse browse(browsers);
    browse.start();
    const auto service = browsers.find("Meridian 65|Room|0A00020F");
    browsers.remove("Meridian 65|Room|0A00020F");
    service->resolve();
    EXPECT_THAT(browse.panels(), IsEmpty());
}

class DiscoverCommandTest : public CommandTest { };

TEST_F(DiscoverCommandTest, PanelsAreToldAsTheyComeAndTheSearchEndsInTime)
{
    DiscoverCommand command(search(), output, {{}, 5s, false});
    start(command);
    browsers.findAndResolve("Meridian 65|Room|0A00020F");
    EXPECT_THAT(output.lines, ElementsAre("out 10.0.2.15        Room (Meridian 65)"));
    queue.advance(4999ms);
    EXPECT_EQ(resultText(), "none yet");
    queue.advance(1ms);
    EXPECT_EQ(resultText(), "0 ");
}

TEST_F(DiscoverCommandTest, JsonHasThePanelsThatAreStillThere)
{
    DiscoverCommand command(search(), output, {{}, 5s, true});
    start(command);
    browsers.findAndResolve("Meridian 65|Room|0A00020F");
    browsers.findAndResolve("Tandem|Hall|0A000210");
    browsers.remove("Meridian 65|Room|0A00020F");
    queue.advance(5s);
    EXPECT_THAT(output.lines, IsEmpty());
    EXPECT_EQ(jsonText(result->json),
        R"({"panels":[{"name":"Hall","address":"10.0.2.16","model":"Tandem","hexAddress":"0A000210"}]})");
}

TEST_F(DiscoverCommandTest, NoPanelIsStatus3)
{
    DiscoverCommand command(search(), output, {{}, 1500ms, false});
    start(command);
    queue.advance(1500ms);
    EXPECT_EQ(resultText(), "3 no panel announced itself within 1.5 s");
}

TEST_F(DiscoverCommandTest, PanelThatIsMeantEndsTheSearch)
{
    DiscoverCommand command(search(), output, {{std::nullopt, "Hall"}, 5s, false});
    start(command);
    browsers.findAndResolve("Meridian 65|Room|0A00020F");
    EXPECT_EQ(resultText(), "none yet");
    browsers.findAndResolve("Tandem|Hall|0A000210");
    EXPECT_EQ(resultText(), "0 ");
    EXPECT_THAT(output.lines, ElementsAre("out 10.0.2.16        Hall (Tandem)"));
}

TEST_F(DiscoverCommandTest, InterruptEndsTheSearchWithWhatThereIs)
{
    DiscoverCommand command(search(), output, {{"10.0.0.9", std::nullopt}, 5s, false});
    start(command);
    EXPECT_EQ(command.interrupt(), Interruption::endWithResult);
    EXPECT_EQ(resultText(), "3 that panel did not announce itself so far");
}

TEST_F(DiscoverCommandTest, InterruptedBeforeItsTimeIsOverItDoesNotSayThatItWas)
{
    DiscoverCommand command(search(), output, {{}, 5s, false});
    start(command);
    queue.advance(1s);
    command.interrupt();
    EXPECT_EQ(resultText(), "3 no panel announced itself so far");
}

TEST_F(DiscoverCommandTest, MissingDaemonIsToldAtOnce)
{
    daemon = {MdnsDaemonState::silentBus, ""};
    DiscoverCommand command(search(), output, {{}, 5s, false});
    start(command);
    EXPECT_EQ(resultText(), "3 the system bus does not answer");
}

} // namespace companion::cli::testing
