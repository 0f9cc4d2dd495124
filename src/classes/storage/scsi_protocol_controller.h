// Merolt_FCHBA_SCSIProtocolController: the SCSI view of each storage function.
#pragma once

#include "classes/list_class.h"
#include "text/fixed_text.h"

#include <cstdint>

namespace merolt::storage {

struct SCSIProtocolControllerEntry {
    std::uint8_t valid;      ///< 1 once the key is written
    FixedText<128> deviceID; ///< key: port name
};

extern std::int32_t g_scsiProtocolControllerCount;
extern SCSIProtocolControllerEntry* g_scsiProtocolControllerList;

void buildSCSIProtocolControllerList();
void clearSCSIProtocolControllerList();
inline constexpr ClassList listOfSCSIProtocolControllers = {buildSCSIProtocolControllerList,
                                                            clearSCSIProtocolControllerList};

CmpiObjectPath makePath_SCSIProtocolController(const char* className, const char* nameSpace, int index);
CmpiInstance makeInstance_SCSIProtocolController(const char* className, const char* nameSpace, const char** properties,
                                                 int index);
DECLARE_REQUEST_FUNCTIONS(SCSIProtocolController)

} // namespace merolt::storage
