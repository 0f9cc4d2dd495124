// Merolt_FCHBA_SoftwareInstallationServiceCapabilities: what the storage side's installation service can do.
#pragma once

#include "classes/list_class.h"

namespace merolt::software {

CmpiObjectPath makePath_SoftwareInstallationServiceCapabilities(const char* className, const char* nameSpace);
CmpiInstance makeInstance_SoftwareInstallationServiceCapabilities(const char* className, const char* nameSpace,
                                                                  const char** properties);
DECLARE_REQUEST_FUNCTIONS(SoftwareInstallationServiceCapabilities)

} // namespace merolt::software
