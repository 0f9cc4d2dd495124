// A management library whose chains come back to themselves, whose counts are wild and whose texts have no end: clients
// get what is there, once, and soon.
#include "class_support.h"

#include "classes/storage/fc_port.h"
#include "classes/storage/scsi_protocol_endpoint_target.h"
#include "classes/storage/storage_extent.h"
#include "inventory/chain.h"
#include "inventory/cna_list.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

using namespace adapters;
using namespace merolt;

namespace {

using Lines = std::vector<std::string>;

constexpr const char* fcPort = "Merolt_FCHBA_FCPort";
constexpr const char* targetEndpoint = "Merolt_FCHBA_SCSIProtocolEndpointTarget";
constexpr const char* extent = "Merolt_FCHBA_StorageExtent";

const std::string circleOf(const std::string& entries, unsigned most) {
    return "Error: a chain of " + entries + " in the TAVIK adapter list comes back to itself or is longer than " +
           std::to_string(most) + " entries; it is read to there";
}

const std::string wildCount(const std::string& owners, const std::string& entries) {
    return "Error: the " + owners + " in the TAVIK adapter list count more " + entries +
           " than any machine has; those in the chains are counted instead";
}

class HostileTreeTest : public ClassTest {
protected:
    /// Two cards with two ports, two storage functions a port, two targets a function and two logical units a target.
    void prepareTree() {
        writeFile("meroltcna.properties", "ErrorLog=1\n");
        std::vector<tavik::Card> cards;
        std::uint32_t number = 0;
        for (const char* serial : {"S1", "S2"}) {
            tavik::Card made;
            made.serialNumber = serial;
            for (std::uint8_t portNumber = 0; portNumber < 2; ++portNumber) {
                tavik::Port port;
                port.number = portNumber;
                for (int function = 0; function < 2; ++function)
                    port.functions->push_back(functionWithTargets(++number));
                made.ports->push_back(std::move(port));
            }
            cards.push_back(std::move(made));
        }
        prepare(std::move(cards));
    }

    static tavik::StorageFunction functionWithTargets(std::uint32_t number) {
        tavik::StorageFunction function = storageFunction(number, chips::chip7);
        for (const std::uint8_t last : {std::uint8_t{0xAA}, std::uint8_t{0xBB}}) {
            tavik::Target target;
            target.portName = worldWideName(last);
            for (std::uint16_t unit = 0; unit < 2; ++unit) {
                tavik::Lun lun;
                lun.number = unit;
                target.luns.push_back(lun);
            }
            function.targets.push_back(std::move(target));
        }
        return function;
    }

    /// How many instances each class shows that a walk of the tree makes.
    std::map<std::string, std::size_t> shown() {
        std::map<std::string, std::size_t> counts;
        for (const char* name :
             {fcPort, targetEndpoint, extent, "Merolt_FCHBA_PortController", "Merolt_FCHBA_FCPortStatistics",
              "Merolt_FCHBA_LogicalPortGroup", "Merolt_FCHBA_SCSIProtocolController",
              "Merolt_FCHBA_SCSIProtocolEndpointHBA", "Merolt_FCHBA_SoftwareIdentity", "Merolt_Adapter_PhysicalPackage",
              "Merolt_Adapter_PhysicalPort", "Merolt_Adapter_Product"})
            counts[name] = countOf(name);
        return counts;
    }

    /// Starts with a chain bent by the test: every class shows what it shows of the whole tree, and one line tells.
    template <class Bend>
    void expectEachEntryOnce(const std::string& line, Bend bend) {
        prepareTree();
        start();
        const auto whole = shown();
        stop();
        prepareTree();
        bend(tavikLibrary.tree());
        start();
        EXPECT_EQ(shown(), whole);
        EXPECT_EQ(occurrences(logLines(), line), 1U);
    }

