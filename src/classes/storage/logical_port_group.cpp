#include "classes/storage/logical_port_group.h"

#include "classes/instance.h"
#include "classes/record_index.h"
#include "classes/record_list.h"
#include "classes/storage/serial_text.h"
#include "classes/storage/vital_product_data.h"
#include "classes/system_name.h"
#include "configuration/answers.h"
#include "log/log.h"
#include "text/text.h"

#include <cstdint>
#include <cstring>

namespace merolt::storage {

std::int32_t g_logicalPortGroupCount = 0;
LogicalPortGroupEntry* g_logicalPortGroupList = nullptr;

namespace {

RecordList<LogicalPortGroupEntry> records(g_logicalPortGroupCount, g_logicalPortGroupList);

const char* keys[] = {"InstanceID", nullptr};

const ListClass descriptor = {
    .name = "LogicalPortGroup",
    .key = "InstanceID",
    .count = [] { return int{g_logicalPortGroupCount}; },
    .keyText = [](int index) { return g_logicalPortGroupList[index].instanceID.text(); },
    .makePath = makePath_LogicalPortGroup,
    .makeInstance = makeInstance_LogicalPortGroup,
    .valid = [](int index) { return g_logicalPortGroupList[index].valid != 0; },
};

/// The first place of each node in the list that is being built. Each function asks, so it must not be looked for.
class NodePlaces {
public:
    /// None. @param functions how many nodes there may be.
    void startAnew(std::int32_t functions) { places.startAnew(functions); }

    /// Looks at the places below the count only: after a hole it no longer sees every record.
    bool has(const TAVIK_DeviceRecord& device) const {
        const auto isSeen = [](std::int32_t place) { return place < g_logicalPortGroupCount; };
        return places.find(nodeOf(device), isSeen) >= 0;
    }

    void add(const TAVIK_DeviceRecord& device, std::int32_t place) {
        const std::uint64_t node = nodeOf(device);
        const bool isNew = places.find(node, [](std::int32_t) { return true; }) < 0;
        if (isNew) places.add(node, place);
    }

private:
    static std::uint64_t nodeOf(const TAVIK_DeviceRecord& device) {
        std::uint64_t node = 0;
        std::memcpy(&node, device.nodeName, sizeof(node));
        return node;
    }

    RecordIndex places;
};

NodePlaces nodePlaces;

/// Where the record of a function goes.
constexpr TwoForms<int (*)(int function)> place = {
    .contract = [](int function) { return function; },
    .corrected = [](int) { return int{g_logicalPortGroupCount}; },
};

void createLogicalPortGroup(TAVIK_DeviceRecord* device, int index, SystemNameOfBuild& host) {
    DEBUG_LOG("Entering createLogicalPortGroup, index = %d", index);
    const char* hostName = host.text();
    g_serialNumber.clear();
    const int vpdStatus = fetchAdapterVpd(device);
    DEBUG_LOG("%s", vpdStatus != 0
                        ? "Merolt_FC_LogicalPortGroup: createLogicalPortGroup: Unable to retrieve VPD data!"
                        : "Merolt_FC_LogicalPortGroup: createLogicalPortGroup: VPD data retrieved successfully.");
    if (nodePlaces.has(*device)) return;
    const SerialText serial = serialText(device, vpdStatus);
    const WorldWideNameText nodeName = formatWorldWideName(device->nodeName);
    const WorldWideNameText portName = formatWorldWideName(device->portProperty.portName);
    const int groupPlace = place.chosen()(index);
    LogicalPortGroupEntry& group = g_logicalPortGroupList[groupPlace];
    nodePlaces.add(*device, groupPlace);
    ++g_logicalPortGroupCount;
    group.function = index;
    group.elementName.assign(nodeName.view());
    group.instanceID.join({hostName, "_", serial.view(), "_", nodeName.view(), "_", portName.view()});
    group.valid = 1;
    DEBUG_LOG("Exiting  createLogicalPortGroup\n");
}

} // namespace

void buildLogicalPortGroupList() {
    SystemNameOfBuild host;
    TAVIK_AdapterList* adapters = TAVIK_GetAdapterList();
    if (!adapters) return;
    const std::int32_t functions = records.makeRoom(countStorageFunctions(adapters));
    nodePlaces.startAnew(functions);
    createPerStorageFunction(adapters, functions, [&](TAVIK_DeviceRecord* device, int index) {
        createLogicalPortGroup(device, index, host);
    });
}

void clearLogicalPortGroupList() { records.clear(); }

CmpiObjectPath makePath_LogicalPortGroup(const char* className, const char* nameSpace, int index) {
    CmpiObjectPath path(nameSpace, className);
    path.setKey("InstanceID", CmpiData(g_logicalPortGroupList[index].instanceID.text()));
    return path;
}

CmpiInstance makeInstance_LogicalPortGroup(const char* className, const char* nameSpace, const char** properties,
                                           int index) {
    const LogicalPortGroupEntry& group = g_logicalPortGroupList[index];
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    instance.setProperty("InstanceID", CmpiData(group.instanceID.text()));
    instance.setProperty("ElementName", CmpiData(group.elementName.text()));
    instance.setProperty("Name", CmpiData(group.elementName.text()));
    instance.setProperty("NameFormat", CmpiData("WWN"));
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(LogicalPortGroup, descriptor)

} // namespace merolt::storage
