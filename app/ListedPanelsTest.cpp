#include "app/ListedPanels.h"
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

} // namespace

TEST(ListedPanelsTest, ListedPanelIsFoundAndResolvedBesideAnnouncedOnes)
{
    Transcript transcript;
    FakeMainQueue queue;
    FakeServiceBrowserFactory announced(transcript);
    ListedPanels factory({"Meridian 65|Room 204|0A00020F"}, announced, queue);
    Listener listener(transcript);

    const auto browser = factory.makeServiceBrowser();
    browser->setDelegate(&listener);
    browser->searchForServices("_airplay._tcp", "local.");
    EXPECT_EQ(transcript.take(), "browse _airplay._tcp local.")
        << "nothing is reported before the main queue's turn";
    queue.runPending();
    EXPECT_EQ(transcript.take(),
        "found Meridian 65|Room 204|0A00020F _airplay._tcp local.\nresolved Meridian 65|Room 204|0A00020F");

    announced.findAndResolve("Tandem|Hall|C0A80105");
    EXPECT_EQ(
        transcript.take(), "found Tandem|Hall|C0A80105 _airplay._tcp local.\nresolved Tandem|Hall|C0A80105");
}

TEST(ListedPanelsTest, NothingIsReportedOnceTheBrowserIsGone)
{
    Transcript transcript;
    FakeMainQueue queue;
    FakeServiceBrowserFactory announced(transcript);
    ListedPanels factory({"Meridian 65|Room 204|0A00020F"}, announced, queue);
    Listener listener(transcript);

    auto browser = factory.makeServiceBrowser();
    browser->setDelegate(&listener);
    browser->searchForServices("_airplay._tcp", "local.");
    transcript.clear();
    browser.reset();
    queue.runPending();
    EXPECT_EQ(transcript.take(), "");
}

} // namespace companion::testing
