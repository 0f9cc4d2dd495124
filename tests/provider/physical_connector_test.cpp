// What a client sees of Merolt_Adapter_PhysicalConnector: each transceiver module that answers.
#include "class_support.h"

#include "classes/physical/mezzanine.h"
#include "classes/physical/nic_lookup.h"
#include "classes/physical/physical_connector.h"
#include "inventory/cna_list.h"

#include <array>
#include <cstring>
#include <map>
#include <optional>
#include <vector>

using namespace adapters;
using namespace merolt;

namespace {

using Lines = std::vector<std::string>;

constexpr const char* connector = "Merolt_Adapter_PhysicalConnector";

tavik::StorageFunction withModule(std::uint32_t number, const std::string& serialNumber) {
    tavik::StorageFunction function = storageFunction(number, chips::chip7);
    function.transceiver = transceiver(serialNumber);
    return function;
}

tavik::NicFunction nicWithModule(std::uint32_t portId, const std::string& serialNumber) {
    tavik::NicFunction function = nicFunction(1, portId);
    function.transceiver = transceiver(serialNumber);
    return function;
}

/// A card of one port with all the functions on it.
tavik::Card cardOfOnePort(const std::string& serialNumber, std::uint8_t number,
                          std::vector<tavik::Function> functions) {
    tavik::Card made = card(serialNumber, {});
    tavik::Port port;
    port.number = number;
    port.functions = std::move(functions);
    made.ports->push_back(std::move(port));
    return made;
}

class PhysicalConnectorTest : public ClassTest {
protected:
    Lines tags() { return valuesOf(connector, "Tag"); }

    /// What the Ethernet associations find of a port; the path and the instance tell the same.
    std::string joinedTag(CNAPort* port) {
        const ServerScope scope(*broker);
        const std::string tag =
            tagOf(physical::makePath_Nic_PhysicalConnector(connector, implementationNamespace, g_CNAList, port));
        EXPECT_EQ(tagOf(physical::makeInstance_Nic_PhysicalConnector(connector, implementationNamespace, nullptr,
                                                                     g_CNAList, port)),
                  tag);
        return tag;
    }

    /// The Ethernet function at that place of the first card.
    TAVIK_NicFunction& nic(std::size_t port) { return tavikLibrary.tree().function(0, port, 0)->nic; }
};

std::string asArray(const tavik::Bytes& bytes) {
    std::string text = "uint8[] {";
    for (std::size_t index = 0; index < bytes.size(); ++index)
        text += (index > 0 ? ", " : "") + std::to_string(bytes[index]);
    return text + "}";
}

TEST_F(PhysicalConnectorTest, StorageModuleHasEveryPropertyInTheOrderOfTheClass) {
    tavik::StorageFunction function = withModule(1, "SFP1");
    for (std::size_t index = 100; index < 256; ++index) {
        function.transceiver->pageA0[index] = static_cast<std::uint8_t>(index);
        function.transceiver->pageA2[index] = static_cast<std::uint8_t>(255 - index);
    }
    function.property.transceiverKind = 6;
    startWith({cardOfOnePort("S1", 7, {function})});
    EXPECT_EQ(asSet(connector), R"(
CreationClassName: string "Merolt_Adapter_PhysicalConnector"
Tag: string "SFP1_S1_7"
Name: string "Merolt_Adapter_PhysicalConnector"
ElementName: string "Physical Port Connector"
ConnectorLayout: uint16 1
ConnectorDescription: string "SFP"
Manufacturer: string "Merolt Optics"
SerialNumber: string "SFP1"
PartNumber: string "MO-10G-SR"
SFPDataA0: )" + asArray(function.transceiver->pageA0) +
                                    "\nSFPDataA2: " + asArray(function.transceiver->pageA2) +
                                    "\nSFPStatus: uint16 1\n");
    EXPECT_EQ(pathAsSet(connector), R"(
CreationClassName: string "Merolt_Adapter_PhysicalConnector"
Tag: string "SFP1_S1_7"
)");
}

