// Merolt_NIC_SoftwareInstallationService: the one service that updates the flash of converged cards.
#pragma once

#include "classes/ethernet/ethernet_class.h"

namespace merolt::ethernet {

CmpiObjectPath makePath_SoftwareInstallationService(const char* className, const char* nameSpace);
CmpiInstance makeInstance_SoftwareInstallationService(const char* className, const char* nameSpace,
                                                      const char** properties);
DECLARE_REQUEST_FUNCTIONS(SoftwareInstallationService)

} // namespace merolt::ethernet
