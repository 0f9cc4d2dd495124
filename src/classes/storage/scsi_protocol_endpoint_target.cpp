#include "classes/storage/scsi_protocol_endpoint_target.h"

#include "classes/instance.h"
#include "classes/record_list.h"
#include "classes/storage/target_walk.h"
#include "text/text.h"

namespace merolt::storage {

std::int32_t g_scsiEndpointTargetCount = 0;
SCSIEndpointEntry* g_scsiEndpointTargetList = nullptr;

namespace {

RecordList<SCSIEndpointEntry> records(g_scsiEndpointTargetCount, g_scsiEndpointTargetList);

constexpr const char* cimClass = "Merolt_FCHBA_SCSIProtocolEndpointTarget";

const ListClass descriptor = {
    .name = "SCSIProtocolEndpointTarget",
    .key = "Name",
    .count = [] { return int{g_scsiEndpointTargetCount}; },
    .keyText = [](int index) { return g_scsiEndpointTargetList[index].name.text(); },
    .makePath = makePath_SCSIProtocolEndpointTarget,
    .makeInstance = makeInstance_SCSIProtocolEndpointTarget,
    .valid = [](int index) { return g_scsiEndpointTargetList[index].valid != 0; },
};

void fillRecord(const TAVIK_DeviceRecord& device, const TAVIK_TargetEntry& target, int index) {
    if (index < 0 || index >= g_scsiEndpointTargetCount) return;
    SCSIEndpointEntry& endpoint = g_scsiEndpointTargetList[index];
    endpoint.name.join(
        {formatWorldWideName(device.portProperty.portName).view(), "_", formatWorldWideName(target.portName).view()});
    endpoint.valid = 1;
}

} // namespace

void buildSCSIProtocolEndpointTargetList() {
    TAVIK_AdapterList* adapters = TAVIK_GetAdapterList();
    if (!adapters) return;
    RecordSum targets(ChainKind::targets);
    forEachStorageFunction(adapters, [&](TAVIK_DeviceRecord* device) { targets.add(device->targetCount); });
    forEachTarget(adapters, [&](TAVIK_DeviceRecord&, TAVIK_TargetEntry&) { targets.addEntry(); });
    records.make(targets.capacity());
    int index = 0;
    forEachTarget(adapters,
                  [&](TAVIK_DeviceRecord& device, TAVIK_TargetEntry& target) { fillRecord(device, target, index++); });
}

void clearSCSIProtocolEndpointTargetList() { records.clear(); }

CmpiObjectPath makePath_SCSIProtocolEndpointTarget(const char* className, const char* nameSpace, int index) {
    return systemScopedPath(className, nameSpace, cimClass, "Name", g_scsiEndpointTargetList[index].name.text());
}

CmpiInstance makeInstance_SCSIProtocolEndpointTarget(const char* className, const char* nameSpace,
                                                     const char** properties, int index) {
    return makeInstance_SCSIEndpoint(className, nameSpace, properties, cimClass, scsiRoleTarget,
                                     g_scsiEndpointTargetList[index]);
}

DEFINE_REQUEST_FUNCTIONS(SCSIProtocolEndpointTarget, descriptor)

} // namespace merolt::storage
