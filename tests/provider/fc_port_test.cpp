// What a client sees of Merolt_FCHBA_FCPort.
#include "adapters.h"
#include "provider_host.h"

#include "log/log.h"
#include "tavik/vpd.h"

#include <algorithm>
#include <cstring>

using namespace adapters;

namespace {

using Names = std::vector<std::string>;

constexpr const char* fcPort = "Merolt_FCHBA_FCPort";

// PCI device IDs by chip index.
constexpr std::uint16_t chip0 = 0xA100;
constexpr std::uint16_t chip5 = 0xA105;
constexpr std::uint16_t chip6 = 0xA106;
constexpr std::uint16_t chip7 = 0xA107;
constexpr std::uint16_t chip8 = 0xA110;
constexpr std::uint16_t chip12 = 0xA114;
constexpr std::uint16_t chip15 = 0xA121;
constexpr std::uint16_t chip21 = 0xA127;
constexpr std::uint16_t chip24 = 0xA130;
constexpr std::uint16_t unknownChip = 0xA1FF;

class FCPortTest : public ProviderTest {
protected:
    /// Starts with one card of that function.
    void startWith(tavik::StorageFunction function) {
        tavikLibrary.setFleet(fleet({card("S1", {std::move(function)})}));
        start();
    }

    TestObject portOf(tavik::StorageFunction function) {
        startWith(std::move(function));
        return onlyInstance(fcPort);
    }

    /// The record of handle 1 in the tree, to be bent.
    TAVIK_DeviceRecord& record() { return *tavikLibrary.tree().device(1); }
};

std::string inQuotes(const std::string& text) { return "string \"" + text + '"'; }

/// Key of the function that storageFunction(number, ...) makes.
std::string keyOf(const std::string& serialText, int number) {
    const std::string digit = std::to_string(number);
    return serialText + "_20000002C90000F" + digit + "_20000002C900000" + digit;
}

tavik::StorageFunction withVpd(std::uint16_t pciDeviceId, const std::vector<tavik::VpdItem>& items,
                               const std::string& productIdentifier = "Adapter") {
    tavik::StorageFunction function = storageFunction(1, pciDeviceId);
    function.vpd = tavik::encodeVpd(productIdentifier, items);
    return function;
}

tavik::StorageFunction convergedFunction() {
    tavik::StorageFunction function = withVpd(chip15,
                                              {{"PN", "49Y7950"},
                                               {"EC", "0812"},
                                               {"SN", "AB1234"},
                                               {"V0", "PW=15W"},
                                               {"V2", "0813"},
                                               {"MN", "1077"},
                                               {"V1", " 4.05 "},
                                               {"V3", "5.06.00"},
                                               {"V4", "2.15"},
                                               {"V5", "3.09"},
                                               {"RM", "1.02.03"},
                                               {"FC", "EH01"},
                                               {"FN", "49Y7952"},
                                               {"YA", "asset 7"},
                                               {"YU", "0123-4567"}},
                                              "Dual Port Adapter");
    function.protocolType = 1;
    function.deviceNumber = 65535;
    function.modelName = "MLT-8100";
    function.optionRom = {"2.15", {{5, 6, 7}}, {{4, 5}}, {{3, 9, 1}}};
    function.eNodeMac = tavik::MacAddress{0x0E, 0xFC, 0x00, 0x01, 0x0A, 0xFF};
    function.property.portType = 5;
    function.property.speedCode = 10;
    return function;
}

constexpr const char* convergedFunctionAsPort = R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_FCHBA_FCPort"
DeviceID: string "AB1234_20000002C90000F1_20000002C9000001"
OperationalStatus: uint16[] {2}
ActiveFC4Types: uint16[] {0}
PortType: uint16 15
Speed: uint64 10625000000
MaxSpeed: uint64 10625000000
PermanentAddress: string "20000002C9000001"
LinkTechnology: uint16 4
ElementName: string "AB1234_20000002C90000F1_20000002C9000001"
UsageRestriction: uint16 0
SupportedMaximumTransmissionUnit: uint64 0
VPDData: string "Product Identifier:Dual Port Adapter;Part Number:49Y7950;Serial Number:AB1234;FC Code:EH01;Fru Number:49Y7952;Miscellaneous Information:PW=15W;Manufacturing Id:1077;EFI Driver Version:4.05;Firmware Version:5.06.00;BIOS Version:2.15;FCode Version:3.09;Flash Image Version:1.02.03"
OptionROMVersions: string "OptionROM BIOS Version:2.15;OptionROM EFI Version:4.05;OptionROM FCode Version:3.09;OptionROM Firmware Version:5.06.07"
SpeedDescription: string "See Speed"
DeviceNumber: uint16 65535
DeviceStatus: sint32 0
Model: string "MLT-8100"
ENodeMACAddress: string "0EFC00010AFF"
)";

TEST_F(FCPortTest, InstanceHasEveryPropertyWithItsTypeInTheOrderOfTheClass) {
    startWith(convergedFunction());
    // A namespace without the class keeps the properties in the order in which they were set.
    const Answer loose = enumerateInstances(fcPort, std::nullopt, "root/elsewhere");
    ASSERT_EQ(loose.objects.size(), 1U);
    EXPECT_EQ('\n' + loose.objects[0].table(), convergedFunctionAsPort);
    expectSameValues(onlyInstance(fcPort), loose.objects[0]);
}

TEST_F(FCPortTest, PathHasTheFourKeysInTheirOrder) {
    startWith(convergedFunction());
    const Answer answer = enumerateInstanceNames(fcPort);
    ASSERT_EQ(answer.objects.size(), 1U);
    EXPECT_EQ('\n' + answer.objects[0].table(), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_FCHBA_FCPort"
DeviceID: string "AB1234_20000002C90000F1_20000002C9000001"
)");
    EXPECT_EQ(answer.doneCount, 1U);
}