TEST_F(PhysicalConnectorTest, EthernetModuleHasItsTextsEmptyPagesAndAGoodStatus) {
    startWith({cardOfOnePort("S1", 255, {nicWithModule(1, "SFP1")})});
    const std::string zeros = asArray(tavik::Bytes(256, 0));
    EXPECT_EQ(asSet(connector), R"(
CreationClassName: string "Merolt_Adapter_PhysicalConnector"
Tag: string "SFP1_S1_255"
Name: string "Merolt_Adapter_PhysicalConnector"
ElementName: string "Physical Port Connector"
ConnectorLayout: uint16 1
ConnectorDescription: string "SFP"
Manufacturer: string "Merolt Optics"
SerialNumber: string "SFP1"
PartNumber: string "MO-10G-SR"
SFPDataA0: )" + zeros +
                                    "\nSFPDataA2: " + zeros + "\nSFPStatus: uint16 1\n");
}

// Which modules there are.

TEST_F(PhysicalConnectorTest, PortsWithoutAModuleHaveNone) {
    tavik::StorageFunction failing = withModule(1, "SFP1");
    failing.failures.transceiver = 3;
    tavik::StorageFunction empty = storageFunction(2, chips::chip7);
    empty.transceiverReadable = std::uint16_t{1};
    tavik::NicFunction failingNic = nicWithModule(1, "SFP3");
    failingNic.failures.transceiver = 3;
    startWith({card("S1", {failing, empty, failingNic, nicFunction(1, 2), withModule(4, "SFP4")})});
    EXPECT_EQ(tags(), allInQuotes({"SFP4_S1_4"}));
}

TEST_F(PhysicalConnectorTest, FunctionWhoseModuleIsNotReadableIsNeverAskedForIt) {
    for (const std::uint16_t readable : std::initializer_list<std::uint16_t>{0, 2, 256, 257}) {
        tavik::StorageFunction function = withModule(1, "SFP1");
        function.transceiverReadable = readable;
        startWith({card("S1", {function})});
        EXPECT_EQ(countOf(connector), 0U);
        EXPECT_EQ(tavikLibrary.callCount("TAVIK_GetSFPData"), 0U);
        stop();
    }
}

TEST_F(PhysicalConnectorTest, StorageModuleWithoutSerialNumberIsDroppedAndAnEthernetOneKept) {
    startWith({card("S1", {withModule(1, ""), nicWithModule(1, "")})});
    EXPECT_EQ(tags(), allInQuotes({"_S1_1"}));
}

TEST_F(PhysicalConnectorTest, FunctionsOfOnePortShareTheirModule) {
    startWith({cardOfOnePort("S1", 1, {withModule(1, "SFP1"), nicWithModule(1, "SFP1"), withModule(2, "SFP1")}),
               cardOfOnePort("S2", 1, {withModule(3, "SFP1"), withModule(4, "sfp1")})});
    EXPECT_EQ(tags(), allInQuotes({"SFP1_S1_1", "SFP1_S2_1", "sfp1_S2_1"}));
    // A function that comes later has a record when the earlier one's differs in anything.
    EXPECT_EQ(getInstance(connector, {{"Tag", "sfp1_s2_1"}}).all("SerialNumber"), allInQuotes({"SFP1"}));
}

TEST_F(PhysicalConnectorTest, PortsOfOneAdapterWithOnePortNumberAndModuleSerialNumberAreOneConnector) {
    tavik::Card twins = card("S1", {withModule(1, "SFP1"), withModule(2, "SFP1")});
    twins.ports->at(1).number = twins.ports->at(0).number;
    startWith({twins, card("S1", {withModule(3, "SFP1")})});
    EXPECT_EQ(tags(), allInQuotes({"SFP1_S1_0"}));
}

TEST_F(PhysicalConnectorTest, EthernetFunctionTakesTheFirstPortOfItsAddressThatHasAModule) {
    tavik::NicFunction bare = nicFunction(1, 1);
    tavik::NicFunction other = nicWithModule(2, "OTHER");
    tavik::NicFunction twin = nicWithModule(3, "SFP3");
    twin.macAddress = bare.macAddress;
    startWith({card("S1", {bare, other, twin})});
    EXPECT_EQ(tags(), allInQuotes({"SFP3_S1_0", "OTHER_S1_1", "SFP3_S1_2"}));
}

