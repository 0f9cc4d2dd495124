// What a client sees of Merolt_Adapter_Product: each adapter as the management library names it.
#include "class_support.h"

#include <cstring>

using namespace adapters;

namespace {

using Lines = std::vector<std::string>;

constexpr const char* product = "Merolt_Adapter_Product";

class ProductTest : public ClassTest {};

tavik::Card productCard(const std::string& serialNumber, std::uint32_t kind = 1) {
    tavik::Card made = card(serialNumber, {});
    made.kind = kind;
    made.version = "3.1";
    made.modelName = "ZKM4101";
    return made;
}

TEST_F(ProductTest, InstanceHasEveryPropertyInTheOrderOfTheClass) {
    startWith({productCard("11S1234567ABCDEFGHIJKL")});
    EXPECT_EQ(asSet(product), R"(
Name: string "ZKM4101"
IdentifyingNumber: string "11S1234567ABCDEFGHIJKL"
Vendor: string "Merolt Corporation"
Version: string "3.1"
ElementName: string "Merolt Corporation_3.1_ZKM4101"
AdapterType: uint32 0
)");
    EXPECT_EQ(pathAsSet(product), R"(
Name: string "ZKM4101"
IdentifyingNumber: string "11S1234567ABCDEFGHIJKL"
Vendor: string "Merolt Corporation"
Version: string "3.1"
)");
}

TEST_F(ProductTest, AdapterWithoutPortsIsAProduct) {
    tavik::Card withoutList = productCard("S1");
    withoutList.ports = std::nullopt;
    startWith({withoutList, productCard("S2")});
    EXPECT_EQ(valuesOf(product, "IdentifyingNumber"), allInQuotes({"S1", "S2"}));
}

TEST_F(ProductTest, AdaptersOfOneSerialNumberAreTwoProductsAndTheFirstIsFound) {
    startWith({productCard("S1", 1), productCard("S2", 2), productCard("s1", 3)});
    EXPECT_EQ(valuesOf(product, "IdentifyingNumber"), allInQuotes({"S1", "S2", "s1"}));
    const KeyValues keys = {{"Name", "other"}, {"IdentifyingNumber", "s1"}, {"Vendor", "other"}, {"Version", "other"}};
    EXPECT_EQ(getInstance(product, keys).all("AdapterType"), Lines{"uint32 0"});
}

TEST_F(ProductTest, KindsOneToThreeAreNumberedFromZeroAndAnyOtherIsConverged) {
    std::vector<tavik::Card> cards;
    for (const std::uint32_t kind : {0U, 1U, 2U, 3U, 4U, 0xFFFFFFFFU})
        cards.push_back(productCard("S" + std::to_string(kind), kind));
    startWith(std::move(cards));
    EXPECT_EQ(valuesOf(product, "AdapterType"),
              (Lines{"uint32 3", "uint32 0", "uint32 1", "uint32 2", "uint32 3", "uint32 3"}));
}

TEST_F(ProductTest, CardsOwnVitalProductDataIsNotRead) {
    tavik::Card made = productCard("S1");
    made.ports = card("S1", {functionWithVpd(1, {{"SN", "AB1234"}, {"YU", "0123"}})}).ports;
    startWith({made});
    EXPECT_EQ(onlyInstance(product)["IdentifyingNumber"], inQuotes("S1"));
}

TEST_F(ProductTest, TextsThatFillTheirFieldsAreShownAndALongModelIsCut) {
    prepare({productCard("S1")});
    TAVIK_AdapterEntry& adapter = *tavikLibrary.tree().adapter(0);
    std::memset(adapter.serialNumber, 'S', sizeof(adapter.serialNumber));
    std::memset(adapter.version, 'V', sizeof(adapter.version));
    std::memset(adapter.modelName, 'M', sizeof(adapter.modelName));
    start();
    const TestObject shown = onlyInstance(product);
    EXPECT_EQ(shown["IdentifyingNumber"], inQuotes(std::string(32, 'S')));
    EXPECT_EQ(shown["Version"], inQuotes(std::string(32, 'V')));
    EXPECT_EQ(shown["Name"], inQuotes(std::string(127, 'M')));
    EXPECT_EQ(shown["ElementName"],
              inQuotes("Merolt Corporation_" + std::string(32, 'V') + '_' + std::string(127, 'M')));
}

TEST_F(ProductTest, SerialNumberKeepsItsBlanks) {
    startWith({productCard(" S1 ")});
    for (int request = 0; request < 2; ++request)
        EXPECT_EQ(onlyInstance(product)["IdentifyingNumber"], inQuotes(" S1 "));
}

TEST_F(ProductTest, EachAdapterLogsItsRecord) {
    switchLogsOn();
    startWith({productCard("S1"), productCard("S1")});
    EXPECT_EQ(linesBetween(logLines(), "Entering createProduct, index = 0", "Exiting  createProduct"),
              (Lines{"Entering createProduct, index = 0", "Exiting  createProduct"}));
    EXPECT_TRUE(inOrder(
        logLines(), {"Exiting  createProduct", "", "Entering createProduct, index = 1", "Exiting  createProduct", ""}));
}

} // namespace
