// What a client sees of the Ethernet side's controllers, endpoints, profiles and software.
#include "class_support.h"

#include "classes/ethernet/ip_address.h"
#include "classes/ethernet/ip_protocol_endpoint_capabilities.h"

using namespace adapters;
using namespace merolt;

namespace {

using Lines = std::vector<std::string>;

constexpr const char* controller = "Merolt_NIC_PortController";
constexpr const char* lanEndpoint = "Merolt_NIC_LANEndpoint";
constexpr const char* ipEndpoint = "Merolt_NIC_IPProtocolEndpoint";
constexpr const char* ipCapabilities = "Merolt_NIC_IPProtocolEndpointCapabilities";
constexpr const char* profile = "Merolt_NIC_RegisteredProfile";
constexpr const char* nicSoftware = "Merolt_NIC_SoftwareIdentity";

class EthernetClassesTest : public ClassTest {};

tavik::NicFunction cardFunction(std::uint32_t adapterId, std::uint32_t portId) {
    tavik::NicFunction function = nicFunction(adapterId, portId);
    function.card.wwn = {0x02, 0x00, 0xC9, 0x12, 0x34, 0x56};
    function.card.manufacturer = "Maker";
    function.card.modelName = "MLT-8242";
    function.card.driverVersion = "2.3.7";
    function.card.defaultSoftwareVersion = "0.0.1";
    function.card.flashVersion = "02.01.37";
    function.mtu = 9000;
    return function;
}

tavik::IPAddress ipv4(std::uint8_t last) {
    tavik::IPAddress address;
    address.bytes = {192, 0, 2, last};
    address.family = tavik::AddressIPv4;
    return address;
}

tavik::IPAddress ipv6(std::uint8_t last) {
    tavik::IPAddress address;
    address.bytes = {0x20, 0x01, 0x0d, 0xb8};
    address.bytes[15] = last;
    address.family = tavik::AddressIPv6;
    return address;
}

TEST_F(EthernetClassesTest, ControllerHasEveryPropertyInTheOrderOfTheClass) {
    startWith({card("AB1234", {cardFunction(1, 1)})});
    EXPECT_EQ(asSet(controller), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_NIC_PortController"
DeviceID: string "AB1234_NIC"
Caption: string "Merolt CNA"
Description: string "Merolt Converged Network Adapter"
Name: string "MLT-8242"
ControllerType: uint16 2
ProtocolSupported: uint16 1
MaxNumberControlled: uint32 0
EnabledState: uint16 5
RequestedState: uint16 12
ElementName: string "CNA PortController"
OperationalStatus: uint16[] {2}
StatusDescriptions: string[] {"OK"}
FC_WWN: string "0200C9123456"
)");
}

TEST_F(EthernetClassesTest, ControllerIsThereOnceACardAndIsNotFoundWithoutItsSuffix) {
    startWith({card("AB1234", {cardFunction(1, 1), cardFunction(1, 2)})});
    EXPECT_EQ(countOf(controller), 1U);
    EXPECT_EQ(getInstance(controller, {{"DeviceID", "ab1234_nic"}}).objects.size(), 1U);
    EXPECT_EQ(getInstance(controller, {{"DeviceID", "AB1234"}}).rc, CMPI_RC_ERR_NOT_FOUND);
}

TEST_F(EthernetClassesTest, LanEndpointShowsItsAddressTwiceAndTheMtuIn32Bits) {
    startWith({card("AB1234", {cardFunction(1, 1)})});
    EXPECT_EQ(asSet(lanEndpoint), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_NIC_LANEndpoint"
Name: string "020000000001"
NameFormat: string "MAC based"
LANType: uint16 2
MaxDataSize: uint32 9000
MACAddress: string "020000000001"
ElementName: string "LANEndPoint"
Caption: string "Merolt LANEndPoint"
)");
}

TEST_F(EthernetClassesTest, LanEndpointNamesAreLoggedPortByPort) {
    switchLogsOn();
    startWith({card("AB1234", {cardFunction(1, 1), cardFunction(1, 2)})});
    takeLogLines();
    enumerateInstanceNames(lanEndpoint);
    EXPECT_EQ(linesThatBegin(logLines(), "Merolt_NIC_LANEndPoint enumInstanceNames_LANEndPoint working"), 2U);
}

TEST_F(EthernetClassesTest, KeyOfTheWrongTypeIsToldApartFromAMissingOne) {
    switchLogsOn();
    startWith({card("AB1234", {cardFunction(1, 1)})});
    const Answer numeric = getInstanceByNumber(lanEndpoint, "Name", 7);
    EXPECT_TRUE(numeric.isOk());
    EXPECT_TRUE(numeric.objects.empty());
    EXPECT_TRUE(logHas("Merolt_NIC_LANEndPoint: Error invalid key data type(240)"));
    getInstance(lanEndpoint, {});
    EXPECT_TRUE(logHas("Merolt_NIC_LANEndPoint: Error getting DeviceID key in getInstances"));
    getInstanceByNumber(ipEndpoint, "Name", 7);
    EXPECT_TRUE(logHas("Merolt_NIC_IPProtocolEndPoint: Error invalid key data type, keyData.type=240!"));
    getInstanceByNumber(ipCapabilities, "InstanceID", 7);
    EXPECT_TRUE(logHas("Merolt_NIC_IPProtocolEndPointCapabilities: Error invalid key data type in getInstance (240)"));
}

TEST_F(EthernetClassesTest, IpEndpointShowsAddressesMaskAndTheFirstIpv6Address) {
    tavik::NicFunction function = cardFunction(1, 1);
    function.ip = tavik::IPConfiguration{ipv4(11), ipv4(0), {ipv6(1), ipv6(2)}, {}, {}};
    startWith({card("AB1234", {function})});
    EXPECT_EQ(asSet(ipEndpoint), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_NIC_IPProtocolEndpoint"
Name: string "020000000001"
AddressOrigin: uint16 4
IPv4Address: string "192.0.2.11"
SubnetMask: string "192.0.2.0"
IPv6Address: string "2001:db8::1"
ProtocolIFType: uint16 6
Status: string "OK"
HealthState: uint16 5
ElementName: string "IPProtocolEndPoint"
)");
}

TEST_F(EthernetClassesTest, PortWithoutIpDataShowsEmptyAddressesAndNoIpv6Address) {
    startWith({card("AB1234", {cardFunction(1, 1)})});
    const TestObject endpoint = onlyInstance(ipEndpoint);
    EXPECT_EQ(endpoint["IPv4Address"], inQuotes(""));
    EXPECT_EQ(endpoint["SubnetMask"], inQuotes(""));
    EXPECT_EQ(endpoint["IPv6Address"], "absent");
}

TEST_F(EthernetClassesTest, FirstAddressOfTheListPrintsByItsOwnFamily) {
    tavik::NicFunction function = cardFunction(1, 1);
    function.ip = tavik::IPConfiguration{{}, {}, {ipv4(77)}, {}, {}};
    startWith({card("AB1234", {function})});
    EXPECT_EQ(onlyInstance(ipEndpoint)["IPv6Address"], inQuotes("192.0.2.77"));
}

struct Ipv6Text {
    std::array<std::uint16_t, 8> groups;
    std::string text;
};

TEST(IPv6Address, LongestRunOfZeroGroupsIsCompressedTheFirstAmongEqualsAlsoASingleOne) {
    const Ipv6Text rows[] = {
        {{0, 0, 0, 0, 0, 0, 0, 0}, "::"},
        {{0, 0, 0, 0, 0, 0, 0, 1}, "::1"},
        {{0x2001, 0xdb8, 0, 0, 0, 0, 0, 1}, "2001:db8::1"},
        {{1, 0, 2, 0, 0, 3, 4, 5}, "1:0:2::3:4:5"},
        {{1, 0, 2, 3, 4, 5, 6, 7}, "1::2:3:4:5:6:7"},
        {{1, 2, 3, 4, 5, 6, 7, 0}, "1:2:3:4:5:6:7::"},
        {{0x1234, 0x5, 0xd08, 0xffff, 0xa, 0xb, 0xc, 0xd}, "1234:5:d08:ffff:a:b:c:d"},
        {{1, 0, 0, 2, 0, 0, 3, 4}, "1::2:0:0:3:4"},
    };
    for (const Ipv6Text& row : rows) {
        unsigned char bytes[16];
        for (std::size_t group = 0; group < row.groups.size(); ++group) {
            bytes[2 * group] = static_cast<unsigned char>(row.groups[group] >> 8);
            bytes[2 * group + 1] = static_cast<unsigned char>(row.groups[group]);
        }
        char text[40];
        ethernet::formatIPv6Address(bytes, false, text);
        EXPECT_EQ(text, row.text);
    }
}

TEST(IPv6Address, FixedWidthPrintsFourDigitsAGroup) {
    const unsigned char bytes[16] = {0x20, 0x01, 0x0d, 0xb8, 0, 5, 0, 6, 0, 7, 0, 8, 0, 9, 0, 10};
    char text[40];
    ethernet::formatIPv6Address(bytes, true, text);
    EXPECT_STREQ(text, "2001:0db8:0005:0006:0007:0008:0009:000a");
}

TEST_F(EthernetClassesTest, IpCapabilitiesAreKnownByTheMacAddress) {
    startWith({card("AB1234", {cardFunction(1, 1)})});
    EXPECT_EQ(asSet(ipCapabilities), R"(
InstanceID: string "020000000001"
RequestedStatesSupported: uint16[] {12}
ElementName: string "IPProtocolEndPointCapabilities"
Caption: string "020000000001"
)");
}

TEST_F(EthernetClassesTest, ProfilesAreEightOfWhichTwoShareAKey) {
    start();
    EXPECT_EQ(valuesOf(profile, "InstanceID"), allInQuotes({"1", "2", "3", "4", "5", "6", "6", "7"}));
    EXPECT_EQ(enumerateInstanceNames(profile).all("InstanceID"), allInQuotes({"1", "2", "3", "4", "5", "6", "6", "7"}));
    EXPECT_EQ(valuesOf(profile, "RegisteredName"),
              allInQuotes({"Ethernet Port", "Host LAN Network Port", "IP Interface", "Merolt_Registered_Profile",
                           "Merolt_PhysicalAsset", "Merolt_SoftwareInventory", "Merolt_SoftwareUpdate",
                           "Merolt_Indications"}));
    EXPECT_EQ(valuesOf(profile, "RegisteredVersion"),
              allInQuotes({"1.0.0", "1.0.0", "1.0.1", "1.1.0", "1.1.0", "1.1.0", "1.1.0", "1.1.0"}));
    EXPECT_EQ(valuesOf(profile, "RegisteredOrganization"), (Lines{"uint16 2", "uint16 2", "uint16 2", "uint16 11",
                                                                  "uint16 11", "uint16 11", "uint16 11", "uint16 11"}));
    EXPECT_EQ(asSet(profile, 2), R"(
InstanceID: string "3"
Caption: string "Merolt NIC IP Interface Profile"
Description: string "Merolt NIC IP Interface Profile"
ElementName: string "IP Interface Profile"
RegisteredOrganization: uint16 2
RegisteredName: string "IP Interface"
RegisteredVersion: string "1.0.1"
AdvertiseTypes: uint16[] {3}
AdvertiseTypeDescriptions: string[] {"slp"}
)");
}

TEST_F(EthernetClassesTest, ProfileKeySixFindsTheFirstProfileAndEightNone) {
    switchLogsOn();
    start();
    EXPECT_EQ(getInstance(profile, {{"InstanceID", "6"}}).all("ElementName"),
              Lines{inQuotes("Software Inventory Profile")});
    EXPECT_EQ(getInstance(profile, {{"InstanceID", "06"}}).rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(getInstance(profile, {{"InstanceID", "8"}}).message, "8");
    getInstance(profile, {});
    EXPECT_TRUE(logHas("Merolt_NIC_RegisteredProfile: Error getting Name key in getInstance"));
}

TEST_F(EthernetClassesTest, ProfilesComeBackAfterARefresh) {
    startWith({card("AB1234", {cardFunction(1, 1)})});
    refreshTo({});
    EXPECT_EQ(countOf(profile), 8U);
}

TEST_F(EthernetClassesTest, EachCardHasItsDriverAndItsFlashFirmware) {
    startWith({card("AB1234", {cardFunction(1, 1), cardFunction(1, 2)})});
    EXPECT_EQ(valuesOf(nicSoftware, "InstanceID"), allInQuotes({"2_AB1234", "3_AB1234"}));
    EXPECT_EQ(valuesOf(nicSoftware, "VersionString"), allInQuotes({"2.3.7", "02.01.37"}));
}

TEST_F(EthernetClassesTest, CardSoftwareShowsTheCardsMaker) {
    startWith({card("AB1234", {cardFunction(1, 1)})});
    const Answer answer = getInstance(nicSoftware, {{"InstanceID", "3_ab1234"}});
    ASSERT_EQ(answer.objects.size(), 1U);
    const TestObject firmware = answer.objects.front();
    EXPECT_EQ(firmware["InstanceID"], inQuotes("3_AB1234"));
    EXPECT_EQ(firmware["Manufacturer"], inQuotes("Maker"));
    EXPECT_EQ(firmware["Classifications"], "uint16[] {10}");
    EXPECT_EQ(firmware["Name"], inQuotes("Merolt CNA Adapter AB1234 Flash Firmware"));
    EXPECT_EQ(firmware["Description"], inQuotes("CNA Flash includes boot code, ASIC and MPI Firmware"));
    EXPECT_EQ(firmware["VersionString"], inQuotes("02.01.37"));
    EXPECT_EQ(firmware["IdentityInfoType"], "string[] {\"SoftwareID\", \"SoftwareStatus\"}");
    EXPECT_EQ(firmware["IdentityInfoValue"], "string[] {\"MLT-8242\", \"2\"}");
}

TEST_F(EthernetClassesTest, UnknownTypeOfAKnownCardStillAnswersWithWhatDependsOnNoType) {
    startWith({card("AB1234", {cardFunction(1, 1)})});
    const Answer answer = getInstance(nicSoftware, {{"InstanceID", "7_AB1234"}});
    ASSERT_EQ(answer.objects.size(), 1U);
    const TestObject software = answer.objects.front();
    EXPECT_EQ(software["InstanceID"], inQuotes("7_AB1234"));
    EXPECT_EQ(software["VersionString"], inQuotes("0.0.1"));
    EXPECT_EQ(software["Name"], "absent");
    EXPECT_EQ(software["Classifications"], "absent");
    EXPECT_EQ(getInstance(nicSoftware, {{"InstanceID", "AB1234"}}).rc, CMPI_RC_ERR_NOT_FOUND);
}

TEST_F(EthernetClassesTest, SerialNumberWithAnUnderscoreIsSplitAtTheFirstOneOfTheKey) {
    startWith({card("AB_12", {cardFunction(1, 1)})});
    EXPECT_EQ(getInstance(nicSoftware, {{"InstanceID", "2_AB_12"}}).objects.size(), 1U);
}

TEST_F(EthernetClassesTest, OemSerialNumberShowsItsMakerAndItsShortForm) {
    startWith({card("11S1234567ABCDEFGHIJKL", {cardFunction(1, 1)})});
    EXPECT_EQ(valuesOf(nicSoftware, "Manufacturer"), allInQuotes({"IBM", "IBM"}));
    EXPECT_EQ(valuesOf(nicSoftware, "Name"),
              allInQuotes({"IBM CNA Adapter ABCDEFGHIJKL Driver", "IBM CNA Adapter ABCDEFGHIJKL Flash Firmware"}));
    EXPECT_EQ(valuesOf(nicSoftware, "InstanceID").front(), inQuotes("2_11S1234567ABCDEFGHIJKL"));
}

// The serial number is trimmed in place once the first instance was made of it.
TEST_F(EthernetClassesTest, BlanksOfASerialNumberLeaveTheKeysWithTheFirstEnumeration) {
    startWith({card("AB12  ", {cardFunction(1, 1)})});
    EXPECT_EQ(valuesOf(nicSoftware, "InstanceID"), allInQuotes({"2_AB12  ", "3_AB12"}));
    EXPECT_EQ(valuesOf(nicSoftware, "InstanceID"), allInQuotes({"2_AB12", "3_AB12"}));
}

TEST_F(EthernetClassesTest, WithoutAnyCardEveryClassAnswersWithNothing) {
    start();
    for (const char* className : {controller, lanEndpoint, ipEndpoint, ipCapabilities, nicSoftware})
        EXPECT_EQ(countOf(className), 0U) << className;
}

} // namespace
