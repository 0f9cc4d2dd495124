// Merolt_FCHBA_SoftwareIdentity: the software behind each storage function: this provider, driver, firmware, boot code
// and, on newer cards, the whole flash image.
#pragma once

#include "classes/list_class.h"
#include "inventory/tavik.h"
#include "text/fixed_text.h"

#include <cstdint>

namespace merolt::software {

struct SoftwareIdentityEntry {
    std::uint8_t valid;          ///< 1 when the entry is filled
    std::uint8_t isCNA;          ///< 1 for a converged function
    FixedText<128> instanceID;   ///< key
    FixedText<128> serialNumber; ///< the card's; empty where the flash image's version is unknown
    FixedText<128> identityInfo; ///< the card's model, or "Unknown"
    FixedText<128> version;
    std::uint16_t classification;
    std::uint8_t dateValid;    ///< 1 if the multi-boot image version could be read
    std::int32_t majorVersion; ///< this and the following: of the multi-boot image, -1 where not read
    std::int32_t minorVersion;
    std::int32_t subminorVersion;
    std::int32_t releaseDay;
    std::int32_t releaseMonth;
    std::int32_t releaseYear;
};

extern std::int32_t g_softwareIdentityCount;
extern SoftwareIdentityEntry* g_softwareIdentityList;

void buildSoftwareIdentityList();
void clearSoftwareIdentityList();
/// Adds five or six entries at *index and advances it.
void createSoftwareIdentity(TAVIK_DeviceRecord* device, int* index);

/// Midnight local time in microseconds since 1970. The month counts from 1 and is taken as one that counts from 0: the
/// published date lies a month after the image's.
/// @return 0 if there is no such time.
CMPIUint64 makeReleaseDateTime(int day, int month, int year);

CmpiObjectPath makePath_SoftwareIdentity(const char* className, const char* nameSpace, int index);
CmpiInstance makeInstance_SoftwareIdentity(const char* className, const char* nameSpace, const char** properties,
                                           int index);
DECLARE_REQUEST_FUNCTIONS(SoftwareIdentity)

} // namespace merolt::software
