// What a rebuild before a request takes of memory: nothing, however many ports there are. In a program that brings the
// operators of memory.
#include "adapters.h"
#include "failing_memory.h"
#include "provider_host.h"

#include "class_support.h"
#include "classes/storage/fc_port.h"
#include "classes/storage/fc_port_statistics.h"
#include "classes/storage/logical_port_group.h"
#include "classes/storage/scsi_protocol_controller.h"
#include "classes/storage/scsi_protocol_endpoint_hba.h"
#include "classes/storage/scsi_protocol_endpoint_target.h"
#include "classes/storage/storage_extent.h"
#include "inventory/tree_walk.h"
#include "log/log.h"

#include <algorithm>
#include <climits>

using namespace adapters;
using namespace merolt;

namespace {

unsigned allocations = 0;

bool countAndGrant(std::size_t) {
    ++allocations;
    return false;
}

/// How often this thread takes memory meanwhile, at the least: the library in memory writes down its calls, and the
/// room for that grows now and then.
template <class Call>
unsigned allocationsOf(Call&& call) {
    unsigned least = UINT_MAX;
    for (int round = 0; round < 8; ++round) {
        allocations = 0;
        refuseAllocations(countAndGrant);
        call();
        refuseAllocations(nullptr);
        least = std::min(least, allocations);
    }
    return least;
}

// What the library is asked for each function; it takes memory of its own.

void readVpd(TAVIK_DeviceRecord* device) {
    static std::uint8_t block[1024];
    char* text = nullptr;
    std::uint32_t size = 0;
    if (TAVIK_GetUUIDFromI2CVPD(device, &text, &size) == 0) TAVIK_FreeMem(text);
    size = sizeof(block);
    TAVIK_GetVpd(device->handle, 0, block, &size);
}

void readPort(TAVIK_DeviceRecord* device) {
    readVpd(device);
    TAVIK_GetHbaDevicePortProperty(device->handle, 0, &device->portProperty);
}

void readStatistics(TAVIK_DeviceRecord* device) { TAVIK_RefreshDeviceStats(device); }

void readNothing(TAVIK_DeviceRecord*) {}

struct RebuiltList {
    const char* name;
    void (*clear)();
    void (*build)();
    void (*askLibrary)(TAVIK_DeviceRecord* device);
    unsigned once; ///< for the whole list: the host's address
};

void PrintTo(const RebuiltList& row, std::ostream* stream) { *stream << row.name; }

#define REBUILT(X, askLibrary, once)                                                                                   \
    { #X, storage::clear##X##List, storage::build##X##List, askLibrary, once }

const RebuiltList rebuiltLists[] = {
    REBUILT(FCPort, readPort, 0),
    REBUILT(FCPortStatistics, readStatistics, 0),
    REBUILT(LogicalPortGroup, readVpd, 1),
    REBUILT(SCSIProtocolController, readNothing, 0),
    REBUILT(SCSIProtocolEndpointHBA, readNothing, 0),
    REBUILT(SCSIProtocolEndpointTarget, readNothing, 0),
    REBUILT(StorageExtent, readNothing, 0),
};

class RebuildMemoryTest : public ClassTest, public testing::WithParamInterface<RebuiltList> {};

TEST_P(RebuildMemoryTest, RecordsTakeNoMemory) {
    std::vector<tavik::Card> cards;
    for (std::uint32_t number = 1; number <= 24; ++number) {
        tavik::StorageFunction function = functionWithVpd(number, {{"SN", "AB1234"}, {"V9", "010203"}}, chips::chip15);
        tavik::Target target;
        target.portName = worldWideName(0xAA);
        target.luns.push_back({});
        function.targets = {target};
        cards.push_back(card("S" + std::to_string(number), {function}));
    }
    startWith(std::move(cards));
    gDebugLog = false;
    gErrorLog = false;
    const auto rebuild = [] {
        GetParam().clear();
        GetParam().build();
    };
    rebuild();
    const unsigned byLibrary = allocationsOf([] {
        forEachStorageFunction(TAVIK_GetAdapterList(),
                               [](TAVIK_DeviceRecord* device) { GetParam().askLibrary(device); });
    });
    const unsigned all = allocationsOf(rebuild);
    EXPECT_LE(all, byLibrary + GetParam().once);
}

INSTANTIATE_TEST_SUITE_P(Lists, RebuildMemoryTest, testing::ValuesIn(rebuiltLists),
                         [](const auto& test) { return std::string(test.param.name); });

} // namespace
