#include "tavik/tree.h"

#include <gtest/gtest.h>

#include "bytes_at.h"

namespace tavik {

namespace {

using test::bytesAt;
using test::pointerAt;
using test::textAt;
using test::valueAt;

Fleet fleetOf(Card card) { return {{{std::move(card)}}}; }

Fleet fleetOf(Function function, const std::string& serialNumber = "SN1") {
    Card card;
    card.serialNumber = serialNumber;
    card.ports = {{{1, {{std::move(function)}}}}};
    return fleetOf(std::move(card));
}

/** The protocol entry of the fleet's only function. */
const void* onlyEntry(Tree& tree) {
    const void* adapter = pointerAt(tree.list(), 4);
    const void* port = pointerAt(pointerAt(adapter, 5940), 4);
    return pointerAt(pointerAt(port, 3), 4);
}

/** The device record of the fleet's only storage function. */
const void* onlyDevice(Tree& tree) { return static_cast<const char*>(onlyEntry(tree)) + 16; }

TEST(Tree, AFleetWithoutListHasNoHead) {
    Tree tree(Fleet{std::nullopt});
    EXPECT_EQ(tree.list(), nullptr);
    EXPECT_EQ(tree.adapter(0), nullptr);
}

TEST(Tree, AnEmptyFleetHasAHeadAndNoAdapter) {
    Tree tree(Fleet{});
    ASSERT_NE(tree.list(), nullptr);
    EXPECT_EQ(pointerAt(tree.list(), 4), nullptr);
}

TEST(Tree, AdapterFieldsStandAtTheirOffsets) {
    Card card;
    card.serialNumber = "MC1020R4K00317";
    card.kind = 0x01020304;
    card.version = "A4";
    card.modelName = "MC1020";
    Tree tree(fleetOf(card));

    const void* adapter = pointerAt(tree.list(), 4);
    EXPECT_EQ(textAt(adapter, 0, 32), "MC1020R4K00317");
    EXPECT_EQ(bytesAt(adapter, 32, 4), (Bytes{4, 3, 2, 1}));
    EXPECT_EQ(textAt(adapter, 124, 32), "A4");
    EXPECT_EQ(textAt(adapter, 156, 5784), "MC1020");
    EXPECT_NE(pointerAt(adapter, 5940), nullptr);
    EXPECT_EQ(pointerAt(adapter, 5948), nullptr);
}

TEST(Tree, CardsPortsAndFunctionsHangInTheirOrder) {
    Card first, second;
    first.serialNumber = "FIRST";
    second.serialNumber = "SECOND";
    StorageFunction storage;
    storage.handle = 11;
    NicFunction nic;
    nic.adapterId = 22;
    first.ports = {{{1, {{storage, nic}}}, {2, {{nic}}}}};
    Tree tree(Fleet{{{first, second}}});

    const void* adapter = pointerAt(tree.list(), 4);
    EXPECT_EQ(textAt(pointerAt(adapter, 5948), 0, 32), "SECOND");
    const void* port = pointerAt(pointerAt(adapter, 5940), 4);
    EXPECT_EQ(valueAt<std::uint8_t>(port, 0), 1);
    const void* secondPort = pointerAt(port, 11);
    EXPECT_EQ(valueAt<std::uint8_t>(secondPort, 0), 2);
    EXPECT_EQ(pointerAt(secondPort, 11), nullptr);

    const void* storageEntry = pointerAt(pointerAt(port, 3), 4);
    EXPECT_EQ(valueAt<std::uint32_t>(storageEntry, 10451), 0U);
    EXPECT_EQ(valueAt<std::uint32_t>(storageEntry, 16 + 4), 11U);
    const void* nicEntry = pointerAt(storageEntry, 10455);
    EXPECT_EQ(valueAt<std::uint32_t>(nicEntry, 10451), 2U);
    EXPECT_EQ(valueAt<std::uint32_t>(nicEntry, 0), 22U);
    EXPECT_EQ(pointerAt(nicEntry, 10455), nullptr);
}

TEST(Tree, ACardWithoutPortListHasANullPointer) {
    Card card;
    card.ports.reset();
    Tree tree(fleetOf(card));
    EXPECT_EQ(pointerAt(pointerAt(tree.list(), 4), 5940), nullptr);
}

TEST(Tree, APortWithoutFunctionListHasANullPointerAndTheNextPortFollows) {
    Card card;
    card.ports = {{{1, std::nullopt}, {2, {}}}};
    Tree tree(fleetOf(card));
    const void* port = pointerAt(pointerAt(pointerAt(tree.list(), 4), 5940), 4);
    EXPECT_EQ(pointerAt(port, 3), nullptr);
    EXPECT_EQ(valueAt<std::uint8_t>(pointerAt(port, 11), 0), 2);
}

TEST(Tree, APortWithAnEmptyFunctionListHasAHeadWithoutEntry) {
    Card card;
    card.ports = {{{1, std::vector<Function>()}}};
    Tree tree(fleetOf(card));
    const void* port = pointerAt(pointerAt(pointerAt(tree.list(), 4), 5940), 4);
    ASSERT_NE(pointerAt(port, 3), nullptr);
    EXPECT_EQ(pointerAt(pointerAt(port, 3), 4), nullptr);
}

TEST(Tree, DeviceNumbersStandAtTheirOffsets) {
    StorageFunction function;
    function.protocolType = 1;
    function.handle = 0x11223344;
    function.deviceNumber = 0x5566;
    function.pciDeviceId = 0xA127;
    function.pciSubsystemVendorId = 0x1D5A;
    function.pciSubsystemDeviceId = 0x0A01;
    function.transceiverReadable = 0x0102;
    Tree tree(fleetOf(function));

    EXPECT_EQ(valueAt<std::uint32_t>(onlyEntry(tree), 10451), 1U);
    const void* device = onlyDevice(tree);
    EXPECT_EQ(valueAt<std::uint32_t>(device, 0), 0U);
    EXPECT_EQ(bytesAt(device, 4, 4), (Bytes{0x44, 0x33, 0x22, 0x11}));
    EXPECT_EQ(bytesAt(device, 8, 2), (Bytes{0x66, 0x55}));
    EXPECT_EQ(bytesAt(device, 14, 6), (Bytes{0x27, 0xA1, 0x5A, 0x1D, 0x01, 0x0A}));
    EXPECT_EQ(bytesAt(device, 444, 2), (Bytes{0x02, 0x01}));
}

TEST(Tree, DeviceTextsStandAtTheirOffsets) {
    StorageFunction function;
    function.pciDeviceId = 0xA130;
    function.modelName = "MF1602";
    function.serialNumber = Bytes{'S', 'E', 'R'};
    function.driverVersion = "9.4.0";
    function.driverFirmwareVersion = "8.1.0";
    function.optionRom.biosVersion = "3.43";
    Tree tree(fleetOf(function));

    const void* device = onlyDevice(tree);
    EXPECT_EQ(textAt(device, 282, 32), "MF1602");
    EXPECT_EQ(textAt(device, 314, 32), "SER");
    EXPECT_EQ(textAt(device, 346, 32), "9.4.0");
    EXPECT_EQ(textAt(device, 378, 32), "8.1.0");
    EXPECT_EQ(textAt(device, 410, 32), "3.43");
}

TEST(Tree, TextsThatAreTooLongAreCutAndTerminated) {
    StorageFunction function;
    function.modelName = std::string(100, 'M');
    Card card;
    card.serialNumber = std::string(100, 'S');
    card.ports = {{{1, {{function}}}}};
    Tree tree(fleetOf(card));
    EXPECT_EQ(textAt(pointerAt(tree.list(), 4), 0, 32), std::string(31, 'S'));
    EXPECT_EQ(textAt(onlyDevice(tree), 282, 32), std::string(31, 'M'));
}

TEST(Tree, WorldWideNamesStandInTheRecordAndInItsHeader) {
    StorageFunction function;
    function.nodeName = {0x20, 1, 2, 3, 4, 5, 6, 7};
    function.property.portName = {0x21, 1, 2, 3, 4, 5, 6, 7};
    Tree tree(fleetOf(function));
    EXPECT_EQ(bytesAt(onlyDevice(tree), 194, 8), (Bytes{0x20, 1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(bytesAt(onlyDevice(tree), 582, 8), (Bytes{0x21, 1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(bytesAt(onlyEntry(tree), 0, 8), (Bytes{0x20, 1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(bytesAt(onlyEntry(tree), 8, 8), (Bytes{0x21, 1, 2, 3, 4, 5, 6, 7}));
}

TEST(Tree, TheHeaderCanDifferFromTheRecord) {
    StorageFunction function;
    function.nodeName = {0x20};
    function.headerNodeName = WorldWideName{0xAA};
    function.headerPortName = WorldWideName{0xBB};
    Tree tree(fleetOf(function));
    EXPECT_EQ(valueAt<std::uint8_t>(onlyEntry(tree), 0), 0xAA);
    EXPECT_EQ(valueAt<std::uint8_t>(onlyEntry(tree), 8), 0xBB);
    EXPECT_EQ(valueAt<std::uint8_t>(onlyDevice(tree), 194), 0x20);
}

TEST(Tree, ThePortPropertyStandsAtItsOffsets) {
    StorageFunction function;
    function.property = {{0x21, 9}, 2, PortLoopDown, 16, transceiverKindSfp};
    Tree tree(fleetOf(function));
    const void* device = onlyDevice(tree);
    EXPECT_EQ(valueAt<std::uint8_t>(device, 582 + 11), 2);
    EXPECT_EQ(valueAt<std::uint8_t>(device, 582 + 12), 3);
    EXPECT_EQ(valueAt<std::uint32_t>(device, 582 + 50), 16U);
    EXPECT_EQ(valueAt<std::uint16_t>(device, 582 + 54), 6);
}

TEST(Tree, ThePropertyInTheTreeCanDifferFromTheOneThatTheCallDelivers) {
    StorageFunction function;
    function.property.state = PortLoopDown;
    function.treeProperty = function.property;
    function.treeProperty->state = PortOperational;
    Tree tree(fleetOf(function));
    EXPECT_EQ(valueAt<std::uint8_t>(onlyDevice(tree), 582 + 12), PortOperational);
}

TEST(Tree, OptionRomVersionsAndTheirValidBitsStandAtTheirOffsets) {
    StorageFunction function;
    function.optionRom.firmware = {5, 3, 1};
    function.optionRom.efi = {2, 27};
    function.optionRom.fcode = {3, 12, 9};
    Tree tree(fleetOf(function));
    const void* device = onlyDevice(tree);
    EXPECT_EQ(valueAt<std::uint8_t>(device, 454), 7);
    EXPECT_EQ(bytesAt(device, 458, 3), (Bytes{5, 3, 1}));
    EXPECT_EQ(bytesAt(device, 462, 2), (Bytes{2, 27}));
    EXPECT_EQ(bytesAt(device, 466, 3), (Bytes{3, 12, 9}));
}

TEST(Tree, EachAbsentOptionRomVersionClearsItsOwnBit) {
    StorageFunction firmwareOnly, efiOnly, fcodeOnly;
    firmwareOnly.optionRom.firmware = {1, 0, 0};
    efiOnly.optionRom.efi = {1, 0};
    fcodeOnly.optionRom.fcode = {1, 0, 0};
    Tree firmwareTree(fleetOf(firmwareOnly)), efiTree(fleetOf(efiOnly)), fcodeTree(fleetOf(fcodeOnly));
    EXPECT_EQ(valueAt<std::uint8_t>(onlyDevice(firmwareTree), 454), 1);
    EXPECT_EQ(valueAt<std::uint8_t>(onlyDevice(efiTree), 454), 2);
    EXPECT_EQ(valueAt<std::uint8_t>(onlyDevice(fcodeTree), 454), 4);
}

TEST(Tree, ATransceiverMakesTheRecordReadable) {
    StorageFunction with, without;
    with.transceiver.emplace();
    Tree withTree(fleetOf(with)), withoutTree(fleetOf(without));
    EXPECT_EQ(valueAt<std::uint16_t>(onlyDevice(withTree), 444), 1);
    EXPECT_EQ(valueAt<std::uint16_t>(onlyDevice(withoutTree), 444), 0);
}

TEST(Tree, AnOldChipHoldsTheNumberOfItsCardAsThreeBytes) {
    StorageFunction function;
    function.pciDeviceId = 0xA107;
    Tree tree(fleetOf(function, "A12345"));
    EXPECT_EQ(bytesAt(onlyDevice(tree), 314, 4), (Bytes{0x00, 0x39, 0x30, 0x00}));
}

TEST(Tree, ALaterChipHoldsTheSerialNumberOfItsCardAsText) {
    StorageFunction function;
    function.pciDeviceId = 0xA110;
    Tree tree(fleetOf(function, "A12345"));
    EXPECT_EQ(textAt(onlyDevice(tree), 314, 32), "A12345");
}

TEST(Tree, StatisticsAreZeroUntilTheyAreRefreshed) {
    StorageFunction function;
    function.statistics.ioCount = 5;
    Tree tree(fleetOf(function));
    EXPECT_EQ(bytesAt(onlyDevice(tree), 736, 40), Bytes(40, 0));
}

TEST(Tree, StoredStatisticsStandAtTheirOffsets) {
    StorageFunction function;
    function.handle = 3;
    Tree tree(fleetOf(function));
    storeStatistics({1, 2, 3, 4, 5, 6, 7, 8, 9}, *tree.device(3));
    const std::pair<std::size_t, std::uint32_t> fields[] = {{736, 1}, {740, 2}, {744, 3}, {748, 0}, {752, 4},
                                                            {756, 5}, {760, 6}, {764, 7}, {768, 8}, {772, 9}};
    for (const auto& [offset, value] : fields)
        EXPECT_EQ(valueAt<std::uint32_t>(onlyDevice(tree), offset), value) << offset;
}

TEST(Tree, TheENodeAddressOfAConvergedFunctionStandsAtItsOffset) {
    StorageFunction function;
    function.eNodeMac = MacAddress{2, 0x4D, 0x10, 0x31, 0x71, 1};
    Tree tree(fleetOf(function));
    EXPECT_EQ(bytesAt(onlyDevice(tree), 1508, 6), (Bytes{2, 0x4D, 0x10, 0x31, 0x71, 1}));
}

TEST(Tree, TargetsAndTheirUnitsHangInTheirOrder) {
    Lun lun;
    lun.number = 0x0102;
    Target target;
    target.portName = {0x50, 1, 2, 3, 4, 5, 6, 7};
    target.luns = {lun, lun, lun};
    target.luns[1].number = 7;
    StorageFunction function;
    function.targets = {target, Target{}};
    Tree tree(fleetOf(function));

    const void* device = onlyDevice(tree);
    EXPECT_EQ(valueAt<std::uint32_t>(device, 1960), 2U);
    const void* first = pointerAt(device, 1964);
    EXPECT_EQ(bytesAt(first, 8, 8), (Bytes{0x50, 1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(valueAt<std::uint32_t>(first, 215), 3U);
    const void* unit = pointerAt(first, 219);
    EXPECT_EQ(bytesAt(unit, 0, 2), (Bytes{2, 1}));
    EXPECT_EQ(valueAt<std::uint16_t>(pointerAt(unit, 360), 0), 7);
    EXPECT_EQ(pointerAt(pointerAt(pointerAt(unit, 360), 360), 360), nullptr);
    const void* second = pointerAt(first, 315);
    EXPECT_EQ(valueAt<std::uint32_t>(second, 215), 0U);
    EXPECT_EQ(pointerAt(second, 219), nullptr);
    EXPECT_EQ(pointerAt(second, 315), nullptr);
}

TEST(Tree, CountsCanDifferFromTheirChains) {
    Target target;
    target.luns.resize(1);
    target.lunCount = 5;
    StorageFunction function;
    function.targets = {target};
    function.targetCount = 0;
    Tree tree(fleetOf(function));
    EXPECT_EQ(valueAt<std::uint32_t>(onlyDevice(tree), 1960), 0U);
    ASSERT_NE(pointerAt(onlyDevice(tree), 1964), nullptr);
    EXPECT_EQ(valueAt<std::uint32_t>(pointerAt(onlyDevice(tree), 1964), 215), 5U);
}

TEST(Tree, UnitFieldsStandAtTheirOffsets) {
    Lun lun;
    lun.vendorId = "MEROLTXX";
    lun.productId = "SIXTEEN LETTERS!";
    lun.productRevision = "73101";
    lun.identifier = {0x60, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    lun.identifierLength = 16;
    lun.blockSize = 4096;
    lun.osName = "/dev/sdb";
    StorageFunction function;
    function.targets = {{{}, {lun}, {}}};
    Tree tree(fleetOf(function));

    const void* unit = pointerAt(pointerAt(onlyDevice(tree), 1964), 219);
    EXPECT_EQ(bytesAt(unit, 14, 8), (Bytes{'M', 'E', 'R', 'O', 'L', 'T', 'X', 'X'}));
    EXPECT_EQ(bytesAt(unit, 22, 16).back(), '!');
    EXPECT_EQ(textAt(unit, 38, 5), "7310");
    EXPECT_EQ(bytesAt(unit, 43, 16), (Bytes{0x60, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}));
    EXPECT_EQ(valueAt<std::uint8_t>(unit, 75), 16);
    EXPECT_EQ(valueAt<std::uint32_t>(unit, 84), 4096U);
    EXPECT_EQ(textAt(unit, 92, 268), "/dev/sdb");
}

TEST(Tree, CardTextsOfAnEthernetFunctionStandAtTheirOffsets) {
    NicFunction function;
    function.adapterId = 0x01020304;
    function.card = {{2, 1, 2, 3, 4, 5}, "Maker", "MC1020", "OTHER", "2.3.7", "02.01.37", "02.01.38", "00MC102"};
    Tree tree(fleetOf(function));

    const void* entry = onlyEntry(tree);
    EXPECT_EQ(bytesAt(entry, 0, 4), (Bytes{4, 3, 2, 1}));
    EXPECT_EQ(bytesAt(entry, 4, 6), (Bytes{2, 1, 2, 3, 4, 5}));
    EXPECT_EQ(textAt(entry, 12, 64), "Maker");
    EXPECT_EQ(textAt(entry, 76, 32), "MC1020");
    EXPECT_EQ(textAt(entry, 108, 192), "OTHER");
    EXPECT_EQ(textAt(entry, 300, 32), "2.3.7");
    EXPECT_EQ(textAt(entry, 332, 160), "02.01.37");
    EXPECT_EQ(textAt(entry, 492, 312), "02.01.38");
    EXPECT_EQ(textAt(entry, 804, 128), "00MC102");
}

TEST(Tree, AnEthernetFunctionTellsTheSerialNumberOfItsCard) {
    Tree tree(fleetOf(NicFunction{}, "CARD"));
    EXPECT_EQ(textAt(onlyEntry(tree), 108, 192), "CARD");
}

TEST(Tree, PortFieldsOfAnEthernetFunctionStandAtTheirOffsets) {
    NicFunction function;
    function.macAddress = {2, 0x4D, 0x10, 0x31, 0x70, 1};
    function.deviceName = "eth0";
    function.portId = 0x00010002;
    function.link = {10000, LinkTesting};
    function.mtu = 9000;
    Tree tree(fleetOf(function));

    const void* entry = onlyEntry(tree);
    EXPECT_EQ(bytesAt(entry, 7336, 8), (Bytes{2, 0x4D, 0x10, 0x31, 0x70, 1, 0, 0}));
    EXPECT_EQ(textAt(entry, 7328 + 56, 128), "eth0");
    EXPECT_EQ(valueAt<std::uint32_t>(entry, 7328 + 184), 0x00010002U);
    EXPECT_EQ(valueAt<std::uint64_t>(entry, 7328 + 200), 10000U);
    EXPECT_EQ(valueAt<std::uint32_t>(entry, 7328 + 208), 3U);
    EXPECT_EQ(valueAt<std::uint32_t>(entry, 7328 + 372), 9000U);
}

TEST(Tree, VitalProductDataItemsFollowTheirCount) {
    NicFunction function;
    function.vpdItems = {{"PN", "MC1020402-04"}, {"YU", "6f0c2d10"}};
    Tree tree(fleetOf(function));
    const void* entry = onlyEntry(tree);
    EXPECT_EQ(valueAt<std::uint32_t>(entry, 932), 2U);
    EXPECT_EQ(textAt(entry, 936, 3), "PN");
    EXPECT_EQ(textAt(entry, 936 + 4, 209), "MC1020402-04");
    EXPECT_EQ(textAt(entry, 936 + 213, 3), "YU");
    EXPECT_EQ(textAt(entry, 936 + 213 + 4, 209), "6f0c2d10");
}

TEST(Tree, ThirtyVitalProductDataItemsFit) {
    NicFunction function;
    function.vpdItems.assign(40, {"PN", std::string(300, 'x')});
    Tree tree(fleetOf(function));
    const void* entry = onlyEntry(tree);
    EXPECT_EQ(valueAt<std::uint32_t>(entry, 932), 30U);
    EXPECT_EQ(textAt(entry, 936 + 29 * 213 + 4, 209), std::string(208, 'x'));
    EXPECT_EQ(bytesAt(entry, 7328, 8), Bytes(8, 0));
}

TEST(Tree, TheCountOfItemsCanDifferFromTheirNumber) {
    NicFunction function;
    function.vpdItems = {{"PN", "1"}};
    function.vpdItemCount = 0;
    Tree tree(fleetOf(function));
    EXPECT_EQ(valueAt<std::uint32_t>(onlyEntry(tree), 932), 0U);
}

TEST(Tree, AnEntryOfAnOddTypeKeepsItsNumber) {
    StorageFunction function;
    function.protocolType = 77;
    Tree tree(fleetOf(function));
    EXPECT_EQ(valueAt<std::uint32_t>(onlyEntry(tree), 10451), 77U);
}

TEST(Tree, RecordsAreFoundByPlaceAndByHandle) {
    StorageFunction storage;
    storage.handle = 9;
    Tree tree(fleetOf(storage));
    EXPECT_EQ(tree.adapter(0), pointerAt(tree.list(), 4));
    EXPECT_EQ(tree.function(0, 0, 0), onlyEntry(tree));
    EXPECT_EQ(static_cast<const void*>(tree.device(9)), onlyDevice(tree));
    EXPECT_EQ(tree.adapter(1), nullptr);
    EXPECT_EQ(tree.port(0, 1), nullptr);
    EXPECT_EQ(tree.function(0, 0, 1), nullptr);
    EXPECT_EQ(tree.device(8), nullptr);
}

TEST(Tree, RecordsKeepTheirAddressesWhenTheTreeMoves) {
    Tree tree(fleetOf(StorageFunction{}));
    const auto* list = tree.list();
    const auto* entry = tree.function(0, 0, 0);
    Tree moved(std::move(tree));
    EXPECT_EQ(moved.list(), list);
    EXPECT_EQ(moved.function(0, 0, 0), entry);
}

TEST(BinarySerialNumber, PutsTheMiddleByteLast) { EXPECT_EQ(binarySerialNumber(0x123456), (Bytes{0x12, 0x56, 0x34})); }

TEST(BinarySerialNumber, ReadsALetterAndFiveDigits) {
    EXPECT_EQ(binarySerialNumber("A12345"), (Bytes{0x00, 0x39, 0x30}));
    EXPECT_EQ(binarySerialNumber("B00000"), binarySerialNumber(100000));
    EXPECT_EQ(binarySerialNumber("Z99999"), binarySerialNumber(2599999));
}

TEST(BinarySerialNumber, RefusesOtherTexts) {
    for (const char* text : {"", "A1234", "A123456", "a12345", "1A2345", "A12 45", "A-1234"})
        EXPECT_EQ(binarySerialNumber(text), std::nullopt) << text;
}

TEST(PropertyBlock, IsZeroWhereNothingIsKnown) {
    const auto block = makePortPropertyBlock({{}, 0, 0, 0, 0});
    EXPECT_EQ(bytesAt(&block, 0, sizeof block), Bytes(154, 0));
}

TEST(Linkage, FieldsStandAtTheirOffsets) {
    const auto record = makeFCoELinkage({{1, 2, 3, 4, 5, 6, 7, 8}, {9, 10, 11}, {12, 13, 14, 15, 16, 17}});
    EXPECT_EQ(sizeof record, 88U);
    EXPECT_EQ(bytesAt(&record, 0, 8), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(bytesAt(&record, 48, 3), (Bytes{9, 10, 11}));
    EXPECT_EQ(bytesAt(&record, 56, 6), (Bytes{12, 13, 14, 15, 16, 17}));
}

} // namespace

} // namespace tavik