    TAVIK_TargetEntry& target(std::uint32_t handle) { return *record(handle).firstTarget; }
};

TEST_F(HostileTreeTest, TargetsInACircleAreEachListedOnce) {
    expectEachEntryOnce(circleOf("targets", 65536), [&](tavik::Tree&) {
        target(1).next->next = &target(1);
        target(2).next->next = target(2).next;
    });
}

TEST_F(HostileTreeTest, LogicalUnitsInACircleAreEachListedOnce) {
    expectEachEntryOnce(circleOf("logical units", 1048576), [&](tavik::Tree&) {
        target(1).firstLun->next->next = target(1).firstLun;
        target(2).firstLun->next->next = target(2).firstLun->next;
    });
}

TEST_F(HostileTreeTest, FunctionsInACircleAreEachListedOnce) {
    expectEachEntryOnce(circleOf("protocol functions", 8192), [](tavik::Tree& tree) {
        tree.function(0, 0, 1)->next = tree.function(0, 0, 0);
        tree.function(1, 1, 1)->next = tree.function(1, 1, 1);
    });
}

TEST_F(HostileTreeTest, PortsInACircleAreEachListedOnce) {
    expectEachEntryOnce(circleOf("physical ports", 65536),
                        [](tavik::Tree& tree) { tree.port(1, 1)->next = tree.port(1, 0); });
}

TEST_F(HostileTreeTest, AdaptersInACircleAreEachListedOnce) {
    expectEachEntryOnce(circleOf("adapters", 4096), [](tavik::Tree& tree) { tree.adapter(1)->next = tree.adapter(0); });
}

TEST_F(HostileTreeTest, ABrokenTreeIsToldOnceUntilTheNextRefresh) {
    prepareTree();
    target(1).next->next = &target(1);
    start();
    for (int request = 0; request < 3; ++request)
        EXPECT_EQ(countOf(targetEndpoint), 16U);
    const std::string line = circleOf("targets", 65536);
    EXPECT_EQ(occurrences(logLines(), line), 1U);
    prepareTree();
    target(1).next->next = &target(1);
    services.pass(181);
    EXPECT_EQ(occurrences(logLines(), line), 1U) << "nothing was read anew";
    refreshTo({card("S1", {functionWithTargets(1)})});
    EXPECT_EQ(occurrences(logLines(), line), 1U) << "the new tree is whole";
    target(1).next->next = &target(1);
    EXPECT_EQ(countOf(targetEndpoint), 2U);
    EXPECT_EQ(occurrences(logLines(), line), 2U);
}

TEST_F(HostileTreeTest, SharedPartsAreWalkedUpToTheLimits) {
    std::vector<tavik::Card> cards;
    for (int number = 0; number < 40; ++number)
        cards.push_back(card("S" + std::to_string(number), {storageFunction(1, chips::chip7)}));
    writeFile("meroltcna.properties", "ErrorLog=1\n");
    prepare(std::move(cards));
    // Forty cards with the same forty ports, all of which have the same forty functions.
    tavik::Tree& tree = tavikLibrary.tree();
    for (std::size_t number = 0; number < 40; ++number) {
        tree.port(number, 0)->next = number < 39 ? tree.port(number + 1, 0) : nullptr;
        tree.function(number, 0, 0)->next = number < 39 ? tree.function(number + 1, 0, 0) : nullptr;
        tree.port(number, 0)->protocols = tree.port(0, 0)->protocols;
        tree.adapter(number)->phyPorts = tree.adapter(0)->phyPorts;
    }
    start();
    EXPECT_EQ(countOf("Merolt_FCHBA_FCPortStatistics"), 8192U);
    EXPECT_EQ(occurrences(logLines(), circleOf("protocol functions", 8192)), 1U);
}

TEST_F(HostileTreeTest, WildTargetCountsListTheTargetsThatAreThere) {
    prepareTree();
    record(1).targetCount = 0xFFFFFFFF;
    record(2).targetCount = 0x80000001;
    target(2).next->next = &target(2);
    start();
    EXPECT_EQ(countOf(targetEndpoint), 16U);
    EXPECT_EQ(storage::g_scsiEndpointTargetCount, 16);
    EXPECT_EQ(occurrences(logLines(), wildCount("storage functions", "targets")), 1U);
}

TEST_F(HostileTreeTest, WildUnitCountsListTheUnitsThatAreThere) {
    prepareTree();
    target(1).lunCount = 0xFFFFFFFF;
    start();
    EXPECT_EQ(countOf(extent), 32U);
    EXPECT_EQ(storage::g_storageExtentCount, 32);
    EXPECT_EQ(occurrences(logLines(), wildCount("targets", "logical units")), 1U);
}

TEST_F(HostileTreeTest, APlausibleCountIsTakenAsItIs) {
    prepareTree();
    record(1).targetCount = 4096 + 2;
    start();
    EXPECT_EQ(storage::g_scsiEndpointTargetCount, 4096 + 16);
    record(1).targetCount = 4096 + 3;
    EXPECT_EQ(enumerateInstanceNames(targetEndpoint).objects.size(), 16U);
}

TEST_F(HostileTreeTest, FunctionsThatComeWhileTheListIsFilledGetAPlaceOfTheirOwn) {
    prepareTree();
    start();
    TAVIK_ProtocolEntry added = *tavikLibrary.tree().function(1, 1, 1);
    tavikLibrary.tree().function(1, 1, 1)->next = nullptr;
    // The second card's chain grows while the first card's ports are made.
    tavikLibrary.onGetText = [&](char**, std::uint32_t*) {
        tavikLibrary.tree().function(1, 1, 1)->next = &added;
        return 1U;
    };
    const Answer answer = enumerateInstances(fcPort);
    EXPECT_EQ(answer.objects.size(), 9U);
    EXPECT_EQ(storage::g_fcPortCount, 9);
    tavikLibrary.tree().function(1, 1, 1)->next = nullptr;
}

// What a call hands out.

class HostileAnswerTest : public ClassTest {
protected:
    void SetUp() override { writeFile("meroltcna.properties", "DebugLog=1\nErrorLog=1\n"); }