TEST_F(PhysicalConnectorTest, EthernetFunctionLooksAtCardsOfItsAdaptersSerialNumberOnly) {
    tavik::NicFunction other = nicWithModule(1, "SFP1");
    other.card.serialNumber = "s1";
    startWith({card("S1", {other})});
    EXPECT_EQ(countOf(connector), 0U);
    stop();
    // Two cards tell that serial number: the second one has the port.
    tavik::NicFunction first = nicWithModule(1, "SFP1");
    tavik::NicFunction second = nicWithModule(2, "SFP2");
    second.adapterId = 2;
    startWith({card("S1", {first, second})});
    EXPECT_EQ(tags(), allInQuotes({"SFP1_S1_0", "SFP2_S1_1"}));
}

TEST_F(PhysicalConnectorTest, ModuleThatComesOrGoesShowsAfterTheNextBuildOnly) {
    startWith({card("S1", {nicWithModule(1, "SFP1"), withModule(1, "SFP2")})});
    tavikLibrary.nic("eth1").transceiver = std::nullopt;
    tavikLibrary.storage(1).transceiver = std::nullopt;
    services.pass(181);
    EXPECT_EQ(g_CNAList->ports->transceiverPresent, 0);
    tavikLibrary.clearCalls();
    EXPECT_EQ(tags(), allInQuotes({"SFP1_S1_0", "SFP2_S1_1"}));
    EXPECT_TRUE(tavikLibrary.calls().empty());
}

// The texts of a module.

struct FieldRow {
    const char* what;
    std::string field;
    const char* shown;
};

void PrintTo(const FieldRow& row, std::ostream* stream) { *stream << row.what; }

class FieldTest : public PhysicalConnectorTest, public testing::WithParamInterface<FieldRow> {};

TEST_P(FieldTest, IsShownWithoutTheBlanksThatFillIt) {
    tavik::StorageFunction function = withModule(1, "SFP1");
    const std::string& field = GetParam().field;
    std::copy(field.begin(), field.end(), function.transceiver->pageA0.begin() + 20);
    startWith({card("S1", {function})});
    EXPECT_EQ(onlyInstance(connector)["Manufacturer"], inQuotes(GetParam().shown));
}

INSTANTIATE_TEST_SUITE_P(
    Fields, FieldTest,
    testing::Values(FieldRow{"full", "MEROLT OPTICS CO", "MEROLT OPTICS CO"},
                    FieldRow{"blanks at the end", "MEROLT          ", "MEROLT"},
                    FieldRow{"blanks in front", "          MEROLT", "          MEROLT"},
                    FieldRow{"blanks only", std::string(16, ' '), ""}, FieldRow{"no text", std::string(16, '\0'), ""},
                    FieldRow{"a terminator", std::string("MEROLT\0\0\0\0\0\0\0\0\0\0", 16), "MEROLT"},
                    FieldRow{"text behind a terminator", std::string("MEROLT\0OPTICS   ", 16), "MEROLT"}));

struct SizeRow {
    std::uint32_t size;
    const char* manufacturer;
    const char* partNumber;
    const char* serialNumber;
    int firstByte;
};

void PrintTo(const SizeRow& row, std::ostream* stream) { *stream << row.size; }

class SizeTest : public PhysicalConnectorTest, public testing::WithParamInterface<SizeRow> {};

TEST_P(SizeTest, OfTheDataDecidesWhichFieldsAreTaken) {
    std::array<std::uint8_t, 600> buffer{};
    const tavik::Bytes page = transceiver("SFP1").pageA0;
    std::copy(page.begin(), page.end(), buffer.begin());
    physical::PhysicalConnectorEntry module{};
    TAVIK_DeviceRecord device{};
    physical::parseSFPData(&device, buffer.data(), GetParam().size, module);
    EXPECT_STREQ(module.sfp.Manufacturer.text(), GetParam().manufacturer);
    EXPECT_STREQ(module.sfp.PartNumber.text(), GetParam().partNumber);
    EXPECT_STREQ(module.sfp.SerialNumber.text(), GetParam().serialNumber);
    EXPECT_EQ(module.rawData[0], GetParam().firstByte);
}

