#include "classes/storage/logical_port_group.h"

#include "classes/instance.h"
#include "classes/record_list.h"
#include "classes/storage/serial_text.h"
#include "classes/storage/vital_product_data.h"
#include "classes/system_name.h"
#include "configuration/answers.h"
#include "log/log.h"
#include "text/text.h"

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

// Looks at the places below the count only: after a hole it no longer sees every record.
bool hasNode(const WorldWideNameText& nodeName) {
    for (int index = 0; index < g_logicalPortGroupCount; ++index) {
        if (g_logicalPortGroupList[index].elementName.equals(nodeName.view())) return true;
    }
    return false;
}

/// Where the record of a function goes.
constexpr TwoForms<int (*)(int function)> place = {
    .contract = [](int function) { return function; },
    .corrected = [](int) { return int{g_logicalPortGroupCount}; },
};

void createGroup(TAVIK_DeviceRecord* device, int index, SystemNameOfBuild& host) {
    DEBUG_LOG("Entering createLogicalPortGroup, index = %d", index);
    const char* hostName = host.text();
    g_serialNumber.clear();
    const int vpdStatus = fetchAdapterVpd(device);
    DEBUG_LOG("%s", vpdStatus != 0
                        ? "Merolt_FC_LogicalPortGroup: createLogicalPortGroup: Unable to retrieve VPD data!"
                        : "Merolt_FC_LogicalPortGroup: createLogicalPortGroup: VPD data retrieved successfully.");
    const SerialText serial = serialText(device, vpdStatus);
    const WorldWideNameText nodeName = formatWorldWideName(device->nodeName);
    const WorldWideNameText portName = formatWorldWideName(device->portProperty.portName);
    if (hasNode(nodeName)) return;
    LogicalPortGroupEntry& group = g_logicalPortGroupList[place.chosen()(index)];
    ++g_logicalPortGroupCount;
    group.function = index;
    group.elementName.assign(nodeName.view());
    group.instanceID.join({hostName, "_", serial.view(), "_", nodeName.view(), "_", portName.view()});
    group.valid = 1;
    DEBUG_LOG("Exiting  createLogicalPortGroup\n");
}

} // namespace

void createLogicalPortGroup(TAVIK_DeviceRecord* device, int index) {
    SystemNameOfBuild host;
    createGroup(device, index, host);
}

void buildLogicalPortGroupList() {
    SystemNameOfBuild host;
    buildRoomPerStorageFunction(records,
                                [&](TAVIK_DeviceRecord* device, int index) { createGroup(device, index, host); });
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
