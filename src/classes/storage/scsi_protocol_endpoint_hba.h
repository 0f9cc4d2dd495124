// Merolt_FCHBA_SCSIProtocolEndpointHBA: the host's end of the SCSI protocol, one for each storage function.
#pragma once

#include "classes/list_class.h"
#include "classes/storage/scsi_endpoint.h"

namespace merolt::storage {

extern std::int32_t g_scsiEndpointHBACount;
extern SCSIEndpointEntry* g_scsiEndpointHBAList;

void buildSCSIProtocolEndpointHBAList();
void clearSCSIProtocolEndpointHBAList();
inline constexpr ClassList listOfSCSIEndpointHBAs = {buildSCSIProtocolEndpointHBAList,
                                                     clearSCSIProtocolEndpointHBAList};

CmpiObjectPath makePath_SCSIProtocolEndpointHBA(const char* className, const char* nameSpace, int index);
CmpiInstance makeInstance_SCSIProtocolEndpointHBA(const char* className, const char* nameSpace, const char** properties,
                                                  int index);
DECLARE_REQUEST_FUNCTIONS(SCSIProtocolEndpointHBA)

} // namespace merolt::storage