INSTANTIATE_TEST_SUITE_P(Sizes, SizeTest,
                         testing::Values(SizeRow{0, "", "", "", 0}, SizeRow{35, "", "", "", 0},
                                         SizeRow{36, "Merolt Optics", "", "", 0},
                                         SizeRow{55, "Merolt Optics", "", "", 0},
                                         SizeRow{56, "Merolt Optics", "MO-10G-SR", "", 0},
                                         SizeRow{83, "Merolt Optics", "MO-10G-SR", "", 0},
                                         SizeRow{84, "Merolt Optics", "MO-10G-SR", "SFP1", 0},
                                         SizeRow{511, "Merolt Optics", "MO-10G-SR", "SFP1", 0},
                                         SizeRow{512, "Merolt Optics", "MO-10G-SR", "SFP1", 3},
                                         SizeRow{513, "Merolt Optics", "MO-10G-SR", "SFP1", 0}));

// The status of a module.

TEST_F(PhysicalConnectorTest, ModuleOfAnyKindButSixIsBad) {
    std::vector<tavik::Function> functions;
    std::uint32_t number = 0;
    for (const std::uint16_t kind : std::initializer_list<std::uint16_t>{0, 5, 6, 7, 0x0600, 0xFFFF}) {
        tavik::StorageFunction function = withModule(++number, "SFP");
        function.property.transceiverKind = kind;
        functions.emplace_back(function);
    }
    startWith({card("S1", std::move(functions))});
    EXPECT_EQ(valuesOf(connector, "SFPStatus"),
              (Lines{"uint16 0", "uint16 0", "uint16 1", "uint16 0", "uint16 0", "uint16 0"}));
}

TEST_F(PhysicalConnectorTest, StatusFollowsTheKindOfBeforeThePortsAreRead) {
    tavik::StorageFunction function = withModule(1, "SFP1");
    function.treeProperty = function.property;
    function.property.transceiverKind = 6;
    startWith({card("S1", {function})});
    EXPECT_EQ(onlyInstance(connector)["SFPStatus"], "uint16 0");
    EXPECT_EQ(record(1).portProperty.transceiverKind, 6) << "the ports have been read since";
}

struct MezzanineRow {
    std::uint16_t vendorId;
    std::vector<std::uint16_t> deviceIds;
    const char* text;
};

// clang-format off
const MezzanineRow mezzanines[] = {
    {0x1D5A, {0x0A01, 0x0A02, 0x0A03}, "16G Mezzanine CNA/HBA detected"},
    {0x1D5A, {0x0A04, 0x0A05, 0x0A06, 0x0A07, 0x0A08, 0x0A09, 0x0A0A, 0x0A0B, 0x0A0C, 0x0A0D, 0x0A0E, 0x0A0F}, "8G Mezzanine CNA/HBA detected"},
    {0x103C, {0x0A10, 0x0A11, 0x0A12, 0x0A13, 0x0A14, 0x0A15}, "8G Mezzanine CNA/HBA detected"},
    {0x1137, {0x0A16, 0x0A17}, "8G Mezzanine CNA/HBA detected"},
    {0x1028, {0x0A18}, "8G Mezzanine CNA/HBA detected"},
    {0x1028, {0x0A19, 0x0A1A, 0x0A1B}, "Dell 8G Mezzanine CNA/HBA detected"},
    {0x1D5A, {0x0A1C, 0x0A1D, 0x0A1E, 0x0A1F, 0x0A20, 0x0A21, 0x0A22, 0x0A23, 0x0A24}, "Mezzanine HBA/FibreDown detected"},
    {0x0E11, {0x0A25, 0x0A26, 0x0A27}, "Mezzanine HBA/FibreDown detected"},
    {0x103C, {0x0A28, 0x0A29}, "Mezzanine HBA/FibreDown detected"},
    {0x1D5A, {0x0A2A, 0x0A2B, 0x0A2C}, "Dell Yellowstone platform motherboard 2G"},
};
// clang-format on

