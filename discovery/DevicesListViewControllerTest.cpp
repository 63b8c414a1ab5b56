#include "discovery/DevicesListViewController.h"

#include "discovery/testing/FakeDevicesListView.h"
#include "platform/testing/FakeLog.h"
#include "platform/testing/FakeServiceBrowser.h"

#include <gmock/gmock.h>

namespace companion::testing {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Lines = std::vector<std::string>;

class RecordingDelegate : public DevicesListViewControllerDelegate {
public:
    explicit RecordingDelegate(Transcript& transcript)
        : m_transcript(transcript)
    {
    }

    void didPickCastingDeviceWithIP(
        const std::string& ip, const std::string& hex, const std::string& name) override
    {
        m_transcript.add("pick " + ip + " " + hex + " " + name);
    }

    void deviceDisconnecetd() override { m_transcript.add("disconnected"); }

private:
    Transcript& m_transcript;
};

class DevicesListViewControllerTest : public ::testing::Test {
protected:
    DevicesListViewControllerTest()
    {
        list.setDelegate(delegate);
        list.viewDidLoad();
        atStart = transcript.take();
    }

    void listThreePanels()
    {
        browsers.findAndResolve("Meridian 65|Room 204|0A00020F");
        browsers.findAndResolve("Halcyon-X|Hall|C0A80105");
        browsers.findAndResolve("Tandem|Attic|C0A80106");
        transcript.clear();
    }

    /// Lists two panels called "Hall" and removes the one at `removed`, "0A000201" or "0A000202".
    void makeListsUnequal(const std::string& removed)
    {
        browsers.findAndResolve("Tandem|Hall|0A000201");
        browsers.findAndResolve("Tandem|Hall|0A000202");
        browsers.remove("Tandem|Hall|" + removed);
        transcript.clear();
    }

    std::string click(std::int64_t row, std::int64_t column = 0)
    {
        view.rowOfClick = row;
        view.columnOfClick = column;
        list.deviceClicked();
        return transcript.take("; ");
    }

    std::string disconnect()
    {
        list.disconnectDevice();
        return transcript.take("; ");
    }

    std::string transcriptOfResolving(const std::string& name)
    {
        browsers.findAndResolve(name);
        return transcript.take("; ");
    }

    Transcript transcript;
    FakeSystemLog log{transcript};
    FakeServiceBrowserFactory browsers{transcript};
    FakeDevicesListView view{transcript};
    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>(transcript);
    DevicesListViewController list{view, browsers, log};
    std::string atStart;
};

} // namespace

TEST_F(DevicesListViewControllerTest, LoadingSetsTheTableUpAndThenStartsBrowsing)
{
    EXPECT_EQ(atStart, "reload\ndisconnect button 0\nbrowse _airplay._tcp local.");
    EXPECT_EQ(list.title(), "Homepage");
    EXPECT_EQ(list.numberOfRows(), 0);
    EXPECT_EQ(list.selectedRow(), -1);
    EXPECT_EQ(list.selectedColumn(), -1);
    EXPECT_EQ(list.selectedRelayDeviceIP(), std::nullopt);
}

TEST_F(DevicesListViewControllerTest, AFoundServiceIsKeptAndResolvedForUpTo20SecondsAndNotShownYet)
{
    const auto service = browsers.find("Meridian-75|Hall|C0A80105");
    EXPECT_EQ(service->delegate(), &list);
    EXPECT_EQ(service->timeout(), std::chrono::seconds(20));
    EXPECT_THAT(list.services(), ElementsAre(service));
    EXPECT_EQ(list.numberOfRows(), 0);
    EXPECT_EQ(transcript.take(), "");
}

TEST_F(DevicesListViewControllerTest, AResolvedPanelIsListedWithItsNameAndHexAddress)
{
    EXPECT_EQ(transcriptOfResolving("Meridian-75|Hall|C0A80105"),
        "log Resolved address for service Meridian-75|Hall|C0A80105; reload; "
        "log Resolved address for service Hall : C0A80105");
    EXPECT_EQ(list.numberOfRows(), 1);
    EXPECT_EQ(list.viewForRow(0), (DeviceRow{"Hall", "C0A80105"}));
    EXPECT_THAT(list.relayDeviceIPs(), ElementsAre("192.168.1.5"));
}

