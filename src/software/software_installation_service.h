// Merolt_FCHBA_SoftwareInstallationService: the one service that updates the flash of storage cards.
#pragma once

#include "classes/list_class.h"

namespace merolt::software {

CmpiObjectPath makePath_SoftwareInstallationService(const char* className, const char* nameSpace);
CmpiInstance makeInstance_SoftwareInstallationService(const char* className, const char* nameSpace,
                                                      const char** properties);
DECLARE_REQUEST_FUNCTIONS(SoftwareInstallationService)

} // namespace merolt::software