TEST_F(PhysicalConnectorTest, MezzanineAdaptersAreKnownByTheirSubsystemAndLogged) {
    // Every other subsystem of these vendors and of two strangers is none.
    std::map<std::uint32_t, std::string> expected;
    for (const MezzanineRow& row : mezzanines) {
        for (const std::uint16_t deviceId : row.deviceIds) {
            char text[128];
            std::snprintf(text, sizeof(text), "%s (SSVID/SSDID = 0x%04x/0x%04x)", row.text, row.vendorId, deviceId);
            expected[std::uint32_t{row.vendorId} << 16 | deviceId] = text;
        }
    }
    switchLogsOn();
    start();
    takeLogLines();
    Lines lines;
    TAVIK_DeviceRecord device{};
    for (const std::uint16_t vendorId :
         std::initializer_list<std::uint16_t>{0x1D5A, 0x103C, 0x1137, 0x1028, 0x0E11, 0xE110, 0x0000}) {
        for (std::uint32_t deviceId = 0; deviceId <= 0xFFFF; ++deviceId) {
            device.pciSubsystemVendorId = vendorId;
            device.pciSubsystemDeviceId = static_cast<std::uint16_t>(deviceId);
            const auto found = expected.find(std::uint32_t{vendorId} << 16 | deviceId);
            ASSERT_EQ(physical::isMezzanineAdapter(&device), found != expected.end() ? 1 : 0);
            if (found != expected.end()) lines.push_back(found->second);
        }
    }
    EXPECT_EQ(physical::isMezzanineAdapter(nullptr), 0);
    EXPECT_EQ(lines.size(), expected.size());
    EXPECT_EQ(takeLogLines(), lines);
}

TEST_F(PhysicalConnectorTest, MezzanineAdaptersModuleIsGoodWhateverItsKind) {
    switchLogsOn();
    tavik::StorageFunction function = withModule(1, "SFP1");
    function.pciSubsystemVendorId = 0x1028;
    function.pciSubsystemDeviceId = 0x0A1A;
    startWith({card("S1", {function})});
    EXPECT_EQ(onlyInstance(connector)["SFPStatus"], "uint16 1");
    EXPECT_TRUE(inOrder(logLines(), {"Entering createPhysicalConnector, index = 0",
                                     "Dell 8G Mezzanine CNA/HBA detected (SSVID/SSDID = 0x1028/0x0a1a)",
                                     "SFPField.PartNumber:   MO-10G-SR"}));
}

// The log.

TEST_F(PhysicalConnectorTest, EachFunctionLogsItsModule) {
    switchLogsOn();
    tavik::StorageFunction without = storageFunction(2, chips::chip7);
    without.transceiverReadable = std::uint16_t{1};
    without.deviceNumber = 65535;
    startWith({cardOfOnePort("S1", 0,
                             {withModule(1, "SFP1"), without, withModule(3, ""), storageFunction(4, chips::chip7),
                              withModule(5, "SFP1"), nicWithModule(1, "SFP1"), nicWithModule(2, "SFP2"),
                              withModule(6, "SFP6")})});
    const Lines lines = linesBetween(logLines(), "Entering createPhysicalConnector, index = 0",
                                     "Entering createPhysicalPort, index = 0");
    const std::string skip = "Exiting  createPhysicalConnector: Current device has the same the serial number as a "
                             "device in the list at index=0. Skip!";
    EXPECT_EQ(lines, (Lines{"Entering createPhysicalConnector, index = 0", "SFPField.PartNumber:   MO-10G-SR",
                            "SFPField.SerialNumber: SFP1", "SFPFIELD.Manufacturer: Merolt Optics",
                            "Exiting  createPhysicalConnector", "", "Entering createPhysicalConnector, index = 1",
                            "No Transceiver on DeviceNumber 65535", "", "Entering createPhysicalConnector, index = 1",
                            "SFPField.PartNumber:   MO-10G-SR",
                            "SFPField.SerialNumber: ", "SFPFIELD.Manufacturer: Merolt Optics",
                            "Empty SerialNumber for the Transceiver on DeviceNumber 3", "",
                            "Entering createPhysicalConnector, index = 1", "SFPField.PartNumber:   MO-10G-SR",
                            "SFPField.SerialNumber: SFP1", "SFPFIELD.Manufacturer: Merolt Optics", skip, "", skip, "",
                            // The second Ethernet function's record is made without a line.
                            "Entering createPhysicalConnector, index = 2", "SFPField.PartNumber:   MO-10G-SR",
                            "SFPField.SerialNumber: SFP6", "SFPFIELD.Manufacturer: Merolt Optics",
                            "Exiting  createPhysicalConnector", "", "Entering createPhysicalPort, index = 0"}));
    EXPECT_EQ(tags(), allInQuotes({"SFP1_S1_0", "SFP2_S1_0", "SFP6_S1_0"}));
}

