// What a client sees of the SCSI view of a function: protocol controllers and the endpoints on both sides.
#include "class_support.h"

#include "classes/storage/scsi_protocol_endpoint_target.h"

using namespace adapters;
using namespace merolt;

namespace {

using Lines = std::vector<std::string>;

constexpr const char* controller = "Merolt_FCHBA_SCSIProtocolController";
constexpr const char* hbaEndpoint = "Merolt_FCHBA_SCSIProtocolEndpointHBA";
constexpr const char* targetEndpoint = "Merolt_FCHBA_SCSIProtocolEndpointTarget";
constexpr const char* fcPort = "Merolt_FCHBA_FCPort";

class ScsiClassesTest : public ClassTest {
protected:
    Lines targets() { return valuesOf(targetEndpoint, "Name"); }
};

/// A function with targets of these last name bytes.
tavik::StorageFunction functionWithTargets(std::uint32_t number, std::initializer_list<std::uint8_t> lastBytes) {
    tavik::StorageFunction function = storageFunction(number, chips::chip7);
    for (const std::uint8_t last : lastBytes) {
        tavik::Target target;
        target.portName = worldWideName(last);
        function.targets.push_back(target);
    }
    return function;
}

TEST_F(ScsiClassesTest, ControllerHasEveryPropertyInTheOrderOfTheClass) {
    startWith({card("S1", {storageFunction(1, chips::chip7)})});
    EXPECT_EQ(asSet(controller), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_FCHBA_SCSIProtocolController"
DeviceID: string "20000002C9000001"
MaxUnitsControlled: uint32 0
)");
    EXPECT_EQ(pathAsSet(controller), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_FCHBA_SCSIProtocolController"
DeviceID: string "20000002C9000001"
)");
}

TEST_F(ScsiClassesTest, HostsEndpointHasEveryPropertyInTheOrderOfTheClass) {
    startWith({card("S1", {storageFunction(1, chips::chip7)})});
    EXPECT_EQ(asSet(hbaEndpoint), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_FCHBA_SCSIProtocolEndpointHBA"
Name: string "20000002C9000001"
ProtocolIFType: uint16 56
ConnectionType: uint16 2
Role: uint16 2
ElementName: string "20000002C9000001"
OtherTypeDescription: string ""
OperationalStatus: uint16[] {2}
)");
    EXPECT_EQ(pathAsSet(hbaEndpoint), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_FCHBA_SCSIProtocolEndpointHBA"
Name: string "20000002C9000001"
)");
}

TEST_F(ScsiClassesTest, TargetsEndpointHasEveryPropertyInTheOrderOfTheClass) {
    startWith({card("S1", {functionWithTargets(1, {0xAA})})});
    EXPECT_EQ(asSet(targetEndpoint), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_FCHBA_SCSIProtocolEndpointTarget"
Name: string "20000002C9000001_20000002C90000AA"
ProtocolIFType: uint16 56
ConnectionType: uint16 2
Role: uint16 3
ElementName: string "20000002C9000001_20000002C90000AA"
OtherTypeDescription: string ""
OperationalStatus: uint16[] {2}
)");
    EXPECT_EQ(pathAsSet(targetEndpoint), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_FCHBA_SCSIProtocolEndpointTarget"
Name: string "20000002C9000001_20000002C90000AA"
)");
}

TEST_F(ScsiClassesTest, EachStorageFunctionHasOneControllerAndOneEndpointOfItsOwn) {
    tavik::StorageFunction twin = storageFunction(1, chips::chip7);
    twin.handle = 2;
    startWith({card("S1", {storageFunction(1, chips::chip7), nicFunction(1, 1), twin}),
               card("S2", {storageFunction(3, chips::chip8)})});
    const Lines names = allInQuotes({"20000002C9000001", "20000002C9000001", "20000002C9000003"});
    EXPECT_EQ(valuesOf(controller, "DeviceID"), names);
    EXPECT_EQ(valuesOf(hbaEndpoint, "Name"), names);
}

TEST_F(ScsiClassesTest, TargetOfTwoLocalPortsIsThereTwice) {
    startWith({card(
        "S1", {functionWithTargets(1, {0xAA, 0xBB}), functionWithTargets(2, {}), functionWithTargets(3, {0xAA})})});
    EXPECT_EQ(targets(), allInQuotes({"20000002C9000001_20000002C90000AA", "20000002C9000001_20000002C90000BB",
                                      "20000002C9000003_20000002C90000AA"}));
}

TEST_F(ScsiClassesTest, FunctionWithoutTargetsAddsNone) {
    startWith({card("S1", {storageFunction(1, chips::chip7)})});
    EXPECT_EQ(countOf(targetEndpoint), 0U);
    EXPECT_EQ(countOf(hbaEndpoint), 1U);
}

// The library counts the targets by itself.

TEST_F(ScsiClassesTest, TargetsThatAreCountedButNotThereAreEmptyInstancesAtTheEnd) {
    switchLogsOn();
    tavik::StorageFunction function = functionWithTargets(1, {0xAA});
    function.targetCount = 3;
    startWith({card("S1", {function, functionWithTargets(2, {0xBB})})});
    EXPECT_EQ(targets(),
              allInQuotes({"20000002C9000001_20000002C90000AA", "20000002C9000002_20000002C90000BB", "", ""}));
    EXPECT_EQ(enumerateInstanceNames(targetEndpoint).objects.size(), 4U);
    takeLogLines();
    EXPECT_EQ(getInstance(targetEndpoint, {{"Name", ""}}).rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(occurrences(takeLogLines(), "getInstance_SCSIProtocolEndpointTarget: Found a device that has the same "
                                          "Name but the entry is invalid.  Move on..."),
              2U);
}

TEST_F(ScsiClassesTest, TargetsBeyondTheCountAreNotListed) {
    tavik::StorageFunction function = functionWithTargets(1, {0xAA, 0xBB, 0xCC});
    function.targetCount = 2;
    startWith({card("S1", {function})});
    EXPECT_EQ(targets(), allInQuotes({"20000002C9000001_20000002C90000AA", "20000002C9000001_20000002C90000BB"}));
}

TEST_F(ScsiClassesTest, CountsAreOneSumAndATargetTooManyTakesTheNextPortsPlace) {
    tavik::StorageFunction uncounted = functionWithTargets(1, {0xAA, 0xBB});
    uncounted.targetCount = 0;
    startWith({card("S1", {uncounted})});
    EXPECT_EQ(countOf(targetEndpoint), 0U);
    refreshTo({card("S1", {uncounted, functionWithTargets(2, {0xCC})})});
    EXPECT_EQ(targets(), allInQuotes({"20000002C9000001_20000002C90000AA"}));
}

TEST_F(ScsiClassesTest, AbsurdCountsCostBoundedMemory) {
    tavik::StorageFunction first = functionWithTargets(1, {0xAA});
    first.targetCount = 0xFFFFFFFF;
    tavik::StorageFunction second = functionWithTargets(2, {0xBB});
    second.targetCount = 0x80000001;
    startWith({card("S1", {first, second})});
    EXPECT_GE(storage::g_scsiEndpointTargetCount, 2);
    EXPECT_LE(storage::g_scsiEndpointTargetCount, 1 << 16);
    const Answer answer = getInstance(targetEndpoint, {{"Name", "20000002C9000002_20000002C90000BB"}});
    EXPECT_EQ(answer.objects.size(), 1U);
}

// When a list follows the hardware.

TEST_F(ScsiClassesTest, TargetsAreDiscoveredAnewAtEachRequestAndTheOtherListsAreNot) {
    startWith({card("S1", {functionWithTargets(1, {0xAA})})});
    // The tree changes under the lists, as it does while a fabric is discovered.
    tavikLibrary.setFleet(fleet({card("S1", {functionWithTargets(2, {0xBB, 0xCC})})}));
    tavikLibrary.clearCalls();
    EXPECT_EQ(valuesOf(controller, "DeviceID"), allInQuotes({"20000002C9000001"}));
    EXPECT_EQ(valuesOf(hbaEndpoint, "Name"), allInQuotes({"20000002C9000001"}));
    EXPECT_TRUE(tavikLibrary.calls().empty());
    EXPECT_EQ(targets(), allInQuotes({"20000002C9000002_20000002C90000BB", "20000002C9000002_20000002C90000CC"}));
    EXPECT_EQ(enumerateInstanceNames(targetEndpoint).objects.size(), 2U);
    EXPECT_EQ(getInstance(targetEndpoint, {{"Name", "20000002C9000001_20000002C90000AA"}}).rc, CMPI_RC_ERR_NOT_FOUND);
}

TEST_F(ScsiClassesTest, ListsBuiltBeforeThePortsShowTheNamesOfBeforeAndTargetsTheNewOnes) {
    tavik::StorageFunction function = functionWithTargets(1, {0xAA});
    function.treeProperty = function.property;
    function.property.portName = worldWideName(0x77);
    startWith({card("S1", {function})});
    EXPECT_EQ(valuesOf(controller, "DeviceID"), allInQuotes({"20000002C9000001"}));
    EXPECT_EQ(valuesOf(hbaEndpoint, "Name"), allInQuotes({"20000002C9000001"}));
    EXPECT_EQ(std::string(storage::g_scsiEndpointTargetList[0].name.text()), "20000002C9000001_20000002C90000AA");
    // The first build of the ports wrote the new name into the tree; what is built for a request reads it there.
    EXPECT_EQ(targets(), allInQuotes({"20000002C9000077_20000002C90000AA"}));
    EXPECT_EQ(valuesOf(fcPort, "PermanentAddress"), allInQuotes({"20000002C9000077"}));
}

} // namespace