TEST_F(FCPortTest, PropertyListGivesTheKeysAndTheListedPropertiesOnly) {
    startWith(convergedFunction());
    const Answer answer = enumerateInstances(fcPort, Names{"Model", "speed"}, "root/elsewhere");
    ASSERT_EQ(answer.objects.size(), 1U);
    EXPECT_EQ('\n' + answer.objects[0].table(), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_FCHBA_FCPort"
DeviceID: string "AB1234_20000002C90000F1_20000002C9000001"
Speed: uint64 10625000000
Model: string "MLT-8100"
)");
    const std::string key = keyOf("AB1234", 1);
    const Answer one = getInstance(fcPort, {{"DeviceID", key}}, Names{"Model"});
    ASSERT_EQ(one.objects.size(), 1U);
    EXPECT_EQ(one.objects[0].values.size(), 5U);
    EXPECT_EQ(one.objects[0]["Speed"], "absent");
}

TEST_F(FCPortTest, EmptyPropertyListGivesTheKeysOnly) {
    startWith(convergedFunction());
    const Answer answer = enumerateInstances(fcPort, Names{});
    ASSERT_EQ(answer.objects.size(), 1U);
    EXPECT_EQ(answer.objects[0].values.size(), 4U);
}

TEST_F(FCPortTest, RequestIsLoggedFromTheDispatcherDownToTheRecordAndBack) {
    switchLogsOn();
    startWith(convergedFunction());
    takeLogLines();
    enumerateInstances(fcPort);
    EXPECT_EQ(
        takeLogLines(),
        (Names{"Entering Merolt_CNA_Provider enumInstances: classname = Merolt_FCHBA_FCPort",
               "Entering createFCPort, index = 0", "Merolt_FC_FCPort: createFCPort: VPD data retrieved successfully.",
               "Merolt_FC_FCPort: createFCPort: Option ROM versions retrieved.", "Port state ok...",
               "GetDeviceMacAddress: MAC Address=0E:FC:00:01:0A:FF", "Exiting  createFCPort", "",
               "Entering enumInstances_FCPort", "Exiting  enumInstances_FCPort",
               "Exiting  Merolt_CNA_Provider enumInstances", ""}));
    getInstance(fcPort, {{"DeviceID", "none"}});
    const std::vector<std::string> lines = takeLogLines();
    EXPECT_EQ(
        (Names{lines.end() - 3, lines.end()}),
        (Names{"Entering getInstance_FCPort", "getInstance_FCPort: Error no matching instance found, KeyValue=none!",
               "Merolt_CNA_Provider getInstance caught exception status: 6 none"}));
}

TEST_F(FCPortTest, PortOfAnOldChipWithABrokenCallLogsWhatIsMissing) {
    switchLogsOn();
    tavik::StorageFunction function = storageFunction(1, chip5);
    function.failures.portProperty = 1;
    startWith(function);
    takeLogLines();
    enumerateInstanceNames(fcPort);
    EXPECT_EQ(takeLogLines(),
              (Names{"Entering Merolt_CNA_Provider enumInstanceNames: classname = Merolt_FCHBA_FCPort",
                     "Entering createFCPort, index = 0", "Merolt_FC_FCPort: createFCPort: Unable to retrieve VPD data!",
                     "Merolt_FC_FCPort: Failed to get DevicePortProperty, setting PortStatus & PortType to Unknown...",
                     "Exiting  createFCPort", "", "Entering enumInstanceNames_FCPort",
                     "Exiting  enumInstanceNames_FCPort", "Exiting  Merolt_CNA_Provider enumInstanceNames", ""}));
}

// Which ports there are.

TEST_F(FCPortTest, EachStorageFunctionIsAPortInTheOrderOfTheTree) {
    tavik::StorageFunction fcoe = storageFunction(2, chip7);
    fcoe.protocolType = 1;
    tavik::StorageFunction other = storageFunction(3, chip7);
    other.protocolType = 3;
    tavik::Card withHoles = card("S2", {storageFunction(4, chip7), storageFunction(5, chip7)});
    withHoles.ports->at(0).functions = std::nullopt;
    tavik::Card withoutPorts = card("S3", {});
    withoutPorts.ports = std::nullopt;
    tavikLibrary.setFleet(fleet({card("S1", {storageFunction(1, chip7), nicFunction(1, 1), fcoe, other}), withoutPorts,
                                 withHoles, card("S4", {})}));
    start();
    EXPECT_EQ(enumerateInstances(fcPort).all("DeviceNumber"), (Names{"uint16 1", "uint16 2", "uint16 5"}));
    EXPECT_EQ(enumerateInstanceNames(fcPort).objects.size(), 3U);
}

TEST_F(FCPortTest, PortsOfOneNameAreAllListed) {
    tavik::StorageFunction twin = storageFunction(1, chip7);
    twin.handle = 2;
    twin.deviceNumber = 2;
    tavikLibrary.setFleet(fleet({card("A00001", {storageFunction(1, chip7), twin})}));
    start();
    EXPECT_EQ(enumerateInstances(fcPort).all("DeviceID"), (Names(2, inQuotes(keyOf("A00001", 1)))));
    const Answer first = getInstance(fcPort, {{"DeviceID", keyOf("A00001", 1)}});
    EXPECT_EQ(first.all("DeviceNumber"), Names{"uint16 1"});
}

