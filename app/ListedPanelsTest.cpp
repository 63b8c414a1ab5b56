#include "app/ListedPanels.h"

#include "discovery/DevicesListViewController.h"
#include "discovery/testing/FakeDevicesListView.h"
#include "platform/testing/FakeLog.h"
#include "platform/testing/FakeMainQueue.h"
#include "platform/testing/FakeServiceBrowser.h"

#include <gtest/gtest.h>

namespace companion::testing {

using namespace std::chrono_literals;

namespace {

/// Resolves what it finds at once, as the list of panels does.
class Listener : public ServiceBrowserDelegate, public ServiceDelegate {
public:
    explicit Listener(Transcript& transcript)
        : m_transcript(transcript)
    {
    }

    void netServiceBrowserDidFindService(std::shared_ptr<Service> service, bool) override
    {
        m_transcript.add("found " + service->name() + " " + service->type() + " " + service->domain());
        m_services.push_back(service);
        service->setDelegate(this);
        service->resolveWithTimeout(20s);
    }

    void netServiceBrowserDidRemoveService(std::shared_ptr<Service>, bool) override
    {
        m_transcript.add("removed");
    }
    void netServiceDidResolveAddress(Service& service) override
    {
        m_transcript.add("resolved " + service.name());
    }

private:
    Transcript& m_transcript;
    std::vector<std::shared_ptr<Service>> m_services;
};

/// A search with one panel listed, from its start on.
class ListedPanelsTest : public ::testing::Test {
protected:
    ListedPanelsTest()
    {
        m_browser->setDelegate(&m_listener);
        m_browser->searchForServices("_airplay._tcp", "local.");
    }

    Transcript m_transcript;
    FakeMainQueue m_queue;
    FakeServiceBrowserFactory m_announced{m_transcript};
    ListedPanels m_factory{{"Meridian 65|Room 204|0A00020F"}, m_announced, m_queue};
    Listener m_listener{m_transcript};
    std::unique_ptr<ServiceBrowser> m_browser = m_factory.makeServiceBrowser();
};

TEST_F(ListedPanelsTest, ListedPanelIsFoundAndResolvedBesideAnnouncedOnes)
{
    EXPECT_EQ(m_transcript.take(), "browse _airplay._tcp local.")
        << "nothing is reported before the main queue's turn";
    m_queue.runPending();
    EXPECT_EQ(m_transcript.take(),
        "found Meridian 65|Room 204|0A00020F _airplay._tcp local.\nresolved Meridian 65|Room 204|0A00020F");

    m_announced.findAndResolve("Tandem|Hall|C0A80105");
    EXPECT_EQ(m_transcript.take(),
        "found Tandem|Hall|C0A80105 _airplay._tcp local.\nresolved Tandem|Hall|C0A80105");
}

TEST_F(ListedPanelsTest, AListedPanelThatIsAnnouncedAndWithdrawnAsWellStays)
{
    m_queue.runPending();
    m_transcript.clear();

    m_announced.find("Meridian 65|Room 204|0A00020F");
    m_announced.remove("Meridian 65|Room 204|0A00020F");
    EXPECT_EQ(m_transcript.take(), "") << "it was found before";
    m_announced.remove("Tandem|Hall|C0A80105");
    EXPECT_EQ(m_transcript.take(), "removed");
}

TEST_F(ListedPanelsTest, AListedPanelKeepsItsRowWhenItAnnouncesItselfByAnotherName)
{
    Transcript transcript;
    FakeSystemLog log(transcript);
    FakeDevicesListView view(transcript);
    DevicesListViewController list(view, m_factory, log);
    list.viewDidLoad();
    m_queue.runPending();

    m_announced.findAndResolve("Meridian|Foyer|0a00020f");
    m_announced.remove("Meridian|Foyer|0a00020f");
    m_announced.findAndResolve("Meridian|Foyer|0A00020F");
    m_announced.remove("Meridian|Foyer|0A00020F");
    m_announced.findAndResolve("Tandem|Hall|0A000210");
    EXPECT_EQ(list.numberOfRows(), 2);
    EXPECT_EQ(list.viewForRow(0), (DeviceRow{"Room 204", "0A00020F"}));
    EXPECT_EQ(list.viewForRow(1), (DeviceRow{"Hall", "0A000210"}));
}

TEST_F(ListedPanelsTest, AListedPanelOfAnUnknownModelHidesNoAnnouncedOne)
{
    ListedPanels factory({"Projector|Room 204|0A00020F"}, m_announced, m_queue);
    const auto browser = factory.makeServiceBrowser();
    browser->setDelegate(&m_listener);
    m_transcript.clear();
    m_announced.find("Tandem|Hall|0A00020F");
    EXPECT_EQ(m_transcript.take(), "found Tandem|Hall|0A00020F _airplay._tcp local.");
}

TEST_F(ListedPanelsTest, NothingIsReportedOnceTheBrowserIsGone)
{
    m_transcript.clear();
    m_browser.reset();
    m_queue.runPending();
    EXPECT_EQ(m_transcript.take(), "");
}

} // namespace
} // namespace companion::testing
