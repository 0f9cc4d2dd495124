// Merolt_NIC_SoftwareInstallationServiceCapabilities: what the Ethernet side's installation service can do.
#pragma once

#include "classes/ethernet/ethernet_class.h"

namespace merolt::ethernet {

CmpiObjectPath makePath_SoftwareInstallationServiceCapabilities(const char* className, const char* nameSpace);
CmpiInstance makeInstance_SoftwareInstallationServiceCapabilities(const char* className, const char* nameSpace,
                                                                  const char** properties);
DECLARE_REQUEST_FUNCTIONS(SoftwareInstallationServiceCapabilities)

} // namespace merolt::ethernet
