// What a client sees of the two classes of Ethernet ports, Merolt_NIC_EthernetPort2 and Merolt_NIC_NetworkPort.
#include "adapters.h"
#include "provider_host.h"

#include "classes/ethernet/network_port.h"

#include <cctype>

using namespace adapters;

namespace {

using Names = std::vector<std::string>;

constexpr const char* ethernetPort = "Merolt_NIC_EthernetPort2";
constexpr const char* networkPort = "Merolt_NIC_NetworkPort";
constexpr const char* bothClasses[] = {ethernetPort, networkPort};

std::string inQuotes(const std::string& text) { return "string \"" + text + '"'; }

tavik::NicFunction portWithLinkage() {
    tavik::NicFunction nic = nicFunction(7, 1);
    nic.macAddress = {0x00, 0x1B, 0x32, 0xAB, 0xCD, 0xEF};
    nic.link = {10000, tavik::LinkUp};
    nic.mtu = 9000;
    nic.fcoeLinkage = {{{0x10, 0, 0, 0, 0xC9, 0xAA, 0xBB, 0x01}, {0x01, 0x0A, 0xFF}, {0x0E, 0xFC, 0, 1, 0x0A, 0xFF}},
                       {{0x20, 2, 2, 2, 2, 2, 2, 2}, {2, 2, 2}, {2, 2, 2, 2, 2, 2}}};
    return nic;
}

class EthernetPortsTest : public ProviderTest {
protected:
    void startWith(std::vector<tavik::Function> functions, const std::string& serialNumber = "SN-a1") {
        tavikLibrary.setFleet(fleet({card(serialNumber, std::move(functions))}));
        start();
    }