// Tags and their parts.

struct TagRow {
    const char* tag;
    bool isTag;
    const char* serialNumber;
    const char* adapterSerial;
    std::uint32_t portNumber;
};

void PrintTo(const TagRow& row, std::ostream* stream) { *stream << '"' << row.tag << '"'; }

class ConnectorTagTest : public PhysicalConnectorTest, public testing::WithParamInterface<TagRow> {};

TEST_P(ConnectorTagTest, IsCutAtEachUnderscore) {
    char serialNumber[256] = "before";
    char adapterSerial[256] = "before";
    std::uint32_t portNumber = 77;
    EXPECT_EQ(physical::parsePhysicalConnectorTag(GetParam().tag, serialNumber, adapterSerial, &portNumber),
              GetParam().isTag);
    EXPECT_STREQ(serialNumber, GetParam().serialNumber);
    EXPECT_STREQ(adapterSerial, GetParam().adapterSerial);
    EXPECT_EQ(portNumber, GetParam().portNumber);
}

INSTANTIATE_TEST_SUITE_P(
    Tags, ConnectorTagTest,
    testing::Values(TagRow{"SFP1_S1_7", true, "SFP1", "S1", 7}, TagRow{"SFP1_S1_255_more_7", true, "SFP1", "S1", 255},
                    TagRow{"SFP_1_S1_7", true, "SFP", "1", 0}, TagRow{"SFP1_S1_7x", true, "SFP1", "S1", 7},
                    TagRow{"SFP1_S1_x", true, "SFP1", "S1", 0}, TagRow{"SFP1_S1_", true, "SFP1", "S1", 0},
                    TagRow{"SFP1_S1_-1", true, "SFP1", "S1", 0xFFFFFFFF}, TagRow{"_S1_1", true, "", "S1", 1},
                    TagRow{"__", true, "", "", 0}, TagRow{"SFP1_S1", false, "before", "before", 77},
                    TagRow{"_", false, "before", "before", 77}, TagRow{"SFP1", false, "before", "before", 77},
                    TagRow{"", false, "before", "before", 77}));

TEST_F(PhysicalConnectorTest, OverlongTagIsCutAt255Characters) {
    char serialNumber[256];
    char adapterSerial[256];
    std::uint32_t portNumber = 77;
    const std::string tag = std::string(250, 's') + "_a_12345";
    EXPECT_TRUE(physical::parsePhysicalConnectorTag(tag.c_str(), serialNumber, adapterSerial, &portNumber));
    EXPECT_EQ(serialNumber, std::string(250, 's'));
    EXPECT_EQ(portNumber, 12U);
    EXPECT_FALSE(physical::parsePhysicalConnectorTag((std::string(254, 's') + "_a_1").c_str(), serialNumber,
                                                     adapterSerial, &portNumber));
}

