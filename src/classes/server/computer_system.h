// Merolt_Adapter_ComputerSystem: the host, scoping system of nearly every other class.
#pragma once

#include "classes/list_class.h"

namespace merolt::server {

CmpiObjectPath makePath_ComputerSystem(const char* className, const char* nameSpace);
CmpiInstance makeInstance_ComputerSystem(const char* className, const char* nameSpace, const char** properties);
DECLARE_REQUEST_FUNCTIONS(ComputerSystem)

} // namespace merolt::server
