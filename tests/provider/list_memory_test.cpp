// Lists are rebuilt for single requests: a list keeps its memory from build to build, and its records show nothing of
// what stood there before.
#include "class_support.h"

#include "classes/physical/physical_connector.h"
#include "classes/physical/physical_package.h"
#include "classes/physical/physical_port.h"
#include "classes/physical/product.h"
#include "classes/storage/fc_port.h"
#include "classes/storage/fc_port_statistics.h"
#include "classes/storage/logical_port_group.h"
#include "classes/storage/port_controller.h"
#include "classes/storage/scsi_protocol_controller.h"
#include "classes/storage/scsi_protocol_endpoint_hba.h"
#include "classes/storage/scsi_protocol_endpoint_target.h"
#include "classes/storage/storage_extent.h"
#include "software/software_identity.h"

#include <cstring>

using namespace adapters;
using namespace merolt;

namespace {

struct Block {
    void* records;
    std::size_t bytes;
};

/// A list as a test handles it.
struct ListRow {
    const char* className;
    void (*build)();
    void (*clear)();
    Block (*block)();
};

void PrintTo(const ListRow& row, std::ostream* stream) { *stream << row.className; }

template <class Record>
Block blockOf(Record* list, std::int32_t count) {
    return {list, static_cast<std::size_t>(count) * sizeof(Record)};
}

#define LIST(className, side, X, list)                                                                                 \
    {                                                                                                                  \
        className, side::build##X##List, side::clear##X##List,                                                         \
            [] { return blockOf(side::g_##list##List, side::g_##list##Count); }                                        \
    }

const ListRow lists[] = {
    LIST("Merolt_FCHBA_FCPort", storage, FCPort, fcPort),
    LIST("Merolt_FCHBA_PortController", storage, PortController, portController),
    LIST("Merolt_FCHBA_FCPortStatistics", storage, FCPortStatistics, fcPortStatistics),
    LIST("Merolt_FCHBA_LogicalPortGroup", storage, LogicalPortGroup, logicalPortGroup),
    LIST("Merolt_FCHBA_SCSIProtocolController", storage, SCSIProtocolController, scsiProtocolController),
    LIST("Merolt_FCHBA_SCSIProtocolEndpointHBA", storage, SCSIProtocolEndpointHBA, scsiEndpointHBA),
    LIST("Merolt_FCHBA_SCSIProtocolEndpointTarget", storage, SCSIProtocolEndpointTarget, scsiEndpointTarget),
    LIST("Merolt_FCHBA_StorageExtent", storage, StorageExtent, storageExtent),
    LIST("Merolt_Adapter_PhysicalConnector", physical, PhysicalConnector, physicalConnector),
    LIST("Merolt_Adapter_PhysicalPackage", physical, PhysicalPackage, physicalPackage),
    LIST("Merolt_Adapter_PhysicalPort", physical, PhysicalPort, physicalPort),
    LIST("Merolt_Adapter_Product", physical, Product, product),
    LIST("Merolt_FCHBA_SoftwareIdentity", software, SoftwareIdentity, softwareIdentity),
};

tavik::StorageFunction withTarget(tavik::StorageFunction function, std::uint32_t shownLuns) {
    tavik::Target target;
    target.portName = worldWideName(0xAA);
    tavik::Lun lun;
    lun.number = 3;
    target.luns.push_back(lun);
    target.lunCount = shownLuns;
    function.targets = {target};
    return function;
}

/// One function of which everything can be read, one of which nothing can, and one that repeats the first one's node:
/// each leaves other fields of its records unwritten.
std::vector<tavik::Card> unlikeCards() {
    tavik::StorageFunction rich = withTarget(functionWithVpd(1, {{"SN", "AB1234"}, {"RM", "1.2"}}, chips::chip15), 1);
    rich.transceiver = transceiver("MOD1");
    tavik::StorageFunction broken = withTarget(storageFunction(2, chips::chip8), 4);
    broken.failures = {1, 1, 1, 1, 1, 1, 1};
    tavik::StorageFunction twin = functionWithVpd(3, {{"SN", "EF9012"}});
    twin.nodeName = rich.nodeName;
    twin.transceiver = transceiver("MOD3");
    return {card("S1", {rich}), card("S2", {broken}), card("S3", {twin}),
            card("S4", {storageFunction(4, chips::chip7)})};
}

class ListMemoryTest : public ClassTest, public testing::WithParamInterface<ListRow> {
protected:
    /// The instances of the class as text, in order.
    std::vector<std::string> shown() {
        std::vector<std::string> tables;
        for (const TestObject& object : enumerateInstances(GetParam().className).objects)
            tables.push_back(object.table());
        return tables;
    }

    Block block() const { return GetParam().block(); }
};

TEST_P(ListMemoryTest, RecordsInMemoryOfAnEarlierListShowNothingOfIt) {
    startWith(unlikeCards());
    const std::vector<std::string> expected = shown();
    ASSERT_FALSE(expected.empty());
    const Block before = block();
    GetParam().clear();
    EXPECT_EQ(block().records, nullptr);
    EXPECT_EQ(block().bytes, 0U);
    std::memset(before.records, 0xA5, before.bytes);
    GetParam().build();
    EXPECT_EQ(block().records, before.records) << "the list did not keep its memory";
    EXPECT_EQ(shown(), expected);
}

// A port's record is mostly room for texts; to clear it would cost more than to fill it.
TEST_F(ClassTest, TheRecordOfAPortIsNotClearedBehindItsTexts) {
    startWith(unlikeCards());
    enumerateInstances("Merolt_FCHBA_FCPort");
    const Block before = blockOf(storage::g_fcPortList, storage::g_fcPortCount);
    storage::clearFCPortList();
    std::memset(before.records, 0xA5, before.bytes);
    storage::buildFCPortList();
    ASSERT_EQ(storage::g_fcPortList, before.records);
    const auto& text = storage::g_fcPortList[0].vpdData;
    EXPECT_EQ(text.text()[text.capacity], '\xA5');
}

TEST_P(ListMemoryTest, ListsGrowAndShrinkWithTheAdapters) {
    std::vector<tavik::Card> many;
    for (std::uint32_t number = 1; number <= 40; ++number) {
        tavik::StorageFunction function = withTarget(storageFunction(number, chips::chip7), 1);
        function.serialNumber = tavik::binarySerialNumber(number);
        function.transceiver = transceiver("MOD" + std::to_string(number));
        many.push_back(card("A000" + std::to_string(number / 10) + std::to_string(number % 10), {function}));
    }
    startWith({many.front()});
    const std::vector<std::string> one = shown();
    refreshTo(many);
    EXPECT_EQ(shown().size(), 40 * one.size());
    refreshTo({many.front()});
    EXPECT_EQ(shown(), one);
    refreshTo({});
    EXPECT_TRUE(shown().empty());
}

INSTANTIATE_TEST_SUITE_P(Lists, ListMemoryTest, testing::ValuesIn(lists), [](const auto& test) {
    return std::string(test.param.className).substr(std::string("Merolt_").size());
});

} // namespace