TEST_F(DevicesListViewControllerTest, PanelsAreListedInTheOrderInWhichTheyWereAccepted)
{
    listThreePanels();
    EXPECT_THAT(list.relayDeviceNames(), ElementsAre("Room 204", "Hall", "Attic"));
    EXPECT_THAT(list.relayDeviceHex(), ElementsAre("0A00020F", "C0A80105", "C0A80106"));
    EXPECT_THAT(list.relayDeviceIPs(), ElementsAre("10.0.2.15", "192.168.1.5", "192.168.1.6"));
}

TEST_F(DevicesListViewControllerTest, NamesOutsideTheSchemeAreHeldAndIgnored)
{
    const Lines names{"", "|", "Meridian", "Meridian|Hall", "Meridian|Hall|0A0002", "Meridian|Hall|",
        "ProjectorX|Hall|C0A80105", "meridian|Hall|C0A80105", "Projector|Meridian|C0A80105",
        "\xFF\xFE|\xC3\x28|\x80\x80\x80\x80\x80\x80\x80\x80", std::string("Meridian\0|x", 11)};
    for (const std::string& name : names)
        EXPECT_EQ(transcriptOfResolving(name), "log Resolved address for service " + name);
    EXPECT_EQ(list.numberOfRows(), 0);
    EXPECT_EQ(list.services().size(), names.size());
}

TEST_F(DevicesListViewControllerTest, ANameThatIsNotUtf8IsListedAsItIs)
{
    browsers.findAndResolve("Meridian\xFF|\xC3|\x80\x80\x80\x80\x80\x80"
                            "0A");
    EXPECT_EQ(list.viewForRow(0),
        (DeviceRow{"\xC3",
            "\x80\x80\x80\x80\x80\x80"
            "0A"}));
    EXPECT_THAT(list.relayDeviceIPs(), ElementsAre("0.0.0.10"));
}

TEST_F(DevicesListViewControllerTest, AnAddressPieceThatIsNoNumberCountsAs0)
{
    browsers.findAndResolve("Meridian|Hall|0A00020G");
    EXPECT_THAT(list.relayDeviceIPs(), ElementsAre("10.0.2.0"));
}

TEST_F(DevicesListViewControllerTest, ASecondPanelWithTheSameIPButOtherHexIsNotAddedAndLoggedAllTheSame)
{
    browsers.findAndResolve("Tandem|A|0a00020f");
    transcript.clear();
    EXPECT_EQ(transcriptOfResolving("Tandem|B|0A00020F"),
        "log Resolved address for service Tandem|B|0A00020F; log Resolved address for service B : 0A00020F");
    EXPECT_EQ(transcriptOfResolving("Halcyon-X|C|0A00020F99"),
        "log Resolved address for service Halcyon-X|C|0A00020F99; "
        "log Resolved address for service C : 0A00020F99");
    EXPECT_THAT(list.relayDeviceNames(), ElementsAre("A"));
}

TEST_F(DevicesListViewControllerTest, AResolutionReportedAgainAddsNoRowAndLogsBothLinesAgain)
{
    const auto service = browsers.findAndResolve("Tandem|A|0A00020F");
    transcript.clear();
    service->resolve();
    EXPECT_EQ(transcript.take(),
        "log Resolved address for service Tandem|A|0A00020F\nlog Resolved address for service A : 0A00020F");
    EXPECT_EQ(list.numberOfRows(), 1);
}

TEST_F(DevicesListViewControllerTest, ARemovedPanelLeavesServicesAndLists)
{
    listThreePanels();
    browsers.remove("Halcyon-X|Hall|C0A80105");
    EXPECT_EQ(transcript.take(), "reload");
    EXPECT_EQ(list.services().size(), 2u);
    EXPECT_THAT(list.relayDeviceNames(), ElementsAre("Room 204", "Attic"));
    EXPECT_THAT(list.relayDeviceHex(), ElementsAre("0A00020F", "C0A80106"));
    EXPECT_THAT(list.relayDeviceIPs(), ElementsAre("10.0.2.15", "192.168.1.6"));
}

TEST_F(DevicesListViewControllerTest, AServiceRemovedBeforeItResolvedIsNeverListed)
{
    const auto service = browsers.find("Tandem|A|0A00020F");
    browsers.remove("Tandem|A|0A00020F");
    service->resolve();
    EXPECT_EQ(list.numberOfRows(), 0);
    EXPECT_THAT(list.services(), IsEmpty());
}

TEST_F(DevicesListViewControllerTest, ARemovedNameInOtherLetterCasePrunesTheLists)
{
    browsers.findAndResolve("Meridian|Hall|C0A80105");
    browsers.find("meridian|Hall|C0A80105");
    browsers.remove("meridian|Hall|C0A80105");
    EXPECT_EQ(list.numberOfRows(), 0);
    EXPECT_EQ(list.services().size(), 1u) << "the one that was announced in the right case is still there";
}

