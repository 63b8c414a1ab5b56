#include "discovery/PanelList.h"

#include "platform/testing/FakeServiceBrowser.h"

#include <gmock/gmock.h>

namespace companion::testing {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class CountingService : public FakeService {
public:
    using FakeService::FakeService;

    std::string name() const override
    {
        ++calls;
        return FakeService::name();
    }

    static inline int calls = 0;
};

class PanelListTest : public ::testing::Test, public ServiceDelegate {
protected:
    std::shared_ptr<FakeService> find(const std::string& name)
    {
        auto service = std::make_shared<FakeService>(name);
        list.addService(service, *this);
        return service;
    }

    bool accept(const std::string& name)
    {
        const auto resolved = list.acceptService(*find(name));
        return resolved && resolved->isNew;
    }

    bool remove(const std::string& name) { return list.removeService(FakeService(name)); }

    PanelList list;

    void netServiceDidResolveAddress(Service&) override { }
};

TEST_F(PanelListTest, PanelsAreListedOnceForEachAddress)
{
    EXPECT_TRUE(accept("Meridian 65|Room|0A00020F"));
    EXPECT_FALSE(accept("Tandem|Other|0a00020f")) << "the same address in other letters";
    EXPECT_FALSE(accept("meridian|Hall|0A000210")) << "no supported model";
    EXPECT_TRUE(accept("Tandem|Room|0A000211"));
    EXPECT_THAT(list.panels(),
        ElementsAre(PanelName{"Meridian 65", "Room", "0A00020F", "10.0.2.15"},
            PanelName{"Tandem", "Room", "0A000211", "10.0.2.17"}));
    EXPECT_THAT(list.names(), ElementsAre("Room", "Room"));
    EXPECT_EQ(list.otherServices(), 1U);
}

TEST_F(PanelListTest, RemovalIsByTheAddressAsAnnouncedAndByNameInEveryRow)
{
    accept("Meridian 65|Room|0A00020F");
    accept("Tandem|Room|0A000211");
    EXPECT_FALSE(remove("Tandem|Room|0a00020f")) << "listed in other letters";
    EXPECT_THAT(list.names(), ElementsAre("Room", "Room"));
    EXPECT_TRUE(remove("mERIDIAN 65|Room|0A00020F")) << "the model's letter case does not matter here";
    EXPECT_THAT(list.panels(), ElementsAre(PanelName{"Tandem", "Room", "0A000211", "10.0.2.17"}));
    EXPECT_THAT(list.names(), IsEmpty());
}

TEST_F(PanelListTest, PanelsThatComeBackBeforeAnybodyLooksHaveNewRowsAtTheEnd)
{
    accept("Meridian 65|Room|0A00020F");
    accept("Tandem|Hall|0A000210");
    EXPECT_TRUE(remove("Meridian 65|Room|0A00020F"));
    EXPECT_FALSE(remove("Meridian 65|Room|0A00020F")) << "it has gone";
    EXPECT_TRUE(accept("Tandem|Room|0A000211")) << "a namesake";
    EXPECT_TRUE(accept("Meridian 65|Room|0a00020f")) << "the same address in other letters";
    EXPECT_THAT(list.names(), ElementsAre("Hall", "Room", "Room"));
    EXPECT_THAT(list.panels(),
        ElementsAre(PanelName{"Tandem", "Hall", "0A000210", "10.0.2.16"},
            PanelName{"Tandem", "Room", "0A000211", "10.0.2.17"},
            PanelName{"Meridian 65", "Room", "0a00020f", "10.0.2.15"}));
}

TEST_F(PanelListTest, ARemovedServiceIsHeldNoLongerAndReportsToNobody)
{
    const auto first = find("Meridian 65|Room|0A00020F");
    const auto again = find("Meridian 65|Room|0A00020F");
    const auto other = std::make_shared<FakeService>("Meridian 65|Room|0A00020F", "_http._tcp");
    list.addService(other, *this);
    EXPECT_FALSE(remove("Meridian 65|Room|0A00020F")) << "it was not listed";
    EXPECT_EQ(first->delegate(), nullptr);
    EXPECT_EQ(again->delegate(), nullptr);
    EXPECT_THAT(list.services(), ElementsAre(other)) << "another type is another service";
}

TEST_F(PanelListTest, Removing1000ServicesAsksEachForItsNameAFewTimes)
{
    constexpr int count = 1000;
    std::vector<std::shared_ptr<CountingService>> services;
    for (int i = 0; i < count; ++i) {
        services.push_back(std::make_shared<CountingService>("Tandem|Room|0A01" + std::to_string(1000 + i)));
        list.addService(services.back(), *this);
        ASSERT_TRUE(list.acceptService(*services.back()));
    }
    CountingService::calls = 0;
    for (const auto& service : services)
        EXPECT_TRUE(list.removeService(*service));
    EXPECT_LE(CountingService::calls, 4 * count);
    EXPECT_THAT(list.services(), IsEmpty());
    EXPECT_THAT(list.panels(), IsEmpty());
}

} // namespace
} // namespace companion::testing
