// What a client sees of Merolt_FCHBA_PortController: one instance for each card's serial number.
#include "class_support.h"

#include "classes/storage/port_controller.h"

#include <cstring>

using namespace adapters;
using namespace merolt;

namespace {

using Lines = std::vector<std::string>;

constexpr const char* portController = "Merolt_FCHBA_PortController";

class PortControllerTest : public ClassTest {
protected:
    Lines deviceIDs() { return valuesOf(portController, "DeviceID"); }
};

tavik::StorageFunction withENode(tavik::StorageFunction function, std::uint8_t last) {
    function.eNodeMac = tavik::MacAddress{0x0E, 0xFC, 0, 1, 0x0A, last};
    return function;
}

/// The lines that one function's record takes in the log.
Lines linesOfFunction(const Lines& lines, int index) {
    const std::string exit = "Exiting  createPortController";
    Lines part;
    for (const std::string& line : lines) {
        if (part.empty() && line != "Entering createPortController, index = " + std::to_string(index)) continue;
        part.push_back(line);
        if (line.compare(0, exit.size(), exit) == 0) break;
    }
    return part;
}

TEST_F(PortControllerTest, InstanceHasEveryPropertyInTheOrderOfTheClass) {
    startWith({card("S1", {withENode(functionWithVpd(1, {{"SN", "AB1234"}}, chips::chip15), 0xFF)})});
    EXPECT_EQ(asSet(portController), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_FCHBA_PortController"
DeviceID: string "AB1234"
OperationalStatus: uint16[] {1}
StatusDescriptions: string[] {"Review operational status values for corresponding Merolt_FCHBA_FCPort instances"}
ProtocolSupported: uint16 10
ElementName: string "AB1234"
ControllerType: uint16 4
ENodeMACAddress: string "0EFC00010AFF"
)");
    EXPECT_EQ(pathAsSet(portController), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_FCHBA_PortController"
DeviceID: string "AB1234"
)");
}

// Which controllers there are.

TEST_F(PortControllerTest, CardOfTwoPortsIsOneControllerThatStandsForItsFirstFunction) {
    startWith({card("A00007", {nicFunction(1, 1), withENode(storageFunction(1, chips::chip7), 1),
                               withENode(storageFunction(2, chips::chip7), 2)})});
    EXPECT_EQ(deviceIDs(), allInQuotes({"A00007"}));
    EXPECT_EQ(countOf("Merolt_FCHBA_FCPort"), 2U);
    EXPECT_EQ(storage::g_portControllerList[0].device, &record(1));
}

TEST_F(PortControllerTest, FirstFunctionsAddressIsTheCards) {
    const auto function = [](std::uint32_t number, std::uint16_t chip) {
        return withENode(functionWithVpd(number, {{"SN", "AB1"}}, chip), static_cast<std::uint8_t>(number));
    };
    startWith({card("S1", {function(1, chips::chip15), function(2, chips::chip15)})});
    EXPECT_EQ(onlyInstance(portController)["ENodeMACAddress"], inQuotes("0EFC00010A01"));
    refreshTo({card("S1", {function(1, chips::chip8), function(2, chips::chip15)})});
    EXPECT_EQ(onlyInstance(portController)["ENodeMACAddress"], inQuotes("Not Available"));
}

TEST_F(PortControllerTest, CardsOfOneSerialNumberAreOneController) {
    startWith({card("S1", {functionWithVpd(1, {{"SN", "AB1"}})}), card("S2", {functionWithVpd(2, {{"SN", "AB2"}})}),
               card("S3", {functionWithVpd(3, {{"SN", "AB1"}})}), card("S4", {functionWithVpd(4, {{"SN", "AB4"}})})});
    EXPECT_EQ(deviceIDs(), allInQuotes({"AB1", "AB2", "AB4"}));
}

TEST_F(PortControllerTest, SerialNumbersInAnotherLetterCaseAreOtherCardsAndAKeyFindsTheFirst) {
    startWith({card("S1", {functionWithVpd(1, {{"SN", "ab1"}})}), card("S2", {functionWithVpd(2, {{"SN", "AB1"}})})});
    EXPECT_EQ(deviceIDs(), allInQuotes({"ab1", "AB1"}));
    EXPECT_EQ(getInstance(portController, {{"DeviceID", "AB1"}}).all("DeviceID"), allInQuotes({"ab1"}));
}

TEST_F(PortControllerTest, CardsWithoutSerialTextShareOneControllerWithAnEmptyKey) {
    startWith({card("S1", {storageFunction(1, chips::chip12)}), card("S2", {storageFunction(2, chips::unknownChip)})});
    EXPECT_EQ(deviceIDs(), allInQuotes({""}));
    EXPECT_EQ(storage::g_portControllerList[0].device, &record(1));
    EXPECT_EQ(getInstance(portController, {{"DeviceID", ""}}).objects.size(), 1U);
}

TEST_F(PortControllerTest, CardDoesNotShowTheSerialNumberOfTheCardBeforeIt) {
    startWith({card("S1", {functionWithVpd(1, {{"SN", "AB1"}})}), card("S2", {functionWithVpd(2, {{"PN", "P"}})})});
    EXPECT_EQ(deviceIDs(), allInQuotes({"AB1", ""}));
}

struct SerialRow {
    const char* what;
    std::uint16_t pciDeviceId;
    std::uint32_t vpdStatus;
    const char* deviceID;
};

void PrintTo(const SerialRow& row, std::ostream* stream) { *stream << row.what; }

class PortControllerSerialTest : public PortControllerTest, public testing::WithParamInterface<SerialRow> {};

TEST_P(PortControllerSerialTest, DeviceIDIsTheSerialTextOfTheChip) {
    tavik::StorageFunction function = functionWithVpd(1, {{"SN", "VPD1"}}, GetParam().pciDeviceId);
    function.failures.vpd = GetParam().vpdStatus;
    function.serialNumber = tavik::Bytes{0x00, 0x39, 0x30};
    if (GetParam().pciDeviceId > 0xA107) function.serialNumber = tavik::Bytes{'R', 'E', 'C', '1'};
    startWith({card("S1", {function})});
    EXPECT_EQ(deviceIDs(), allInQuotes({GetParam().deviceID}));
}

INSTANTIATE_TEST_SUITE_P(Chips, PortControllerSerialTest,
                         testing::Values(SerialRow{"first chip", 0xA100, 0, "A12345"},
                                         SerialRow{"last old chip", 0xA107, 0, "A12345"},
                                         SerialRow{"VPD", 0xA110, 0, "VPD1"}, SerialRow{"VPD", 0xA113, 0, "VPD1"},
                                         SerialRow{"unknown chip", 0xA1FF, 0, "VPD1"},
                                         SerialRow{"no VPD", 0xA110, 1, "REC1"}, SerialRow{"no VPD", 0xA111, 2, "REC1"},
                                         SerialRow{"no VPD", 0xA112, 3, "REC1"}, SerialRow{"no VPD", 0xA113, 4, "REC1"},
                                         SerialRow{"no text", 0xA114, 1, ""}, SerialRow{"no text", 0xA115, 1, ""},
                                         SerialRow{"no text", 0xA133, 1, ""}, SerialRow{"no text", 0xA1FF, 1, ""}));

// Bad input.

TEST_F(PortControllerTest, OverlongSerialNumberIsCutAndStillFound) {
    startWith({card("S1", {functionWithVpd(1, {{"SN", std::string(255, 'S')}})}),
               card("S2", {functionWithVpd(2, {{"SN", std::string(127, 'S')}})})});
    EXPECT_EQ(deviceIDs(), allInQuotes({std::string(127, 'S')}));
    EXPECT_EQ(getInstance(portController, {{"DeviceID", std::string(127, 'S')}}).objects.size(), 1U);
}

TEST_F(PortControllerTest, SerialNumberThatFillsItsFieldInTheRecordIsShownWhole) {
    tavik::StorageFunction function = storageFunction(1, chips::chip8);
    function.serialNumber = tavik::Bytes(32, 'S');
    startWith({card("S1", {function})});
    EXPECT_EQ(deviceIDs(), allInQuotes({std::string(32, 'S')}));
}

// The log.

TEST_F(PortControllerTest, EachFunctionLogsItsStepsUnderItsPlaceInTheWalk) {
    switchLogsOn();
    const tavik::StorageFunction first = withENode(functionWithVpd(1, {{"SN", "AB1"}}, chips::chip15), 0xFF);
    startWith({card("S1", {first, functionWithVpd(2, {{"SN", "AB1"}})}), card("S2", {storageFunction(3, chips::chip7)}),
               card("S3", {functionWithVpd(4, {{"SN", "A00000"}})})});
    const Lines lines = logLines();
    EXPECT_EQ(linesOfFunction(lines, 0),
              (Lines{"Entering createPortController, index = 0",
                     "Merolt_FC_PortController: createPortController: VPD data retrieved successfully.",
                     "GetDeviceMacAddress: MAC Address=0E:FC:00:01:0A:FF", "Exiting  createPortController"}));
    EXPECT_EQ(linesOfFunction(lines, 1),
              (Lines{"Entering createPortController, index = 1",
                     "Merolt_FC_PortController: createPortController: VPD data retrieved successfully.",
                     "Exiting  createPortController: Current device has the same the serial number as a device in the "
                     "list at index=0. Skip!"}));
    EXPECT_EQ(linesOfFunction(lines, 2),
              (Lines{"Entering createPortController, index = 2",
                     "Merolt_FC_PortController: createPortController: Unable to retrieve VPD data!",
                     "Exiting  createPortController"}));
    // The index is that of the record, which is not that of the walk.
    EXPECT_EQ(linesOfFunction(lines, 3).back(),
              "Exiting  createPortController: Current device has the same the serial number as a device in the list at "
              "index=1. Skip!");
    // Texts that end in a newline leave an empty line.
    EXPECT_TRUE(inOrder(lines, {"Exiting  createPortController", "", "Entering createPortController, index = 1"}));
}

// A request reads the list.

TEST_F(PortControllerTest, RequestsShowTheAdaptersAsOfTheLastBuild) {
    startWith({card("S1", {functionWithVpd(1, {{"SN", "AB1"}})})});
    tavikLibrary.storage(1).vpd = tavik::encodeVpd("Adapter", {{"SN", "AB2"}});
    tavikLibrary.clearCalls();
    EXPECT_EQ(deviceIDs(), allInQuotes({"AB1"}));
    EXPECT_TRUE(tavikLibrary.calls().empty());
    refreshTo({card("S1", {functionWithVpd(1, {{"SN", "AB2"}})})});
    EXPECT_EQ(deviceIDs(), allInQuotes({"AB2"}));
}

// The search that flash updates begin with.

TEST_F(PortControllerTest, SearchFindsTheFirstControllerInAnyLetterCaseWhateverItsFlag) {
    startWith({card("S1", {functionWithVpd(1, {{"SN", "AB0"}})}), card("S2", {functionWithVpd(2, {{"SN", "AB1"}})}),
               card("S3", {functionWithVpd(3, {{"SN", "ab1"}})})});
    storage::g_portControllerList[1].valid = 0;
    std::uint32_t index = 77;
    EXPECT_TRUE(storage::findPortControllerByDeviceID("aB1", &index));
    EXPECT_EQ(index, 1U);
    index = 77;
    EXPECT_FALSE(storage::findPortControllerByDeviceID("AB", &index));
    EXPECT_FALSE(storage::findPortControllerByDeviceID("", &index));
    EXPECT_EQ(index, 77U);
}

} // namespace