TEST_F(DevicesListViewControllerTest, ARemovalNeedsBothIPAndHexListed)
{
    browsers.findAndResolve("Tandem|A|0A00020F");
    transcript.clear();
    browsers.remove("Tandem|A|0a00020f");
    browsers.remove("Tandem|A|0A00020F99");
    browsers.remove("Tandem|A|0A000210");
    EXPECT_EQ(transcript.take(), "");
    EXPECT_EQ(list.numberOfRows(), 1);
}

TEST_F(DevicesListViewControllerTest, ARemovalOutsideTheSchemeChangesOnlyTheServices)
{
    browsers.findAndResolve("Tandem|A|0A00020F");
    for (const std::string name : {"Tandem|A", "Tandem", "Tandem|A|0A0002", "ProjectorX|A|0A00020F"}) {
        browsers.find(name);
        EXPECT_EQ(list.services().size(), 2u);
        transcript.clear();
        browsers.remove(name);
        EXPECT_EQ(list.services().size(), 1u);
        EXPECT_EQ(transcript.take(), "");
    }
    EXPECT_EQ(list.numberOfRows(), 1);
}

TEST_F(DevicesListViewControllerTest, RemovingOneOfTwoPanelsOfTheSameNameRemovesBothNames)
{
    makeListsUnequal("0A000201");
    EXPECT_THAT(list.relayDeviceNames(), IsEmpty());
    EXPECT_THAT(list.relayDeviceIPs(), ElementsAre("10.0.2.2"));
    EXPECT_THAT(list.relayDeviceHex(), ElementsAre("0A000202"));
}

TEST_F(DevicesListViewControllerTest, ARowWithoutANameShowsNoneAndCannotBePicked)
{
    makeListsUnequal("0A000201");
    EXPECT_EQ(list.numberOfRows(), 1);
    EXPECT_EQ(list.viewForRow(0), (DeviceRow{std::nullopt, "0A000202"}));
    EXPECT_EQ(click(0), "log Selected device IP : 10.0.2.2; icon 0,0 connectedChain");
    EXPECT_EQ(list.selectedRow(), 0);
    EXPECT_EQ(view.disconnectButtonHeight, 0);
}

TEST_F(DevicesListViewControllerTest, NamesAreByIndexEvenWhenTheListsHaveBecomeUnequal)
{
    makeListsUnequal("0A000202");
    browsers.findAndResolve("Tandem|Attic|0A000203");
    EXPECT_EQ(list.viewForRow(0), (DeviceRow{"Attic", "0A000201"}));
    EXPECT_EQ(list.viewForRow(1), (DeviceRow{std::nullopt, "0A000203"}));
}

TEST_F(DevicesListViewControllerTest, ARowThatIsNoneHasNoTexts)
{
    listThreePanels();
    EXPECT_EQ(list.viewForRow(3), DeviceRow());
    EXPECT_EQ(list.viewForRow(-1), DeviceRow());
}

TEST_F(DevicesListViewControllerTest, ClickingARowPicksItsPanel)
{
    listThreePanels();
    EXPECT_EQ(click(0),
        "log Selected device IP : 10.0.2.15; icon 0,0 connectedChain; pick 10.0.2.15 0A00020F Room 204; "
        "disconnect button 48");
    EXPECT_EQ(list.selectedRow(), 0);
    EXPECT_EQ(list.selectedColumn(), 0);
    EXPECT_EQ(list.selectedRelayDeviceIP(), "10.0.2.15");
}

TEST_F(DevicesListViewControllerTest, ClickingThePickedRowAgainDoesNothing)
{
    listThreePanels();
    click(0);
    EXPECT_EQ(click(0), "");
    EXPECT_EQ(list.selectedRow(), 0);
}

TEST_F(DevicesListViewControllerTest, ClickingAnotherRowMovesThePickWithoutADisconnect)
{
    listThreePanels();
    click(0);
    EXPECT_EQ(click(1),
        "icon 0,0 radioIcon; log Selected device IP : 192.168.1.5; icon 0,1 connectedChain; "
        "pick 192.168.1.5 C0A80105 Hall; disconnect button 48");
    EXPECT_EQ(list.selectedRelayDeviceIP(), "192.168.1.5");
}

