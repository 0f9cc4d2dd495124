#include "classes/storage/scsi_protocol_endpoint_hba.h"

#include "classes/instance.h"
#include "classes/record_list.h"
#include "text/text.h"

namespace merolt::storage {

std::int32_t g_scsiEndpointHBACount = 0;
SCSIEndpointEntry* g_scsiEndpointHBAList = nullptr;

namespace {

RecordList<SCSIEndpointEntry> records(g_scsiEndpointHBACount, g_scsiEndpointHBAList);

constexpr const char* cimClass = "Merolt_FCHBA_SCSIProtocolEndpointHBA";

const ListClass descriptor = {
    .name = "SCSIProtocolEndpointHBA",
    .key = "Name",
    .count = [] { return int{g_scsiEndpointHBACount}; },
    .keyText = [](int index) { return g_scsiEndpointHBAList[index].name.text(); },
    .makePath = makePath_SCSIProtocolEndpointHBA,
    .makeInstance = makeInstance_SCSIProtocolEndpointHBA,
    .valid = [](int index) { return g_scsiEndpointHBAList[index].valid != 0; },
};

void fillRecord(TAVIK_DeviceRecord* device, int index) {
    SCSIEndpointEntry& endpoint = g_scsiEndpointHBAList[index];
    endpoint.name.assign(formatWorldWideName(device->portProperty.portName).view());
    endpoint.valid = 1;
}

} // namespace

void buildSCSIProtocolEndpointHBAList() { buildPerStorageFunction(records, fillRecord); }

void clearSCSIProtocolEndpointHBAList() { records.clear(); }

CmpiObjectPath makePath_SCSIProtocolEndpointHBA(const char* className, const char* nameSpace, int index) {
    return systemScopedPath(className, nameSpace, cimClass, "Name", g_scsiEndpointHBAList[index].name.text());
}

CmpiInstance makeInstance_SCSIProtocolEndpointHBA(const char* className, const char* nameSpace, const char** properties,
                                                  int index) {
    return makeInstance_SCSIEndpoint(className, nameSpace, properties, cimClass, scsiRoleInitiator,
                                     g_scsiEndpointHBAList[index]);
}

DEFINE_REQUEST_FUNCTIONS(SCSIProtocolEndpointHBA, descriptor)

} // namespace merolt::storage
