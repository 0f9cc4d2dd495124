// What the two SCSI endpoint classes share: the record and the instance, which differ in class name and role only.
#pragma once

#include "text/fixed_text.h"

#include "CmpiInstance.h"

#include <cstdint>

namespace merolt::storage {

struct SCSIEndpointEntry {
    std::uint8_t valid;  ///< 1 once the key is written
    FixedText<128> name; ///< key
};

constexpr CMPIUint16 scsiRoleInitiator = 2;
constexpr CMPIUint16 scsiRoleTarget = 3;

CmpiInstance makeInstance_SCSIEndpoint(const char* className, const char* nameSpace, const char** properties,
                                       const char* creationClassName, CMPIUint16 role, const SCSIEndpointEntry& entry);

} // namespace merolt::storage