    /// The one instance as text. A namespace without the class keeps the properties in the order of their setting.
    std::string instanceInOrder(const std::string& className, const std::optional<Names>& properties = std::nullopt) {
        const Answer answer = enumerateInstances(className, properties, "root/elsewhere");
        EXPECT_EQ(answer.objects.size(), 1U);
        return answer.objects.empty() ? "" : '\n' + answer.objects[0].table();
    }
};

// Whole instances and paths.

TEST_F(EthernetPortsTest, EthernetPortHasEveryPropertyWithItsTypeInTheOrderOfTheClass) {
    startWith({portWithLinkage()});
    EXPECT_EQ(instanceInOrder(ethernetPort), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_NIC_EthernetPort2"
DeviceID: string "001B32ABCDEF"
LinkTechnology: uint16 2
PermanentAddress: string "001B32ABCDEF"
PortNumber: uint16 1
PortType: uint16 105
OperationalStatus: uint16[] {2}
StatusDescriptions: string[] {"Link Up"}
Caption: string "001B32ABCDEF"
Description: string "Merolt CNA Ethernet Port"
ElementName: string "001B32ABCDEF"
Name: string "001B32ABCDEF"
MaxSpeed: uint64 10625000000
ActiveMaximumTransmissionUnit: uint64 9000
Speed: uint64 10625000000
FC_WWN: string "10-00-00-00-C9-AA-BB-01"
FC_PortID: string "01-0A-FF"
FC_ENodeMACAddress: string "0EFC00010AFF"
)");
}

TEST_F(EthernetPortsTest, NetworkPortHasEveryPropertyWithItsTypeInTheOrderOfTheClass) {
    startWith({portWithLinkage()});
    EXPECT_EQ(instanceInOrder(networkPort), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_NIC_NetworkPort"
DeviceID: string "SN-a1_1"
LinkTechnology: uint16 2
PermanentAddress: string "001B32ABCDEF"
PortType: uint16 105
PortNumber: uint16 1
OperationalStatus: uint16[] {2}
StatusDescriptions: string[] {"Link Up"}
Caption: string "001B32ABCDEF"
Description: string "Merolt CNA Network Port"
ElementName: string "001B32ABCDEF"
Name: string "001B32ABCDEF"
MaxSpeed: uint64 10625000000
ActiveMaximumTransmissionUnit: uint64 9000
Speed: uint64 10000
)");
}

TEST_F(EthernetPortsTest, ClassesTakeEveryPropertyInItsType) {
    startWith({portWithLinkage()});
    for (const char* className : bothClasses) {
        const Answer loose = enumerateInstances(className, std::nullopt, "root/elsewhere");
        ASSERT_EQ(loose.objects.size(), 1U);
        expectSameValues(onlyInstance(className), loose.objects[0]);
    }
    EXPECT_TRUE(broker->droppedProperties().empty());
}

TEST_F(EthernetPortsTest, PathsHaveTheFourKeysInTheirOrder) {
    startWith({portWithLinkage()});
    EXPECT_EQ('\n' + enumerateInstanceNames(ethernetPort).objects.at(0).table(), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_NIC_EthernetPort2"
DeviceID: string "001B32ABCDEF"
)");
    EXPECT_EQ('\n' + enumerateInstanceNames(networkPort).objects.at(0).table(), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_NIC_NetworkPort"
DeviceID: string "SN-a1_1"
)");
}

TEST_F(EthernetPortsTest, PropertyListGivesTheKeysAndTheListedPropertiesOnly) {
    startWith({portWithLinkage()});
    EXPECT_EQ(instanceInOrder(ethernetPort, Names{"FC_PortID", "Speed"}), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_NIC_EthernetPort2"
DeviceID: string "001B32ABCDEF"
Speed: uint64 10625000000
FC_PortID: string "01-0A-FF"
)");
    const Answer one = getInstance(networkPort, {{"DeviceID", "SN-a1_1"}}, Names{"Speed"});
    ASSERT_EQ(one.objects.size(), 1U);
    EXPECT_EQ(one.objects[0].values.size(), 5U);
    EXPECT_EQ(one.objects[0]["Speed"], "uint64 10000");
}

TEST_F(EthernetPortsTest, ObjectsCarryTheClassAndNamespaceOfTheRequest) {
    classes.loadText(implementationNamespace, "class Test_Port : Merolt_NIC_EthernetPort2 {};");
    startWith({portWithLinkage()});
    for (const Answer& answer : {enumerateInstances("Test_Port"), enumerateInstanceNames("Test_Port"),
                                 getInstance("Test_Port", {{"DeviceID", "001B32ABCDEF"}})}) {
        ASSERT_EQ(answer.objects.size(), 1U);
        EXPECT_EQ(answer.objects[0].className, "Test_Port");
        EXPECT_EQ(answer.objects[0]["CreationClassName"], "string \"Merolt_NIC_EthernetPort2\"");
    }
    const Answer elsewhere = enumerateInstanceNames(networkPort, "root/elsewhere");
    ASSERT_EQ(elsewhere.objects.size(), 1U);
    EXPECT_EQ(elsewhere.objects[0].nameSpace, "root/elsewhere");
}

// Which ports there are.

TEST_F(EthernetPortsTest, CardsAreListedInTheOrderOfTheTreeEachWithItsPorts) {
    // A function of the first card behind those of the second still belongs to the first.
    tavikLibrary.setFleet(fleet({card("S1", {nicFunction(1, 1), storageFunction(1, 0xA107), nicFunction(1, 2)}),
                                 card("S2", {nicFunction(2, 3)}), card("S1", {nicFunction(1, 4)})}));
    start();
    EXPECT_EQ(enumerateInstances(networkPort).all("DeviceID"),
              (Names{"string \"S1_1\"", "string \"S1_2\"", "string \"S1_4\"", "string \"S2_3\""}));
    EXPECT_EQ(enumerateInstanceNames(ethernetPort).all("DeviceID"),
              (Names{"string \"020000000001\"", "string \"020000000002\"", "string \"020000000004\"",
                     "string \"020000000003\""}));
}

TEST_F(EthernetPortsTest, WithoutCardsEnumerationsAreEmptyAndNoKeyIsFound) {
    start();
    for (const char* className : bothClasses) {
        for (const Answer& answer : {enumerateInstances(className), enumerateInstanceNames(className)}) {
            EXPECT_TRUE(answer.isOk());
            EXPECT_TRUE(answer.objects.empty());
            EXPECT_EQ(answer.doneCount, 1U);
        }
        const Answer one = getInstance(className, {{"DeviceID", "x"}});
        EXPECT_EQ(one.rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(one.message, "x");
    }
}

// Link state and speed.

struct LinkRow {
    std::uint32_t state;
    const char* operationalStatus;
    const char* description;
};

void PrintTo(const LinkRow& row, std::ostream* stream) { *stream << "state " << row.state; }

class LinkStateTest : public EthernetPortsTest, public testing::WithParamInterface<LinkRow> {};

TEST_P(LinkStateTest, ShowsAlikeInBothClasses) {
    tavik::NicFunction nic = nicFunction(1, 1);
    nic.link.state = GetParam().state;
    startWith({nic});
    for (const char* className : bothClasses) {
        const TestObject port = onlyInstance(className);
        EXPECT_EQ(port["OperationalStatus"], GetParam().operationalStatus);
        EXPECT_EQ(port["StatusDescriptions"], GetParam().description);
    }
}

INSTANTIATE_TEST_SUITE_P(EachState, LinkStateTest,
                         testing::Values(LinkRow{0, "uint16[] {0}", "string[] {\"Unknown\"}"},
                                         LinkRow{1, "uint16[] {2}", "string[] {\"Link Up\"}"},
                                         LinkRow{2, "uint16[] {3}", "string[] {\"Link Down\"}"},
                                         LinkRow{3, "uint16[] {1}", "string[] {\"Testing\"}"},
                                         LinkRow{4, "uint16[] {0}", "string[] {\"Unknown\"}"},
                                         LinkRow{0x10001, "uint16[] {0}", "string[] {\"Unknown\"}"}));

struct LinkSpeedRow {
    std::uint64_t field;
    const char* ofEthernetPort;
    const char* ofNetworkPort;
};

void PrintTo(const LinkSpeedRow& row, std::ostream* stream) { *stream << row.field; }

class LinkSpeedTest : public EthernetPortsTest, public testing::WithParamInterface<LinkSpeedRow> {};

TEST_P(LinkSpeedTest, ShowsTenGigabitOrNothingInOneClassAndTheRawFieldInTheOther) {
    tavik::NicFunction nic = nicFunction(1, 1);
    nic.link.speed = GetParam().field;
    startWith({nic});
    EXPECT_EQ(onlyInstance(ethernetPort)["Speed"], GetParam().ofEthernetPort);
    EXPECT_EQ(onlyInstance(networkPort)["Speed"], GetParam().ofNetworkPort);
    for (const char* className : bothClasses)
        EXPECT_EQ(onlyInstance(className)["MaxSpeed"], "uint64 10625000000");
}

INSTANTIATE_TEST_SUITE_P(Fields, LinkSpeedTest,
                         testing::Values(LinkSpeedRow{10000, "uint64 10625000000", "uint64 10000"},
                                         LinkSpeedRow{1000, "uint64 0", "uint64 1000"},
                                         LinkSpeedRow{0, "uint64 0", "uint64 0"},
                                         LinkSpeedRow{9999, "uint64 0", "uint64 9999"},
                                         LinkSpeedRow{25000, "uint64 0", "uint64 25000"},
                                         // The field has 64 bits, and all of them count.
                                         LinkSpeedRow{0x100002710, "uint64 0", "uint64 4294977296"},
                                         LinkSpeedRow{UINT64_MAX, "uint64 0", "uint64 18446744073709551615"}));

TEST_F(EthernetPortsTest, PolledLinkStateShowsInTheNextAnswer) {
    tavik::NicFunction nic = nicFunction(1, 1);
    nic.link = {10000, tavik::LinkDown};
    startWith({nic});
    tavikLibrary.nic("eth1").link.state = tavik::LinkUp;
    EXPECT_EQ(onlyInstance(ethernetPort)["OperationalStatus"], "uint16[] {3}");
    services.pass(3600);
    EXPECT_EQ(onlyInstance(ethernetPort)["OperationalStatus"], "uint16[] {2}");
}

// Port ID, transmission unit, linkage.

struct PortIdRow {
    std::uint32_t portId;
    const char* portNumber;
    const char* deviceId;
};

void PrintTo(const PortIdRow& row, std::ostream* stream) { *stream << row.portId; }

class PortIdTest : public EthernetPortsTest, public testing::WithParamInterface<PortIdRow> {};

TEST_P(PortIdTest, ShowsItsLowHalfAsPortNumberAndAllOfItInTheKey) {
    startWith({nicFunction(1, GetParam().portId)});
    EXPECT_EQ(onlyInstance(ethernetPort)["PortNumber"], GetParam().portNumber);
    const TestObject port = onlyInstance(networkPort);
    EXPECT_EQ(port["PortNumber"], GetParam().portNumber);
    EXPECT_EQ(port["DeviceID"], inQuotes(GetParam().deviceId));
    EXPECT_EQ(getInstance(networkPort, {{"DeviceID", GetParam().deviceId}}).objects.size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Ids, PortIdTest,
                         testing::Values(PortIdRow{0, "uint16 0", "SN-a1_0"},
                                         PortIdRow{65535, "uint16 65535", "SN-a1_65535"},
                                         PortIdRow{65536, "uint16 0", "SN-a1_65536"},
                                         PortIdRow{65541, "uint16 5", "SN-a1_65541"},
                                         PortIdRow{4294967295, "uint16 65535", "SN-a1_4294967295"}));

TEST_F(EthernetPortsTest, LargestTransmissionUnitShows) {
    tavik::NicFunction nic = nicFunction(1, 1);
    nic.mtu = UINT32_MAX;
    startWith({nic});
    for (const char* className : bothClasses)
        EXPECT_EQ(onlyInstance(className)["ActiveMaximumTransmissionUnit"], "uint64 4294967295");
}

TEST_F(EthernetPortsTest, PortWithoutLinkageHasItsThreePropertiesAllEmpty) {
    tavik::NicFunction unreadable = portWithLinkage();
    unreadable.failures.fcoeLinkage = 1;
    unreadable.deviceName = "eth2";
    startWith({nicFunction(1, 1), unreadable});
    const Answer answer = enumerateInstances(ethernetPort);
    ASSERT_EQ(answer.objects.size(), 2U);
    for (const char* property : {"FC_WWN", "FC_PortID", "FC_ENodeMACAddress"})
        EXPECT_EQ(answer.all(property), Names(2, "string \"\"")) << property;
}

TEST_F(EthernetPortsTest, NetworkPortHasNoLinkageProperties) {
    startWith({portWithLinkage()});
    EXPECT_EQ(onlyInstance(networkPort)["FC_WWN"], "absent");
}

TEST_F(EthernetPortsTest, LongestSerialNumberStandsWholeInTheKey) {
    const std::string serialNumber(191, 's');
    tavik::NicFunction nic = nicFunction(1, 4294967295);
    nic.card.serialNumber = serialNumber;
    startWith({nic});
    EXPECT_EQ(onlyInstance(networkPort)["DeviceID"], inQuotes(serialNumber + "_4294967295"));
}

// One port by its key.

TEST_F(EthernetPortsTest, LowerCaseAddressFindsTheEthernetPort) {
    startWith({nicFunction(1, 9), portWithLinkage()});
    const Answer answer = getInstance(ethernetPort, {{"DeviceID", "001b32abcdef"}});
    EXPECT_TRUE(answer.isOk());
    EXPECT_EQ(answer.all("DeviceID"), Names{"string \"001B32ABCDEF\""});
    EXPECT_EQ(answer.doneCount, 1U);
}

TEST_F(EthernetPortsTest, SerialNumberInAnotherLetterCaseFindsTheNetworkPort) {
    startWith({nicFunction(1, 1), nicFunction(1, 2)}, "Sn-Ab");
    const Answer answer = getInstance(networkPort, {{"SystemName", "another"}, {"DeviceID", "sN-aB_2"}});
    EXPECT_TRUE(answer.isOk());
    EXPECT_EQ(answer.all("DeviceID"), Names{"string \"Sn-Ab_2\""});
}

TEST_F(EthernetPortsTest, PortsOfACardDifferByTheNumberBehindTheLastUnderscore) {
    startWith({nicFunction(1, 1), nicFunction(1, 11)}, "S_1");
    EXPECT_EQ(getInstance(networkPort, {{"DeviceID", "S_1_1"}}).all("PortNumber"), Names{"uint16 1"});
    EXPECT_EQ(getInstance(networkPort, {{"DeviceID", "S_1_11"}}).all("PortNumber"), Names{"uint16 11"});
    for (const char* other : {"S_1_2", "S_1", "S_1_", "S_1_01", "s_1_111"})
        EXPECT_EQ(getInstance(networkPort, {{"DeviceID", other}}).rc, CMPI_RC_ERR_NOT_FOUND) << other;
}

TEST_F(EthernetPortsTest, UnknownKeyEndsAsNotFoundWithTheKeyAsMessage) {
    startWith({portWithLinkage()});
    for (const char* className : bothClasses) {
        const Answer answer = getInstance(className, {{"DeviceID", "00:1B:32:AB:CD:EF"}});
        EXPECT_EQ(answer.rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(answer.message, "00:1B:32:AB:CD:EF");
        EXPECT_TRUE(answer.objects.empty());
        EXPECT_EQ(answer.doneCount, 1U);
    }
}

TEST_F(EthernetPortsTest, NumericOrMissingKeyEndsAsSuccessWithoutAnInstance) {
    switchLogsOn();
    startWith({portWithLinkage()});
    for (const char* className : bothClasses) {
        for (const Answer& answer :
             {getInstanceByNumber(className, "DeviceID", 1), getInstance(className, {{"SystemName", "192.0.2.10"}})}) {
            EXPECT_TRUE(answer.isOk());
            EXPECT_TRUE(answer.objects.empty());
            EXPECT_EQ(answer.doneCount, 1U);
        }
    }
    EXPECT_TRUE(logHas("Merolt_NIC_EthernetPort: Error getting DeviceID key in findMatchedRole1"));
    EXPECT_TRUE(logHas("Merolt_NIC_NetworkPort: Error getting DeviceID key in findMatchedRole1"));
}

// The log.

TEST_F(EthernetPortsTest, RequestsOfTheEthernetPortAreLogged) {
    switchLogsOn();
    startWith({portWithLinkage()});
    takeLogLines();
    enumerateInstances(ethernetPort);
    EXPECT_EQ(takeLogLines(), (Names{"Entering Merolt_CNA_Provider enumInstances: classname = Merolt_NIC_EthernetPort2",
                                     "Merolt_NIC_EthernetPort enumInstances was called", "",
                                     "Merolt_NIC_EthernetPort makeInstance_EthernetPort was called", "",
                                     "Exiting  Merolt_CNA_Provider enumInstances", ""}));
    enumerateInstanceNames(ethernetPort);
    EXPECT_EQ(takeLogLines(),
              (Names{"Entering Merolt_CNA_Provider enumInstanceNames: classname = Merolt_NIC_EthernetPort2",
                     "Merolt_NIC_EthernetPort enumInstanceNames was called", "",
                     "Merolt_NIC_EthernetPort makePath_EthernetPort was called", "",
                     "Exiting  Merolt_CNA_Provider enumInstanceNames", ""}));
    getInstance(ethernetPort, {{"DeviceID", "001B32ABCDEF"}});
    EXPECT_EQ(takeLogLines(), (Names{"Entering Merolt_CNA_Provider getInstance: classname = Merolt_NIC_EthernetPort2",
                                     "Merolt_NIC_EthernetPort getInstance_EthernetPort was called", "",
                                     "Merolt_NIC_EthernetPort makeInstance_EthernetPort was called", "",
                                     "Exiting  Merolt_CNA_Provider getInstance", ""}));
}

TEST_F(EthernetPortsTest, RequestsOfTheNetworkPortAreLogged) {
    switchLogsOn();
    startWith({portWithLinkage()});
    takeLogLines();
    enumerateInstances(networkPort);
    EXPECT_EQ(takeLogLines(), (Names{"Entering Merolt_CNA_Provider enumInstances: classname = Merolt_NIC_NetworkPort",
                                     "Merolt_NIC_NetworkPort enumInstances_NetworkPort was called", "",
                                     "Merolt_NIC_NetworkPort makeInstance was called", "",
                                     "Exiting  Merolt_CNA_Provider enumInstances", ""}));
    enumerateInstanceNames(networkPort);
    EXPECT_EQ(takeLogLines(),
              (Names{"Entering Merolt_CNA_Provider enumInstanceNames: classname = Merolt_NIC_NetworkPort",
                     "Merolt_NIC_NetworkPort enumInstanceNames was called", "",
                     "Merolt_NIC_NetworkPort makePath_NetworkPort was called", "",
                     "Exiting  Merolt_CNA_Provider enumInstanceNames", ""}));
    getInstance(networkPort, {{"DeviceID", "SN-a1_1"}});
    EXPECT_EQ(takeLogLines(), (Names{"Entering Merolt_CNA_Provider getInstance: classname = Merolt_NIC_NetworkPort",
                                     "Merolt_NIC_NetworkPort getInstance_NetworkPort was called", "",
                                     "Merolt_NIC_NetworkPort makeInstance was called", "",
                                     "Exiting  Merolt_CNA_Provider getInstance", ""}));
}

// The texts that indications and associations take from the class.

TEST_F(EthernetPortsTest, TextsGoToTheCallersBufferOrToOneOfTheModule) {
    startWith({portWithLinkage()});
    merolt::CNACard* card = merolt::g_CNAList;
    char buffer[256] = "";
    EXPECT_EQ(merolt::ethernet::calcDeviceID_NetworkPort(card, card->ports, buffer), buffer);
    EXPECT_STREQ(buffer, "SN-a1_1");
    EXPECT_EQ(merolt::ethernet::calcMACAddress_NetworkPort(card, card->ports, buffer), buffer);
    EXPECT_STREQ(buffer, "001B32ABCDEF");
    const char* deviceId = merolt::ethernet::calcDeviceID_NetworkPort(card, card->ports, nullptr);
    const char* address = merolt::ethernet::calcMACAddress_NetworkPort(card, card->ports, nullptr);
    EXPECT_STREQ(deviceId, "SN-a1_1");
    EXPECT_STREQ(address, "001B32ABCDEF");
}

} // namespace
