// What a client sees of Merolt_FCHBA_StorageExtent: each logical unit, read from the tree at the moment of the request.
#include "class_support.h"

#include "classes/storage/storage_extent.h"

#include <cstring>

using namespace adapters;
using namespace merolt;

namespace {

using Lines = std::vector<std::string>;

constexpr const char* extent = "Merolt_FCHBA_StorageExtent";

tavik::Lun lun(std::uint16_t number) {
    tavik::Lun made;
    made.number = number;
    for (std::uint8_t index = 0; index < 16; ++index)
        made.identifier[index] = static_cast<std::uint8_t>(0xA0 + index);
    return made;
}

tavik::Target target(std::uint8_t last, std::vector<tavik::Lun> luns) {
    tavik::Target made;
    made.portName = worldWideName(last);
    made.luns = std::move(luns);
    return made;
}

tavik::StorageFunction functionWith(std::uint32_t number, std::vector<tavik::Target> targets) {
    tavik::StorageFunction function = storageFunction(number, chips::chip7);
    function.targets = std::move(targets);
    return function;
}

class StorageExtentTest : public ClassTest {
protected:
    Lines deviceIDs() { return valuesOf(extent, "DeviceID"); }

    TAVIK_LunEntry& firstLun(std::uint32_t handle) { return *record(handle).firstTarget->firstLun; }
};

/// Key of a unit with an identifier of 8 bytes.
std::string key(int port, const char* targetDigits, int number) {
    return "20000002C900000" + std::to_string(port) + "_20000002C90000" + targetDigits + "_A0A1A2A3A4A5A6A7_" +
           std::to_string(number);
}

TEST_F(StorageExtentTest, InstanceHasEveryPropertyInTheOrderOfTheClass) {
    tavik::Lun unit = lun(65535);
    unit.vendorId = "MEROLT";
    unit.productId = "Virtual Disk";
    unit.productRevision = "1.02";
    unit.blockSize = 0xFFFFFFFF;
    unit.osName = "/dev/sda";
    startWith({card("S1", {functionWith(1, {target(0xAA, {unit})})})});
    EXPECT_EQ(asSet(extent), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_FCHBA_StorageExtent"
DeviceID: string "20000002C9000001_20000002C90000AA_A0A1A2A3A4A5A6A7_65535"
ElementName: string " "
Name: string "/dev/sda"
Access: uint16 3
BlockSize: uint64 4294967295
LunID: uint16 65535
VendorID: string "MEROLT"
ProductID: string "Virtual Disk"
Revision: string "1.02"
RaidType: string "N/A"
NumberOfPartitions: string "N/A"
OperationalStatus: uint16[] {2}
OtherIdentifyingInfo: string[] {"65535"}
IdentifyingDescriptions: string[] {"Lun ID"}
)");
    EXPECT_EQ(pathAsSet(extent), R"(
SystemCreationClassName: string "Merolt_Adapter_ComputerSystem"
SystemName: string "192.0.2.10"
CreationClassName: string "Merolt_FCHBA_StorageExtent"
DeviceID: string "20000002C9000001_20000002C90000AA_A0A1A2A3A4A5A6A7_65535"
)");
}

struct IdentifierRow {
    std::uint8_t length;
    const char* digits;
};

void PrintTo(const IdentifierRow& row, std::ostream* stream) { *stream << int{row.length}; }

class IdentifierTest : public StorageExtentTest, public testing::WithParamInterface<IdentifierRow> {};

TEST_P(IdentifierTest, HasThirtyTwoDigitsForSixteenBytesAndSixteenForAnyOtherLength) {
    tavik::Lun unit = lun(0);
    unit.identifierLength = GetParam().length;
    startWith({card("S1", {functionWith(1, {target(0xAA, {unit})})})});
    EXPECT_EQ(deviceIDs(), allInQuotes({std::string("20000002C9000001_20000002C90000AA_") + GetParam().digits + "_0"}));
}

INSTANTIATE_TEST_SUITE_P(Lengths, IdentifierTest,
                         testing::Values(IdentifierRow{0, "A0A1A2A3A4A5A6A7"}, IdentifierRow{8, "A0A1A2A3A4A5A6A7"},
                                         IdentifierRow{15, "A0A1A2A3A4A5A6A7"},
                                         IdentifierRow{16, "A0A1A2A3A4A5A6A7A8A9AAABACADAEAF"},
                                         IdentifierRow{17, "A0A1A2A3A4A5A6A7"},
                                         IdentifierRow{255, "A0A1A2A3A4A5A6A7"}));

TEST_F(StorageExtentTest, UnitsStandInTheOrderOfTheTreeOncePerLocalPortAndTarget) {
    startWith({card("S1", {functionWith(1, {target(0xAA, {lun(0), lun(1)}), target(0xBB, {lun(0)})}),
                           functionWith(2, {target(0xCC, {}), target(0xAA, {lun(1), lun(0)})})})});
    EXPECT_EQ(deviceIDs(),
              allInQuotes({key(1, "AA", 0), key(1, "AA", 1), key(1, "BB", 0), key(2, "AA", 1), key(2, "AA", 0)}));
}

// The library counts the units by itself.

TEST_F(StorageExtentTest, UnitsThatAreCountedButNotThereAreNotShown) {
    switchLogsOn();
    tavik::Target counted = target(0xAA, {lun(0)});
    counted.lunCount = 3;
    tavik::Target empty = target(0xBB, {});
    empty.lunCount = 2;
    startWith({card("S1", {functionWith(1, {counted, empty, target(0xCC, {lun(0)})})})});
    EXPECT_EQ(deviceIDs(), allInQuotes({key(1, "AA", 0), key(1, "CC", 0)}));
    EXPECT_EQ(enumerateInstanceNames(extent).objects.size(), 2U);
    EXPECT_EQ(storage::g_storageExtentCount, 6) << "the count stays at the sum";
    takeLogLines();
    EXPECT_EQ(getInstance(extent, {{"DeviceID", ""}}).rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(occurrences(takeLogLines(), "getInstance_StorageExtent: Found a device that has the same DeviceID but "
                                          "the entry is invalid.  Move on..."),
              4U);
}

TEST_F(StorageExtentTest, UnitsBeyondTheCountAreNotListed) {
    tavik::Target short_ = target(0xAA, {lun(0), lun(1), lun(2)});
    short_.lunCount = 2;
    startWith({card("S1", {functionWith(1, {short_})})});
    EXPECT_EQ(deviceIDs(), allInQuotes({key(1, "AA", 0), key(1, "AA", 1)}));
}

TEST_F(StorageExtentTest, TargetThatCountsNoUnitsAddsNoRoom) {
    tavik::Target uncounted = target(0xAA, {lun(0)});
    uncounted.lunCount = 0;
    startWith({card("S1", {functionWith(1, {uncounted})})});
    EXPECT_EQ(countOf(extent), 0U);
    // Counts are one sum: a unit too many takes the place of the next target's.
    refreshTo({card("S1", {functionWith(1, {uncounted, target(0xBB, {lun(7)})})})});
    EXPECT_EQ(deviceIDs(), allInQuotes({key(1, "AA", 0)}));
}

TEST_F(StorageExtentTest, TargetsBeyondTheFunctionsTargetCountAreReadAllTheSame) {
    tavik::StorageFunction function = functionWith(1, {target(0xAA, {lun(0)}), target(0xBB, {lun(0)})});
    function.targetCount = 0;
    startWith({card("S1", {function})});
    EXPECT_EQ(countOf(extent), 2U);
}

TEST_F(StorageExtentTest, AbsurdCountsCostBoundedMemory) {
    tavik::Target first = target(0xAA, {lun(0)});
    first.lunCount = 0xFFFFFFFF;
    tavik::Target second = target(0xBB, {lun(0)});
    second.lunCount = 0xFFFFFFFF;
    startWith({card("S1", {functionWith(1, {first, second})})});
    EXPECT_GE(storage::g_storageExtentCount, 2);
    EXPECT_LE(storage::g_storageExtentCount, 1 << 20);
    EXPECT_EQ(deviceIDs(), allInQuotes({key(1, "AA", 0), key(1, "BB", 0)}));
}

// Bad input.

TEST_F(StorageExtentTest, TextsThatFillTheirFieldsAreShownWholeAndTheSystemsNameIsCut) {
    startWith({card("S1", {functionWith(1, {target(0xAA, {lun(0)})})})});
    TAVIK_LunEntry& unit = firstLun(1);
    std::memset(unit.vendorId, 'V', sizeof(unit.vendorId));
    std::memset(unit.productId, 'P', sizeof(unit.productId));
    std::memset(unit.productRevision, 'R', sizeof(unit.productRevision));
    std::memset(unit.osName, 'N', sizeof(unit.osName));
    const TestObject shown = onlyInstance(extent);
    EXPECT_EQ(shown["VendorID"], inQuotes(std::string(8, 'V')));
    EXPECT_EQ(shown["ProductID"], inQuotes(std::string(16, 'P')));
    EXPECT_EQ(shown["Revision"], inQuotes(std::string(5, 'R')));
    EXPECT_EQ(shown["Name"], inQuotes(std::string(127, 'N')));
}

// The list is made for the request.

TEST_F(StorageExtentTest, EachRequestShowsTheUnitsThatAreThere) {
    startWith({card("S1", {functionWith(1, {target(0xAA, {lun(0)})})})});
    firstLun(1).blockSize = 4096;
    EXPECT_EQ(onlyInstance(extent)["BlockSize"], "uint64 4096");
    tavikLibrary.setFleet(fleet({card("S1", {functionWith(2, {target(0xBB, {lun(1), lun(2)})})})}));
    EXPECT_EQ(getInstance(extent, {{"DeviceID", key(1, "AA", 0)}}).rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(getInstance(extent, {{"DeviceID", key(2, "BB", 2)}}).all("LunID"), Lines{"uint16 2"});
    EXPECT_EQ(enumerateInstanceNames(extent).objects.size(), 2U);
    EXPECT_EQ(deviceIDs(), allInQuotes({key(2, "BB", 1), key(2, "BB", 2)}));
}

TEST_F(StorageExtentTest, RequestIsLoggedUnitByUnit) {
    switchLogsOn();
    startWith({card("S1", {functionWith(1, {target(0xAA, {lun(0), lun(1)})})})});
    takeLogLines();
    enumerateInstances(extent);
    EXPECT_EQ(takeLogLines(),
              (Lines{"Entering Merolt_CNA_Provider enumInstances: classname = Merolt_FCHBA_StorageExtent",
                     "Entering createStorageExtent, index = 0", "Exiting  createStorageExtent", "",
                     "Entering createStorageExtent, index = 1", "Exiting  createStorageExtent", "",
                     "Entering enumInstances_StorageExtent", "Exiting  enumInstances_StorageExtent",
                     "Exiting  Merolt_CNA_Provider enumInstances", ""}));
}

} // namespace
