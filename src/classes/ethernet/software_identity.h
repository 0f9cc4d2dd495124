// Merolt_NIC_SoftwareIdentity: network driver and flash firmware of each converged card.
#pragma once

#include "classes/ethernet/ethernet_class.h"

namespace merolt::ethernet {

enum NICSoftwareIdentityType { nicNetworkDriver = 2, nicFlashFirmware = 3 };

/// @param type a NICSoftwareIdentityType, or any other number that a client's key holds.
CmpiObjectPath makePath_SoftwareIdentity(const char* className, const char* nameSpace, int type, CNACard* card);
CmpiInstance makeInstance_SoftwareIdentity(const char* className, const char* nameSpace, const char** properties,
                                           int type, CNACard* card);
DECLARE_REQUEST_FUNCTIONS(SoftwareIdentity)

} // namespace merolt::ethernet
