// What a client sees of Merolt_Adapter_PhysicalPort: each jack, whatever functions run over it.
#include "class_support.h"

#include "classes/physical/physical_port.h"
#include "inventory/cna_list.h"

#include <cstring>

using namespace adapters;
using namespace merolt;

namespace {

using Lines = std::vector<std::string>;

constexpr const char* physicalPort = "Merolt_Adapter_PhysicalPort";

/// A card with ports of these numbers and no functions on them.
tavik::Card cardWithPorts(const std::string& serialNumber, std::initializer_list<std::uint8_t> numbers) {
    tavik::Card made = card(serialNumber, {});
    for (const std::uint8_t number : numbers) {
        tavik::Port port;
        port.number = number;
        made.ports->push_back(port);
    }
    return made;
}

class PhysicalPortTest : public ClassTest {
protected:
    Lines tags() { return valuesOf(physicalPort, "Tag"); }

    /// What the Ethernet associations find of a port; the path and the instance tell the same.
    std::string joinedTag(CNAPort* port) {
        const ServerScope scope(*broker);
        const std::string tag =
            tagOf(physical::makePath_Nic_PhysicalPort(physicalPort, implementationNamespace, g_CNAList, port));
        EXPECT_EQ(tagOf(physical::makeInstance_Nic_PhysicalPort(physicalPort, implementationNamespace, nullptr,
                                                                g_CNAList, port)),
                  tag);
        return tag;
    }
};

TEST_F(PhysicalPortTest, InstanceHasEveryPropertyInTheOrderOfTheClass) {
    startWith({cardWithPorts("S1", {255})});
    EXPECT_EQ(asSet(physicalPort), R"(
CreationClassName: string "Merolt_Adapter_PhysicalPort"
Tag: string "S1_255"
Name: string "Merolt_Adapter_PhysicalPort"
ElementName: string "Physical Port"
ConnectorLayout: uint16 1
ConnectorDescription: string "Physical Port"
Manufacturer: string "Merolt Corporation"
SerialNumber: string "S1"
PortNumber: uint16 255
)");
    EXPECT_EQ(pathAsSet(physicalPort), R"(
CreationClassName: string "Merolt_Adapter_PhysicalPort"
Tag: string "S1_255"
)");
}

TEST_F(PhysicalPortTest, TagsEndInThePortNumbersOfTheTree) {
    startWith({cardWithPorts("S1", {7, 3}), cardWithPorts("S2", {0, 1})});
    EXPECT_EQ(tags(), allInQuotes({"S1_7", "S1_3", "S2_0", "S2_1"}));
}

TEST_F(PhysicalPortTest, PortIsThereWithoutAListOfFunctionsAndEndsNoChain) {
    tavik::Card withHole = card("S1", {storageFunction(1, chips::chip7), storageFunction(2, chips::chip7)});
    withHole.ports->at(0).functions = std::nullopt;
    tavik::Card withoutPorts = card("S2", {});
    withoutPorts.ports = std::nullopt;
    startWith({withHole, withoutPorts, cardWithPorts("S3", {0})});
    EXPECT_EQ(tags(), allInQuotes({"S1_0", "S1_1", "S3_0"}));
}

TEST_F(PhysicalPortTest, PortsOfOneSerialNumberAndPortNumberAreOne) {
    startWith({cardWithPorts("S1", {1, 1, 2}), cardWithPorts("S1", {2, 3}), cardWithPorts("s1", {1})});
    EXPECT_EQ(tags(), allInQuotes({"S1_1", "S1_2", "S1_3", "s1_1"}));
    EXPECT_EQ(getInstance(physicalPort, {{"Tag", "s1_1"}}).all("SerialNumber"), allInQuotes({"S1"}));
}

TEST_F(PhysicalPortTest, OemSerialNumberStaysWholeUnderItsMakersName) {
    startWith({cardWithPorts("11S1234567ABCDEFGHIJKL", {0}), cardWithPorts("11S1234567ABCDEFGHIJK", {0}),
               cardWithPorts("ZKM4101", {0})});
    EXPECT_EQ(valuesOf(physicalPort, "Manufacturer"), allInQuotes({"IBM", "Merolt Corporation", "Merolt Corporation"}));
    EXPECT_EQ(valuesOf(physicalPort, "SerialNumber"),
              allInQuotes({"11S1234567ABCDEFGHIJKL", "11S1234567ABCDEFGHIJK", "ZKM4101"}));
}

TEST_F(PhysicalPortTest, ModelOfTheOemTableChangesNothing) {
    tavik::Card made = cardWithPorts("S1", {0});
    made.modelName = "ZKM4101";
    startWith({made});
    EXPECT_EQ(onlyInstance(physicalPort)["Manufacturer"], inQuotes("Merolt Corporation"));
}

TEST_F(PhysicalPortTest, InstanceTrimsTheSerialNumberOfTheRecordAndLeavesTheTag) {
    startWith({cardWithPorts("\t11S1234567ABCDEFGHIJKL ", {0})});
    enumerateInstanceNames(physicalPort);
    EXPECT_STREQ(physical::g_physicalPortList[0].serialNumber.text(), "\t11S1234567ABCDEFGHIJKL ");
    for (int request = 0; request < 2; ++request) {
        const TestObject shown = onlyInstance(physicalPort);
        EXPECT_EQ(shown["SerialNumber"], inQuotes("11S1234567ABCDEFGHIJKL"));
        EXPECT_EQ(shown["Manufacturer"], inQuotes("IBM"));
        EXPECT_EQ(shown["Tag"], inQuotes("\t11S1234567ABCDEFGHIJKL _0"));
    }
    EXPECT_STREQ(physical::g_physicalPortList[0].serialNumber.text(), "11S1234567ABCDEFGHIJKL");
}

TEST_F(PhysicalPortTest, SerialNumberThatFillsItsFieldIsShownWhole) {
    prepare({cardWithPorts("S1", {0})});
    std::memset(tavikLibrary.tree().adapter(0)->serialNumber, 'S', 32);
    start();
    EXPECT_EQ(tags(), allInQuotes({std::string(32, 'S') + "_0"}));
    EXPECT_EQ(onlyInstance(physicalPort)["SerialNumber"], inQuotes(std::string(32, 'S')));
}

TEST_F(PhysicalPortTest, EachPortLogsItsStepsUnderTheNextPlace) {
    switchLogsOn();
    startWith({cardWithPorts("S1", {1, 1, 2})});
    EXPECT_EQ(linesBetween(logLines(), "Entering createPhysicalPort, index = 0",
                           "FCPort & PortController classes initialized..."),
              (Lines{"Entering createPhysicalPort, index = 0", "Exiting  createPhysicalPort", "",
                     "Entering createPhysicalPort, index = 1",
                     "Exiting  createPhysicalPort: Current device has the same the serial number as a device in the "
                     "list at index=0. Skip!",
                     "", "Entering createPhysicalPort, index = 1", "Exiting  createPhysicalPort", "",
                     "Merolt_CNA_Provider::time taken to initialize devices: 0 seconds.",
                     "FCPort & PortController classes initialized..."}));
}

// Tags and their parts.

struct TagRow {
    const char* tag;
    bool isTag;
    const char* adapterSerial;
    std::uint32_t portNumber;
};

void PrintTo(const TagRow& row, std::ostream* stream) { *stream << '"' << row.tag << '"'; }

class PortTagTest : public PhysicalPortTest, public testing::WithParamInterface<TagRow> {};

TEST_P(PortTagTest, IsCutAtEachUnderscore) {
    char adapterSerial[256] = "before";
    std::uint32_t portNumber = 77;
    EXPECT_EQ(physical::parsePhysicalPortTag(GetParam().tag, adapterSerial, &portNumber), GetParam().isTag);
    EXPECT_STREQ(adapterSerial, GetParam().adapterSerial);
    EXPECT_EQ(portNumber, GetParam().portNumber);
}

INSTANTIATE_TEST_SUITE_P(Tags, PortTagTest,
                         testing::Values(TagRow{"S1_7", true, "S1", 7}, TagRow{"S1_7_8", true, "S1", 7},
                                         TagRow{"S_1_7", true, "S", 1}, TagRow{"S1_", true, "S1", 0},
                                         TagRow{"_1", true, "", 1}, TagRow{"_", true, "", 0},
                                         TagRow{"S1_ 12x", true, "S1", 12}, TagRow{"S1_-1", true, "S1", 0xFFFFFFFF},
                                         TagRow{"S1", false, "before", 77}, TagRow{"", false, "before", 77}));

TEST_F(PhysicalPortTest, SerialNumberWithAnUnderscoreCannotBeSplitBack) {
    startWith({cardWithPorts("S_1", {7})});
    EXPECT_EQ(tags(), allInQuotes({"S_1_7"}));
    char adapterSerial[256];
    std::uint32_t portNumber = 0;
    EXPECT_TRUE(physical::parsePhysicalPortTag("S_1_7", adapterSerial, &portNumber));
    EXPECT_STREQ(adapterSerial, "S");
    EXPECT_EQ(portNumber, 1U);
}

TEST_F(PhysicalPortTest, OverlongTagsAreCut) {
    char adapterSerial[256] = "before";
    std::uint32_t portNumber = 77;
    EXPECT_TRUE(physical::parsePhysicalPortTag((std::string(253, 's') + "_123").c_str(), adapterSerial, &portNumber));
    EXPECT_EQ(adapterSerial, std::string(253, 's'));
    EXPECT_EQ(portNumber, 1U);
    EXPECT_FALSE(physical::parsePhysicalPortTag((std::string(255, 's') + "_1").c_str(), adapterSerial, &portNumber));
    char tag[128];
    physical::formatPhysicalPortTag(tag, std::string(200, 's').c_str(), 1);
    EXPECT_EQ(tag, std::string(127, 's'));
    physical::formatPhysicalPortTag(tag, "S1", -1);
    EXPECT_STREQ(tag, "S1_-1");
}

// How the Ethernet side finds a port's jack.

TEST_F(PhysicalPortTest, EthernetPortIsJoinedByItsPlaceInTheTree) {
    startWith({card("S1", {storageFunction(1, chips::chip7), nicFunction(1, 1)}), card("S2", {nicFunction(2, 2)})});
    CNAPort* port = g_CNAList->ports;
    char tag[128] = "before";
    EXPECT_TRUE(physical::calcTag_Nic_PhysicalPort(nullptr, port, tag));
    EXPECT_STREQ(tag, "S1_1");
    EXPECT_EQ(joinedTag(port), "S1_1");
    EXPECT_EQ(joinedTag(g_CNAList->next->ports), "S2_0");
    port->portProperties.macAddress[5] = 0xEE;
    EXPECT_FALSE(physical::calcTag_Nic_PhysicalPort(nullptr, port, tag));
    EXPECT_STREQ(tag, "");
    EXPECT_EQ(joinedTag(port), "nothing");
}

TEST_F(PhysicalPortTest, EthernetPortWhoseAdapterIsUnknownToTheListFindsNothing) {
    startWith({card("S1", {nicFunction(1, 1)})});
    // Serial numbers are compared in their letter case.
    std::strcpy(tavikLibrary.tree().adapter(0)->serialNumber, "s1");
    EXPECT_EQ(joinedTag(g_CNAList->ports), "nothing");
}

TEST_F(PhysicalPortTest, JoinIsLogged) {
    switchLogsOn();
    startWith({card("S1", {nicFunction(1, 1)})});
    takeLogLines();
    joinedTag(g_CNAList->ports);
    char tag[128];
    physical::calcTag_Nic_PhysicalPort(nullptr, g_CNAList->ports, tag);
    EXPECT_EQ(takeLogLines(), (Lines{"Merolt_NIC_PhysicalPort makePath_PhysicalPort was called", "",
                                     "Merolt_NIC_PhysicalPort makeInstance_PhysicalPort was called", "",
                                     "Merolt_NIC_PhysicalPort makeInstance_PhysicalPort was called", ""}));
}

} // namespace
