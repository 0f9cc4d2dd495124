#include "classes/storage/logical_port_group.h"

#include "classes/instance.h"
#include "classes/record_list.h"
#include "classes/storage/serial_text.h"
#include "classes/storage/vital_product_data.h"
#include "classes/system_name.h"
#include "log/log.h"
#include "text/text.h"

namespace merolt::storage {

std::int32_t g_logicalPortGroupCount = 0;
LogicalPortGroupEntry* g_logicalPortGroupList = nullptr;

namespace {

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
    ++g_logicalPortGroupCount;
    LogicalPortGroupEntry& group = g_logicalPortGroupList[index];
    group.elementName.assign(nodeName.view());
    group.instanceID.format("%s_%s_%s_%s", hostName, serial.text(), nodeName.text(), portName.text());
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
    buildRoomPerStorageFunction(g_logicalPortGroupCount, g_logicalPortGroupList,
                                [&](TAVIK_DeviceRecord* device, int index) { createGroup(device, index, host); });
}

void clearLogicalPortGroupList() { freeRecords(g_logicalPortGroupCount, g_logicalPortGroupList); }

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
