// The vital product data of a card: each form of a block, and what a card without one, or with a broken one, shows.
#include "adapters.h"
#include "provider_host.h"

#include "classes/storage/vital_product_data.h"
#include "log/log.h"
#include "tavik/vpd.h"
#include "text/text.h"

#include <memory>
#include <random>

using namespace adapters;
using namespace merolt::storage;

namespace {

constexpr std::uint16_t chip7 = 0xA107;
constexpr std::uint16_t chip8 = 0xA110;
constexpr std::size_t blockSize = 1024;

struct Store {
    const char* name;
    const VpdStore& store;
};

const Store stores[] = {
    {"g_productIdentifier", g_productIdentifier},
    {"g_vpdRTag", g_vpdRTag},
    {"g_vpdEndTag", g_vpdEndTag},
    {"g_partNumber", g_partNumber},
    {"g_serialNumber", g_serialNumber},
    {"g_miscInformation", g_miscInformation},
    {"g_manufacturingId", g_manufacturingId},
    {"g_efiDriverVersion", g_efiDriverVersion},
    {"g_firmwareVersion", g_firmwareVersion},
    {"g_biosVersion", g_biosVersion},
    {"g_fcodeVersion", g_fcodeVersion},
    {"g_flashImageVersion", g_flashImageVersion},
    {"g_fcCode", g_fcCode},
    {"g_fruNumberVersion", g_fruNumberVersion},
    {"g_assetTag", g_assetTag},
    {"g_UUID", g_UUID},
};

/// One line for each store that is not empty: `name=text`.
std::string stored() {
    std::string lines;
    for (const Store& store : stores) {
        if (!store.store.empty()) lines += std::string(store.name) + "=" + store.store.text() + '\n';
    }
    return lines;
}

tavik::Bytes bytes(std::string_view text) { return {text.begin(), text.end()}; }

tavik::Bytes operator+(tavik::Bytes left, const tavik::Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

tavik::Bytes item(const std::string& keyword, std::string_view value) {
    return bytes(keyword) + tavik::Bytes{static_cast<std::uint8_t>(value.size())} + bytes(value);
}

const tavik::Bytes endTag = {0x78};

void clearAll() {
    clearVpdStores();
    g_UUID.clear();
    g_i2cUUID.clear();
}

/// Parses the bytes as a block of exactly their size, so that a sanitizer sees every byte read beyond it.
std::string parsedExactly(const tavik::Bytes& content) {
    clearAll();
    const auto block = std::make_unique<std::uint8_t[]>(content.size());
    std::copy(content.begin(), content.end(), block.get());
    parseVpdBuffer(block.get(), content.size());
    return stored();
}

/// Parses the bytes as the beginning of a block that is zero from there on.
std::string parsed(tavik::Bytes content) {
    content.resize(blockSize);
    return parsedExactly(content);
}

// Entries and where they go.

struct KeywordRow {
    const char* keyword;
    const char* stored;
};

void PrintTo(const KeywordRow& row, std::ostream* stream) { *stream << row.keyword; }

class VpdKeywordTest : public testing::TestWithParam<KeywordRow> {};

TEST_P(VpdKeywordTest, StoresItsLabelAndValueAndNothingElse) {
    EXPECT_EQ(parsed(item(GetParam().keyword, " a value ")), GetParam().stored);
}

INSTANTIATE_TEST_SUITE_P(EachKeyword, VpdKeywordTest,
                         testing::Values(KeywordRow{"PN", "g_partNumber=Part Number: a value \n"},
                                         KeywordRow{"SN", "g_serialNumber=Serial Number: a value \n"},
                                         KeywordRow{"V0", "g_miscInformation=Miscellaneous Information: a value \n"},
                                         KeywordRow{"MN", "g_manufacturingId=Manufacturing Id: a value \n"},
                                         KeywordRow{"V1", "g_efiDriverVersion=EFI Driver Version:a value\n"},
                                         KeywordRow{"V3", "g_firmwareVersion=Firmware Version:a value\n"},
                                         KeywordRow{"V4", "g_biosVersion=BIOS Version:a value\n"},
                                         KeywordRow{"V5", "g_fcodeVersion=FCode Version:a value\n"},
                                         KeywordRow{"RM", "g_flashImageVersion=Flash Image Version:a value\n"},
                                         KeywordRow{"V9", "g_flashImageVersion=Flash Image Version:0.0.0\n"},
                                         KeywordRow{"FC", "g_fcCode=FC Code: a value \n"},
                                         KeywordRow{"FN", "g_fruNumberVersion=Fru Number: a value \n"},
                                         KeywordRow{"YA", "g_assetTag=Asset Tag: a value \n"},
                                         KeywordRow{"YU", "g_UUID=UUID: a value \n"}, KeywordRow{"RV", ""},
                                         KeywordRow{"RW", ""}, KeywordRow{"EC", ""}, KeywordRow{"V2", ""},
                                         KeywordRow{"V6", ""}, KeywordRow{"pn", ""}, KeywordRow{"NP", ""},
                                         KeywordRow{"P\x01", ""}));

TEST(VitalProductData, ProductIdentifierIsStoredUpToItsSixteenBitLength) {
    const std::string longText(300, 'p');
    EXPECT_EQ(parsed(tavik::Bytes{0x82, 300 & 0xFF, 300 >> 8} + bytes(longText) + item("PN", "1")),
              "g_productIdentifier=Product Identifier:" + longText + "\ng_partNumber=Part Number:1\n");
}

TEST(VitalProductData, KeywordOfLengthZeroStoresItsLabelAlone) {
    EXPECT_EQ(parsed(item("PN", "") + item("V3", "") + item("SN", "1")),
              "g_partNumber=Part Number:\ng_serialNumber=Serial Number:1\ng_firmwareVersion=Firmware Version:\n");
}

TEST(VitalProductData, SectionHeadersTakeThreeBytesSoTheirKeywordsAreFound) {
    EXPECT_EQ(parsed(tavik::Bytes{0x90, 0xFF, 0xFF} + item("PN", "1") + tavik::Bytes{0x91, 0xFF, 0xFF} +
                     item("YA", "2") + endTag),
              "g_vpdRTag=VPD-R Tag:\ng_vpdEndTag=End Tag:\ng_partNumber=Part Number:1\ng_assetTag=Asset Tag:2\n");
}

TEST(VitalProductData, ZeroByteInTheKeywordPositionTakesThreeBytesAndDoesNothing) {
    EXPECT_EQ(parsed(tavik::Bytes{0, 'P', 9} + item("SN", "1") + tavik::Bytes{0, 0, 0} + item("PN", "2") + endTag),
              "g_vpdEndTag=End Tag:\ng_partNumber=Part Number:2\ng_serialNumber=Serial Number:1\n");
}

TEST(VitalProductData, BlockThatBeginsWithTheEndTagStoresTheEndTagOnly) {
    EXPECT_EQ(parsed(endTag + item("PN", "1")), "g_vpdEndTag=End Tag:\n");
}

TEST(VitalProductData, NothingBehindTheEndTagCounts) {
    EXPECT_EQ(parsed(item("SN", "1") + endTag + tavik::Bytes{0, 0} + item("PN", "2")),
              "g_vpdEndTag=End Tag:\ng_serialNumber=Serial Number:1\n");
}

TEST(VitalProductData, LaterItemReplacesAnEarlierOneOfTheSameStore) {
    EXPECT_EQ(parsed(item("V9", "010203") + item("RM", " 7.8 ")), "g_flashImageVersion=Flash Image Version:7.8\n");
    EXPECT_EQ(parsed(item("RM", "7.8") + item("V9", "010203")), "g_flashImageVersion=Flash Image Version:1.2.3\n");
    EXPECT_EQ(parsed(item("SN", "long one") + item("SN", "1")), "g_serialNumber=Serial Number:1\n");
}

TEST(VitalProductData, ValueEndsAtAZeroByte) {
    using namespace std::string_view_literals;
    EXPECT_EQ(parsed(item("SN", "AB\0CD"sv) + item("V3", " 5\0 6"sv) + item("PN", "1")),
              "g_partNumber=Part Number:1\ng_serialNumber=Serial Number:AB\ng_firmwareVersion=Firmware Version:5\n");
}

TEST(VitalProductData, LongestValueIsStoredWhole) {
    const std::string longText = std::string(253, 'x') + "y";
    EXPECT_EQ(parsed(item("SN", longText + " ") + item("V3", ' ' + longText)),
              "g_serialNumber=Serial Number:" + longText + " \ng_firmwareVersion=Firmware Version:" + longText + '\n');
}

TEST(VitalProductData, PercentSignsInAValueAreText) {
    EXPECT_EQ(parsed(item("SN", "%s%n%d") + item("V3", "100%s")),
              "g_serialNumber=Serial Number:%s%n%d\ng_firmwareVersion=Firmware Version:100%s\n");
}

// The packed version.

struct PackedRow {
    const char* value;
    const char* version;
};

void PrintTo(const PackedRow& row, std::ostream* stream) { *stream << '"' << row.value << '"'; }

class PackedVersionTest : public testing::TestWithParam<PackedRow> {};

TEST_P(PackedVersionTest, ReadsAsThreeNumbers) {
    EXPECT_EQ(parsed(item("V9", GetParam().value)),
              std::string("g_flashImageVersion=Flash Image Version:") + GetParam().version + '\n');
}

INSTANTIATE_TEST_SUITE_P(Forms, PackedVersionTest,
                         testing::Values(PackedRow{"010203", "1.2.3"}, PackedRow{"0102", "1.2.0"},
                                         PackedRow{"01", "1.0.0"}, PackedRow{"1", "1.0.0"}, PackedRow{"", "0.0.0"},
                                         PackedRow{"999999", "99.99.99"}, PackedRow{"01020304", "1.2.3"},
                                         PackedRow{" \t010203 ", "1.2.3"},
                                         // Blanks do not count in a number's width, a sign does.
                                         PackedRow{"1 2 3", "1.2.3"}, PackedRow{"01 02 03", "1.2.3"},
                                         PackedRow{"-1+203", "-1.2.3"}, PackedRow{"-10203", "-1.2.3"},
                                         PackedRow{"01x203", "1.0.0"}, PackedRow{"x10203", "0.0.0"},
                                         PackedRow{"01.02.03", "1.0.0"}, PackedRow{"-", "0.0.0"}));

// Blocks that do not end, or that lie about their lengths.

TEST(VitalProductData, BlockWithoutEndTagEndsWhereItsBytesDo) {
    tavik::Bytes block = item("PN", "1") + item("SN", "2");
    EXPECT_EQ(parsedExactly(block), "g_partNumber=Part Number:1\ng_serialNumber=Serial Number:2\n");
    EXPECT_EQ(parsed(block), "g_partNumber=Part Number:1\ng_serialNumber=Serial Number:2\n");
}

TEST(VitalProductData, EndTagInTheLastByteCounts) {
    EXPECT_EQ(parsedExactly(item("PN", "1") + endTag), "g_vpdEndTag=End Tag:\ng_partNumber=Part Number:1\n");
    EXPECT_EQ(parsedExactly(endTag), "g_vpdEndTag=End Tag:\n");
}

TEST(VitalProductData, EntryWithoutRoomForItsLengthIsIgnored) {
    EXPECT_EQ(parsedExactly(item("PN", "1") + bytes("S")), "g_partNumber=Part Number:1\n");
    EXPECT_EQ(parsedExactly(item("PN", "1") + bytes("SN")), "g_partNumber=Part Number:1\n");
    EXPECT_EQ(parsedExactly({}), "");
}

TEST(VitalProductData, ValueThatRunsPastTheBlockIsCutThere) {
    EXPECT_EQ(parsedExactly(bytes("SN\xFF"
                                  "abc")),
              "g_serialNumber=Serial Number:abc\n");
    EXPECT_EQ(parsedExactly(bytes("V3\x80 5 ")), "g_firmwareVersion=Firmware Version:5\n");
    EXPECT_EQ(parsedExactly(tavik::Bytes{0x82, 0xFF, 0xFF, 'a', 'b'}), "g_productIdentifier=Product Identifier:ab\n");
    EXPECT_EQ(parsedExactly(bytes("V9\xFF"
                                  "01")),
              "g_flashImageVersion=Flash Image Version:1.0.0\n");
    EXPECT_EQ(parsedExactly(bytes("SN\x01")), "g_serialNumber=Serial Number:\n");
}

TEST(VitalProductData, RandomBlocksStayWithinTheStores) {
    std::mt19937 random(1);
    constexpr char likelyBytes[] = "\x82\x90\x91PNSNVRMWFCYAU0123459 \t";
    for (int round = 0; round < 2000; ++round) {
        tavik::Bytes block(blockSize);
        for (std::uint8_t& byte : block) {
            byte = round % 2 == 0 ? static_cast<std::uint8_t>(random())
                                  : static_cast<std::uint8_t>(likelyBytes[random() % (sizeof(likelyBytes) - 1)]);
        }
        parsedExactly(block);
        for (const Store& store : stores)
            ASSERT_LE(store.store.view().size(), VpdStore::capacity);
    }
}

// Fetching the block of a card.

class VpdFetchTest : public ProviderTest {
protected:
    VpdFetchTest() { clearAll(); }

    TAVIK_DeviceRecord* deviceOf(tavik::StorageFunction function) {
        tavikLibrary.setFleet(fleet({card("S1", {std::move(function)})}));
        return tavikLibrary.tree().device(1);
    }
};

TEST_F(VpdFetchTest, CardThatNeedsAWholeBlockIsAskedForIt) {
    std::uint32_t askedHandle = 0;
    std::uint32_t askedSize = 0;
    tavikLibrary.onGetVpd = [&](std::uint32_t handle, void* buffer, std::uint32_t* size) {
        askedHandle = handle;
        askedSize = *size;
        const auto* block = static_cast<const std::uint8_t*>(buffer);
        EXPECT_TRUE(std::all_of(block, block + *size, [](std::uint8_t byte) { return byte == 0; }));
        return 0U;
    };
    EXPECT_EQ(fetchAdapterVpd(deviceOf(storageFunction(1, chip8))), 0);
    EXPECT_EQ(askedHandle, 1U);
    EXPECT_EQ(askedSize, blockSize);
}

TEST_F(VpdFetchTest, BlockOfFullSizeWithoutEndTagIsReadToItsEnd) {
    tavik::StorageFunction function = storageFunction(1, chip8);
    tavik::Bytes block(blockSize);
    const tavik::Bytes last = item("SN", "at the end");
    std::copy(last.begin(), last.end(), block.end() - static_cast<std::ptrdiff_t>(last.size()));
    // Zeros are passed over by threes, which has to meet the last item.
    ASSERT_EQ((blockSize - last.size()) % 3, 0U);
    function.vpd = block;
    EXPECT_EQ(fetchAdapterVpd(deviceOf(function)), 0);
    EXPECT_EQ(stored(), "g_serialNumber=Serial Number:at the end\n");
}

TEST_F(VpdFetchTest, NoDeviceMeansFailureWithoutACall) {
    g_i2cUUID.assign("kept");
    EXPECT_EQ(fetchAdapterVpd(nullptr), -1);
    EXPECT_TRUE(tavikLibrary.calls().empty());
    EXPECT_TRUE(g_i2cUUID.equals("kept"));
}

TEST_F(VpdFetchTest, ChipWithoutABlockIsAskedForItsUuidOnly) {
    tavik::StorageFunction function = storageFunction(1, chip7);
    function.vpd = tavik::encodeVpd("X", {});
    function.uuid = "0123-4567";
    EXPECT_EQ(fetchAdapterVpd(deviceOf(function)), -1);
    EXPECT_TRUE(g_i2cUUID.equals("0123-4567"));
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_GetVpd"), 0U);
    EXPECT_EQ(stored(), "");
}

TEST_F(VpdFetchTest, StatusOfAFailedCallIsPassedOnAndTheStoresStay) {
    tavik::StorageFunction function = storageFunction(1, chip8);
    function.vpd = tavik::encodeVpd("X", {{"SN", "new"}});
    function.failures.vpd = 77;
    g_serialNumber.assign("Serial Number:old");
    EXPECT_EQ(fetchAdapterVpd(deviceOf(function)), 77);
    EXPECT_EQ(stored(), "g_serialNumber=Serial Number:old\n");
}

TEST_F(VpdFetchTest, ItemsOfAnEarlierCardStayUnlessTheyAreClearedOrReplaced) {
    tavik::StorageFunction function = storageFunction(1, chip8);
    function.vpd = tavik::encodeVpd("X", {{"SN", "1"}, {"FN", "2"}, {"YU", "3"}});
    fetchAdapterVpd(deviceOf(function));
    function.vpd = tavik::Bytes{'P', 'N', 1, '9', 0x78};
    fetchAdapterVpd(deviceOf(function));
    EXPECT_TRUE(g_fruNumberVersion.equals("Fru Number:2"));
    clearVpdStores();
    EXPECT_EQ(stored(), "g_UUID=UUID:3\n");
}

TEST_F(VpdFetchTest, ReadingKeepsItsNumberUntilTheBlockChanges) {
    tavik::StorageFunction function = storageFunction(1, chip8);
    function.vpd = tavik::encodeVpd("X", {{"SN", "1"}});
    fetchAdapterVpd(deviceOf(function));
    const std::uint64_t first = lastVpdReading();
    const std::string said = stored();
    clearAll();
    fetchAdapterVpd(deviceOf(function));
    EXPECT_EQ(lastVpdReading(), first);
    EXPECT_EQ(stored(), said);
    function.vpd = tavik::encodeVpd("X", {{"SN", "2"}});
    fetchAdapterVpd(deviceOf(function));
    EXPECT_NE(lastVpdReading(), first);
    EXPECT_TRUE(g_serialNumber.equals("Serial Number:2"));
    function.failures.vpd = 77;
    fetchAdapterVpd(deviceOf(function));
    EXPECT_EQ(lastVpdReading(), 0U);
}

TEST_F(VpdFetchTest, StoresKeepTheirTextsWhenReadingsAreForgotten) {
    tavik::StorageFunction function = storageFunction(1, chip8);
    function.vpd = tavik::encodeVpd("X", {{"SN", "1"}, {"YU", "2"}, {"V9", "010203"}});
    fetchAdapterVpd(deviceOf(function));
    const std::uint64_t first = lastVpdReading();
    const std::string said = stored();
    forgetVpdReadings();
    EXPECT_EQ(stored(), said);
    fetchAdapterVpd(deviceOf(function));
    EXPECT_NE(lastVpdReading(), first);
    EXPECT_EQ(stored(), said);
}

// What lies behind the end tag says nothing; what stands before it does, be it one byte.
TEST_F(VpdFetchTest, ABlockThatDiffersInOneByteIsReadAnew) {
    tavik::StorageFunction function = storageFunction(1, chip8);
    function.vpd = tavik::encodeVpd("X", {{"SN", "1"}});
    const std::size_t size = function.vpd->size();
    fetchAdapterVpd(deviceOf(function));
    const std::uint64_t first = lastVpdReading();
    function.vpd->push_back('S');
    fetchAdapterVpd(deviceOf(function));
    EXPECT_EQ(lastVpdReading(), first);
    for (std::size_t place = 0; place < size; ++place) {
        function.vpd->at(place) ^= 0x10;
        clearAll();
        fetchAdapterVpd(deviceOf(function));
        const std::string said = stored();
        EXPECT_EQ(said, parsed(*function.vpd)) << place;
        function.vpd->at(place) ^= 0x10;
    }
}

TEST_F(VpdFetchTest, UuidOfTheLibraryIsThatOfTheLastDeviceAndIsGivenBack) {
    tavik::StorageFunction function = storageFunction(1, chip8);
    function.uuid = std::string(5000, 'u');
    fetchAdapterVpd(deviceOf(function));
    EXPECT_EQ(g_i2cUUID.view(), std::string(VpdStore::capacity, 'u'));
    EXPECT_EQ(tavikLibrary.outstandingBlocks(), 0U);
    function.failures.uuid = 1;
    fetchAdapterVpd(deviceOf(function));
    EXPECT_TRUE(g_i2cUUID.empty());
}

// Trimming and memory.

struct TrimRow {
    const char* text;
    const char* trimmed;
};

void PrintTo(const TrimRow& row, std::ostream* stream) { *stream << '"' << row.text << '"'; }

class TrimTest : public testing::TestWithParam<TrimRow> {};

TEST_P(TrimTest, TakesBlanksAndTabsOffBothEnds) {
    std::string text = GetParam().text;
    merolt::trimString(text.data());
    EXPECT_STREQ(text.c_str(), GetParam().trimmed);
}

INSTANTIATE_TEST_SUITE_P(Texts, TrimTest,
                         testing::Values(TrimRow{"", ""}, TrimRow{" ", ""}, TrimRow{"\t \t", ""}, TrimRow{"a", "a"},
                                         TrimRow{" \ta b\t ", "a b"}, TrimRow{"a ", "a"}, TrimRow{" a", "a"},
                                         TrimRow{"\na\r", "\na\r"}));

TEST(Trimming, LongTextIsTrimmedToo) {
    std::string text = std::string(300, ' ') + std::string(1000, 'x') + '\t';
    merolt::trimString(text.data());
    EXPECT_EQ(std::string(text.c_str()), std::string(1000, 'x'));
}

class CoreMemoryTest : public ProviderTest {};

TEST_F(CoreMemoryTest, BlocksBeginAsZeros) {
    auto* block = static_cast<unsigned char*>(merolt::CoreAlloc(4096));
    ASSERT_NE(block, nullptr);
    EXPECT_TRUE(std::all_of(block, block + 4096, [](unsigned char byte) { return byte == 0; }));
    merolt::CoreFree(block);
}

TEST_F(CoreMemoryTest, FreeingNothingIsLogged) {
    switchLogsOn();
    start();
    takeLogLines();
    merolt::CoreFree(nullptr);
    EXPECT_EQ(takeLogLines(), std::vector<std::string>{"CoreFree: Attempted to free NULL pointer..."});
}

} // namespace