    const CNAPort& port() { return *g_CNAList->ports; }

    void startWithPort() {
        tavik::NicFunction function = nicFunction(1, 1);
        function.fcoeLinkage.resize(2);
        function.ip = tavik::IPConfiguration{};
        function.ip->firstList.resize(1);
        startWith({card("S1", {function})});
    }
};

TEST_F(HostileAnswerTest, AWildCountOfAddressesWithoutAListAsksForNoMemory) {
    tavikLibrary.afterGetIPProperties = [](TAVIK_IPProperties& ip) {
        ip.firstCount = ip.secondCount = ip.thirdCount = 0xFFFFFFFF;
        ip.firstList = ip.secondList = ip.thirdList = nullptr;
    };
    startWithPort();
    EXPECT_EQ(port().ipProperties.firstList, nullptr);
    EXPECT_EQ(port().ipProperties.firstCount, 0xFFFFFFFF);
    EXPECT_EQ(onlyInstance("Merolt_NIC_IPProtocolEndpoint")["IPv6Address"], "absent");
    EXPECT_EQ(tavikLibrary.outstandingBlocks(), 0U);
}

TEST_F(HostileAnswerTest, AWildCountOfAddressesOrLinkagesIsNotRead) {
    tavikLibrary.afterGetIPProperties = [](TAVIK_IPProperties& ip) { ip.firstCount = 4097; };
    tavikLibrary.afterGetFCoELinkage = [](TAVIK_FCoELinkage*&, std::uint32_t& count) { count = 0xFFFFFFFF; };
    startWithPort();
    EXPECT_EQ(port().ipProperties.firstList, nullptr);
    EXPECT_EQ(port().fcoeLinkage, nullptr);
    EXPECT_EQ(port().fcoeLinkageCount, 0U);
    EXPECT_EQ(tavikLibrary.outstandingBlocks(), 0U);
    EXPECT_TRUE(logHas("Error: TAVIK tells 4294967295 FCoE linkages for one port; none is taken"));
    EXPECT_TRUE(logHas("Error: TAVIK tells 4097 addresses for one port; none is taken"));
}

/// A text that ends where its memory does, without a terminator.
class TextWithoutEnd {
public:
    explicit TextWithoutEnd(const std::string& text) : characters(text.begin(), text.end()) {}
    char* data() { return characters.data(); }
    std::uint32_t length() const { return static_cast<std::uint32_t>(characters.size()); }

private:
    std::vector<char> characters;
};

TEST_F(HostileAnswerTest, TextsWithoutTerminatorEndAtTheirLength) {
    TextWithoutEnd text("V:1.02.03,D:0102");
    tavikLibrary.onGetText = [&](char** out, std::uint32_t* length) {
        *out = text.data();
        *length = text.length();
        return 0U;
    };
    startWith({card("S1", {functionWithVpd(1, {{"SN", "S1"}}, chips::chip15)})});
    EXPECT_EQ(enumerateInstances("Merolt_Adapter_PhysicalPackage").all("Tag"), Lines{inQuotes("V:1.02.03,D:0102")});
    EXPECT_TRUE(logHas("I2C TAVIK_GetMBIVersionString Buffer = V:1.02.03,D:0102"));
}

TEST_F(HostileAnswerTest, AnAlarmsTextWithoutEndIsReadSoFarAndNoFurther) {
    startWith({card("S1", {storageFunction(1, chips::chip7)})});
    TextWithoutEnd text(std::string(2047, 'x'));
    testing::internal::CaptureStdout();
    tavikLibrary.raiseAlarm(1, 0, 0, text.data());
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Alarm generated: Device Number: 1; coreAlarmType: 0, stringParameter: " + std::string(2047, 'x') + "\n");
}

TEST_F(HostileAnswerTest, TextFieldsWithoutTerminatorAreShownToTheirEnd) {
    prepare({card("S1", {functionWithVpd(1, {{"SN", "S1"}}, chips::chip15)})});
    TAVIK_DeviceRecord& device = record(1);
    std::memset(device.modelName, 'M', sizeof(device.modelName));
    std::memset(device.driverVersion, 'D', sizeof(device.driverVersion));
    std::memset(device.optionRomBiosVersion, 'B', sizeof(device.optionRomBiosVersion));
    TAVIK_AdapterEntry& adapter = *tavikLibrary.tree().adapter(0);
    std::memset(adapter.serialNumber, 'S', sizeof(adapter.serialNumber));
    std::memset(adapter.version, 'V', sizeof(adapter.version));
    std::memset(adapter.modelName, 'N', sizeof(adapter.modelName));
    start();
    EXPECT_EQ(onlyInstance(fcPort)["Model"], inQuotes(std::string(32, 'M')));
    const TestObject product = onlyInstance("Merolt_Adapter_Product");
    EXPECT_EQ(product["IdentifyingNumber"], inQuotes(std::string(32, 'S')));
    EXPECT_EQ(product["Version"], inQuotes(std::string(32, 'V')));
    EXPECT_EQ(product["Name"], inQuotes(std::string(127, 'N')));
}

TEST_F(HostileAnswerTest, AKeyWithANewlineMakesNoLineOfItsOwn) {
    startWith({card("S1", {storageFunction(1, chips::chip7)})});
    getInstance(fcPort, {{"DeviceID", "x\nSun Nov 22 00:00:00 2026 forged"}});
    EXPECT_TRUE(logHas("getInstance_FCPort: Error no matching instance found, KeyValue=x\\nSun Nov 22 00:00:00 2026 "
                       "forged!"));
    for (const std::string& line : logLines())
        EXPECT_NE(line, "forged");
}

// The length of a chain by itself.

struct Link {
    Link* next = nullptr;
};

/// A chain of that many links whose last one leads back to the one at `back`; to none if there is no such.
ChainLength lengthOf(std::size_t links, std::size_t back, std::uint32_t limit) {
    std::vector<Link> chain(links);
    for (std::size_t link = 0; link + 1 < links; ++link)
        chain[link].next = &chain[link + 1];
    if (back < links) chain[links - 1].next = &chain[back];
    return lengthOfChain<Link>(links > 0 ? chain.data() : nullptr, limit);
}

TEST(ChainLengthTest, OfAnOpenChainIsItsLinksUpToOneMoreThanTheLimit) {
    for (std::size_t links = 0; links < 70; ++links) {
        const ChainLength length = lengthOf(links, links, 64);
        EXPECT_EQ(length.entries, std::min<std::size_t>(links, 65)) << links;
        EXPECT_FALSE(length.circles);
    }
}

TEST(ChainLengthTest, OfAChainThatComesBackIsItsDifferentLinks) {
    for (std::size_t links = 1; links < 40; ++links) {
        for (std::size_t back = 0; back < links; ++back) {
            const ChainLength length = lengthOf(links, back, 1000);
            EXPECT_EQ(length.entries, links) << links << " links, back to " << back;
            EXPECT_TRUE(length.circles);
        }
    }
}

TEST(ChainLengthTest, OfACircleBeyondTheLimitIsMoreThanTheLimit) {
    EXPECT_GT(lengthOf(1000, 500, 64).entries, 64U);
    EXPECT_EQ(lengthOf(1, 1, 0).entries, 1U);
}

// A walk along a chain by itself.

struct CountedLink;

/// Counts how often the chain is followed here.
struct CountedPointer {
    CountedLink* target = nullptr;
    mutable int reads = 0;
    operator CountedLink*() const { // NOLINT(google-explicit-constructor): stands for a plain pointer
        ++reads;
        return target;
    }
};

struct CountedLink {
    CountedPointer next;
    int visits = 0;
};

/// Links whose order in the chain is that of the places, the last of which leads back to the one at `back`.
class CountedChain {
public:
    CountedChain(const std::vector<std::size_t>& places, std::size_t back) : links(places.size()) {
        for (std::size_t link = 0; link + 1 < places.size(); ++link)
            links[places[link]].next.target = &links[places[link + 1]];
        if (back < places.size()) links[places.back()].next.target = &links[places[back]];
        first = &links[places.front()];
    }

