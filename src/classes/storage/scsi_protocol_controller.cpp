#include "classes/storage/scsi_protocol_controller.h"

#include "classes/instance.h"
#include "classes/record_list.h"
#include "text/text.h"

namespace merolt::storage {

std::int32_t g_scsiProtocolControllerCount = 0;
SCSIProtocolControllerEntry* g_scsiProtocolControllerList = nullptr;

namespace {

RecordList<SCSIProtocolControllerEntry> records(g_scsiProtocolControllerCount, g_scsiProtocolControllerList);

constexpr const char* cimClass = "Merolt_FCHBA_SCSIProtocolController";
const char* keys[] = {"SystemCreationClassName", "SystemName", "CreationClassName", "DeviceID", nullptr};

const ListClass descriptor = {
    .name = "SCSIProtocolController",
    .key = "DeviceID",
    .count = [] { return int{g_scsiProtocolControllerCount}; },
    .keyText = [](int index) { return g_scsiProtocolControllerList[index].deviceID.text(); },
    .makePath = makePath_SCSIProtocolController,
    .makeInstance = makeInstance_SCSIProtocolController,
    .valid = [](int index) { return g_scsiProtocolControllerList[index].valid != 0; },
};

void fillRecord(TAVIK_DeviceRecord* device, int index) {
    SCSIProtocolControllerEntry& controller = g_scsiProtocolControllerList[index];
    controller.deviceID.assign(formatWorldWideName(device->portProperty.portName).view());
    controller.valid = 1;
}

} // namespace

void buildSCSIProtocolControllerList() { buildPerStorageFunction(records, fillRecord); }

void clearSCSIProtocolControllerList() { records.clear(); }

CmpiObjectPath makePath_SCSIProtocolController(const char* className, const char* nameSpace, int index) {
    return systemScopedPath(className, nameSpace, cimClass, "DeviceID",
                            g_scsiProtocolControllerList[index].deviceID.text());
}

CmpiInstance makeInstance_SCSIProtocolController(const char* className, const char* nameSpace, const char** properties,
                                                 int index) {
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    setSystemScope(instance, cimClass);
    instance.setProperty("DeviceID", CmpiData(g_scsiProtocolControllerList[index].deviceID.text()));
    instance.setProperty("MaxUnitsControlled", CmpiData(CMPIUint32{0}));
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(SCSIProtocolController, descriptor)

} // namespace merolt::storage
