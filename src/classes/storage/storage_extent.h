// Merolt_FCHBA_StorageExtent: each logical unit as seen through each storage function and target. The records point
// into the library's tree, so the list is rebuilt for every request on the class.
#pragma once

#include "classes/list_class.h"
#include "inventory/tavik.h"
#include "text/fixed_text.h"

#include <cstdint>

namespace merolt::storage {

struct StorageExtentEntry {
    std::uint8_t valid;      ///< 1 after createStorageExtent finished
    FixedText<128> deviceID; ///< key: local port name, target port name, identifier, logical unit number
    TAVIK_DeviceRecord* device;
    TAVIK_TargetEntry* target;
    TAVIK_LunEntry* lun;
};

extern std::int32_t g_storageExtentCount;
extern StorageExtentEntry* g_storageExtentList;

/// The count is the sum of the targets' logical unit counts and stays so; enumerations pass over the records that
/// shorter chains leave empty, and what longer chains have beyond the sum is not listed.
void buildStorageExtentList();
void clearStorageExtentList();
inline constexpr ClassList listOfStorageExtents = {buildStorageExtentList, clearStorageExtentList};
void createStorageExtent(TAVIK_DeviceRecord* device, TAVIK_TargetEntry* target, TAVIK_LunEntry* lun, int index);

CmpiObjectPath makePath_StorageExtent(const char* className, const char* nameSpace, int index);
CmpiInstance makeInstance_StorageExtent(const char* className, const char* nameSpace, const char** properties,
                                        int index);
DECLARE_REQUEST_FUNCTIONS(StorageExtent)

} // namespace merolt::storage
