// Merolt_NIC_RegisteredProfile: the management profiles that the Ethernet side implements, a fixed list.
#pragma once

#include "classes/ethernet/ethernet_class.h"
#include "text/fixed_text.h"

#include <cstdint>

namespace merolt::ethernet {

struct RegisteredProfileEntry {
    std::uint32_t instanceNumber; ///< the key as a number; 6 stands twice
    FixedText<128> elementName;
    FixedText<128> caption;
    FixedText<128> registeredName;
    FixedText<128> registeredVersion;
    std::uint16_t registeredOrganization;
    RegisteredProfileEntry* next;
};

/// Read between Initialize_ and Clear_ only.
extern RegisteredProfileEntry* g_RegisteredProfileList;

void Initialize_RegisteredProfile_List();
void Clear_RegisteredProfile_List();

CmpiObjectPath makePath_RegisteredProfile(const char* className, const char* nameSpace,
                                          const RegisteredProfileEntry* entry);
CmpiInstance makeInstance_RegisteredProfile(const char* className, const char* nameSpace, const char** properties,
                                            const RegisteredProfileEntry* entry);
DECLARE_REQUEST_FUNCTIONS(RegisteredProfile)

} // namespace merolt::ethernet