    void walk(ChainAllowance& allowance) {
        for (CountedLink& link : Chain<CountedLink>(first, allowance))
            ++link.visits;
    }

    bool all(const std::function<bool(const CountedLink&)>& isSo) const {
        return std::all_of(links.begin(), links.end(), isSo);
    }

private:
    std::vector<CountedLink> links;
    CountedLink* first;
};

bool isVisitedOnce(const CountedLink& link) { return link.visits == 1; }

TEST(ChainTest, WithRisingOrFallingAddressesIsFollowedOnce) {
    for (const std::vector<std::size_t>& places :
         {std::vector<std::size_t>{0, 1, 2, 3, 4, 5}, {5, 4, 3, 2, 1, 0}, {0}, {2, 3, 1, 4, 0, 5}}) {
        ChainAllowance allowance(ChainKind::functions);
        CountedChain chain(places, places.size());
        chain.walk(allowance);
        EXPECT_TRUE(chain.all(isVisitedOnce));
        EXPECT_TRUE(chain.all([](const CountedLink& link) { return link.next.reads == 1; }));
        EXPECT_EQ(allowance.left, mostEntries(ChainKind::functions) - places.size());
    }
}

TEST(ChainTest, InAnyOrderAndWithAnyCircleIsVisitedOnce) {
    std::vector<std::size_t> places = {0, 1, 2, 3, 4, 5};
    do {
        for (std::size_t back = 0; back <= places.size(); ++back) {
            ChainAllowance allowance(ChainKind::functions);
            CountedChain chain(places, back);
            chain.walk(allowance);
            ASSERT_TRUE(chain.all(isVisitedOnce)) << "back to " << back;
            ASSERT_EQ(allowance.left, mostEntries(ChainKind::functions) - places.size());
        }
    } while (std::next_permutation(places.begin(), places.end()));
}

TEST(ChainTest, EndsWhereTheAllowanceDoes) {
    for (const std::size_t back : {std::size_t{0}, std::size_t{3}, std::size_t{6}}) {
        ChainAllowance allowance(ChainKind::functions);
        allowance.left = 3;
        CountedChain chain({4, 0, 5, 1, 3, 2}, back);
        chain.walk(allowance);
        EXPECT_EQ(allowance.left, 0U);
        chain.walk(allowance);
        EXPECT_TRUE(chain.all([](const CountedLink& link) { return link.visits <= 1; }));
    }
}

} // namespace