TEST_F(DevicesListViewControllerTest, DisconnectingUnpicksTheRowWhichCanThenBePickedAgain)
{
    listThreePanels();
    click(1);
    EXPECT_EQ(disconnect(), "disconnect button 0; icon 0,1 radioIcon; disconnected");
    EXPECT_EQ(list.selectedRow(), -1);
    EXPECT_EQ(list.selectedColumn(), -1);
    EXPECT_EQ(list.selectedRelayDeviceIP(), std::nullopt);
    EXPECT_EQ(click(1),
        "log Selected device IP : 192.168.1.5; icon 0,1 connectedChain; pick 192.168.1.5 C0A80105 Hall; "
        "disconnect button 48");
}

TEST_F(DevicesListViewControllerTest, AClickBelowTheRowsWithNothingPickedDoesNothing)
{
    listThreePanels();
    EXPECT_EQ(click(-1, -1), "");
}

TEST_F(DevicesListViewControllerTest, AClickBelowTheRowsWhilePickedTakesTheIconAndLeavesThePairing)
{
    listThreePanels();
    click(1);
    EXPECT_EQ(click(-1, -1), "icon 0,1 radioIcon");
    EXPECT_EQ(list.selectedRow(), -1);
    EXPECT_EQ(list.selectedColumn(), -1);
    EXPECT_EQ(list.selectedRelayDeviceIP(), "192.168.1.5");
    EXPECT_EQ(view.disconnectButtonHeight, 48);
    EXPECT_EQ(disconnect(), "disconnect button 0; disconnected");
}

TEST_F(DevicesListViewControllerTest, TheRemovalOfThePickedPanelLeavesThePickAsItWas)
{
    listThreePanels();
    click(0);
    browsers.remove("Meridian 65|Room 204|0A00020F");
    EXPECT_EQ(transcript.take(), "reload");
    EXPECT_EQ(list.selectedRow(), 0);
    EXPECT_EQ(list.selectedRelayDeviceIP(), "10.0.2.15");
    EXPECT_EQ(click(0), "") << "row 0 is another panel now, but its number is the picked one";
    EXPECT_EQ(click(1),
        "icon 0,0 radioIcon; log Selected device IP : 192.168.1.6; icon 0,1 connectedChain; "
        "pick 192.168.1.6 C0A80106 Attic; disconnect button 48");
}

TEST_F(DevicesListViewControllerTest, ARowOffTheScreenIsPickedWithoutAnIcon)
{
    listThreePanels();
    view.rowsOnScreen = 2;
    EXPECT_EQ(click(2),
        "log Selected device IP : 192.168.1.6; pick 192.168.1.6 C0A80106 Attic; disconnect button 48");
}

TEST_F(DevicesListViewControllerTest, AClickOutsideTheColumnPicksTheRowWithoutAnIconAndUnpicksItInColumn0)
{
    listThreePanels();
    EXPECT_EQ(click(1, -1),
        "log Selected device IP : 192.168.1.5; pick 192.168.1.5 C0A80105 Hall; disconnect button 48");
    EXPECT_EQ(disconnect(), "disconnect button 0; icon 0,1 radioIcon; disconnected");
}

TEST_F(DevicesListViewControllerTest, WithoutADelegateThePickGoesNowhere)
{
    listThreePanels();
    delegate.reset();
    EXPECT_EQ(click(0), "log Selected device IP : 10.0.2.15; icon 0,0 connectedChain; disconnect button 48");
    EXPECT_EQ(disconnect(), "disconnect button 0; icon 0,0 radioIcon");
}

TEST_F(DevicesListViewControllerTest, AnErrorIsLoggedWithNameTypeDomainAndNumber)
{
    list.handleError(-72004, FakeService("Tandem|A|0A00020F"));
    EXPECT_EQ(transcript.take(),
        "log An error occurred with service Tandem|A|0A00020F._airplay._tcp.local., error code = -72004");
    EXPECT_TRUE(list.addressesComplete({}, "_airplay._tcp"));
}

TEST(DevicesListViewControllerLifetime, AServiceThatOutlivesTheListReportsToNobody)
{
    Transcript transcript;
    FakeSystemLog log(transcript);
    FakeServiceBrowserFactory browsers(transcript);
    FakeDevicesListView view(transcript);
    std::shared_ptr<FakeService> service;
    {
        DevicesListViewController list(view, browsers, log);
        list.viewDidLoad();
        service = browsers.find("Tandem|A|0A00020F");
    }
    EXPECT_EQ(service->delegate(), nullptr);
}

} // namespace companion::testing
