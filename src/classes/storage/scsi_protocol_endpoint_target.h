// Merolt_FCHBA_SCSIProtocolEndpointTarget: each remote port that a storage function has discovered. A target that two
// local ports see is there twice. The list is rebuilt for every request on the class.
#pragma once

#include "classes/list_class.h"
#include "classes/storage/scsi_endpoint.h"

namespace merolt::storage {

extern std::int32_t g_scsiEndpointTargetCount;
extern SCSIEndpointEntry* g_scsiEndpointTargetList;

/// The count is the sum of the functions' target counts and stays so: where a chain is shorter than its count, empty
/// records are left and enumerated; what a longer chain has beyond the sum is not listed.
void buildSCSIProtocolEndpointTargetList();
void clearSCSIProtocolEndpointTargetList();
inline constexpr ClassList listOfSCSIEndpointTargets = {buildSCSIProtocolEndpointTargetList,
                                                        clearSCSIProtocolEndpointTargetList};

CmpiObjectPath makePath_SCSIProtocolEndpointTarget(const char* className, const char* nameSpace, int index);
CmpiInstance makeInstance_SCSIProtocolEndpointTarget(const char* className, const char* nameSpace,
                                                     const char** properties, int index);
DECLARE_REQUEST_FUNCTIONS(SCSIProtocolEndpointTarget)

} // namespace merolt::storage
