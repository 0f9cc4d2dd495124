// What a client sees of Merolt_Adapter_PhysicalPackage: each card once, from its first function, under its maker's
// name.
#include "class_support.h"

#include "classes/physical/physical_package.h"
#include "classes/physical/serial_form.h"
#include "inventory/cna_list.h"

#include <cstring>

using namespace adapters;
using namespace merolt;

namespace {

using Items = std::vector<tavik::VpdItem>;
using Lines = std::vector<std::string>;

constexpr const char* package = "Merolt_Adapter_PhysicalPackage";
constexpr const char* oemSerialNumber = "11S1234567ABCDEFGHIJKL";

class PhysicalPackageTest : public ClassTest {
protected:
    Lines tags() { return valuesOf(package, "Tag"); }

    /// What the Ethernet associations find of a card; the path and the instance tell the same.
    std::string joinedTag(CNACard* ofCard) {
        const ServerScope scope(*broker);
        const std::string tag = tagOf(physical::makePath_Nic_PhysicalPackage(package, implementationNamespace, ofCard));
        EXPECT_EQ(tagOf(physical::makeInstance_Nic_PhysicalPackage(package, implementationNamespace, nullptr, ofCard)),
                  tag);
        return tag;
    }

    /// The card's vital product data items of the Ethernet function at that place of the first card, to be bent.
    std::uint8_t* items(std::size_t port = 0) { return tavikLibrary.tree().function(0, port, 0)->nic.functionData; }
};

tavik::Card cardOfKind(std::uint32_t kind, const std::string& serialNumber, std::vector<tavik::Function> functions) {
    tavik::Card made = card(serialNumber, std::move(functions));
    made.kind = kind;
    return made;
}

TEST_F(PhysicalPackageTest, CardOfAStorageFunctionHasEveryPropertyInTheOrderOfTheClass) {
    tavik::StorageFunction function = functionWithVpd(1, {{"SN", "AB1234"}, {"FN", "49Y7952"}, {"YU", "0123-4567"}});
    function.modelName = "MLT-8100";
    startWith({cardOfKind(4, "S1", {function})});
    EXPECT_EQ(asSet(package), R"(
Tag: string "0123-4567"
CreationClassName: string "Merolt_Adapter_PhysicalPackage"
Model: string "MLT-8100"
Manufacturer: string "Merolt Corporation"
SerialNumber: string "AB1234"
SKU: string "49Y7952"
PackageType: uint16 9
Name: string "Merolt CNA Adapter AB1234"
Description: string "Merolt CNA Adapter AB1234"
AdapterType: uint32 3
)");
    EXPECT_EQ(pathAsSet(package), R"(
Tag: string "0123-4567"
CreationClassName: string "Merolt_Adapter_PhysicalPackage"
)");
}

TEST_F(PhysicalPackageTest, OemCardShowsItsPartNumberAndShortSerialNumber) {
    startWith({cardOfKind(2, "S1", {functionWithVpd(1, {{"SN", oemSerialNumber}})})});
    EXPECT_EQ(asSet(package), R"(
Tag: string "11S1234567ABCDEFGHIJKL"
CreationClassName: string "Merolt_Adapter_PhysicalPackage"
Model: string ""
Manufacturer: string "IBM"
SerialNumber: string "ABCDEFGHIJKL"
PartNumber: string "1234567"
PackageType: uint16 9
Name: string "IBM Fibre Channel Adapter ABCDEFGHIJKL"
Description: string "IBM Fibre Channel Adapter ABCDEFGHIJKL"
AdapterType: uint32 1
)");
}

TEST_F(PhysicalPackageTest, CardOfAnEthernetFunctionHasAdapterTypeZeroWhateverItsKind) {
    tavik::NicFunction function = nicFunction(1, 1);
    function.card.modelName = "MLT-8142";
    function.card.defaultFruNumber = "49Y7999";
    function.vpdItems = {{"YU", "89ab-cdef"}};
    startWith({cardOfKind(4, "AB1234", {function})});
    EXPECT_EQ(asSet(package), R"(
Tag: string "89ab-cdef"
CreationClassName: string "Merolt_Adapter_PhysicalPackage"
Model: string "MLT-8142"
Manufacturer: string "Merolt Corporation"
SerialNumber: string "AB1234"
SKU: string "49Y7999"
PackageType: uint16 9
Name: string "Merolt CNA Adapter AB1234"
Description: string "Merolt CNA Adapter AB1234"
AdapterType: uint32 0
)");
    refreshTo({});
    EXPECT_EQ(countOf(package), 0U);
}

// The maker.

struct MakerRow {
    const char* model;
    const char* serialNumber;
    const char* manufacturer;
    const char* shownSerialNumber;
    const char* partNumber; ///< null for none
    const char* name;
};

void PrintTo(const MakerRow& row, std::ostream* stream) {
    *stream << '"' << row.model << "\", \"" << row.serialNumber << '"';
}

class MakerTest : public PhysicalPackageTest, public testing::WithParamInterface<MakerRow> {};

TEST_P(MakerTest, IsKnownByTheModelOrTheFormOfTheSerialNumber) {
    const MakerRow& row = GetParam();
    tavik::StorageFunction function = functionWithVpd(1, {{"SN", row.serialNumber}});
    function.modelName = row.model;
    startWith({cardOfKind(1, "S1", {function})});
    // The first answer trims the record: the second must tell the same.
    for (int request = 0; request < 2; ++request) {
        const TestObject shown = onlyInstance(package);
        EXPECT_EQ(shown["Manufacturer"], inQuotes(row.manufacturer));
        EXPECT_EQ(shown["SerialNumber"], inQuotes(row.shownSerialNumber));
        EXPECT_EQ(shown["PartNumber"], row.partNumber ? inQuotes(row.partNumber) : "absent");
        EXPECT_EQ(shown["Name"], inQuotes(row.name));
        EXPECT_EQ(shown["Description"], inQuotes(row.name));
        EXPECT_EQ(shown["Model"], inQuotes(row.model));
        EXPECT_EQ(shown["Tag"], inQuotes(row.serialNumber));
    }
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(
    Cards, MakerTest,
    testing::Values(
        MakerRow{"MLT-8100", "0123", "Merolt Corporation", "0123", nullptr, "Merolt Fibre Channel Adapter 0123"},
        MakerRow{"ZKM4101", "0123", "IBM", "0123", nullptr, "IBM Fibre Channel Adapter 0123"},
        MakerRow{"ZKM4102", "0123", "IBM", "0123", nullptr, "IBM Fibre Channel Adapter 0123"},
        MakerRow{"ZKM4103", "0123", "IBM", "0123", nullptr, "IBM Fibre Channel Adapter 0123"},
        MakerRow{"ZKM4104", "0123", "IBM", "0123", nullptr, "IBM Fibre Channel Adapter 0123"},
        MakerRow{"zkm4104", "0123", "IBM", "0123", nullptr, "IBM Fibre Channel Adapter 0123"},
        MakerRow{"ZKM4105", "0123", "Merolt Corporation", "0123", nullptr, "Merolt Fibre Channel Adapter 0123"},
        MakerRow{"ZKM4101A", "0123", "Merolt Corporation", "0123", nullptr, "Merolt Fibre Channel Adapter 0123"},
        MakerRow{" ZKM4101", "0123", "Merolt Corporation", "0123", nullptr, "Merolt Fibre Channel Adapter 0123"},
        MakerRow{"MLT-8100", "11S1234567ABCDEFGHIJKL", "IBM", "ABCDEFGHIJKL", "1234567", "IBM Fibre Channel Adapter ABCDEFGHIJKL"},
        MakerRow{"ZKM4101", "11S1234567ABCDEFGHIJKL", "IBM", "ABCDEFGHIJKL", "1234567", "IBM Fibre Channel Adapter ABCDEFGHIJKL"},
        MakerRow{"", " \t11S1234567ABCDEFGHIJKL\t ", "IBM", "ABCDEFGHIJKL", "1234567", "IBM Fibre Channel Adapter ABCDEFGHIJKL"},
        MakerRow{"", "11S1234567ABCDEFGHIJK", "Merolt Corporation", "11S1234567ABCDEFGHIJK", nullptr, "Merolt Fibre Channel Adapter 11S1234567ABCDEFGHIJK"},
        MakerRow{"", "11S1234567ABCDEFGHIJK ", "Merolt Corporation", "11S1234567ABCDEFGHIJK", nullptr, "Merolt Fibre Channel Adapter 11S1234567ABCDEFGHIJK"},
        MakerRow{"", "11S1234567ABCDEFGHIJKLM", "Merolt Corporation", "11S1234567ABCDEFGHIJKLM", nullptr, "Merolt Fibre Channel Adapter 11S1234567ABCDEFGHIJKLM"},
        MakerRow{"", "11s1234567ABCDEFGHIJKL", "Merolt Corporation", "11s1234567ABCDEFGHIJKL", nullptr, "Merolt Fibre Channel Adapter 11s1234567ABCDEFGHIJKL"},
        MakerRow{"", "12S1234567ABCDEFGHIJKL", "Merolt Corporation", "12S1234567ABCDEFGHIJKL", nullptr, "Merolt Fibre Channel Adapter 12S1234567ABCDEFGHIJKL"},
        MakerRow{"", "\t 01 23 ", "Merolt Corporation", "01 23", nullptr, "Merolt Fibre Channel Adapter 01 23"},
        MakerRow{"", " \t ", "Merolt Corporation", "", nullptr, "Merolt Fibre Channel Adapter "},
        MakerRow{"", "", "Merolt Corporation", "", nullptr, "Merolt Fibre Channel Adapter "}));
// clang-format on

TEST_F(PhysicalPackageTest, FormOfASerialNumberIsTestedWithoutChangingTheTextForDisplay) {
    const char text[] = " 11S1234567ABCDEFGHIJKL ";
    EXPECT_STREQ(physical::getDisplaySerialNumber(text), "ABCDEFGHIJKL");
    EXPECT_STREQ(physical::getDisplaySerialNumber(" AB "), "AB");
    EXPECT_STREQ(physical::getDisplaySerialNumber(""), "");
    EXPECT_EQ(std::strlen(physical::getDisplaySerialNumber(std::string(1000, 'S').c_str())), 255U);
    char trimmed[] = "\t11S1234567ABCDEFGHIJKL ";
    EXPECT_TRUE(physical::isIBMSerialNumber(trimmed));
    EXPECT_STREQ(trimmed, oemSerialNumber);
    char empty[] = "";
    EXPECT_FALSE(physical::isIBMSerialNumber(empty));
}

struct KindRow {
    std::uint32_t kind;
    const char* adapterType;
    const char* word;
};

void PrintTo(const KindRow& row, std::ostream* stream) { *stream << row.kind; }

class PackageKindTest : public PhysicalPackageTest, public testing::WithParamInterface<KindRow> {};

TEST_P(PackageKindTest, NumbersTheAdapterTypeOfStorageCardsAndNamesEveryCard) {
    const std::string name = std::string("Merolt ") + GetParam().word + " Adapter A00007";
    startWith({cardOfKind(GetParam().kind, "A00007", {storageFunction(1, chips::chip7)})});
    EXPECT_EQ(onlyInstance(package)["AdapterType"], GetParam().adapterType);
    EXPECT_EQ(onlyInstance(package)["Name"], inQuotes(name));
    stop();
    startWith({cardOfKind(GetParam().kind, "A00007", {nicFunction(1, 1)})});
    EXPECT_EQ(onlyInstance(package)["AdapterType"], "uint32 0");
    EXPECT_EQ(onlyInstance(package)["Name"], inQuotes(name));
}

INSTANTIATE_TEST_SUITE_P(Kinds, PackageKindTest,
                         testing::Values(KindRow{0, "uint32 3", "CNA"}, KindRow{1, "uint32 0", "Fibre Channel"},
                                         KindRow{2, "uint32 1", "Fibre Channel"},
                                         KindRow{3, "uint32 2", "Fibre Channel"}, KindRow{4, "uint32 3", "CNA"},
                                         KindRow{0xFFFFFFFF, "uint32 3", "CNA"}));

// Tag and SKU of a storage function's card.

struct TagRow {
    const char* what;
    std::optional<std::string> i2cUuid;
    Items items;
    std::string tag;
    const char* sku;
};

void PrintTo(const TagRow& row, std::ostream* stream) { *stream << row.what; }

class TagTest : public PhysicalPackageTest, public testing::WithParamInterface<TagRow> {};

TEST_P(TagTest, IsTheCardsUuidOrItsSerialNumber) {
    tavik::StorageFunction function = functionWithVpd(1, GetParam().items);
    function.uuid = GetParam().i2cUuid;
    startWith({card("S1", {function})});
    EXPECT_EQ(onlyInstance(package)["Tag"], inQuotes(GetParam().tag));
    EXPECT_EQ(onlyInstance(package)["SKU"], GetParam().sku ? inQuotes(GetParam().sku) : "absent");
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(
    Cards, TagTest,
    testing::Values(
        TagRow{"nothing but a serial number", std::nullopt, {{"SN", "AB1"}}, "AB1", nullptr},
        TagRow{"a UUID in the VPD", std::nullopt, {{"SN", "AB1"}, {"YU", "1-2"}}, "1-2", nullptr},
        TagRow{"a UUID with a colon", std::nullopt, {{"SN", "AB1"}, {"YU", "1:2"}}, "1:2", nullptr},
        TagRow{"an empty UUID", std::nullopt, {{"SN", "AB1"}, {"YU", ""}}, "AB1", nullptr},
        TagRow{"a UUID of its own call", "i-2-c", {{"SN", "AB1"}, {"YU", "1-2"}}, "i-2-c", nullptr},
        TagRow{"an empty UUID of its own call", "", {{"SN", "AB1"}, {"YU", "1-2"}}, "1-2", nullptr},
        TagRow{"an overlong UUID", std::string(300, 'u'), {{"SN", "AB1"}}, std::string(127, 'u'), nullptr},
        TagRow{"a FRU number", std::nullopt, {{"SN", "AB1"}, {"FN", "49Y7952"}}, "AB1", "49Y7952"},
        TagRow{"a FRU number with a colon", std::nullopt, {{"SN", "AB1"}, {"FN", "49:52"}}, "AB1", "49:52"},
        TagRow{"an empty FRU number", std::nullopt, {{"SN", "AB1"}, {"FN", ""}}, "AB1", nullptr}));
// clang-format on

TEST_F(PhysicalPackageTest, CardWithoutVitalProductDataShowsWhatItsRecordHolds) {
    tavik::StorageFunction broken = functionWithVpd(1, {{"SN", "VPD1"}, {"YU", "1-2"}, {"FN", "F"}});
    broken.serialNumber = tavik::Bytes{'R', 'E', 'C', '1'};
    broken.uuid = "3-4";
    broken.failures = {1, 1, 1, 1, 1, 1, 1};
    startWith({card("S1", {broken})});
    const TestObject shown = onlyInstance(package);
    EXPECT_EQ(shown["Tag"], inQuotes("REC1"));
    EXPECT_EQ(shown["SerialNumber"], inQuotes("REC1"));
    EXPECT_EQ(shown["SKU"], "absent");
}

TEST_F(PhysicalPackageTest, CardShowsNeitherSerialNorFruNumberNorOwnUuidOfTheCardBefore) {
    tavik::StorageFunction first = functionWithVpd(1, {{"SN", "AB1"}, {"FN", "49Y7952"}});
    first.uuid = "i-2-c";
    startWith({card("S1", {first}), card("S2", {functionWithVpd(2, {{"PN", "P"}})})});
    EXPECT_EQ(tags(), allInQuotes({"i-2-c", ""}));
    EXPECT_EQ(valuesOf(package, "SKU"), (Lines{inQuotes("49Y7952"), "absent"}));
    EXPECT_EQ(valuesOf(package, "SerialNumber"), allInQuotes({"AB1", ""}));
}

TEST_F(PhysicalPackageTest, OverlongAndUnterminatedTextsAreCut) {
    prepare({card("S1", {functionWithVpd(1, {{"SN", std::string(255, 'S')}, {"FN", std::string(255, 'F')}})})});
    std::memset(record(1).modelName, 'M', sizeof(record(1).modelName));
    start();
    const TestObject shown = onlyInstance(package);
    EXPECT_EQ(shown["Tag"], inQuotes(std::string(127, 'S')));
    EXPECT_EQ(shown["SerialNumber"], inQuotes(std::string(127, 'S')));
    EXPECT_EQ(shown["SKU"], inQuotes(std::string(127, 'F')));
    EXPECT_EQ(shown["Model"], inQuotes(std::string(32, 'M')));
    EXPECT_EQ(shown["Name"], inQuotes("Merolt CNA Adapter " + std::string(127, 'S')));
    EXPECT_EQ(getInstance(package, {{"Tag", std::string(127, 'S')}}).objects.size(), 1U);
}

// Which packages there are.

TEST_F(PhysicalPackageTest, CardIsMadeFromTheFunctionThatComesFirstInTheTree) {
    const auto storage = [](std::uint32_t number) {
        return functionWithVpd(number, {{"SN", "S1"}, {"YU", "storage"}});
    };
    const auto ethernet = [](std::uint32_t portId) {
        tavik::NicFunction function = nicFunction(1, portId);
        function.vpdItems = {{"YU", "ethernet"}};
        return function;
    };
    startWith({card("S1", {storage(1), ethernet(1), storage(2), ethernet(2)})});
    EXPECT_EQ(tags(), allInQuotes({"storage"}));
    stop();
    startWith({card("S1", {ethernet(1), storage(1), ethernet(2), storage(2)})});
    EXPECT_EQ(tags(), allInQuotes({"ethernet"}));
}

TEST_F(PhysicalPackageTest, AdaptersWithoutKnownFunctionsHaveNone) {
    tavik::StorageFunction unknown = functionWithVpd(1, {{"SN", "AB1"}});
    unknown.protocolType = 3;
    tavik::Card withoutPorts = card("S2", {});
    withoutPorts.ports = std::nullopt;
    startWith({card("S1", {unknown}), withoutPorts, card("S3", {})});
    EXPECT_EQ(countOf(package), 0U);
}

TEST_F(PhysicalPackageTest, CardsOfOneSerialNumberInTheSameLetterCaseAreOne) {
    startWith({card("S1", {functionWithVpd(1, {{"SN", "AB1"}})}), card("S2", {functionWithVpd(2, {{"SN", "AB1"}})}),
               card("S3", {functionWithVpd(3, {{"SN", "ab1"}})}), card("AB1", {functionWithVpd(4, {{"SN", "X"}})}),
               card("ab1", {nicFunction(1, 1)})});
    EXPECT_EQ(tags(), allInQuotes({"AB1", "ab1"}));
    EXPECT_EQ(getInstance(package, {{"Tag", "ab1"}}).all("SerialNumber"), allInQuotes({"AB1"}));
}

TEST_F(PhysicalPackageTest, FunctionsOfOneAdapterThatTellSerialNumbersOfTheirOwnAreAllPackages) {
    std::vector<tavik::Function> functions;
    Lines expected;
    for (std::uint32_t number = 1; number <= 9; ++number) {
        expected.push_back("V" + std::to_string(number));
        functions.emplace_back(functionWithVpd(number, {{"SN", expected.back()}, {"FN", "F" + expected.back()}}));
    }
    functions.emplace_back(nicFunction(1, 1));
    functions.emplace_back(functionWithVpd(10, {{"SN", "V10"}}));
    // The adapter's own serial number is seen with its Ethernet function, and ends the walk of the adapter.
    expected.emplace_back("S1");
    startWith({card("S1", std::move(functions))});
    EXPECT_EQ(valuesOf(package, "SerialNumber"), allInQuotes(expected));
    EXPECT_EQ(valuesOf(package, "SKU")[8], inQuotes("FV9"));
    EXPECT_EQ(getInstance(package, {{"Tag", "V9"}}).objects.size(), 1U);
}

TEST_F(PhysicalPackageTest, EthernetFunctionWhoseCardTellsAnotherSerialNumberHasNone) {
    tavik::NicFunction other = nicFunction(1, 1);
    other.card.serialNumber = "s1";
    startWith({card("S1", {other})});
    EXPECT_EQ(countOf(package), 0U);
    refreshTo({card("S1", {other, functionWithVpd(1, {{"SN", "AB1"}})})});
    EXPECT_EQ(tags(), allInQuotes({"AB1"}));
}

TEST_F(PhysicalPackageTest, FirstCardOfTheListWithTheSerialNumberGivesTheRecord) {
    tavik::NicFunction first = nicFunction(1, 1);
    first.card.serialNumber = "S2";
    first.card.modelName = "first";
    tavik::NicFunction second = nicFunction(2, 2);
    second.card.modelName = "second";
    startWith({card("S1", {first}), card("S2", {second})});
    EXPECT_EQ(valuesOf(package, "Model"), allInQuotes({"first"}));
}

// The items of an Ethernet function's card.

struct ItemsRow {
    const char* what;
    Items items;
    std::optional<std::uint32_t> count;
    const char* tag;
    const char* sku;
};

void PrintTo(const ItemsRow& row, std::ostream* stream) { *stream << row.what; }

class CardItemsTest : public PhysicalPackageTest, public testing::WithParamInterface<ItemsRow> {};

TEST_P(CardItemsTest, GiveTagAndSku) {
    tavik::NicFunction function = nicFunction(1, 1);
    function.card.defaultFruNumber = "FRU";
    function.vpdItems = GetParam().items;
    function.vpdItemCount = GetParam().count;
    startWith({card("S1", {function})});
    EXPECT_EQ(onlyInstance(package)["Tag"], inQuotes(GetParam().tag));
    EXPECT_EQ(onlyInstance(package)["SKU"], GetParam().sku ? inQuotes(GetParam().sku) : "absent");
    EXPECT_EQ(onlyInstance(package)["SerialNumber"], inQuotes("S1"));
    EXPECT_STREQ(physical::calcTag_Nic_PhysicalPackage(g_CNAList).text(), GetParam().tag);
    EXPECT_STREQ(physical::getCardFruNumber(g_CNAList).text(), GetParam().sku ? GetParam().sku : "");
}

Items thirtyItems() {
    Items items(29, {"XX", "x"});
    items.push_back({"YU", "last"});
    return items;
}

INSTANTIATE_TEST_SUITE_P(
    Cards, CardItemsTest,
    testing::Values(ItemsRow{"no items", {}, std::nullopt, "S1", "FRU"},
                    ItemsRow{"other items", {{"SN", "x"}, {"Y", "x"}, {"UY", "x"}}, std::nullopt, "S1", "FRU"},
                    ItemsRow{"both", {{"YU", "1-2"}, {"FN", "49Y"}}, std::nullopt, "1-2", "49Y"},
                    ItemsRow{"the last one wins",
                             {{"YU", "1"}, {"FN", "F1"}, {"YU", "2"}, {"FN", "F2"}, {"PN", "3"}},
                             std::nullopt,
                             "2",
                             "F2"},
                    ItemsRow{"empty values", {{"YU", ""}, {"FN", ""}}, std::nullopt, "", nullptr},
                    ItemsRow{"lower case", {{"yu", "1"}, {"fn", "F"}}, std::nullopt, "S1", "FRU"},
                    ItemsRow{"a count of 0", {{"YU", "1"}, {"FN", "F"}}, 0, "S1", "FRU"},
                    ItemsRow{"a count below the items", {{"YU", "1"}, {"FN", "F"}}, 1, "1", "FRU"},
                    ItemsRow{"a count above the items", {{"YU", "1"}}, 30, "1", "FRU"},
                    ItemsRow{"thirty items", thirtyItems(), std::nullopt, "last", "FRU"},
                    ItemsRow{"an absurd count", thirtyItems(), 0xFFFFFFFF, "last", "FRU"}));

TEST_F(PhysicalPackageTest, OnlyTheFirstPortsItemsCount) {
    tavik::NicFunction second = nicFunction(1, 2);
    second.vpdItems = {{"YU", "second"}, {"FN", "second"}};
    startWith({card("S1", {nicFunction(1, 1), second})});
    EXPECT_EQ(tags(), allInQuotes({"S1"}));
    EXPECT_EQ(onlyInstance(package)["SKU"], "absent");
}

TEST_F(PhysicalPackageTest, ItemsWithoutTerminatorsEndWithTheirFields) {
    constexpr std::size_t itemSize = 213;
    tavik::NicFunction function = nicFunction(1, 1);
    function.vpdItems = {{"YU", ""}, {"FN", ""}};
    prepare({card("S1", {function})});
    std::uint8_t* item = items() + 4;
    std::memset(item + 4, 'u', itemSize - 4);
    item[itemSize + 2] = 'X';
    std::memset(item + itemSize + 4, 'f', 10);
    start();
    EXPECT_EQ(onlyInstance(package)["Tag"], inQuotes(std::string(127, 'u')));
    EXPECT_EQ(onlyInstance(package)["SKU"], "absent") << "a keyword has two characters";
}

TEST_F(PhysicalPackageTest, CardWithoutPortHasNoItems) {
    CNACard lone{};
    std::strcpy(lone.properties.serialNumber, "S1");
    std::strcpy(lone.properties.defaultFruNumber, "FRU");
    EXPECT_STREQ(physical::calcTag_Nic_PhysicalPackage(&lone).text(), "S1");
    EXPECT_STREQ(physical::getCardFruNumber(&lone).text(), "FRU");
}

// How the Ethernet side finds a card's package.

TEST_F(PhysicalPackageTest, EthernetCardIsJoinedByItsSerialNumberInAnyLetterCase) {
    tavik::NicFunction function = nicFunction(1, 1);
    function.card.serialNumber = "ab1";
    startWith({card("S1", {function, functionWithVpd(1, {{"SN", "AB1"}, {"YU", "1-2"}})}),
               card("S2", {functionWithVpd(2, {{"SN", "ab1"}, {"YU", "3-4"}})})});
    EXPECT_EQ(joinedTag(g_CNAList), "1-2");
    std::strcpy(g_CNAList->properties.serialNumber, "AB");
    EXPECT_EQ(joinedTag(g_CNAList), "nothing");
}

TEST_F(PhysicalPackageTest, JoinIsLogged) {
    switchLogsOn();
    startWith({card("S1", {nicFunction(1, 1)})});
    takeLogLines();
    joinedTag(g_CNAList);
    EXPECT_EQ(takeLogLines(), (Lines{"Merolt_NIC_PhysicalPackage makePath_PhysicalPackage was called",
                                     "Merolt_NIC_PhysicalPackage makeInstance_PhysicalPackage was called"}));
}

TEST_F(PhysicalPackageTest, InstanceTrimsTheSerialNumberOfTheRecordAndTheJoinIsLost) {
    startWith({card(" S1 ", {nicFunction(1, 1)})});
    {
        const ServerScope scope(*broker);
        EXPECT_EQ(tagOf(physical::makePath_Nic_PhysicalPackage(package, implementationNamespace, g_CNAList)), " S1 ");
    }
    enumerateInstanceNames(package);
    EXPECT_STREQ(physical::g_physicalPackageList[0].serialNumber.text(), " S1 ");
    EXPECT_EQ(onlyInstance(package)["SerialNumber"], inQuotes("S1"));
    EXPECT_STREQ(physical::g_physicalPackageList[0].serialNumber.text(), "S1");
    EXPECT_EQ(joinedTag(g_CNAList), "nothing");
    EXPECT_EQ(onlyInstance(package)["Tag"], inQuotes(" S1 "));
}

// The log.

TEST_F(PhysicalPackageTest, BuildLogsEveryLevelOfTheTree) {
    switchLogsOn();
    tavik::StorageFunction unknown = storageFunction(9, chips::chip7);
    unknown.protocolType = 3;
    tavik::Card withoutPorts = card("S2", {});
    withoutPorts.ports = std::nullopt;
    tavik::Card withoutFunctions = card("S3", {unknown});
    withoutFunctions.ports->at(0).functions = std::nullopt;
    startWith({card("S1", {unknown}), withoutPorts, withoutFunctions});
    EXPECT_EQ(linesBetween(logLines(), "buildPhysicalPackageList(): Processing an adapter entry.",
                           "Entering createProduct, index = 0"),
              (Lines{"buildPhysicalPackageList(): Processing an adapter entry.",
                     "buildPhysicalPackageList(): Processing an phyport entry.",
                     "buildPhysicalPackageList(): Processing an protocol entry.",
                     "buildPhysicalPackageList(): Processing an adapter entry.",
                     "buildPhysicalPackageList(): Processing an adapter entry.",
                     "buildPhysicalPackageList(): Processing an phyport entry.", "Entering createProduct, index = 0"}));
}

/// The lines of the packages' build without those that only tell the tree's levels.
Lines linesOfBuild(const Lines& all) {
    Lines lines;
    for (const std::string& line : linesBetween(all, "buildPhysicalPackageList(): Processing an adapter entry.",
                                                "Entering createProduct, index = 0")) {
        if (line.compare(0, 26, "buildPhysicalPackageList()") != 0) lines.push_back(line);
    }
    if (!lines.empty()) lines.pop_back();
    return lines;
}

TEST_F(PhysicalPackageTest, EachCardLogsWhereItsTagAndSkuComeFrom) {
    switchLogsOn();
    tavik::StorageFunction own = functionWithVpd(1, {{"SN", "A1"}, {"FN", "49Y"}});
    own.uuid = "i-2-c";
    startWith({card("S1", {own}), card("S2", {functionWithVpd(2, {{"SN", "A2"}, {"YU", "1-2"}, {"FN", ""}})}),
               card("S3", {functionWithVpd(3, {{"SN", "A3"}, {"YU", ""}})})});
    EXPECT_EQ(linesOfBuild(logLines()),
              (Lines{"Calling createPhysicalPackage() for FC/FCoE device.",
                     "Entering createPhysicalPackage, index = 0",
                     "Merolt_FC_PhysicalPackage: createPhysicalPackage: VPD data retrieved successfully.",
                     "createPhysicalPackage: I2C uuid=i-2-c",
                     "createPhysicalPackage: g_fruNumberVersion=Fru Number:49Y",
                     "createPhysicalPackage: fruVersion=49Y",
                     "Exiting  createPhysicalPackage",
                     "",
                     "Done calling createPhysicalPackage() for FC/FCoE device.",
                     "Calling createPhysicalPackage() for FC/FCoE device.",
                     "Entering createPhysicalPackage, index = 1",
                     "Merolt_FC_PhysicalPackage: createPhysicalPackage: VPD data retrieved successfully.",
                     "createPhysicalPackage: g_UUID=UUID:1-2",
                     "createPhysicalPackage: uuid=1-2",
                     "createPhysicalPackage: g_fruNumberVersion=Fru Number:",
                     "createPhysicalPackage: fruVersion is NULL",
                     "Exiting  createPhysicalPackage",
                     "",
                     "Done calling createPhysicalPackage() for FC/FCoE device.",
                     "Calling createPhysicalPackage() for FC/FCoE device.",
                     "Entering createPhysicalPackage, index = 2",
                     "Merolt_FC_PhysicalPackage: createPhysicalPackage: VPD data retrieved successfully.",
                     "createPhysicalPackage: g_UUID=UUID:",
                     "createPhysicalPackage: uuid is NULL",
                     "Exiting  createPhysicalPackage",
                     "",
                     "Done calling createPhysicalPackage() for FC/FCoE device."}));
}

TEST_F(PhysicalPackageTest, SkippedFunctionLogsTheRecordAndRaisesTheIndexOnlyAfterItsVitalProductData) {
    switchLogsOn();
    startWith({card("S1", {functionWithVpd(1, {{"SN", "S1"}}), functionWithVpd(2, {{"SN", "S1"}})}),
               card("S2", {functionWithVpd(3, {{"SN", "S1"}})}), card("A00000", {storageFunction(4, chips::chip7)})});
    EXPECT_EQ(linesOfBuild(logLines()),
              (Lines{"Calling createPhysicalPackage() for FC/FCoE device.",
                     "Entering createPhysicalPackage, index = 0",
                     "Merolt_FC_PhysicalPackage: createPhysicalPackage: VPD data retrieved successfully.",
                     "Exiting  createPhysicalPackage",
                     "",
                     "Done calling createPhysicalPackage() for FC/FCoE device.",
                     "Exiting  createPhysicalPackage: Current device has the same the serial number as a device in the "
                     "list at index=0. Skip S1!",
                     "",
                     "Calling createPhysicalPackage() for FC/FCoE device.",
                     "Entering createPhysicalPackage, index = 1",
                     "Merolt_FC_PhysicalPackage: createPhysicalPackage: VPD data retrieved successfully.",
                     "Exiting  createPhysicalPackage: Current device has the same the serial number as a device in the "
                     "list at index=0. Skip!",
                     "",
                     "Done calling createPhysicalPackage() for FC/FCoE device.",
                     "Calling createPhysicalPackage() for FC/FCoE device.",
                     "Entering createPhysicalPackage, index = 2",
                     "Merolt_FC_PhysicalPackage: createPhysicalPackage: Unable to retrieve VPD data!",
                     "Exiting  createPhysicalPackage",
                     "",
                     "Done calling createPhysicalPackage() for FC/FCoE device."}));
    EXPECT_EQ(countOf(package), 2U);
}

TEST_F(PhysicalPackageTest, EthernetFunctionLogsTheCardsItIsComparedWith) {
    switchLogsOn();
    startWith({card("S1", {nicFunction(1, 1)}), card("S2", {nicFunction(2, 2)})});
    EXPECT_EQ(linesOfBuild(logLines()),
              (Lines{"Comparing S1 to S1.", "Calling createPhysicalPackage() for NIC device.",
                     "Done calling createPhysicalPackage() for NIC device.", "Comparing S1 to S2.",
                     "Comparing S2 to S2.", "Calling createPhysicalPackage() for NIC device.",
                     "Done calling createPhysicalPackage() for NIC device."}));
}

} // namespace