TEST_F(PhysicalConnectorTest, TagIsMadeOfItsPartsAndFitsItsBuffer) {
    char tag[129];
    physical::formatPhysicalConnectorTag(tag, "SFP_1", "S1", -1);
    EXPECT_STREQ(tag, "SFP_1_S1_-1");
    physical::formatPhysicalConnectorTag(tag, std::string(200, 's').c_str(), "S1", 1);
    EXPECT_EQ(tag, std::string(128, 's'));
}

TEST_F(PhysicalConnectorTest, AdaptersSerialNumberThatFillsItsFieldIsPartOfTheTag) {
    prepare({card("S1", {withModule(1, "0123456789abcdef")})});
    std::memset(tavikLibrary.tree().adapter(0)->serialNumber, 'S', 32);
    start();
    EXPECT_EQ(tags(), allInQuotes({"0123456789abcdef_" + std::string(32, 'S') + "_0"}));
}

// How the Ethernet side finds a port's module.

TEST_F(PhysicalConnectorTest, PortIsFoundInTheTreeByItsWholeAddressValue) {
    startWith({card("S1", {withModule(1, "SFP0"), nicWithModule(1, "SFP1"), nicWithModule(2, "SFP2")})});
    CNAPort* port = g_CNAList->ports->next;
    TAVIK_AdapterEntry* adapter = nullptr;
    TAVIK_PhyPortEntry* phyPort = nullptr;
    TAVIK_ProtocolEntry* entry = nullptr;
    ASSERT_TRUE(physical::findAdapterForCNAPort(nullptr, port, &adapter, &phyPort, &entry));
    EXPECT_EQ(adapter, tavikLibrary.tree().adapter(0));
    EXPECT_EQ(phyPort, tavikLibrary.tree().port(0, 2));
    EXPECT_EQ(entry, tavikLibrary.tree().function(0, 2, 0));
    // The two bytes behind the address count too.
    nic(2).port.reserved14[1] = 1;
    EXPECT_FALSE(physical::findAdapterForCNAPort(nullptr, port, &adapter, &phyPort, &entry));
    EXPECT_EQ(adapter, tavikLibrary.tree().adapter(0)) << "outputs stay as they were";
    port->portProperties.reserved14[1] = 1;
    EXPECT_TRUE(physical::findAdapterForCNAPort(nullptr, port, &adapter, &phyPort, &entry));
    // The first entry of the address is taken.
    std::memcpy(nic(1).port.macAddress, nic(2).port.macAddress, 8);
    ASSERT_TRUE(physical::findAdapterForCNAPort(nullptr, port, &adapter, &phyPort, &entry));
    EXPECT_EQ(phyPort, tavikLibrary.tree().port(0, 1));
}

// A walk over all ports reads the tree once.
TEST_F(PhysicalConnectorTest, PortsOfAWalkAreFoundWhereEachAloneIsFound) {
    startWith({card(
        "S1", {withModule(1, "SFP0"), nicWithModule(1, "SFP1"), nicWithModule(2, "SFP2"), nicWithModule(3, "SFP3")})});
    std::memcpy(nic(3).port.macAddress, nic(1).port.macAddress, 8); // the third port has the first one's address
    std::vector<CNAPort*> ports;
    for (CNAPort* port = g_CNAList->ports; port; port = port->next)
        ports.push_back(port);
    ports[2]->portProperties.macAddress[5] = ports[0]->portProperties.macAddress[5];
    const auto placesOf = [](const std::vector<CNAPort*>& wanted) {
        std::vector<std::uint32_t> places;
        for (CNAPort* port : wanted) {
            const std::optional<physical::NicPlace> place = physical::findNicPlace(port);
            places.push_back(place ? place->phyPort->portNumber : 0xFFFF);
        }
        return places;
    };
    CNAPort stranger{};
    // Forwards and backwards, twice each, and one that is nowhere.
    const std::vector<CNAPort*> wanted = {ports[1], ports[0], ports[2], &stranger, ports[1], ports[0]};
    const std::vector<std::uint32_t> alone = placesOf(wanted);
    EXPECT_EQ(alone, (std::vector<std::uint32_t>{2, 1, 1, 0xFFFF, 2, 1}));
    tavikLibrary.clearCalls();
    {
        const physical::PortSearches searches;
        EXPECT_EQ(placesOf(wanted), alone);
        const physical::PortSearches within;
        EXPECT_EQ(placesOf(wanted), alone);
    }
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_GetAdapterList"), 2 * wanted.size());
}