TEST_F(FCPortTest, WithoutAdaptersEnumerationsAreEmptyAndNoKeyIsFound) {
    start();
    for (const bool hasList : {true, false}) {
        tavik::Fleet none;
        if (!hasList) none.cards = std::nullopt;
        tavikLibrary.setFleet(none);
        const Answer instances = enumerateInstances(fcPort);
        EXPECT_TRUE(instances.isOk());
        EXPECT_TRUE(instances.objects.empty());
        EXPECT_EQ(instances.doneCount, 1U);
        const Answer names = enumerateInstanceNames(fcPort);
        EXPECT_TRUE(names.isOk());
        EXPECT_TRUE(names.objects.empty());
        const Answer one = getInstance(fcPort, {{"DeviceID", "A00000"}});
        EXPECT_EQ(one.rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(one.message, "A00000");
        EXPECT_EQ(one.doneCount, 1U);
    }
}

// The request's names come back.

TEST_F(FCPortTest, ObjectsCarryTheClassAndNamespaceOfTheRequest) {
    classes.loadText(implementationNamespace, "class Test_FCPort : Merolt_FCHBA_FCPort {};");
    startWith(storageFunction(1, chip7));
    struct {
        std::string className;
        std::string nameSpace;
    } const requests[] = {
        {"Test_FCPort", "root/merolt_cmpi"},
        {"merolt_fchba_FCPORT", "root/merolt_cmpi"},
        {"Merolt_FCHBA_FCPort", "root/elsewhere"},
    };
    for (const auto& [className, nameSpace] : requests) {
        std::vector<TestObject> objects = enumerateInstanceNames(className, nameSpace).objects;
        const Answer instances = enumerateInstances(className, std::nullopt, nameSpace);
        const Answer one = getInstance(className, {{"DeviceID", keyOf("A00000", 1)}}, std::nullopt, nameSpace);
        objects.insert(objects.end(), instances.objects.begin(), instances.objects.end());
        objects.insert(objects.end(), one.objects.begin(), one.objects.end());
        EXPECT_EQ(objects.size(), 3U) << className;
        for (const TestObject& object : objects) {
            EXPECT_EQ(object.className, className);
            EXPECT_EQ(object.nameSpace, nameSpace);
            EXPECT_EQ(object["CreationClassName"], "string \"Merolt_FCHBA_FCPort\"");
        }
    }
}

// One port by its key.

TEST_F(FCPortTest, KeyInAnotherLetterCaseFindsThePort) {
    tavikLibrary.setFleet(fleet({card("A00007", {storageFunction(1, chip7), storageFunction(2, chip7)})}));
    start();
    std::string key = keyOf("A00007", 2);
    std::transform(key.begin(), key.end(), key.begin(), [](unsigned char letter) { return std::tolower(letter); });
    const Answer answer = getInstance(fcPort, {{"DeviceID", key}});
    EXPECT_TRUE(answer.isOk());
    EXPECT_EQ(answer.all("DeviceNumber"), Names{"uint16 2"});
    EXPECT_EQ(answer.all("DeviceID"), Names{inQuotes(keyOf("A00007", 2))});
}

TEST_F(FCPortTest, OnlyTheDeviceIDOfThePathIsLookedAt) {
    startWith(storageFunction(1, chip7));
    const Answer answer = getInstance(fcPort, {{"SystemName", "another"}, {"DeviceID", keyOf("A00000", 1)}});
    EXPECT_TRUE(answer.isOk());
    EXPECT_EQ(answer.objects.size(), 1U);
}

TEST_F(FCPortTest, UnknownKeyEndsAsNotFoundWithTheKeyAsMessage) {
    startWith(storageFunction(1, chip7));
    const std::string almost = keyOf("A00000", 1) + " ";
    const Answer answer = getInstance(fcPort, {{"DeviceID", almost}});
    EXPECT_EQ(answer.rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(answer.message, almost);
    EXPECT_TRUE(answer.objects.empty());
    EXPECT_EQ(answer.doneCount, 1U);
}

TEST_F(FCPortTest, NumericKeyEndsAsSuccessWithoutAnInstance) {
    switchLogsOn();
    startWith(storageFunction(1, chip7));
    const Answer answer = getInstanceByNumber(fcPort, "DeviceID", 7);
    EXPECT_TRUE(answer.isOk());
    EXPECT_TRUE(answer.objects.empty());
    EXPECT_EQ(answer.doneCount, 1U);
    // Servers hand every whole number out as a signed 64-bit one.
    EXPECT_TRUE(logHas("getInstance_FCPort: Error invalid key data type, keyData.type=240!"));
}

TEST_F(FCPortTest, MissingKeyEndsAsSuccessWithoutAnInstance) {
    switchLogsOn();
    startWith(storageFunction(1, chip7));
    const Answer answer = getInstance(fcPort, {{"SystemName", "192.0.2.10"}});
    EXPECT_TRUE(answer.isOk());
    EXPECT_TRUE(answer.objects.empty());
    EXPECT_TRUE(logHas("getInstance_FCPort: Error getting key data, status.rc=6!"));
}

// State, type and speed.

struct StateRow {
    std::uint8_t state;
    const char* operationalStatus;
    const char* deviceStatus;
    const char* logLine;
};

void PrintTo(const StateRow& row, std::ostream* stream) { *stream << "state " << int{row.state}; }

class FCPortStateTest : public FCPortTest, public testing::WithParamInterface<StateRow> {};

TEST_P(FCPortStateTest, ShowsInOperationalAndDeviceStatus) {
    switchLogsOn();
    tavik::StorageFunction function = storageFunction(1, chip7);
    function.property.state = GetParam().state;
    const TestObject port = portOf(function);
    EXPECT_EQ(port["OperationalStatus"], GetParam().operationalStatus);
    EXPECT_EQ(port["DeviceStatus"], GetParam().deviceStatus);
    EXPECT_TRUE(logHas(GetParam().logLine));
}

INSTANTIATE_TEST_SUITE_P(EachState, FCPortStateTest,
                         testing::Values(StateRow{0, "uint16[] {1}", "sint32 0", "Port state - other ..."},
                                         StateRow{1, "uint16[] {2}", "sint32 0", "Port state ok..."},
                                         StateRow{2, "uint16[] {1}", "sint32 0", "Port state - Suspended..."},
                                         StateRow{3, "uint16[] {6}", "sint32 4097", "Port state - Loopdown..."},
                                         StateRow{4, "uint16[] {1}", "sint32 0", "Port state - other ..."},
                                         StateRow{255, "uint16[] {1}", "sint32 0", "Port state - other ..."}));

TEST_F(FCPortTest, EachAnswerShowsTheCurrentState) {
    tavik::StorageFunction function = storageFunction(1, chip7);
    function.property.state = tavik::PortLoopDown;
    EXPECT_EQ(portOf(function)["DeviceStatus"], "sint32 4097");
    tavikLibrary.storage(1).property.state = tavik::PortSuspended;
    const TestObject suspended = onlyInstance(fcPort);
    EXPECT_EQ(suspended["OperationalStatus"], "uint16[] {1}");
    EXPECT_EQ(suspended["DeviceStatus"], "sint32 0");
    tavikLibrary.storage(1).property.state = tavik::PortOperational;
    EXPECT_EQ(onlyInstance(fcPort)["OperationalStatus"], "uint16[] {2}");
}

TEST_F(FCPortTest, StatusWordOfTheDeviceFollowsThePort) {
    tavik::StorageFunction function = storageFunction(1, chip7);
    function.property.state = tavik::PortLoopDown;
    startWith(function);
    EXPECT_EQ(record().statusFlags, 0x1001U);
    record().statusFlags = 0xFFFFFFFF;
    tavikLibrary.storage(1).property.state = tavik::PortOperational;
    enumerateInstances(fcPort);
    EXPECT_EQ(record().statusFlags, 0U);
}

TEST_F(FCPortTest, PortWithoutPropertyIsThereWithUnknownStatusAndTheSpeedOfItsChip) {
    tavik::StorageFunction function = storageFunction(1, chip12);
    function.property.state = tavik::PortLoopDown;
    function.property.speedCode = 8;
    function.failures.portProperty = 7;
    const TestObject port = portOf(function);
    EXPECT_EQ(port["OperationalStatus"], "uint16[] {0}");
    EXPECT_EQ(port["PortType"], "uint16 0");
    EXPECT_EQ(port["Speed"], "uint64 0");
    EXPECT_EQ(port["SpeedDescription"], "string \"\"");
    EXPECT_EQ(port["MaxSpeed"], "uint64 8500000000");
    EXPECT_EQ(port["DeviceStatus"], "sint32 0");
    tavikLibrary.storage(1).failures.portProperty = 0;
    EXPECT_EQ(onlyInstance(fcPort)["OperationalStatus"], "uint16[] {6}");
}

struct TypeRow {
    std::uint8_t code;
    const char* portType;
};

void PrintTo(const TypeRow& row, std::ostream* stream) { *stream << "type code " << int{row.code}; }

class FCPortTypeTest : public FCPortTest, public testing::WithParamInterface<TypeRow> {};

TEST_P(FCPortTypeTest, ShowsInPortType) {
    tavik::StorageFunction function = storageFunction(1, chip7);
    function.property.portType = GetParam().code;
    EXPECT_EQ(portOf(function)["PortType"], GetParam().portType);
}

INSTANTIATE_TEST_SUITE_P(EachCode, FCPortTypeTest,
                         testing::Values(TypeRow{0, "uint16 0"}, TypeRow{1, "uint16 10"}, TypeRow{2, "uint16 11"},
                                         TypeRow{3, "uint16 12"}, TypeRow{4, "uint16 13"}, TypeRow{5, "uint16 15"},
                                         TypeRow{6, "uint16 16"}, TypeRow{7, "uint16 1"}, TypeRow{8, "uint16 14"},
                                         TypeRow{9, "uint16 17"}, TypeRow{10, "uint16 0"}, TypeRow{255, "uint16 0"}));

struct SpeedRow {
    std::uint32_t code;
    std::uint16_t pciDeviceId;
    const char* speed;
    const char* description;
};

void PrintTo(const SpeedRow& row, std::ostream* stream) {
    *stream << "speed code " << row.code << " on " << std::hex << row.pciDeviceId;
}

class FCPortSpeedTest : public FCPortTest, public testing::WithParamInterface<SpeedRow> {};

TEST_P(FCPortSpeedTest, ShowsInBitsPerSecond) {
    tavik::StorageFunction function = storageFunction(1, GetParam().pciDeviceId);
    function.property.speedCode = GetParam().code;
    const TestObject port = portOf(function);
    EXPECT_EQ(port["Speed"], GetParam().speed);
    EXPECT_EQ(port["SpeedDescription"], inQuotes(GetParam().description));
}

INSTANTIATE_TEST_SUITE_P(
    EachCode, FCPortSpeedTest,
    testing::Values(
        SpeedRow{1, chip7, "uint64 1062500000", "See Speed"}, SpeedRow{2, chip7, "uint64 2125000000", "See Speed"},
        SpeedRow{3, chip7, "uint64 0", "Auto Negotiate"}, SpeedRow{4, chip7, "uint64 4250000000", "See Speed"},
        SpeedRow{8, chip7, "uint64 8500000000", "See Speed"}, SpeedRow{10, chip7, "uint64 10625000000", "See Speed"},
        SpeedRow{16, chip24, "uint64 17000000000", "See Speed"},
        SpeedRow{16, unknownChip, "uint64 17000000000", "See Speed"},
        SpeedRow{16, 0xA121, "uint64 10625000000", "See Speed"},
        SpeedRow{16, 0xA123, "uint64 10625000000", "See Speed"},
        SpeedRow{16, 0xA127, "uint64 10625000000", "See Speed"},
        SpeedRow{16, 0xA132, "uint64 10625000000", "See Speed"},
        SpeedRow{16, 0xA133, "uint64 10625000000", "See Speed"}, SpeedRow{8, chip21, "uint64 8500000000", "See Speed"},
        SpeedRow{0, chip7, "uint64 0", "See Speed"}, SpeedRow{5, chip7, "uint64 0", "See Speed"},
        SpeedRow{32, chip7, "uint64 0", "See Speed"}, SpeedRow{0x10001, chip7, "uint64 0", "See Speed"}));

struct MaxSpeedRow {
    std::uint16_t pciDeviceId;
    const char* maxSpeed;
};

void PrintTo(const MaxSpeedRow& row, std::ostream* stream) { *stream << std::hex << row.pciDeviceId; }

class FCPortMaxSpeedTest : public FCPortTest, public testing::WithParamInterface<MaxSpeedRow> {};

TEST_P(FCPortMaxSpeedTest, IsThatOfTheChip) {
    EXPECT_EQ(portOf(storageFunction(1, GetParam().pciDeviceId))["MaxSpeed"], GetParam().maxSpeed);
}

INSTANTIATE_TEST_SUITE_P(
    EachChip, FCPortMaxSpeedTest,
    testing::Values(MaxSpeedRow{0xA100, "uint64 2125000000"}, MaxSpeedRow{0xA107, "uint64 2125000000"},
                    MaxSpeedRow{0xA110, "uint64 4250000000"}, MaxSpeedRow{0xA111, "uint64 4250000000"},
                    MaxSpeedRow{0xA112, "uint64 4250000000"}, MaxSpeedRow{0xA113, "uint64 4250000000"},
                    MaxSpeedRow{0xA114, "uint64 8500000000"}, MaxSpeedRow{0xA115, "uint64 2125000000"},
                    MaxSpeedRow{0xA120, "uint64 2125000000"}, MaxSpeedRow{0xA121, "uint64 10625000000"},
                    MaxSpeedRow{0xA122, "uint64 2125000000"}, MaxSpeedRow{0xA123, "uint64 10625000000"},
                    MaxSpeedRow{0xA126, "uint64 2125000000"}, MaxSpeedRow{0xA127, "uint64 10625000000"},
                    MaxSpeedRow{0xA129, "uint64 2125000000"}, MaxSpeedRow{0xA130, "uint64 17000000000"},
                    MaxSpeedRow{0xA131, "uint64 17000000000"}, MaxSpeedRow{0xA132, "uint64 10625000000"},
                    MaxSpeedRow{0xA133, "uint64 10625000000"}, MaxSpeedRow{0xA1FF, "uint64 2125000000"}));

// Names and numbers of the device.

TEST_F(FCPortTest, NewPortNameShowsInTheAnswerAfterTheOneThatFetchedIt) {
    startWith(storageFunction(1, chip7));
    tavikLibrary.storage(1).property.portName = worldWideName(0xAB);
    EXPECT_EQ(onlyInstance(fcPort)["PermanentAddress"], "string \"20000002C9000001\"");
    const TestObject port = onlyInstance(fcPort);
    EXPECT_EQ(port["PermanentAddress"], "string \"20000002C90000AB\"");
    EXPECT_EQ(port["DeviceID"], "string \"A00000_20000002C90000F1_20000002C90000AB\"");
}

TEST_F(FCPortTest, ModelThatFillsItsFieldIsShownWhole) {
    startWith(storageFunction(1, chip7));
    std::memset(record().modelName, 'M', sizeof(record().modelName));
    EXPECT_EQ(onlyInstance(fcPort)["Model"], inQuotes(std::string(32, 'M')));
}

class ENodeTest : public FCPortTest, public testing::WithParamInterface<std::uint16_t> {};

TEST_P(ENodeTest, ConvergedFunctionShowsItsAddress) {
    tavik::StorageFunction function = storageFunction(1, GetParam());
    function.eNodeMac = tavik::MacAddress{0, 1, 2, 3, 4, 0xAB};
    EXPECT_EQ(portOf(function)["ENodeMACAddress"], "string \"0001020304AB\"");
}

INSTANTIATE_TEST_SUITE_P(EachConvergedChip, ENodeTest, testing::Values(0xA121, 0xA123, 0xA127, 0xA132, 0xA133));

class NoENodeTest : public FCPortTest, public testing::WithParamInterface<std::uint16_t> {};

TEST_P(NoENodeTest, OtherFunctionShowsNotAvailable) {
    tavik::StorageFunction function = storageFunction(1, GetParam());
    function.eNodeMac = tavik::MacAddress{0, 1, 2, 3, 4, 0xAB};
    EXPECT_EQ(portOf(function)["ENodeMACAddress"], "string \"Not Available\"");
}

INSTANTIATE_TEST_SUITE_P(Neighbours, NoENodeTest,
                         testing::Values(0xA107, 0xA120, 0xA122, 0xA124, 0xA126, 0xA128, 0xA131, 0xA134, 0));

// The serial text, part of the key.

struct SerialBytesRow {
    tavik::Bytes bytes;
    const char* serialText;
};

void PrintTo(const SerialBytesRow& row, std::ostream* stream) { *stream << row.serialText; }

class SerialBytesTest : public FCPortTest, public testing::WithParamInterface<SerialBytesRow> {};

TEST_P(SerialBytesTest, OldChipShowsALetterAndFiveDigits) {
    for (const std::uint16_t chip : {chip0, chip7}) {
        tavik::StorageFunction function = storageFunction(1, chip);
        function.serialNumber = GetParam().bytes;
        // An old chip has no vital product data, whatever the library would deliver.
        function.vpd = tavik::encodeVpd("", {{"SN", "VPD1"}});
        EXPECT_EQ(portOf(function)["DeviceID"], inQuotes(keyOf(GetParam().serialText, 1)));
        stop();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, SerialBytesTest,
    testing::Values(SerialBytesRow{{0x00, 0x39, 0x30}, "A12345"}, SerialBytesRow{{0x00, 0x00, 0x00}, "A00000"},
                    SerialBytesRow{{0x00, 0x01, 0x00}, "A00001"}, SerialBytesRow{{0x00, 0x00, 0x01}, "A00256"},
                    SerialBytesRow{{0x01, 0x9F, 0x86}, "A99999"}, SerialBytesRow{{0x01, 0xA0, 0x86}, "B00000"},
                    SerialBytesRow{{0x27, 0xAC, 0x25}, "Z65548"},
                    SerialBytesRow{{0xFF, 0xFF, 0xFF},
                                   "\xE8"
                                   "77215"}));

struct VpdSerialRow {
    std::vector<tavik::VpdItem> items;
    const char* serialText;
};

void PrintTo(const VpdSerialRow& row, std::ostream* stream) { *stream << '"' << row.serialText << '"'; }

class VpdSerialTest : public FCPortTest, public testing::WithParamInterface<VpdSerialRow> {};

TEST_P(VpdSerialTest, ModernChipShowsTheSerialNumberOfItsVitalProductData) {
    for (const std::uint16_t chip : {chip8, unknownChip}) {
        tavik::StorageFunction function = withVpd(chip, GetParam().items);
        function.serialNumber = tavik::Bytes{'R', 'E', 'C'};
        EXPECT_EQ(portOf(function)["DeviceID"], inQuotes(keyOf(GetParam().serialText, 1)));
        stop();
    }
}

INSTANTIATE_TEST_SUITE_P(Values, VpdSerialTest,
                         testing::Values(VpdSerialRow{{{"SN", "AB1234"}}, "AB1234"},
                                         VpdSerialRow{{{"SN", " AB 1234 "}}, " AB 1234 "},
                                         VpdSerialRow{{{"SN", "AB:12"}}, "AB:12"}, VpdSerialRow{{{"SN", ""}}, ""},
                                         VpdSerialRow{{{"PN", "AB:12"}}, ""},
                                         VpdSerialRow{{{"SN", "first"}, {"SN", "second"}}, "second"}));

struct RecordSerialRow {
    std::uint16_t pciDeviceId;
    const char* serialText;
};

void PrintTo(const RecordSerialRow& row, std::ostream* stream) { *stream << std::hex << row.pciDeviceId; }

class RecordSerialTest : public FCPortTest, public testing::WithParamInterface<RecordSerialRow> {};

TEST_P(RecordSerialTest, ChipWhoseVitalProductDataCannotBeReadShowsTheRecordsSerialNumberIfItHasOne) {
    tavik::StorageFunction function = withVpd(GetParam().pciDeviceId, {{"SN", "VPD1"}});
    function.failures.vpd = 3;
    function.serialNumber = tavik::Bytes{'R', 'E', 'C', '1'};
    EXPECT_EQ(portOf(function)["DeviceID"], inQuotes(keyOf(GetParam().serialText, 1)));
}

INSTANTIATE_TEST_SUITE_P(EachChip, RecordSerialTest,
                         testing::Values(RecordSerialRow{0xA110, "REC1"}, RecordSerialRow{0xA111, "REC1"},
                                         RecordSerialRow{0xA112, "REC1"}, RecordSerialRow{0xA113, "REC1"},
                                         RecordSerialRow{0xA114, ""}, RecordSerialRow{0xA121, ""},
                                         RecordSerialRow{0xA133, ""}, RecordSerialRow{0xA1FF, ""}));

TEST_F(FCPortTest, SerialNumberThatFillsItsFieldInTheRecordIsShownWhole) {
    tavik::StorageFunction function = storageFunction(1, chip8);
    function.serialNumber = tavik::Bytes(32, 'S');
    EXPECT_EQ(portOf(function)["DeviceID"], inQuotes(keyOf(std::string(32, 'S'), 1)));
}

TEST_F(FCPortTest, OverlongSerialNumberIsCutAndStillFound) {
    startWith(withVpd(chip8, {{"SN", std::string(255, 'S')}}));
    const TestObject port = onlyInstance(fcPort);
    EXPECT_EQ(port["DeviceID"], inQuotes(std::string(127, 'S')));
    EXPECT_EQ(port["PermanentAddress"], "string \"20000002C9000001\"");
    EXPECT_EQ(getInstance(fcPort, {{"DeviceID", std::string(127, 'S')}}).objects.size(), 1U);
}

// Vital product data as one text.

TEST_F(FCPortTest, FirstThreeItemsOfTheVitalProductDataStandEvenWhenTheCardHasNone) {
    tavik::StorageFunction function = storageFunction(1, chip8);
    function.vpd = tavik::Bytes{0x78};
    EXPECT_EQ(portOf(function)["VPDData"], "string \";;\"");
}

TEST_F(FCPortTest, ItemsThatTheCardLacksAreLeftOutOfTheVitalProductData) {
    EXPECT_EQ(portOf(withVpd(chip8, {{"SN", "1"}, {"V4", "2.15"}, {"FC", ""}}, "X"))["VPDData"],
              "string \"Product Identifier:X;;Serial Number:1;FC Code:;BIOS Version:2.15\"");
}

TEST_F(FCPortTest, FlashImageVersionIsShownOfConvergedFunctionsOnly) {
    const std::vector<tavik::VpdItem> items = {{"PN", "P"}, {"SN", "S"}, {"V9", "010203"}};
    EXPECT_EQ(portOf(withVpd(chip24, items, "X"))["VPDData"],
              "string \"Product Identifier:X;Part Number:P;Serial Number:S\"");
    stop();
    EXPECT_EQ(portOf(withVpd(chip15, items, "X"))["VPDData"],
              "string \"Product Identifier:X;Part Number:P;Serial Number:S;Flash Image Version:1.2.3\"");
}

TEST_F(FCPortTest, CardShowsNothingOfTheCardBeforeIt) {
    tavik::StorageFunction first = convergedFunction();
    tavik::StorageFunction second = storageFunction(2, chip15);
    second.vpd = tavik::encodeVpd("Y", {{"SN", "2"}});
    tavik::StorageFunction third = storageFunction(3, chip15);
    tavikLibrary.setFleet(fleet({card("S1", {first, second, third})}));
    start();
    const Answer answer = enumerateInstances(fcPort);
    ASSERT_EQ(answer.objects.size(), 3U);
    EXPECT_EQ(answer.objects[1]["VPDData"], "string \"Product Identifier:Y;;Serial Number:2\"");
    EXPECT_EQ(answer.objects[2]["VPDData"], "string \"\"");
    EXPECT_EQ(answer.objects[2]["DeviceID"], inQuotes(keyOf("", 3)));
    EXPECT_EQ(answer.objects[2]["OptionROMVersions"],
              "string \"OptionROM BIOS Version:;OptionROM EFI Version:N/A;OptionROM FCode Version:N/A;OptionROM "
              "Firmware Version:N/A\"");
}

// Option ROM versions as one text.

struct OptionRomRow {
    std::uint16_t pciDeviceId;
    tavik::OptionRom optionRom;
    const char* shown;
};

void PrintTo(const OptionRomRow& row, std::ostream* stream) { *stream << row.shown; }

class OptionRomTest : public FCPortTest, public testing::WithParamInterface<OptionRomRow> {};

TEST_P(OptionRomTest, ShowsTheVersions) {
    tavik::StorageFunction function = storageFunction(1, GetParam().pciDeviceId);
    function.optionRom = GetParam().optionRom;
    EXPECT_EQ(portOf(function)["OptionROMVersions"], inQuotes(GetParam().shown));
}

INSTANTIATE_TEST_SUITE_P(
    EachForm, OptionRomTest,
    testing::Values(
        OptionRomRow{chip5, {"2.15", {{5, 6, 7}}, {{4, 5}}, {{3, 9, 1}}}, ""},
        OptionRomRow{chip6,
                     {"2.15", {{5, 6, 7}}, {{4, 5}}, {{3, 9, 1}}},
                     "OptionROM BIOS Version:2.15;OptionROM EFI Version:4.05;OptionROM FCode Version:3.09.01;OptionROM "
                     "Firmware Version:5.06.07"},
        OptionRomRow{chip7,
                     {"2.15", {{5, 6, 7}}, {{4, 5}}, {{3, 9, 1}}},
                     "OptionROM BIOS Version:2.15;OptionROM EFI Version:4.05;OptionROM FCode Version:3.09.01;OptionROM "
                     "Firmware Version:5.06.07"},
        OptionRomRow{chip8,
                     {"2.15", {{5, 6, 7}}, {{4, 5}}, {{3, 9, 1}}},
                     "OptionROM BIOS Version:2.15;OptionROM EFI Version:4.05;OptionROM FCode Version:3.09;OptionROM "
                     "Firmware Version:5.06.07"},
        OptionRomRow{unknownChip,
                     {"", {{255, 255, 255}}, {{255, 100}}, {{0, 0, 0}}},
                     "OptionROM BIOS Version:;OptionROM EFI Version:255.100;OptionROM FCode Version:0.00;OptionROM "
                     "Firmware Version:255.255.255"},
        OptionRomRow{chip8,
                     {"2.15", std::nullopt, std::nullopt, std::nullopt},
                     "OptionROM BIOS Version:2.15;OptionROM EFI Version:N/A;OptionROM FCode Version:N/A;OptionROM "
                     "Firmware Version:N/A"},
        OptionRomRow{chip8,
                     {"2.15", {{1, 2, 3}}, std::nullopt, std::nullopt},
                     "OptionROM BIOS Version:2.15;OptionROM EFI Version:N/A;OptionROM FCode Version:N/A;OptionROM "
                     "Firmware Version:1.02.03"},
        OptionRomRow{chip8,
                     {"2.15", std::nullopt, {{1, 2}}, std::nullopt},
                     "OptionROM BIOS Version:2.15;OptionROM EFI Version:1.02;OptionROM FCode Version:N/A;OptionROM "
                     "Firmware Version:N/A"},
        OptionRomRow{chip8,
                     {"2.15", std::nullopt, std::nullopt, {{1, 2, 3}}},
                     "OptionROM BIOS Version:2.15;OptionROM EFI Version:N/A;OptionROM FCode Version:1.02;OptionROM "
                     "Firmware Version:N/A"}));

struct BiosRow {
    const char* field;
    const char* shown;
};

void PrintTo(const BiosRow& row, std::ostream* stream) { *stream << '"' << row.shown << '"'; }

class BiosVersionTest : public FCPortTest, public testing::WithParamInterface<BiosRow> {};

TEST_P(BiosVersionTest, ShowsTheTextOfTheFieldWithoutWhatIsNone) {
    tavik::StorageFunction function = storageFunction(1, chip8);
    function.optionRom.biosVersion = GetParam().field;
    EXPECT_EQ(portOf(function)["OptionROMVersions"],
              inQuotes(std::string("OptionROM BIOS Version:") + GetParam().shown +
                       ";OptionROM EFI Version:N/A;OptionROM FCode Version:N/A;OptionROM Firmware Version:N/A"));
}

INSTANTIATE_TEST_SUITE_P(Fields, BiosVersionTest,
                         testing::Values(BiosRow{"2.15 b/~!", "2.15 b/~!"}, BiosRow{" 2.15 ", "2.15 "},
                                         BiosRow{"  2.15", " 2.15"}, BiosRow{"\t2.15", "2.15"},
                                         BiosRow{"\n2\t.\r15", "2\t.\r15"},
                                         BiosRow{"2\x01.1\x7F\x1B"
                                                 "5",
                                                 "2.15"},
                                         BiosRow{"\xC3\xA4"
                                                 "2.15",
                                                 "2.15"},
                                         // The characters that are none go first, and then one white space.
                                         BiosRow{"\x01 2.15", "2.15"}, BiosRow{"\x01\x02", ""}, BiosRow{" ", ""}));

TEST_F(FCPortTest, BiosVersionThatFillsItsFieldIsShownWhole) {
    startWith(storageFunction(1, chip8));
    std::memset(record().optionRomBiosVersion, 'B', sizeof(record().optionRomBiosVersion));
    const std::string shown = onlyInstance(fcPort)["OptionROMVersions"];
    EXPECT_EQ(shown.substr(0, shown.find(';')), "string \"OptionROM BIOS Version:" + std::string(32, 'B'));
}

// With the log off, texts that were made of the same are not made again.

/// One card whose port shows everything that a port can.
tavik::StorageFunction fullFunction() {
    tavik::StorageFunction function = withVpd(chip21, {{"SN", "AB1234"}, {"PN", "P1"}});
    function.modelName = "MC1020";
    function.optionRom = {"2.15", {{3, 1, 4}}, {{5, 9}}, {{2, 6, 5}}};
    return function;
}

struct BentRow {
    const char* what;
    void (*bend)(TAVIK_DeviceRecord& record);
};

void PrintTo(const BentRow& row, std::ostream* stream) { *stream << row.what; }

class BentPortTest : public FCPortTest, public testing::WithParamInterface<BentRow> {
protected:
    std::string shown() { return onlyInstance(fcPort).table(); }
};

TEST_P(BentPortTest, ChangesSinceTheLastRequestAreShown) {
    startWith(fullFunction());
    merolt::gDebugLog = false;
    const std::string before = shown();
    EXPECT_EQ(shown(), before);
    GetParam().bend(record());
    const std::string after = shown();
    EXPECT_NE(after, before);
    merolt::gDebugLog = true;
    EXPECT_EQ(after, shown());
}

INSTANTIATE_TEST_SUITE_P(
    Fields, BentPortTest,
    testing::Values(BentRow{"chip", [](auto& record) { record.pciDeviceId = chip24; }},
                    BentRow{"node name", [](auto& record) { record.nodeName[7] ^= 1; }},
                    BentRow{"model", [](auto& record) { record.modelName[0] = 'X'; }},
                    BentRow{"BIOS version", [](auto& record) { record.optionRomBiosVersion[0] = '9'; }},
                    BentRow{"which versions there are", [](auto& record) { record.optionRomFlags = 0; }},
                    BentRow{"firmware version", [](auto& record) { ++record.firmwareVersion[2]; }},
                    BentRow{"EFI version", [](auto& record) { ++record.efiVersion[1]; }},
                    BentRow{"FCode version", [](auto& record) { ++record.fcodeVersion[1]; }},
                    BentRow{"ENode address", [](auto& record) { record.eNodeMac[5] ^= 1; }},
                    BentRow{"device number", [](auto& record) { ++record.deviceNumber; }}));

TEST_F(FCPortTest, SerialNumberOfAnOldChipThatChangesIsShown) {
    startWith(storageFunction(1, chip7));
    merolt::gDebugLog = false;
    const std::string before = onlyInstance(fcPort)["DeviceID"];
    record().serialNumber[1] = 0x39;
    EXPECT_NE(onlyInstance(fcPort)["DeviceID"], before);
}

TEST_F(FCPortTest, PortNameIsThatOfBeforeTheRequest) {
    startWith(fullFunction());
    merolt::gDebugLog = false;
    const std::string own = onlyInstance(fcPort)["PermanentAddress"];
    record().portProperty.portName[7] ^= 1;
    EXPECT_NE(onlyInstance(fcPort)["PermanentAddress"], own);
    EXPECT_EQ(onlyInstance(fcPort)["PermanentAddress"], own);
}

TEST_F(FCPortTest, VitalProductDataThatChangeAreShown) {
    startWith(fullFunction());
    merolt::gDebugLog = false;
    const std::string before = onlyInstance(fcPort)["VPDData"];
    EXPECT_EQ(onlyInstance(fcPort)["VPDData"], before);
    tavikLibrary.storage(1).vpd = tavik::encodeVpd("Adapter", {{"SN", "AB1234"}, {"PN", "P2"}});
    const std::string after = onlyInstance(fcPort)["VPDData"];
    EXPECT_NE(after.find("Part Number:P2"), std::string::npos) << after;
    tavikLibrary.storage(1).failures.vpd = 77;
    EXPECT_EQ(onlyInstance(fcPort)["VPDData"], inQuotes(""));
    EXPECT_EQ(onlyInstance(fcPort)["DeviceID"], inQuotes(keyOf("", 1)));
    tavikLibrary.storage(1).failures.vpd = 0;
    EXPECT_EQ(onlyInstance(fcPort)["VPDData"], after);
}

TEST_F(FCPortTest, LibraryIsAskedTheSameAgainWhereNothingHasChanged) {
    startWith(fullFunction());
    merolt::gDebugLog = false;
    tavikLibrary.clearCalls();
    onlyInstance(fcPort);
    const std::vector<std::string> first = tavikLibrary.calls();
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_GetVpd"), 1U);
    tavikLibrary.clearCalls();
    onlyInstance(fcPort);
    EXPECT_EQ(tavikLibrary.calls(), first);
}

TEST_F(FCPortTest, SpeedDescriptionOfAPortThatCannotBeReadAnyMoreIsEmpty) {
    startWith(fullFunction());
    merolt::gDebugLog = false;
    EXPECT_EQ(onlyInstance(fcPort)["SpeedDescription"], inQuotes("Auto Negotiate"));
    tavikLibrary.storage(1).failures.portProperty = 1;
    EXPECT_EQ(onlyInstance(fcPort)["SpeedDescription"], inQuotes(""));
}

} // namespace
