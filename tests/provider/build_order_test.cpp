// The order in which the lists are built and cleared, and what a client sees of it: values that one list leaves for the
// next, and an Ethernet side that comes first at start and last in a refresh.
#include "class_support.h"

#include "classes/physical/physical_connector.h"
#include "classes/physical/physical_package.h"
#include "classes/physical/physical_port.h"
#include "classes/physical/product.h"
#include "classes/storage/fc_port.h"
#include "classes/storage/fc_port_statistics.h"
#include "classes/storage/logical_port_group.h"
#include "classes/storage/port_controller.h"
#include "classes/storage/scsi_protocol_controller.h"
#include "classes/storage/scsi_protocol_endpoint_hba.h"
#include "classes/storage/scsi_protocol_endpoint_target.h"
#include "classes/storage/storage_extent.h"
#include "inventory/cna_list.h"
#include "software/software_identity.h"

using namespace adapters;
using namespace merolt;

namespace {

using Lines = std::vector<std::string>;

constexpr const char* package = "Merolt_Adapter_PhysicalPackage";
constexpr const char* connector = "Merolt_Adapter_PhysicalConnector";
constexpr const char* ethernetPort = "Merolt_NIC_EthernetPort2";

class BuildOrderTest : public ClassTest {
protected:
    Lines tags() { return valuesOf(package, "Tag"); }
};

/// A card of which every list has something.
tavik::Card fullCard() {
    tavik::Target target;
    target.portName = worldWideName(0xAA);
    target.luns.resize(1);
    tavik::StorageFunction function = functionWithVpd(1, {{"SN", "S1"}});
    function.transceiver = transceiver("SFP1");
    function.targets.push_back(target);
    function.multiBootVersion = "V:2.01.37,D:09142012,A:Y,T:M";
    return card("S1", {function, nicFunction(1, 1)});
}

constexpr const char* buildLines[] = {
    "Entering createFCPortStatistics, index = 0",
    "Entering createLogicalPortGroup, index = 0",
    "buildPhysicalPackageList(): Processing an adapter entry.",
    "Entering createProduct, index = 0",
    "Entering buildRegisteredProfileList",
    "Entering buildRegisteredSubProfileList",
    "Entering createSoftwareIdentity, current_index= 0",
    "Entering createPhysicalConnector, index = 0",
    "Entering createPhysicalPort, index = 0",
    "Entering createStorageExtent, index = 0",
    "Entering createFCPort, index = 0",
    "Entering createPortController, index = 0",
};

/// The lines of a log that tell where a list begins, in their order.
Lines milestones(const Lines& lines) {
    Lines wanted(std::begin(buildLines), std::end(buildLines));
    wanted.insert(wanted.end(), {"Entering Clear_CNA_List()", "Entering Clear_RegisteredProfile_List()",
                                 "Entered Initialize_CNA_List()"});
    Lines found;
    for (const std::string& line : lines) {
        if (std::find(wanted.begin(), wanted.end(), line) != wanted.end()) found.push_back(line);
    }
    return found;
}

TEST_F(BuildOrderTest, AtStartTheEthernetSideComesFirst) {
    switchLogsOn();
    startWith({fullCard()});
    Lines expected = {"Entered Initialize_CNA_List()"};
    expected.insert(expected.end(), std::begin(buildLines), std::end(buildLines));
    EXPECT_EQ(milestones(logLines()), expected);
}

TEST_F(BuildOrderTest, InARefreshItIsClearedFirstAndComesLast) {
    switchLogsOn();
    startWith({fullCard()});
    takeLogLines();
    refreshTo({fullCard()});
    Lines expected = {"Entering Clear_CNA_List()", "Entering Clear_RegisteredProfile_List()"};
    expected.insert(expected.end(), std::begin(buildLines), std::end(buildLines));
    expected.emplace_back("Entered Initialize_CNA_List()");
    EXPECT_EQ(milestones(takeLogLines()), expected);
}

// A UUID stays until another card brings one, and the groups have read every card before the first package is made.

TEST_F(BuildOrderTest, FirstCardWithoutUuidShowsThatOfTheLastCardAndLaterOnesThatOfTheCardBefore) {
    startWith({card("S1", {functionWithVpd(1, {{"SN", "A1"}})}),
               card("S2", {functionWithVpd(2, {{"SN", "A2"}, {"YU", "uuid-2"}})}),
               card("S3", {functionWithVpd(3, {{"SN", "A3"}})}),
               card("S4", {functionWithVpd(4, {{"SN", "A4"}, {"YU", "uuid-4"}})}),
               card("S5", {functionWithVpd(5, {{"SN", "A5"}})})});
    EXPECT_EQ(tags(), allInQuotes({"uuid-4", "uuid-2", "uuid-2", "uuid-4", "uuid-4"}));
    EXPECT_EQ(valuesOf(package, "SerialNumber"), allInQuotes({"A1", "A2", "A3", "A4", "A5"}));
    // Several cards share a key: it finds the first of them.
    EXPECT_EQ(getInstance(package, {{"Tag", "uuid-4"}}).all("SerialNumber"), allInQuotes({"A1"}));
}

TEST_F(BuildOrderTest, CardsThatHaveNoVitalProductDataShowAForeignUuidToo) {
    tavik::StorageFunction broken = functionWithVpd(2, {{"SN", "A2"}, {"YU", "own"}});
    broken.failures.vpd = 1;
    startWith({card("A00007", {storageFunction(1, chips::chip7)}), card("S2", {broken}),
               card("S3", {functionWithVpd(3, {{"SN", "A3"}, {"YU", "uuid-3"}})})});
    EXPECT_EQ(tags(), allInQuotes({"uuid-3", "uuid-3", "uuid-3"}));
    EXPECT_EQ(valuesOf(package, "SerialNumber"), allInQuotes({"A00007", "S2", "A3"}));
}

TEST_F(BuildOrderTest, EmptyUuidTakesTheForeignOneAway) {
    startWith({card("S1", {functionWithVpd(1, {{"SN", "A1"}})}),
               card("S2", {functionWithVpd(2, {{"SN", "A2"}, {"YU", "uuid-2"}})}),
               card("S3", {functionWithVpd(3, {{"SN", "A3"}, {"YU", ""}})}),
               card("S4", {functionWithVpd(4, {{"SN", "A4"}})})});
    EXPECT_EQ(tags(), allInQuotes({"A1", "uuid-2", "A3", "A4"}));
}

TEST_F(BuildOrderTest, UuidOfItsOwnCallBelongsToItsCardAlone) {
    tavik::StorageFunction second = functionWithVpd(2, {{"SN", "A2"}});
    second.uuid = "i-2-c";
    startWith({card("S1", {functionWithVpd(1, {{"SN", "A1"}})}), card("S2", {second}),
               card("S3", {functionWithVpd(3, {{"SN", "A3"}})})});
    EXPECT_EQ(tags(), allInQuotes({"A1", "i-2-c", "A3"}));
}

TEST_F(BuildOrderTest, UuidOfASecondFunctionCountsForTheCardsBehindIt) {
    // The package is made from the first function; only the groups read the second one.
    startWith({card("A1", {functionWithVpd(1, {{"SN", "A1"}, {"YU", "first"}}),
                           functionWithVpd(2, {{"SN", "A1"}, {"YU", "second"}})}),
               card("A2", {functionWithVpd(3, {{"SN", "A2"}})})});
    EXPECT_EQ(tags(), allInQuotes({"first", "first"}));
    refreshTo({card("A2", {functionWithVpd(3, {{"SN", "A2"}})}),
               card("A1", {functionWithVpd(1, {{"SN", "A1"}, {"YU", "first"}}),
                           functionWithVpd(2, {{"SN", "A1"}, {"YU", "second"}})})});
    EXPECT_EQ(tags(), allInQuotes({"second", "first"}));
}

TEST_F(BuildOrderTest, UuidOfARemovedCardLivesOn) {
    const tavik::Card with = card("S1", {functionWithVpd(1, {{"SN", "A1"}, {"YU", "uuid-1"}})});
    const tavik::Card without = card("S2", {functionWithVpd(2, {{"SN", "A2"}})});
    startWith({with, without});
    refreshTo({without});
    EXPECT_EQ(tags(), allInQuotes({"uuid-1"}));
    enumerateInstances("Merolt_FCHBA_FCPort");
    refreshTo({without});
    EXPECT_EQ(tags(), allInQuotes({"uuid-1"})) << "not even a request on the ports forgets it";
}

TEST_F(BuildOrderTest, RequestOnThePortsReadsAUuidThatTheNextBuildShows) {
    startWith({card("S1", {functionWithVpd(1, {{"SN", "A1"}})})});
    EXPECT_EQ(tags(), allInQuotes({"A1"}));
    tavikLibrary.storage(1).vpd = tavik::encodeVpd("Adapter", {{"SN", "A1"}, {"YU", "late"}});
    enumerateInstances("Merolt_FCHBA_FCPort");
    EXPECT_EQ(tags(), allInQuotes({"A1"})) << "packages are built by a refresh only";
    refreshTo({card("S1", {functionWithVpd(1, {{"SN", "A1"}})})});
    EXPECT_EQ(tags(), allInQuotes({"late"}));
}

// The physical lists ask the Ethernet side, which is empty while a refresh builds them.

TEST_F(BuildOrderTest, AfterARefreshPhysicalListsLackWhatTheEthernetSideGaveThem) {
    tavik::NicFunction withModule = nicFunction(1, 1);
    withModule.transceiver = transceiver("SFP1");
    tavik::StorageFunction storage = functionWithVpd(1, {{"SN", "S2"}});
    storage.transceiver = transceiver("SFP2");
    const std::vector<tavik::Card> cards = {card("S1", {withModule}), card("S2", {storage})};
    startWith(cards);
    EXPECT_EQ(tags(), allInQuotes({"S1", "S2"}));
    EXPECT_EQ(valuesOf(connector, "Tag"), allInQuotes({"SFP1_S1_0", "SFP2_S2_0"}));
    for (int refresh = 0; refresh < 2; ++refresh) {
        refreshTo(cards);
        EXPECT_EQ(tags(), allInQuotes({"S2"}));
        EXPECT_EQ(valuesOf(connector, "Tag"), allInQuotes({"SFP2_S2_0"}));
        EXPECT_EQ(countOf(ethernetPort), 1U);
        EXPECT_EQ(countOf("Merolt_Adapter_PhysicalPort"), 2U);
        EXPECT_EQ(countOf("Merolt_Adapter_Product"), 2U);
        // The card and its port are there, and find nothing any more.
        const ServerScope scope(*broker);
        EXPECT_EQ(tagOf(physical::makePath_Nic_PhysicalPackage(package, implementationNamespace, g_CNAList)),
                  "nothing");
        EXPECT_EQ(tagOf(physical::makePath_Nic_PhysicalConnector(connector, implementationNamespace, g_CNAList,
                                                                 g_CNAList->ports)),
                  "nothing");
    }
    stop();
    startWith(cards);
    EXPECT_EQ(tags(), allInQuotes({"S1", "S2"})) << "loading the provider again brings them back";
}

TEST_F(BuildOrderTest, CardWhoseEthernetFunctionComesFirstShowsItsStorageFunctionAfterARefresh) {
    tavik::NicFunction nic = nicFunction(1, 1);
    nic.card.modelName = "ethernet";
    nic.card.defaultFruNumber = "ethernet FRU";
    nic.vpdItems = {{"YU", "ethernet-uuid"}};
    tavik::StorageFunction storage = functionWithVpd(1, {{"SN", "S1"}, {"FN", "storage FRU"}, {"YU", "storage-uuid"}});
    storage.modelName = "storage";
    tavik::Card made = card("S1", {nic, storage});
    made.kind = 4;
    startWith({made});
    const auto shown = [&] {
        const TestObject object = onlyInstance(package);
        return Lines{object["Tag"], object["SKU"], object["Model"], object["AdapterType"], object["Name"]};
    };
    const std::string name = inQuotes("Merolt CNA Adapter S1");
    EXPECT_EQ(shown(),
              (Lines{inQuotes("ethernet-uuid"), inQuotes("ethernet FRU"), inQuotes("ethernet"), "uint32 0", name}));
    refreshTo({made});
    EXPECT_EQ(shown(),
              (Lines{inQuotes("storage-uuid"), inQuotes("storage FRU"), inQuotes("storage"), "uint32 3", name}));
}

// Every list follows the tree, and none outlives the provider.

Lines countsOfAll() {
    const std::pair<const char*, int> counts[] = {
        {"FCPort", storage::g_fcPortCount},
        {"PortController", storage::g_portControllerCount},
        {"FCPortStatistics", storage::g_fcPortStatisticsCount},
        {"LogicalPortGroup", storage::g_logicalPortGroupCount},
        {"PhysicalConnector", physical::g_physicalConnectorCount},
        {"PhysicalPackage", physical::g_physicalPackageCount},
        {"Product", physical::g_productCount},
        {"SCSIProtocolController", storage::g_scsiProtocolControllerCount},
        {"SCSIProtocolEndpointHBA", storage::g_scsiEndpointHBACount},
        {"SCSIProtocolEndpointTarget", storage::g_scsiEndpointTargetCount},
        {"StorageExtent", storage::g_storageExtentCount},
        {"PhysicalPort", physical::g_physicalPortCount},
    };
    Lines lines;
    for (const auto& [name, count] : counts)
        lines.push_back(std::string(name) + ' ' + std::to_string(count));
    return lines;
}

TEST_F(BuildOrderTest, EveryListShrinksAndGrowsWithTheTreeAndEndsWithTheProvider) {
    const Lines one = {"FCPort 1",
                       "PortController 1",
                       "FCPortStatistics 1",
                       "LogicalPortGroup 1",
                       "PhysicalConnector 1",
                       "PhysicalPackage 1",
                       "Product 1",
                       "SCSIProtocolController 1",
                       "SCSIProtocolEndpointHBA 1",
                       "SCSIProtocolEndpointTarget 1",
                       "StorageExtent 1",
                       "PhysicalPort 2"};
    Lines none = one;
    for (std::string& line : none)
        line.back() = '0';
    startWith({fullCard()});
    EXPECT_EQ(countsOfAll(), one);
    refreshTo({});
    EXPECT_EQ(countsOfAll(), none);
    refreshTo({fullCard()});
    EXPECT_EQ(countsOfAll(), one);
    stop();
    EXPECT_EQ(countsOfAll(), none);
    EXPECT_EQ(storage::g_fcPortList, nullptr);
    EXPECT_EQ(storage::g_scsiEndpointTargetList, nullptr);
    EXPECT_EQ(physical::g_physicalPackageList, nullptr);
    EXPECT_EQ(physical::g_physicalConnectorList, nullptr);
}

TEST_F(BuildOrderTest, CardThatFailsEveryCallHasItsInstancesInEveryListThatNeedsNone) {
    tavik::StorageFunction broken = functionWithVpd(1, {{"SN", "VPD"}}, chips::chip15);
    broken.uuid = "u";
    broken.transceiver = transceiver("SFP1");
    broken.multiBootVersion = "V:2.01.37,D:09142012,A:Y,T:M";
    broken.failures = {1, 1, 1, 1, 1, 1, 1};
    tavik::NicFunction brokenNic = nicFunction(1, 1);
    brokenNic.transceiver = transceiver("SFP2");
    brokenNic.failures = {1, 1, 1, 1, 1};
    tavik::Card made = card("S1", {broken, brokenNic});
    for (int build = 0; build < 2; ++build) {
        build == 0 ? startWith({made}) : refreshTo({made});
        EXPECT_EQ(countsOfAll(), (Lines{"FCPort 1", "PortController 1", "FCPortStatistics 1", "LogicalPortGroup 1",
                                        "PhysicalConnector 0", build == 0 ? "PhysicalPackage 2" : "PhysicalPackage 1",
                                        "Product 1", "SCSIProtocolController 1", "SCSIProtocolEndpointHBA 1",
                                        "SCSIProtocolEndpointTarget 0", "StorageExtent 0", "PhysicalPort 2"}));
    }
    for (const char* className : {"Merolt_FCHBA_FCPort", "Merolt_FCHBA_PortController", "Merolt_FCHBA_FCPortStatistics",
                                  "Merolt_FCHBA_LogicalPortGroup", package, "Merolt_FCHBA_SCSIProtocolController"})
        EXPECT_EQ(countOf(className), 1U) << className;
    EXPECT_EQ(tavikLibrary.outstandingBlocks(), 0U);
}

} // namespace