TEST_F(PhysicalConnectorTest, AnotherTreeIsReadAnewAndSoIsEachWalks) {
    startWith({card("S1", {nicWithModule(1, "SFP1"), nicWithModule(2, "SFP2")})});
    CNAPort* port = g_CNAList->ports;
    {
        const physical::PortSearches searches;
        EXPECT_EQ(physical::findNicPlace(port)->phyPort, tavikLibrary.tree().port(0, 0));
        tavikLibrary.setNextFleet(fleet({card("S9", {nicFunction(1, 2), nicFunction(1, 1)})}));
        TAVIK_UpdateBackupAdapterList();
        TAVIK_SwapBackupToMainAdapterList();
        EXPECT_EQ(physical::findNicPlace(port)->phyPort, tavikLibrary.tree().port(0, 1));
    }
    std::memcpy(nic(0).port.macAddress, nic(1).port.macAddress, 8);
    const physical::PortSearches searches;
    EXPECT_EQ(physical::findNicPlace(port)->phyPort, tavikLibrary.tree().port(0, 0));
}

TEST_F(PhysicalConnectorTest, EthernetPortIsJoinedByTheTagOfItsPlaceInTheTree) {
    startWith({card("S1", {withModule(1, "SFP0"), nicWithModule(1, "SFP1"), nicFunction(1, 2)})});
    CNAPort* port = g_CNAList->ports;
    char tag[129] = "before";
    EXPECT_TRUE(physical::calcTag_Nic_PhysicalConnector(nullptr, port, tag));
    EXPECT_STREQ(tag, "SFP1_S1_1");
    EXPECT_EQ(joinedTag(port), "SFP1_S1_1");
    EXPECT_EQ(joinedTag(port->next), "nothing") << "a port without module has a tag and no record";
    EXPECT_TRUE(physical::calcTag_Nic_PhysicalConnector(nullptr, port->next, tag));
    EXPECT_STREQ(tag, "_S1_2");
    // A letter case of its own is another tag.
    port->sfp.SerialNumber.assign("sfp1");
    EXPECT_EQ(joinedTag(port), "nothing");
    port->sfp.SerialNumber.assign("SFP1");
    port->portProperties.macAddress[0] = 0xEE;
    EXPECT_EQ(joinedTag(port), "nothing");
    EXPECT_FALSE(physical::calcTag_Nic_PhysicalConnector(nullptr, port, tag));
    EXPECT_STREQ(tag, "");
}

TEST_F(PhysicalConnectorTest, WithoutTreeNoPortIsFound) {
    startWith({card("S1", {nicWithModule(1, "SFP1")})});
    tavik::Fleet none;
    none.cards = std::nullopt;
    tavikLibrary.setFleet(none);
    char tag[129] = "before";
    EXPECT_FALSE(physical::calcTag_Nic_PhysicalConnector(nullptr, g_CNAList->ports, tag));
    EXPECT_STREQ(tag, "");
    EXPECT_EQ(joinedTag(g_CNAList->ports), "nothing");
}

TEST_F(PhysicalConnectorTest, JoinIsLogged) {
    switchLogsOn();
    startWith({card("S1", {nicWithModule(1, "SFP1")})});
    takeLogLines();
    joinedTag(g_CNAList->ports);
    char tag[129];
    physical::calcTag_Nic_PhysicalConnector(nullptr, g_CNAList->ports, tag);
    EXPECT_EQ(takeLogLines(), (Lines{"Merolt_NIC_PhysicalConnector makePath_PhysicalConnector was called", "",
                                     "Merolt_NIC_PhysicalConnector makeInstance_PhysicalConnector was called", "",
                                     "Merolt_NIC_PhysicalConnector makeInstance_PhysicalConnector was called", ""}));
}

} // namespace
